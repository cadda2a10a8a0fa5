#include "adapters/qgis/layer_undo.h"

#include "adapters/qgis/layer_files.h"
#include "adapters/qgis/layer_rows.h"
#include "adapters/qgis/qgis_versions.h"
#include "adapters/qgis/qt_text.h"
#include "adapters/qgis/table_pass.h"
#include "adapters/shapefile/shapefile_editor.h"
#include "adapters/shapefile/shapefile_parts.h"
#include "platform/runtime_error.h"

#include <algorithm>
#include <qgsvectordataprovider.h>
#include <QTemporaryDir>
#include <vector>

namespace wxl::qgis {
namespace {

namespace fs = std::filesystem;
namespace error_number = platform::error_number;

constexpr const char* kParts[] = {"shp", "shx", "dbf"};

void show_anew(QgsVectorLayer& layer) {
    layer.removeSelection();
    layer.dataProvider()->reloadData();
    layer.updateFields();
    layer.updateExtents();
    layer.triggerRepaint();
}

[[noreturn]] void raise_changed_since(const QgsVectorLayer& layer) {
    platform::Raise(error_number::kPermissionDenied,
                    "The layer \"" + FromQString(layer.name()) + "\" was changed since.");
}

/// A copy of the files: rows have their places back, and every byte is as it was.
class ShapefileUndo final : public LayerUndo {
public:
    ShapefileUndo(QgsVectorLayer& layer, fs::path shapefile) : m_layer(&layer), m_shapefile(std::move(shapefile)) {
        if (!m_folder.isValid()) platform::Raise(error_number::kDeviceIo, FromQString(m_folder.errorString()));
        for (const char* extension : kParts) {
            const fs::path part = files::part_of(m_shapefile, extension);
            std::error_code failure;
            fs::copy_file(part, Copy().replace_extension(extension), failure);
            if (failure) platform::Raise(error_number::kDeviceIo, part.string() + ": " + failure.message());
        }
        m_before = StampsNow();
    }

    bool Finish() override {
        m_editor = std::make_unique<files::ShapefileEditor>(m_shapefile, std::string());
        m_after = StampsNow();
        return m_after != m_before;
    }

    void PutBack() override {
        QgsVectorLayer& layer = open_layer(m_layer);
        require_no_edits(layer);
        if (StampsNow() != m_after) raise_changed_since(layer);
        m_editor->Replace(Copy());
        show_anew(layer);
    }

private:
    fs::path Copy() const { return fs::path(FromQString(m_folder.filePath(QStringLiteral("before.shp")))); }

    std::vector<files::FileStamp> StampsNow() const {
        std::vector<files::FileStamp> stamps;
        for (const char* extension : kParts) stamps.push_back(files::stamp_of(files::part_of(m_shapefile, extension)));
        return stamps;
    }

    QPointer<QgsVectorLayer> m_layer;
    fs::path m_shapefile;
    QTemporaryDir m_folder;
    std::vector<files::FileStamp> m_before;
    std::vector<files::FileStamp> m_after;
    std::unique_ptr<files::ShapefileEditor> m_editor;
};

/// Rows and cells through the layer's provider. A store that numbers its rows by a column (a GeoPackage, a database)
/// gives the rows their numbers back; the rows of a layer in memory are all written anew, in their order.
class ProviderUndo final : public LayerUndo {
public:
    ProviderUndo(QgsVectorLayer& layer, const Scope& scope) : m_layer(&layer), m_scope(scope) {
        for (const QString& column : scope.Columns)
            if (const int field = layer.fields().lookupField(column); field >= 0) m_columns << field;
        m_fieldsBefore = layer.fields().names();
        m_inMemory = layer.providerType() == QLatin1String("memory");
        if (scope.Rows || !m_columns.isEmpty()) Keep(layer);
    }

    bool Finish() override {
        QgsVectorLayer& layer = open_layer(m_layer);
        m_countAfter = layer.featureCount();
        m_fieldsAfter = layer.fields().names();
        const QgsFeatureIds now = m_scope.Rows ? layer.allFeatureIds() : QgsFeatureIds();
        m_gone = m_scope.Rows && std::any_of(m_rows.begin(), m_rows.end(),
                                             [&](const QgsFeature& row) { return !now.contains(row.id()); });
        return m_gone || !m_columns.isEmpty() || m_fieldsAfter != m_fieldsBefore;
    }

    void PutBack() override {
        QgsVectorLayer& layer = open_layer(m_layer);
        require_no_edits(layer);
        if (layer.featureCount() != m_countAfter || layer.fields().names() != m_fieldsAfter) raise_changed_since(layer);
        if (m_scope.Rows)
            PutRowsBack(layer);
        else
            PutCellsBack(layer);
        show_anew(layer);
    }

private:
    void Keep(QgsVectorLayer& layer) {
        QgsFeatureRequest request;
        if (!m_scope.Rows)
            request.setFlags(kRequestNoGeometry).setSubsetOfAttributes(m_columns);
        else if (!m_inMemory)
            request.setFilterFids(layer.selectedFeatureIds());
        LayerRows rows(layer, request);
        QgsFeature row;
        while (rows.Next(row)) m_rows << row;
        std::sort(m_rows.begin(), m_rows.end(),
                  [](const QgsFeature& a, const QgsFeature& b) { return a.id() < b.id(); });
    }

    void PutRowsBack(QgsVectorLayer& layer) {
        QgsFeatureList back = m_rows;
        if (m_inMemory) {
            Require(layer.dataProvider()->truncate(), layer);
        } else {
            const QgsFeatureIds now = layer.allFeatureIds();
            back.erase(
                std::remove_if(back.begin(), back.end(), [&](const QgsFeature& row) { return now.contains(row.id()); }),
                back.end());
        }
        Require(layer.dataProvider()->addFeatures(back), layer);
    }

    void PutCellsBack(QgsVectorLayer& layer) {
        QgsChangedAttributesMap cells;
        for (const QgsFeature& row : m_rows)
            for (const int field : m_columns) cells[row.id()][field] = row.attribute(field);
        if (!cells.isEmpty()) Require(layer.dataProvider()->changeAttributeValues(cells), layer);
        QgsAttributeIds added;
        for (int field = 0; field < layer.fields().count(); ++field)
            if (!m_fieldsBefore.contains(layer.fields().at(field).name())) added << field;
        if (!added.isEmpty()) Require(layer.dataProvider()->deleteAttributes(added), layer);
    }

    static void Require(bool done, const QgsVectorLayer& layer) {
        if (done) return;
        platform::Raise(error_number::kDeviceIo,
                        "The layer \"" + FromQString(layer.name()) +
                            "\" could not be changed: " + FromQString(layer.dataProvider()->error().message()));
    }

    QPointer<QgsVectorLayer> m_layer;
    Scope m_scope;
    QgsAttributeList m_columns;  ///< of the scope, which were there before
    QStringList m_fieldsBefore;
    QStringList m_fieldsAfter;
    QgsFeatureList m_rows;
    long long m_countAfter = 0;
    bool m_inMemory = false;
    bool m_gone = false;
};

}  // namespace

std::shared_ptr<LayerUndo> LayerUndo::Of(QgsVectorLayer& layer, const Scope& scope) {
    if (fs::path shapefile = shapefile_of(layer); !shapefile.empty())
        return std::make_shared<ShapefileUndo>(layer, std::move(shapefile));
    return std::make_shared<ProviderUndo>(layer, scope);
}

}  // namespace wxl::qgis
