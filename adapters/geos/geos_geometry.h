#pragma once
// GEOS behind owners: one context per thread, geometries that destroy themselves, faults as RuntimeError.

#include "platform/values.h"

#include <memory>

#define GEOS_USE_ONLY_R_API
#include <geos_c.h>

namespace wxl::files {

struct GeosDestroyer {
    void operator()(GEOSGeometry* geometry) const;
};
using GeosGeometry = std::unique_ptr<GEOSGeometry, GeosDestroyer>;

/// This thread's GEOS context.
GEOSContextHandle_t geos_context();

/// Takes the ownership of a result; RuntimeError 5 with GEOS's words when there is none.
GeosGeometry owned(GEOSGeometry* result);

/// A value that GEOS answers with `failure` when it could not tell; RuntimeError 5 with GEOS's words then.
template <class Value>
Value answered(Value value, Value failure);

/// The shape as GEOS sees it: valid, polygons with their rings nested whatever order and direction they came in. Null
/// for a null shape and for one that is empty. RuntimeError 5 for a coordinate that is not finite.
GeosGeometry to_geos(const platform::Geometry& shape);

/// The parts of `geometry` that are of the type wanted: polygons' outer rings clockwise, each before its holes, holes
/// the other way. A null shape when there is none. For points there must be one (RuntimeError 5).
platform::Geometry from_geos(const GEOSGeometry* geometry, platform::ShapeType wanted);

[[noreturn]] void raise_geos_fault();

template <class Value>
Value answered(Value value, Value failure) {
    if (value == failure) raise_geos_fault();
    return value;
}

}  // namespace wxl::files
