#pragma once
// Minimum convex polygons as features of a layer.

#include "comparison/minimum_convex_polygon.h"
#include "platform/features.h"

#include <span>
#include <string>
#include <vector>

namespace wxl::comparison {

/// animal, PERCENT, AREA (square map units) and N (fixes kept)
std::vector<platform::Field> polygon_fields();

/// Appends the polygons that have an area, with the values of polygon_fields.
void insert_polygons(platform::IInsertCursor& cursor, const std::string& animal,
                     std::span<const MinimumConvexPolygon> polygons);

}  // namespace wxl::comparison
