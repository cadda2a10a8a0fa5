#include "adapters/qgis/result_layers.h"

#include "adapters/qgis/layer_names.h"
#include "adapters/qgis/qgis_values.h"
#include "adapters/qgis/result_styles.h"
#include "adapters/raster/raster_dataset.h"
#include "kde_tool/animal_run.h"
#include "platform/runtime_error.h"
#include "platform/text.h"

#include <algorithm>
#include <array>
#include <filesystem>
#include <qgslayertree.h>
#include <qgslayertreelayer.h>
#include <qgsproject.h>
#include <utility>

namespace wxl::qgis {
namespace {

constexpr int kExpandedLayers = 24;  ///< a group of more layers is added folded up

/// What a shapefile of isopleths holds, told by the end of its name.
struct IsoplethKind {
    const char* Suffix;
    const char* Name;   ///< in the layer's name
    const char* Field;  ///< of the percentages
    bool Donuts;
};

constexpr std::array<IsoplethKind, 3> kKinds = {{{"_line", "isopleth lines", "PERCENT", false},
                                                 {"_poly", "isopleth polygons", "PERCENT", false},
                                                 {"_donut", "isopleth donuts", "PERCENT2", true}}};

const IsoplethKind& kind_of(const std::string& path) {
    const std::string stem = std::filesystem::path(path).stem().string();
    const auto* kind =
        std::find_if(kKinds.begin(), kKinds.end(), [&](const auto& k) { return stem.ends_with(k.Suffix); });
    return kind == kKinds.end() ? kKinds.front() : *kind;
}

QString method_name(kde_tool::BandwidthMethod method) {
    switch (method) {
        case kde_tool::BandwidthMethod::kLscv:
            return QStringLiteral("LSCV");
        case kde_tool::BandwidthMethod::kBcv:
            return QStringLiteral("BCV");
        case kde_tool::BandwidthMethod::kManual:
            return QStringLiteral("user-defined bandwidth");
        case kde_tool::BandwidthMethod::kProportion:
            return QStringLiteral("proportions of the reference bandwidth");
        case kde_tool::BandwidthMethod::kHref:
            break;
    }
    return QStringLiteral("reference bandwidth");
}

double maximum_of(const std::filesystem::path& raster) {
    try {
        return files::OpenRaster(raster)->Band()->ComputeStatistics().Maximum;
    } catch (const platform::RuntimeError&) {
        // A raster that cannot be read is met again when its layer is opened.
        return 0.0;
    }
}

/// "NAME", or "NAME (2)" and so on where the project has such a group.
QString free_group_name(const QString& name) {
    QgsLayerTree& tree = *QgsProject::instance()->layerTreeRoot();
    QString free = name;
    for (int number = 2; tree.findGroup(free); ++number) free = QStringLiteral("%1 (%2)").arg(name).arg(number);
    return free;
}

/// The name may be the one that a shapefile gives the system.
bool same_system(platform::SpatialReference a, const platform::SpatialReference& b) {
    a.Name = b.Name;
    return a == b;
}

/// The coordinate system of the point layer as QGIS has it: read back from the text in a dataset it may lose its code.
QgsCoordinateReferenceSystem crs_of(const kde_tool::RunFrame& frame) {
    const QgsMapLayer* layer = LayerNames().Find(frame.Inputs.LayerName);
    if (layer && same_system(FromCrs(layer->crs()), frame.Reference)) return layer->crs();
    return QgsCoordinateReferenceSystem::fromWkt(ToQString(frame.Reference.Wkt));
}

QString percent_text(double percent) {
    return ToQString(platform::NumberText(percent)) + QStringLiteral(" %");
}

/// One class for each percentage; a donut lies between a percentage and the one before it in the list.
std::vector<IsoplethClass> classes_of(const std::vector<double>& percentages, bool donuts) {
    std::vector<IsoplethClass> classes;
    double before = 0.0;
    for (const double percent : percentages) {
        const QString from =
            donuts && before > 0.0 ? ToQString(platform::NumberText(before)) + QStringLiteral(" to ") : QString();
        classes.push_back({percent, from + percent_text(percent)});
        before = percent;
    }
    return classes;
}

}  // namespace

void ResultLayers::RunBegins(const kde_tool::RunFrame& frame, const kde_tool::GroupedFixes&) {
    m_groupName =
        QStringLiteral("Home ranges: %1, %2").arg(ToQString(frame.Inputs.LayerName), method_name(frame.Inputs.Method));
    m_crs = crs_of(frame);
    m_valuesPerAnimal = frame.Values.size();
    m_valuesDone.clear();
    m_rasters.clear();
    m_isopleths.clear();
}

void ResultLayers::AnimalDone(const kde_tool::AnimalRecord& record) {
    if (m_form.chkAddToMap.Value == 0) return;
    QString animal = ToQString(platform::ValueText(record.Id));
    const std::size_t value = ++m_valuesDone[record.NamingId];
    if (m_valuesPerAnimal > 1) animal += QStringLiteral(" (b%1)").arg(value);
    std::vector<double> percentages;
    for (const kde_tool::IsoplethRecord& isopleth : record.Isopleths) percentages.push_back(isopleth.Percent);
    for (const std::string& file : record.Files) {
        if (std::filesystem::path(file).extension() == ".shp")
            m_isopleths.push_back({file, animal, 0.0, percentages});
        else
            m_rasters.push_back({file, animal, maximum_of(file), {}});
    }
}

void ResultLayers::RunEnds(kde_tool::RunOutcome outcome) {
    const auto isopleths = std::exchange(m_isopleths, {});
    const auto rasters = std::exchange(m_rasters, {});
    if (outcome != kde_tool::RunOutcome::kComplete && outcome != kde_tool::RunOutcome::kStopped) return;
    QList<QgsMapLayer*> layers;
    std::string missing;
    const auto take = [&](std::unique_ptr<QgsMapLayer> layer, const Dataset& dataset) {
        m_host.Yield();
        if (!layer->isValid()) {
            missing += "\n" + dataset.Path;
            return;
        }
        if (m_crs.isValid()) layer->setCrs(m_crs);
        layers << layer.release();
    };
    for (const Dataset& dataset : isopleths) take(OpenIsopleths(dataset), dataset);
    for (const Dataset& dataset : rasters) take(OpenRaster(dataset), dataset);
    if (!layers.isEmpty()) Show(layers);
    if (!missing.empty())
        platform::Raise(platform::error_number::kDeviceIo, "These results could not be added to the map:" + missing);
}

std::unique_ptr<QgsMapLayer> ResultLayers::OpenRaster(const Dataset& dataset) const {
    QgsRasterLayer::LayerOptions options;
    options.loadDefaultStyle = false;
    options.skipCrsValidation = true;
    auto layer = std::make_unique<QgsRasterLayer>(ToQString(dataset.Path), dataset.Animal + QStringLiteral(": density"),
                                                  QStringLiteral("gdal"), options);
    if (layer->isValid()) StyleDensity(*layer, dataset.Maximum);
    return layer;
}

std::unique_ptr<QgsMapLayer> ResultLayers::OpenIsopleths(const Dataset& dataset) const {
    const IsoplethKind& kind = kind_of(dataset.Path);
    QgsVectorLayer::LayerOptions options(QgsProject::instance()->transformContext());
    options.loadDefaultStyle = false;
    options.skipCrsValidation = true;
    auto layer = std::make_unique<QgsVectorLayer>(ToQString(dataset.Path),
                                                  dataset.Animal + QLatin1String(": ") + QLatin1String(kind.Name),
                                                  QStringLiteral("ogr"), options);
    if (layer->isValid())
        StyleIsopleths(*layer, QLatin1String(kind.Field), classes_of(dataset.Percentages, kind.Donuts));
    return layer;
}

void ResultLayers::Show(const QList<QgsMapLayer*>& layers) const {
    // The highlighted layer stays the one that the user works on.
    QgsMapLayer* current = m_desktop.LayerTree ? m_desktop.LayerTree->currentLayer() : nullptr;
    if (m_desktop.Canvas) m_desktop.Canvas->freeze(true);
    QgsProject::instance()->addMapLayers(layers, false);
    // The group is filled before the tree on screen knows of it: one change instead of hundreds.
    auto group = std::make_unique<QgsLayerTreeGroup>(free_group_name(m_groupName));
    for (QgsMapLayer* layer : layers) group->addLayer(layer)->setExpanded(false);
    QgsLayerTreeGroup* shown = group.release();
    shown->setExpanded(false);
    QgsProject::instance()->layerTreeRoot()->insertChildNode(0, shown);
    shown->setExpanded(layers.size() <= kExpandedLayers);
    if (current) m_desktop.LayerTree->setCurrentLayer(current);
    if (m_desktop.Canvas) m_desktop.Canvas->freeze(false);
    if (m_desktop.Canvas) m_desktop.Canvas->refresh();
}

}  // namespace wxl::qgis
