#include "apps/cli/batch_session.h"
#include "apps/cli/batch_tasks.h"
#include "apps/cli/child_processes.h"
#include "apps/cli/commands/batch.h"
#include "apps/cli/option_checks.h"
#include "apps/cli/slurm.h"
#include "batch/task_state.h"
#include "platform/file_system.h"
#include "platform/text.h"

#include <CLI/CLI.hpp>
#include <fmt/format.h>
#include <utility>
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
    "Examples:\n"
    "\n"
    "  wxl batch submit wolves --sbatch --partition=short --dry-run\n"
    "  wxl batch submit wolves --engine local --jobs 4";

int submit_here(BatchSession& session, const std::vector<std::size_t>& tasks, std::size_t jobs, Console& console) {
    if (!run_tasks_here(session.Services(), session.Head(), tasks, jobs, console)) return exit_code::kFailed;
    BatchMergeOptions merge;
    merge.Folder = session.Head().Folder.string();
    return run_batch_merge(merge, console);
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

int print_scripts(const batch::PlanHead& plan, const SlurmSettings& settings, Console& console) {
    for (std::string script :
         {settings.Tasks.empty() ? std::string() : array_script(plan, settings), merge_script(plan, settings)}) {
        if (script.empty()) continue;
        script.pop_back();
        for (const std::string& line : platform::Split(script, '\n')) console.Result(line);
    }
    return exit_code::kDone;
}

int submit_to_slurm(const platform::Services& services, const batch::PlanHead& plan, const SlurmSettings& settings,
                    Console& console) {
    const batch::BatchFiles files(plan.Folder);
    std::vector<std::string> after;
    if (!settings.Tasks.empty()) {
        platform::PublishFile(*services.Files, files.Folder / "tasks.sh", array_script(plan, settings));
        const std::string job = submit_script(files.Folder / "tasks.sh", {});
        console.Result(fmt::format("tasks {}: job {}", batch::number_ranges(settings.Tasks), job));
        after.push_back("--dependency=afterany:" + job);
    }
    platform::PublishFile(*services.Files, files.Folder / "merge.sh", merge_script(plan, settings));
    console.Result("merge: job " + submit_script(files.Folder / "merge.sh", after));
    return exit_code::kDone;
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
    BatchSession session(options.Folder, console);
    const platform::Services& services = session.Services();
    const batch::PlanHead& plan = session.Head();
    if (session.IsMerged()) return exit_code::kDone;
    const std::vector<std::size_t> tasks = open_tasks(services, plan);
    if (options.Engine == "local") return submit_here(session, tasks, options.Jobs, console);
    const SlurmSettings settings = settings_of(options, tasks);
    return options.DryRun ? print_scripts(plan, settings, console) : submit_to_slurm(services, plan, settings, console);
}

}  // namespace wxl::cli
