#pragma once
#include "kde_tool/frmKDE.h"

#include <functional>
#include <qgsmaplayer.h>
#include <QObject>
#include <QPointer>
#include <QTimer>

namespace wxl::qgis {

/// Keeps the lists of layers of an open form as the project is: layers come, go, are renamed and moved. What is chosen
/// stays chosen, whatever its name is now; when it is gone, nothing is chosen. During a run the lists stay as they are.
class LayerLists final : public QObject {
public:
    /// `refresh` shows the form's values. The form must outlive the object and be loaded.
    LayerLists(kde_tool::frmKDE& form, std::function<void()> refresh);

    /// To be called whenever the form may have changed: remembers what is chosen now, and makes up after a run for what
    /// changed during it.
    void FormChanged();

private:
    void ProjectChanged();
    void Update();
    void UpdatePointLayers();
    void UpdateRasters();
    bool Running() const { return !m_form.btnOK.Enabled; }

    kde_tool::frmKDE& m_form;
    std::function<void()> m_refresh;
    QTimer m_later;
    bool m_stale = false;
    QPointer<QgsMapLayer> m_points;
    QPointer<QgsMapLayer> m_raster;
};

}  // namespace wxl::qgis
