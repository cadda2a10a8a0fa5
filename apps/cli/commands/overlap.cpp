#include "apps/cli/commands/overlap.h"

#include "apps/cli/commands/overlap_output.h"
#include "apps/cli/density_rasters.h"
#include "apps/cli/output_folder.h"
#include "apps/cli/percentages.h"
#include "platform/runtime_error.h"
#include "platform/text.h"

#include <algorithm>
#include <CLI/CLI.hpp>
#include <filesystem>
#include <fmt/format.h>
#include <optional>

namespace wxl::cli {

namespace {

namespace fs = std::filesystem;
using comparison::AnimalBandwidth;
using comparison::DensitySettings;
using comparison::TiledDensity;

/// A grid that holds less of a distribution cuts it.
constexpr double kWholeShare = 0.99;
/// More of a distribution than there is: the scaling factor must be another.
constexpr double kMoreThanWhole = 1.01;

/// Up to this number all pairs are told, those that share nothing too.
constexpr std::size_t kAllPairs = 200;

/// The files of the results.
class Outputs {
public:
    /// Refuses what cannot be written, before anything is computed.
    explicit Outputs(const OverlapOptions& options) {
        if (!options.Csv.empty()) m_tables.emplace_back(options.Csv, options.Overwrite);
        if (options.Out.empty()) return;
        make_output_folder(options.Out);
        m_tables.emplace_back((fs::path(options.Out) / "WXL_OVERLAP.csv").string(), options.Overwrite);
        m_picture.emplace((fs::path(options.Out) / "WXL_OVERLAP.svg").string(), options.Overwrite);
    }

    void Refuse(const ReadFiles& read) const {
        for (const TextOutput& table : m_tables) read.Refuse(table.Path());
        if (m_picture) read.Refuse(m_picture->Path());
    }

    void Write(const ComparedRanges& ranges, const std::vector<std::string>& indices) const {
        if (m_tables.empty()) return;
        const std::string text = csv_text(long_table(ranges, indices));
        for (const TextOutput& table : m_tables) table.Write(text);
        if (m_picture && ranges.Animals.size() <= kAllPairs)
            m_picture->Write(pictures::HeatMapSvg(heat_map(ranges, indices.front())));
    }

private:
    std::vector<TextOutput> m_tables;
    std::optional<TextOutput> m_picture;
};

/// Adds an animal with its density; no cells where it has none.
void add(ComparedRanges& ranges, ComparedAnimal animal, std::vector<double> cells, bool normalise) {
    const double cell = ranges.Densities.Grid.CellSize;
    animal.Volume = comparison::total_density(cells) * cell * cell;
    if (!cells.empty() && !(animal.Volume > 0.0) && animal.Status == "ok") animal.Status = "no volume in the grid";
    if (normalise && animal.Volume > 0.0)
        for (double& density : cells) density /= animal.Volume;
    ranges.Densities.Animals.push_back(
        animal.Volume > 0.0 ? TiledDensity(ranges.Densities.Grid, cells, ranges.Densities.Percents) : TiledDensity());
    ranges.Animals.push_back(std::move(animal));
}

std::vector<AnimalBandwidth> bandwidths_of(const AnimalTracks& tracks, const DensitySettings& settings,
                                           Console& console) {
    std::vector<AnimalBandwidth> bandwidths;
    for (const AnimalTrack& track : tracks.Animals) {
        console.Progress(static_cast<double>(bandwidths.size()) / static_cast<double>(tracks.Animals.size()),
                         "bandwidth of " + track.Name());
        bandwidths.push_back(comparison::bandwidth_of(track.Fixes, settings));
        if (!bandwidths.back().Warning.empty())
            console.Problem(fmt::format("{}: {}", track.Name(), bandwidths.back().Warning));
    }
    return bandwidths;
}

/// Densities of the fixes of a layer.
ComparedRanges ranges_of_layer(const OverlapOptions& options, const DensitySettings& settings, const Outputs& outputs,
                               const std::vector<double>& percents, Console& console) {
    const AnimalTracks tracks = read_tracks(options.Tracks, Times::kNone, console);
    outputs.Refuse(tracks.Read);
    const std::vector<AnimalBandwidth> bandwidths = bandwidths_of(tracks, settings, console);
    std::vector<engine::PointSample> samples;
    for (const AnimalTrack& track : tracks.Animals) samples.push_back(track.Fixes);
    ComparedRanges ranges;
    ranges.Densities.Percents = percents;
    ranges.Densities.Grid = comparison::shared_grid(samples, bandwidths, cell_size_of(options.Densities.CellSize));
    for (std::size_t i = 0; i < samples.size(); ++i) {
        const AnimalTrack& track = tracks.Animals[i];
        console.Progress(static_cast<double>(i) / static_cast<double>(samples.size()), "density of " + track.Name());
        comparison::AnimalDensity density =
            comparison::density_of(samples[i], bandwidths[i], settings, ranges.Densities.Grid);
        ComparedAnimal animal{track.Name(),
                              track.IdJson(),
                              static_cast<std::int64_t>(samples[i].size()),
                              bandwidths[i].MapUnits > 0.0 ? std::optional(bandwidths[i].MapUnits) : std::nullopt,
                              0.0,
                              density.Reason.empty() ? "ok" : density.Reason};
        add_times(animal.Times, tracks, track);
        add(ranges, std::move(animal), std::move(density.Cells), options.Normalise);
    }
    return ranges;
}

double scaling_of(const OverlapOptions& options) {
    if (options.Scaling.empty()) return scaling_in(options.Tracks.Points.Input);
    if (!platform::IsNumeric(options.Scaling) || !(platform::NumberFromText(options.Scaling) > 0.0))
        throw WrongCall(fmt::format("--scaling: \"{}\" is not a number above 0", options.Scaling));
    return platform::NumberFromText(options.Scaling);
}

/// Densities of the rasters of an earlier run.
ComparedRanges ranges_of_folder(const OverlapOptions& options, const Outputs& outputs,
                                const std::vector<double>& percents, Console& console) {
    outputs.Refuse(tables_in(options.Tracks.Points.Input));
    const std::vector<DensityRaster> rasters = rasters_in(options.Tracks.Points.Input);
    const bool indirect = options.Tracks.Points.AllowIndirect;
    const double scaling = scaling_of(options);
    ComparedRanges ranges;
    ranges.Densities.Percents = percents;
    ranges.Densities.Grid = common_frame(rasters, indirect).Grid;
    for (const DensityRaster& raster : rasters) {
        console.Progress(static_cast<double>(ranges.Animals.size()) / static_cast<double>(rasters.size()),
                         "density of " + raster.Name);
        const bool failed = !raster.Failure.empty();
        ComparedAnimal animal{raster.Name,      raster.Name, raster.Fixes,
                              raster.Bandwidth, 0.0,         failed ? raster.Failure : "ok"};
        add(ranges, std::move(animal), failed ? std::vector<double>() : densities_of(raster, scaling, indirect),
            options.Normalise);
    }
    return ranges;
}

void report_volumes(const ComparedRanges& ranges, Console& console) {
    for (std::size_t i = 0; i < ranges.Animals.size(); ++i) {
        const ComparedAnimal& animal = ranges.Animals[i];
        if (!ranges.Densities.Animals[i].IsAlive()) {
            console.Problem(fmt::format("{}: not compared: {}", animal.Name, animal.Status));
        } else if (animal.Volume < kWholeShare) {
            console.Problem(fmt::format(
                "{}: the cells hold {:.1f} % of its distribution: the grid, or the reach of the kernels, cuts it",
                animal.Name, 100.0 * animal.Volume));
        } else if (animal.Volume > kMoreThanWhole) {
            console.Problem(
                fmt::format("{}: the raster holds {:.6g} times a whole distribution: give its scaling "
                            "factor by --scaling S",
                            animal.Name, animal.Volume));
        }
    }
}

bool reads_rasters(const OverlapOptions& options) {
    std::error_code unknown;
    return options.Tracks.IdField.empty() && fs::is_directory(options.Tracks.Points.Input, unknown);
}

ComparedRanges read_ranges(const OverlapOptions& options, const Outputs& outputs, const std::vector<double>& percents,
                           Console& console) {
    if (reads_rasters(options)) return ranges_of_folder(options, outputs, percents, console);
    if (options.Tracks.IdField.empty())
        throw WrongCall("name the field of the animals by --id-field FIELD (only a folder of rasters needs none)");
    if (!options.Scaling.empty()) throw WrongCall("--scaling is for a folder of rasters");
    return ranges_of_layer(options, density_settings(options.Densities), outputs, percents, console);
}

void compare(ComparedRanges& ranges, const OverlapOptions& options, Console& console) {
    const bool all = options.All || ranges.Animals.size() <= kAllPairs;
    ranges.Pairs = comparison::overlaps(ranges.Densities, {.Conditional = options.Conditional, .AllPairs = all},
                                        [&](double done) { console.Progress(done, "overlap"); });
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

void add_result_options(CLI::App& command, OverlapOptions& options) {
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
    command.add_option("--out", options.Out, "Write WXL_OVERLAP.csv and a heat map, WXL_OVERLAP.svg, into this folder")
        ->type_name("DIR");
    command.add_flag("--overwrite", options.Overwrite, "Replace files of these names");
    command.add_flag("--json", options.Json, "Print one JSON object");
}

constexpr const char* kFooter =
    "Compares the home ranges of all pairs of animals: of a point layer, or of the output\n"
    "folder of an earlier wxl kde, whose rasters must lie on one grid (--extent full).\n"
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
    add_result_options(command, options);
    command.footer(kFooter);
}

int run_overlap(const OverlapOptions& options, Console& console) {
    const std::vector<double> percents = distinct(percentages_of("--percent", options.Percent));
    const std::vector<std::string> indices = index_names(options.Index);
    const Outputs outputs(options);
    ComparedRanges ranges = read_ranges(options, outputs, percents, console);
    console.EndProgress();
    report_volumes(ranges, console);
    const bool any = std::any_of(ranges.Densities.Animals.begin(), ranges.Densities.Animals.end(),
                                 [](const TiledDensity& density) { return density.IsAlive(); });
    compare(ranges, options, console);
    outputs.Write(ranges, indices);
    if (options.Json) {
        console.Text(json_text(json_of(ranges)));
    } else {
        print_ranges(ranges, indices, console);
    }
    return any ? exit_code::kDone : console.Fail(options.Tracks.Points.Input + ": no animal has a distribution");
}

}  // namespace wxl::cli
