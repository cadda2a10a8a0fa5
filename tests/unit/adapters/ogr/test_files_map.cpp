#include "adapters/disk/disk_file_system.h"
#include "adapters/raster/raster_workspace.h"
#include "tests/unit/adapters/ogr/shapefile_fixture.h"

namespace wxl::files {
namespace {

using platform::FieldValue;
using platform::LayerClass;
using platform::ShapeType;
using testing::ElementsAre;
using testing::HasSubstr;
namespace fs = std::filesystem;

constexpr const char* kGeoJson =
    R"({"type":"FeatureCollection","features":[)"
    R"({"type":"Feature","properties":{"ID":"w1","N":3},"geometry":{"type":"Point","coordinates":[4.5,52.5]}},)"
    R"({"type":"Feature","properties":{"ID":"w2","N":null},"geometry":null},)"
    R"({"type":"Feature","properties":{"ID":"w1","N":-7},"geometry":{"type":"Point","coordinates":[4.25,52]}}]})";

class FilesMapTest : public testing::Test {
protected:
    tests::ScratchFolder m_folder;

    fs::path GeoJson() {
        PutBytes(m_folder / "wolves.geojson", kGeoJson);
        return m_folder / "wolves.geojson";
    }
    fs::path Raster() {
        PutBytes(m_folder / "grid.asc", "ncols 3\nnrows 2\nxllcorner 100\nyllcorner 200\ncellsize 10\n1 2 3\n4 5 6\n");
        return m_folder / "grid.asc";
    }
};

TEST_F(FilesMapTest, Any_format_that_can_be_read_is_a_layer) {
    const auto layer = OpenFeatureLayer(GeoJson().string());
    EXPECT_EQ(layer->Name(), "wolves");
    const auto features = layer->FeatureClass();
    EXPECT_EQ(features->Shape(), ShapeType::kPoint);
    EXPECT_TRUE(features->Reference().IsGeographic);
    EXPECT_EQ(features->Bounds(), (platform::Extent{4.25, 52, 4.5, 52.5}));
    const auto cursor = features->Find({});
    const auto first = cursor->NextFeature();
    EXPECT_EQ(first->Value(0), FieldValue("w1"));
    EXPECT_EQ(first->Value(1), FieldValue(std::int64_t{3}));
    const auto second = cursor->NextFeature();
    EXPECT_TRUE(second->Shape().IsNull());
    EXPECT_TRUE(platform::IsMissing(second->Value(1)));
}

TEST_F(FilesMapTest, A_format_without_safe_changes_is_read_only) {
    const auto layer = OpenFeatureLayer(GeoJson().string());
    EXPECT_EQ(layer->WhyReadOnly(),
              fs::canonical(m_folder / "wolves.geojson").string() +
                  " is of a format (GeoJSON) that is only read. Shapefiles and GeoPackages can be "
                  "changed.");
    const auto cursor = layer->FeatureClass()->Find({});
    const auto feature = cursor->NextFeature();
    EXPECT_EQ(ErrorOf([&] { feature->Delete(); }).Number, 70);
    EXPECT_EQ(ErrorOf([&] { feature->SetValue(1, 5.0); }).Number, 70);
    EXPECT_EQ(ErrorOf([&] {
                  layer->FeatureClass()->Table().AddField({"X", platform::FieldType::kDouble, 0, 0});
              }).Number,
              70);
}

TEST_F(FilesMapTest, Everything_is_selected_until_a_condition_chooses) {
    const auto layer = OpenFeatureLayer(MakeFixes(m_folder.Path(), 5).string());
    EXPECT_EQ(layer->Selection()->Count(), 5);
    layer->SelectWhere("V > 1 AND ID <> 'a3'");
    EXPECT_EQ(layer->Selection()->Count(), 3);
    EXPECT_EQ(layer->Selection()->Find({})->NextFeature()->Value(0), FieldValue("a1"));
    layer->SelectWhere("FID = 4");
    EXPECT_EQ(layer->Selection()->Find({})->NextFeature()->OID(), 4);
    layer->SelectWhere("V > 100");
    EXPECT_EQ(layer->Selection()->Count(), 0);
    EXPECT_FALSE(layer->Selection()->Find({})->NextFeature());
    layer->SelectAll();
    EXPECT_EQ(layer->Selection()->Count(), 5);
}

TEST_F(FilesMapTest, A_condition_that_means_nothing_is_error_5) {
    const auto layer = OpenFeatureLayer(MakeFixes(m_folder.Path(), 2).string());
    const auto error = ErrorOf([&] { layer->SelectWhere("Nothing = 3"); });
    EXPECT_EQ(error.Number, 5);
    EXPECT_THAT(error.Description, HasSubstr("The condition \"Nothing = 3\" means nothing: "));
    EXPECT_EQ(ErrorOf([&] { layer->SelectWhere("V >"); }).Number, 5);
    EXPECT_EQ(layer->Selection()->Count(), 2);
}

TEST_F(FilesMapTest, Inputs_that_are_no_layers_are_told_apart) {
    EXPECT_EQ(ErrorOf([&] { OpenFeatureLayer((m_folder / "none.shp").string()); }).Number, 53);
    PutBytes(m_folder / "text.txt", "no vector data");
    EXPECT_EQ(ErrorOf([&] { OpenFeatureLayer((m_folder / "text.txt").string()); }).Number, 57);
    const std::string json = GeoJson().string();
    EXPECT_EQ(ErrorOf([&] { OpenFeatureLayer(json + ":bears"); }).Number, 5);
    EXPECT_EQ(OpenFeatureLayer(json + ":wolves")->FeatureClass()->FeatureCount(), 3);
}

TEST_F(FilesMapTest, A_file_of_several_layers_wants_a_name) {
    MakeFixes(m_folder.Path(), 2);
    const fs::path both = m_folder / "both";
    fs::create_directory(both);
    for (const char* name : {"a", "b"})
        for (const char* extension : {".shp", ".shx", ".dbf"})
            fs::copy_file(m_folder / ("fixes" + std::string(extension)), both / (name + std::string(extension)));
    const auto error = ErrorOf([&] { OpenFeatureLayer(both.string()); });
    EXPECT_EQ(error.Number, 5);
    EXPECT_THAT(error.Description, HasSubstr("name one as PATH:LAYER"));
    EXPECT_EQ(OpenFeatureLayer(both.string() + ":b")->Name(), "b");
}

TEST_F(FilesMapTest, Layers_stand_in_the_order_of_the_contents_with_their_groups) {
    FilesApplication application;
    FilesMap& map = application.Doc().Map();
    map.AddDataset(MakeFixes(m_folder.Path(), 2));
    map.AddGroup("Rasters", {layer_of(std::make_shared<FilesRasterLayer>(Raster()))});
    map.AddDataset(GeoJson());
    std::vector<std::string> names;
    std::vector<LayerClass> classes;
    for (const auto& layer : application.Document()->FocusMap()->Layers()) {
        names.push_back(layer.Name);
        classes.push_back(layer.Class);
    }
    EXPECT_THAT(names, ElementsAre("fixes", "Rasters", "grid.asc", "wolves"));
    EXPECT_THAT(classes,
                ElementsAre(LayerClass::kFeature, LayerClass::kGroup, LayerClass::kRaster, LayerClass::kFeature));
    const auto raster = map.Layers()[2].Raster->Geometry();
    EXPECT_EQ(raster, (platform::RasterGeometry{100, 200, 10, 3, 2}));
    EXPECT_FALSE(application.Document()->SelectedLayer());
}

TEST_F(FilesMapTest, A_raster_is_added_as_a_raster_layer_and_anything_else_is_refused) {
    FilesMap map;
    map.AddDataset(Raster());
    EXPECT_EQ(map.Layers()[0].Class, LayerClass::kRaster);
    PutBytes(m_folder / "text.txt", "nothing");
    EXPECT_NE(ErrorOf([&] { map.AddDataset(m_folder / "text.txt"); }).Number, 0);
    EXPECT_EQ(map.Layers().size(), 1U);
}

TEST_F(FilesMapTest, A_grid_folder_is_added_as_a_raster_layer) {
    DiskFileSystem files;
    DiskFolders folders;
    RasterWorkspace rasters(files, folders);
    const auto writer = rasters.Create(m_folder.Path(), {"k3", "GRID", {100, 200, 10, 3, 2}, {}});
    const std::vector<float> row = {1, 2, 3};
    writer->WriteRow(row);
    writer->WriteRow(row);
    writer->Publish();
    FilesMap map;
    map.AddDataset(m_folder / "k3");
    ASSERT_EQ(map.Layers().size(), 1U);
    EXPECT_EQ(map.Layers()[0].Class, LayerClass::kRaster);
    EXPECT_EQ(map.Layers()[0].Name, "k3");
}

TEST_F(FilesMapTest, The_highlighted_layer_is_the_selected_layer) {
    FilesDocument document;
    document.AddSelectedLayer(layer_of(OpenFeatureLayer(MakeFixes(m_folder.Path(), 2).string())));
    ASSERT_TRUE(document.SelectedLayer());
    EXPECT_EQ(document.SelectedLayer()->Shape, ShapeType::kPoint);
    EXPECT_EQ(document.SelectedLayer()->Feature->Selection()->Count(), 2);
    EXPECT_EQ(document.FocusMap()->Layers().size(), 1U);
}

}  // namespace
}  // namespace wxl::files
