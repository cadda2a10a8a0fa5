#include "adapters/gdal/gdal_support.h"
#include "adapters/gdal/sqlite_fence.h"
#include "adapters/ogr/ogr_feature_class.h"
#include "adapters/tracking/layer_writer.h"
#include "tests/support/scratch_folder.h"

#include <cstdint>
#include <filesystem>
#include <gtest/gtest.h>
#include <ogrsf_frmts.h>
#include <random>
#include <set>
#include <sqlite3.h>
#include <string>
#include <vector>

namespace wxl::tracking {
namespace {

using Names = std::vector<std::string>;
using platform::FieldType;
using platform::FieldValue;

TEST(LayerWriter, Format_by_ending) {
    EXPECT_EQ(layer_format_of("a.SHP"), LayerFormat::kShapefile);
    EXPECT_EQ(layer_format_of("a.gpkg"), LayerFormat::kGeoPackage);
    EXPECT_EQ(layer_format_of("a.fgb"), LayerFormat::kFlatGeobuf);
    EXPECT_EQ(layer_format_of("a.csv"), std::nullopt);
}

TEST(LayerWriter, Names_are_short_where_they_must_be_and_unique) {
    EXPECT_EQ(
        field_names_for(LayerFormat::kShapefile, {"animal",
                                                  "Temp [\xC2\xB0"
                                                  "C]",
                                                  "eobs:status", "eobs:start-time", "eobs:start-timestamp",
                                                  "G\xC3\xBCte", "Animal", "%", "fid"}),
        (Names{"animal", "Temp_C", "eobs_statu", "eobs_start", "eobs_sta_2", "Gute", "Animal_2", "field", "fid_2"}));
    EXPECT_EQ(field_names_for(LayerFormat::kGeoPackage, {"animal", "eobs:status", "ANIMAL", "geom"}),
              (Names{"animal", "eobs:status", "ANIMAL_2", "geom_2"}));
}

class Formats : public testing::TestWithParam<const char*> {};

TEST_P(Formats, Rows_come_back) {
    const tests::ScratchFolder folder;
    const auto file = folder / (std::string("fixes") + GetParam());
    const auto writer = make_layer_writer(
        *layer_format_of(file), file,
        {{"animal", FieldType::kText, 12, 0}, {"Time2", FieldType::kInteger, 10, 0}, {"dop", FieldType::kDouble, 0, 0}},
        files::ReferenceFromText("EPSG:32632"));
    writer->Put({500000.125, 5500000.25}, {"B\xC3\xA4r", std::int64_t{1525877945}, 1.5});
    writer->Put({500001.0, 5500001.0}, {"w", FieldValue{}, FieldValue{}});
    writer->Close();
    const auto points = files::OgrFeatureClass::Open(file.string());
    EXPECT_EQ(points->FeatureCount(), 2);
    EXPECT_EQ(points->Reference().Name, "WGS 84 / UTM zone 32N");
    const int animal = points->Table().FindField("animal");
    const int time = points->Table().FindField("Time2");
    const int dop = points->Table().FindField("dop");
    const auto cursor = points->Find({});
    int rows = 0;
    while (const auto feature = cursor->NextFeature()) {
        ++rows;
        if (feature->Value(animal) == FieldValue("w")) {
            EXPECT_TRUE(platform::IsMissing(feature->Value(time)));
            EXPECT_TRUE(platform::IsMissing(feature->Value(dop)));
            continue;
        }
        EXPECT_EQ(feature->Value(animal), FieldValue("B\xC3\xA4r"));
        EXPECT_EQ(feature->Value(time), FieldValue(std::int64_t{1525877945}));
        EXPECT_EQ(feature->Value(dop), FieldValue(1.5));
        EXPECT_EQ(feature->Shape().Location, (platform::Point{500000.125, 5500000.25}));
    }
    EXPECT_EQ(rows, 2);
}

// Indices of independence and steps between fixes take rows as they stand: an index of places must not sort them.
TEST_P(Formats, Rows_keep_their_order) {
    const tests::ScratchFolder folder;
    const auto file = folder / (std::string("fixes") + GetParam());
    const auto writer = make_layer_writer(*layer_format_of(file), file, {{"n", FieldType::kInteger, 10, 0}},
                                          files::ReferenceFromText("EPSG:32632"));
    for (std::int64_t i = 0; i < 300; ++i)
        writer->Put({500000.0 + static_cast<double>(i * 7919 % 300), 5500000.0 + static_cast<double>(i * 104729 % 300)},
                    {i});
    writer->Close();
    const auto points = files::OgrFeatureClass::Open(file.string());
    const int field = points->Table().FindField("n");
    const auto cursor = points->Find({});
    std::int64_t row = 0;
    while (const auto feature = cursor->NextFeature()) EXPECT_EQ(feature->Value(field), FieldValue(row++));
    EXPECT_EQ(row, 300);
}

INSTANTIATE_TEST_SUITE_P(LayerWriter, Formats, testing::Values(".shp", ".gpkg", ".fgb"));

/// The index of places of a GeoPackage of `count` points that a generator throws into a square.
class PlaceIndexOf : public testing::TestWithParam<std::size_t> {
protected:
    void SetUp() override {
        std::mt19937 dice(7);
        std::uniform_real_distribution<double> within(0.0, kSide);
        const auto writer = make_layer_writer(LayerFormat::kGeoPackage, File, {{"n", FieldType::kInteger, 10, 0}},
                                              files::ReferenceFromText("EPSG:32632"));
        for (std::size_t i = 0; i < GetParam(); ++i) {
            Points.push_back({within(dice), kNorth + within(dice)});
            writer->Put(Points.back(), {static_cast<std::int64_t>(i)});
        }
        writer->Close();
        sqlite3* database = nullptr;
        ASSERT_EQ(sqlite3_open(File.c_str(), &database), SQLITE_OK);
        Database.reset(database);
    }

    std::string Asked(const std::string& sql) {
        sqlite3_stmt* statement = nullptr;
        if (sqlite3_prepare_v2(Database.get(), sql.c_str(), -1, &statement, nullptr) != SQLITE_OK)
            return sqlite3_errmsg(Database.get());
        std::string text;
        while (sqlite3_step(statement) == SQLITE_ROW)
            text += (text.empty() ? "" : ",") +
                    std::string(reinterpret_cast<const char*>(sqlite3_column_text(statement, 0)));
        sqlite3_finalize(statement);
        return text;
    }

    static constexpr double kSide = 1000.0;
    static constexpr double kNorth = 5500000.0;
    tests::ScratchFolder Folder;
    std::filesystem::path File = Folder / "fixes.gpkg";
    std::vector<platform::Point> Points;
    files::SqlitePtr Database;
};

TEST_P(PlaceIndexOf, Is_sound_and_holds_every_row) {
    EXPECT_EQ(Asked("SELECT rtreecheck('rtree_fixes_geom')"), "ok");
    EXPECT_EQ(Asked("SELECT count(*) FROM rtree_fixes_geom"), std::to_string(GetParam()));
    EXPECT_EQ(Asked("SELECT count(*) FROM sqlite_master WHERE type = 'trigger' AND tbl_name = 'fixes' AND name LIKE "
                    "'rtree%'"),
              "6")
        << "the triggers that keep it up to date";
    EXPECT_EQ(Asked("SELECT feature_count FROM gpkg_ogr_contents WHERE table_name = 'fixes'"),
              std::to_string(GetParam()));
}

TEST_P(PlaceIndexOf, Finds_what_lies_in_a_box) {
    files::GdalDatasetPtr dataset(GDALDataset::Open(File.c_str(), GDAL_OF_VECTOR));
    ASSERT_TRUE(dataset);
    OGRLayer* layer = dataset->GetLayer(0);
    layer->SetSpatialFilterRect(250.0, kNorth + 600.0, 400.0, kNorth + 900.0);
    std::set<GIntBig> found;
    while (const OGRFeatureUniquePtr feature{layer->GetNextFeature()}) found.insert(feature->GetFID());
    std::set<GIntBig> inside;
    for (std::size_t i = 0; i < Points.size(); ++i)
        if (Points[i].X >= 250.0 && Points[i].X <= 400.0 && Points[i].Y >= kNorth + 600.0 &&
            Points[i].Y <= kNorth + 900.0)
            inside.insert(static_cast<GIntBig>(i + 1));
    EXPECT_EQ(found, inside);
}

TEST_P(PlaceIndexOf, Follows_later_changes) {
    Database.reset();
    {
        files::GdalDatasetPtr dataset(GDALDataset::Open(File.c_str(), GDAL_OF_VECTOR | GDAL_OF_UPDATE));
        ASSERT_TRUE(dataset);
        OGRLayer* layer = dataset->GetLayer(0);
        const OGRFeatureUniquePtr feature(OGRFeature::CreateFeature(layer->GetLayerDefn()));
        OGRPoint shape(5.0, 6.0);
        feature->SetGeometry(&shape);
        ASSERT_EQ(layer->CreateFeature(feature.get()), OGRERR_NONE);
        if (!Points.empty()) {
            ASSERT_EQ(layer->DeleteFeature(1), OGRERR_NONE);
        }
    }
    sqlite3* database = nullptr;
    ASSERT_EQ(sqlite3_open(File.c_str(), &database), SQLITE_OK);
    Database.reset(database);
    EXPECT_EQ(Asked("SELECT rtreecheck('rtree_fixes_geom')"), "ok");
    EXPECT_EQ(Asked("SELECT count(*) FROM rtree_fixes_geom"), std::to_string(Points.empty() ? 1 : GetParam()));
}

// A node holds 51: none, one, a full root, the first leaves, three levels, more than go in at once.
INSTANTIATE_TEST_SUITE_P(LayerWriter, PlaceIndexOf, testing::Values(0, 1, 51, 52, 2652, 40000));

}  // namespace
}  // namespace wxl::tracking
