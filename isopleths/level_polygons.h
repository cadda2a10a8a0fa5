#pragma once
// The area at or above each level, and the rings between them.

#include "isopleths/rings.h"
#include "platform/geometry_operators.h"

#include <span>
#include <vector>

namespace wxl::isopleths {

/// The polygon of one level from its contours, sorted by sort_by_area: a contour within the polygon so far cuts a hole
/// into it, one outside adds to it. In this order a contour never contains the polygon so far, and the outcome is what
/// lies within an odd number of contours; it is built from their nesting, without combining polygons one by one. Valid;
/// a null shape when there is no contour.
platform::Geometry level_polygon(std::vector<Ring> contours, platform::IGeometryOperators& operators);

/// Polygon `outer` without `inner`, cleaned up. Without an inner polygon it is the outer one; a null shape when there
/// is no outer polygon or nothing is left of it.
platform::Geometry ring_between(const platform::Geometry& inner, const platform::Geometry& outer,
                                platform::IGeometryOperators& operators);

}  // namespace wxl::isopleths
