#include "apps/cli/batch_session.h"
#include "apps/cli/commands/batch.h"
#include "apps/cli/option_checks.h"
#include "batch/merge.h"
#include "batch/overlap_stage.h"
#include "platform/runtime_error.h"
#include "platform/text.h"

#include <algorithm>
#include <CLI/CLI.hpp>
#include <filesystem>
#include <fmt/format.h>

namespace wxl::cli {

namespace {

namespace fs = std::filesystem;
using comparison::ComparedRanges;

constexpr const char* kFooter =
    "The last stage of a large study: compares the rasters in the folder DIR as wxl overlap DIR\n"
    "does, in tasks that run side by side. Each sums all pairs over some rows of the common grid.\n"
    "The rasters must lie on one grid (--extent full).\n"
    "\n"
    "First --tasks N with percentages and outputs plans; where a batch in DIR is not merged yet, the\n"
    "comparison is planned when it is. wxl batch submit DIR then sends all that is missing, the\n"
    "comparison last, and wxl batch status DIR tells where it stands.\n"
    "\n"
    "Or every task is run by --task, anywhere and in any order; one that is done is left alone, one\n"
    "that was killed starts anew. Without --task the number is taken from SLURM_ARRAY_TASK_ID.\n"
    "--merge adds the sums up, and prints and writes what wxl overlap would, byte for byte. Each\n"
    "task reads all rasters and needs the memory of wxl overlap.\n"
    "\n"
    "Example:\n"
    "\n"
    "  wxl batch overlap study --tasks 2 --percent 95,50\n"
    "  wxl batch overlap study --task 1\n"
    "  wxl batch overlap study --task 2\n"
    "  wxl batch overlap study --merge --out compared";

/// The options of wxl overlap that the plan stands for.
OverlapOptions planned(const BatchOverlapOptions& options, const batch::OverlapPlan& plan) {
    OverlapOptions overlap = options.Overlap;
    overlap.Percent = plan.TypedPercents;
    overlap.Conditional = plan.Conditional;
    overlap.Normalise = plan.Normalise;
    overlap.Scaling = plan.TypedScaling;
    if (overlap_scaling(overlap) != plan.Scaling) overlap.Scaling = platform::NumberText(plan.Scaling);
    return overlap;
}

std::string absolute(const std::string& path) {
    return path.empty() ? path : fs::absolute(path).lexically_normal().string();
}

/// Names are checked now; the merge may be repeated then.
batch::OverlapWish wish_of(const BatchOverlapOptions& options) {
    check_overlap_outputs(options.Overlap);
    OverlapOptions overlap = options.Overlap;
    overlap.Csv = absolute(overlap.Csv);
    overlap.Out = absolute(overlap.Out);
    batch::OverlapWish wish{*options.Tasks, overlap_option_words(overlap)};
    if (overlap.Json) wish.Words.emplace_back("--json");
    if (!overlap.Csv.empty() || !overlap.Out.empty()) wish.Words.emplace_back("--overwrite");
    return wish;
}

/// A batch whose animals have grids of their own has nothing to compare, and its user should learn it now.
void refuse_own_grids(const BatchSession& batch) {
    const batch::Plan* kernels = batch.Kernels();
    const bool own = kernels != nullptr ? kernels->Frame.Wanted.Mode == analysis::ExtentMode::kMinimum
                                        : batch.Ranges()->Wanted.Extent == akde::RangeExtent::kMinimum;
    if (own)
        platform::Raise(platform::error_number::kInvalidCall,
                        "the rasters of this batch will lie on grids of their own: plan it with --extent full to "
                        "compare them");
}

int plan_overlap(const BatchOverlapOptions& options, const ToolSession& session, const batch::BatchFiles& stage,
                 Console& console) {
    const std::vector<double> percents = overlap_percents(options.Overlap);
    const batch::OverlapWish wish = wish_of(options);
    if (batch::has_open_batch(*session.Services().Files, batch_folder(options.Overlap.Tracks.Points.Input))) {
        refuse_own_grids(BatchSession(options.Overlap.Tracks.Points.Input, console));
        batch::write_wish(session.Services(), stage, wish);
        console.Result("comparison: " + stage.Folder.string());
        console.Result("planned when the batch is merged; wxl batch submit sends both");
        return exit_code::kDone;
    }
    const ComparedRanges ranges = ranges_of_folder(options.Overlap, percents, console).Ranges;
    console.EndProgress();
    batch::OverlapPlan plan{.Program = WXL_VERSION,
                            .Planned = platform::DateTimeText(session.Services().Clock->Now()),
                            .Percents = percents,
                            .Conditional = options.Overlap.Conditional,
                            .Normalise = options.Overlap.Normalise,
                            .Scaling = overlap_scaling(options.Overlap),
                            .TypedPercents = options.Overlap.Percent,
                            .TypedScaling = options.Overlap.Scaling,
                            .Grid = ranges.Densities.Grid,
                            .Animals = {},
                            .Volumes = {},
                            .Tasks = batch::row_tasks(ranges.Densities.Grid, *options.Tasks)};
    for (const comparison::ComparedAnimal& animal : ranges.Animals) {
        plan.Animals.push_back(animal.Name);
        plan.Volumes.push_back(animal.Volume);
    }
    batch::write_wish(session.Services(), stage, wish);
    batch::write_plan(session.Services(), stage, plan);
    console.Result("comparison: " + stage.Folder.string());
    console.Result(fmt::format("animals: {}, tasks: {}", plan.Animals.size(), plan.Tasks.size()));
    return exit_code::kDone;
}

int run_task(const BatchOverlapOptions& options, const ToolSession& session, const batch::BatchFiles& stage,
             Console& console) {
    const std::size_t number = task_number(options.Task);
    const batch::OverlapPlan plan = batch::read_overlap_plan(*session.Services().Files, stage, WXL_VERSION);
    if (!options.Task && number > plan.Tasks.size()) {
        console.Note(
            fmt::format("the comparison has {} tasks; nothing is left for task {}", plan.Tasks.size(), number));
        return exit_code::kDone;
    }
    const auto ranges = [&] { return ranges_of_folder(planned(options, plan), plan.Percents, console).Ranges; };
    const auto outcome = batch::run_overlap_task(session.Services(), stage, plan, number, options.Again, host_name(),
                                                 ranges, [&](double done) { console.Progress(done, "overlap"); });
    console.EndProgress();
    if (outcome == batch::TaskOutcome::kWasDone) console.Note(fmt::format("task {} is done already", number));
    return exit_code::kDone;
}

int merge_tasks(const BatchOverlapOptions& options, const ToolSession& session, const batch::BatchFiles& stage,
                Console& console) {
    const platform::Services& services = session.Services();
    const batch::OverlapPlan plan = batch::read_overlap_plan(*services.Files, stage, WXL_VERSION);
    if (const std::string unfinished = batch::unfinished_overlap(services, stage, plan); !unfinished.empty())
        return console.Fail(
            fmt::format("the comparison is not finished: {}; wxl batch overlap DIR --task K runs one", unfinished));
    const int code = tell_overlap(
        planned(options, plan),
        [&](const ComparedRanges& ranges, const comparison::OverlapSettings& settings) {
            batch::check_rasters(plan, ranges);
            return comparison::overlaps_from(ranges.Densities, settings,
                                             batch::added_tasks(*services.Files, stage, plan));
        },
        console);
    if (code == exit_code::kDone) batch::mark_merge(services, stage, 0, true);
    return code;
}

}  // namespace

void register_batch_overlap(CLI::App& command, BatchOverlapOptions& options) {
    command.add_option("DIR", options.Overlap.Tracks.Points.Input, "Folder of the rasters")->required();
    command.add_option("--tasks", options.Tasks, "Plan about so many tasks")
        ->type_name("N")
        ->check(whole_number_between(1, 1'000'000));
    command.add_option("--task", options.Task, "Compute this task, from 1")->type_name("K");
    command.add_flag("--again", options.Again, "Compute it also when it is done");
    command.add_flag("--merge", options.Merge, "Add the tasks up, and tell and write the results");
    add_overlap_result_options(command, options.Overlap);
    command.footer(kFooter);
}

int run_batch_overlap(const BatchOverlapOptions& options, Console& console) {
    if (static_cast<int>(options.Tasks.has_value()) + static_cast<int>(options.Task.has_value()) +
            static_cast<int>(options.Merge) >
        1)
        throw WrongCall("give one of --tasks, --task and --merge");
    const ToolSession session(console, {});
    const batch::BatchFiles stage = batch::overlap_files(batch_folder(options.Overlap.Tracks.Points.Input));
    if (options.Tasks) return plan_overlap(options, session, stage, console);
    if (options.Merge) return merge_tasks(options, session, stage, console);
    return run_task(options, session, stage, console);
}

}  // namespace wxl::cli
