#include "comparison/convex_hull.h"

#include "comparison/exact_turn.h"

#include <algorithm>
#include <cstddef>

namespace wxl::comparison {
namespace {

using platform::Point;

bool is_before(const Point& a, const Point& b) {
    return a.X != b.X ? a.X < b.X : a.Y < b.Y;
}

/// Appends the corners that turn left on the way through points in order, but for the last point.
template <class Iterator>
void append_chain(Iterator first, Iterator end, std::vector<Point>& corners) {
    const std::size_t base = corners.size();
    for (Iterator next = first; next != end; ++next) {
        while (corners.size() >= base + 2 && turn(corners[corners.size() - 2], corners.back(), *next) <= 0)
            corners.pop_back();
        corners.push_back(*next);
    }
    corners.pop_back();
}

}  // namespace

std::vector<Point> convex_hull(std::vector<Point> points) {
    std::sort(points.begin(), points.end(), is_before);
    points.erase(std::unique(points.begin(), points.end()), points.end());
    if (points.size() < 2) return points;
    std::vector<Point> corners;
    append_chain(points.begin(), points.end(), corners);
    append_chain(points.rbegin(), points.rend(), corners);
    return corners;
}

double polygon_area(std::span<const Point> corners) {
    double doubled = 0.0;
    for (std::size_t i = 1; i + 1 < corners.size(); ++i) {
        const double x = corners[i].X - corners[0].X;
        const double y = corners[i].Y - corners[0].Y;
        doubled += x * (corners[i + 1].Y - corners[0].Y) - y * (corners[i + 1].X - corners[0].X);
    }
    return doubled / 2.0;
}

void GrowingHull::Add(const Point& point) {
    if (Holds(point)) return;
    m_corners.push_back(point);
    m_corners = convex_hull(std::move(m_corners));
}

/// By halving the fan of triangles around the first corner.
bool GrowingHull::Holds(const Point& point) const {
    const std::size_t count = m_corners.size();
    if (count < 3) return false;
    const Point& first = m_corners[0];
    if (turn(first, m_corners[1], point) < 0 || turn(first, m_corners[count - 1], point) > 0) return false;
    std::size_t low = 1;
    std::size_t high = count - 1;
    while (high - low > 1) {
        const std::size_t middle = (low + high) / 2;
        (turn(first, m_corners[middle], point) >= 0 ? low : high) = middle;
    }
    return turn(m_corners[low], m_corners[high], point) >= 0;
}

}  // namespace wxl::comparison
