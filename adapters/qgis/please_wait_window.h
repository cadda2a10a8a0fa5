#pragma once
#include "adapters/qgis/form_binder.h"
#include "adapters/qgis/qgis_messages.h"
#include "movement/FrmPW.h"

#include <QWidget>

namespace wxl::qgis {

/// FrmPW on screen: a small window with one progress bar, redrawn at every turn of the message loop.
class PleaseWaitWindow final : public QWidget {
public:
    PleaseWaitWindow(movement::FrmPW& form, QgisHost& host, QWidget* parent);

private:
    FormBinder m_binder;
    std::shared_ptr<void> m_yieldToken;
};

}  // namespace wxl::qgis
