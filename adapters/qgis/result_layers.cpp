#include "adapters/qgis/result_layers.h"

#include "adapters/qgis/qgis_values.h"
#include "platform/runtime_error.h"

#include <qgscoordinatetransform.h>
#include <qgsexception.h>
#include <qgslayertree.h>
#include <qgslayertreelayer.h>
#include <qgsproject.h>

namespace wxl::qgis {
namespace {

constexpr double kMargin = 1.05;     ///< around results that are zoomed to
constexpr int kExpandedLayers = 24;  ///< a group of more layers is added folded up

}  // namespace

void ResultLayers::RunBegins(const analysis::RunFrame& frame, const analysis::GroupedFixes&) {
    m_catalogue.Begin(frame);
}

void ResultLayers::AnimalDone(const analysis::AnimalRecord& record) {
    if (m_form.chkAddToMap.Value != 0) m_catalogue.Add(record);
}

void ResultLayers::RunEnds(analysis::RunOutcome outcome) {
    const std::vector<ResultDataset> datasets = m_catalogue.Datasets();
    m_catalogue.Clear();
    if (outcome != analysis::RunOutcome::kComplete && outcome != analysis::RunOutcome::kStopped) return;
    QList<QgsMapLayer*> layers;
    std::string missing;
    for (const ResultDataset& dataset : datasets) {
        auto layer = open_result(dataset);
        m_host.Yield();
        if (!layer->isValid()) {
            missing += "\n" + dataset.Path;
            continue;
        }
        dress_result(*layer, dataset, m_catalogue.Crs());
        layers << layer.release();
    }
    if (!layers.isEmpty()) Show(layers);
    if (!missing.empty())
        platform::Raise(platform::error_number::kDeviceIo, "These results could not be added to the map:" + missing);
}

void ResultLayers::Show(const QList<QgsMapLayer*>& layers) const {
    // The highlighted layer stays the one that the user works on.
    QgsMapLayer* current = m_desktop.LayerTree ? m_desktop.LayerTree->currentLayer() : nullptr;
    if (m_desktop.Canvas) m_desktop.Canvas->freeze(true);
    QgsProject::instance()->addMapLayers(layers, false);
    QgsLayerTreeGroup& group = m_catalogue.NewGroup([&](QgsLayerTreeGroup& filled) {
        for (QgsMapLayer* layer : layers) filled.addLayer(layer)->setExpanded(false);
        filled.setExpanded(false);
    });
    group.setExpanded(layers.size() <= kExpandedLayers);
    if (current) m_desktop.LayerTree->setCurrentLayer(current);
    if (m_desktop.Canvas) m_desktop.Canvas->freeze(false);
    if (m_desktop.Canvas) m_desktop.Canvas->refresh();
}

void show_extent(const Desktop& desktop, const platform::Extent& extent, const platform::SpatialReference& reference) {
    if (!desktop.Canvas || extent.IsEmpty()) return;
    const QgsRectangle box(extent.XMin, extent.YMin, extent.XMax, extent.YMax);
    try {
        const QgsCoordinateTransform toMap(ToCrs(reference), desktop.Canvas->mapSettings().destinationCrs(),
                                           QgsProject::instance()->transformContext());
        QgsRectangle shown = toMap.transformBoundingBox(box);
        shown.scale(kMargin);
        desktop.Canvas->setExtent(shown);
        desktop.Canvas->refresh();
    } catch (const QgsCsException&) {
        return;
    }
}

}  // namespace wxl::qgis
