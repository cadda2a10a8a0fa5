#include "results_page/animal_map.h"

#include "pictures/axis.h"
#include "platform/text.h"
#include "results_page/animal_table.h"
#include "results_page/density_picture.h"
#include "results_page/fix_dots.h"
#include "results_page/raster_window.h"

#include <algorithm>
#include <iterator>
#include <vector>

namespace wxl::results_page {
namespace {

using analysis::AnimalRecord;

constexpr double kTolerance = 0.35;  ///< picture units

std::optional<double> level_at(const AnimalRecord& record, double percent) {
    for (const analysis::IsoplethRecord& isopleth : record.Isopleths)
        if (isopleth.Percent == percent) return isopleth.Level;
    return std::nullopt;
}

std::vector<platform::ContourLine> lines_at(const std::vector<platform::ContourLine>& lines, double level) {
    std::vector<platform::ContourLine> found;
    std::copy_if(lines.begin(), lines.end(), std::back_inserter(found),
                 [level](const platform::ContourLine& line) { return line.Value == level; });
    return found;
}

std::vector<MapLine> map_lines(const PageRun& run, const AnimalRecord& record, platform::IRasterDataset& raster,
                               const MapScale& scale, const PictureSize& size, const platform::Services& services) {
    std::vector<double> levels;
    for (const analysis::IsoplethRecord& isopleth : record.Isopleths) levels.push_back(isopleth.Level);
    if (levels.empty()) return {};
    const std::vector<platform::ContourLine> contours = services.Contours->Contours(raster, levels);
    const std::vector<double> percentages = falling_percentages(run);
    std::vector<MapLine> lines;
    for (std::size_t i = 0; i < percentages.size(); ++i)
        if (const auto level = level_at(record, percentages[i]))
            lines.push_back(
                {svg_path(lines_at(contours, *level), scale, kTolerance, size.LinePoints / percentages.size()),
                 look_of(i)});
    return lines;
}

/// Outlines of the minimum convex polygons.
std::vector<MapLine> polygon_lines(const AnimalRecord& record, const MapScale& scale, const PictureSize& size) {
    std::vector<MapLine> lines;
    for (const comparison::MinimumConvexPolygon& polygon : record.ConvexPolygons) {
        if (polygon.Status != comparison::PolygonStatus::kGood) continue;
        platform::ContourLine outline{polygon.Percent, polygon.Corners};
        outline.Vertices.push_back(outline.Vertices.front());
        lines.push_back({svg_path({&outline, 1}, scale, kTolerance, size.LinePoints), kPolygonLook});
    }
    return lines;
}

std::string description(const PageRun& run, const AnimalRecord& record) {
    std::string text = "Density of use, dark where it is highest.";
    for (const double percent : falling_percentages(run))
        if (const std::string area = area_text(run, area_at(record, percent)); !area.empty())
            text +=
                " The " + platform::NumberText(percent) + " % isopleth encloses " + area + " " + area_unit(run) + ".";
    return text;
}

/// The map with a box that hides its dots, without a script.
std::string with_switch(const std::string& id, const std::string& map, const std::string& text) {
    return "<input type=\"checkbox\" class=\"shows-dots\" id=\"" + id + "-dots\" checked>" + map + "<label for=\"" +
           id + "-dots\">" + text + "</label>";
}

}  // namespace

std::string animal_map(const PageRun& run, std::size_t number, const PictureSize& size,
                       const platform::Services& services) {
    const AnimalRecord& record = run.Records[number];
    const std::filesystem::path folder = record.Subfolder.empty() ? run.Folder : run.Folder / record.Subfolder;
    const auto raster = services.Rasters->Open(folder, record.RasterName);
    if (!raster) return {};
    double maximum = 0.0;
    const auto part = windowed(raster, occupied_window(*raster->Band(), maximum));
    const DensityPicture density = density_picture(*part->Band(), maximum, size.Side);
    const MapLayout layout = layout_of(part->Band()->Geometry().Bounds());
    MapPicture map;
    map.Id = "map-" + std::to_string(number + 1);
    map.Title = "Map of " + record_name(run, record);
    map.Description = description(run, record);
    map.Png = services.Pictures->Png(density.Picture);
    map.Bounds = density.Bounds;
    map.Lines = map_lines(run, record, *part, layout.Scale, size, services);
    std::ranges::move(polygon_lines(record, layout.Scale, size), std::back_inserter(map.Lines));
    map.Reference = run.Reference;
    const FixDots dots = fix_dots(fixes_of(run, record), layout, size.Dots);
    map.Dots = dots.Path;
    const std::string svg = map_svg(map, layout);
    return dots.Path.empty() ? svg : with_switch(map.Id, svg, dots_text(dots));
}

}  // namespace wxl::results_page
