#include "apps/cli/commands/mcp.h"

#include "apps/cli/json_values.h"
#include "apps/cli/percentages.h"
#include "apps/cli/polygon_layer.h"
#include "apps/cli/text_output.h"
#include "platform/text.h"

#include <algorithm>
#include <CLI/CLI.hpp>
#include <fmt/format.h>
#include <optional>
#include <vector>

namespace wxl::cli {

namespace {

using comparison::MinimumConvexPolygon;
using platform::NumberText;

Json json_of(const AnimalTracks& tracks, const std::vector<AnimalPolygons>& animals) {
    Json json = Json::array();
    for (std::size_t i = 0; i < animals.size(); ++i) {
        json.push_back(
            {{"id", tracks.Animals[i].IdJson()}, {"n", animals[i].Fixes}, {"mcp", cli::json_of(animals[i].Polygons)}});
        add_times(json.back(), tracks, tracks.Animals[i]);
    }
    return json;
}

TextTable table_of(const std::vector<AnimalPolygons>& animals) {
    TextTable table{{"id", "percent", "area", "n", "status"}, {}};
    for (const AnimalPolygons& animal : animals)
        for (const MinimumConvexPolygon& polygon : animal.Polygons) {
            const std::optional<double> area = area_of(polygon);
            table.Rows.push_back({animal.Name, NumberText(polygon.Percent), area ? NumberText(*area) : "",
                                  std::to_string(polygon.Kept), std::string(comparison::status_name(polygon.Status))});
        }
    return table;
}

}  // namespace

void register_mcp(CLI::App& command, McpOptions& options) {
    add_fix_options(command, options.Tracks);
    command.add_option("--percent", options.Percent, "Percentages of the fixes, above 0 and up to 100")
        ->type_name("P[,P...]")
        ->capture_default_str();
    command.add_option("--csv", options.Csv, "Write the table as CSV")->type_name("OUT.csv");
    command.add_option("--out", options.Out, "Write the polygons as a shapefile")->type_name("OUT.shp");
    command.add_flag("--overwrite", options.Overwrite, "Replace files of these names");
    command.add_flag("--json", options.Json, "Print one JSON array");
    command.footer(
        "The smallest convex polygon around the fixes of each animal (Mohr 1947), in square\n"
        "map units. Below 100 % the fixes farthest from their centre (the means of x and y)\n"
        "are left out: kept are those up to the quantile (type 7) of the distances. n is the\n"
        "number that is kept; repeated fixes count as often as they come.\n"
        "\n"
        "An animal whose fixes lie at fewer than three places or on a line has area 0 and no\n"
        "polygon (status \"no area\"). A polygon grows with the number of fixes: see wxl curve.\n"
        "\n"
        "Example:\n"
        "\n"
        "  wxl mcp wolves.shp --id-field animal --percent 100,95,50 --out mcp.shp");
}

int run_mcp(const McpOptions& options, Console& console) {
    const std::vector<double> percents = percentages_of("--percent", options.Percent);
    std::optional<TextOutput> csv;
    std::optional<ShapefileOutput> shapes;
    if (!options.Csv.empty()) csv.emplace(options.Csv, options.Overwrite);
    if (!options.Out.empty()) shapes.emplace(options.Out, options.Overwrite);
    const AnimalTracks tracks = read_tracks(options.Tracks, Times::kNone, console);
    if (csv) tracks.Read.Refuse(csv->Path());
    if (shapes) shapes->Refuse(tracks.Read);
    std::vector<AnimalPolygons> animals;
    for (const AnimalTrack& track : tracks.Animals) animals.push_back(polygons_of(track.Name(), track.Fixes, percents));
    for (const AnimalPolygons& animal : animals) report_few_fixes(animal.Name, animal.Fixes, console);
    if (csv) csv->Write(csv_text(table_of(animals)));
    if (shapes) write_polygons(*shapes, tracks.Reference, animals);
    if (options.Json) {
        console.Text(json_text(json_of(tracks, animals)));
    } else {
        print_table(table_of(animals), console);
    }
    return exit_code::kDone;
}

}  // namespace wxl::cli
