#include "adapters/geos/geos_operators.h"

#include "adapters/geos/geos_geometry.h"
#include "platform/runtime_error.h"

#include <cmath>

namespace wxl::files {

using platform::Geometry;
using platform::Point;
using platform::ShapeType;
namespace error_number = platform::error_number;

namespace {

double finite_length(double length) {
    if (!std::isfinite(length))
        platform::Raise(error_number::kInvalidCall, "A shape has a coordinate that is not a finite number.");
    return length;
}

double distance(const Point& a, const Point& b) {
    return std::hypot(b.X - a.X, b.Y - a.Y);
}

}  // namespace

Geometry GeosOperators::Difference(const Geometry& a, const Geometry& b) {
    const GeosGeometry first = to_geos(a);
    const GeosGeometry second = to_geos(b);
    if (!first) return {};
    if (!second) return from_geos(first.get(), a.Type);
    return from_geos(owned(GEOSDifference_r(geos_context(), first.get(), second.get())).get(), a.Type);
}

Geometry GeosOperators::CleanUp(const Geometry& polygon) {
    const GeosGeometry valid = to_geos(polygon);
    return valid ? from_geos(valid.get(), polygon.Type) : Geometry();
}

double GeosOperators::Area(const Geometry& polygon) {
    const GeosGeometry valid = to_geos(polygon);
    double area = 0.0;
    if (valid) answered(GEOSArea_r(geos_context(), valid.get(), &area), 0);
    return area;
}

double GeosOperators::Length(const Geometry& lineOrPolygon) {
    double length = 0.0;
    for (const auto& part : lineOrPolygon.Parts) {
        for (std::size_t i = 1; i < part.size(); ++i) length += distance(part[i - 1], part[i]);
        if (lineOrPolygon.Type == ShapeType::kPolygon && part.size() > 1) length += distance(part.back(), part.front());
    }
    return finite_length(length);
}

double GeosOperators::Distance(const Point& a, const Point& b) {
    return finite_length(distance(a, b));
}

}  // namespace wxl::files
