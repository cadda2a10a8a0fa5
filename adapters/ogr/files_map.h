#pragma once
// A map document over files on disk, without a screen.

#include "adapters/ogr/ogr_feature_class.h"
#include "platform/map.h"

namespace wxl::files {

/// A feature layer over a file, with a selection. All features are selected at first.
class FilesFeatureLayer final : public platform::IFeatureLayer {
public:
    FilesFeatureLayer(std::string name, std::shared_ptr<OgrFeatureClass> features);
    ~FilesFeatureLayer() override;

    std::string Name() const override { return m_name; }
    std::shared_ptr<platform::IFeatureClass> FeatureClass() override { return m_features; }
    std::shared_ptr<platform::ISelectionSet> Selection() override;
    std::string WhyReadOnly() const override { return m_features->WhyReadOnly(); }

    void SelectAll();

    /// Selects exactly these object IDs. Deleted rows leave the selection, and it follows rows whose object ID changes.
    void Select(std::vector<std::int64_t> oids);

    /// Selects what meets an SQL condition; RuntimeError 5 for one that means nothing.
    void SelectWhere(const std::string& condition);

    OgrFeatureClass& Features() { return *m_features; }

private:
    class SelectionSet;

    std::string m_name;
    std::shared_ptr<OgrFeatureClass> m_features;
    std::shared_ptr<SelectionSet> m_selection;
};

/// A raster layer: where the raster of a file lies.
class FilesRasterLayer final : public platform::IRasterLayer {
public:
    /// Reads the geometry; RuntimeError as OpenRaster.
    explicit FilesRasterLayer(const std::filesystem::path& path, Sources sources = Sources::kPlain);
    std::string Name() const override { return m_name; }
    platform::RasterGeometry Geometry() const override { return m_geometry; }
    bool LiesIn(const platform::SpatialReference& reference) const override;

private:
    std::string m_name;
    platform::RasterGeometry m_geometry;
    platform::SpatialReference m_reference;
};

/// Opens "PATH" or "PATH:LAYER" as a layer named after the file's layer; RuntimeError as OgrFeatureClass::Open.
std::shared_ptr<FilesFeatureLayer> OpenFeatureLayer(const std::string& input, Sources sources = Sources::kPlain);

/// Entries for FilesMap::AddLayer.
platform::Layer layer_of(const std::shared_ptr<FilesFeatureLayer>& layer);
platform::Layer layer_of(const std::shared_ptr<FilesRasterLayer>& layer);

/// Layers and group layers in the order in which they were added.
class FilesMap final : public platform::IMap {
public:
    // IMap
    std::vector<platform::Layer> Layers() override { return m_layers; }

    /// Opens the file as a feature layer, else as a raster layer; RuntimeError when it is neither.
    void AddDataset(const std::filesystem::path& dataset) override;

    /// Graphics that are drawn nowhere.
    std::unique_ptr<platform::IGraphicsContainer> NewGraphics(const platform::SpatialReference& reference) override;

    void AddLayer(platform::Layer layer) { m_layers.push_back(std::move(layer)); }

    /// Appends a group layer and the layers in it.
    void AddGroup(std::string name, std::vector<platform::Layer> layers);

private:
    std::vector<platform::Layer> m_layers;
};

/// A document with one map; the layer that the caller highlights is its selected layer.
class FilesDocument final : public platform::IMxDocument {
public:
    FilesDocument() : m_map(std::make_shared<FilesMap>()) {}

    // IMxDocument
    std::shared_ptr<platform::IMap> FocusMap() override { return m_map; }
    std::optional<platform::Layer> SelectedLayer() override { return m_selectedLayer; }
    void Redraw() override {}
    void SetListener(platform::IMapEvents* listener) override { m_listener = listener; }

    FilesMap& Map() { return *m_map; }

    /// Adds a layer to the map and highlights it.
    void AddSelectedLayer(const platform::Layer& layer);
    void SetSelectedLayer(std::optional<platform::Layer> layer) { m_selectedLayer = std::move(layer); }

private:
    std::shared_ptr<FilesMap> m_map;
    std::optional<platform::Layer> m_selectedLayer;
    platform::IMapEvents* m_listener = nullptr;
};

/// An application with one document and no extensions.
class FilesApplication final : public platform::IApplication {
public:
    FilesApplication() : m_document(std::make_shared<FilesDocument>()) {}
    std::shared_ptr<platform::IMxDocument> Document() override { return m_document; }
    std::shared_ptr<platform::IExtension> FindExtension(std::string_view) override { return nullptr; }
    FilesDocument& Doc() { return *m_document; }

private:
    std::shared_ptr<FilesDocument> m_document;
};

}  // namespace wxl::files
