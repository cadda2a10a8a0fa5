// Rows read straight from the files against the rows that OGR gives.

#include "adapters/disk/byte_order.h"
#include "adapters/ogr/ogr_source.h"
#include "adapters/shapefile/point_shapefile.h"
#include "platform/text.h"
#include "tests/support/ogr_rows.h"
#include "tests/unit/adapters/ogr/shapefile_fixture.h"

#include <limits>
#include <random>

namespace wxl::files {
namespace {

using platform::FieldValue;
using platform::Point;
using platform::ShapeType;
namespace fs = std::filesystem;
using Kind = PointRows::Kind;
using tests::ReadRow;

struct Column {
    std::string Name;
    char Type;
    unsigned char Width;
    unsigned char Decimals;
};

/// A row as its bytes stand in the files.
struct RawRow {
    Point Location;
    std::vector<std::string> Cells;
    char Mark = ' ';
    std::uint32_t ShapeType = 1;
};

struct RawShapefile {
    std::uint32_t ShapeType = 1;
    std::vector<Column> Columns;
    std::vector<RawRow> Rows;
    std::string Encoding = {};            ///< content of the .cpg; empty: none
    std::size_t PointLength = 20;         ///< bytes of a record's content
    std::vector<std::size_t> Order = {};  ///< of the records in the file; empty: that of the rows
};

std::string cell_text(const std::string& text, std::size_t width) {
    std::string cell = text.substr(0, width);
    cell.resize(width, ' ');
    return cell;
}

std::string shape_content(const RawRow& row, std::size_t length) {
    std::string content(row.ShapeType == 0 ? 4 : length, '\0');
    store_little(content, 0, row.ShapeType);
    if (row.ShapeType == 0) return content;
    store_little(content, 4, row.Location.X);
    store_little(content, 12, row.Location.Y);
    return content;
}

void write_shapes(const fs::path& shapefile, const RawShapefile& raw) {
    const auto header = [&](std::size_t length) {
        std::string bytes(100, '\0');
        store_big(bytes, 0, 9994);
        store_big(bytes, 24, static_cast<std::uint32_t>(length / 2));
        store_little(bytes, 28, std::uint32_t{1000});
        store_little(bytes, 32, raw.ShapeType);
        for (std::size_t i = 0; i < 4; ++i) store_little(bytes, 36 + 8 * i, i < 2 ? -1e6 : 1e6);
        return bytes;
    };
    std::string records;
    std::string index(raw.Rows.size() * 8, '\0');
    for (std::size_t i = 0; i < raw.Rows.size(); ++i) {
        const std::size_t row = raw.Order.empty() ? i : raw.Order[i];
        const std::string content = shape_content(raw.Rows[row], raw.PointLength);
        store_big(index, row * 8, static_cast<std::uint32_t>((100 + records.size()) / 2));
        store_big(index, row * 8 + 4, static_cast<std::uint32_t>(content.size() / 2));
        std::string recordHeader(8, '\0');
        store_big(recordHeader, 0, static_cast<std::uint32_t>(row + 1));
        store_big(recordHeader, 4, static_cast<std::uint32_t>(content.size() / 2));
        records += recordHeader + content;
    }
    PutBytes(shapefile, header(100 + records.size()) + records);
    PutBytes(fs::path(shapefile).replace_extension("shx"), header(100 + index.size()) + index);
}

void write_table(const fs::path& table, const RawShapefile& raw) {
    std::string header(32, '\0');
    header[0] = 3;
    header[1] = 95, header[2] = 7, header[3] = 26;
    std::size_t recordLength = 1;
    std::string columns;
    for (const Column& column : raw.Columns) {
        std::string descriptor(32, '\0');
        descriptor.replace(0, column.Name.size(), column.Name);
        descriptor[11] = column.Type;
        descriptor[16] = static_cast<char>(column.Width);
        descriptor[17] = static_cast<char>(column.Decimals);
        columns += descriptor;
        recordLength += column.Width;
    }
    store_little(header, 4, static_cast<std::uint32_t>(raw.Rows.size()));
    store_little(header, 8, static_cast<std::uint16_t>(33 + columns.size()));
    store_little(header, 10, static_cast<std::uint16_t>(recordLength));
    std::string rows;
    for (const RawRow& row : raw.Rows) {
        rows += row.Mark;
        for (std::size_t i = 0; i < raw.Columns.size(); ++i) rows += cell_text(row.Cells.at(i), raw.Columns[i].Width);
    }
    PutBytes(table, header + columns + '\r' + rows + '\x1A');
}

fs::path write_shapefile(const fs::path& folder, const RawShapefile& raw) {
    fs::create_directories(folder);
    const fs::path shapefile = folder / "raw.shp";
    write_shapes(shapefile, raw);
    write_table(folder / "raw.dbf", raw);
    if (!raw.Encoding.empty()) PutBytes(folder / "raw.cpg", raw.Encoding);
    return shapefile;
}

std::vector<ReadRow> rows_by_cursor(const fs::path& shapefile, const platform::Search& search) {
    return tests::rows_by_cursor(*OgrFeatureClass::Open(shapefile), search);
}

void expect_the_rows_of_ogr(const fs::path& shapefile, const platform::Search& search = {}) {
    EXPECT_THAT(rows_by_cursor(shapefile, search), testing::ElementsAreArray(tests::rows_by_ogr(shapefile, search)));
}

/// Kinds of all rows; empty when OGR has to read all of the file.
std::vector<Kind> kinds_of(const fs::path& shapefile, const std::vector<std::string>& wanted = {}) {
    OgrSource source(shapefile, "", Sources::kPlain);
    const auto points =
        PointShapefile::Open(shapefile, fields_of(source.Layer()), wanted, table_encoding(source.Layer()));
    std::vector<Kind> kinds;
    if (!points) return kinds;
    while (const auto rows = points->Next()) kinds.insert(kinds.end(), rows->Kinds.begin(), rows->Kinds.end());
    return kinds;
}

const std::vector<Column> kColumns = {
    {"animal", 'C', 8, 0}, {"count", 'N', 9, 0}, {"big", 'N', 18, 0}, {"v", 'N', 12, 3}, {"f", 'F', 12, 3}};

RawShapefile plain_shapefile(std::size_t rows) {
    RawShapefile raw;
    raw.Columns = kColumns;
    for (std::size_t i = 0; i < rows; ++i)
        raw.Rows.push_back(
            {{0.5 + double(i), -2.0 * double(i)},
             {"a" + std::to_string(i % 7), std::to_string(i), "-" + std::to_string(i), "1.250", "-7.5"}});
    return raw;
}

TEST(PointShapefile, Plain_rows_have_their_location_and_cells) {
    const tests::ScratchFolder folder;
    const fs::path shapefile = write_shapefile(folder.Path(), plain_shapefile(3));
    OgrSource source(shapefile, "", Sources::kPlain);
    const auto points = PointShapefile::Open(shapefile, fields_of(source.Layer()), {}, "");
    ASSERT_NE(points, nullptr);
    const auto rows = points->Next();
    ASSERT_NE(rows, nullptr);
    EXPECT_EQ(rows->First, 0);
    EXPECT_EQ(rows->Kinds, std::vector<Kind>(3, Kind::kPlain));
    EXPECT_EQ(rows->Locations, (std::vector<Point>{{0.5, 0.0}, {1.5, -2.0}, {2.5, -4.0}}));
    EXPECT_EQ(rows->Cell(2, 0), FieldValue("a2"));
    EXPECT_EQ(rows->Cell(2, 1), FieldValue(std::int64_t{2}));
    EXPECT_EQ(rows->Cell(2, 2), FieldValue(std::int64_t{-2}));
    EXPECT_EQ(rows->Cell(2, 3), FieldValue(1.25));
    EXPECT_EQ(rows->Cell(2, 4), FieldValue(-7.5));
    EXPECT_EQ(points->Next(), nullptr);
}

TEST(PointShapefile, Cells_that_were_not_asked_for_are_missing) {
    const tests::ScratchFolder folder;
    const fs::path shapefile = write_shapefile(folder.Path(), plain_shapefile(1));
    OgrSource source(shapefile, "", Sources::kPlain);
    const std::vector<std::string> wanted = {"ANIMAL"};
    const auto rows = PointShapefile::Open(shapefile, fields_of(source.Layer()), wanted, "")->Next();
    EXPECT_EQ(rows->Cell(0, 0), FieldValue("a0"));
    EXPECT_EQ(rows->Cell(0, 1), FieldValue());
}

TEST(PointShapefile, Thousands_of_rows_come_in_the_order_of_the_file) {
    const tests::ScratchFolder folder;
    RawShapefile raw = plain_shapefile(2500);
    raw.Rows[1023].Mark = '*';
    raw.Rows[1024].ShapeType = 0;
    raw.Rows[2047].Cells[0] = "\xC3\xA9";
    const fs::path shapefile = write_shapefile(folder.Path(), raw);
    const auto rows = rows_by_cursor(shapefile, {});
    ASSERT_EQ(rows.size(), 2499U);
    EXPECT_EQ(rows[1022], (ReadRow{1022,
                                   platform::Geometry::OfPoint({1022.5, -2044.0}),
                                   {"a0", std::int64_t{1022}, std::int64_t{-1022}, 1.25, -7.5}}));
    EXPECT_TRUE(rows[1023].Shape.IsNull());
    EXPECT_EQ(rows[1023].OID, 1024);
    EXPECT_EQ(rows[2498].OID, 2499);
    expect_the_rows_of_ogr(shapefile);
}

struct CellCase {
    std::size_t Column;
    std::string Text;
    Kind Expected;
};

TEST(PointShapefile, Cells_out_of_the_ordinary_are_left_to_OGR) {
    const std::vector<CellCase> cases = {
        {0, "a b", Kind::kPlain},
        {0, "12345678", Kind::kPlain},
        {0, "", Kind::kOther},
        {0, " a", Kind::kOther},
        {0, "\xE9", Kind::kOther},
        {0, "a\tb", Kind::kOther},
        {1, "12", Kind::kPlain},
        {1, "  12", Kind::kPlain},
        {1, "-12", Kind::kPlain},
        {1, "000000012", Kind::kPlain},
        {1, "+12", Kind::kOther},
        {1, "1.0", Kind::kOther},
        {1, "", Kind::kOther},
        {1, "*********", Kind::kOther},
        {1, "-", Kind::kOther},
        {1, "1 2", Kind::kOther},
        {1, "1-2", Kind::kOther},
        {2, "999999999999999999", Kind::kPlain},
        {2, "-99999999999999999", Kind::kPlain},
        {3, "7", Kind::kPlain},
        {3, "-0.000", Kind::kPlain},
        {3, "0.1", Kind::kPlain},
        {3, "1e3", Kind::kOther},
        {3, ".5", Kind::kOther},
        {3, "5.", Kind::kOther},
        {3, "-.5", Kind::kOther},
        {3, "1.2.3", Kind::kOther},
        {3, "nan", Kind::kOther},
        {4, "0,5", Kind::kOther},
        {4, "3.4028234663", Kind::kPlain},
    };
    for (const CellCase& row : cases) {
        SCOPED_TRACE("column " + std::to_string(row.Column) + " \"" + row.Text + "\"");
        const tests::ScratchFolder folder;
        RawShapefile raw = plain_shapefile(1);
        raw.Rows[0].Cells[row.Column] = row.Text;
        const fs::path shapefile = write_shapefile(folder.Path(), raw);
        EXPECT_EQ(kinds_of(shapefile), std::vector<Kind>{row.Expected});
        expect_the_rows_of_ogr(shapefile);
    }
}

TEST(PointShapefile, Any_cells_give_what_OGR_gives) {
    std::mt19937 random(7);
    const std::string letters = "  0159-+.eE*a\xC3\xA9\x01";
    const auto any_cell = [&](std::size_t width) {
        std::string cell(random() % (width + 1), ' ');
        for (char& c : cell) c = letters[random() % letters.size()];
        return cell;
    };
    for (const char* encoding : {"", "UTF-8", "CP1252", "ISO-8859-1", "UTF-16", "SHIFT_JIS"}) {
        SCOPED_TRACE(encoding);
        const tests::ScratchFolder folder;
        RawShapefile raw = plain_shapefile(700);
        raw.Encoding = encoding;
        for (RawRow& row : raw.Rows)
            for (std::size_t i = 0; i < raw.Columns.size(); ++i)
                if (random() % 2 == 0) row.Cells[i] = any_cell(raw.Columns[i].Width);
        const fs::path shapefile = write_shapefile(folder.Path(), raw);
        expect_the_rows_of_ogr(shapefile);
        expect_the_rows_of_ogr(shapefile, {.Fields = {"animal"}});
        expect_the_rows_of_ogr(shapefile, {.Fields = {"v", "f"}});
    }
}

TEST(PointShapefile, Texts_in_encodings_that_may_lack_ASCII_are_left_to_OGR) {
    const tests::ScratchFolder folder;
    RawShapefile raw = plain_shapefile(1);
    raw.Encoding = "SHIFT_JIS";
    const fs::path shapefile = write_shapefile(folder.Path(), raw);
    EXPECT_EQ(kinds_of(shapefile), std::vector<Kind>{});
    EXPECT_EQ(kinds_of(shapefile, {"count"}), std::vector<Kind>{Kind::kPlain});
}

TEST(PointShapefile, Columns_of_other_types_are_left_to_OGR_when_they_are_asked_for) {
    const tests::ScratchFolder folder;
    RawShapefile raw = plain_shapefile(2);
    raw.Columns.push_back({"day", 'D', 8, 0});
    raw.Columns.push_back({"yes", 'L', 1, 0});
    for (RawRow& row : raw.Rows) row.Cells.insert(row.Cells.end(), {"20180509", "T"});
    const fs::path shapefile = write_shapefile(folder.Path(), raw);
    EXPECT_EQ(kinds_of(shapefile), std::vector<Kind>{});
    EXPECT_EQ(kinds_of(shapefile, {"yes"}), std::vector<Kind>{});
    EXPECT_EQ(kinds_of(shapefile, {"v"}), std::vector<Kind>(2, Kind::kPlain));
    expect_the_rows_of_ogr(shapefile);
    expect_the_rows_of_ogr(shapefile, {.Fields = {"v"}});
    EXPECT_EQ(rows_by_cursor(shapefile, {.Fields = {"day"}})[0].Cells, std::vector<FieldValue>{"2018/05/09"});
}

TEST(PointShapefile, Points_with_heights_and_measures_lose_them) {
    for (const auto& [type, length] : {std::pair{11U, 36U}, {11U, 28U}, {21U, 28U}}) {
        SCOPED_TRACE(std::to_string(type) + " of " + std::to_string(length) + " bytes");
        const tests::ScratchFolder folder;
        RawShapefile raw = plain_shapefile(3);
        raw.ShapeType = type;
        raw.PointLength = length;
        for (RawRow& row : raw.Rows) row.ShapeType = type;
        const fs::path shapefile = write_shapefile(folder.Path(), raw);
        EXPECT_EQ(kinds_of(shapefile), std::vector<Kind>(3, Kind::kPlain));
        expect_the_rows_of_ogr(shapefile);
    }
}

TEST(PointShapefile, Other_shapes_are_left_to_OGR) {
    const tests::ScratchFolder folder;
    RawShapefile raw = plain_shapefile(2);
    raw.ShapeType = 0;
    for (RawRow& row : raw.Rows) row.ShapeType = 0;
    EXPECT_EQ(kinds_of(write_shapefile(folder.Path(), raw)), std::vector<Kind>{});
}

TEST(PointShapefile, Places_that_are_no_numbers_are_left_to_OGR) {
    const tests::ScratchFolder folder;
    RawShapefile raw = plain_shapefile(5);
    raw.Rows[0].Location.X = std::numeric_limits<double>::quiet_NaN();
    raw.Rows[1].Location.Y = std::numeric_limits<double>::infinity();
    raw.Rows[2].Location = {std::numeric_limits<double>::quiet_NaN(), std::numeric_limits<double>::quiet_NaN()};
    raw.Rows[3].ShapeType = 0;
    const fs::path shapefile = write_shapefile(folder.Path(), raw);
    // Behind rows of another length the records lie elsewhere than the first one foretells.
    EXPECT_EQ(kinds_of(shapefile), (std::vector{Kind::kOther, Kind::kOther, Kind::kOther, Kind::kOther, Kind::kPlain}));
    const auto rows = rows_by_cursor(shapefile, {.Fields = {"animal"}});
    ASSERT_EQ(rows.size(), 5U);
    EXPECT_TRUE(rows[3].Shape.IsNull());
    EXPECT_EQ(rows[4].Shape, platform::Geometry::OfPoint({4.5, -8.0}));
}

TEST(PointShapefile, Records_may_stand_in_any_order) {
    const tests::ScratchFolder folder;
    RawShapefile raw = plain_shapefile(3000);
    for (std::size_t i = 0; i < 3000; ++i) raw.Order.push_back(i);
    std::mt19937 random(3);
    std::shuffle(raw.Order.begin(), raw.Order.end(), random);
    const fs::path shapefile = write_shapefile(folder.Path(), raw);
    expect_the_rows_of_ogr(shapefile);
    EXPECT_EQ(rows_by_cursor(shapefile, {})[300].Shape, platform::Geometry::OfPoint({300.5, -600.0}));
}

TEST(PointShapefile, A_text_column_may_carry_a_number_of_decimals) {
    const tests::ScratchFolder folder;
    RawShapefile raw = plain_shapefile(3);
    raw.Columns[0].Decimals = 5;
    const fs::path shapefile = write_shapefile(folder.Path(), raw);
    EXPECT_EQ(kinds_of(shapefile), std::vector<Kind>(3, Kind::kPlain));
    expect_the_rows_of_ogr(shapefile);
    const auto features = OgrFeatureClass::Open(shapefile);
    ChangeRows(*features, {});
    EXPECT_EQ(Bytes(folder / "raw.dbf")[32 + 17], 5);
    EXPECT_EQ(rows_by_cursor(shapefile, {})[2].Cells[0], FieldValue("a2"));
}

TEST(PointShapefile, A_row_stays_usable_when_the_cursor_and_the_class_are_gone) {
    const tests::ScratchFolder folder;
    const fs::path shapefile = write_shapefile(folder.Path(), plain_shapefile(1500));
    std::unique_ptr<platform::IFeature> kept;
    {
        const auto features = OgrFeatureClass::Open(shapefile);
        const auto cursor = features->Find({});
        for (int i = 0; i < 10; ++i) kept = cursor->NextFeature();
        while (cursor->NextFeature()) continue;
    }
    EXPECT_EQ(kept->OID(), 9);
    EXPECT_EQ(kept->Value(0), FieldValue("a2"));
    EXPECT_EQ(ErrorOf([&] { kept->Value(5); }).Number, platform::error_number::kSubscript);
}

}  // namespace
}  // namespace wxl::files
