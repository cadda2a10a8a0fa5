#include "adapters/memory/memory_map.h"

#include <algorithm>

namespace wxl::memory {

using namespace wxl::platform;

class MemoryFeatureLayer::SelectionSet final : public ISelectionSet {
public:
    explicit SelectionSet(std::shared_ptr<MemoryFeatureClass> features) : m_features(std::move(features)) {}

    std::int64_t Count() const override {
        return std::count_if(m_oids.begin(), m_oids.end(), [&](auto oid) { return m_features->HasRow(oid); });
    }
    std::unique_ptr<IFeatureCursor> Find(const Search& search) override {
        return m_features->FindAmong(m_oids, search);
    }
    void Select(std::set<std::int64_t> oids) { m_oids = std::move(oids); }

private:
    std::shared_ptr<MemoryFeatureClass> m_features;
    std::set<std::int64_t> m_oids;
};

MemoryFeatureLayer::MemoryFeatureLayer(std::string name, std::shared_ptr<MemoryFeatureClass> features)
    : m_name(std::move(name)),
      m_features(std::move(features)),
      m_selection(std::make_shared<SelectionSet>(m_features)) {}

MemoryFeatureLayer::~MemoryFeatureLayer() = default;

std::shared_ptr<ISelectionSet> MemoryFeatureLayer::Selection() {
    return m_selection;
}

void MemoryFeatureLayer::Select(std::set<std::int64_t> oids) {
    m_selection->Select(std::move(oids));
}

void MemoryFeatureLayer::SelectAll() {
    const auto oids = m_features->OIDs();
    m_selection->Select({oids.begin(), oids.end()});
}

void MemoryMap::AddDataset(const std::filesystem::path& dataset) {
    m_added.push_back(dataset);
    if (m_onAdd) m_onAdd(dataset);
}

void MemoryMap::PanTo(const Point& centre) {
    m_pans.push_back(centre);
    if (m_view.IsEmpty()) return;
    const double halfWidth = m_view.Width() / 2.0;
    const double halfHeight = m_view.Height() / 2.0;
    m_view = {centre.X - halfWidth, centre.Y - halfHeight, centre.X + halfWidth, centre.Y + halfHeight};
}

namespace {

class RecordingGraphics final : public IGraphicsContainer {
public:
    RecordingGraphics(MemoryMap& map, std::shared_ptr<MemoryGraphics> record)
        : m_map(map), m_record(std::move(record)) {}
    void AddLeg(const TrackLeg& leg) override { m_record->Legs.push_back(leg); }
    void DeleteLegs() override {
        m_record->Legs.clear();
        ++m_record->Deletions;
    }
    void Refresh() override {
        ++m_record->Refreshes;
        if (m_record->OnRefresh) m_record->OnRefresh();
    }
    bool CanPlace(const Point& place) const override {
        return m_map.World().IsEmpty() || lies_in(m_map.World(), place);
    }
    bool IsInView(const Point& place) const override { return m_map.View().IsEmpty() || lies_in(m_map.View(), place); }
    void PanTo(const Point& centre) override { m_map.PanTo(centre); }
    void Zoom(double factor, const Point& centre) override { m_record->Zooms.emplace_back(factor, centre); }
    void ZoomTo(const std::vector<Point>& places) override { m_record->ZoomedTo.push_back(places); }

private:
    static bool lies_in(const Extent& part, const Point& place) {
        return place.X >= part.XMin && place.X <= part.XMax && place.Y >= part.YMin && place.Y <= part.YMax;
    }

    MemoryMap& m_map;
    std::shared_ptr<MemoryGraphics> m_record;
};

class MemoryExtension final : public IExtension {
public:
    explicit MemoryExtension(std::string name) : m_name(std::move(name)) {}
    std::string Name() const override { return m_name; }

private:
    std::string m_name;
};

}  // namespace

std::unique_ptr<IGraphicsContainer> MemoryMap::NewGraphics(const SpatialReference& reference) {
    m_graphics.push_back(std::make_shared<MemoryGraphics>());
    m_graphics.back()->Reference = reference;
    return std::make_unique<RecordingGraphics>(*this, m_graphics.back());
}

void MemoryMap::AddGroup(std::string name, std::vector<Layer> layers) {
    Layer group;
    group.Name = std::move(name);
    group.Class = LayerClass::kGroup;
    m_layers.push_back(std::move(group));
    for (Layer& layer : layers) m_layers.push_back(std::move(layer));
}

void MemoryDocument::AddSelectedLayer(const Layer& layer) {
    m_map->AddLayer(layer);
    m_selectedLayer = layer;
}

std::shared_ptr<IExtension> MemoryApplication::FindExtension(std::string_view identifier) {
    const auto found = m_extensions.find(identifier);
    return found == m_extensions.end() ? nullptr : found->second;
}

void MemoryApplication::AddExtension(std::string identifier) {
    auto extension = std::make_shared<MemoryExtension>(identifier);
    m_extensions[std::move(identifier)] = std::move(extension);
}

Layer layer_of(const std::shared_ptr<MemoryFeatureLayer>& layer) {
    Layer entry;
    entry.Name = layer->Name();
    entry.Class = LayerClass::kFeature;
    entry.Shape = layer->Features().Shape();
    entry.Feature = layer;
    return entry;
}

Layer layer_of(const std::shared_ptr<MemoryRasterLayer>& layer) {
    Layer entry;
    entry.Name = layer->Name();
    entry.Class = LayerClass::kRaster;
    entry.Raster = layer;
    return entry;
}

}  // namespace wxl::memory
