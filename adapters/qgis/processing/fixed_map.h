#pragma once
#include "platform/map.h"

#include <memory>
#include <optional>
#include <string_view>
#include <vector>

namespace wxl::qgis {

/// A map that holds the layers of one algorithm and nothing else: no project, no canvas, no graphics.
class FixedMap final : public platform::IMap {
public:
    void Add(platform::Layer layer) { m_layers.push_back(std::move(layer)); }
    std::vector<platform::Layer> Layers() override { return m_layers; }
    void AddDataset(const std::filesystem::path&) override {}

    /// RuntimeError 5.
    std::unique_ptr<platform::IGraphicsContainer> NewGraphics(const platform::SpatialReference& reference) override;

private:
    std::vector<platform::Layer> m_layers;
};

/// The document of a FixedMap; its first layer is the highlighted one.
class FixedDocument final : public platform::IMxDocument {
public:
    std::shared_ptr<platform::IMap> FocusMap() override { return m_map; }
    std::optional<platform::Layer> SelectedLayer() override;
    void Redraw() override {}
    void SetListener(platform::IMapEvents*) override {}
    FixedMap& Map() { return *m_map; }

private:
    std::shared_ptr<FixedMap> m_map = std::make_shared<FixedMap>();
};

class FixedApplication final : public platform::IApplication {
public:
    std::shared_ptr<platform::IMxDocument> Document() override { return m_document; }
    std::shared_ptr<platform::IExtension> FindExtension(std::string_view) override { return nullptr; }
    FixedMap& Map() { return m_document->Map(); }

private:
    std::shared_ptr<FixedDocument> m_document = std::make_shared<FixedDocument>();
};

}  // namespace wxl::qgis
