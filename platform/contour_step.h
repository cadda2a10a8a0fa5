#pragma once
// How close to a level contouring takes a cell for one at the level.

#include <algorithm>
#include <cmath>
#include <span>

namespace wxl::platform {

/// Scale that contouring works at: the power of two by which the largest magnitude lies near 2^29. 1 where there is
/// none (0, or too small for a normal number).
inline double ContourScale(double largestMagnitude) {
    if (!std::isnormal(largestMagnitude)) return 1.0;
    return std::ldexp(1.0, 29 - std::ilogb(largestMagnitude));
}

/// Cells within this of a level count as at or above it when these levels are contoured: a few roundings of the largest
/// of them, so that a level one rounding above the cells that it was computed from still meets them. 0 when there is no
/// level but 0.
inline double ContourStep(std::span<const double> levels) {
    double largest = 0.0;
    for (const double level : levels) largest = std::max(largest, std::abs(level));
    return largest == 0.0 ? 0.0 : 1e-6 / ContourScale(largest);
}

}  // namespace wxl::platform
