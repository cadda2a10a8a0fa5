#include "adapters/qgis/layer_lists.h"

#include "adapters/qgis/breath.h"
#include "adapters/qgis/layer_names.h"
#include "utilities/Utilities.h"

#include <algorithm>
#include <qgslayertree.h>
#include <qgsproject.h>

namespace wxl::qgis {
namespace {

// Kinds of utilities::Utilities::ListLayers.
constexpr int kRasters = 2;
constexpr int kPoints = 3;

/// The place of a layer in a list of names; -1 for none.
int place_of(const QgsMapLayer* layer, const std::vector<std::string>& names) {
    if (!layer) return -1;
    const auto found = std::find(names.begin(), names.end(), LayerNames().NameOf(*layer));
    return found == names.end() ? -1 : static_cast<int>(found - names.begin());
}

}  // namespace

LayerLists::LayerLists(kde_tool::frmKDE& form, std::function<void()> refresh)
    : m_form(form), m_refresh(std::move(refresh)) {
    m_later.setSingleShot(true);
    connect(&m_later, &QTimer::timeout, this, [this] { Update(); });
    const auto changed = [this] { ProjectChanged(); };
    const QgsProject* project = QgsProject::instance();
    connect(project, &QgsProject::layersAdded, this, changed);
    connect(project, &QgsProject::layersRemoved, this, changed);
    const QgsLayerTree* tree = project->layerTreeRoot();
    connect(tree, &QgsLayerTreeNode::addedChildren, this, changed);
    connect(tree, &QgsLayerTreeNode::removedChildren, this, changed);
    connect(tree, &QgsLayerTreeNode::nameChanged, this, changed);
    FormChanged();
}

void LayerLists::FormChanged() {
    if (m_stale) {
        if (!Running()) m_later.start(0);
        return;
    }
    const LayerNames names;
    m_points = names.Find(m_form.cmbPntL.Text());
    m_raster = names.Find(m_form.cmbExtRef.Text());
}

/// Many signals make one update, once whoever changes the project is done with it.
void LayerLists::ProjectChanged() {
    m_stale = true;
    m_later.start(0);
}

void LayerLists::Update() {
    if (!m_stale || Running()) return;
    if (Breath::Reading()) return m_later.start(50);
    UpdatePointLayers();
    UpdateRasters();
    m_stale = false;
    m_refresh();
}

void LayerLists::UpdatePointLayers() {
    platform::ComboBox layers;
    m_form.Geodata().ListLayers(kPoints, layers);
    const bool wasEmpty = m_form.cmbPntL.Items.empty();
    const bool hadChoice = m_form.cmbPntL.ListIndex >= 0;
    m_form.cmbPntL.Items = layers.Items;
    m_form.cmbPntL.ListIndex = wasEmpty && !layers.Items.empty() ? 0 : place_of(m_points, layers.Items);
    const bool hasChoice = m_form.cmbPntL.ListIndex >= 0;
    if (hadChoice != hasChoice) m_form.cmbPntL_Click();
}

void LayerLists::UpdateRasters() {
    platform::ComboBox rasters;
    m_form.Geodata().ListLayers(kRasters, rasters);
    m_form.cmbExtRef.Items = rasters.Items;
    m_form.cmbExtRef.ListIndex = place_of(m_raster, rasters.Items);
    m_form.optExtRef.Enabled = !rasters.Items.empty();
    if (!rasters.Items.empty() || !m_form.optExtRef.Value) return;
    m_form.optFull.Value = true;
    m_form.optFull_Click();
}

}  // namespace wxl::qgis
