#include "apps/cli/commands/curve.h"

#include "apps/cli/density_options.h"
#include "apps/cli/json_values.h"
#include "apps/cli/option_checks.h"
#include "apps/cli/percentages.h"
#include "apps/cli/text_output.h"
#include "comparison/area_curve.h"
#include "pictures/area_curve_picture.h"
#include "platform/runtime_error.h"
#include "platform/text.h"

#include <algorithm>
#include <CLI/CLI.hpp>
#include <filesystem>
#include <fmt/format.h>
#include <optional>
#include <span>
#include <vector>

namespace wxl::cli {

namespace {

namespace fs = std::filesystem;
using comparison::AreaCurve;
using comparison::CurveOf;
using comparison::CurveOrder;
using comparison::CurveSettings;
using comparison::CurveSize;
using platform::NumberText;

struct AnimalCurve {
    const AnimalTrack* Track;
    AreaCurve Curve;
};

/// "mcp:100" and the like, as it is told.
std::string of_text(const CurveSettings& settings) {
    return (settings.Of == CurveOf::kKernel ? "kernel:" : "mcp:") + NumberText(settings.Percent);
}

void take_of(const std::string& text, CurveSettings& settings) {
    const std::size_t colon = text.find(':');
    const std::string kind = text.substr(0, colon);
    if (kind != "mcp" && kind != "kernel")
        throw WrongCall(fmt::format("--of: \"{}\" is not mcp[:P] or kernel[:P]", text));
    settings.Of = kind == "kernel" ? CurveOf::kKernel : CurveOf::kMinimumConvexPolygon;
    settings.Percent = kind == "kernel" ? 95.0 : 100.0;
    if (colon == std::string::npos) return;
    const std::vector<double> percents = percentages_of("--of", text.substr(colon + 1));
    if (percents.size() > 1) throw WrongCall("--of takes one percentage");
    settings.Percent = percents.front();
}

CurveSettings settings_of(const CurveOptions& options) {
    CurveSettings settings;
    take_of(options.Of, settings);
    settings.Order = options.Order == "random" ? CurveOrder::kRandom : CurveOrder::kTime;
    settings.Replicates = options.Replicates;
    settings.Seed = options.Seed;
    settings.First = options.First;
    settings.Step = options.Step;
    settings.Tolerance = options.Tolerance / 100.0;
    settings.CellSize = cell_size_of(options.CellSize);
    if (options.Bandwidth == "href") return settings;
    if (settings.Of != CurveOf::kKernel) throw WrongCall("--bandwidth is for --of kernel");
    if (!platform::IsNumeric(options.Bandwidth) || !(platform::NumberFromText(options.Bandwidth) > 0.0))
        throw WrongCall(
            fmt::format("--bandwidth: \"{}\" is not href or a number of map units above 0", options.Bandwidth));
    settings.Bandwidth = platform::NumberFromText(options.Bandwidth);
    return settings;
}

/// In the order of time the fixes without one do not count.
std::span<const platform::Point> counted(const AnimalTrack& track, const CurveSettings& settings) {
    const std::span<const platform::Point> all = track.Fixes;
    return settings.Order == CurveOrder::kTime ? all.first(track.Timed) : all;
}

std::vector<AnimalCurve> curves_of(const AnimalTracks& tracks, const CurveSettings& settings, Console& console) {
    std::vector<AnimalCurve> curves;
    const auto all = static_cast<double>(tracks.Animals.size());
    for (const AnimalTrack& track : tracks.Animals) {
        const auto fixes = counted(track, settings);
        if (fixes.size() < track.Fixes.size())
            console.Problem(
                fmt::format("{}: {} without a time left out", track.Name(), track.Fixes.size() - fixes.size()));
        const auto done = static_cast<double>(curves.size());
        curves.push_back({&track, comparison::area_curve(fixes, settings, [&](double share) {
                              console.Progress((done + share) / all, "curve of " + track.Name());
                          })});
    }
    console.EndProgress();
    return curves;
}

Json json_of(const AnimalTracks& tracks, const std::vector<AnimalCurve>& curves, const CurveSettings& settings) {
    const bool random = settings.Order == CurveOrder::kRandom;
    Json json = Json::array();
    for (const AnimalCurve& animal : curves) {
        Json sizes = Json::array();
        for (const CurveSize& size : animal.Curve.Sizes)
            sizes.push_back({{"n", size.N},
                             {"area", json_number(size.Area)},
                             {"low", json_number(size.Low)},
                             {"high", json_number(size.High)}});
        const auto& levelling = animal.Curve.Levelling;
        json.push_back(
            {{"id", animal.Track->IdJson()},
             {"of", of_text(settings)},
             {"order", random ? "random" : "time"},
             {"seed", random ? Json(settings.Seed) : Json(nullptr)},
             {"sizes", sizes},
             {"asymptote", levelling ? Json{{"n", levelling->N}, {"reached", levelling->Reached}} : Json(nullptr)}});
        add_times(json.back(), tracks, *animal.Track);
    }
    return json;
}

std::string text_of(const std::optional<double>& value) {
    return value ? NumberText(*value) : "";
}

TextTable long_table(const std::vector<AnimalCurve>& curves, const CurveSettings& settings) {
    TextTable table{{"id", "of", "order", "seed", "n", "area", "low", "high"}, {}};
    const bool random = settings.Order == CurveOrder::kRandom;
    for (const AnimalCurve& animal : curves)
        for (const CurveSize& size : animal.Curve.Sizes)
            table.Rows.push_back({animal.Track->Name(), of_text(settings), random ? "random" : "time",
                                  random ? std::to_string(settings.Seed) : "", std::to_string(size.N),
                                  text_of(size.Area), text_of(size.Low), text_of(size.High)});
    return table;
}

TextTable summary_of(const std::vector<AnimalCurve>& curves) {
    TextTable table{{"id", "n", "area", "level from", "asymptote"}, {}};
    for (const AnimalCurve& animal : curves) {
        const AreaCurve& curve = animal.Curve;
        table.Rows.push_back({animal.Track->Name(), curve.Sizes.empty() ? "0" : std::to_string(curve.Sizes.back().N),
                              curve.Sizes.empty() ? "" : text_of(curve.Sizes.back().Area),
                              curve.Levelling ? std::to_string(curve.Levelling->N) : "",
                              !curve.Levelling           ? ""
                              : curve.Levelling->Reached ? "reached"
                                                         : "not reached"});
    }
    return table;
}

std::string square_unit(const platform::SpatialReference& reference) {
    return reference.UnitName.empty() ? "" : "square " + reference.UnitName;
}

pictures::AreaCurvePicture picture_of(const AnimalCurve& animal, const CurveSettings& settings,
                                      const platform::SpatialReference& reference) {
    pictures::AreaCurvePicture picture;
    picture.Title = animal.Track->Name();
    picture.Of = fmt::format(
        "{}, {} %, {}", settings.Of == CurveOf::kKernel ? "Kernel range" : "Minimum convex polygon",
        NumberText(settings.Percent),
        settings.Order == CurveOrder::kRandom
            ? fmt::format("median and 95 % of {} random orders (seed {})", settings.Replicates, settings.Seed)
            : "fixes in the order of time");
    picture.Units = square_unit(reference);
    picture.Tolerance = settings.Tolerance;
    for (const CurveSize& size : animal.Curve.Sizes) picture.Points.push_back({size.N, size.Area, size.Low, size.High});
    if (animal.Curve.Levelling) {
        picture.LevelsAt = animal.Curve.Levelling->N;
        picture.Reached = animal.Curve.Levelling->Reached;
    }
    return picture;
}

/// OUT.svg for one animal, OUT-1.svg, OUT-2.svg ... for several; what cannot be written is refused at once.
std::vector<TextOutput> plots_of(const CurveOptions& options, std::size_t animals) {
    std::vector<TextOutput> plots;
    if (options.Plot.empty()) return plots;
    for (std::size_t number = 1; number <= animals; ++number) {
        fs::path file = options.Plot;
        if (animals > 1)
            file.replace_filename(file.stem().string() + "-" + std::to_string(number) + file.extension().string());
        plots.emplace_back(file.string(), options.Overwrite);
    }
    return plots;
}

void add_curve_options(CLI::App& command, CurveOptions& options) {
    command.add_option("--of", options.Of, "mcp[:P] (minimum convex polygon) or kernel[:P] (range by volume)")
        ->transform(any_case({"mcp", "kernel"}))
        ->type_name("RANGE")
        ->capture_default_str();
    command.add_option("--order", options.Order, "time: the first fixes; random: subsets drawn at random")
        ->transform(one_of({"time", "random"}))
        ->type_name("time|random")
        ->capture_default_str();
    command.add_option("--replicates", options.Replicates, "Random orders")
        ->type_name("R")
        ->check(whole_number_between(1, 100000))
        ->capture_default_str();
    command.add_option("--seed", options.Seed, "Seed of the random orders")->type_name("S")->capture_default_str();
    command.add_option("--first", options.First, "Smallest number of fixes")
        ->type_name("N")
        ->check(whole_number_above_zero())
        ->capture_default_str();
    command.add_option("--step", options.Step, "Fixes between two numbers; without it at most 200 numbers")
        ->type_name("N")
        ->check(whole_number_above_zero());
    command.add_option("--tolerance", options.Tolerance, "How near the last area counts as level, in percent of it")
        ->type_name("PERCENT")
        ->check(number_between(0.0, 100.0))
        ->capture_default_str();
    command.add_option("--bandwidth", options.Bandwidth, "Of the kernel: href of the fixes at hand, or map units")
        ->transform(any_case({"href"}))
        ->type_name("href|H")
        ->capture_default_str();
    command.add_option("--cell-size", options.CellSize, "Cell size of the kernel's grid in map units")->type_name("C");
    command.add_option("--csv", options.Csv, "Write all areas as CSV")->type_name("OUT.csv");
    command.add_option("--plot", options.Plot, "Draw the curves as SVG: OUT.svg, or OUT-1.svg ... for several animals")
        ->type_name("OUT.svg");
    command.add_flag("--overwrite", options.Overwrite, "Replace files of these names");
    command.add_flag("--json", options.Json, "Print one JSON array");
}

constexpr const char* kFooter =
    "How the area of a home range grows with the number of fixes (Odum and Kuenzler 1955):\n"
    "of the first n fixes in the order of time, or of random subsets (median, 2.5 and\n"
    "97.5 % over the replicates; the same seed gives the same subsets everywhere).\n"
    "\n"
    "The curve is level from the first n at which this and every later area lie within\n"
    "the tolerance of the last. The asymptote counts as reached when a tenth of the fixes,\n"
    "and 5 at least, follow. Successive fixes of an animal are not independent: counting\n"
    "them says little of the time that a range needs. A kernel's area shrinks with HREF\n"
    "as fixes become more; its curve need not rise.\n"
    "\n"
    "Example:\n"
    "\n"
    "  wxl curve wolves.shp --id-field animal --order random --plot curve.svg";

}  // namespace

void register_curve(CLI::App& command, CurveOptions& options) {
    add_fix_options(command, options.Tracks);
    add_curve_options(command, options);
    command.footer(kFooter);
}

int run_curve(const CurveOptions& options, Console& console) {
    const CurveSettings settings = settings_of(options);
    if (!options.Plot.empty() && !platform::EqualNoCase(fs::path(options.Plot).extension().string(), ".svg"))
        throw WrongCall(fmt::format("--plot: the picture is an SVG, and \"{}\" does not end in .svg", options.Plot));
    std::optional<TextOutput> csv;
    if (!options.Csv.empty()) csv.emplace(options.Csv, options.Overwrite);
    const bool random = settings.Order == CurveOrder::kRandom;
    const AnimalTracks tracks = read_tracks(options.Tracks, random ? Times::kWanted : Times::kRequired, console);
    const std::vector<TextOutput> plots = plots_of(options, tracks.Animals.size());
    if (csv) tracks.Read.Refuse(csv->Path());
    for (const TextOutput& plot : plots) tracks.Read.Refuse(plot.Path());
    const std::vector<AnimalCurve> curves = curves_of(tracks, settings, console);
    console.Note(
        "wxl: successive fixes are seldom independent: a curve that is level by their number may still grow "
        "with time");
    if (csv) csv->Write(csv_text(long_table(curves, settings)));
    for (std::size_t i = 0; i < plots.size(); ++i)
        plots[i].Write(pictures::AreaCurveSvg(picture_of(curves[i], settings, tracks.Reference)));
    if (options.Json) {
        console.Text(json_text(json_of(tracks, curves, settings)));
    } else {
        print_table(summary_of(curves), console);
        for (const TextOutput& plot : plots) console.Result("plot: " + plot.Path());
    }
    return exit_code::kDone;
}

}  // namespace wxl::cli
