#include "analysis/ending.h"
#include "analysis/summary_table.h"
#include "apps/cli/batch_session.h"
#include "apps/cli/batch_tasks.h"
#include "apps/cli/commands/batch.h"
#include "batch/merge.h"
#include "batch/planner.h"
#include "batch/task_state.h"
#include "results_page/results_page.h"

#include <CLI/CLI.hpp>
#include <fmt/format.h>
#include <vector>

namespace wxl::cli {

namespace {

constexpr const char* kFooter =
    "Ends the batch in the folder DIR when all its tasks are done: writes the report in the order\n"
    "of the animals, with the messages and results on the terminal, as wxl kde would have. A merge\n"
    "that was killed may be repeated.\n"
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

int run_batch_merge(const BatchMergeOptions& options, Console& console) {
    BatchSession session(options.Folder, console);
    const platform::Services& services = session.Services();
    const batch::Plan& plan = session.Plan();
    if (batch::is_merged(*services.Files, batch::BatchFiles(plan.Frame.Folder))) {
        console.Note("this batch is merged already");
        return exit_code::kDone;
    }
    if (const std::string unfinished = unfinished_text(services, plan); !unfinished.empty())
        return console.Fail(
            fmt::format("the batch is not finished: {}; wxl batch submit sends what is missing", unfinished));
    KdeOutput output = session.Output(options.Json);
    analysis::SummaryTable summary(services);
    analysis::ConvexPolygonLayer polygons(services);
    analysis::RangePackage ranges(services);
    results_page::ResultsPage page(services);
    const std::vector<analysis::IRunObserver*> observers = {&summary, &polygons, &ranges, &output, &page};
    batch::Merge(services, plan).Run(observers);
    analysis::show_ending(*services.Messages, false);
    output.Finish(analysis::RunOutcome::kComplete);
    if (options.Clean) batch::remove_batch(services, plan.Frame.Folder);
    const int code = exit_code_of(analysis::RunOutcome::kComplete, output, console);
    return with_extras(code, summary, polygons, ranges, page, options.Json, console);
}

}  // namespace wxl::cli
