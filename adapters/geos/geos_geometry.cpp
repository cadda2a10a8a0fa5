#include "adapters/geos/geos_geometry.h"

#include "platform/runtime_error.h"

#include <algorithm>
#include <cmath>
#include <span>
#include <string>
#include <utility>
#include <vector>

namespace wxl::files {

using platform::Geometry;
using platform::Point;
using platform::ShapeType;
namespace error_number = platform::error_number;

namespace {

// GEOS reads and writes coordinates as pairs of doubles, and so do we.
static_assert(sizeof(Point) == 2 * sizeof(double));

/// A context and the last fault reported to it.
class Context {
public:
    Context() : m_handle(GEOS_init_r()) { GEOSContext_setErrorMessageHandler_r(m_handle, &Context::Receive, this); }
    ~Context() { GEOS_finish_r(m_handle); }
    Context(const Context&) = delete;
    Context& operator=(const Context&) = delete;

    GEOSContextHandle_t Handle() const { return m_handle; }
    std::string TakeFault() { return std::exchange(m_fault, std::string()); }

private:
    static void Receive(const char* message, void* self) { static_cast<Context*>(self)->m_fault = message; }

    GEOSContextHandle_t m_handle;
    std::string m_fault;
};

Context& context() {
    thread_local Context instance;
    return instance;
}

void check_finite(std::span<const Point> points) {
    const bool finite = std::all_of(points.begin(), points.end(),
                                    [](const Point& p) { return std::isfinite(p.X) && std::isfinite(p.Y); });
    if (!finite) platform::Raise(error_number::kInvalidCall, "A shape has a coordinate that is not a finite number.");
}

GEOSCoordSequence* coordinates(std::span<const Point> points) {
    GEOSCoordSequence* sequence = GEOSCoordSeq_copyFromBuffer_r(geos_context(), &points.front().X,
                                                                static_cast<unsigned int>(points.size()), 0, 0);
    if (sequence == nullptr) raise_geos_fault();
    return sequence;
}

using Ring = std::vector<Point>;

/// Rings closed, without those too short to enclose anything.
std::vector<Ring> closed_rings(const std::vector<Ring>& parts) {
    std::vector<Ring> rings;
    for (const Ring& part : parts) {
        Ring ring = part;
        if (!ring.empty() && ring.front() != ring.back()) ring.push_back(ring.front());
        if (ring.size() >= 4) rings.push_back(std::move(ring));
    }
    return rings;
}

/// Twice the signed area, positive when the ring runs clockwise.
double clockwise_measure(const Ring& ring) {
    double sum = 0.0;
    const Point origin = ring.front();
    for (std::size_t i = 1; i < ring.size(); ++i)
        sum +=
            (ring[i].X - origin.X) * (ring[i - 1].Y - origin.Y) - (ring[i - 1].X - origin.X) * (ring[i].Y - origin.Y);
    return sum;
}

GeosGeometry linear_ring(const Ring& ring) {
    return owned(GEOSGeom_createLinearRing_r(geos_context(), coordinates(ring)));
}

/// The polygon of one outer ring and its holes.
GeosGeometry polygon_of(std::span<const Ring> shellThenHoles) {
    std::vector<GeosGeometry> holes;
    for (const Ring& hole : shellThenHoles.subspan(1)) holes.push_back(linear_ring(hole));
    GeosGeometry shell = linear_ring(shellThenHoles.front());
    std::vector<GEOSGeometry*> given;
    for (GeosGeometry& hole : holes) given.push_back(hole.release());
    return owned(GEOSGeom_createPolygon_r(geos_context(), shell.release(), given.data(),
                                          static_cast<unsigned int>(given.size())));
}

GeosGeometry collection(int type, std::vector<GeosGeometry> members) {
    if (members.size() == 1) return std::move(members.front());
    std::vector<GEOSGeometry*> given;
    for (GeosGeometry& member : members) given.push_back(member.release());
    return owned(
        GEOSGeom_createCollection_r(geos_context(), type, given.data(), static_cast<unsigned int>(given.size())));
}

bool is_valid(const GEOSGeometry* geometry) {
    // Being told why is no fault of a call; the words are dropped.
    const bool valid = answered<char>(GEOSisValid_r(geos_context(), geometry), 2) == 1;
    context().TakeFault();
    return valid;
}

struct MakeValidParametersDestroyer {
    void operator()(GEOSMakeValidParams* parameters) const {
        GEOSMakeValidParams_destroy_r(geos_context(), parameters);
    }
};

GeosGeometry made_valid(GeosGeometry geometry) {
    if (is_valid(geometry.get())) return geometry;
    const std::unique_ptr<GEOSMakeValidParams, MakeValidParametersDestroyer> parameters(
        GEOSMakeValidParams_create_r(geos_context()));
    GEOSMakeValidParams_setMethod_r(geos_context(), parameters.get(), GEOS_MAKE_VALID_STRUCTURE);
    return owned(GEOSMakeValidWithParams_r(geos_context(), geometry.get(), parameters.get()));
}

/// Every ring turns inside to outside and back: what lies within an odd number of rings.
GeosGeometry by_nesting(const std::vector<Ring>& rings) {
    GeosGeometry result;
    for (const Ring& ring : rings) {
        GeosGeometry polygon = made_valid(polygon_of(std::span(&ring, 1)));
        result = result ? owned(GEOSSymDifference_r(geos_context(), result.get(), polygon.get())) : std::move(polygon);
    }
    return made_valid(std::move(result));
}

/// Each clockwise ring with the rings that follow it and run the other way; null when that is no valid polygon.
GeosGeometry by_directions(const std::vector<Ring>& rings) {
    if (clockwise_measure(rings.front()) <= 0.0) return nullptr;
    std::vector<GeosGeometry> polygons;
    for (std::size_t first = 0, next = 1; first < rings.size(); first = next++) {
        while (next < rings.size() && clockwise_measure(rings[next]) <= 0.0) ++next;
        polygons.push_back(polygon_of(std::span(rings).subspan(first, next - first)));
    }
    GeosGeometry geometry = collection(GEOS_MULTIPOLYGON, std::move(polygons));
    return is_valid(geometry.get()) ? std::move(geometry) : nullptr;
}

GeosGeometry to_geos_polygon(const Geometry& shape) {
    const std::vector<Ring> rings = closed_rings(shape.Parts);
    if (rings.empty()) return nullptr;
    GeosGeometry direct = by_directions(rings);
    return direct ? std::move(direct) : by_nesting(rings);
}

GeosGeometry to_geos_line(const Geometry& shape) {
    std::vector<GeosGeometry> lines;
    for (const auto& part : shape.Parts)
        if (part.size() >= 2) lines.push_back(owned(GEOSGeom_createLineString_r(geos_context(), coordinates(part))));
    return lines.empty() ? nullptr : collection(GEOS_MULTILINESTRING, std::move(lines));
}

std::vector<Point> points_of(const GEOSGeometry* lineOrPoint) {
    const GEOSCoordSequence* sequence = GEOSGeom_getCoordSeq_r(geos_context(), lineOrPoint);
    if (sequence == nullptr) raise_geos_fault();
    unsigned int size = 0;
    answered(GEOSCoordSeq_getSize_r(geos_context(), sequence, &size), 0);
    std::vector<Point> points(size);
    if (size > 0) answered(GEOSCoordSeq_copyToBuffer_r(geos_context(), sequence, &points.front().X, 0, 0), 0);
    return points;
}

Ring ring_of(const GEOSGeometry* ring, bool clockwise) {
    Ring points = points_of(ring);
    if ((clockwise_measure(points) > 0.0) != clockwise) std::reverse(points.begin(), points.end());
    return points;
}

void append_parts(const GEOSGeometry* geometry, Geometry& shape) {
    const int type = GEOSGeomTypeId_r(geos_context(), geometry);
    if (type >= GEOS_MULTIPOINT) {
        const int count = GEOSGetNumGeometries_r(geos_context(), geometry);
        for (int i = 0; i < count; ++i) append_parts(GEOSGetGeometryN_r(geos_context(), geometry, i), shape);
        return;
    }
    if (GEOSisEmpty_r(geos_context(), geometry) == 1) return;
    if (shape.Type == ShapeType::kPolygon && type == GEOS_POLYGON) {
        shape.Parts.push_back(ring_of(GEOSGetExteriorRing_r(geos_context(), geometry), true));
        const int holes = GEOSGetNumInteriorRings_r(geos_context(), geometry);
        for (int i = 0; i < holes; ++i)
            shape.Parts.push_back(ring_of(GEOSGetInteriorRingN_r(geos_context(), geometry, i), false));
    } else if ((shape.Type == ShapeType::kPolyline && (type == GEOS_LINESTRING || type == GEOS_LINEARRING)) ||
               (shape.Type == ShapeType::kPoint && type == GEOS_POINT)) {
        shape.Parts.push_back(points_of(geometry));
    }
}

}  // namespace

void GeosDestroyer::operator()(GEOSGeometry* geometry) const {
    GEOSGeom_destroy_r(geos_context(), geometry);
}

GEOSContextHandle_t geos_context() {
    return context().Handle();
}

void raise_geos_fault() {
    platform::Raise(error_number::kInvalidCall, "The shapes could not be combined: " + context().TakeFault());
}

GeosGeometry owned(GEOSGeometry* result) {
    if (result == nullptr) raise_geos_fault();
    return GeosGeometry(result);
}

GeosGeometry to_geos(const Geometry& shape) {
    for (const auto& part : shape.Parts) check_finite(part);
    switch (shape.Type) {
        case ShapeType::kPoint:
            check_finite(std::span(&shape.Location, 1));
            return owned(GEOSGeom_createPointFromXY_r(geos_context(), shape.Location.X, shape.Location.Y));
        case ShapeType::kPolyline:
            return to_geos_line(shape);
        case ShapeType::kPolygon:
            return to_geos_polygon(shape);
        case ShapeType::kNull:
            break;
    }
    return nullptr;
}

Geometry from_geos(const GEOSGeometry* geometry, ShapeType wanted) {
    Geometry shape{wanted, {}, {}};
    append_parts(geometry, shape);
    if (shape.Parts.empty()) return {};
    if (wanted != ShapeType::kPoint) return shape;
    if (shape.Parts.size() > 1) platform::Raise(error_number::kInvalidCall, "The result is more than one point.");
    return Geometry::OfPoint(shape.Parts.front().front());
}

}  // namespace wxl::files
