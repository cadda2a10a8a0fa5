#include "apps/cli/overlap_jobs.h"

#include "apps/cli/batch_tasks.h"
#include "apps/cli/commands/batch.h"
#include "batch/task_state.h"
#include "platform/runtime_error.h"

#include <algorithm>
#include <CLI/CLI.hpp>
#include <numeric>
#include <utility>

namespace wxl::cli {

namespace {

constexpr double kBytesPerCell = 4.0;
constexpr double kProductsPerSecond = 8e8;
constexpr double kCellsReadPerSecond = 2e7;

/// A call of wxl batch overlap, as its command line would be understood.
BatchOverlapOptions options_of(const OverlapJobs& jobs, std::vector<std::string> words) {
    words.insert(words.begin(), jobs.Folder.string());
    words.insert(words.end(), jobs.Wish.Words.begin(), jobs.Wish.Words.end());
    std::ranges::reverse(words);  // as the parser takes them
    BatchOverlapOptions options;
    CLI::App command;
    register_batch_overlap(command, options);
    try {
        command.parse(words);
    } catch (const CLI::ParseError&) {
        platform::Raise(platform::error_number::kDeviceIo,
                        (jobs.Stage.Folder / "wish.json").string() +
                            " cannot be used. Plan the comparison anew: wxl batch overlap DIR --tasks N.");
    }
    return options;
}

std::vector<std::string> call_of(const OverlapJobs& jobs, const std::vector<std::string>& words) {
    std::vector<std::string> call = {"batch", "overlap", jobs.Folder.string()};
    call.insert(call.end(), words.begin(), words.end());
    return call;
}

std::vector<std::string> call_with_wish(const OverlapJobs& jobs, const std::vector<std::string>& words) {
    std::vector<std::string> call = call_of(jobs, words);
    call.insert(call.end(), jobs.Wish.Words.begin(), jobs.Wish.Words.end());
    return call;
}

BatchJob job_of(const OverlapJobs& jobs, const std::string& name, const std::string& log, const OverlapCost& cost) {
    BatchJob job;
    job.Name = name;
    job.Log = jobs.Stage.Logs() / log;
    job.Megabytes = megabytes_to_ask(cost.Megabytes);
    job.Seconds = seconds_to_ask(cost.Seconds);
    return job;
}

}  // namespace

std::vector<std::size_t> OverlapJobs::Open(const platform::Services& services) const {
    if (Plan) return batch::open_overlap_tasks(services, Stage, *Plan);
    std::vector<std::size_t> all(Wish.Tasks);
    std::iota(all.begin(), all.end(), std::size_t{1});
    return all;
}

std::optional<OverlapJobs> overlap_jobs_in(const platform::Services& services, const std::filesystem::path& folder) {
    const batch::BatchFiles stage = batch::overlap_files(folder);
    auto wish = batch::read_wish(*services.Files, stage);
    if (!wish) return std::nullopt;
    OverlapJobs jobs{folder, stage, std::move(*wish), std::nullopt, batch::is_merged(*services.Files, stage)};
    if (services.Files->FileExists(stage.Plan()))
        jobs.Plan = batch::read_overlap_plan(*services.Files, stage, WXL_VERSION);
    return jobs;
}

OverlapCost overlap_cost(const OverlapJobs& jobs, double animals, double cells) {
    auto tasks = static_cast<double>(jobs.Wish.Tasks);
    if (jobs.Plan) {
        animals = static_cast<double>(jobs.Plan->Animals.size());
        cells = static_cast<double>(jobs.Plan->Grid.Columns) * jobs.Plan->Grid.Rows;
        tasks = static_cast<double>(jobs.Plan->Tasks.size());
    }
    return {animals * cells * kBytesPerCell / 1e6,
            animals * cells / kCellsReadPerSecond + animals * animals / 2.0 * cells / kProductsPerSecond / tasks};
}

std::string overlap_plan_script(const OverlapJobs& jobs, const OverlapCost& cost, const SlurmSettings& settings) {
    BatchJob job = job_of(jobs, "wxl-overlap-plan", "plan.log", cost);
    job.Words = call_with_wish(jobs, {"--tasks", std::to_string(jobs.Wish.Tasks)});
    return job_script(job, settings);
}

std::string overlap_array_script(const OverlapJobs& jobs, const OverlapCost& cost, const SlurmSettings& settings) {
    BatchJob job = job_of(jobs, "wxl-overlap", "task-%a.log", cost);
    job.Array = settings.Tasks;
    job.Words = call_of(jobs, {});
    return job_script(job, settings);
}

std::string overlap_merge_script(const OverlapJobs& jobs, const OverlapCost& cost, const SlurmSettings& settings) {
    BatchJob job = job_of(jobs, "wxl-overlap-merge", "merge.log", cost);
    job.Words = call_with_wish(jobs, {"--merge"});
    return job_script(job, settings);
}

int run_overlap_here(const platform::Services& services, OverlapJobs overlap, std::size_t jobs, Console& console) {
    if (!overlap.Plan) {
        const auto plan = options_of(overlap, {"--tasks", std::to_string(overlap.Wish.Tasks)});
        if (const int code = run_batch_overlap(plan, console); code != exit_code::kDone) return code;
        overlap = *overlap_jobs_in(services, overlap.Folder);
    }
    TaskProcesses processes{overlap.Stage, call_of(overlap, {}), overlap.Folder, overlap.Open(services)};
    processes.StateOf = [&](std::size_t task) {
        return batch::overlap_task_state(services, overlap.Stage, *overlap.Plan, task);
    };
    if (!run_processes(processes, jobs, console)) return exit_code::kFailed;
    return run_batch_overlap(options_of(overlap, {"--merge"}), console);
}

}  // namespace wxl::cli
