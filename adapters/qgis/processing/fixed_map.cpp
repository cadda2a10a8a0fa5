#include "adapters/qgis/processing/fixed_map.h"

#include "platform/runtime_error.h"

namespace wxl::qgis {

std::unique_ptr<platform::IGraphicsContainer> FixedMap::NewGraphics(const platform::SpatialReference&) {
    platform::Raise(platform::error_number::kInvalidCall, "An algorithm draws nothing on the map.");
}

std::optional<platform::Layer> FixedDocument::SelectedLayer() {
    const std::vector<platform::Layer> layers = m_map->Layers();
    return layers.empty() ? std::nullopt : std::optional(layers.front());
}

}  // namespace wxl::qgis
