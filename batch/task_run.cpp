#include "batch/task_run.h"

#include "batch/planner.h"
#include "batch/point_store.h"
#include "batch/task_state.h"
#include "platform/clock.h"
#include "platform/dataset_files.h"
#include "platform/runtime_error.h"

#include <algorithm>
#include <chrono>
#include <map>
#include <set>
#include <utility>

namespace wxl::batch {
namespace {

/// Shows the boxes of a task and keeps them for the merge.
class KeptMessages final : public platform::IMessages {
public:
    explicit KeptMessages(platform::IMessages& shown) : m_shown(shown) {}

    platform::Answer Show(const platform::MessageBox& box) override {
        if (box.Choice != platform::Buttons::kOk)
            platform::Raise(platform::error_number::kInvalidCall, "A task has nobody to ask: " + box.Text);
        m_kept.push_back(box);
        return m_shown.Show(box);
    }

    std::vector<platform::MessageBox> Take() { return std::exchange(m_kept, {}); }

private:
    platform::IMessages& m_shown;
    std::vector<platform::MessageBox> m_kept;
};

/// A task shows nothing; whether warnings are shown was decided when the batch was planned.
class PlannedStages final : public analysis::IRunStages {
public:
    explicit PlannedStages(bool silent) : m_silent(silent) {}
    void Stage(const std::string& /*status*/) override {}
    bool Silent() const override { return m_silent; }

private:
    bool m_silent;
};

/// Whether a temporary dataset is one of `names`: by itself, with a raster's extension, or as a numbered shapefile.
bool is_own_leftover(const std::string& entry, const std::set<std::string>& names) {
    const auto temporary = platform::parse_temporary_name(entry);
    if (!temporary) return false;
    const std::string& dataset = temporary->Name;
    if (names.contains(dataset)) return true;
    const std::size_t point = dataset.rfind('.');
    if (point == std::string::npos) return false;
    const std::string_view behind = std::string_view(dataset).substr(point + 1);
    const bool shapefile = std::all_of(behind.begin(), behind.end(), [](char c) { return c >= '0' && c <= '9'; });
    const std::string stem = dataset.substr(0, point);
    return names.contains(stem) && (behind == "tif" || (shapefile && stem.find("_iso_") != std::string::npos));
}

}  // namespace

std::filesystem::path TaskRun::FolderOf(std::size_t distribution) const {
    return analysis::subfolder_in(m_plan.Frame.Folder, m_plan.Animals.at(distribution / m_plan.ValueCount()).Subfolder);
}

TaskOutcome TaskRun::Run(std::size_t number, bool again,
                         const std::function<void(const analysis::AnimalRecord&)>& met) {
    m_met = met;
    return run_task(m_services, m_plan, number, m_host, again, *this);
}

bool TaskRun::IsDone(std::size_t number) const {
    if (!m_services.Files->FileExists(m_batch.Result(number))) return false;
    try {
        for (const TaskEntry& entry : read_result(*m_services.Files, m_batch, m_plan, number).Entries)
            for (const std::string& file : entry.Record.Files)
                if (!m_services.Files->FileExists(file) && !m_services.Files->FolderExists(file)) return false;
    } catch (const platform::RuntimeError&) {
        return false;
    }
    return true;
}

void TaskRun::CheckNothingStands(std::size_t number) const {
    std::map<std::filesystem::path, platform::FolderContents> folders;
    for (const std::size_t distribution : m_plan.Tasks.at(number - 1).Work) {
        const std::filesystem::path folder = FolderOf(distribution);
        const auto& contents = folders.try_emplace(folder, *m_services.Files, folder).first->second;
        for (const analysis::Dataset& dataset : datasets_of(m_plan, distribution)) {
            const auto standing = analysis::files_of(contents, dataset, m_plan.Frame.Wanted.RasterFormat);
            if (!standing.empty())
                platform::Raise(platform::error_number::kFileExists,
                                standing.front().string() + " was made by another program since the batch was planned");
        }
    }
}

void TaskRun::RemoveOwnDatasets(std::size_t number) {
    platform::IFileSystem& files = *m_services.Files;
    std::map<std::filesystem::path, std::set<std::string>> names;
    std::map<std::filesystem::path, platform::FolderContents> folders;
    for (const std::size_t distribution : m_plan.Tasks.at(number - 1).Work) {
        const std::filesystem::path folder = FolderOf(distribution);
        const auto& contents = folders.try_emplace(folder, files, folder).first->second;
        for (const auto& [kind, name] : datasets_of(m_plan, distribution)) {
            names[folder].insert(name);
            const bool raster = kind == analysis::DatasetKind::kRaster;
            if (raster && m_services.Rasters->Exists(folder, name)) m_services.Rasters->Delete(folder, name);
            if (!raster && !contents.Shapefile(name).empty()) m_services.Shapefiles->Delete(folder, name);
        }
    }
    for (const auto& [folder, own] : names)
        for (const std::string& entry : files.List(folder)) {
            if (!is_own_leftover(entry, own)) continue;
            if (files.FolderExists(folder / entry))
                m_services.Folders->DeleteTree(folder / entry);
            else
                files.DeleteFile(folder / entry, true);
        }
}

void TaskRun::Compute(std::size_t number) {
    const auto begin = m_services.Clock->Steady();
    TaskResult result;
    result.Batch = m_plan.Id;
    result.Started = now_of(m_services);
    result.Host = m_host;

    KeptMessages messages(*m_services.Messages);
    platform::Services services = m_services;
    services.Messages = &messages;
    analysis::CollectedReport report;
    PlannedStages stages(m_plan.Frame.Wanted.Silent);
    analysis::AnimalRun run(services, m_geodata, m_plan.Frame, report, stages);
    const PointStore points(*m_services.Files, m_batch.Points());
    if (points.AnimalCount() != m_plan.Animals.size())
        platform::Raise(platform::error_number::kDeviceIo,
                        "The batch's points do not belong to its plan. Plan the batch anew with --overwrite.");
    analysis::AnimalFixes animal;
    std::size_t present = m_plan.Animals.size();
    for (const std::size_t distribution : m_plan.Tasks.at(number - 1).Work) {
        const std::size_t place = distribution / m_plan.ValueCount();
        if (place != present) {
            animal = unplanned(m_plan.Animals.at(place), points.Read(place));
            present = place;
        }
        TaskEntry entry;
        entry.Distribution = distribution;
        entry.Record = run.Compute(animal, distribution % m_plan.ValueCount());
        entry.Report = std::exchange(report.Taken, {});
        entry.Messages = messages.Take();
        m_met(entry.Record);
        result.Entries.push_back(std::move(entry));
    }
    result.Finished = now_of(m_services);
    result.Seconds = std::chrono::duration<double>(m_services.Clock->Steady() - begin).count();
    write_result(*m_services.Files, m_batch, number, result);
}

}  // namespace wxl::batch
