#pragma once
#include "adapters/qgis/form_binder.h"
#include "adapters/qgis/qgis_messages.h"
#include "movement/frmOVI.h"

#include <QDialog>

namespace wxl::qgis {

/// frmOVI on screen: modal, beside the map so that the track stays in view.
class TravelDialog final : public QDialog {
public:
    /// The form and the host must outlive the dialog; Form_Load is called here.
    TravelDialog(movement::frmOVI& form, QgisHost& host, QWidget* map);

    /// Leaves the dialog and calls Form_Unload, which also ends a play.
    void reject() override;

protected:
    void showEvent(QShowEvent* event) override;

private:
    QLayout* Track();
    QLayout* Buttons();
    QLayout* MapButtons();

    movement::frmOVI& m_form;
    QWidget* m_map;
    FormBinder m_binder;
    std::shared_ptr<void> m_yieldToken;
};

}  // namespace wxl::qgis
