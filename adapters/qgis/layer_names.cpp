#include "adapters/qgis/layer_names.h"

#include "adapters/qgis/qt_text.h"

#include <qgslayertree.h>
#include <qgsproject.h>

namespace wxl::qgis {

LayerNames::LayerNames() {
    const QMap<QString, QgsMapLayer*> layers = QgsProject::instance()->mapLayers();
    for (const QgsMapLayer* layer : layers) m_ownNames.insert(layer->name());
    Walk(*QgsProject::instance()->layerTreeRoot());
    // Layers that stand in no tree come last.
    for (QgsMapLayer* layer : layers) Add(*layer);
}

void LayerNames::Walk(QgsLayerTreeGroup& group) {
    for (QgsLayerTreeNode* node : group.children()) {
        if (QgsLayerTree::isGroup(node))
            Walk(*QgsLayerTree::toGroup(node));
        else if (QgsMapLayer* layer = QgsLayerTree::toLayer(node)->layer())
            Add(*layer);
    }
}

void LayerNames::Add(QgsMapLayer& layer) {
    if (m_names.contains(&layer)) return;
    const std::string own = FromQString(layer.name());
    std::string name = own;
    // A layer that is itself named "fixes [2]" keeps its name.
    for (int number = 2; m_layers.contains(name) || (name != own && m_ownNames.contains(ToQString(name))); ++number)
        name = own + " [" + std::to_string(number) + "]";
    m_names[&layer] = name;
    m_layers[name] = &layer;
}

std::string LayerNames::NameOf(const QgsMapLayer& layer) const {
    const auto found = m_names.find(&layer);
    return found == m_names.end() ? FromQString(layer.name()) : found->second;
}

QgsMapLayer* LayerNames::Find(const std::string& name) const {
    const auto found = m_layers.find(name);
    return found == m_layers.end() ? nullptr : found->second;
}

}  // namespace wxl::qgis
