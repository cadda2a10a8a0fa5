#pragma once
#include "adapters/qgis/qgis_map.h"
#include "adapters/qgis/qgis_messages.h"
#include "host/IFormPresenter.h"

#include <memory>
#include <QPointer>
#include <QWidget>

namespace wxl::qgis {

class PleaseWaitWindow;

/// Shows the forms of all tools as dialogs of the desktop.
class QgisFormPresenter final : public host::IFormPresenter {
public:
    /// `window` is the parent of the dialogs. Results go to the map of `desktop`, which the track player does not hide.
    QgisFormPresenter(QgisHost& host, QWidget* window, Desktop desktop);
    ~QgisFormPresenter() override;

    void ShowKernelDialog(kde_tool::frmKDE& form) override;
    void ShowAbout(host::frmAbout& form) override;
    void ShowTrackPlayer(movement::frmOVI& form) override;
    void ShowPleaseWait(movement::FrmPW& form) override;
    void HidePleaseWait(movement::FrmPW& form) override;

private:
    QgisHost& m_host;
    QPointer<QWidget> m_window;
    Desktop m_desktop;
    std::unique_ptr<PleaseWaitWindow> m_pleaseWait;
};

}  // namespace wxl::qgis
