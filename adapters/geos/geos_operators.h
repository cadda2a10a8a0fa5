#pragma once
#include "platform/geometry_operators.h"

namespace wxl::files {

/// Geometry operators by GEOS. A coordinate that is not finite is RuntimeError 5. Polygons given may have their rings
/// in any order and direction; an invalid one is cleaned up first. Polygons returned are valid: outer rings clockwise,
/// each before its holes, holes the other way.
class GeosOperators final : public platform::IGeometryOperators {
public:
    platform::Geometry Difference(const platform::Geometry& a, const platform::Geometry& b) override;

    /// Rings are closed where they are not; rings that enclose nothing vanish (a null geometry when none is left).
    platform::Geometry CleanUp(const platform::Geometry& polygon) override;
    double Area(const platform::Geometry& polygon) override;
    double Length(const platform::Geometry& lineOrPolygon) override;
    double Distance(const platform::Point& a, const platform::Point& b) override;
};

}  // namespace wxl::files
