#pragma once
#include "adapters/qgis/form_binder.h"
#include "adapters/qgis/qgis_messages.h"
#include "kde_tool/frmKDE.h"

#include <QDialog>
#include <QLabel>
#include <vector>

class QTabWidget;
class QVBoxLayout;

namespace wxl::qgis {

class GuideOpener;
class ResultPanelWidget;

/// frmKDE on screen: four pages, and below them status, progress and the buttons.
class KdeDialog final : public QDialog {
public:
    /// The form and the host must outlive the dialog; Form_Load is called here.
    KdeDialog(kde_tool::frmKDE& form, QgisHost& host, QWidget* parent);

    void reject() override;

    /// Shows the form's present values.
    void Refresh() { m_binder.Refresh(); }

    /// What "Zoom to results" does, which is there only with it.
    void OnZoom(std::function<void(const kde_tool::ResultPanel&)> zoom);

    /// Called after every handler of the form.
    void AlsoRefresh(std::function<void()> refresh) { m_binder.AlsoRefresh(std::move(refresh)); }

protected:
    void closeEvent(QCloseEvent* event) override;

    /// Grounds of boxes that are open or greyed follow the palette.
    void changeEvent(QEvent* event) override;

private:
    QWidget* InputPage();
    QWidget* KernelPage();
    QWidget* BandwidthPage();
    QWidget* OutputPage();
    QLayout* Footer();

    /// Shown for a layer in degrees, with a button that reprojects it.
    QWidget* DegreesNotice();

    /// A label for the unit of a number, kept up to date with the chosen layer's coordinate system.
    QLabel* UnitLabel();
    void ShowUnits();
    void TakeFocus();

    /// Says below the field what the form finds wrong with it; the field is bound already.
    QWidget* MarkOf(QWidget& field);
    void FitScreen();
    QString GuidePage() const;

    /// Leads to the page of the guide on autocorrelated fixes.
    QLabel* RemedyLink();
    bool Running() const { return !m_form.btnOK.Enabled; }

    kde_tool::frmKDE& m_form;
    FormBinder m_binder;
    std::shared_ptr<void> m_yieldToken;
    std::vector<QLabel*> m_unitLabels;
    QTabWidget* m_tabs = nullptr;
    ResultPanelWidget* m_panel = nullptr;
    GuideOpener* m_guide = nullptr;
};

}  // namespace wxl::qgis
