#include "batch/range_task.h"

#include "akde/range_run.h"
#include "batch/task_state.h"
#include "platform/clock.h"
#include "platform/runtime_error.h"

#include <chrono>
#include <filesystem>
#include <string_view>

namespace wxl::batch {
namespace {

/// Passes on what it hears, and keeps the lines for the merge. A task is ended by its end alone.
class KeptLines final : public akde::IListener {
public:
    explicit KeptLines(akde::IListener& told) : m_told(told) {}
    void Progress(double share, std::string_view what) override { m_told.Progress(share, what); }
    void EndProgress() override { m_told.EndProgress(); }
    void Note(std::string_view line) override {
        m_kept.push_back({false, std::string(line)});
        m_told.Note(line);
    }
    void Problem(std::string_view line) override {
        m_kept.push_back({true, std::string(line)});
        m_told.Problem(line);
    }
    bool IsStopped() const override { return false; }

    std::vector<ToldLine> Take() { return std::exchange(m_kept, {}); }

private:
    akde::IListener& m_told;
    std::vector<ToldLine> m_kept;
};

}  // namespace

TaskOutcome RangeTask::Run(std::size_t number, bool again, const std::function<void(const akde::RangeRecord&)>& met) {
    m_met = met;
    return run_task(m_services, m_plan, number, m_host, again, *this);
}

bool RangeTask::IsDone(std::size_t number) const {
    if (!m_services.Files->FileExists(BatchFiles(m_plan.Folder).Result(number))) return false;
    try {
        for (const RangeEntry& entry : read_ranges(*m_services.Files, m_plan, number))
            for (const std::string& file : entry.Record.Files)
                if (!m_services.Files->FileExists(file) && !m_services.Files->FolderExists(file)) return false;
    } catch (const platform::RuntimeError&) {
        return false;
    }
    return true;
}

void RangeTask::CheckNothingStands(std::size_t number) const {
    if (m_plan.Wanted.Overwrite) return;
    akde::TimedAnimals own;
    for (const std::size_t animal : m_plan.Tasks.at(number - 1).Work)
        own.Animals.push_back(m_plan.Animals.Animals.at(animal));
    const auto standing = akde::standing_outputs(m_plan.Wanted, own, m_services);
    if (!standing.empty())
        platform::Raise(platform::error_number::kFileExists,
                        standing.front().string() + " was made by another program since the batch was planned");
}

void RangeTask::Compute(std::size_t number) {
    const auto begin = m_services.Clock->Steady();
    TaskHead head{.Batch = m_plan.Id, .Started = now_of(m_services), .Finished = {}, .Seconds = 0.0, .Host = m_host};
    KeptLines lines(m_listener);
    akde::RangeRun run(m_plan.Wanted, m_services, lines);
    const TimedStore store(*m_services.Files, m_plan);
    Json entries = Json::array();
    for (const std::size_t place : m_plan.Tasks.at(number - 1).Work) {
        RangeEntry entry{.Animal = place, .Record = run.Compute(store.Read(place), m_plan.Animals), .Lines = {}};
        entry.Lines = lines.Take();
        m_met(entry.Record);
        for (std::string& file : entry.Record.Files)
            file = std::filesystem::path(file).lexically_relative(m_plan.Wanted.Folder).string();
        entries.push_back(json_of_entry(entry));
    }
    head.Finished = now_of(m_services);
    head.Seconds = std::chrono::duration<double>(m_services.Clock->Steady() - begin).count();
    write_entries(*m_services.Files, BatchFiles(m_plan.Folder), number, head, std::move(entries));
}

std::vector<RangeEntry> read_ranges(const platform::IFileSystem& files, const RangePlan& plan, std::size_t task) {
    std::vector<RangeEntry> entries;
    read_entries(files, BatchFiles(plan.Folder), plan, task, [&](const Json& json) {
        RangeEntry& entry = entries.emplace_back(range_entry_of(json));
        for (std::string& file : entry.Record.Files) file = (plan.Wanted.Folder / file).string();
        return entry.Animal;
    });
    return entries;
}

}  // namespace wxl::batch
