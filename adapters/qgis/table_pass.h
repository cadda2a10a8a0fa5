#pragma once
#include "adapters/shapefile/row_editor.h"

#include <memory>
#include <qgsfeature.h>
#include <qgsvectorlayer.h>
#include <QPointer>
#include <string>
#include <string_view>
#include <vector>

namespace wxl::qgis {

/// The layer; RuntimeError 91 when it was removed from the map meanwhile.
QgsVectorLayer& open_layer(const QPointer<QgsVectorLayer>& layer);

/// Why a layer in edit mode is left alone, as a message for the user; empty when it is not in edit mode.
std::string why_being_edited(const QgsVectorLayer& layer);

/// RuntimeError 70 with that message for a layer in edit mode: rows written behind its edit buffer would be lost with
/// a rollback, or numbered anew under it.
void require_no_edits(const QgsVectorLayer& layer);

/// The position of the field of that name: the very name first, then without regard to case; -1 for none. An alias is
/// what a user calls a field and no name.
int field_named(const QgsFields& fields, std::string_view name);

/// The provider's number of a layer's field; RuntimeError 70 for one that is computed or joined: nothing can be stored
/// in it.
int stored_field(const QgsVectorLayer& layer, int field);

/// A pass over the rows of a layer: what was changed and is not written yet, and which rows are gone. All cursors and
/// rows of a layer share one; it ends with the last of them, and only then may row numbers change. A shapefile is
/// changed by our own editor (see file_editor_of), other layers by their provider.
class TablePass {
public:
    /// The running pass over the layer, or a new one.
    static std::shared_ptr<TablePass> Join(QgsVectorLayer& layer);

    /// The running pass, or null.
    static std::shared_ptr<TablePass> Running(QgsVectorLayer& layer);

    explicit TablePass(QgsVectorLayer& layer);
    TablePass(const TablePass&) = delete;
    TablePass& operator=(const TablePass&) = delete;
    ~TablePass();

    QgsVectorLayer& Open() const { return open_layer(m_layer); }

    /// The changed values by the provider's field numbers.
    void Store(QgsFeatureId row, const QgsAttributeMap& changed);
    void Delete(QgsFeatureId row);
    void Insert(files::NewRow row);

    /// RuntimeError when the provider's field cannot hold the value, as far as known before it is written.
    void Check(int field, const platform::FieldValue& value);

    int AddField(const platform::Field& field);
    void DeleteField(int field);

    bool IsGone(QgsFeatureId row) const { return m_gone.contains(row); }

    /// Writes what is held back, in bulk. RuntimeError 70 for a layer that went into edit mode
    /// meanwhile: what is held back is dropped.
    void Flush();

    /// Throws RuntimeError 57 with the provider's own words.
    [[noreturn]] void Fail(const char* what) const;

private:
    /// The editor of the layer's file, or null.
    files::IRowEditor* Editor();
    void WriteThroughEditor();
    void WriteThroughProvider();

    /// Has QGIS read the file anew.
    void Reload();

    /// Forgets what is held back; rows about to be deleted stand again.
    void Drop();

    QPointer<QgsVectorLayer> m_layer;
    QgsChangedAttributesMap m_changes;
    QgsFeatureIds m_toDelete;
    QgsFeatureIds m_gone;
    std::vector<files::NewRow> m_toInsert;
    std::unique_ptr<files::IRowEditor> m_editor;
    bool m_soughtEditor = false;
    bool m_hasMarkedRows = false;  ///< deleted rows that the editor drops from the file when the pass is over
    bool m_updating = false;       ///< the provider keeps its row numbers until the pass is over
};

}  // namespace wxl::qgis
