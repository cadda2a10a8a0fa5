#include "adapters/qgis/processing/result_loading.h"

#include "adapters/qgis/qt_text.h"

#include <algorithm>
#include <qgslayertree.h>
#include <qgslayertreelayer.h>
#include <qgsproject.h>

namespace wxl::qgis {
namespace {

const QString kRank = QStringLiteral("wxl/rank");

/// The group of one run, made when its first layer comes.
struct RunGroup {
    ResultCatalogue Results;
    QPointer<QgsLayerTreeGroup> Group = {};
};

/// Dresses a layer once it is in the project, and moves it into the run's group, to its place there.
class Dresser final : public QgsProcessingLayerPostProcessorInterface {
public:
    Dresser(std::shared_ptr<RunGroup> run, ResultDataset dataset, int rank)
        : m_run(std::move(run)), m_dataset(std::move(dataset)), m_rank(rank) {}

    void postProcessLayer(QgsMapLayer* layer, QgsProcessingContext& context, QgsProcessingFeedback*) override {
        if (!layer) return;
        dress_result(*layer, m_dataset, m_run->Results.Crs());
        // Only the project on screen has a tree that is looked at.
        if (context.project() == QgsProject::instance()) MoveIntoGroup(*layer);
    }

private:
    void MoveIntoGroup(const QgsMapLayer& layer) {
        QgsLayerTreeLayer* loaded = QgsProject::instance()->layerTreeRoot()->findLayer(layer.id());
        if (!loaded) return;
        if (m_run->Group.isNull()) m_run->Group = &m_run->Results.NewGroup([](QgsLayerTreeGroup&) {});
        QgsLayerTreeLayer* node = loaded->clone();
        node->setCustomProperty(kRank, m_rank);
        node->setExpanded(false);
        const QList<QgsLayerTreeNode*> there = m_run->Group->children();
        const auto before = std::count_if(there.begin(), there.end(), [this](const QgsLayerTreeNode* other) {
            return other->customProperty(kRank).toInt() < m_rank;
        });
        m_run->Group->insertChildNode(static_cast<int>(before), node);
        if (auto* parent = QgsLayerTree::toGroup(loaded->parent())) parent->removeChildNode(loaded);
    }

    std::shared_ptr<RunGroup> m_run;
    ResultDataset m_dataset;
    int m_rank;
};

}  // namespace

void load_on_completion(const ResultCatalogue& results, QgsProcessingContext& context) {
    const auto run = std::make_shared<RunGroup>(RunGroup{results});
    int rank = 0;
    for (const ResultDataset& dataset : results.Datasets()) {
        QgsProcessingContext::LayerDetails details(dataset.Name, context.project());
        details.setPostProcessor(new Dresser(run, dataset, rank++));  // the context's from now on
        context.addLayerToLoadOnCompletion(ToQString(dataset.Path), details);
    }
}

}  // namespace wxl::qgis
