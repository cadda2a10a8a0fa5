#include "platform/rasters.h"

#include "platform/file_system.h"
#include "platform/runtime_error.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <limits>
#include <vector>

namespace wxl::platform {
namespace {

/// Whether `count` cells from `origin` keep their number when only their outer edges are stored.
bool edges_hold(double origin, double cellSize, std::int32_t count) {
    const double far = origin + count * cellSize;
    return std::isfinite(far) && std::floor((far - origin) / cellSize + 0.5) == count;
}

/// Exponent all ones (not finite), or the lowest float.
bool is_refused(float cell) {
    constexpr std::uint32_t kExponent = 0x7F800000U;
    constexpr std::uint32_t kLowest = 0xFF7FFFFFU;
    const auto bits = std::bit_cast<std::uint32_t>(cell);
    return (bits & kExponent) == kExponent || bits == kLowest;
}

}  // namespace

void CheckRasterDefinition(const RasterDefinition& definition) {
    CheckDatasetName(definition.Name);
    const RasterGeometry& geometry = definition.Geometry;
    const auto refuse = [&](const std::string& reason) {
        Raise(error_number::kInvalidCall, "The raster \"" + definition.Name + "\" " + reason + ".");
    };
    if (geometry.Columns < 1 || geometry.Rows < 1) refuse("has no cells");
    if (!std::isfinite(geometry.CellSize) || geometry.CellSize <= 0.0) refuse("has no usable cell size");
    if (!std::isfinite(geometry.OriginX) || !std::isfinite(geometry.OriginY)) refuse("has no usable origin");
    if (!edges_hold(geometry.OriginX, geometry.CellSize, geometry.Columns) ||
        !edges_hold(geometry.OriginY, geometry.CellSize, geometry.Rows))
        refuse("lies too far out for its cell size");
}

void CheckCells(std::span<const float> cells, const std::string& name) {
    // Without a branch per cell: rows are long and refusals rare.
    unsigned refused = 0;
    for (const float cell : cells) refused |= static_cast<unsigned>(is_refused(cell));
    if (refused == 0) return;
    const auto first = std::find_if(cells.begin(), cells.end(), is_refused);
    const char* what = std::isnan(*first) ? "not a number" : std::isinf(*first) ? "infinite" : "too low to be stored";
    Raise(error_number::kOverflow, "The raster \"" + name + "\" would hold a cell that is " + what + ".");
}

RasterStatistics StatisticsByRows(IRasterBand& band) {
    const RasterGeometry geometry = band.Geometry();
    std::vector<float> cells(static_cast<std::size_t>(geometry.Columns));
    float minimum = std::numeric_limits<float>::infinity();
    float maximum = -std::numeric_limits<float>::infinity();
    for (std::int32_t row = 0; row < geometry.Rows; ++row) {
        band.ReadRow(row, cells);
        for (const float cell : cells) {
            minimum = cell < minimum ? cell : minimum;
            maximum = cell > maximum ? cell : maximum;
        }
    }
    constexpr double kNone = std::numeric_limits<double>::quiet_NaN();
    const bool empty = minimum > maximum;
    return {empty ? kNone : static_cast<double>(minimum), empty ? kNone : static_cast<double>(maximum)};
}

}  // namespace wxl::platform
