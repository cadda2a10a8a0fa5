#include "adapters/qgis/result_catalogue.h"

#include "adapters/qgis/layer_names.h"
#include "adapters/qgis/qgis_values.h"
#include "adapters/qgis/result_styles.h"
#include "adapters/raster/raster_dataset.h"
#include "analysis/animal_run.h"
#include "platform/runtime_error.h"
#include "platform/text.h"

#include <algorithm>
#include <array>
#include <filesystem>
#include <qgslayertree.h>
#include <qgsproject.h>
#include <utility>

namespace wxl::qgis {
namespace {

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

QString method_name(analysis::BandwidthMethod method) {
    switch (method) {
        case analysis::BandwidthMethod::kLscv:
            return QStringLiteral("LSCV");
        case analysis::BandwidthMethod::kBcv:
            return QStringLiteral("BCV");
        case analysis::BandwidthMethod::kManual:
            return QStringLiteral("user-defined bandwidth");
        case analysis::BandwidthMethod::kProportion:
            return QStringLiteral("proportions of the reference bandwidth");
        case analysis::BandwidthMethod::kAdHoc:
            return QStringLiteral("ad hoc bandwidth");
        case analysis::BandwidthMethod::kHref:
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
QgsCoordinateReferenceSystem crs_of(const QgsMapLayer* layer, const platform::SpatialReference& reference) {
    if (layer != nullptr && same_system(FromCrs(layer->crs()), reference)) return layer->crs();
    return QgsCoordinateReferenceSystem::fromWkt(ToQString(reference.Wkt));
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

/// Names and colours say nothing of the provider's own default style, which is not looked for.
template <class Options>
Options quick(Options options) {
    options.loadDefaultStyle = false;
    options.skipCrsValidation = true;
    return options;
}

}  // namespace

void ResultCatalogue::Begin(const analysis::RunFrame& frame) {
    Begin(frame.Wanted.LayerName, method_name(frame.Wanted.Method), frame.Reference);
    m_valuesPerAnimal = frame.Values.size();
}

void ResultCatalogue::Begin(const std::string& layerName, const QString& method,
                            const platform::SpatialReference& reference) {
    m_groupName = QStringLiteral("Home ranges: %1, %2").arg(ToQString(layerName), method);
    m_fixes = LayerNames().Find(layerName);
    m_crs = crs_of(m_fixes, reference);
    m_valuesPerAnimal = 1;
    Clear();
}

void ResultCatalogue::Clear() {
    m_valuesDone.clear();
    m_animals.clear();
    m_rasters.clear();
    m_isopleths.clear();
}

void ResultCatalogue::Add(const analysis::AnimalRecord& record) {
    QString animal = ToQString(platform::ValueText(record.Id));
    const std::size_t number = m_animals.try_emplace(record.NamingId, m_animals.size()).first->second;
    const std::size_t value = ++m_valuesDone[record.NamingId];
    if (m_valuesPerAnimal > 1) animal += QStringLiteral(" (b%1)").arg(value);
    std::vector<double> percentages;
    for (const analysis::IsoplethRecord& isopleth : record.Isopleths) percentages.push_back(isopleth.Percent);
    for (const std::string& file : record.Files) {
        if (std::filesystem::path(file).extension() == ".shp")
            m_isopleths.push_back({file, animal + QLatin1String(": ") + QLatin1String(kind_of(file).Name), number,
                                   false, 0.0, percentages});
        else
            m_rasters.push_back({file, animal + QLatin1String(": density"), number, true, maximum_of(file), {}});
    }
}

void ResultCatalogue::Add(const akde::RangeRecord& record) {
    const QString animal = ToQString(platform::ValueText(record.Id));
    const std::size_t number = m_animals.try_emplace(record.NamingId, m_animals.size()).first->second;
    std::vector<double> percentages;
    for (const akde::RangeIsopleth& isopleth : record.Isopleths)
        if (isopleth.Bound == "est") percentages.push_back(isopleth.Percent);
    for (const std::string& file : record.Files) {
        if (std::filesystem::path(file).extension() == ".shp")
            m_isopleths.push_back({file, animal + QLatin1String(": ") + QLatin1String(kind_of(file).Name), number,
                                   false, 0.0, percentages, true});
        else
            m_rasters.push_back({file, animal + QLatin1String(": density"), number, true, maximum_of(file), {}});
    }
}

std::vector<ResultDataset> ResultCatalogue::Datasets() const {
    std::vector<ResultDataset> all = m_isopleths;
    all.insert(all.end(), m_rasters.begin(), m_rasters.end());
    return all;
}

std::unique_ptr<QgsLayerTreeGroup> ResultCatalogue::EmptyGroup() const {
    return std::make_unique<QgsLayerTreeGroup>(free_group_name(m_groupName));
}

QgsLayerTreeGroup& ResultCatalogue::Insert(std::unique_ptr<QgsLayerTreeGroup> group) const {
    QgsLayerTreeGroup& root = *QgsProject::instance()->layerTreeRoot();
    int place = 0;
    const QList<QgsLayerTreeNode*> nodes = root.children();
    for (int i = 0; m_fixes && i < nodes.size() && place == 0; ++i) {
        const bool isLayer = QgsLayerTree::isLayer(nodes[i]) && QgsLayerTree::toLayer(nodes[i])->layer() == m_fixes;
        const bool isAround =
            QgsLayerTree::isGroup(nodes[i]) && QgsLayerTree::toGroup(nodes[i])->findLayer(m_fixes->id()) != nullptr;
        if (isLayer || isAround) place = i + 1;
    }
    QgsLayerTreeGroup& shown = *group.release();
    root.insertChildNode(place, &shown);
    return shown;
}

std::unique_ptr<QgsMapLayer> open_result(const ResultDataset& dataset) {
    const QString path = ToQString(dataset.Path);
    if (dataset.IsRaster)
        return std::make_unique<QgsRasterLayer>(path, dataset.Name, QStringLiteral("gdal"),
                                                quick(QgsRasterLayer::LayerOptions()));
    return std::make_unique<QgsVectorLayer>(
        path, dataset.Name, QStringLiteral("ogr"),
        quick(QgsVectorLayer::LayerOptions(QgsProject::instance()->transformContext())));
}

void dress_result(QgsMapLayer& layer, const ResultDataset& dataset, const QgsCoordinateReferenceSystem& crs) {
    layer.setName(dataset.Name);
    if (crs.isValid()) layer.setCrs(crs);
    const QColor hue = animal_colour(dataset.Animal);
    if (auto* raster = qobject_cast<QgsRasterLayer*>(&layer)) StyleDensity(*raster, dataset.Maximum, hue);
    if (auto* isopleths = qobject_cast<QgsVectorLayer*>(&layer)) {
        const IsoplethKind& kind = kind_of(dataset.Path);
        if (dataset.Bounded)
            return style_limits(*isopleths, QLatin1String(kind.Field), classes_of(dataset.Percentages, false), hue);
        StyleIsopleths(*isopleths, QLatin1String(kind.Field), classes_of(dataset.Percentages, kind.Donuts), hue);
    }
}

}  // namespace wxl::qgis
