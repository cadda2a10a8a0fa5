#include "adapters/qgis/please_wait_window.h"

#include "adapters/qgis/qt_text.h"

#include <QProgressBar>
#include <QVBoxLayout>

namespace wxl::qgis {

PleaseWaitWindow::PleaseWaitWindow(movement::FrmPW& form, QgisHost& host, QWidget* parent)
    : QWidget(parent, Qt::Dialog | Qt::CustomizeWindowHint | Qt::WindowTitleHint | Qt::WindowCloseButtonHint),
      m_form(form) {
    setObjectName(QStringLiteral("FrmPW"));
    setWindowTitle(ToQString(form.Caption));
    auto* bar = new QProgressBar;
    bar->setMinimumWidth(320);
    m_binder.Bind(*bar, form.PBar, "PBar");
    auto* layout = new QVBoxLayout(this);
    layout->addWidget(bar);
    m_yieldToken = host.OnYield([this] { m_binder.Refresh(); });
    m_binder.Refresh();
}

}  // namespace wxl::qgis
