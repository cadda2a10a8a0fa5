#include "platform/runtime_error.h"
#include "utilities/Utilities.h"

#include <algorithm>

namespace wxl::utilities {

namespace error_number = platform::error_number;
using platform::FeatureType;
using platform::Layer;
using platform::LayerClass;
using platform::Raise;
using platform::ShapeType;

namespace {

bool is_feature_layer_of(const Layer& layer, ShapeType shape) {
    return layer.Class == LayerClass::kFeature && layer.Shape == shape;
}

bool is_of_kind(const Layer& layer, int kind) {
    switch (kind) {
        case 1:
            return true;
        case 2:
            return layer.Class == LayerClass::kRaster;
        case 3:
            return is_feature_layer_of(layer, ShapeType::kPoint);
        case 4:
            return is_feature_layer_of(layer, ShapeType::kPolyline) ||
                   (layer.Class == LayerClass::kFeature && layer.Features == FeatureType::kDimension);
        case 5:
            return is_feature_layer_of(layer, ShapeType::kPolygon);
        case 6:
            return layer.Class == LayerClass::kAnnotation;
        case 7:
            return layer.Class == LayerClass::kFeature && layer.Shape != ShapeType::kNull &&
                   layer.Name.ends_with(".gis");
        case 8:
            return layer.Class == LayerClass::kMesh;
        case 9:
            return layer.Class == LayerClass::kTin;
        case 10:
            return is_feature_layer_of(layer, ShapeType::kPolygon) && layer.Features == FeatureType::kSimple;
        case 11:
            return layer.Class != LayerClass::kRaster && layer.Class != LayerClass::kTin;
        default:
            return false;
    }
}

}  // namespace

std::vector<Layer> Utilities::LayersInGroupsToo() const {
    if (!m_map) Raise(error_number::kObjectNotSet);
    std::vector<Layer> layers = m_map->Layers();
    std::erase_if(layers, [](const Layer& layer) { return layer.Class == LayerClass::kGroup; });
    return layers;
}

Layer Utilities::GetLayerByName(const std::string& sName) {
    for (Layer& layer : LayersInGroupsToo()) {
        if (layer.Name == sName) return std::move(layer);
    }
    Raise(error_number::kObjectNotSet, "There is no layer \"" + sName + "\" in the map.");
}

bool Utilities::LayerExists(const std::string& sName) {
    try {
        return std::ranges::any_of(LayersInGroupsToo(), [&](const Layer& layer) { return layer.Name == sName; });
    } catch (...) {
        ShowError("LayerExists");
        return false;
    }
}

bool Utilities::ListLayers(int iKind, platform::ComboBox& combo) {
    try {
        if (!m_map) Raise(error_number::kObjectNotSet);
        if (m_map->Layers().empty()) return false;
        for (const Layer& layer : LayersInGroupsToo()) {
            if (is_of_kind(layer, iKind)) combo.Items.push_back(layer.Name);
        }
        return true;
    } catch (...) {
        ShowError("ListLayers");
        return false;
    }
}

bool Utilities::FillFieldList(const Layer& layer, platform::ComboBox& combo) {
    try {
        if (!layer.Feature) return false;
        const auto featureClass = layer.Feature->FeatureClass();
        if (!featureClass) Raise(error_number::kObjectNotSet);
        for (const platform::Field& field : featureClass->Table().Fields()) {
            if (field.Type != platform::FieldType::kGeometry) combo.Items.push_back(field.Name);
        }
        return true;
    } catch (...) {
        ShowError("FillFieldList");
        return false;
    }
}

}  // namespace wxl::utilities
