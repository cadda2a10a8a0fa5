#pragma once
#include "platform/values.h"

#include <span>
#include <vector>

namespace wxl::comparison {

/// The strict corners of the convex hull, counter-clockwise from the lowest x (of equal ones the lowest y). Points at
/// one place or on a line give the one or two ends. Turns are decided exactly.
/// @param points finite coordinates
std::vector<platform::Point> convex_hull(std::vector<platform::Point> points);

/// Area of a polygon in square map units, by the shoelace rule on differences from its first corner (large coordinates
/// cost no digits); 0 for fewer than three corners.
double polygon_area(std::span<const platform::Point> corners);

/// The hull of points that come one after another.
class GrowingHull {
public:
    /// Takes time that grows with the number of corners, and hardly any for a point within.
    void Add(const platform::Point& point);

    /// As convex_hull of all points so far.
    const std::vector<platform::Point>& Corners() const { return m_corners; }

private:
    bool Holds(const platform::Point& point) const;

    std::vector<platform::Point> m_corners;
};

}  // namespace wxl::comparison
