#include "adapters/qgis/form_presenter.h"

#include "adapters/qgis/about_dialog.h"
#include "adapters/qgis/kde_dialog.h"
#include "adapters/qgis/layer_lists.h"
#include "adapters/qgis/please_wait_window.h"
#include "adapters/qgis/project_memory.h"
#include "adapters/qgis/result_layers.h"
#include "adapters/qgis/travel_dialog.h"

namespace wxl::qgis {

QgisFormPresenter::QgisFormPresenter(QgisHost& host, QWidget* window, Desktop desktop)
    : m_host(host), m_window(window), m_desktop(std::move(desktop)) {}

QgisFormPresenter::~QgisFormPresenter() = default;

void QgisFormPresenter::ShowKernelDialog(kde_tool::frmKDE& form) {
    ProjectMemory memory;
    form.Advice = &memory;
    form.AddObserver(memory);
    ResultLayers results(form, m_desktop, m_host);
    form.AddObserver(results);
    KdeDialog dialog(form, m_host, m_window);
    dialog.OnZoom(
        [this](const kde_tool::ResultPanel& panel) { show_extent(m_desktop, panel.Extent, panel.Reference); });
    LayerLists lists(form, [&dialog] { dialog.Refresh(); });
    dialog.AlsoRefresh([&lists] { lists.FormChanged(); });
    dialog.exec();
}

void QgisFormPresenter::ShowAbout(host::frmAbout& form) {
    AboutDialog(form, m_window).exec();
}

void QgisFormPresenter::ShowTrackPlayer(movement::frmOVI& form) {
    TravelDialog(form, m_host, m_desktop.Canvas).exec();
}

void QgisFormPresenter::ShowPleaseWait(movement::FrmPW& form) {
    m_pleaseWait = std::make_unique<PleaseWaitWindow>(form, m_host, m_window);
    m_pleaseWait->show();
    m_pleaseWait->raise();
}

void QgisFormPresenter::HidePleaseWait(movement::FrmPW& form) {
    if (m_pleaseWait && m_pleaseWait->Shows(form)) m_pleaseWait.reset();
}

}  // namespace wxl::qgis
