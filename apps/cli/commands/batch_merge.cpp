#include "analysis/ending.h"
#include "analysis/summary_table.h"
#include "apps/cli/batch_session.h"
#include "apps/cli/batch_tasks.h"
#include "apps/cli/commands/akde_output.h"
#include "apps/cli/commands/batch.h"
#include "apps/cli/timed_fixes.h"
#include "batch/merge.h"
#include "batch/planner.h"
#include "batch/range_merge.h"
#include "results_page/results_page.h"

#include <CLI/CLI.hpp>
#include <fmt/format.h>
#include <vector>

namespace wxl::cli {

namespace {

constexpr const char* kFooter =
    "Ends the batch in the folder DIR when all its tasks are done: writes the report in the order\n"
    "of the animals, with the messages and results on the terminal, as wxl kde would have; of a\n"
    "batch of wxl akde the summary, the package and the page. A merge that was killed may be\n"
    "repeated.\n"
    "\n"
    "Example:\n"
    "\n"
    "  wxl batch merge study --json > results.json";

}  // namespace

void register_batch_merge(CLI::App& command, BatchMergeOptions& options) {
    add_batch_folder(command, options.Folder);
    command.add_flag("--json", options.Json, "One JSON object on standard output");
    command.add_flag("--clean", options.Clean, "Delete the folder wxl_batch afterwards");
    command.footer(kFooter);
}

namespace {

int merge_kernels(const BatchSession& session, const batch::Plan& plan, const BatchMergeOptions& options,
                  Console& console) {
    const platform::Services& services = session.Services();
    KdeOutput output = output_of(plan, options.Json, console);
    analysis::SummaryTable summary(services);
    analysis::ConvexPolygonLayer polygons(services);
    analysis::RangePackage ranges(services);
    results_page::ResultsPage page(services);
    const std::vector<analysis::IRunObserver*> observers = {&summary, &polygons, &ranges, &output, &page};
    batch::Merge(services, plan).Run(observers);
    analysis::show_ending(*services.Messages, false);
    output.Finish(analysis::RunOutcome::kComplete);
    if (options.Clean) batch::remove_batch(services, plan.Folder);
    const int code = exit_code_of(analysis::RunOutcome::kComplete, output, console);
    return with_extras(code, summary, polygons, ranges, page, options.Json, console);
}

int merge_ranges(const BatchSession& session, const batch::RangePlan& plan, const BatchMergeOptions& options,
                 Console& console) {
    AkdeOutput output(plan.Wanted, plan.Animals.Reference, session.Services(), options.Json, console);
    ConsoleListener listener(console);
    const akde::RangeOutcome outcome = batch::merge_ranges(
        session.Services(), plan, listener, [&](const akde::RangeRecord& record) { output.Add(record); });
    if (options.Clean) batch::remove_batch(session.Services(), plan.Folder);
    return output.Finish(outcome);
}

}  // namespace

int run_batch_merge(const BatchMergeOptions& options, Console& console) {
    const BatchSession session(options.Folder, console);
    if (session.IsMerged()) return exit_code::kDone;
    if (const std::string unfinished = unfinished_text(session.Services(), session.Head()); !unfinished.empty())
        return console.Fail(
            fmt::format("the batch is not finished: {}; wxl batch submit sends what is missing", unfinished));
    if (const batch::RangePlan* ranges = session.Ranges()) return merge_ranges(session, *ranges, options, console);
    return merge_kernels(session, *session.Kernels(), options, console);
}

}  // namespace wxl::cli
