#include "adapters/qgis/qgis_layers.h"

#include "adapters/gdal/gdal_support.h"
#include "adapters/qgis/layer_files.h"
#include "adapters/qgis/qgis_feature_class.h"
#include "adapters/qgis/qgis_values.h"
#include "adapters/qgis/table_pass.h"
#include "platform/runtime_error.h"

#include <qgsproviderregistry.h>
#include <qgsvectordataprovider.h>

namespace wxl::qgis {
namespace {

template <class LayerType>
LayerType& open(const QPointer<LayerType>& layer) {
    if (layer.isNull()) platform::Raise(platform::error_number::kObjectNotSet, "The layer was removed from the map.");
    return *layer;
}

/// Where a layer of files lies; empty for layers of databases, services and memory.
std::string source_of(const QgsVectorLayer& layer) {
    if (layer.providerType() != QLatin1String("ogr")) return {};
    const QVariantMap parts = QgsProviderRegistry::instance()->decodeUri(layer.providerType(), layer.source());
    const QString name = parts.value(QStringLiteral("layerName")).toString();
    const QString path = parts.value(QStringLiteral("path")).toString();
    return FromQString(path.isEmpty() || name.isEmpty() ? path : path + ':' + name);
}

}  // namespace

std::string QgisFeatureLayer::Name() const {
    open(m_layer);
    return m_name;
}

std::shared_ptr<platform::IFeatureClass> QgisFeatureLayer::FeatureClass() {
    return std::make_shared<QgisFeatureClass>(open(m_layer));
}

std::shared_ptr<platform::ISelectionSet> QgisFeatureLayer::Selection() {
    return std::make_shared<QgisSelectionSet>(open(m_layer));
}

std::string QgisFeatureLayer::WhyReadOnly() const {
    QgsVectorLayer& layer = open(m_layer);
    if (layer.readOnly())
        return "The layer \"" + Name() + "\" is set to read-only in this project. Please allow editing and try again.";
    if (std::string reason = why_being_edited(layer); !reason.empty()) return reason;
    const auto needed = kChangeAttributeValues | kAddAttributes | kDeleteFeatures;
    if ((layer.dataProvider()->capabilities() & needed) != needed)
        return "The data of the layer \"" + Name() +
               "\" cannot be changed: the file is write-protected, or its format is read-only. Please export the layer "
               "to a new shapefile or GeoPackage and use that.";
    if (const std::string reason = why_file_is_blocked(layer); !reason.empty())
        return "The layer \"" + Name() + "\" cannot be changed now: " + reason;
    return {};
}

std::string QgisRasterLayer::Name() const {
    open(m_layer);
    return m_name;
}

platform::RasterGeometry QgisRasterLayer::Geometry() const {
    const QgsRasterLayer& layer = open(m_layer);
    const QgsRectangle box = layer.extent();
    return {box.xMinimum(), box.yMinimum(), layer.rasterUnitsPerPixelX(), layer.width(), layer.height()};
}

bool QgisRasterLayer::LiesIn(const platform::SpatialReference& reference) const {
    return files::may_be_same(FromCrs(open(m_layer).crs()), reference);
}

platform::Layer FromQgsLayer(QgsMapLayer& layer) {
    return FromQgsLayer(layer, LayerNames());
}

platform::Layer FromQgsLayer(QgsMapLayer& layer, const LayerNames& names) {
    platform::Layer result;
    result.Name = names.NameOf(layer);
    if (auto* vector = qobject_cast<QgsVectorLayer*>(&layer); vector && vector->isValid()) {
        result.Class = platform::LayerClass::kFeature;
        result.Shape = ShapeTypeOf(vector->geometryType());
        result.Feature = std::make_shared<QgisFeatureLayer>(*vector, result.Name);
        result.Source = source_of(*vector);
    } else if (auto* raster = qobject_cast<QgsRasterLayer*>(&layer); raster && raster->isValid()) {
        result.Class = platform::LayerClass::kRaster;
        result.Raster = std::make_shared<QgisRasterLayer>(*raster, result.Name);
    } else if (layer.type() == kMeshLayer) {
        result.Class = platform::LayerClass::kMesh;
    } else if (layer.type() == kAnnotationLayer) {
        result.Class = platform::LayerClass::kAnnotation;
    }
    return result;
}

}  // namespace wxl::qgis
