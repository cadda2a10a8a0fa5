#include "kde_tool/analysis_run.h"

#include "kde_tool/boxes.h"
#include "kde_tool/frmKDE.h"
#include "kde_tool/run_ending.h"
#include "platform/question_unanswered.h"
#include "platform/runtime_error.h"

#include <algorithm>

namespace wxl::kde_tool {
namespace {

constexpr double kStagesPerDistribution = 4.0;  ///< bandwidth, kernel, raster, isopleths

}  // namespace

void frmKDE::btnOK_Click() {
    if (m_running) return;
    m_running = true;
    m_stopRequested = false;
    btnOK.Enabled = false;
    btnLoadSettings.Enabled = false;
    m_lastRun = AnalysisRun(*this).Run();
    m_running = false;
    btnOK.Enabled = true;
    btnLoadSettings.Enabled = true;
}

AnalysisRun::AnalysisRun(frmKDE& form) : m_form(form), m_services(form.Services()), m_report(*form.Services().Files) {}

RunOutcome AnalysisRun::Run() {
    return Guarded(m_report, [&] {
        TellBegin();
        RunAnimals();
        return Finish();
    });
}

RunOutcome AnalysisRun::Plan(const std::function<void(const PreparedRun&)>& take) {
    CollectedReport head;
    return Guarded(head, [&] {
        take({m_preparation->Frame(), m_preparation->Animals(), head.Taken});
        m_form.txtStatus.Text.clear();
        return RunOutcome::kComplete;
    });
}

RunOutcome AnalysisRun::Guarded(IReportSink& head, const std::function<RunOutcome()>& work) {
    IRunStages& stages = *this;
    m_preparation = std::make_unique<RunPreparation>(m_form, head, stages);
    try {
        switch (m_preparation->Prepare()) {
            case RunPreparation::Outcome::kGoOn:
                return work();
            case RunPreparation::Outcome::kCancelled:
                Cancel();
                return RunOutcome::kCancelled;
            case RunPreparation::Outcome::kRefused:
                m_form.txtStatus.Text.clear();
                return RunOutcome::kRefused;
        }
    } catch (const platform::QuestionUnanswered& stop) {
        ShowError(*m_services.Messages, "KDE: " + stop.Description);
        TakeBack();
        TellEnd(RunOutcome::kFailed);
    } catch (...) {
        const platform::RuntimeError error = platform::CurrentError();
        ShowError(*m_services.Messages, "KDE: " + error.Description);
        Cancel();
        TellEnd(RunOutcome::kFailed);
    }
    return RunOutcome::kFailed;
}

void AnalysisRun::RunAnimals() {
    const RunFrame& frame = m_preparation->Frame();
    AnimalRun run(m_services, m_form.Geodata(), frame, m_report, *this, m_form.PBar);
    for (const AnimalFixes& animal : m_preparation->Animals().Animals)
        for (std::size_t i = 0; i < frame.Values.size(); ++i) {
            if (m_form.StopRequested()) return;
            m_stage = 0;
            const AnimalRecord record = run.Compute(animal, i);
            ++m_done;
            for (IRunObserver* observer : m_form.Observers()) observer->AnimalDone(record);
        }
    ShowProgress(static_cast<double>(m_done));
}

RunOutcome AnalysisRun::Finish() {
    const bool stopped = m_done < Total();
    end_report(m_report, m_services.Clock->Now(), stopped);
    const RunOutcome outcome = stopped ? RunOutcome::kStopped : RunOutcome::kComplete;
    TellEnd(outcome);
    m_preparation->Lock().reset();
    m_form.txtStatus.Text.clear();
    show_ending(*m_services.Messages, stopped);
    m_form.PBar.Value = m_form.PBar.Minimum;
    return outcome;
}

void AnalysisRun::TellBegin() {
    m_begun = true;
    for (IRunObserver* observer : m_form.Observers())
        observer->RunBegins(m_preparation->Frame(), m_preparation->Animals());
}

void AnalysisRun::TellEnd(RunOutcome outcome) {
    if (!m_begun) return;
    m_begun = false;
    tell_end(m_form.Observers(), outcome, *m_services.Messages);
}

void AnalysisRun::Cancel() {
    Leave([&] {
        m_report.Abandon();
        DeleteRunFiles();
    });
}

void AnalysisRun::TakeBack() {
    Leave([&] {
        m_report.TakeBack();
        m_preparation->TakeBackRecord();
    });
}

void AnalysisRun::Leave(const std::function<void()>& cleanUp) {
    try {
        cleanUp();
        m_preparation->Lock().reset();
        m_form.btnOK.Enabled = true;
        m_form.txtStatus.Text.clear();
        m_form.PBar.Value = m_form.PBar.Minimum;
    } catch (...) {
        const platform::RuntimeError error = platform::CurrentError();
        ShowError(*m_services.Messages, "Error_Cancel: " + error.Description);
    }
}

/// The run's own folder, whatever the form names by now; its choice where the run never came to a folder.
std::filesystem::path AnalysisRun::Folder() const {
    const std::filesystem::path& taken = m_preparation->Frame().Folder;
    return taken.empty() ? m_form.OutputFolderPath() : taken;
}

/// A folder in which another run is at work is left alone.
void AnalysisRun::DeleteRunFiles() {
    const std::filesystem::path folder = Folder();
    if (folder.empty() || !m_services.Files->FolderExists(folder)) return;
    std::unique_ptr<platform::IFolderLock>& lock = m_preparation->Lock();
    std::string holder;
    if (!lock && m_services.Locks) lock = m_services.Locks->Take(folder, holder);
    if (!lock && m_services.Locks) return;
    for (const char* name : {kSettingsRecordFile, kReportFile})
        if (const auto file = file_in_folder(folder, name); m_services.Files->FileExists(file))
            m_services.Files->DeleteFile(file, false);
}

void AnalysisRun::Stage(const std::string& status) {
    m_form.txtStatus.Text = status;
    const double begun = std::min(static_cast<double>(m_stage++), kStagesPerDistribution - 1.0);
    ShowProgress(static_cast<double>(m_done) + begun / kStagesPerDistribution);
}

bool AnalysisRun::Silent() const {
    return m_form.chkSilent.Value != 0;
}

std::size_t AnalysisRun::Total() const {
    return m_preparation->Animals().Animals.size() * m_preparation->Frame().Values.size();
}

void AnalysisRun::ShowProgress(double distributions) {
    platform::ProgressBar& bar = m_form.PBar;
    const std::size_t total = Total();
    const double fraction = total == 0 ? 0.0 : distributions / static_cast<double>(total);
    bar.Value = bar.Minimum + fraction * (bar.Maximum - bar.Minimum);
    m_services.Host->Yield();
}

}  // namespace wxl::kde_tool
