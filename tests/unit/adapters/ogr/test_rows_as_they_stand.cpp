// Layers whose row numbers, counts or extents are not what they seem.
#include "adapters/gdal/gdal_support.h"
#include "tests/unit/adapters/ogr/shapefile_fixture.h"

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
    const auto layer = OpenFeatureLayer(
        View(2, "SELECT fid, geom, name, Time2 FROM fixes UNION ALL SELECT fid, geom, 'C', Time2 FROM fixes"));
    platform::Search search;
    search.Where = platform::AttributeQuery{"FID = 1", "FID", FieldValue(std::int64_t{1})};
    EXPECT_THAT(names_of(*layer->FeatureClass()->Find(search), 0), ElementsAre("A@100", "C@100"));
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

/// What reading these rows ends in.
std::string trouble_of(platform::IFeatureCursor& cursor) {
    return ErrorOf([&] {
               while (const auto row = cursor.NextFeature()) row->Shape();
           })
        .Description;
}

TEST_F(RowsAsTheyStand, A_chosen_row_that_cannot_be_read_is_an_error_and_no_row_less) {
    std::vector<std::string> statements;
    for (const char* number : {"1", "2", "3", "4", "5", "6", "7"})
        statements.push_back(std::string("DROP TRIGGER IF EXISTS rtree_fixes_geom_update") + number);
    statements.emplace_back("UPDATE fixes SET geom = x'4750' WHERE fid = 3");
    const std::string path = GeoPackage(6, statements);
    const std::string told = fs::canonical(path).string() +
                             ": the row 3 could not be read (Unable to read geometry): correct it, or take it out of "
                             "the file";
    const auto layer = OpenFeatureLayer(path);
    EXPECT_EQ(trouble_of(*layer->FeatureClass()->Find({})), told);
    layer->SelectWhere("name = 'A'");
    EXPECT_EQ(layer->Selection()->Count(), 3);
    EXPECT_EQ(trouble_of(*layer->Selection()->Find({})), told);
    layer->Select({2, 3, 4});
    EXPECT_EQ(trouble_of(*layer->Selection()->Find({})), told);
    platform::Search third;
    third.Where = platform::AttributeQuery{"FID = 3", "FID", FieldValue(std::int64_t{3})};
    EXPECT_EQ(trouble_of(*layer->FeatureClass()->Find(third)), told);
    EXPECT_EQ(ErrorOf([&] { layer->FeatureClass()->Bounds(); }).Description, told);
    layer->SelectWhere("name = 'B'");
    EXPECT_THAT(names_of(*layer->Selection()->Find({}), 0), ElementsAre("B@200", "B@400", "B@600"));
}

TEST_F(RowsAsTheyStand, A_row_number_that_no_row_has_finds_none) {
    const auto none_at = [](const std::string& path, std::int64_t number) {
        platform::Search search;
        search.Where = platform::AttributeQuery{"FID", "FID", FieldValue(number)};
        return OpenFeatureLayer(path)->FeatureClass()->Find(search)->NextFeature() == nullptr;
    };
    EXPECT_TRUE(none_at(GeoPackage(3, {"DELETE FROM fixes WHERE fid = 2"}), 2));
    EXPECT_TRUE(none_at((m_folder / "fixes.gpkg").string(), 4));
    const std::string shapefile = MakeFixes(m_folder.Path(), 3).string();
    EXPECT_TRUE(none_at(shapefile, 3));
    EXPECT_FALSE(none_at(shapefile, 2));
}

TEST_F(RowsAsTheyStand, A_chosen_row_that_another_program_deleted_is_told) {
    const std::string path = GeoPackage(6, {"DELETE FROM fixes WHERE fid = 99"});
    const auto layer = OpenFeatureLayer(path);
    layer->SelectWhere("name = 'A'");
    {
        RegisterGdal();
        const GdalDatasetPtr other(GDALDataset::Open(path.c_str(), GDAL_OF_VECTOR | GDAL_OF_UPDATE));
        execute(*other, "DELETE FROM fixes WHERE fid = 5");
    }
    EXPECT_EQ(trouble_of(*layer->Selection()->Find({})),
              fs::canonical(path).string() +
                  ": the row 5 was chosen and is not there any more: another program changed the file. Start again");
}

TEST_F(RowsAsTheyStand, A_torn_record_of_a_shapefile_is_told_and_a_null_shape_is_none) {
    RegisterGdal();
    const fs::path path = m_folder / "many.shp";
    {
        const GdalDatasetPtr dataset(GetGDALDriverManager()
                                         ->GetDriverByName("ESRI Shapefile")
                                         ->Create(path.c_str(), 0, 0, 0, GDT_Unknown, nullptr));
        OGRLayer* layer = dataset->CreateLayer("many", nullptr, wkbMultiPoint);
        OGRFieldDefn name("name", OFTString);
        ASSERT_EQ(layer->CreateField(&name), OGRERR_NONE);
        for (int i = 0; i < 4; ++i) {
            const OGRFeatureUniquePtr row(OGRFeature::CreateFeature(layer->GetLayerDefn()));
            row->SetField(0, i == 3 ? "B" : "A");
            OGRMultiPoint points;
            const OGRPoint point(100.0 * i, 10.0);
            points.addGeometry(&point);
            if (i != 1) row->SetGeometry(&points);
            ASSERT_EQ(layer->CreateFeature(row.get()), OGRERR_NONE);
        }
    }
    const auto whole = OpenFeatureLayer(path.string());
    whole->SelectWhere("name = 'A'");
    EXPECT_EQ(trouble_of(*whole->Selection()->Find({})), "");
    // Records of 64, 12 and 64 bytes: the third tells of a thousand points.
    std::string bytes = Bytes(path);
    constexpr std::size_t kPointCount = 100 + 64 + 12 + 8 + 36;
    ASSERT_EQ(bytes[kPointCount], 1);
    bytes[kPointCount + 1] = 4;
    PutBytes(path, bytes);
    const auto layer = OpenFeatureLayer(path.string());
    const std::string told =
        fs::canonical(path).string() +
        ": the row 2 could not be read (Corrupted .shp file : shape 2 : nPoints = 1025, nEntitySize = 64): correct it, "
        "or take it out of the file";
    EXPECT_EQ(trouble_of(*layer->FeatureClass()->Find({})), told);
    layer->SelectWhere("name = 'A'");
    EXPECT_EQ(trouble_of(*layer->Selection()->Find({})), told);
    layer->SelectWhere("name = 'B'");
    EXPECT_THAT(names_of(*layer->Selection()->Find({}), 0), ElementsAre("B@300"));
}

TEST_F(RowsAsTheyStand, A_location_in_text_that_means_none_is_told_and_an_empty_one_is_none) {
    const auto with = [](const std::string& geometry) {
        return collection({feature(1, "Arn", 1),
                           R"({"type":"Feature","properties":{"id":7,"name":"Arn"},"geometry":)" + geometry + "}",
                           feature(8, "Zoe", 3)});
    };
    const auto told = [&](const fs::path& file, const std::string& text, const std::string& condition) {
        PutBytes(file, text);
        const auto layer = OpenFeatureLayer(file.string());
        if (!condition.empty()) layer->SelectWhere(condition);
        return condition.empty() ? trouble_of(*layer->FeatureClass()->Find({}))
                                 : trouble_of(*layer->Selection()->Find({}));
    };
    const fs::path json = fs::canonical(m_folder.Path()) / "wolves.geojson";
    const std::string unread =
        ": the row 7 could not be read (its location means none): correct it, or take it out "
        "of the file";
    for (const char* geometry : {R"({"type":"Point","coordinates":[5]})", R"({"type":"Point","coordinates":[null,5]})",
                                 R"({"type":"Pnt","coordinates":[1,2]})", R"("here")", "[1,2]", "17"}) {
        EXPECT_EQ(told(json, with(geometry), ""), json.string() + unread) << geometry;
        EXPECT_EQ(told(json, with(geometry), "name = 'Arn'"), json.string() + unread) << geometry;
        EXPECT_EQ(told(json, with(geometry), "name = 'Zoe'"), "") << geometry;
    }
    // The format's reader tells such a location with the first row.
    EXPECT_EQ(told(json, with(R"({"type":"Point","coordinates":["x",5]})"), ""),
              json.string() +
                  ": the row 7 could not be read (Invalid 'x' coordinate. Type is not double or integer for "
                  "'\"x\"'.): correct it, or take it out of the file");
    for (const char* geometry : {"null", R"({"type":"Point","coordinates":[]})"})
        EXPECT_EQ(told(json, with(geometry), "name = 'Arn'"), "") << geometry;
    const fs::path csv = fs::canonical(m_folder.Path()) / "wolves.csv";
    const std::string start = "WKT,name\n\"POINT (1 10)\",Arn\n";
    const std::string second =
        ": the row 2 could not be read (its location means none): correct it, or take it out of "
        "the file";
    EXPECT_EQ(told(csv, start + "\"POINT (2 1\",Arn\n\"POINT (3 10)\",Zoe\n", ""), csv.string() + second);
    EXPECT_EQ(told(csv, start + "here,Arn\n", "name = 'Arn'"), csv.string() + second);
    EXPECT_EQ(told(csv, start + "here,Zoe\n", "name = 'Arn'"), "");
    EXPECT_EQ(told(csv, start + ",Arn\n\"POINT EMPTY\",Arn\n", ""), "");
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
