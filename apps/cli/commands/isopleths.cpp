#include "apps/cli/commands/isopleths.h"

#include "adapters/raster/raster_dataset.h"
#include "apps/cli/input_layer.h"
#include "apps/cli/json_values.h"
#include "apps/cli/output_folder.h"
#include "apps/cli/percentages.h"
#include "apps/cli/read_files.h"
#include "apps/cli/shapefile_output.h"
#include "apps/cli/text_output.h"
#include "apps/cli/tool_session.h"
#include "isopleths/clsHISO.h"
#include "platform/file_system.h"
#include "platform/runtime_error.h"
#include "platform/text.h"

#include <algorithm>
#include <CLI/CLI.hpp>
#include <filesystem>
#include <fmt/format.h>
#include <optional>
#include <vector>

namespace wxl::cli {

namespace {

namespace fs = std::filesystem;
namespace isopleth_status = isopleths::isopleth_status;
using platform::NumberText;

/// The isopleth of one percentage, in raster units and square map units.
struct LevelResult {
    double Percent = 0.0;
    std::optional<double> Level;
    std::optional<double> Area;
};

struct Result {
    std::vector<LevelResult> Levels;  ///< in the order in which the percentages were given
    double MaxEdgeValue = 0.0;
    platform::RasterStatistics Statistics;
    std::int32_t Status = 0;
    std::vector<std::string> Files;
};

void check_name(const std::string& name) {
    try {
        platform::CheckDatasetName(name);
    } catch (const platform::RuntimeError& refused) {
        throw WrongCall("--name: " + refused.Description);
    }
}

std::vector<double> ascending(std::vector<double> percentages) {
    std::sort(percentages.begin(), percentages.end());
    percentages.erase(std::unique(percentages.begin(), percentages.end()), percentages.end());
    return percentages;
}

/// What to make, by the ends of the shapefiles' names.
std::vector<std::string> wanted_endings(const IsoplethOptions& options) {
    std::vector<std::string> endings;
    if (options.Lines) endings.emplace_back("_line");
    if (options.Polygons || (!options.Lines && !options.Donuts)) endings.emplace_back("_poly");
    if (options.Donuts) endings.emplace_back("_donut");
    return endings;
}

bool contains(const std::vector<std::string>& texts, const char* text) {
    return std::find(texts.begin(), texts.end(), text) != texts.end();
}

Result result_of(const isopleths::clsHISO& made, const std::vector<double>& given, const std::vector<double>& run) {
    Result result;
    result.MaxEdgeValue = made.GetMaxEdgeValue();
    result.Statistics = made.GetStatistics();
    result.Status = made.GetErrorStatus();
    const std::vector<double>& levels = made.GetLevels();
    const std::vector<std::optional<double>>& areas = made.GetAreas();
    for (const double percent : given) {
        LevelResult one{percent, std::nullopt, std::nullopt};
        const auto place = static_cast<std::size_t>(std::lower_bound(run.begin(), run.end(), percent) - run.begin());
        if (place < levels.size()) one.Level = levels[place];
        if (place < areas.size()) one.Area = areas[place];
        result.Levels.push_back(one);
    }
    return result;
}

/// Makes the shapefiles, replacing old ones only by whole new ones.
Result make_isopleths(const IsoplethOptions& options, const std::vector<double>& given, Console& console) {
    const auto raster = opened(options.AllowIndirect,
                               [&](files::Sources sources) { return files::OpenRaster(options.Raster, sources); });
    const std::vector<std::string> endings = wanted_endings(options);
    std::vector<std::string> names;
    for (const std::string& ending : endings) names.push_back(options.Name + ending);
    ReadFiles read;
    read.Add(opened(options.AllowIndirect,
                    [&](files::Sources sources) { return files::RasterFiles(options.Raster, sources); }));
    for (const std::string& name : names) read.RefuseShapefile(options.Out, name);
    make_output_folder(options.Out);
    const ShapefileStage stage(options.Out, names, options.Overwrite);

    ToolSession session(console, {});
    isopleths::clsHISO isopleths(session.Services(), session.Geodata());
    const std::vector<double> run = ascending(given);
    isopleths.SetIsoplethBoundaries(run);
    isopleths.SetRasterDataset(raster);
    isopleths.SetOutputFolder(stage.Folder());
    isopleths.SetOutputName(options.Name);
    isopleths.SetCalculateLines(contains(endings, "_line"));
    isopleths.SetCalculatePolys(contains(endings, "_poly"));
    isopleths.SetCalculateDonuts(contains(endings, "_donut"));
    isopleths.CreateIsopleths();

    Result result = result_of(isopleths, given, run);
    if (session.Messages().Faults() > 0 && result.Status == 0) result.Status = isopleth_status::kFailed;
    if (result.Status != 0) return result;
    stage.Publish();
    for (const std::string& name : names) result.Files.push_back((fs::path(options.Out) / (name + ".shp")).string());
    return result;
}

Json json_of(const Result& result) {
    Json levels = Json::array();
    for (const LevelResult& level : result.Levels)
        levels.push_back(
            {{"percent", level.Percent}, {"level", json_number(level.Level)}, {"area", json_number(level.Area)}});
    return {{"levels", levels},
            {"max_edge_value", json_number(result.MaxEdgeValue)},
            {"min", json_number(result.Statistics.Minimum)},
            {"max", json_number(result.Statistics.Maximum)},
            {"status", result.Status},
            {"files", result.Files}};
}

std::string text_of(const std::optional<double>& value) {
    return value ? NumberText(*value) : "";
}

void print_text(const Result& result, Console& console) {
    TextTable table{{"percent", "level", "area"}, {}};
    for (const LevelResult& level : result.Levels)
        table.Rows.push_back({NumberText(level.Percent), text_of(level.Level), text_of(level.Area)});
    print_table(table, console);
    for (const std::string& file : result.Files) console.Result(file);
}

void warn_of_edge(const Result& result, Console& console) {
    std::string cut;
    for (const LevelResult& level : result.Levels)
        if (level.Level && *level.Level <= result.MaxEdgeValue)
            cut += (cut.empty() ? "" : ", ") + NumberText(level.Percent) + " %";
    if (!cut.empty())
        console.Problem(fmt::format(
            "cut by the raster's edge: {} (cells there reach {:.6g}); a larger raster would show them whole", cut,
            result.MaxEdgeValue));
}

void report_empty_levels(const Result& result, Console& console) {
    std::string empty;
    for (const LevelResult& level : result.Levels)
        if (!level.Area) empty += (empty.empty() ? "" : ", ") + NumberText(level.Percent) + " %";
    if (!empty.empty())
        console.Problem(
            fmt::format("no isopleth at {}: the percentage is too small, no area lies above its level", empty));
}

std::string failure_of(const Result& result) {
    if (result.Status == isopleth_status::kNoContours)
        return fmt::format("no cell of the raster lies beyond any of these levels (status {})", result.Status);
    if (result.Statistics.Minimum == result.Statistics.Maximum)
        return fmt::format("the isopleths could not be made: all cells hold {} (status {})",
                           NumberText(result.Statistics.Minimum), result.Status);
    return fmt::format("the isopleths could not be made (status {})", result.Status);
}

}  // namespace

void register_isopleths(CLI::App& command, IsoplethOptions& options) {
    command
        .add_option("RASTER", options.Raster, "Density raster: a GRID folder, a GeoTIFF, or any other that GDAL reads")
        ->required();
    add_indirect_option(command, options.AllowIndirect);
    command.add_option("--levels", options.Levels, "Percentages of the volume, above 0 and up to 100")
        ->type_name("P[,P...]")
        ->required();
    command.add_option("--out", options.Out, "Output folder; made when it is not there")->type_name("DIR")->required();
    command.add_option("--name", options.Name, "Start of the shapefiles' names: NAME_line, NAME_poly, NAME_donut")
        ->type_name("NAME")
        ->required();
    command.add_flag("--lines", options.Lines, "Isopleths as lines");
    command.add_flag("--polygons", options.Polygons, "Isopleths as polygons; also when none of the three is asked for");
    command.add_flag("--donuts", options.Donuts, "Rings between consecutive isopleths");
    command.add_flag("--json", options.Json, "Print one JSON object");
    command.add_flag("--overwrite", options.Overwrite, "Replace shapefiles of these names");
    command.footer(
        "Finds the levels that enclose the given percentages of a raster's volume and writes\n"
        "the isopleths at these levels as shapefiles. Percentages may be given in any order:\n"
        "donuts are the rings between each and the next smaller one.\n"
        "\n"
        "Printed are the level of each percentage, in units of the raster, and the area of\n"
        "its polygon in square map units (N/A, and null in JSON, where there is none).\n"
        "Isopleths that the raster's edge cuts are told on standard error.\n"
        "\n"
        "Example:\n"
        "\n"
        "  wxl isopleths kde/1 --levels 95,90,50 --out kde --name more --polygons --donuts");
}

int run_isopleths(const IsoplethOptions& options, Console& console) {
    const std::vector<double> percentages = percentages_of("--levels", options.Levels);
    check_name(options.Name);
    if (*std::max_element(percentages.begin(), percentages.end()) <= 1.0)
        console.Note("the levels are percentages: 95 means 95 %, and 0.95 less than one percent");
    const Result result = make_isopleths(options, percentages, console);
    if (options.Json) console.Text(json_text(json_of(result)));
    if (result.Status != 0) return console.Fail(options.Raster + ": " + failure_of(result));
    if (!options.Json) print_text(result, console);
    warn_of_edge(result, console);
    report_empty_levels(result, console);
    return exit_code::kDone;
}

}  // namespace wxl::cli
