#include "adapters/qgis/table_pass.h"

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

TablePass::~TablePass() {
    if (!m_updating || m_layer.isNull()) return;
    // A shapefile drops its deleted rows, and numbers the others anew, only now: a selection by number means nothing.
    m_layer->removeSelection();
    m_layer->dataProvider()->leaveUpdateMode();
    m_layer->dataProvider()->reloadData();
    m_layer->triggerRepaint();
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

void TablePass::Flush() {
    QgsVectorLayer& layer = Open();
    if (m_changes.isEmpty() && m_toDelete.isEmpty()) return;
    if (layer.isEditable()) Drop();
    require_no_edits(layer);
    const QgsChangedAttributesMap changes = std::exchange(m_changes, {});
    const QgsFeatureIds deleted = std::exchange(m_toDelete, {});
    if (!changes.isEmpty() && !layer.dataProvider()->changeAttributeValues(changes)) Fail("attribute values");
    if (deleted.isEmpty()) return;
    // Every provider call outside update mode numbers a shapefile's rows anew.
    if (!m_updating) m_updating = layer.dataProvider()->enterUpdateMode();
    if (!layer.dataProvider()->deleteFeatures(deleted)) Fail("rows");
    layer.deselect(deleted);
}

void TablePass::Drop() {
    m_gone.subtract(m_toDelete);
    m_toDelete.clear();
    m_changes.clear();
}

void TablePass::Fail(const char* what) const {
    platform::Raise(platform::error_number::kDeviceIo,
                    "The layer \"" + FromQString(Open().name()) + "\" could not be changed (" + what +
                        "): " + FromQString(Open().dataProvider()->error().message()));
}

}  // namespace wxl::qgis
