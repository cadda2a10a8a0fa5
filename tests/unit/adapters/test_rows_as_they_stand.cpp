// Layers whose row numbers, counts or extents are not what they seem.
#include "adapters/files/gdal_support.h"
#include "shapefile_fixture.h"

#include <array>
#include <cstring>
#include <ogrsf_frmts.h>

namespace wxl::files {
namespace {

using platform::FieldValue;
using testing::ElementsAre;
using testing::HasSubstr;
namespace fs = std::filesystem;

/// A feature with the property "id", which GeoJSON readers take for the row number.
std::string feature(int id, const std::string& name, int x) {
    return R"({"type":"Feature","properties":{"id":)" + std::to_string(id) + R"(,"name":")" + name +
           R"("},"geometry":{"type":"Point","coordinates":[)" + std::to_string(x) + ",10]}}";
}

std::string collection(const std::vector<std::string>& features) {
    std::string text = R"({"type":"FeatureCollection","features":[)";
    for (const std::string& one : features) text += (&one == &features.front() ? "" : ",") + one;
    return text + "]}";
}

/// Names and x of the rows of a cursor: "Arn@1".
std::vector<std::string> names_of(platform::IFeatureCursor& cursor, int field) {
    std::vector<std::string> names;
    while (const auto row = cursor.NextFeature())
        names.push_back(platform::ValueText(row->Value(field)) + "@" + platform::ValueText(row->Shape().Location.X));
    return names;
}

void execute(GDALDataset& dataset, const std::string& sql) {
    const GdalErrors errors;
    dataset.ReleaseResultSet(dataset.ExecuteSQL(sql.c_str(), nullptr, nullptr));
    ASSERT_FALSE(errors.Failed()) << sql << ": " << errors.Text();
}

class RowsAsTheyStand : public testing::Test {
protected:
    tests::ScratchFolder m_folder;

    std::shared_ptr<FilesFeatureLayer> GeoJson(const std::vector<std::string>& features) {
        PutBytes(m_folder / "wolves.geojson", collection(features));
        return OpenFeatureLayer((m_folder / "wolves.geojson").string());
    }

    /// "fixes.gpkg", layer "fixes": rows 1 to `count` of animals A and B in turn at (100 * row, 10), Time2 falling from
    /// 10 * count; then these statements are executed.
    std::string GeoPackage(int count, const std::vector<std::string>& statements) {
        RegisterGdal();
        const fs::path path = m_folder / "fixes.gpkg";
        const GdalDatasetPtr dataset(
            GetGDALDriverManager()->GetDriverByName("GPKG")->Create(path.c_str(), 0, 0, 0, GDT_Unknown, nullptr));
        OGRLayer* layer = dataset->CreateLayer("fixes", nullptr, wkbPoint);
        OGRFieldDefn name("name", OFTString);
        OGRFieldDefn time("Time2", OFTInteger);
        EXPECT_EQ(layer->CreateField(&name), OGRERR_NONE);
        EXPECT_EQ(layer->CreateField(&time), OGRERR_NONE);
        for (int i = 1; i <= count; ++i) {
            const OGRFeatureUniquePtr row(OGRFeature::CreateFeature(layer->GetLayerDefn()));
            row->SetField(0, i % 2 == 1 ? "A" : "B");
            row->SetField(1, 10 * (count - i));
            const OGRPoint point(100.0 * i, 10.0);
            row->SetGeometry(&point);
            EXPECT_EQ(layer->CreateFeature(row.get()), OGRERR_NONE);
        }
        EXPECT_EQ(layer->SyncToDisk(), OGRERR_NONE);
        for (const std::string& sql : statements) execute(*dataset, sql);
        return path.string();
    }

    /// As GeoPackage, with a view "seen" over the table.
    std::string View(int count, const std::string& select) {
        return GeoPackage(count,
                          {"CREATE VIEW seen AS " + select,
                           "INSERT INTO gpkg_contents (table_name, identifier, data_type, srs_id) "
                           "VALUES ('seen', 'seen', 'features', 0)",
                           "INSERT INTO gpkg_geometry_columns (table_name, column_name, geometry_type_name, srs_id, z, "
                           "m) VALUES ('seen', 'geom', 'POINT', 0, 0, 0)"}) +
               ":seen";
    }
};

TEST_F(RowsAsTheyStand, A_condition_selects_its_rows_where_row_numbers_repeat) {
    const auto layer = GeoJson({feature(1, "Arn", 1), feature(2, "Arn", 2), feature(1, "Zoe", 11),
                                feature(2, "Zoe", 12), feature(3, "Zoe", 13)});
    layer->SelectWhere("name = 'Zoe'");
    EXPECT_EQ(layer->Selection()->Count(), 3);
    EXPECT_THAT(names_of(*layer->Selection()->Find({}), 1), ElementsAre("Zoe@11", "Zoe@12", "Zoe@13"));
    layer->SelectWhere("name = 'Arn' AND id = 2");
    EXPECT_THAT(names_of(*layer->Selection()->Find({}), 1), ElementsAre("Arn@2"));
    layer->SelectWhere("name = 'Bo'");
    EXPECT_EQ(layer->Selection()->Count(), 0);
    EXPECT_TRUE(names_of(*layer->Selection()->Find({}), 1).empty());
}

TEST_F(RowsAsTheyStand, Equal_rows_are_all_selected) {
    const auto layer = GeoJson({feature(1, "Arn", 1), feature(1, "Arn", 1), feature(1, "Zoe", 1)});
    layer->SelectWhere("name = 'Arn'");
    EXPECT_THAT(names_of(*layer->Selection()->Find({}), 1), ElementsAre("Arn@1", "Arn@1"));
}

TEST_F(RowsAsTheyStand, A_query_within_a_selection_keeps_to_it) {
    const auto layer = GeoJson({feature(1, "Arn", 1), feature(1, "Zoe", 11), feature(2, "Zoe", 12)});
    layer->SelectWhere("id = 1");
    platform::Search search;
    search.Where = platform::AttributeQuery{"name = 'Zoe'", "name", FieldValue("Zoe")};
    EXPECT_THAT(names_of(*layer->Selection()->Find(search), 1), ElementsAre("Zoe@11"));
}

TEST_F(RowsAsTheyStand, A_row_number_that_repeats_finds_all_its_rows) {
    const auto layer = GeoJson({feature(1, "Arn", 1), feature(1, "Zoe", 11), feature(2, "Zoe", 12)});
    platform::Search search;
    search.Where = platform::AttributeQuery{"FID = 1", "FID", FieldValue(std::int64_t{1})};
    EXPECT_THAT(names_of(*layer->FeatureClass()->Find(search), 1), ElementsAre("Arn@1", "Zoe@11"));
    EXPECT_TRUE(layer->Features().NumbersRepeat());
}

TEST_F(RowsAsTheyStand, A_selection_keeps_the_layers_order_where_row_numbers_do_not_rise) {
    const auto layer =
        GeoJson({feature(9, "Zoe", 1), feature(4, "Arn", 2), feature(7, "Arn", 3), feature(1, "Arn", 4)});
    EXPECT_FALSE(layer->Features().NumbersRepeat());
    layer->SelectWhere("name = 'Arn'");
    EXPECT_THAT(names_of(*layer->Selection()->Find({}), 1), ElementsAre("Arn@2", "Arn@3", "Arn@4"));
    layer->Select({1, 9});
    EXPECT_THAT(names_of(*layer->Selection()->Find({}), 1), ElementsAre("Zoe@1", "Arn@4"));
}

TEST_F(RowsAsTheyStand, A_selection_of_a_file_that_another_program_replaced_is_refused) {
    const auto layer = GeoJson({feature(9, "Zoe", 1), feature(4, "Arn", 2)});
    layer->SelectWhere("name = 'Arn'");
    PutBytes(m_folder / "wolves.geojson",
             collection({feature(9, "Arn", 1), feature(4, "Zoe", 2), feature(1, "Bo", 3)}));
    const auto error = ErrorOf([&] { layer->Selection()->Find({}); });
    EXPECT_EQ(error.Number, 70);
    EXPECT_THAT(error.Description, HasSubstr("wolves.geojson was changed by another program."));
}

TEST_F(RowsAsTheyStand, A_view_with_an_order_gives_each_row_once_in_that_order) {
    const auto layer = OpenFeatureLayer(View(2500, "SELECT fid, geom, name, Time2 FROM fixes ORDER BY Time2"));
    const auto names = names_of(*layer->FeatureClass()->Find({}), 0);
    ASSERT_EQ(names.size(), 2500U);
    EXPECT_EQ(names[0], "B@250000");
    EXPECT_EQ(names[1], "A@249900");
    EXPECT_EQ(names[2499], "A@100");
    layer->SelectWhere("name = 'A'");
    const auto selected = names_of(*layer->Selection()->Find({}), 0);
    ASSERT_EQ(selected.size(), 1250U);
    EXPECT_EQ(selected[0], "A@249900");
    EXPECT_EQ(selected[1249], "A@100");
}

TEST_F(RowsAsTheyStand, A_view_that_repeats_row_numbers_gives_each_of_its_rows) {
    const auto layer = OpenFeatureLayer(
        View(3, "SELECT fid, geom, name, Time2 FROM fixes UNION ALL SELECT fid, geom, 'C', Time2 FROM fixes"));
    EXPECT_EQ(layer->FeatureClass()->FeatureCount(), 6);
    EXPECT_TRUE(layer->Features().NumbersRepeat());
    EXPECT_THAT(names_of(*layer->FeatureClass()->Find({}), 0),
                ElementsAre("A@100", "B@200", "A@300", "C@100", "C@200", "C@300"));
    layer->SelectWhere("name = 'C' AND Time2 > 0");
    EXPECT_THAT(names_of(*layer->Selection()->Find({}), 0), ElementsAre("C@100", "C@200"));
}

TEST_F(RowsAsTheyStand, Rows_of_a_view_cannot_be_changed) {
    const auto layer = OpenFeatureLayer(View(2, "SELECT fid, geom, name, Time2 FROM fixes"));
    EXPECT_EQ(layer->WhyReadOnly(), fs::canonical(m_folder / "fixes.gpkg").string() +
                                        ": the layer \"seen\" is a view, and the rows of a view cannot be changed. "
                                        "Name the layer that its rows come from.");
}

TEST_F(RowsAsTheyStand, A_value_that_a_geopackage_column_would_change_is_refused) {
    RegisterGdal();
    const fs::path path = m_folder / "types.gpkg";
    {
        const GdalDatasetPtr dataset(
            GetGDALDriverManager()->GetDriverByName("GPKG")->Create(path.c_str(), 0, 0, 0, GDT_Unknown, nullptr));
        OGRLayer* layer = dataset->CreateLayer("types", nullptr, wkbPoint);
        OGRFieldDefn small("small", OFTInteger);
        small.SetSubType(OFSTInt16);
        OGRFieldDefn flag("flag", OFTInteger);
        flag.SetSubType(OFSTBoolean);
        OGRFieldDefn medium("medium", OFTInteger);
        OGRFieldDefn day("day", OFTDate);
        OGRFieldDefn text("text", OFTString);
        text.SetWidth(3);
        OGRFieldDefn number("number", OFTReal);
        for (OGRFieldDefn* field : {&small, &flag, &medium, &day, &text, &number})
            EXPECT_EQ(layer->CreateField(field), OGRERR_NONE);
        const OGRFeatureUniquePtr row(OGRFeature::CreateFeature(layer->GetLayerDefn()));
        EXPECT_EQ(layer->CreateFeature(row.get()), OGRERR_NONE);
    }
    const auto layer = OpenFeatureLayer(path.string());
    const auto cursor = layer->FeatureClass()->Find({});
    const auto row = cursor->NextFeature();
    const auto error_of = [&](int field, const FieldValue& value) {
        return ErrorOf([&] { row->SetValue(field, value); }).Number;
    };
    EXPECT_EQ(error_of(0, 40000.0), 6);
    EXPECT_EQ(error_of(1, 2.0), 6);
    EXPECT_EQ(error_of(2, 3e9), 6);
    EXPECT_EQ(error_of(3, 60.0), 13);
    EXPECT_EQ(error_of(4, "wolf"), 6);
    EXPECT_EQ(ErrorOf([&] { row->SetValue(0, 40000.0); }).Description,
              "The value 40000 does not fit the field \"small\" of the type Int16.");
    row->SetValue(0, -32768.0);
    row->SetValue(1, 1.0);
    row->SetValue(2, 2147483647.0);
    row->SetValue(3, "2026-11-20");
    row->SetValue(4, "B\xC3\xA4r");
    row->SetValue(5, 0.1);
    row->Store();
    cursor->Flush();
    const auto stored = OpenFeatureLayer(path.string())->FeatureClass()->Find({})->NextFeature();
    EXPECT_EQ(stored->Value(0), FieldValue(std::int64_t{-32768}));
    EXPECT_EQ(stored->Value(1), FieldValue(std::int64_t{1}));
    EXPECT_EQ(stored->Value(2), FieldValue(std::int64_t{2147483647}));
    EXPECT_EQ(stored->Value(3), FieldValue("2026/11/20"));
    EXPECT_EQ(stored->Value(4), FieldValue("B\xC3\xA4r"));
    EXPECT_EQ(stored->Value(5), FieldValue(0.1));
}

TEST_F(RowsAsTheyStand, A_geopackage_with_an_index_gives_each_row_once) {
    const std::string path = GeoPackage(2500, {"CREATE INDEX times ON fixes (Time2)"});
    const auto layer = OpenFeatureLayer(path);
    platform::Search search;
    search.WithShape = false;
    search.Fields = {"Time2"};
    const auto cursor = layer->FeatureClass()->Find(search);
    std::int64_t number = 0;
    while (const auto row = cursor->NextFeature()) ASSERT_EQ(row->OID(), ++number);
    EXPECT_EQ(number, 2500);
}

TEST_F(RowsAsTheyStand, The_rows_of_a_geopackage_are_counted) {
    const std::string path = GeoPackage(5, {"UPDATE gpkg_ogr_contents SET feature_count = 1000"});
    EXPECT_EQ(OpenFeatureLayer(path)->FeatureClass()->FeatureCount(), 5);
}

TEST_F(RowsAsTheyStand, The_extent_is_that_of_the_points_and_not_what_a_geopackage_records) {
    const std::string path =
        GeoPackage(5, {"UPDATE gpkg_contents SET min_x = -4000, min_y = 0, max_x = 150, max_y = 9000"});
    EXPECT_EQ(OpenFeatureLayer(path)->FeatureClass()->Bounds(), (platform::Extent{100, 10, 500, 10}));
}

TEST_F(RowsAsTheyStand, The_extent_is_that_of_the_points_and_not_what_a_shapefile_records) {
    const fs::path path = MakeFixes(m_folder.Path(), 5);
    std::string bytes = Bytes(path);
    const std::array<double, 4> box = {-4000.0, 0.0, 2.0, 9000.0};
    std::memcpy(bytes.data() + 36, box.data(), sizeof box);
    PutBytes(path, bytes);
    const auto layer = OpenFeatureLayer(path.string());
    EXPECT_EQ(layer->FeatureClass()->Bounds(), (platform::Extent{0, 0, 4, 40}));
}

TEST_F(RowsAsTheyStand, Rows_marked_as_deleted_have_no_part_in_the_extent) {
    const fs::path path = MakeFixes(m_folder.Path(), 5);
    std::string table = Bytes(m_folder / "fixes.dbf");
    const std::size_t header = static_cast<unsigned char>(table[8]) + 256U * static_cast<unsigned char>(table[9]);
    const std::size_t record = static_cast<unsigned char>(table[10]) + 256U * static_cast<unsigned char>(table[11]);
    table[header + 4 * record] = '*';
    PutBytes(m_folder / "fixes.dbf", table);
    EXPECT_EQ(OpenFeatureLayer(path.string())->FeatureClass()->Bounds(), (platform::Extent{0, 0, 3, 30}));
}

TEST_F(RowsAsTheyStand, The_extent_follows_deletions) {
    const auto layer = OpenFeatureLayer(GeoPackage(5, {}));
    EXPECT_EQ(layer->FeatureClass()->Bounds(), (platform::Extent{100, 10, 500, 10}));
    const auto cursor = layer->FeatureClass()->Find({});
    cursor->NextFeature()->Delete();
    EXPECT_EQ(layer->FeatureClass()->Bounds(), (platform::Extent{200, 10, 500, 10}));
    cursor->Flush();
    EXPECT_EQ(layer->FeatureClass()->Bounds(), (platform::Extent{200, 10, 500, 10}));
    EXPECT_EQ(layer->FeatureClass()->FeatureCount(), 4);
}

}  // namespace
}  // namespace wxl::files
