#include "adapters/ogr/files_map.h"

#include "adapters/gdal/gdal_support.h"
#include "adapters/raster/raster_dataset.h"
#include "platform/runtime_error.h"

#include <optional>

namespace wxl::files {

using platform::IFeatureCursor;
using platform::Layer;
using platform::LayerClass;
using platform::Search;

class FilesFeatureLayer::SelectionSet final : public platform::ISelectionSet {
public:
    explicit SelectionSet(std::shared_ptr<OgrFeatureClass> features) : m_features(std::move(features)) {}

    std::int64_t Count() const override { return m_rows ? m_features->Count(*m_rows) : m_features->FeatureCount(); }

    std::unique_ptr<IFeatureCursor> Find(const Search& search) override {
        return m_rows ? m_features->FindAmong(*m_rows, search) : m_features->Find(search);
    }

    void SelectAll() { m_rows.reset(); }
    void Select(ChosenRows rows) { m_rows = std::move(rows); }

private:
    std::shared_ptr<OgrFeatureClass> m_features;
    mutable std::optional<ChosenRows> m_rows;  // all without them
};

FilesFeatureLayer::FilesFeatureLayer(std::string name, std::shared_ptr<OgrFeatureClass> features)
    : m_name(std::move(name)),
      m_features(std::move(features)),
      m_selection(std::make_shared<SelectionSet>(m_features)) {}

FilesFeatureLayer::~FilesFeatureLayer() = default;

std::shared_ptr<platform::ISelectionSet> FilesFeatureLayer::Selection() {
    return m_selection;
}

void FilesFeatureLayer::SelectAll() {
    m_selection->SelectAll();
}

void FilesFeatureLayer::Select(std::vector<std::int64_t> oids) {
    m_selection->Select(m_features->Choose(std::move(oids)));
}

void FilesFeatureLayer::SelectWhere(const std::string& condition) {
    m_selection->Select(m_features->ChooseWhere(condition));
}

FilesRasterLayer::FilesRasterLayer(const std::filesystem::path& path, Sources sources) {
    const auto raster = OpenRaster(path, sources, CellShape::kOblong);
    m_name = raster->Name();
    m_geometry = raster->Band()->Geometry();
    m_reference = raster->Reference();
}

bool FilesRasterLayer::LiesIn(const platform::SpatialReference& reference) const {
    return may_be_same(m_reference, reference);
}

std::shared_ptr<FilesFeatureLayer> OpenFeatureLayer(const std::string& input, Sources sources) {
    auto features = OgrFeatureClass::Open(input, sources);
    return std::make_shared<FilesFeatureLayer>(features->Name(), features);
}

namespace {

/// A shapefile is its one layer; other files are told with the layer's name.
std::string source_of(const OgrFeatureClass& features) {
    const std::string path = std::filesystem::absolute(features.Path()).lexically_normal().string();
    return features.Path().extension() == ".shp" ? path : path + ":" + features.Name();
}

}  // namespace

Layer layer_of(const std::shared_ptr<FilesFeatureLayer>& layer) {
    Layer entry;
    entry.Name = layer->Name();
    entry.Class = LayerClass::kFeature;
    entry.Shape = layer->Features().Shape();
    entry.Source = source_of(layer->Features());
    entry.Feature = layer;
    return entry;
}

Layer layer_of(const std::shared_ptr<FilesRasterLayer>& layer) {
    Layer entry;
    entry.Name = layer->Name();
    entry.Class = LayerClass::kRaster;
    entry.Raster = layer;
    return entry;
}

void FilesMap::AddDataset(const std::filesystem::path& dataset) {
    try {
        m_layers.push_back(layer_of(OpenFeatureLayer(dataset.string())));
    } catch (const platform::RuntimeError& error) {
        if (error.Number != platform::error_number::kDeviceIo) throw;
        m_layers.push_back(layer_of(std::make_shared<FilesRasterLayer>(dataset)));
    }
}

namespace {

class UndrawnGraphics final : public platform::IGraphicsContainer {
public:
    void AddLeg(const platform::TrackLeg&) override {}
    void DeleteLegs() override {}
    void Refresh() override {}
    bool CanPlace(const platform::Point&) const override { return true; }
    bool IsInView(const platform::Point&) const override { return true; }
    void PanTo(const platform::Point&) override {}
    void Zoom(double, const platform::Point&) override {}
    void ZoomTo(const std::vector<platform::Point>&) override {}
};

}  // namespace

std::unique_ptr<platform::IGraphicsContainer> FilesMap::NewGraphics(const platform::SpatialReference&) {
    return std::make_unique<UndrawnGraphics>();
}

void FilesMap::AddGroup(std::string name, std::vector<Layer> layers) {
    Layer group;
    group.Name = std::move(name);
    group.Class = LayerClass::kGroup;
    m_layers.push_back(std::move(group));
    for (Layer& layer : layers) m_layers.push_back(std::move(layer));
}

void FilesDocument::AddSelectedLayer(const Layer& layer) {
    m_map->AddLayer(layer);
    m_selectedLayer = layer;
}

}  // namespace wxl::files
