#pragma once
#include <map>
#include <qgsmaplayer.h>
#include <set>
#include <string>

class QgsLayerTreeGroup;

namespace wxl::qgis {

/// The names by which the tools know the project's layers as they are now. No two are equal: of several layers named
/// "fixes" the first in the tree keeps that name, the others become "fixes [2]", "fixes [3]" and so on.
class LayerNames {
public:
    LayerNames();

    /// Its own name for a layer outside of the project.
    std::string NameOf(const QgsMapLayer& layer) const;

    /// Null where no layer has that name.
    QgsMapLayer* Find(const std::string& name) const;

private:
    void Walk(QgsLayerTreeGroup& group);
    void Add(QgsMapLayer& layer);

    std::set<QString> m_ownNames;
    std::map<const QgsMapLayer*, std::string> m_names;
    std::map<std::string, QgsMapLayer*> m_layers;
};

}  // namespace wxl::qgis
