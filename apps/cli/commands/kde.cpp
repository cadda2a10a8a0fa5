#include "apps/cli/commands/kde.h"

#include "adapters/ogr/ogr_source.h"
#include "analysis/analysis.h"
#include "analysis/ending.h"
#include "apps/cli/batch_tasks.h"
#include "apps/cli/commands/kde_defaults.h"
#include "apps/cli/commands/kde_dry_run.h"
#include "apps/cli/commands/kde_output.h"
#include "apps/cli/commands/kde_session.h"
#include "apps/cli/option_checks.h"
#include "apps/cli/stop_signals.h"
#include "batch/merge.h"
#include "platform/text.h"
#include "results_page/results_page.h"

#include <CLI/CLI.hpp>
#include <fmt/format.h>
#include <optional>
#include <string>

namespace wxl::cli {

namespace {

void add_data_options(CLI::App& command, KdeOptions& options) {
    add_measured_input_options(command, options.Points);
    command
        .add_option("--id-field", options.IdField,
                    "Field or column that names the animal (default: found by its names)")
        ->type_name("FIELD");
    command.add_option("--where", options.Where, "Use only the fixes that meet this condition")->type_name("SQL");
}

void add_kernel_options(CLI::App& command, KdeOptions& options) {
    command
        .add_option("--bandwidth", options.Bandwidth,
                    "href, lscv, bcv, adhoc[:PARTS] (smallest proportion of HREF that leaves the range in one part), "
                    "bandwidths in map "
                    "units (150 or 100,150), or proportions of HREF (prop:0.5,1)")
        ->transform(any_case({"href", "lscv", "bcv", "adhoc", "prop"}))
        ->type_name("METHOD");
    command.add_flag("--adaptive", options.Adaptive, "Adaptive kernel instead of a fixed one");
    command
        .add_option("--reach", options.Reach,
                    "How far each kernel reaches, in bandwidths; 4 without it, as far as the widest goes with whole")
        ->transform(any_case({"whole"}))
        ->type_name("R|whole");
    command.add_flag("--rescale", options.Rescale, "Rescale the coordinates to unit variance");
    command.add_flag("--independence", options.Independence, "Put the indices of independence into the report");
}

void add_raster_options(CLI::App& command, KdeOptions& options) {
    command
        .add_option("--out", options.Out,
                    "Output folder, made when it is not there (default: NAME_ranges, in the present folder)")
        ->type_name("DIR");
    command
        .add_option("--cell-size", options.CellSize,
                    "Cell size in map units, used as a whole number; auto: a tenth of each bandwidth, rounded to 1, 2 "
                    "or 5 times a power of ten")
        ->type_name("C|auto");
    command.add_option("--prefix", options.Prefix, "Prefix of the raster names, at most 6 characters")->type_name("P");
    command.add_option("--scaling", options.Scaling, "Factor of the densities; 1000000 without it")->type_name("S");
    command
        .add_option("--extent", options.Extent,
                    "full (all fixes and a suggested buffer), full:BUFFER, min (each animal's own), or ref:RASTER")
        ->transform(any_case({"full", "min", "ref"}))
        ->type_name("EXTENT");
    command.add_option("--raster-format", options.RasterFormat, "Format of the rasters")
        ->transform(one_of({"GRID", "GTiff"}))
        ->type_name("GRID|GTiff")
        ->capture_default_str();
    command
        .add_option("--group-by", options.GroupBy,
                    "Put the rasters and isopleths of every N animals into a sub-folder of their own")
        ->type_name("N")
        ->check(whole_number_above_zero());
}

void add_isopleth_options(CLI::App& command, KdeOptions& options) {
    command.add_option("--isopleths", options.Isopleths, "Percentages of the volume; 95, 90, 50 without it")
        ->type_name("P[,P...]");
    command.add_flag("--lines", options.Lines, "Isopleths as lines");
    command.add_flag("--polygons", options.Polygons, "Isopleths as polygons");
    command.add_flag("--donuts", options.Donuts, "Rings between consecutive isopleths");
    command
        .add_option("--mcp", options.ConvexPolygons,
                    "Minimum convex polygons around these percentages of the fixes, as a shapefile PREFIXmcp.shp "
                    "and as a layer of RANGES.gpkg")
        ->type_name("P[,P...]");
}

void add_run_options(CLI::App& command, KdeOptions& options) {
    command.add_flag("--verbose-log", options.VerboseLog, "Put the search profiles into the report");
    command.add_flag("--html", options.Html, "Write WXL_KDE_ANALYSIS.html, a page of the results with maps");
    command.add_flag_callback(
        "--gpkg", [&options] { options.GeoPackage = true; },
        "Write RANGES.gpkg: isopleths, fixes and a summary of all animals in one file; as usual where the program "
        "chooses");
    command.add_flag_callback(
        "--no-gpkg", [&options] { options.GeoPackage = false; }, "Do not write it");
    command.add_option("--settings", options.Settings, "Settings file to start from; options given count more")
        ->type_name("FILE");
    command.add_option("--save-settings", options.SaveSettings, "Save the settings to this file")->type_name("FILE");
    add_answer_option(command, options.Questions);
    command.add_flag("--overwrite", options.Overwrite, "Replace earlier rasters and isopleths of the same names");
}

constexpr const char* kFooter =
    "Estimates a utilization distribution for every animal of a tracking file or a point\n"
    "layer. wxl kde FILE alone does the whole: it imports the file into memory where it has to\n"
    "(a table, GPX, KML, degrees; with the options of wxl import), finds the animals, and\n"
    "chooses what --id-field, --out and --cell-size do not say: the folder NAME_ranges, and\n"
    "for every animal cells that suit its bandwidth, with --extent min, --isopleths 95,50\n"
    "--gpkg --html. Options refine that. A call that gives all three is taken as it\n"
    "stands: full extent, no isopleths, no package and no page unless asked for.\n"
    "\n"
    "RANGES.gpkg holds the isopleths of all animals as one layer, their fixes, and a\n"
    "summary; rows of earlier runs stay.\n"
    "\n"
    "Each distribution is a raster, with isopleths as shapefiles where asked for. The folder\n"
    "also gets WXL_KDE_ANALYSIS.txt, a report to which every run is appended, and\n"
    "WXL_KERNEL_SETTINGS.txt, which --settings takes, and WXL_KDE_SUMMARY.csv, a table of\n"
    "bandwidths, areas and volumes that keeps the rows of earlier runs. With --html it gets\n"
    "WXL_KDE_ANALYSIS.html: tables, maps and profiles as one page for any browser.\n"
    "\n"
    "A raster is named after the prefix and the animal: its number, or 1, 2, 3 ... where\n"
    "the field is text; _b1, _b2 ... follow for lists of bandwidths and proportions.\n"
    "\n"
    "An animal that cannot be computed (one fix, a bandwidth below the cell size) is told\n"
    "in the report and on standard error; the others are computed. Questions are answered\n"
    "by --answer buffer=yes|no|cancel and --answer overlap=yes|no. Ctrl-C ends the run after\n"
    "the present animal and keeps what is done; a second Ctrl-C ends it at once.\n"
    "\n"
    "Examples:\n"
    "\n"
    "  wxl kde wolves.csv\n"
    "  wxl kde wolves.shp --id-field animal --out kde --cell-size 100 --dry-run\n"
    "  wxl kde wolves.shp --id-field animal --out kde --cell-size 100 \\\n"
    "      --bandwidth lscv --extent min --isopleths 95,50 --polygons";

}  // namespace

int with_extras(int code, const analysis::SummaryTable& summary, const analysis::ConvexPolygonLayer& polygons,
                const analysis::RangePackage& ranges, const results_page::ResultsPage& page, bool json,
                Console& console) {
    if (!json && !polygons.Written().empty()) console.Result("minimum convex polygons: " + polygons.Written().string());
    if (!json && !ranges.Written().empty()) console.Result("ranges: " + ranges.Written().string());
    if (!json && !page.Written().empty()) console.Result("page: " + page.Written().string());
    return summary.Failed() || polygons.Failed() || ranges.Failed() || page.Failed() ? exit_code::kFailed : code;
}

int exit_code_of(analysis::RunOutcome outcome, const KdeOutput& output, Console& console) {
    if (output.Failed() > 0)
        console.Problem(fmt::format("wxl: {} of {} distributions could not be computed; the report says why",
                                    output.Failed(), output.Done()));
    if (output.WithoutIsopleths() > 0)
        console.Problem(
            fmt::format("wxl: the isopleths of {} of {} distributions could not be made; the messages above "
                        "say why",
                        output.WithoutIsopleths(), output.Done()));
    const bool done = outcome == analysis::RunOutcome::kComplete && output.Failed() < output.Done() &&
                      output.WithoutIsopleths() == 0 && output.WithoutMemory() == 0;
    return done ? exit_code::kDone : exit_code::kFailed;
}

void report_refusal(kde_tool::frmKDE& form, analysis::RunOutcome outcome, Console& console) {
    if (outcome == analysis::RunOutcome::kRefused && !taken_names(form).empty()) advise_on_names(console);
}

namespace {

/// The same run, computed by several processes.
int run_in_processes(const KdeOptions& options, KdeSession& session, KdeOutput& output, Console& console) {
    kde_tool::frmKDE& form = session.Form();
    const platform::Services& services = session.Services();
    std::optional<batch::Plan> plan;
    const analysis::RunOutcome planned = form.HandOver([&](const analysis::PreparedRun& run) {
        plan = batch::plan_batch(services, run, plan_wishes_of(options, options.Jobs * kTasksPerJob));
    });
    console.EndProgress();
    if (!plan) {
        output.Finish(planned);
        report_refusal(form, planned, console);
        return exit_code_of(planned, output, console);
    }
    if (!run_tasks_here(services, *plan, open_tasks(services, *plan), options.Jobs, console)) return exit_code::kFailed;
    batch::Merge(services, *plan).Run(form.Observers());
    analysis::show_ending(*services.Messages, false);
    batch::remove_batch(services, plan->Frame.Folder);
    output.Finish(analysis::RunOutcome::kComplete);
    return exit_code_of(analysis::RunOutcome::kComplete, output, console);
}

int run_here(KdeSession& session, KdeOutput& output, Console& console) {
    const StopSignals signals;
    kde_tool::frmKDE& form = session.Form();
    form.btnOK_Click();
    console.EndProgress();
    output.Finish(form.LastRun());
    report_refusal(form, form.LastRun(), console);
    return exit_code_of(form.LastRun(), output, console);
}

}  // namespace

void add_kde_options(CLI::App& command, KdeOptions& options) {
    add_data_options(command, options);
    add_raster_options(command, options);
    add_kernel_options(command, options);
    add_isopleth_options(command, options);
    add_run_options(command, options);
    add_fix_options(command, options.Fixes);
}

void register_kde(CLI::App& command, KdeOptions& options) {
    add_kde_options(command, options);
    add_jobs_option(command, options.Jobs);
    command.add_flag("--json", options.Json, "One JSON object on standard output");
    command.add_flag("--dry-run", options.DryRun, "Print what would be computed, and write nothing");
    command.footer(kFooter);
}

batch::PlanWishes plan_wishes_of(const KdeOptions& options, std::size_t tasks) {
    return {.Program = "wxl " WXL_VERSION,
            .Input = files::split_input(options.Points.Input, sources_of(options.Points.AllowIndirect)).first,
            .Tasks = tasks,
            .ToldWhole = options.ReadyMade};
}

int run_kde(const KdeOptions& given, Console& console) {
    const KdeOptions options = completed(given);
    KdeSession session(options, console);
    kde_tool::frmKDE& form = session.Form();
    refuse_read_outputs(form, session.Read());
    if (options.DryRun) return print_dry_run(form, {options.Json, options.Overwrite}, console);
    prepare_output(options, form);
    KdeOutput output(console, form.OutputFolderPath(), options.Json,
                     form.PointLayer().Feature->FeatureClass()->Reference());
    results_page::ResultsPage page(session.Services());
    if (options.ReadyMade) output.TellWhole(form.PointLayer().Feature->FeatureClass()->Reference());
    form.AddObserver(output);
    form.AddObserver(page);
    const int code =
        options.Jobs > 1 ? run_in_processes(options, session, output, console) : run_here(session, output, console);
    return with_extras(code, form.Summary(), form.ConvexPolygons(), form.Ranges(), page, options.Json, console);
}

}  // namespace wxl::cli
