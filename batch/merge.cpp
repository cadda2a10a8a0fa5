#include "batch/merge.h"

#include "analysis/ending.h"
#include "analysis/output_names.h"
#include "batch/point_store.h"
#include "batch/results_in_order.h"
#include "batch/task_state.h"
#include "platform/runtime_error.h"

#include <utility>

namespace wxl::batch {
namespace {

constexpr std::uint64_t kLargestReport = std::uint64_t{1} << 40U;

analysis::GroupedFixes animals_of(const platform::IFileSystem& files, const Plan& plan, const BatchFiles& batch) {
    const PointStore points(files, batch.Points());
    std::vector<analysis::AnimalFixes> animals;
    for (std::size_t i = 0; i < plan.Animals.size(); ++i) animals.push_back(unplanned(plan.Animals[i], points.Read(i)));
    return {.Animals = std::move(animals),
            .TextIds = plan.Frame.TextIds,
            .NullGeometry = plan.NullGeometry,
            .WithoutId = plan.WithoutId};
}

}  // namespace

std::unique_ptr<platform::IFolderLock> lock_for_merge(platform::IFolderLocks& locks, const PlanHead& plan,
                                                      const std::vector<std::string>& subfolders) {
    std::string holder;
    auto lock = locks.Take(plan.Folder, holder);
    if (!lock)
        platform::Raise(platform::error_number::kPermissionDenied,
                        "a task of this batch or another analysis is writing into the output folder (" + holder +
                            "): wait until it has finished");
    lock->RemoveLeftovers({});
    lock->RemoveLeftovers(kBatchFolder);
    const BatchFiles batch(plan.Folder);
    for (std::size_t task = 1; task <= plan.Tasks.size(); ++task)
        lock->RemoveLeftovers(batch.Task(task).lexically_relative(plan.Folder));
    for (const std::string& subfolder : subfolders) lock->RemoveLeftovers(subfolder);
    return lock;
}

void mark_merge(const platform::Services& services, const BatchFiles& batch, std::int64_t earlierReport, bool done) {
    write_json(
        *services.Files, batch.Merge(),
        {{"earlier_report", earlierReport}, {"done", done}, {"when", platform::DateTimeText(services.Clock->Now())}});
}

void Merge::Run(std::span<analysis::IRunObserver* const> observers) {
    const auto lock = lock_for_merge(*m_services.Locks, m_plan, subfolders_of(m_plan));
    const analysis::GroupedFixes animals = animals_of(*m_services.Files, m_plan, m_batch);
    for (analysis::IRunObserver* observer : observers) observer->RunBegins(m_plan.Frame, animals);
    try {
        WriteReport(observers);
    } catch (...) {
        const platform::RuntimeError fault = platform::CurrentError();
        analysis::report_end(observers, analysis::RunOutcome::kFailed, *m_services.Messages);
        throw platform::RuntimeError(fault);
    }
    analysis::report_end(observers, analysis::RunOutcome::kComplete, *m_services.Messages);
    mark_merge(m_services, m_batch, 0, true);
}

void Merge::WriteReport(std::span<analysis::IRunObserver* const> observers) {
    platform::IFileSystem& files = *m_services.Files;
    const std::filesystem::path report = analysis::file_in_folder(m_plan.Frame.Folder, analysis::kReportFile);
    const std::filesystem::path draft = m_plan.Frame.Folder / platform::TemporaryName(report.filename().string());
    const std::int64_t earlier = EarlierReport();
    if (files.FileExists(draft)) files.DeleteFile(draft, true);
    if (earlier >= 0) {
        const auto copy = files.OpenForWriting(draft, platform::WriteMode::kReplace);
        copy->Write(files.ReadFile(report, kLargestReport).substr(0, static_cast<std::size_t>(earlier)));
        copy->Close();
    }
    analysis::AnalysisReport lines(files);
    lines.Open(draft);
    lines.Write(m_plan.ReportHead);
    ResultsInOrder<TaskEntry> results(
        m_plan, [&](std::size_t task) { return read_result(files, m_batch, m_plan, task).Entries; });
    for (std::size_t i = 0; i < results.Size(); ++i) {
        const TaskEntry entry = results.Take(i);
        for (const platform::MessageBox& box : entry.Messages) m_services.Messages->Show(box);
        lines.Write(entry.Report);
        for (analysis::IRunObserver* observer : observers) observer->AnimalDone(entry.Record);
    }
    analysis::end_report(lines, m_services.Clock->Now(), false);
    files.Rename(draft, report);
}

/// How long the report of earlier runs is, -1 when there was none: kept from the first merge on, because a killed one
/// may have put its own report there already.
std::int64_t Merge::EarlierReport() {
    std::int64_t bytes = -1;
    if (m_services.Files->FileExists(m_batch.Merge())) {
        read_json(*m_services.Files, m_batch.Merge(), "Plan the batch anew with --overwrite.",
                  [&](const Json& json) { bytes = whole_of(json.at("earlier_report"), -1, INT64_MAX); });
        return bytes;
    }
    const std::filesystem::path report = analysis::file_in_folder(m_plan.Frame.Folder, analysis::kReportFile);
    if (m_services.Files->FileExists(report))
        bytes = static_cast<std::int64_t>(m_services.Files->ReadFile(report, kLargestReport).size());
    mark_merge(m_services, m_batch, bytes, false);
    return bytes;
}

}  // namespace wxl::batch
