#pragma once
// Yardsticks from outside: the contourer's own polygons, and the geometry library's opinion on validity.

#include "platform/values.h"
#include "tests/unit/isopleths/surfaces.h"

namespace wxl::tests {

/// The area at or above a level as the contourer's polygons have it.
platform::Geometry polygonized_above(const Surface& surface, double level);

/// Whether the polygon, its rings grouped as they stand (outer rings clockwise, each before its holes), is valid. A
/// null shape is.
bool is_valid(const platform::Geometry& polygon);

}  // namespace wxl::tests
