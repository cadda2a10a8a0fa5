#pragma once
// Closes contour lines along a raster's outer edge.

#include "isopleths/levels.h"
#include "isopleths/rings.h"
#include "platform/geometry_operators.h"

#include <optional>
#include <vector>

namespace wxl::isopleths {

/// The surface's value at a place on the edge.
struct EdgeNode {
    double Position = 0.0;
    double Value = 0.0;
};

/// The outer edge of a raster as one closed line, run clockwise from its north-west corner, with the surface's values
/// along it: linear between the outer cells' centres and constant over the last half cell at a corner.
class OuterEdge {
public:
    /// `edge` holds the outer cells of a raster of that geometry, at least one column and row.
    OuterEdge(const platform::RasterGeometry& geometry, const SurfaceEdge& edge);

    /// Side of a cell in map units.
    double CellSize() const { return m_geometry.CellSize; }

    /// Length of the edge in map units.
    double Length() const { return 2.0 * (m_bounds.Width() + m_bounds.Height()); }

    /// Distance of a point from the north-west corner along the edge; none when the point is not on it (further away
    /// than a millionth of a cell).
    std::optional<double> PositionOf(const platform::Point& point) const;

    /// Value of the surface at a position from 0 to Length().
    double ValueAt(double position) const;

    /// Length of what is at or above `lowest` between two positions, clockwise, less the length of the rest; `to` may
    /// lie up to one turn beyond Length().
    double HighLessLow(double from, double to, double lowest) const;

    /// Appends the corners that are passed going clockwise from one position to another (which may be the smaller one:
    /// then the way leads past the north-west corner).
    void AppendCorners(double from, double to, std::vector<platform::Point>& vertices) const;

    /// The whole edge, clockwise.
    Ring WholeEdge() const;

private:
    /// The first node beyond a position; the last one at the end of the edge.
    std::vector<EdgeNode>::const_iterator NodeAfter(double position) const;

    platform::RasterGeometry m_geometry;
    platform::Extent m_bounds;
    std::vector<EdgeNode> m_profile;  ///< corners and cell centres clockwise, from 0 to Length()
};

/// The contours of one level as closed rings around what is at or above it or, within that, below it. Lines that end on
/// the outer edge are joined along those stretches of it that are at or above the level; a surface whose whole edge is
/// at or above the level has the edge itself as a ring. A line that ends elsewhere is closed by a straight side. Rings
/// that enclose nothing, or less than rounding may make (a billionth of a cell wide), are left out; one that touches
/// itself is cut apart there (simple_rings). Sorted by sort_by_area.
/// @param lines all contour lines of the level
/// @param lowest the lowest value that counts as at the level: the level less platform::ContourStep
std::vector<Ring> closed_contours(std::vector<platform::ContourLine> lines, double lowest, const OuterEdge& edge);

}  // namespace wxl::isopleths
