#pragma once
#include "adapters/qgis/form_binder.h"
#include "adapters/qgis/qgis_messages.h"
#include "movement/FrmPW.h"

#include <QWidget>

namespace wxl::qgis {

/// FrmPW on screen: a small window with one progress bar, redrawn at every turn of the message loop. After a fault it
/// stays until the user closes it.
class PleaseWaitWindow final : public QWidget {
public:
    PleaseWaitWindow(movement::FrmPW& form, QgisHost& host, QWidget* parent);

    /// Whether this window shows `form`.
    bool Shows(const movement::FrmPW& form) const { return &m_form == &form; }

private:
    movement::FrmPW& m_form;
    FormBinder m_binder;
    std::shared_ptr<void> m_yieldToken;
};

}  // namespace wxl::qgis
