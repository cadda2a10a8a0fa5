#include "apps/cli/commands/batch.h"

#include "apps/cli/batch_session.h"
#include "apps/cli/commands/akde_output.h"
#include "apps/cli/commands/akde_session.h"
#include "apps/cli/commands/kde_defaults.h"
#include "apps/cli/commands/kde_dry_run.h"
#include "apps/cli/commands/kde_session.h"
#include "apps/cli/option_checks.h"
#include "apps/cli/overlap_jobs.h"
#include "apps/cli/text_output.h"
#include "batch/range_task.h"
#include "batch/task_run.h"
#include "batch/task_state.h"
#include "platform/runtime_error.h"

#include <algorithm>
#include <array>
#include <CLI/CLI.hpp>
#include <fmt/format.h>
#include <optional>
#include <string>
#include <utility>

namespace wxl::cli {

namespace {

constexpr const char* kPlanFooter =
    "Takes the options of wxl kde, checks them, asks its questions and reads the layer, once. What\n"
    "is decided goes into the sub-folder wxl_batch of the output folder: plan.json, which also\n"
    "holds the digest of the input, and points.bin, the fixes sorted by animal. The work is cut\n"
    "into tasks of roughly equal estimated cost. A task needs the output folder and nothing else;\n"
    "tasks run anywhere, in any order, and may be repeated.\n"
    "\n"
    "Example:\n"
    "\n"
    "  wxl batch plan wolves.shp --id-field animal --out wolves --cell-size 100 \\\n"
    "      --bandwidth lscv --extent min --isopleths 95,50 --polygons --tasks 4\n"
    "  wxl batch submit wolves --dry-run";

constexpr const char* kPlanAkdeFooter =
    "As wxl batch plan, for the work of wxl akde and with its options: the other commands of a batch\n"
    "take this one too, and the results are those of wxl akde. The fixes with their times are in\n"
    "points.bin and times.bin. --extent full fits all animals at once, as their grid depends on all\n"
    "models; a task does so again for its own.\n"
    "\n"
    "Example:\n"
    "\n"
    "  wxl batch plan-akde wolves.csv --out wolf_ranges --gpkg --tasks 4\n"
    "  wxl batch submit wolf_ranges --dry-run";

constexpr const char* kRunFooter =
    "Computes one task of the batch planned in the folder DIR: reads the fixes of its own animals,\n"
    "writes their datasets, and last its result. A task that is done is left alone; one that was\n"
    "killed starts anew and replaces what it had left.\n"
    "\n"
    "Without --task the number is taken from SLURM_ARRAY_TASK_ID.\n"
    "\n"
    "Example:\n"
    "\n"
    "  wxl batch run study --task 1";

constexpr const char* kStatusFooter =
    "Lists the tasks of the batch in the folder DIR: done, running (a process is at work on it),\n"
    "failed, or missing (not begun, or killed), with their times; then those of the comparison that\n"
    "wxl batch overlap planned.\n"
    "\n"
    "Example:\n"
    "\n"
    "  wxl batch status study";

std::string duration_text(double seconds) {
    if (seconds < 60.0) return fmt::format("{:.2g} s", seconds);
    if (seconds < 3600.0) return fmt::format("{:.3g} min", seconds / 60.0);
    return fmt::format("{:.3g} h", seconds / 3600.0);
}

void report_plan(const batch::PlanHead& plan, std::size_t animals, Console& console) {
    double total = 0.0;
    double longest = 0.0;
    double megabytes = 0.0;
    for (const batch::PlannedTask& task : plan.Tasks) {
        total += task.Seconds;
        longest = std::max(longest, task.Seconds);
        megabytes = std::max(megabytes, task.Megabytes);
    }
    console.Result("batch: " + batch::BatchFiles(plan.Folder).Folder.string());
    console.Result(
        fmt::format("animals: {}, distributions: {}, tasks: {}", animals, plan.Distributions(), plan.Tasks.size()));
    console.Result(fmt::format("estimated: {} on one core, {} for the longest task, {:.3g} MB for the largest",
                               duration_text(total), duration_text(longest), megabytes));
}

const char* stage_text(batch::TaskStage stage) {
    switch (stage) {
        case batch::TaskStage::kMissing:
            return "missing";
        case batch::TaskStage::kRunning:
            return "running";
        case batch::TaskStage::kFailed:
            return "failed";
        case batch::TaskStage::kDone:
            break;
    }
    return "done";
}

struct StatusList {
    Json Tasks = Json::array();
    TextTable Table = {{"task", "state", "distributions", "estimated", "started", "finished", "seconds", "host"}, {}};
    std::vector<std::string> Faults;
    std::array<std::size_t, 4> Counts{};
};

/// When a task was at work, where, and what it failed by.
Json times_of(const batch::TaskState& state) {
    const bool done = state.Stage == batch::TaskStage::kDone;
    return {{"started", json_or_null(state.Started)},
            {"finished", json_or_null(state.Finished)},
            {"seconds", done ? json_number(state.Seconds) : Json()},
            {"host", json_or_null(state.Host)},
            {"fault", json_or_null(state.Fault)}};
}

Json counts_of(const StatusList& list) {
    const auto& [missing, running, failed, done] = list.Counts;
    return {{"done", done}, {"running", running}, {"failed", failed}, {"missing", missing}, {"tasks", list.Tasks}};
}

std::string counts_text(const StatusList& list, bool merged) {
    const auto& [missing, running, failed, done] = list.Counts;
    return fmt::format("{} tasks: {} done, {} running, {} failed, {} missing; {}", list.Tasks.size(), done, running,
                       failed, missing, merged ? "merged" : "not merged");
}

void print_status(const StatusList& list, bool merged, const std::string& what, Console& console) {
    print_table(list.Table, console);
    for (const std::string& fault : list.Faults) console.Result(fault);
    console.Result(what + counts_text(list, merged));
}

/// The tasks of a planned comparison.
StatusList overlap_status(const platform::Services& services, const OverlapJobs& overlap) {
    StatusList list;
    list.Table.Columns = {"task", "state", "rows", "started", "finished", "seconds", "host"};
    for (std::size_t number = 1; number <= overlap.Plan->Tasks.size(); ++number) {
        const batch::TileRowTask& rows = overlap.Plan->Tasks[number - 1];
        const batch::TaskState state = batch::overlap_task_state(services, overlap.Stage, *overlap.Plan, number);
        ++list.Counts.at(static_cast<std::size_t>(state.Stage));
        Json json = {{"task", number}, {"state", stage_text(state.Stage)}};
        json.update(times_of(state));
        list.Tasks.push_back(std::move(json));
        list.Table.Rows.push_back({std::to_string(number), stage_text(state.Stage),
                                   std::to_string(rows.End - rows.First), state.Started, state.Finished,
                                   state.Stage == batch::TaskStage::kDone ? fmt::format("{:.3g}", state.Seconds) : "",
                                   state.Host});
        if (!state.Fault.empty()) list.Faults.push_back(fmt::format("task {}: {}", number, state.Fault));
    }
    return list;
}

/// Null where no comparison was asked for.
Json overlap_json(const platform::Services& services, const std::optional<OverlapJobs>& overlap) {
    if (!overlap) return {};
    Json json = {{"planned", overlap->Plan ? Json(overlap->Plan->Planned) : Json()}, {"merged", overlap->Merged}};
    json.update(counts_of(overlap->Plan ? overlap_status(services, *overlap) : StatusList()));
    return json;
}

void print_overlap_status(const platform::Services& services, const OverlapJobs& overlap, Console& console) {
    if (overlap.Plan) return print_status(overlap_status(services, overlap), overlap.Merged, "overlap: ", console);
    console.Result(fmt::format("overlap: planned when the batch is merged, in about {} tasks", overlap.Wish.Tasks));
}

void add_task(StatusList& list, std::size_t number, const batch::PlannedTask& task, const batch::TaskState& state) {
    const bool done = state.Stage == batch::TaskStage::kDone;
    ++list.Counts.at(static_cast<std::size_t>(state.Stage));
    Json json = {{"task", number},
                 {"state", stage_text(state.Stage)},
                 {"distributions", task.Work.size()},
                 {"estimated_seconds", json_number(task.Seconds)}};
    json.update(times_of(state));
    list.Tasks.push_back(std::move(json));
    list.Table.Rows.push_back({std::to_string(number), stage_text(state.Stage), std::to_string(task.Work.size()),
                               fmt::format("{:.3g} s", task.Seconds), state.Started, state.Finished,
                               done ? fmt::format("{:.3g}", state.Seconds) : "", state.Host});
    if (!state.Fault.empty()) list.Faults.push_back(fmt::format("task {}: {}", number, state.Fault));
}

void add_tasks_option(CLI::App& command, std::size_t& tasks) {
    command.add_option("--tasks", tasks, "About how many tasks; without it, of about ten minutes each")
        ->type_name("N")
        ->check(whole_number_between(1, 1'000'000));
}

batch::TaskOutcome run_kernels(BatchSession& session, const batch::Plan& plan, std::size_t number, bool again,
                               Console& console) {
    KdeOutput output = output_of(plan, false, console);
    batch::TaskRun task(session.Services(), session.Geodata(), plan, host_name());
    return task.Run(number, again, [&](const analysis::AnimalRecord& record) {
        output.AnimalDone(record);
        console.Finish();
    });
}

batch::TaskOutcome run_ranges(const BatchSession& session, const batch::RangePlan& plan, std::size_t number, bool again,
                              Console& console) {
    ConsoleListener listener(console);
    batch::RangeTask task(session.Services(), plan, listener, host_name());
    return task.Run(number, again, [&](const akde::RangeRecord& record) {
        console.Result(range_line(record));
        console.Finish();
    });
}

}  // namespace

void register_batch_plan(CLI::App& command, BatchPlanOptions& options) {
    add_kde_options(command, options.Run);
    add_tasks_option(command, options.Tasks);
    command.footer(kPlanFooter);
}

void register_batch_plan_akde(CLI::App& command, BatchPlanAkdeOptions& options) {
    add_akde_options(command, options.Run);
    add_tasks_option(command, options.Tasks);
    command.footer(kPlanAkdeFooter);
}

int run_batch_plan_akde(const BatchPlanAkdeOptions& options, Console& console) {
    AkdeSession session(options.Run, console);
    session.PrepareOutput();
    const batch::RangePlan plan = session.Plan(options.Tasks);
    report_plan(plan, plan.Animals.Animals.size(), console);
    return exit_code::kDone;
}

int run_batch_plan(const BatchPlanOptions& given, Console& console) {
    BatchPlanOptions options = given;
    options.Run = completed(given.Run);
    KdeSession session(options.Run, console);
    refuse_read_outputs(session.Form(), session.Read());
    prepare_output(options.Run, session.Form());
    std::optional<batch::Plan> plan;
    const analysis::RunOutcome planned = session.Form().HandOver([&](const analysis::PreparedRun& run) {
        plan = batch::plan_batch(session.Services(), run, plan_wishes_of(options.Run, options.Tasks));
    });
    console.EndProgress();
    if (!plan) {
        report_refusal(session.Form(), planned, console);
        return exit_code::kFailed;
    }
    report_plan(*plan, plan->Animals.size(), console);
    return exit_code::kDone;
}

void register_batch_run(CLI::App& command, BatchRunOptions& options) {
    add_batch_folder(command, options.Folder);
    command.add_option("--task", options.Task, "Number of the task, from 1")->type_name("K");
    command.add_flag("--again", options.Again, "Compute it also when it is done");
    command.footer(kRunFooter);
}

int run_batch_run(const BatchRunOptions& options, Console& console) {
    const std::size_t number = task_number(options.Task);
    BatchSession session(options.Folder, console);
    const batch::RangePlan* ranges = session.Ranges();
    const auto outcome = ranges != nullptr ? run_ranges(session, *ranges, number, options.Again, console)
                                           : run_kernels(session, *session.Kernels(), number, options.Again, console);
    if (outcome == batch::TaskOutcome::kWasDone) console.Note(fmt::format("task {} is done already", number));
    return exit_code::kDone;
}

void register_batch_status(CLI::App& command, BatchStatusOptions& options) {
    add_batch_folder(command, options.Folder);
    command.add_flag("--json", options.Json, "One JSON object on standard output");
    command.footer(kStatusFooter);
}

int run_batch_status(const BatchStatusOptions& options, Console& console) {
    const ToolSession tools(console, {});
    const platform::Services& services = tools.Services();
    const std::filesystem::path folder = batch_folder(options.Folder);
    const batch::BatchFiles files(folder);
    const auto overlap = overlap_jobs_in(services, folder);
    StatusList list;
    std::string planned;
    const bool hasBatch = !overlap || services.Files->FileExists(files.Plan());
    if (hasBatch) {
        const BatchSession session(options.Folder, console);
        planned = session.Head().Planned;
        for (std::size_t number = 1; number <= session.Head().Tasks.size(); ++number)
            add_task(list, number, session.Head().Tasks[number - 1],
                     batch::state_of(*services.Files, *services.Locks, files, number));
    }
    const bool merged = batch::is_merged(*services.Files, files);
    if (options.Json) {
        Json json = {{"planned", json_or_null(planned)}, {"merged", merged}};
        json.update(counts_of(list));
        json["overlap"] = overlap_json(services, overlap);
        console.Text(json_text(json));
        return exit_code::kDone;
    }
    if (hasBatch) print_status(list, merged, "", console);
    if (overlap) print_overlap_status(services, *overlap, console);
    return exit_code::kDone;
}

}  // namespace wxl::cli
