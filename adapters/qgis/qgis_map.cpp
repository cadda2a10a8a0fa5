#include "adapters/qgis/qgis_map.h"

#include "adapters/qgis/qgis_graphics.h"
#include "adapters/qgis/qgis_layers.h"
#include "adapters/qgis/qgis_values.h"
#include "platform/runtime_error.h"

#include <qgslayertree.h>
#include <qgsproject.h>
#include <qgsrasterlayer.h>
#include <qgsvectorlayer.h>

namespace wxl::qgis {
namespace {

void walk(QgsLayerTreeGroup& group, const LayerNames& names, std::vector<platform::Layer>& layers) {
    for (QgsLayerTreeNode* node : group.children()) {
        if (QgsLayerTree::isGroup(node)) {
            QgsLayerTreeGroup& inner = *QgsLayerTree::toGroup(node);
            platform::Layer layer;
            layer.Name = FromQString(inner.name());
            layer.Class = platform::LayerClass::kGroup;
            layers.push_back(layer);
            walk(inner, names, layers);
        } else if (QgsMapLayer* layer = QgsLayerTree::toLayer(node)->layer()) {
            layers.push_back(FromQgsLayer(*layer, names));
        }
    }
}

}  // namespace

QgsMapLayer* HighlightedLayer(const Desktop& desktop) {
    if (!desktop.LayerTree) return desktop.ActiveLayer ? desktop.ActiveLayer() : nullptr;
    const QList<QgsLayerTreeNode*> nodes = desktop.LayerTree->selectedNodes();
    if (nodes.size() != 1 || !QgsLayerTree::isLayer(nodes.first())) return nullptr;
    return QgsLayerTree::toLayer(nodes.first())->layer();
}

QgisMap::QgisMap(Desktop desktop) : m_desktop(std::move(desktop)) {}

std::vector<platform::Layer> QgisMap::Layers() {
    std::vector<platform::Layer> layers;
    walk(*QgsProject::instance()->layerTreeRoot(), LayerNames(), layers);
    return layers;
}

void QgisMap::AddDataset(const std::filesystem::path& dataset) {
    const QString path = ToQString(dataset.string());
    const QString name = ToQString(dataset.stem().string());
    std::unique_ptr<QgsMapLayer> layer;
    if (dataset.extension() == ".shp")
        layer = std::make_unique<QgsVectorLayer>(path, name, QStringLiteral("ogr"));
    else
        layer = std::make_unique<QgsRasterLayer>(path, name, QStringLiteral("gdal"));
    if (!layer->isValid())
        platform::Raise(platform::error_number::kDeviceIo,
                        "The dataset \"" + dataset.string() + "\" could not be added to the map.");
    // The highlighted layer stays the one that the user works on.
    QgsMapLayer* current = m_desktop.LayerTree ? m_desktop.LayerTree->currentLayer() : nullptr;
    QgsProject::instance()->addMapLayer(layer.release());
    if (current) m_desktop.LayerTree->setCurrentLayer(current);
}

std::unique_ptr<platform::IGraphicsContainer> QgisMap::NewGraphics(const platform::SpatialReference& reference) {
    return std::make_unique<QgisTrackGraphics>(*m_desktop.Canvas, ToCrs(reference));
}

QgisDocument::QgisDocument(Desktop desktop)
    : m_desktop(std::move(desktop)), m_map(std::make_shared<QgisMap>(m_desktop)) {
    QgsProject* project = QgsProject::instance();
    const auto contents = [this] {
        if (m_listener) m_listener->ContentsChanged();
    };
    connect(project, &QgsProject::layersAdded, this, contents);
    connect(project, &QgsProject::layersRemoved, this, contents);
    connect(project, &QgsProject::cleared, this, [this] {
        if (m_listener) m_listener->FocusMapChanged();
    });
}

std::shared_ptr<platform::IMap> QgisDocument::FocusMap() {
    return m_map;
}

std::optional<platform::Layer> QgisDocument::SelectedLayer() {
    QgsMapLayer* layer = HighlightedLayer(m_desktop);
    if (!layer) return std::nullopt;
    return FromQgsLayer(*layer);
}

void QgisDocument::Redraw() {
    for (QgsMapLayer* layer : QgsProject::instance()->mapLayers()) layer->triggerRepaint();
    if (m_desktop.Canvas) m_desktop.Canvas->refresh();
}

void QgisDocument::SetListener(platform::IMapEvents* listener) {
    m_listener = listener;
    WatchSelections();
}

void QgisDocument::WatchSelections() {
    for (QgsMapLayer* layer : QgsProject::instance()->mapLayers()) {
        auto* vector = qobject_cast<QgsVectorLayer*>(layer);
        if (!vector) continue;
        disconnect(vector, &QgsVectorLayer::selectionChanged, this, nullptr);
        if (m_listener)
            connect(vector, &QgsVectorLayer::selectionChanged, this, [this] {
                if (m_listener) m_listener->SelectionChanged();
            });
    }
}

std::shared_ptr<platform::IExtension> QgisApplication::FindExtension(std::string_view) {
    return nullptr;
}

}  // namespace wxl::qgis
