#include "isopleths/level_polygons.h"

#include <algorithm>
#include <utility>

namespace wxl::isopleths {

using platform::Geometry;
using platform::IGeometryOperators;

Geometry level_polygon(std::vector<Ring> contours, IGeometryOperators& operators) {
    std::vector<Geometry> polygons = polygons_of(std::move(contours));
    // One by one first: a contour that touches itself then costs the work on its own polygon only.
    if (polygons.size() > 1) {
        for (Geometry& polygon : polygons) polygon = operators.CleanUp(polygon);
    }
    const Geometry whole = collected(std::move(polygons));
    return whole.IsNull() ? whole : operators.CleanUp(whole);
}

Geometry ring_between(const Geometry& inner, const Geometry& outer, IGeometryOperators& operators) {
    if (inner.IsNull() || outer.IsNull()) return outer;
    const Geometry ring = operators.Difference(outer, inner);
    return ring.IsNull() ? ring : operators.CleanUp(ring);
}

Geometry nested_ring(const Geometry& inner, const Geometry& outer, IGeometryOperators& operators) {
    std::vector<Ring> rings = outer.Parts;
    rings.insert(rings.end(), inner.Parts.begin(), inner.Parts.end());
    sort_by_area(rings);
    return level_polygon(std::move(rings), operators);
}

bool reaches_border(const Geometry& shape, const platform::Extent& bounds) {
    const auto isOnBorder = [&](const platform::Point& p) {
        return p.X <= bounds.XMin || p.X >= bounds.XMax || p.Y <= bounds.YMin || p.Y >= bounds.YMax;
    };
    return std::ranges::any_of(shape.Parts, [&](const Ring& ring) { return std::ranges::any_of(ring, isOnBorder); });
}

}  // namespace wxl::isopleths
