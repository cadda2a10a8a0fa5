#include "apps/cli/polygon_layer.h"

#include "comparison/polygon_features.h"

#include <fmt/format.h>
#include <utility>

namespace wxl::cli {

namespace {

using comparison::MinimumConvexPolygon;

/// Below this number the area of a polygon says little.
constexpr std::size_t kFewFixes = 5;

}  // namespace

AnimalPolygons polygons_of(std::string name, std::span<const platform::Point> fixes, std::span<const double> percents) {
    AnimalPolygons animal{std::move(name), fixes.size(), {}};
    for (const double percent : percents) animal.Polygons.push_back(comparison::minimum_convex_polygon(fixes, percent));
    return animal;
}

void report_few_fixes(const std::string& animal, std::size_t fixes, Console& console) {
    if (fixes >= kFewFixes) return;
    console.Problem(fmt::format("{}: {} {} too few for a polygon that says anything", animal, fixes,
                                fixes == 1 ? "fix is" : "fixes are"));
}

Json json_of(std::span<const MinimumConvexPolygon> polygons) {
    Json json = Json::array();
    for (const MinimumConvexPolygon& polygon : polygons)
        json.push_back({{"percent", polygon.Percent},
                        {"area", json_number(area_of(polygon))},
                        {"n", polygon.Kept},
                        {"status", status_name(polygon.Status)}});
    return json;
}

void write_polygons(const ShapefileOutput& output, const platform::SpatialReference& reference,
                    std::span<const AnimalPolygons> animals) {
    output.Write(platform::ShapeType::kPolygon, comparison::polygon_fields(), reference,
                 [&](platform::IInsertCursor& cursor) {
                     for (const AnimalPolygons& animal : animals)
                         comparison::insert_polygons(cursor, animal.Name, animal.Polygons);
                 });
}

}  // namespace wxl::cli
