#include "isopleths/level_polygons.h"

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

}  // namespace wxl::isopleths
