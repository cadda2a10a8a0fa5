#include "batch/merge.h"

#include "analysis/ending.h"
#include "analysis/output_names.h"
#include "batch/point_store.h"
#include "batch/task_state.h"
#include "platform/runtime_error.h"

#include <map>
#include <utility>

namespace wxl::batch {
namespace {

constexpr std::uint64_t kLargestReport = std::uint64_t{1} << 40U;

std::unique_ptr<platform::IFolderLock> take_folder(platform::IFolderLocks& locks, const Plan& plan) {
    std::string holder;
    auto lock = locks.Take(plan.Frame.Folder, holder);
    if (!lock)
        platform::Raise(platform::error_number::kPermissionDenied,
                        "a task of this batch or another analysis is writing into the output folder (" + holder +
                            "): wait until it has finished");
    lock->RemoveLeftovers({});
    lock->RemoveLeftovers(kBatchFolder);
    const BatchFiles batch(plan.Frame.Folder);
    for (std::size_t task = 1; task <= plan.Tasks.size(); ++task)
        lock->RemoveLeftovers(batch.Task(task).lexically_relative(plan.Frame.Folder));
    std::string last;
    for (const PlannedAnimal& animal : plan.Animals)
        if (animal.Subfolder != last) lock->RemoveLeftovers(last = animal.Subfolder);
    return lock;
}

analysis::GroupedFixes animals_of(const platform::IFileSystem& files, const Plan& plan, const BatchFiles& batch) {
    const PointStore points(files, batch.Points());
    analysis::GroupedFixes fixes;
    fixes.TextIds = plan.Frame.TextIds;
    for (std::size_t i = 0; i < plan.Animals.size(); ++i) {
        const PlannedAnimal& animal = plan.Animals[i];
        fixes.Animals.push_back(
            {animal.Id, animal.NamingId, points.Read(i), animal.Subfolder, animal.StepsBack, animal.Times});
    }
    return fixes;
}

/// The results of the tasks, each in memory only between its first entry and its last.
class Results {
public:
    Results(const platform::IFileSystem& files, const BatchFiles& batch, const Plan& plan)
        : m_files(files), m_batch(batch), m_plan(plan), m_places(plan.DistributionCount()) {
        for (std::size_t task = 0; task < plan.Tasks.size(); ++task)
            for (std::size_t i = 0; i < plan.Tasks[task].Work.size(); ++i)
                m_places[plan.Tasks[task].Work[i]] = {task, i};
    }

    TaskEntry Take(std::size_t distribution) {
        const auto [task, place] = m_places.at(distribution);
        auto open = m_open.find(task);
        if (open == m_open.end())
            open = m_open.emplace(task, read_result(m_files, m_batch, m_plan, task + 1).Entries).first;
        TaskEntry entry = std::move(open->second.at(place));
        if (place + 1 == open->second.size()) m_open.erase(open);
        return entry;
    }

private:
    const platform::IFileSystem& m_files;
    const BatchFiles& m_batch;
    const Plan& m_plan;
    std::vector<std::pair<std::size_t, std::size_t>> m_places;  ///< of every distribution: its task, its place there
    std::map<std::size_t, std::vector<TaskEntry>> m_open;
};

}  // namespace

void Merge::Run(std::span<analysis::IRunObserver* const> observers) {
    const auto lock = take_folder(*m_services.Locks, m_plan);
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
    MarkMerge(0, true);
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
    Results results(files, m_batch, m_plan);
    for (std::size_t i = 0; i < m_plan.DistributionCount(); ++i) {
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
    MarkMerge(bytes, false);
    return bytes;
}

void Merge::MarkMerge(std::int64_t earlierReport, bool done) {
    write_json(
        *m_services.Files, m_batch.Merge(),
        {{"earlier_report", earlierReport}, {"done", done}, {"when", platform::DateTimeText(m_services.Clock->Now())}});
}

}  // namespace wxl::batch
