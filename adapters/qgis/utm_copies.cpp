#include "adapters/qgis/utm_copies.h"

#include "adapters/gdal/projection.h"
#include "adapters/qgis/layer_names.h"
#include "adapters/qgis/layer_rows.h"
#include "adapters/qgis/qgis_values.h"
#include "adapters/qgis/table_pass.h"
#include "platform/runtime_error.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <filesystem>
#include <QDir>
#include <QFileInfo>
#include <qgscoordinatetransform.h>
#include <qgsexception.h>
#include <qgsfeatureiterator.h>
#include <qgsproject.h>
#include <qgsproviderregistry.h>
#include <qgsrenderer.h>
#include <qgsvectordataprovider.h>
#include <qgsvectorfilewriter.h>
#include <qgsvectorlayer.h>

namespace wxl::qgis {
namespace {

namespace error_number = platform::error_number;

/// The vector layer of that name, as the form finds it.
QgsVectorLayer& layer_named(const std::string& name) {
    if (auto* vector = qobject_cast<QgsVectorLayer*>(LayerNames().Find(name))) return *vector;
    platform::Raise(error_number::kObjectNotSet, "The layer was removed from the map.");
}

/// West to east, going over the 180th meridian where that is shorter: `East` is then above 180.
struct DegreesExtent {
    double West = 0.0;
    double East = 0.0;
    double South = 0.0;
    double North = 0.0;
};

std::optional<DegreesExtent> extent_of(QgsVectorLayer& layer) {
    platform::Extent around;    // longitudes -180 to 180
    platform::Extent eastward;  // the same, 0 to 360
    QgsFeature feature;
    LayerRows rows(layer, QgsFeatureRequest().setNoAttributes());
    while (rows.Next(feature)) {
        if (feature.geometry().isEmpty()) continue;
        const QgsPointXY centre = feature.geometry().boundingBox().center();
        if (!std::isfinite(centre.x()) || !std::isfinite(centre.y())) continue;
        const double east = centre.x() - 360.0 * std::floor(centre.x() / 360.0);
        around.Include({east > 180.0 ? east - 360.0 : east, centre.y()});
        eastward.Include({east, centre.y()});
    }
    if (around.IsEmpty()) return std::nullopt;
    const platform::Extent& tight = eastward.Width() < around.Width() ? eastward : around;
    return DegreesExtent{tight.XMin, tight.XMax, tight.YMin, tight.YMax};
}

bool is_writable_folder(const QString& folder) {
    return !folder.isEmpty() && QFileInfo(folder).isDir() && QFileInfo(folder).isWritable();
}

QString folder_for_copy(const QgsVectorLayer& layer) {
    if (QString home = QgsProject::instance()->homePath(); is_writable_folder(home)) return home;
    const QString file = QgsProviderRegistry::instance()
                             ->decodeUri(layer.providerType(), layer.source())
                             .value(QStringLiteral("path"))
                             .toString();
    if (QString beside = QFileInfo(file).absolutePath(); QFileInfo::exists(file) && is_writable_folder(beside))
        return beside;
    return QDir::tempPath();
}

/// Of a GeoPackage, and of what stands beside one that is open or was cut short.
constexpr std::array<const char*, 4> kEndings = {"", "-wal", "-shm", "-journal"};

/// A name that no layer has, and no file in the folder either.
QString free_name(const QString& wanted, const QDir& folder, QString& path) {
    QString name = wanted;
    for (int number = 2;; ++number) {
        QString file = name;
        file.replace(QRegularExpression(QStringLiteral("[/\\\\:*?\"<>|\\x00-\\x1f]")), QStringLiteral("_"));
        path = folder.filePath(file + QStringLiteral(".gpkg"));
        const bool isTaken = std::any_of(kEndings.begin(), kEndings.end(), [&](const char* ending) {
            return QFileInfo::exists(path + QLatin1String(ending));
        });
        if (!isTaken && QgsProject::instance()->mapLayersByName(name).isEmpty()) return name;
        name = QStringLiteral("%1 %2").arg(wanted).arg(number);
    }
}

/// The column of the object IDs: the layer's own where it shows one, else a name that no field has.
QString fid_column(const QgsVectorLayer& layer, bool& isNew) {
    const QgsAttributeList keys = layer.primaryKeyAttributes();
    isNew = keys.size() != 1 || type_of(layer.fields().at(keys.first())) == QMetaType::QString;
    if (!isNew) return layer.fields().at(keys.first()).name();
    QString name = QStringLiteral("fid");
    while (layer.fields().lookupField(name) >= 0) name += QLatin1Char('_');
    return name;
}

[[noreturn]] void raise_writing(const QString& path, const QString& why) {
    platform::Raise(error_number::kDeviceIo, FromQString(path) + " could not be written: " + FromQString(why));
}

void write_copy(QgsVectorLayer& layer, const QgsCoordinateReferenceSystem& crs, const QString& path,
                const QString& table) {
    const QgsCoordinateTransformContext context = QgsProject::instance()->transformContext();
    const QgsCoordinateTransform transform(layer.crs(), crs, context);
    QgsVectorFileWriter::SaveVectorOptions options;
    options.driverName = QStringLiteral("GPKG");
    options.layerName = table;
    bool newColumn = false;
    const QString column = fid_column(layer, newColumn);
    options.layerOptions << QStringLiteral("FID=") + column;
    QgsFields fields;
    if (newColumn) fields.append(make_field(column, QMetaType::LongLong));
    fields.extend(layer.fields());
    const std::unique_ptr<QgsVectorFileWriter> writer(
        QgsVectorFileWriter::create(path, fields, layer.wkbType(), crs, context, options));
    if (writer->hasError() != QgsVectorFileWriter::NoError) raise_writing(path, writer->errorMessage());
    QgsFeature feature;
    LayerRows rows(layer, QgsFeatureRequest());
    while (rows.Next(feature)) {
        try {
            QgsGeometry geometry = feature.geometry();
            if (!geometry.isNull()) geometry.transform(transform);
            feature.setGeometry(geometry);
        } catch (const QgsCsException&) {
            platform::Raise(error_number::kInvalidCall, "The position of the feature with the FID " +
                                                            std::to_string(feature.id()) + " cannot be projected.");
        }
        if (newColumn) {
            QgsAttributes cells = feature.attributes();
            cells.prepend(feature.id());
            feature.setAttributes(cells);
        }
        if (!writer->addFeature(feature, QgsFeatureSink::FastInsert)) raise_writing(path, writer->errorMessage());
    }
    if (!writer->flushBuffer()) raise_writing(path, writer->errorMessage());
}

}  // namespace

std::optional<platform::UtmTarget> UtmCopies::Target(const platform::Layer& layer) {
    const auto extent = extent_of(layer_named(layer.Name));
    if (!extent) return std::nullopt;
    const double middle = (extent->South + extent->North) / 2.0;
    const auto zone = files::utm_zone_of({(extent->West + extent->East) / 2.0, middle});
    const auto western = files::utm_zone_of({extent->West, middle});
    const auto eastern = files::utm_zone_of({extent->East, middle});
    if (!zone || !western || !eastern) return std::nullopt;
    return platform::UtmTarget{zone->Number, zone->South, western->Number, eastern->Number};
}

std::string UtmCopies::AddUtmCopy(const platform::Layer& layer, const platform::UtmTarget& target) {
    QgsVectorLayer& source = layer_named(layer.Name);
    require_no_edits(source);
    const QgsCoordinateReferenceSystem crs(ToQString(target.Code()));
    QString path;
    const QString name = free_name(QStringLiteral("%1 UTM %2").arg(source.name(), ToQString(target.Name())),
                                   QDir(folder_for_copy(source)), path);
    // The file gets its name when it is whole.
    const QString unfinished = QFileInfo(path).dir().filePath(QStringLiteral(".wxl_%1.gpkg").arg(::getpid()));
    try {
        write_copy(source, crs, unfinished, name);
        std::filesystem::rename(FromQString(unfinished), FromQString(path));
    } catch (...) {
        for (const char* ending : kEndings) QFile::remove(unfinished + QLatin1String(ending));
        throw;
    }
    auto copy = std::make_unique<QgsVectorLayer>(path, name, QStringLiteral("ogr"));
    if (!copy->isValid()) raise_writing(path, copy->error().message());
    if (source.renderer()) copy->setRenderer(source.renderer()->clone());
    copy->selectByIds(source.selectedFeatureIds());
    // The highlighted layer stays the one that the user works on.
    QgsMapLayer* current = m_desktop.LayerTree ? m_desktop.LayerTree->currentLayer() : nullptr;
    QgsProject::instance()->addMapLayer(copy.release());
    if (current) m_desktop.LayerTree->setCurrentLayer(current);
    return FromQString(name);
}

}  // namespace wxl::qgis
