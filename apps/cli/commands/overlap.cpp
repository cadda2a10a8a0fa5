#include "apps/cli/commands/overlap.h"

#include "adapters/ogr/disk_services.h"
#include "apps/cli/commands/overlap_output.h"
#include "apps/cli/density_rasters.h"
#include "apps/cli/output_folder.h"
#include "apps/cli/percentages.h"
#include "comparison/compare_fixes.h"
#include "platform/runtime_error.h"
#include "platform/text.h"
#include "results_page/overlap_files.h"

#include <algorithm>
#include <CLI/CLI.hpp>
#include <filesystem>
#include <fmt/format.h>
#include <optional>

namespace wxl::cli {

namespace {

namespace fs = std::filesystem;
using comparison::ComparedAnimal;
using comparison::ComparedRanges;
using comparison::DensitySettings;
using comparison::IndexKind;
using results_page::OverlapFiles;

/// The files of the results.
class Outputs {
public:
    /// Refuses what cannot be written, before anything is computed.
    explicit Outputs(const OverlapOptions& options) : m_services(m_disk.Complete({})) {
        if (!options.Csv.empty()) m_table.emplace(options.Csv, options.Overwrite);
        if (options.Out.empty()) return;
        make_output_folder(options.Out);
        m_folder.emplace(m_services, options.Out);
        if (!options.Overwrite) m_folder->RefuseStanding();
        for (const fs::path& place : m_folder->Places()) const TextOutput checked(place.string(), true);
    }

    void Refuse(const ReadFiles& read) const {
        if (m_table) read.Refuse(m_table->Path());
        if (m_folder) read.Refuse(m_folder->Places());
    }

    void Write(const results_page::OverlapRun& run, Console& console) {
        if (m_table) m_table->Write(csv_text(comparison::long_table(*run.Ranges, run.Indices)));
        if (!m_folder) return;
        m_written = m_folder->Write(run, [&](double done) { console.Progress(done, "common areas"); });
        console.EndProgress();
        for (const std::string& warning : m_written.Warnings) console.Problem(warning);
    }

    platform::DateTime Now() const { return m_services.Clock->Now(); }

    /// Where page and package stand; nothing where no folder was asked for.
    void Tell(Console& console) const {
        if (!m_written.Page.empty()) console.Result("page: " + m_written.Page.string());
        if (!m_written.Package.empty()) console.Result("ranges: " + m_written.Package.string());
    }

private:
    files::DiskServices m_disk;
    platform::Services m_services;
    std::optional<TextOutput> m_table;
    std::optional<OverlapFiles> m_folder;
    OverlapFiles::Written m_written;
};

/// Adds an animal with what JSON tells of it.
void add(OverlapResult& result, ComparedAnimal animal, Json id, Json times, std::vector<double> cells, bool normalise) {
    comparison::add_animal(result.Ranges, std::move(animal),
                           comparison::whole_of(result.Ranges.Densities.Grid, std::move(cells)), normalise);
    result.Ids.push_back(std::move(id));
    result.Times.push_back(std::move(times));
}

/// Densities of the fixes of a layer.
OverlapResult ranges_of_layer(const OverlapOptions& options, const DensitySettings& settings, const Outputs& outputs,
                              const std::vector<double>& percents, Console& console) {
    const AnimalTracks tracks = read_tracks(options.Tracks, Times::kNone, console);
    outputs.Refuse(tracks.Read);
    std::vector<comparison::NamedFixes> animals;
    OverlapResult result;
    result.Reference = tracks.Reference;
    for (const AnimalTrack& track : tracks.Animals) {
        animals.push_back({track.Name(), track.Fixes});
        result.Ids.push_back(track.IdJson());
        result.Times.push_back(Json::object());
        add_times(result.Times.back(), tracks, track);
    }
    result.Ranges = comparison::ranges_of_fixes(
        animals,
        {.Densities = settings,
         .CellSize = cell_size_of(options.Densities.CellSize),
         .Percents = percents,
         .Normalise = options.Normalise},
        {.Progress = [&](double share, std::string_view what) { console.Progress(share, std::string(what)); },
         .Problem = [&](const std::string& line) { console.Problem(line); }});
    return result;
}

}  // namespace

double overlap_scaling(const OverlapOptions& options) {
    if (options.Scaling.empty()) return scaling_in(options.Tracks.Points.Input);
    if (!platform::IsNumeric(options.Scaling) || !(platform::NumberFromText(options.Scaling) > 0.0))
        throw WrongCall(fmt::format("--scaling: \"{}\" is not a number above 0", options.Scaling));
    return platform::NumberFromText(options.Scaling);
}

OverlapResult ranges_of_folder(const OverlapOptions& options, const std::vector<double>& percents, Console& console) {
    const std::vector<DensityRaster> rasters = rasters_in(options.Tracks.Points.Input);
    const bool indirect = options.Tracks.Points.AllowIndirect;
    const double scaling = overlap_scaling(options);
    const RasterFrame frame = common_frame(rasters, indirect);
    OverlapResult result;
    result.Reference = frame.Reference;
    result.Ranges.Densities.Percents = percents;
    result.Ranges.Densities.Grid = frame.Grid;
    for (const DensityRaster& raster : rasters) {
        console.Progress(static_cast<double>(result.Ids.size()) / static_cast<double>(rasters.size()),
                         "density of " + raster.Name);
        const bool failed = !raster.Failure.empty();
        add(result,
            {.Name = raster.Name,
             .Fixes = raster.Fixes,
             .Bandwidth = raster.Bandwidth,
             .Status = failed ? raster.Failure : "ok"},
            raster.Name, Json::object(), failed ? std::vector<double>() : densities_of(raster, scaling, indirect),
            options.Normalise);
    }
    return result;
}

namespace {

bool reads_rasters(const OverlapOptions& options) {
    std::error_code unknown;
    return options.Tracks.IdField.empty() && fs::is_directory(options.Tracks.Points.Input, unknown);
}

OverlapResult read_ranges(const OverlapOptions& options, const Outputs& outputs, const std::vector<double>& percents,
                          Console& console) {
    if (reads_rasters(options)) {
        outputs.Refuse(tables_in(options.Tracks.Points.Input));
        return ranges_of_folder(options, percents, console);
    }
    if (options.Tracks.IdField.empty())
        throw WrongCall("name the field of the animals by --id-field FIELD (only a folder of rasters needs none)");
    if (!options.Scaling.empty()) throw WrongCall("--scaling is for a folder of rasters");
    return ranges_of_layer(options, density_settings(options.Densities), outputs, percents, console);
}

void compare(ComparedRanges& ranges, const OverlapOptions& options, const PairMaker& pairs, Console& console) {
    const bool all = options.All || ranges.Animals.size() <= comparison::kAllPairs;
    ranges.Pairs = pairs(ranges, {.Conditional = options.Conditional, .AllPairs = all});
    console.EndProgress();
    if (!all) console.Note("wxl: pairs that share nothing are left out; --all tells them too");
}

/// Percentages that come twice would give rows that come twice.
std::vector<double> distinct(const std::vector<double>& percents) {
    std::vector<double> kept;
    for (const double percent : percents)
        if (std::find(kept.begin(), kept.end(), percent) == kept.end()) kept.push_back(percent);
    return kept;
}

/// The words of the call, without those that have their usual values.
std::vector<std::string> words_of(const OverlapOptions& options) {
    const OverlapOptions usual;
    std::vector<std::string> words = {"wxl", "overlap", options.Tracks.Points.Input};
    const auto add = [&](const char* option, const std::string& value, const std::string& otherwise) {
        if (value == otherwise) return;
        words.emplace_back(option);
        words.push_back(value);
    };
    const auto flag = [&](const char* option, bool given) {
        if (given) words.emplace_back(option);
    };
    const AnimalFixOptions& fixes = options.Tracks;
    add("--id-field", fixes.IdField, "");
    add("--where", fixes.Where, "");
    add("--time-field", fixes.Time, "");
    add("--every", fixes.Every, "");
    add("--every-tolerance", fixes.EveryTolerance, "");
    add("--split-by", fixes.SplitBy, "");
    add("--utc-offset", platform::NumberText(fixes.UtcOffset), "0");
    add("--hemisphere", fixes.Hemisphere, usual.Tracks.Hemisphere);
    add("--bandwidth", options.Densities.Bandwidth, usual.Densities.Bandwidth);
    flag("--adaptive", options.Densities.Adaptive);
    flag("--rescale", options.Densities.Rescale);
    add("--cell-size", options.Densities.CellSize, "");
    add("--percent", options.Percent, usual.Percent);
    flag("--conditional", options.Conditional);
    add("--index", options.Index, usual.Index);
    flag("--normalise", options.Normalise);
    add("--scaling", options.Scaling, "");
    flag("--all", options.All);
    flag("--degrees", fixes.Points.Degrees);
    flag("--allow-indirect", fixes.Points.AllowIndirect);
    add("--csv", options.Csv, "");
    add("--out", options.Out, "");
    return words;
}

/// What the page tells of the call.
results_page::OverlapRun run_of(const OverlapOptions& options, const std::vector<const IndexKind*>& indices,
                                const platform::DateTime& now) {
    results_page::OverlapRun run;
    run.Indices = indices;
    run.Title = fs::path(options.Tracks.Points.Input).lexically_normal().stem().string();
    if (run.Title.empty()) run.Title = options.Tracks.Points.Input;
    run.Words = words_of(options);
    run.Start = now;
    const bool rasters = reads_rasters(options);
    run.Settings = {{"Input", options.Tracks.Points.Input},
                    {"Animal ID field", options.Tracks.IdField},
                    {"Fixes", options.Tracks.Where.empty() ? "" : "where " + options.Tracks.Where},
                    {"One fix every", options.Tracks.Every},
                    {"Parts of animals by", options.Tracks.SplitBy},
                    {"Bandwidth", rasters ? "that of the rasters" : options.Densities.Bandwidth},
                    {"Kernel", rasters                      ? ""
                               : options.Densities.Adaptive ? "bivariate normal, adaptive"
                                                            : "bivariate normal, fixed"},
                    {"Unit variance", options.Densities.Rescale ? "yes" : ""},
                    {"Percentages", options.Percent},
                    {"Conditional indices", options.Conditional ? "yes" : "no"},
                    {"Divided by their volumes", options.Normalise ? "yes" : "no"}};
    return run;
}

}  // namespace

void add_overlap_result_options(CLI::App& command, OverlapOptions& options) {
    command.add_option("--percent", options.Percent, "Percentages of the volume that make the ranges")
        ->type_name("P[,P...]")
        ->capture_default_str();
    command.add_flag("--conditional", options.Conditional,
                     "Also the indices of the densities within their own ranges alone");
    command.add_option("--index", options.Index, "Indices for screen and CSV: ba, vi, udoi, phr, hr, hd")
        ->type_name("NAME[,NAME...]")
        ->capture_default_str();
    command.add_flag("--normalise", options.Normalise, "Divide each distribution by its volume first");
    command.add_option("--scaling", options.Scaling, "Factor of the densities of a folder of rasters")->type_name("S");
    command.add_flag("--all", options.All, "Tell every pair also of more than 200 animals");
    command.add_option("--csv", options.Csv, "Write every pair and index as CSV")->type_name("OUT.csv");
    command
        .add_option(
            "--out", options.Out,
            "Write into this folder: a page with maps, WXL_OVERLAP_ANALYSIS.html, the common areas as layer overlap "
            "of RANGES.gpkg, the table WXL_OVERLAP.csv, and a heat map, WXL_OVERLAP.svg")
        ->type_name("DIR");
    command.add_flag("--overwrite", options.Overwrite, "Replace files of these names");
    command.add_flag("--json", options.Json, "Print one JSON object");
}

namespace {

constexpr const char* kFooter =
    "Compares the home ranges of all pairs of animals: of a point layer, or of the output\n"
    "folder of an earlier wxl kde or wxl akde, whose rasters must lie on one grid (--extent full).\n"
    "In row i and column j stand: ba, Bhattacharyya's affinity, 0 to 1 (Bhattacharyya\n"
    "1943); vi, volume of intersection, 0 to 1 (Seidel 1992, Millspaugh et al. 2004);\n"
    "udoi, utilization distribution overlap index, above 1 where peaks are shared\n"
    "(Fieberg and Kochanny 2005); phr, probability of meeting j within the range of i,\n"
    "and hr, share of the range of i that lies in the range of j (Kernohan et al. 2001);\n"
    "hd, Hellinger's distance, 0 to 1.414, 0 for equal distributions.\n"
    "\n"
    "A range is the cells of highest density that hold P % of the volume. --conditional\n"
    "takes both densities as 0 outside their own ranges. Values are told to six digits.\n"
    "An animal without a distribution is told and has empty cells.\n"
    "\n"
    "Examples:\n"
    "\n"
    "  wxl overlap wolves.shp --id-field animal --percent 95,50 --csv overlap.csv\n"
    "  wxl overlap wolves.shp --id-field animal --split-by year-season --index ba\n"
    "  wxl kde wolves.shp --id-field animal --out one --cell-size 500 --extent full\n"
    "  wxl overlap one --json";

}  // namespace

void register_overlap(CLI::App& command, OverlapOptions& options) {
    add_fix_options(command, options.Tracks, false);
    add_density_options(command, options.Densities);
    add_overlap_result_options(command, options);
    command.footer(kFooter);
}

std::vector<std::string> overlap_option_words(const OverlapOptions& options) {
    const std::vector<std::string> words = words_of(options);
    return {words.begin() + 3, words.end()};
}

void check_overlap_outputs(const OverlapOptions& options) {
    const Outputs checked(options);
}

std::vector<double> overlap_percents(const OverlapOptions& options) {
    return distinct(percentages_of("--percent", options.Percent));
}

int run_overlap(const OverlapOptions& options, Console& console) {
    const auto pairs = [&](const ComparedRanges& ranges, const comparison::OverlapSettings& settings) {
        return comparison::overlaps(ranges.Densities, settings,
                                    [&](double done) { console.Progress(done, "overlap"); });
    };
    return tell_overlap(options, pairs, console);
}

int tell_overlap(const OverlapOptions& options, const PairMaker& pairs, Console& console) {
    const std::vector<double> percents = overlap_percents(options);
    const std::vector<const IndexKind*> indices = indices_of(options.Index);
    Outputs outputs(options);
    results_page::OverlapRun run = run_of(options, indices, outputs.Now());
    OverlapResult result = read_ranges(options, outputs, percents, console);
    ComparedRanges& ranges = result.Ranges;
    console.EndProgress();
    run.Warnings = comparison::volume_warnings(ranges);
    for (const std::string& warning : run.Warnings) console.Problem(warning);
    const bool any = std::any_of(ranges.Densities.Animals.begin(), ranges.Densities.Animals.end(),
                                 [](const comparison::TiledDensity& density) { return density.IsAlive(); });
    compare(ranges, options, pairs, console);
    run.Ranges = &ranges;
    run.Units.Reference = result.Reference;
    outputs.Write(run, console);
    if (options.Json) {
        console.Text(json_text(json_of(result)));
    } else {
        print_ranges(ranges, indices, console);
        outputs.Tell(console);
    }
    return any ? exit_code::kDone : console.Fail(options.Tracks.Points.Input + ": no animal has a distribution");
}

}  // namespace wxl::cli
