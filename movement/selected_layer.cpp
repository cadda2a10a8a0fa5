#include "movement/selected_layer.h"

#include "platform/runtime_error.h"

namespace wxl::movement {

using namespace wxl::platform;

std::shared_ptr<IFeatureLayer> selected_feature_layer(IMxDocument& document) {
    const auto layer = document.SelectedLayer();
    return layer ? layer->Feature : nullptr;
}

std::shared_ptr<ISelectionSet> selection_of_selected_layer(IMxDocument& document) {
    const auto layer = selected_feature_layer(document);
    if (!layer) Raise(error_number::kObjectNotSet);
    return layer->Selection();
}

std::shared_ptr<ISelectionSet> selection_of_layer_named(IMxDocument& document, std::string_view name) {
    const auto map = document.FocusMap();
    if (!map) Raise(error_number::kObjectNotSet);
    for (const Layer& layer : map->Layers()) {
        if (layer.Name != name || layer.Class == LayerClass::kGroup) continue;
        if (!layer.Feature) Raise(error_number::kTypeMismatch);
        return layer.Feature->Selection();
    }
    return nullptr;
}

std::shared_ptr<IFeatureClass> feature_class_of(IFeatureLayer& layer) {
    auto features = layer.FeatureClass();
    if (!features) Raise(error_number::kObjectNotSet);
    return features;
}

}  // namespace wxl::movement
