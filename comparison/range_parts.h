#pragma once
#include "comparison/volume_range.h"

#include <cstdint>
#include <span>

namespace wxl::comparison {

/// The pieces of a range, and the holes in them.
struct RangeParts {
    std::int32_t Parts = 0;
    std::int32_t Holes = 0;
    friend bool operator==(const RangeParts&, const RangeParts&) = default;
};

/// Counts as contours between the cells' centres would: cells of the range that share an edge are one part; those that
/// share a corner alone are when the mean of the four cells around it is at the level or above. What is left out of the
/// range and does not reach the edge of the grid is a hole.
/// @param cells densities, row by row; `columns` of them to a row
RangeParts range_parts(std::span<const double> cells, std::int32_t columns, const VolumeRange& range);

}  // namespace wxl::comparison
