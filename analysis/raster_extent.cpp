#include "analysis/raster_extent.h"

#include <cmath>
#include <cstdint>
#include <limits>

namespace wxl::analysis {
namespace {

std::int32_t whole_cells(double length, double cellSize) {
    const double cells = std::floor(length / cellSize);
    if (!(cells >= 0.0)) return 0;
    constexpr auto kMost = std::numeric_limits<std::int32_t>::max();
    return cells > static_cast<double>(kMost) ? kMost : static_cast<std::int32_t>(cells);
}

}  // namespace

platform::RasterGeometry enlarged_grid(const platform::Extent& extent, double margin, double cellSize) {
    return {extent.XMin - margin, extent.YMin - margin, cellSize, whole_cells(extent.Width() + 2.0 * margin, cellSize),
            whole_cells(extent.Height() + 2.0 * margin, cellSize)};
}

}  // namespace wxl::analysis
