#pragma once
#include "adapters/qgis/qgis_map.h"
#include "platform/commands.h"

#include <QObject>
#include <QPointer>

class QgsMessageBar;
class QgsMessageBarItem;
class QgsVectorLayer;

namespace wxl::qgis {

/// Runs the commands that change tables, and says in the message bar what they changed, whether fixes of several
/// animals were taken as one track, and offers to undo it while the layer is there.
class UndoBar final : public QObject {
public:
    /// The bar outlives the object.
    UndoBar(QgsMessageBar& bar, Desktop desktop);
    ~UndoBar() override;

    /// Other commands just run.
    void Run(platform::ICommand& command);

private:
    void Offer(QgsVectorLayer& layer, const QString& text, std::function<QString()> undo);
    void Withdraw();

    QPointer<QgsMessageBar> m_bar;
    Desktop m_desktop;
    QPointer<QgsMessageBarItem> m_offer;
};

}  // namespace wxl::qgis
