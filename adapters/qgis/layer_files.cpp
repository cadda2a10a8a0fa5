#include "adapters/qgis/layer_files.h"

#include "adapters/ogr/ogr_source.h"
#include "adapters/ogr/transaction_editor.h"
#include "adapters/qgis/qgis_values.h"
#include "adapters/shapefile/shapefile_editor.h"
#include "adapters/shapefile/shapefile_swap.h"
#include "platform/runtime_error.h"
#include "platform/text.h"

#include <qgsproviderregistry.h>
#include <qgsvectordataprovider.h>

namespace wxl::qgis {
namespace {

namespace fs = std::filesystem;

/// The file that an OGR layer of this format lies in; empty where it lies elsewhere.
fs::path file_of(const QgsVectorLayer& layer, const QString& format) {
    if (layer.providerType() != QLatin1String("ogr") || layer.dataProvider()->storageType() != format) return {};
    const QVariantMap parts = QgsProviderRegistry::instance()->decodeUri(layer.providerType(), layer.source());
    std::error_code none;
    const fs::path path = fs::canonical(FromQString(parts.value(QStringLiteral("path")).toString()), none);
    return none || !fs::is_regular_file(path, none) ? fs::path() : path;
}

}  // namespace

fs::path shapefile_of(const QgsVectorLayer& layer) {
    const fs::path path = file_of(layer, QStringLiteral("ESRI Shapefile"));
    return platform::EqualNoCase(path.extension().string(), ".shp") ? path : fs::path();
}

std::unique_ptr<files::IRowEditor> file_editor_of(const QgsVectorLayer& layer) {
    const fs::path shapefile = shapefile_of(layer);
    if (shapefile.empty()) return nullptr;
    files::OgrSource source(shapefile, {}, files::Sources::kAny);
    return std::make_unique<files::ShapefileEditor>(shapefile, files::table_encoding(source.Layer()));
}

std::string why_file_is_blocked(const QgsVectorLayer& layer) {
    if (const auto editor = file_editor_of(layer)) return editor->WhyReadOnly();
    const fs::path database = file_of(layer, QStringLiteral("GPKG"));
    return database.empty() ? std::string() : files::TransactionEditor(database, {}).WhyReadOnly();
}

bool ids_rise(const QgsVectorLayer& layer) {
    if (layer.isEditable()) return false;
    if (!shapefile_of(layer).empty()) return true;
    const fs::path database = file_of(layer, QStringLiteral("GPKG"));
    if (database.empty()) return false;
    const QVariantMap parts = QgsProviderRegistry::instance()->decodeUri(layer.providerType(), layer.source());
    const std::string name = FromQString(parts.value(QStringLiteral("layerName")).toString());
    try {
        return !files::OgrSource(database, name, files::Sources::kAny).IsView();
    } catch (const platform::RuntimeError&) {
        return false;
    }
}

void finish_interrupted_change(QgsVectorLayer& layer) {
    const fs::path shapefile = shapefile_of(layer);
    if (shapefile.empty()) return;
    if (files::find_swap(shapefile).State == files::SwapState::kNone) return;
    files::finish_interrupted_swap(shapefile);
    layer.dataProvider()->reloadData();
}

}  // namespace wxl::qgis
