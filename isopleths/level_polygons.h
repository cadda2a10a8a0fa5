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

/// The same for an inner polygon that lies within the outer one and shares no stretch of its boundary, as polygons of
/// two levels of one surface do that stay clear of the raster's edge: what lies within an odd number of the rings of
/// both. Takes no time that grows with rings times rings, as cutting many islands out of many does.
platform::Geometry nested_ring(const platform::Geometry& inner, const platform::Geometry& outer,
                               platform::IGeometryOperators& operators);

/// Whether a shape has a vertex on the border of a rectangle (or outside).
bool reaches_border(const platform::Geometry& shape, const platform::Extent& bounds);

}  // namespace wxl::isopleths
