#pragma once
#include "adapters/qgis/form_binder.h"
#include "host/frmAbout.h"

#include <QDialog>

namespace wxl::qgis {

/// frmAbout on screen; Form_Load is called here.
class AboutDialog final : public QDialog {
public:
    AboutDialog(host::frmAbout& form, QWidget* parent);

private:
    FormBinder m_binder;
};

}  // namespace wxl::qgis
