#include "apps/cli/polygon_layer.h"

#include "platform/features.h"

#include <utility>

namespace wxl::cli {

namespace {

using comparison::MinimumConvexPolygon;
using comparison::PolygonStatus;

/// The corners as an outer ring: clockwise and closed.
platform::Geometry shape_of(const MinimumConvexPolygon& polygon) {
    std::vector<platform::Point> ring(polygon.Corners.rbegin(), polygon.Corners.rend());
    ring.push_back(ring.front());
    return {platform::ShapeType::kPolygon, {}, {std::move(ring)}};
}

}  // namespace

AnimalPolygons polygons_of(std::string name, std::span<const platform::Point> fixes, std::span<const double> percents) {
    AnimalPolygons animal{std::move(name), fixes.size(), {}};
    for (const double percent : percents) animal.Polygons.push_back(comparison::minimum_convex_polygon(fixes, percent));
    return animal;
}

Json json_of(const AnimalPolygons& animal) {
    Json polygons = Json::array();
    for (const MinimumConvexPolygon& polygon : animal.Polygons)
        polygons.push_back({{"percent", polygon.Percent},
                            {"area", polygon.Status == PolygonStatus::kNoFix ? Json() : json_number(polygon.Area)},
                            {"n", polygon.Kept},
                            {"status", comparison::status_name(polygon.Status)}});
    return polygons;
}

void write_polygons(const ShapefileOutput& output, const platform::SpatialReference& reference,
                    std::span<const AnimalPolygons> animals) {
    using platform::FieldType;
    constexpr int kLongestText = 254;
    const std::vector<platform::Field> fields = {{"animal", FieldType::kText, kLongestText, 0},
                                                 {"PERCENT", FieldType::kDouble, 0, 0},
                                                 {"AREA", FieldType::kDouble, 0, 0},
                                                 {"N", FieldType::kInteger, 9, 0}};
    output.Write(platform::ShapeType::kPolygon, fields, reference, [&](platform::IInsertCursor& cursor) {
        for (const AnimalPolygons& animal : animals)
            for (const MinimumConvexPolygon& polygon : animal.Polygons) {
                if (polygon.Status != PolygonStatus::kGood) continue;
                const platform::FieldValue values[] = {animal.Name, polygon.Percent, polygon.Area,
                                                       static_cast<std::int64_t>(polygon.Kept)};
                cursor.Insert(shape_of(polygon), values);
            }
    });
}

}  // namespace wxl::cli
