#include "adapters/gdal/gdal_support.h"
#include "adapters/ogr/ogr_feature_class.h"
#include "adapters/tracking/layer_writer.h"
#include "tests/support/scratch_folder.h"

#include <gtest/gtest.h>

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

INSTANTIATE_TEST_SUITE_P(LayerWriter, Formats, testing::Values(".shp", ".gpkg", ".fgb"));

}  // namespace
}  // namespace wxl::tracking
