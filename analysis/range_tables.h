#pragma once
// Tables of the package of ranges that several commands know.

#include "platform/packages.h"

namespace wxl::analysis {

/// Minimum convex polygons: animal, percent, area_m2, area_ha, n, status.
platform::PackageTable convex_polygon_table();

/// What pairs of ranges have in common: range_of, animal, percent, area_m2, area_ha and the indices of overlap.
platform::PackageTable overlap_table();

}  // namespace wxl::analysis
