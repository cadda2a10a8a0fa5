// Polygons of isopleths from contours of small surfaces beside the step-by-step rules, and the rings between them.

#include "adapters/geos/geos_operators.h"
#include "adapters/memory/memory_rasters.h"
#include "adapters/raster/contour_operation.h"
#include "fuzz/fuzz_input.h"
#include "isopleths/edge_closing.h"
#include "isopleths/level_polygons.h"
#include "platform/contour_step.h"
#include "tests/support/step_by_step.h"
#include "tests/unit/isopleths/surfaces.h"

#include <vector>

namespace {

using namespace wxl;
using fuzz::require;

tests::Surface surface_of(fuzz::FuzzInput& input) {
    tests::Surface surface{{500000, 4000000, 30, input.Between(2, 14), input.Between(2, 14)}, {}};
    const bool steps = input.Flag();
    const double scale = std::ldexp(1.0, input.Between(-60, 4));
    for (std::int32_t i = 0; i < surface.Geometry.Columns * surface.Geometry.Rows; ++i) {
        const auto byte = input.Take<std::uint8_t>();
        surface.Cells.push_back(static_cast<float>(scale * (steps ? byte % 4 : byte)));
    }
    return surface;
}

void check_polygon(const platform::Geometry& found, const platform::Geometry& expected) {
    files::GeosOperators operators;
    const double area = operators.Area(expected);
    const double unlike =
        operators.Area(operators.Difference(found, expected)) + operators.Area(operators.Difference(expected, found));
    require(unlike <= 1e-9 * area, "the polygon of the rules");
    for (const auto& ring : found.Parts) require(ring.size() >= 4 && ring.front() == ring.back(), "closed rings");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    fuzz::FuzzInput input(data, size);
    const double share = input.Within(0.01, 0.99);
    const double lowerShare = share * input.Within(0.1, 1.0);
    const tests::Surface surface = surface_of(input);
    const double low = surface.Minimum();
    const double range = surface.Maximum() - low;
    if (!(range > 0.0)) return 0;
    files::ContourOperation operation;
    files::GeosOperators operators;
    const auto raster = memory::MakeRaster("ud", surface.Geometry, surface.Cells);
    platform::Geometry inner;
    for (const double level : {low + share * range, low + lowerShare * range}) {
        const std::vector<double> levels = {level};
        const auto contours =
            isopleths::closed_contours(operation.Contours(*raster, levels), level - platform::ContourStep(levels),
                                       isopleths::OuterEdge(surface.Geometry, surface.Edge()));
        const platform::Geometry polygon = isopleths::level_polygon(contours, operators);
        check_polygon(polygon, tests::step_by_step(contours, operators));
        const platform::Geometry ring = isopleths::ring_between(inner, polygon, operators);
        require(operators.Area(ring) <= operators.Area(polygon) * (1.0 + 1e-9), "a ring no larger than its polygon");
        if (!inner.IsNull() && !polygon.IsNull() && !isopleths::reaches_border(inner, surface.Geometry.Bounds()))
            check_polygon(isopleths::nested_ring(inner, polygon, operators), ring);
        inner = polygon;
    }
    return 0;
}
