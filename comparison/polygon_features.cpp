#include "comparison/polygon_features.h"

#include <cstdint>
#include <utility>

namespace wxl::comparison {
namespace {

constexpr int kLongestText = 254;

/// The corners as an outer ring: clockwise and closed.
platform::Geometry shape_of(const MinimumConvexPolygon& polygon) {
    std::vector<platform::Point> ring(polygon.Corners.rbegin(), polygon.Corners.rend());
    ring.push_back(ring.front());
    return {platform::ShapeType::kPolygon, {}, {std::move(ring)}};
}

}  // namespace

std::vector<platform::Field> polygon_fields() {
    using platform::FieldType;
    return {{"animal", FieldType::kText, kLongestText, 0},
            {"PERCENT", FieldType::kDouble, 0, 0},
            {"AREA", FieldType::kDouble, 0, 0},
            {"N", FieldType::kInteger, 9, 0}};
}

void insert_polygons(platform::IInsertCursor& cursor, const std::string& animal,
                     std::span<const MinimumConvexPolygon> polygons) {
    for (const MinimumConvexPolygon& polygon : polygons) {
        if (polygon.Status != PolygonStatus::kGood) continue;
        const platform::FieldValue values[] = {animal, polygon.Percent, polygon.Area,
                                               static_cast<std::int64_t>(polygon.Kept)};
        cursor.Insert(shape_of(polygon), values);
    }
}

}  // namespace wxl::comparison
