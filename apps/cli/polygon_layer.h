#pragma once
#include "apps/cli/console.h"
#include "apps/cli/json_values.h"
#include "apps/cli/shapefile_output.h"
#include "comparison/minimum_convex_polygon.h"

#include <span>
#include <string>
#include <vector>

namespace wxl::cli {

/// The minimum convex polygons of one animal, one per percentage.
struct AnimalPolygons {
    std::string Name;
    std::size_t Fixes = 0;
    std::vector<comparison::MinimumConvexPolygon> Polygons;
};

AnimalPolygons polygons_of(std::string name, std::span<const platform::Point> fixes, std::span<const double> percents);

/// Says that the animal's fixes are too few for a polygon, where they are.
void report_few_fixes(const std::string& animal, std::size_t fixes, Console& console);

/// [{"percent","area","n","status"}]; area is null where there is no fix.
Json json_of(std::span<const comparison::MinimumConvexPolygon> polygons);

/// Writes the polygons that have an area, with the fields animal, PERCENT, AREA and N.
void write_polygons(const ShapefileOutput& output, const platform::SpatialReference& reference,
                    std::span<const AnimalPolygons> animals);

}  // namespace wxl::cli
