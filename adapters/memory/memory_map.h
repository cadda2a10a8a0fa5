#pragma once
#include "adapters/memory/memory_feature_class.h"
#include "platform/map.h"

namespace wxl::memory {

/// A feature layer over a MemoryFeatureClass with a selection of object IDs. Nothing is selected at first.
class MemoryFeatureLayer final : public platform::IFeatureLayer {
public:
    MemoryFeatureLayer(std::string name, std::shared_ptr<MemoryFeatureClass> features);
    ~MemoryFeatureLayer() override;

    std::string Name() const override { return m_name; }
    std::shared_ptr<platform::IFeatureClass> FeatureClass() override { return m_features; }
    std::shared_ptr<platform::ISelectionSet> Selection() override;
    std::string WhyReadOnly() const override { return m_whyReadOnly; }
    bool IsRemoved() const override { return m_removed; }

    /// Selects exactly these object IDs, or all features.
    void Select(std::set<std::int64_t> oids);
    void SelectAll();
    void SetWhyReadOnly(std::string reason) { m_whyReadOnly = std::move(reason); }
    void SetRemoved() { m_removed = true; }

    /// The class as what it is, for tests.
    MemoryFeatureClass& Features() { return *m_features; }

private:
    class SelectionSet;

    std::string m_name;
    std::shared_ptr<MemoryFeatureClass> m_features;
    std::shared_ptr<SelectionSet> m_selection;
    std::string m_whyReadOnly;
    bool m_removed = false;
};

/// A raster layer: a name and where it lies.
class MemoryRasterLayer final : public platform::IRasterLayer {
public:
    MemoryRasterLayer(std::string name, platform::RasterGeometry geometry, platform::SpatialReference reference = {})
        : m_name(std::move(name)), m_geometry(geometry), m_reference(std::move(reference)) {}
    std::string Name() const override { return m_name; }
    platform::RasterGeometry Geometry() const override { return m_geometry; }

    /// By name.
    bool LiesIn(const platform::SpatialReference& reference) const override {
        return m_reference.Name.empty() || reference.Name.empty() || m_reference.Name == reference.Name;
    }

private:
    std::string m_name;
    platform::RasterGeometry m_geometry;
    platform::SpatialReference m_reference;
};

/// What was drawn through one graphics container; stays when the container is gone.
struct MemoryGraphics {
    platform::SpatialReference Reference = {};
    std::vector<platform::TrackLeg> Legs;
    int Deletions = 0;
    int Refreshes = 0;
    std::vector<std::pair<double, platform::Point>> Zooms = {};  ///< factors and centres
    std::vector<std::vector<platform::Point>> ZoomedTo = {};
    std::function<void()> OnRefresh = {};  ///< called with each refresh; may throw
};

/// A map: layers and group layers, and a record of what was done to it.
class MemoryMap final : public platform::IMap {
public:
    // IMap
    std::vector<platform::Layer> Layers() override { return m_layers; }
    void AddDataset(const std::filesystem::path& dataset) override;
    std::unique_ptr<platform::IGraphicsContainer> NewGraphics(const platform::SpatialReference& reference) override;

    /// Appends a layer at the top level, or a group layer followed by its layers.
    void AddLayer(platform::Layer layer) { m_layers.push_back(std::move(layer)); }
    void AddGroup(std::string name, std::vector<platform::Layer> layers);
    void RemoveLayers() { m_layers.clear(); }

    /// The part on screen; empty, as at first: there is no screen.
    void SetView(const platform::Extent& view) { m_view = view; }
    platform::Extent View() const { return m_view; }

    /// What lies outside does not exist in the map's coordinate system. At first everything exists.
    void SetWorld(const platform::Extent& world) { m_world = world; }
    platform::Extent World() const { return m_world; }
    void PanTo(const platform::Point& centre);

    /// Called with each added dataset; may throw, or add a layer.
    void SetOnAddDataset(std::function<void(const std::filesystem::path&)> action) { m_onAdd = std::move(action); }

    const std::vector<std::filesystem::path>& AddedDatasets() const { return m_added; }
    const std::vector<platform::Point>& Pans() const { return m_pans; }

    /// One entry per container made, oldest first.
    const std::vector<std::shared_ptr<MemoryGraphics>>& Graphics() const { return m_graphics; }

private:
    std::vector<platform::Layer> m_layers;
    platform::Extent m_view;
    platform::Extent m_world;
    std::vector<std::filesystem::path> m_added;
    std::vector<platform::Point> m_pans;
    std::vector<std::shared_ptr<MemoryGraphics>> m_graphics;
    std::function<void(const std::filesystem::path&)> m_onAdd;
};

/// A map document with one map, a highlighted layer and a count of redraws.
class MemoryDocument final : public platform::IMxDocument {
public:
    MemoryDocument() : m_map(std::make_shared<MemoryMap>()) {}

    // IMxDocument
    std::shared_ptr<platform::IMap> FocusMap() override { return m_map; }
    std::optional<platform::Layer> SelectedLayer() override { return m_selectedLayer; }
    void Redraw() override { ++m_redraws; }
    void SetListener(platform::IMapEvents* listener) override { m_listener = listener; }

    MemoryMap& Map() { return *m_map; }
    void SetMap(std::shared_ptr<MemoryMap> map) { m_map = std::move(map); }

    /// Adds a layer to the map and highlights it.
    void AddSelectedLayer(const platform::Layer& layer);
    void SetSelectedLayer(std::optional<platform::Layer> layer) { m_selectedLayer = std::move(layer); }
    int Redraws() const { return m_redraws; }

    /// Whoever listens to map events now, or null.
    platform::IMapEvents* Listener() const { return m_listener; }

private:
    std::shared_ptr<MemoryMap> m_map;
    std::optional<platform::Layer> m_selectedLayer;
    int m_redraws = 0;
    platform::IMapEvents* m_listener = nullptr;
};

/// An application with one document; it knows the extensions it was told of.
class MemoryApplication final : public platform::IApplication {
public:
    MemoryApplication() : m_document(std::make_shared<MemoryDocument>()) {}

    // IApplication
    std::shared_ptr<platform::IMxDocument> Document() override { return m_document; }
    std::shared_ptr<platform::IExtension> FindExtension(std::string_view identifier) override;

    MemoryDocument& Doc() { return *m_document; }

    /// Makes an extension of that identifier known.
    void AddExtension(std::string identifier);

private:
    std::shared_ptr<MemoryDocument> m_document;
    std::map<std::string, std::shared_ptr<platform::IExtension>, std::less<>> m_extensions;
};

/// Entries for MemoryMap::AddLayer.
platform::Layer layer_of(const std::shared_ptr<MemoryFeatureLayer>& layer);
platform::Layer layer_of(const std::shared_ptr<MemoryRasterLayer>& layer);

}  // namespace wxl::memory
