#pragma once
#include "platform/map.h"

#include <memory>
#include <string_view>

namespace wxl::movement {

/// The feature layer highlighted in the table of contents; null when there is none or it is of another kind.
std::shared_ptr<platform::IFeatureLayer> selected_feature_layer(platform::IMxDocument& document);

/// The selection of the highlighted feature layer; RuntimeError 91 when there is none.
std::shared_ptr<platform::ISelectionSet> selection_of_selected_layer(platform::IMxDocument& document);

/// The selection of the first layer of exactly that name; null when no layer has it, RuntimeError 13 when the layer
/// holds no features.
std::shared_ptr<platform::ISelectionSet> selection_of_layer_named(platform::IMxDocument& document,
                                                                  std::string_view name);

/// The feature class of a layer; RuntimeError 91 when its data are missing.
std::shared_ptr<platform::IFeatureClass> feature_class_of(platform::IFeatureLayer& layer);

}  // namespace wxl::movement
