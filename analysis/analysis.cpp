#include "analysis/analysis.h"

#include "analysis/ending.h"
#include "analysis/output_names.h"
#include "platform/boxes.h"
#include "platform/question_unanswered.h"
#include "platform/runtime_error.h"

#include <algorithm>
#include <utility>

namespace wxl::analysis {
namespace {

constexpr double kStagesPerDistribution = 4.0;  ///< bandwidth, kernel, raster, isopleths

}  // namespace

Analysis::Analysis(const platform::Services& services, utilities::Utilities& geodata, Settings settings, IRunView& view)
    : m_services(services),
      m_geodata(geodata),
      m_settings(std::move(settings)),
      m_view(view),
      m_report(*services.Files) {}

RunOutcome Analysis::Run(std::span<IRunObserver* const> observers) {
    m_observers = observers;
    return Guarded(m_report, [&] {
        TellBegin();
        RunAnimals();
        return Finish();
    });
}

RunOutcome Analysis::HandOver(const std::function<void(const PreparedRun&)>& take) {
    CollectedReport head;
    return Guarded(head, [&] {
        take({m_preparation->Frame(), m_preparation->Animals(), head.Taken});
        m_view.ShowStatus({});
        return RunOutcome::kComplete;
    });
}

RunOutcome Analysis::Guarded(IReportSink& head, const std::function<RunOutcome()>& work) {
    IRunStages& stages = *this;
    m_preparation = std::make_unique<Preparation>(m_services, m_geodata, m_settings, m_view, head, stages);
    try {
        switch (m_preparation->Prepare()) {
            case Preparation::Outcome::kGoOn:
                return work();
            case Preparation::Outcome::kCancelled:
                Cancel();
                return RunOutcome::kCancelled;
            case Preparation::Outcome::kRefused:
                m_view.ShowStatus({});
                return RunOutcome::kRefused;
        }
    } catch (const platform::QuestionUnanswered& stop) {
        platform::ShowError(*m_services.Messages, "KDE: " + stop.Description);
        TakeBack();
        TellEnd(RunOutcome::kFailed);
    } catch (...) {
        const platform::RuntimeError error = platform::CurrentError();
        platform::ShowError(*m_services.Messages, "KDE: " + error.Description);
        Cancel();
        TellEnd(RunOutcome::kFailed);
    }
    return RunOutcome::kFailed;
}

void Analysis::RunAnimals() {
    const RunFrame& frame = m_preparation->Frame();
    AnimalRun run(m_services, m_geodata, frame, m_report, *this);
    for (const AnimalFixes& animal : m_preparation->Animals().Animals)
        for (std::size_t i = 0; i < frame.Values.size(); ++i) {
            if (m_view.StopRequested()) return;
            m_stage = 0;
            const AnimalRecord record = run.Compute(animal, i);
            ++m_done;
            for (IRunObserver* observer : m_observers) observer->AnimalDone(record);
        }
    ShowProgress(static_cast<double>(m_done));
}

RunOutcome Analysis::Finish() {
    const bool stopped = m_done < Total();
    end_report(m_report, m_services.Clock->Now(), stopped);
    const RunOutcome outcome = stopped ? RunOutcome::kStopped : RunOutcome::kComplete;
    TellEnd(outcome);
    m_preparation->Lock().reset();
    m_view.ShowStatus({});
    m_view.ShowEnd(outcome);
    m_services.Host->Yield();
    show_ending(*m_services.Messages, stopped);
    m_view.ShowProgress(0.0);
    return outcome;
}

void Analysis::TellBegin() {
    m_begun = true;
    for (IRunObserver* observer : m_observers) observer->RunBegins(m_preparation->Frame(), m_preparation->Animals());
}

void Analysis::TellEnd(RunOutcome outcome) {
    if (!m_begun) return;
    m_begun = false;
    report_end(m_observers, outcome, *m_services.Messages);
}

void Analysis::Cancel() {
    Leave([&] {
        m_report.Abandon();
        DeleteRunFiles();
    });
}

void Analysis::TakeBack() {
    Leave([&] {
        m_report.TakeBack();
        m_preparation->TakeBackRecord();
    });
}

void Analysis::Leave(const std::function<void()>& cleanUp) {
    try {
        cleanUp();
        m_preparation->Lock().reset();
        m_view.ShowStatus({});
        m_view.ShowProgress(0.0);
    } catch (...) {
        const platform::RuntimeError error = platform::CurrentError();
        platform::ShowError(*m_services.Messages, "Error_Cancel: " + error.Description);
    }
}

/// The folder that the run came to; what its settings name where it came to none.
std::filesystem::path Analysis::Folder() const {
    const std::filesystem::path& taken = m_preparation->Frame().Folder;
    return taken.empty() ? output_folder(*m_services.Folders, m_settings) : taken;
}

/// A folder in which another run is at work is left alone.
void Analysis::DeleteRunFiles() {
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

void Analysis::Stage(const std::string& status) {
    m_view.ShowStatus(status);
    const double begun = std::min(static_cast<double>(m_stage++), kStagesPerDistribution - 1.0);
    ShowProgress(static_cast<double>(m_done) + begun / kStagesPerDistribution);
}

std::size_t Analysis::Total() const {
    return m_preparation->Animals().Animals.size() * m_preparation->Frame().Values.size();
}

void Analysis::ShowProgress(double distributions) {
    const std::size_t total = Total();
    m_view.ShowProgress(total == 0 ? 0.0 : distributions / static_cast<double>(total));
    m_services.Host->Yield();
}

}  // namespace wxl::analysis
