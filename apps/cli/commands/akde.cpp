#include "apps/cli/commands/akde.h"

#include "akde/range_run.h"
#include "apps/cli/batch_tasks.h"
#include "apps/cli/commands/akde_dry_run.h"
#include "apps/cli/commands/akde_output.h"
#include "apps/cli/commands/akde_session.h"
#include "apps/cli/option_checks.h"
#include "apps/cli/stop_signals.h"
#include "batch/planner.h"
#include "batch/range_merge.h"

#include <CLI/CLI.hpp>

namespace wxl::cli {

namespace {

int run_here(const AkdeSession& session, AkdeOutput& output, Console& console) {
    const StopSignals signals;
    ConsoleListener listener(console);
    return output.Finish(akde::RangeRun(session.Settings(), session.Services(), listener)
                             .Run(session.Animals(), [&](const akde::RangeRecord& record) { output.Add(record); }));
}

/// The same run, computed by several processes.
int run_in_processes(const AkdeSession& session, std::size_t jobs, AkdeOutput& output, Console& console) {
    const platform::Services& services = session.Services();
    const batch::RangePlan plan = session.Plan(jobs * kTasksPerJob);
    if (!run_tasks_here(services, plan, open_tasks(services, plan), jobs, console)) return exit_code::kFailed;
    ConsoleListener listener(console);
    const akde::RangeOutcome outcome =
        batch::merge_ranges(services, plan, listener, [&](const akde::RangeRecord& record) { output.Add(record); });
    batch::remove_batch(services, plan.Folder);
    return output.Finish(outcome);
}

}  // namespace

void add_akde_options(CLI::App& command, AkdeOptions& options) {
    add_timed_input_options(command, options.Input);
    command.add_option("--out", options.Out, "Output folder; made when it is not there")->type_name("DIR")->required();
    command.add_option("--prefix", options.Prefix, "Prefix of the raster names")->type_name("P");
    command.add_option("--cell-size", options.CellSize, "Cell size in map units; without it each animal has its own")
        ->type_name("C");
    command.add_option("--scaling", options.Scaling, "Factor of the densities")->type_name("S")->capture_default_str();
    command
        .add_option("--extent", options.Extent,
                    "min (each animal's own), full (one for all animals, as far as the widest kernel reaches), "
                    "full:BUFFER, or ref:RASTER, the grid of a raster")
        ->transform(any_case({"full", "min", "ref"}))
        ->type_name("EXTENT")
        ->capture_default_str();
    command.add_option("--raster-format", options.RasterFormat, "Format of the rasters")
        ->transform(one_of({"GRID", "GTiff"}))
        ->type_name("GRID|GTiff")
        ->capture_default_str();
    command
        .add_option("--group-by", options.GroupBy,
                    "Put the rasters and isopleths of every N animals into a sub-folder of their own")
        ->type_name("N")
        ->check(whole_number_above_zero());
    command.add_option("--isopleths", options.Isopleths, "Percentages of the time")
        ->type_name("P[,P...]")
        ->capture_default_str();
    command
        .add_option("--weights", options.Weights,
                    "uniform, or optimal: fixes close in time count less, for uneven intervals")
        ->transform(one_of({"uniform", "optimal"}))
        ->type_name("WEIGHTS")
        ->capture_default_str();
    add_fit_options(command, options.Fit);
    command.add_flag("--lines", options.Lines, "Isopleths as lines too");
    command.add_flag("--html", options.Html, "Write WXL_AKDE_ANALYSIS.html, a page of the results with maps");
    command.add_flag("--gpkg", options.GeoPackage,
                     "Write RANGES.gpkg: outlines, fixes and a summary of all animals in one file");
    command.add_flag("--overwrite", options.Overwrite, "Replace earlier results of the same names");
}

void register_akde(CLI::App& command, AkdeOptions& options) {
    add_akde_options(command, options);
    add_jobs_option(command, options.Jobs);
    command.add_flag("--json", options.Json, "Print one JSON object");
    command.add_flag("--dry-run", options.DryRun, "Print what would be computed, and write nothing");
    command.footer(
        "Home ranges of animals whose fixes depend on each other, as those of GPS collars do:\n"
        "kernel density with the bandwidth matrix that the animal's movement model advises\n"
        "(wxl models), its area corrected for the width of the kernel. Per animal there is a\n"
        "raster, and a shapefile NAME_poly with an outline for every percentage, its field BOUND\n"
        "est, low or high: the estimate and its 95 % limits. WXL_AKDE_SUMMARY.csv lists all areas.\n"
        "With --gpkg all outlines, fixes and areas stand in RANGES.gpkg too. Both keep the rows of\n"
        "earlier runs whose rasters the run does not replace.\n"
        "Ctrl-C ends the run after the present animal and keeps what is done.\n"
        "\n"
        "Examples:\n"
        "\n"
        "  wxl akde wolves.csv --out akde --html\n"
        "  wxl akde wolves.shp --id-field animal --time-field Date,Time1 --out ranges");
}

int run_akde(const AkdeOptions& options, Console& console) {
    const AkdeSession session(options, console);
    if (options.DryRun)
        return print_akde_dry_run(session.Settings(), session.Animals(), session.Taken(), options.Json, console);
    session.PrepareOutput();
    AkdeOutput output(session.Settings(), session.Animals().Reference, session.Services(), options.Json, console);
    return options.Jobs > 1 ? run_in_processes(session, options.Jobs, output, console)
                            : run_here(session, output, console);
}

}  // namespace wxl::cli
