#pragma once
#include "isopleths/rings.h"
#include "platform/geometry_operators.h"
#include "tests/support/geos_relations.h"

#include <vector>

namespace wxl::tests {

/// The polygon of one level by combining its contours one after the other: a contour P around the polygon A so far
/// gives P minus A, one within A gives A minus P, any other one their union. The literal twin of level_polygon.
inline platform::Geometry step_by_step(const std::vector<isopleths::Ring>& contours,
                                       platform::IGeometryOperators& operators) {
    platform::Geometry a;
    for (const isopleths::Ring& contour : contours) {
        const platform::Geometry p = operators.CleanUp({platform::ShapeType::kPolygon, {}, {contour}});
        if (a.IsNull())
            a = p;
        else if (contains(p, a))
            a = operators.Difference(p, a);
        else if (contains(a, p))
            a = operators.Difference(a, p);
        else
            a = united(a, p);
    }
    return a.IsNull() ? a : operators.CleanUp(a);
}

}  // namespace wxl::tests
