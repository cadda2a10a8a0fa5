// The form's run: OK, and what it hands to an analysis and shows of it.

#include "analysis/settings_text.h"
#include "kde_tool/form_settings.h"
#include "kde_tool/frmKDE.h"
#include "kde_tool/settings_file.h"

namespace wxl::kde_tool {
namespace {

class FormView final : public analysis::IRunView {
public:
    explicit FormView(frmKDE& form) : m_form(form) {}

    analysis::GroupedFixes TakeFixes() override { return m_form.TakeFixes(); }
    double LargestHref() const override { return m_form.LargestReferenceBandwidth(); }
    std::string SettingsRecord(const analysis::Settings& settings) const override {
        return SettingsFileBytes(settings);
    }
    void ShowVariances(std::span<const analysis::VarianceRow> rows) override {
        m_form.ShowVariances({rows.begin(), rows.end()});
    }
    void ShowBuffer(const analysis::TypedNumber& buffer) override { m_form.txtBuffer.Text = buffer.Text; }
    void ShowStatus(const std::string& status) override { m_form.txtStatus.Text = status; }
    void ShowEnd(analysis::RunOutcome outcome) override { m_form.ShowEnd(outcome); }
    void ShowProgress(double share) override {
        platform::ProgressBar& bar = m_form.PBar;
        bar.Value = bar.Minimum + share * (bar.Maximum - bar.Minimum);
    }
    bool Silent() const override { return m_form.chkSilent.Value != 0; }
    bool StopRequested() const override { return m_form.StopRequested(); }

    std::optional<analysis::ShownIndependence> Independence() const override {
        if (m_form.datagridIO.Columns.empty()) return std::nullopt;
        return analysis::ShownIndependence{m_form.datagridIO.Columns.front(), m_form.IndependenceNumbers()};
    }

private:
    frmKDE& m_form;
};

}  // namespace

void frmKDE::btnOK_Click() {
    if (m_running) return;
    m_running = true;
    m_stopRequested = false;
    btnOK.Enabled = false;
    btnLoadSettings.Enabled = false;
    Panel = {};
    m_tally = {};
    FormView view(*this);
    m_lastRun = analysis::Analysis(m_services, m_geodata, settings_of(*this), view).Run(m_observers);
    if (m_lastRun == analysis::RunOutcome::kFailed) ShowEnd(m_lastRun);
    m_running = false;
    btnOK.Enabled = true;
    btnLoadSettings.Enabled = true;
    btnLastSettings.Enabled = Advice != nullptr && Advice->LastSettings().has_value();
}

void frmKDE::ShowEnd(analysis::RunOutcome outcome) {
    const bool stopped = outcome == analysis::RunOutcome::kStopped;
    if (outcome != analysis::RunOutcome::kFailed)
        txtStatus.Text = stopped ? "Processing stopped." : "Processing complete.";
    Panel = m_tally.Panel(outcome);
    if (WrittenPage) Panel.Page = WrittenPage();
    if (!Panel.Folder.empty() && !LayerInMap(cmbPntL.Text()))
        Panel.Lines.push_back("The layer " + cmbPntL.Text() +
                              " left the map during the run; its fixes had been read before.");
}

analysis::RunOutcome frmKDE::HandOver(const std::function<void(const analysis::PreparedRun&)>& take) {
    if (m_running) return analysis::RunOutcome::kNone;
    FormView view(*this);
    return analysis::Analysis(m_services, m_geodata, settings_of(*this), view).HandOver(take);
}

}  // namespace wxl::kde_tool
