#include "platform/runtime_error.h"
#include "tests/unit/utilities/utilities_rig.h"

namespace wxl::utilities {
namespace {

using platform::ComboBox;
using platform::FeatureType;
using platform::Layer;
using platform::LayerClass;
using platform::ShapeType;
using tests::UtilitiesRig;

using Names = std::vector<std::string>;

Layer layer(const std::string& name, LayerClass kind, ShapeType shape = ShapeType::kNull,
            FeatureType features = FeatureType::kSimple) {
    platform::Layer layer;
    layer.Name = name;
    layer.Class = kind;
    layer.Shape = shape;
    layer.Features = features;
    return layer;
}

/// One layer of every class, some of them in groups.
void fill(memory::MemoryMap& map) {
    map.AddLayer(layer("points", LayerClass::kFeature, ShapeType::kPoint));
    map.AddGroup("group", {layer("roads", LayerClass::kFeature, ShapeType::kPolyline),
                           layer("lakes", LayerClass::kFeature, ShapeType::kPolygon),
                           layer("parcels", LayerClass::kFeature, ShapeType::kPolygon, FeatureType::kDimension)});
    map.AddLayer(layer("dem", LayerClass::kRaster));
    map.AddLayer(layer("old.gis", LayerClass::kFeature, ShapeType::kPolygon));
    map.AddLayer(layer("OLD.GIS", LayerClass::kFeature, ShapeType::kPoint));
    map.AddLayer(layer("table.gis", LayerClass::kFeature));
    map.AddLayer(layer("image.gis", LayerClass::kRaster));
    map.AddLayer(layer("labels", LayerClass::kAnnotation));
    map.AddLayer(layer("flow", LayerClass::kMesh));
    map.AddLayer(layer("terrain", LayerClass::kTin));
    map.AddLayer(layer("web tiles", LayerClass::kOther));
}

Names listed(UtilitiesRig& rig, int kind) {
    ComboBox combo;
    EXPECT_TRUE(rig.Module->ListLayers(kind, combo));
    return combo.Items;
}

TEST(ListLayers, Every_kind_lists_its_layers_in_map_order) {
    UtilitiesRig rig;
    fill(rig.Map());
    EXPECT_EQ(listed(rig, 1), (Names{"points", "roads", "lakes", "parcels", "dem", "old.gis", "OLD.GIS", "table.gis",
                                     "image.gis", "labels", "flow", "terrain", "web tiles"}));
    EXPECT_EQ(listed(rig, 2), (Names{"dem", "image.gis"}));
    EXPECT_EQ(listed(rig, 3), (Names{"points", "OLD.GIS"}));
    EXPECT_EQ(listed(rig, 4), (Names{"roads", "parcels"}));
    EXPECT_EQ(listed(rig, 5), (Names{"lakes", "parcels", "old.gis"}));
    EXPECT_EQ(listed(rig, 6), (Names{"labels"}));
    EXPECT_EQ(listed(rig, 7), (Names{"old.gis"}));
    EXPECT_EQ(listed(rig, 8), (Names{"flow"}));
    EXPECT_EQ(listed(rig, 9), (Names{"terrain"}));
    EXPECT_EQ(listed(rig, 10), (Names{"lakes", "old.gis"}));
    EXPECT_EQ(listed(rig, 11), (Names{"points", "roads", "lakes", "parcels", "old.gis", "OLD.GIS", "table.gis",
                                      "labels", "flow", "web tiles"}));
}

TEST(ListLayers, Other_kinds_add_nothing) {
    UtilitiesRig rig;
    fill(rig.Map());
    for (const int kind : {-1, 0, 12, 100}) EXPECT_TRUE(listed(rig, kind).empty()) << kind;
}

TEST(ListLayers, Appends_to_what_the_combo_box_holds) {
    UtilitiesRig rig;
    fill(rig.Map());
    ComboBox combo;
    combo.Items = {"first"};
    rig.Module->ListLayers(4, combo);
    EXPECT_EQ(combo.Items, (Names{"first", "roads", "parcels"}));
}

TEST(ListLayers, A_map_without_layers_is_false_without_a_message) {
    UtilitiesRig rig;
    ComboBox combo;
    EXPECT_FALSE(rig.Module->ListLayers(1, combo));
    EXPECT_TRUE(rig.Messages.Boxes().empty());
}

TEST(ListLayers, Without_a_connection_it_reports_and_returns_false) {
    UtilitiesRig rig;
    Utilities unconnected(rig.Services);
    ComboBox combo;
    EXPECT_FALSE(unconnected.ListLayers(1, combo));
    tests::expect_error_box(rig, "ListLayers: 91\r");
}

TEST(GetLayerByName, Finds_the_first_of_that_name_in_groups_too) {
    UtilitiesRig rig;
    fill(rig.Map());
    rig.Map().AddLayer(layer("lakes", LayerClass::kRaster));
    EXPECT_EQ(rig.Module->GetLayerByName("lakes").Class, LayerClass::kFeature);
    EXPECT_EQ(rig.Module->GetLayerByName("dem").Class, LayerClass::kRaster);
}

TEST(GetLayerByName, Goes_through_a_group_to_a_layer_of_its_name) {
    UtilitiesRig rig;
    rig.Map().AddGroup("fixes", {layer("fixes", LayerClass::kFeature, ShapeType::kPoint)});
    EXPECT_EQ(rig.Module->GetLayerByName("fixes").Class, LayerClass::kFeature);
    EXPECT_EQ(listed(rig, 1), (Names{"fixes"}));
}

TEST(GetLayerByName, A_missing_name_is_the_callers_run_time_error) {
    UtilitiesRig rig;
    fill(rig.Map());
    for (const char* name : {"Lakes", "lakes ", "", "group"}) {
        try {
            rig.Module->GetLayerByName(name);
            FAIL() << name;
        } catch (const platform::RuntimeError& error) {
            EXPECT_EQ(error.Number, 91);
        }
    }
    EXPECT_TRUE(rig.Messages.Boxes().empty());
}

TEST(LayerExists, Compares_names_exactly) {
    UtilitiesRig rig;
    fill(rig.Map());
    EXPECT_TRUE(rig.Module->LayerExists("roads"));
    EXPECT_TRUE(rig.Module->LayerExists("dem"));
    EXPECT_TRUE(rig.Module->LayerExists("web tiles"));
    EXPECT_FALSE(rig.Module->LayerExists("ROADS"));
    EXPECT_FALSE(rig.Module->LayerExists("group"));
    EXPECT_FALSE(rig.Module->LayerExists(""));
}

TEST(LayerExists, Without_a_connection_it_reports_and_returns_false) {
    UtilitiesRig rig;
    Utilities unconnected(rig.Services);
    EXPECT_FALSE(unconnected.LayerExists("roads"));
    tests::expect_error_box(rig, "LayerExists: 91\r");
}

TEST(FillFieldList, Lists_all_fields_but_the_geometry) {
    UtilitiesRig rig;
    const auto features = std::make_shared<memory::MemoryFeatureClass>(
        ShapeType::kPoint, std::vector<platform::Field>{{"Shape", platform::FieldType::kGeometry},
                                                        {"ANIMAL", platform::FieldType::kText},
                                                        {"Time2", platform::FieldType::kInteger}});
    const auto points = std::make_shared<memory::MemoryFeatureLayer>("points", features);
    ComboBox combo;
    EXPECT_TRUE(rig.Module->FillFieldList(memory::layer_of(points), combo));
    EXPECT_EQ(combo.Items, (Names{"ANIMAL", "Time2"}));
    EXPECT_FALSE(rig.Module->FillFieldList(layer("dem", LayerClass::kRaster), combo));
    EXPECT_TRUE(rig.Messages.Boxes().empty());
}

TEST(FillFieldList, A_layer_whose_data_cannot_be_opened_is_reported) {
    UtilitiesRig rig;
    Layer gone = layer("gone", LayerClass::kFeature, ShapeType::kPoint);
    gone.Feature = std::make_shared<memory::MemoryFeatureLayer>("gone", nullptr);
    ComboBox combo;
    EXPECT_FALSE(rig.Module->FillFieldList(gone, combo));
    tests::expect_error_box(rig, "FillFieldList: 91\r");
    EXPECT_TRUE(combo.Items.empty());
}

TEST(ConnectToApplication, Keeps_application_document_and_map) {
    UtilitiesRig rig;
    EXPECT_EQ(rig.Module->Application(), rig.Application);
    EXPECT_EQ(rig.Module->Document(), rig.Application->Document());
    EXPECT_EQ(rig.Module->FocusMap(), rig.Application->Document()->FocusMap());
    EXPECT_THROW(rig.Module->ConnectToApplication(nullptr), platform::RuntimeError);
}

}  // namespace
}  // namespace wxl::utilities
