#pragma once
// Isopleths as SVG paths, no finer than a picture shows them.

#include "platform/geometry_operators.h"
#include "platform/values.h"

#include <cstddef>
#include <span>
#include <string>
#include <vector>

namespace wxl::results_page {

/// Map units to the units of a picture, whose y runs downward.
struct MapScale {
    double Left = 0.0;  ///< picture units of XMin
    double Top = 0.0;   ///< picture units of YMax
    double XMin = 0.0;
    double YMax = 0.0;
    double Units = 1.0;  ///< picture units per map unit

    platform::Point At(const platform::Point& point) const {
        return {Left + (point.X - XMin) * Units, Top + (YMax - point.Y) * Units};
    }
};

/// The line with vertices left out that lie within `tolerance` of what remains (Douglas and Peucker 1973); both ends
/// stay. No recursion, so that a line of any length is taken.
std::vector<platform::Point> simplified(std::span<const platform::Point> line, double tolerance);

/// One path for all lines, with whole tenths of a picture unit, simplified by `tolerance` picture units. Lines smaller
/// than the tolerance are left out; where more than `mostPoints` remain, the tolerance is doubled until they do not.
std::string svg_path(std::span<const platform::ContourLine> lines, const MapScale& scale, double tolerance,
                     std::size_t mostPoints);

/// A coordinate with one decimal.
std::string tenth(double value);

}  // namespace wxl::results_page
