#pragma once
// How two shapes lie to each other, by GEOS.

#include "adapters/geos/geos_geometry.h"

namespace wxl::tests {

/// Whether every part of `inner` lies in `outer`; touching boundaries are allowed, and a shape contains itself.
inline bool contains(const platform::Geometry& outer, const platform::Geometry& inner) {
    const files::GeosGeometry a = files::to_geos(outer);
    const files::GeosGeometry b = files::to_geos(inner);
    // "Covers" is "contains" with a boundary that counts as inside.
    return a && b && files::answered<char>(GEOSCovers_r(files::geos_context(), a.get(), b.get()), 2) == 1;
}

inline platform::Geometry united(const platform::Geometry& a, const platform::Geometry& b) {
    const files::GeosGeometry first = files::to_geos(a);
    const files::GeosGeometry second = files::to_geos(b);
    if (!first || !second) return first ? a : b;
    return files::from_geos(files::owned(GEOSUnion_r(files::geos_context(), first.get(), second.get())).get(), a.Type);
}

}  // namespace wxl::tests
