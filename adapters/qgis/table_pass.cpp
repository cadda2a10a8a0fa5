#include "adapters/qgis/table_pass.h"

#include "adapters/qgis/layer_files.h"
#include "adapters/qgis/qgis_values.h"
#include "platform/runtime_error.h"

#include <map>
#include <qgsvectordataprovider.h>
#include <utility>

namespace wxl::qgis {
namespace {

std::map<QgsVectorLayer*, std::weak_ptr<TablePass>>& passes() {
    static std::map<QgsVectorLayer*, std::weak_ptr<TablePass>> running;
    std::erase_if(running, [](const auto& entry) { return entry.second.expired(); });
    return running;
}

}  // namespace

QgsVectorLayer& open_layer(const QPointer<QgsVectorLayer>& layer) {
    if (layer.isNull()) platform::Raise(platform::error_number::kObjectNotSet, "The layer was removed from the map.");
    return *layer;
}

std::string why_being_edited(const QgsVectorLayer& layer) {
    if (!layer.isEditable()) return {};
    return "The layer \"" + FromQString(layer.name()) +
           "\" is being edited. Please save or discard the edits and try again.";
}

void require_no_edits(const QgsVectorLayer& layer) {
    if (std::string reason = why_being_edited(layer); !reason.empty())
        platform::Raise(platform::error_number::kPermissionDenied, std::move(reason));
}

int field_named(const QgsFields& fields, std::string_view name) {
    const QString wanted = ToQString(name);
    if (const int exact = fields.indexOf(wanted); exact >= 0) return exact;
    for (int i = 0; i < fields.count(); ++i)
        if (fields.at(i).name().compare(wanted, Qt::CaseInsensitive) == 0) return i;
    return -1;
}

int stored_field(const QgsVectorLayer& layer, int field) {
    const QgsFields fields = layer.fields();
    if (fields.fieldOrigin(field) != kFieldOfProvider)
        platform::Raise(platform::error_number::kPermissionDenied,
                        "The field \"" + FromQString(fields.at(field).name()) + "\" of the layer \"" +
                            FromQString(layer.name()) +
                            "\" is computed or joined, so that nothing can be stored in it. Please remove it from the "
                            "layer or give it another name and try again.");
    return fields.fieldOriginIndex(field);
}

std::shared_ptr<TablePass> TablePass::Running(QgsVectorLayer& layer) {
    const auto found = passes().find(&layer);
    auto pass = found == passes().end() ? nullptr : found->second.lock();
    // A new layer may live where a removed one lived.
    return pass && !pass->m_layer.isNull() ? pass : nullptr;
}

std::shared_ptr<TablePass> TablePass::Join(QgsVectorLayer& layer) {
    if (auto pass = Running(layer)) return pass;
    auto pass = std::make_shared<TablePass>(layer);
    passes()[&layer] = pass;
    return pass;
}

TablePass::TablePass(QgsVectorLayer& layer) : m_layer(&layer) {
    if (!layer.isEditable()) finish_interrupted_change(layer);
}

TablePass::~TablePass() {
    if ((!m_updating && !m_hasMarkedRows) || m_layer.isNull()) return;
    // A shapefile drops its deleted rows, and numbers the others anew, only now: a selection by number means nothing.
    m_layer->removeSelection();
    try {
        if (m_hasMarkedRows) m_editor->Repack();
    } catch (const platform::RuntimeError&) {
        // The rows stay in the file, marked: every reader skips them.
    }
    if (m_updating) m_layer->dataProvider()->leaveUpdateMode();
    Reload();
    m_layer->triggerRepaint();
}

files::IRowEditor* TablePass::Editor() {
    if (!std::exchange(m_soughtEditor, true)) m_editor = file_editor_of(Open());
    return m_editor.get();
}

void TablePass::Reload() {
    Open().dataProvider()->reloadData();
    Open().updateFields();
    Open().updateExtents();
}

void TablePass::Check(int field, const platform::FieldValue& value) {
    if (files::IRowEditor* editor = Editor()) editor->Check(field, value);
}

void TablePass::Store(QgsFeatureId row, const QgsAttributeMap& changed) {
    QgsAttributeMap& cells = m_changes[row];
    for (auto cell = changed.begin(); cell != changed.end(); ++cell) cells[cell.key()] = cell.value();
}

void TablePass::Delete(QgsFeatureId row) {
    m_changes.remove(row);
    m_toDelete.insert(row);
    m_gone.insert(row);
}

void TablePass::Insert(files::NewRow row) {
    m_toInsert.push_back(std::move(row));
}

int TablePass::AddField(const platform::Field& field) {
    QgsVectorLayer& layer = Open();
    require_no_edits(layer);
    bool done = true;
    if (files::IRowEditor* editor = Editor()) {
        editor->AddField(field);
        Reload();
    } else {
        done = layer.dataProvider()->addAttributes({ToQgsField(field)});
        layer.updateFields();
    }
    const int index = field_named(layer.fields(), field.Name);
    if (!done || index < 0)
        platform::Raise(
            platform::error_number::kPermissionDenied,
            "The field \"" + field.Name + "\" could not be added to the layer \"" + FromQString(layer.name()) + "\".");
    return index;
}

void TablePass::DeleteField(int field) {
    QgsVectorLayer& layer = Open();
    require_no_edits(layer);
    const int stored = stored_field(layer, field);
    bool done = true;
    if (files::IRowEditor* editor = Editor()) {
        editor->DeleteField(stored);
        Reload();
    } else {
        done = layer.dataProvider()->deleteAttributes({stored});
        layer.updateFields();
    }
    if (!done)
        platform::Raise(platform::error_number::kPermissionDenied,
                        "A field of the layer \"" + FromQString(layer.name()) + "\" could not be deleted.");
}

void TablePass::Flush() {
    QgsVectorLayer& layer = Open();
    if (m_changes.isEmpty() && m_toDelete.isEmpty() && m_toInsert.empty()) return;
    if (layer.isEditable()) Drop();
    require_no_edits(layer);
    if (Editor() != nullptr)
        WriteThroughEditor();
    else
        WriteThroughProvider();
}

void TablePass::WriteThroughEditor() {
    const QgsFeatureIds deleted = m_toDelete;
    files::RowEdits edits;
    for (auto row = m_changes.cbegin(); row != m_changes.cend(); ++row) {
        auto& cells = edits.Values[row.key()];
        for (auto cell = row->cbegin(); cell != row->cend(); ++cell) cells[cell.key()] = FromVariant(cell.value());
    }
    for (const QgsFeatureId row : deleted) edits.Deleted.insert(row);
    edits.Inserted = std::move(m_toInsert);
    try {
        m_editor->Write(edits);
    } catch (...) {
        Drop();
        throw;
    }
    m_changes.clear();
    m_toDelete.clear();
    m_toInsert.clear();
    m_hasMarkedRows = m_hasMarkedRows || !deleted.isEmpty();
    Reload();
    Open().deselect(deleted);
}

void TablePass::WriteThroughProvider() {
    QgsVectorLayer& layer = Open();
    const QgsChangedAttributesMap changes = std::exchange(m_changes, {});
    const QgsFeatureIds deleted = std::exchange(m_toDelete, {});
    const std::vector<files::NewRow> inserted = std::exchange(m_toInsert, {});
    if (!changes.isEmpty() && !layer.dataProvider()->changeAttributeValues(changes)) Fail("attribute values");
    if (!deleted.isEmpty()) {
        // Every provider call outside update mode numbers a shapefile's rows anew.
        if (!m_updating) m_updating = layer.dataProvider()->enterUpdateMode();
        if (!layer.dataProvider()->deleteFeatures(deleted)) Fail("rows");
        layer.deselect(deleted);
    }
    if (inserted.empty()) return;
    QgsFeatureList features;
    const QgsFields fields = layer.dataProvider()->fields();
    for (const files::NewRow& row : inserted) {
        QgsFeature feature(fields);
        feature.setGeometry(ToQgsGeometry(row.Shape));
        for (std::size_t i = 0; i < row.Values.size(); ++i) {
            const int field = static_cast<int>(i);
            if (field < fields.count())
                feature.setAttribute(field, ToVariant(row.Values[i], type_of(fields.at(field))));
        }
        features << feature;
    }
    if (!layer.dataProvider()->addFeatures(features)) Fail("new rows");
    layer.updateExtents();
}

void TablePass::Drop() {
    m_gone.subtract(m_toDelete);
    m_toDelete.clear();
    m_changes.clear();
    m_toInsert.clear();
}

void TablePass::Fail(const char* what) const {
    platform::Raise(platform::error_number::kDeviceIo,
                    "The layer \"" + FromQString(Open().name()) + "\" could not be changed (" + what +
                        "): " + FromQString(Open().dataProvider()->error().message()));
}

}  // namespace wxl::qgis
