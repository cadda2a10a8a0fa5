#pragma once
// What is asked of a geometry library.

#include "platform/rasters.h"
#include "platform/values.h"

#include <span>
#include <vector>

namespace wxl::platform {

/// Measures of shapes, and shapes made from shapes.
class IGeometryOperators {
public:
    virtual ~IGeometryOperators() = default;

    /// `a` without `b`; a null geometry when nothing is left.
    virtual Geometry Difference(const Geometry& a, const Geometry& b) = 0;

    /// A valid polygon of the same area: rings closed and oriented, self-intersections resolved.
    virtual Geometry CleanUp(const Geometry& polygon) = 0;

    /// Area of a polygon in square map units.
    virtual double Area(const Geometry& polygon) = 0;

    /// Length of a line, or of a polygon's boundary, in map units.
    virtual double Length(const Geometry& lineOrPolygon) = 0;

    /// Planar distance between two points in map units.
    virtual double Distance(const Point& a, const Point& b) = 0;
};

/// One contour line of a raster.
struct ContourLine {
    double Value = 0.0;           ///< one of the levels asked for
    std::vector<Point> Vertices;  ///< closed when first == last; else both ends lie on the raster's outer edge
};

/// Contour lines of a raster by linear interpolation between cell centres; values go on constantly from the outer
/// centres to the raster's outer edge.
class IContourOperation {
public:
    virtual ~IContourOperation() = default;

    /// All lines at the levels, which may stand in any order and may repeat (each value is contoured once).
    virtual std::vector<ContourLine> Contours(IRasterDataset& raster, std::span<const double> levels) = 0;
};

}  // namespace wxl::platform
