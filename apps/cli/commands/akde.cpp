#include "apps/cli/commands/akde.h"

#include "adapters/ogr/disk_services.h"
#include "adapters/raster/raster_dataset.h"
#include "akde/range_run.h"
#include "analysis/output_names.h"
#include "analysis/package_draft.h"
#include "apps/cli/commands/akde_dry_run.h"
#include "apps/cli/commands/akde_output.h"
#include "apps/cli/json_values.h"
#include "apps/cli/option_checks.h"
#include "apps/cli/output_folder.h"
#include "apps/cli/percentages.h"
#include "apps/cli/stop_signals.h"
#include "platform/file_system.h"
#include "platform/runtime_error.h"
#include "platform/text.h"
#include "results_page/range_page.h"

#include <CLI/CLI.hpp>
#include <filesystem>
#include <fmt/format.h>
#include <optional>
#include <vector>

namespace wxl::cli {

namespace {

namespace fs = std::filesystem;
using akde::RangeExtent;
using akde::RangeSettings;

double buffer_of(const std::string& text) {
    const double buffer = platform::IsNumeric(text) ? platform::NumberFromText(text) : -1.0;
    if (!(buffer >= 0.0)) throw WrongCall(fmt::format("--extent: the buffer \"{}\" is no number from 0 on", text));
    return buffer;
}

void take_extent(const AkdeOptions& options, RangeSettings& settings) {
    const std::string& text = options.Extent;
    if (text == "min") return;
    if (text == "full" || text.starts_with("full:")) {
        settings.Extent = RangeExtent::kFull;
        if (text != "full") settings.Buffer = buffer_of(text.substr(5));
        return;
    }
    if (!text.starts_with("ref:"))
        throw WrongCall(fmt::format("--extent: \"{}\" is not full, full:BUFFER, min or ref:RASTER", text));
    settings.Extent = RangeExtent::kReference;
    settings.ReferenceName = text.substr(4);
    const auto raster = opened(options.Input.Points.AllowIndirect, [&](files::Sources sources) {
        return files::OpenRaster(settings.ReferenceName, sources);
    });
    settings.Reference = raster->Band()->Geometry();
}

void check_prefix(const std::string& prefix) {
    try {
        platform::CheckDatasetName(prefix + "0");
    } catch (const platform::RuntimeError& error) {
        throw WrongCall("--prefix: " + error.Description);
    }
}

RangeSettings settings_of(const AkdeOptions& options) {
    RangeSettings settings;
    settings.Fields = options.Input.Fields;
    settings.Fit = fit_settings(options.Fit);
    settings.Folder = options.Out;
    settings.Prefix = options.Prefix;
    check_prefix(settings.Prefix);
    settings.CellSize = options.CellSize;
    if (settings.CellSize && !(*settings.CellSize > 0.0)) throw WrongCall("--cell-size must be above 0");
    settings.Scaling = options.Scaling;
    if (!(settings.Scaling > 0.0)) throw WrongCall("--scaling must be above 0");
    settings.RasterFormat = options.RasterFormat;
    settings.Percentages = percentages_of("--isopleths", options.Isopleths, Hundred::kRefused);
    settings.Optimal = options.Weights == "optimal";
    settings.Lines = options.Lines;
    settings.GeoPackage = options.GeoPackage;
    settings.AnimalsPerSubfolder = options.GroupBy;
    settings.Overwrite = options.Overwrite;
    settings.Where = options.Input.Where;
    take_extent(options, settings);
    return settings;
}

/// What keeps the run from starting. What is read by the command is never written.
std::vector<fs::path> taken_outputs(const RangeSettings& settings, const TimedLayer& layer,
                                    const platform::Services& services) {
    const auto standing = akde::standing_outputs(settings, layer.Animals, services);
    layer.Read.Refuse(standing);
    if (settings.GeoPackage) layer.Read.Refuse(analysis::file_in_folder(settings.Folder, analysis::kRangePackage));
    return settings.Overwrite ? std::vector<fs::path>() : standing;
}

/// Before anything is computed.
void check_outputs(const std::vector<fs::path>& standing) {
    if (!standing.empty())
        platform::Raise(platform::error_number::kFileExists,
                        standing.front().string() + " exists: choose another folder or prefix, or give --overwrite");
}

/// Where the page stands; "" where there is none.
std::string write_page(results_page::RangePage& page, const akde::RangeOutcome& outcome, const RangeSettings& settings,
                       Console& console) {
    const fs::path written = page.Write(outcome);
    if (written.empty())
        console.Problem(
            fmt::format("Warning: {} is not a page of this tool and was left as it is; no page was written.",
                        (settings.Folder / results_page::kRangePageFile).string()));
    return written.string();
}

}  // namespace

void register_akde(CLI::App& command, AkdeOptions& options) {
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
    command.add_flag("--dry-run", options.DryRun, "Print what would be computed, and write nothing");
    command.add_flag("--overwrite", options.Overwrite, "Replace earlier results of the same names");
    command.add_flag("--json", options.Json, "Print one JSON object");
    command.footer(
        "Home ranges of animals whose fixes depend on each other, as those of GPS collars do:\n"
        "kernel density with the bandwidth matrix that the animal's movement model advises\n"
        "(wxl models), its area corrected for the width of the kernel. Per animal there is a\n"
        "raster, and a shapefile NAME_poly with an outline for every percentage, its field BOUND\n"
        "est, low or high: the estimate and its 95 % limits. WXL_AKDE_SUMMARY.csv lists all areas.\n"
        "With --gpkg all outlines, fixes and areas stand in RANGES.gpkg too; rows of earlier runs\n"
        "stay.\n"
        "Ctrl-C ends the run after the present animal and keeps what is done.\n"
        "\n"
        "Examples:\n"
        "\n"
        "  wxl akde wolves.csv --out akde --html\n"
        "  wxl akde wolves.shp --id-field animal --time-field Date,Time1 --out ranges");
}

int run_akde(const AkdeOptions& options, Console& console) {
    RangeSettings settings = settings_of(options);
    TimedLayer layer = read_timed_layer(options.Input, console);
    akde::spread_over_subfolders(layer.Animals, settings.AnimalsPerSubfolder);
    settings.LayerName = layer.Name;
    settings.Fields = layer.Fields;
    settings.Source = layer.Source;
    settings.SourceOptions = layer.SourceOptions;
    files::DiskServices disk;
    const platform::Services services = disk.Complete({});
    const std::vector<fs::path> taken = taken_outputs(settings, layer, services);
    if (options.DryRun) return print_akde_dry_run(settings, layer.Animals, taken, options.Json, console);
    make_output_folder(options.Out);
    check_outputs(taken);

    const bool metres = layer.Animals.Reference.MetersPerUnit == 1.0;
    Json json{{"summary", ""}, {"package", nullptr}, {"page", nullptr}, {"animals", Json::array()}};
    results_page::RangePage page(services, settings, layer.Animals.Reference);
    const StopSignals signals;
    ConsoleListener listener(console);
    const akde::RangeOutcome outcome =
        akde::RangeRun(settings, services, listener).Run(layer.Animals, [&](const akde::RangeRecord& record) {
            if (options.Html) page.Add(record);
            if (options.Json)
                json["animals"].push_back(json_of(record, settings));
            else
                print_range(record, metres, console);
        });
    json["summary"] = outcome.Summary.string();
    const std::string written = options.Html ? write_page(page, outcome, settings, console) : std::string();
    if (!written.empty()) json["page"] = written;
    if (!outcome.Package.empty()) json["package"] = outcome.Package.string();
    if (options.Json)
        console.Text(json_text(json));
    else
        console.Result("summary: " + outcome.Summary.string());
    if (!options.Json && !outcome.Package.empty()) console.Result("ranges: " + outcome.Package.string());
    if (!options.Json && !written.empty()) console.Result("page: " + written);
    if (outcome.Failed > 0)
        console.Problem(fmt::format("wxl: {} of {} distributions could not be computed", outcome.Failed, outcome.Done));
    if (outcome.Stopped) console.Problem("wxl: stopped; what was done until then is kept");
    const bool failed =
        outcome.Stopped || outcome.PackageFailed || (outcome.Failed > 0 && outcome.Failed == outcome.Done);
    return failed ? exit_code::kFailed : exit_code::kDone;
}

}  // namespace wxl::cli
