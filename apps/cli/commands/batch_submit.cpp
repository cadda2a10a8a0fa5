#include "apps/cli/batch_session.h"
#include "apps/cli/batch_tasks.h"
#include "apps/cli/child_processes.h"
#include "apps/cli/commands/batch.h"
#include "apps/cli/option_checks.h"
#include "apps/cli/overlap_jobs.h"
#include "apps/cli/slurm.h"
#include "batch/task_state.h"
#include "platform/file_system.h"
#include "platform/text.h"

#include <algorithm>
#include <CLI/CLI.hpp>
#include <cstddef>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace wxl::cli {

namespace {

constexpr const char* kFooter =
    "Sends those tasks of the batch in the folder DIR that are not done and not at work: to Slurm as\n"
    "one job array, followed by a job that merges, or with --engine local to N processes of this\n"
    "machine. It may be repeated at any time: it sends what is still missing.\n"
    "\n"
    "The job array asks for one core, one and a half times the estimated memory and 256 MB, and four\n"
    "times the estimated time and ten minutes. The merge waits until all tasks have ended, however\n"
    "they did: where one is missing it says so in its log and changes nothing, instead of waiting\n"
    "for ever. Scripts and logs are in DIR/wxl_batch.\n"
    "\n"
    "A comparison that wxl batch overlap planned, or is to plan when the batch is merged, follows:\n"
    "its plan where that is still to come, its tasks as an array, and a job that merges them. A job\n"
    "whose forerunner failed is taken back; submit again then.\n"
    "\n"
    "Examples:\n"
    "\n"
    "  wxl batch submit wolves --sbatch --partition=short --dry-run\n"
    "  wxl batch submit wolves --engine local --jobs 4";

/// What is missing in a folder: of its batch, and of the comparison that follows.
struct Missing {
    std::unique_ptr<BatchSession> Batch;  ///< nothing where none is planned, or it is merged
    std::vector<std::size_t> Tasks;       ///< of the batch
    std::optional<OverlapJobs> Overlap;
    OverlapCost Cost;
};

int submit_here(const Missing& missing, const platform::Services& services, std::size_t jobs, Console& console) {
    if (missing.Batch) {
        const batch::PlanHead& plan = missing.Batch->Head();
        if (!run_tasks_here(services, plan, missing.Tasks, jobs, console)) return exit_code::kFailed;
        BatchMergeOptions merge;
        merge.Folder = plan.Folder.string();
        if (const int code = run_batch_merge(merge, console); code != exit_code::kDone || !missing.Overlap) return code;
    }
    return run_overlap_here(services, *missing.Overlap, jobs, console);
}

SlurmSettings settings_of(const BatchSubmitOptions& options, const std::vector<std::size_t>& tasks) {
    SlurmSettings settings;
    settings.Program = this_program();
    settings.Tasks = tasks;
    settings.Memory = options.Memory;
    settings.Time = options.Time;
    settings.Options = options.Sbatch;
    return settings;
}

/// A script, and how its job waits for that of the one before.
struct Job {
    std::string Told;  ///< "tasks 1-3"
    std::filesystem::path File;
    std::string Script;
    bool AfterSuccess = false;  ///< else however the one before ended
};

std::vector<Job> jobs_of(const Missing& missing, const platform::Services& services,
                         const BatchSubmitOptions& options) {
    std::vector<Job> jobs;
    if (missing.Batch) {
        const batch::PlanHead& plan = missing.Batch->Head();
        const SlurmSettings settings = settings_of(options, missing.Tasks);
        const std::filesystem::path folder = batch::BatchFiles(plan.Folder).Folder;
        if (!missing.Tasks.empty())
            jobs.push_back(
                {"tasks " + batch::number_ranges(missing.Tasks), folder / "tasks.sh", array_script(plan, settings)});
        jobs.push_back({"merge", folder / "merge.sh", merge_script(plan, settings)});
    }
    if (!missing.Overlap) return jobs;
    const OverlapJobs& overlap = *missing.Overlap;
    const SlurmSettings settings = settings_of(options, overlap.Open(services));
    const std::filesystem::path& folder = overlap.Stage.Folder;
    if (!overlap.Plan)
        jobs.push_back(
            {"overlap: plan", folder / "plan.sh", overlap_plan_script(overlap, missing.Cost, settings), true});
    if (!settings.Tasks.empty())
        jobs.push_back({"overlap: tasks " + batch::number_ranges(settings.Tasks), folder / "tasks.sh",
                        overlap_array_script(overlap, missing.Cost, settings), true});
    jobs.push_back({"overlap: merge", folder / "merge.sh", overlap_merge_script(overlap, missing.Cost, settings)});
    return jobs;
}

int print_scripts(const std::vector<Job>& jobs, Console& console) {
    for (const Job& job : jobs) {
        const std::string script = job.Script.substr(0, job.Script.size() - 1);
        for (const std::string& line : platform::Split(script, '\n')) console.Result(line);
    }
    return exit_code::kDone;
}

/// A job that waits for a success that cannot come any more is taken back, so that the next submission finds no old
/// ones.
std::vector<std::string> waiting_for(const std::string& before, bool success) {
    if (before.empty()) return {};
    if (success) return {"--dependency=afterok:" + before, "--kill-on-invalid-dep=yes"};
    return {"--dependency=afterany:" + before};
}

int submit_to_slurm(const std::vector<Job>& jobs, const platform::Services& services, Console& console) {
    std::string before;
    for (const Job& job : jobs) {
        platform::PublishFile(*services.Files, job.File, job.Script);
        before = submit_script(job.File, waiting_for(before, job.AfterSuccess));
        console.Result(job.Told + ": job " + before);
    }
    return exit_code::kDone;
}

/// Rasters of a comparison that is not planned are as large as the estimates of the batch have them.
OverlapCost cost_of(const OverlapJobs& overlap, const batch::PlanHead* plan) {
    if (plan == nullptr) return overlap_cost(overlap, 0.0, 0.0);
    double megabytes = 0.0;
    for (const batch::PlannedTask& task : plan->Tasks) megabytes = std::max(megabytes, task.Megabytes);
    constexpr double kBytesPerCell = 8.0;
    return overlap_cost(overlap, static_cast<double>(plan->Distributions()), megabytes * 1e6 / kBytesPerCell);
}

Missing missing_in(const std::string& given, const platform::Services& services, Console& console) {
    const std::filesystem::path folder = batch_folder(given);
    Missing missing;
    missing.Overlap = overlap_jobs_in(services, folder);
    if (!missing.Overlap || services.Files->FileExists(batch::BatchFiles(folder).Plan()))
        missing.Batch = std::make_unique<BatchSession>(given, console);
    if (missing.Overlap) missing.Cost = cost_of(*missing.Overlap, missing.Batch ? &missing.Batch->Head() : nullptr);
    if (missing.Overlap && missing.Overlap->Merged) missing.Overlap.reset();
    if (missing.Batch && missing.Batch->IsMerged()) missing.Batch.reset();
    if (missing.Batch) missing.Tasks = open_tasks(services, missing.Batch->Head());
    return missing;
}

}  // namespace

void register_batch_submit(CLI::App& command, BatchSubmitOptions& options) {
    add_batch_folder(command, options.Folder);
    command.add_option("--engine", options.Engine, "Who computes")
        ->transform(one_of({"slurm", "local"}))
        ->type_name("slurm|local")
        ->capture_default_str();
    command.add_option("--jobs", options.Jobs, "Local processes side by side")
        ->type_name("N")
        ->check(whole_number_between(1, 1024))
        ->capture_default_str();
    command.add_option("--mem", options.Memory, "Memory of a job, as sbatch takes it; without it, from the estimates")
        ->type_name("SIZE");
    command.add_option("--time", options.Time, "Time of a job, as sbatch takes it; without it, from the estimates")
        ->type_name("TIME");
    command.add_option("--sbatch", options.Sbatch, "Further option of sbatch (--partition=short); may be repeated")
        ->type_name("OPTION")
        ->expected(1)
        ->multi_option_policy(CLI::MultiOptionPolicy::TakeAll);
    command.add_flag("--dry-run", options.DryRun, "Print the scripts, and submit nothing");
    command.footer(kFooter);
}

int run_batch_submit(const BatchSubmitOptions& options, Console& console) {
    const ToolSession session(console, {});
    const platform::Services& services = session.Services();
    const Missing missing = missing_in(options.Folder, services, console);
    if (!missing.Batch && !missing.Overlap) return exit_code::kDone;
    if (options.Engine == "local") return submit_here(missing, services, options.Jobs, console);
    const std::vector<Job> jobs = jobs_of(missing, services, options);
    return options.DryRun ? print_scripts(jobs, console) : submit_to_slurm(jobs, services, console);
}

}  // namespace wxl::cli
