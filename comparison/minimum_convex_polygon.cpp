#include "comparison/minimum_convex_polygon.h"

#include "comparison/convex_hull.h"
#include "comparison/quantile.h"

#include <algorithm>
#include <cmath>

namespace wxl::comparison {
namespace {

using platform::Point;

constexpr double kTieTolerance = 1e-9;

std::vector<Point> located(std::span<const Point> fixes) {
    std::vector<Point> points;
    for (const Point& fix : fixes)
        if (std::isfinite(fix.X) && std::isfinite(fix.Y)) points.push_back(fix);
    return points;
}

/// Means of differences from the first fix: large coordinates cost no digits.
Point centre_of(const std::vector<Point>& fixes) {
    Point sum;
    for (const Point& fix : fixes) {
        sum.X += fix.X - fixes[0].X;
        sum.Y += fix.Y - fixes[0].Y;
    }
    const auto count = static_cast<double>(fixes.size());
    return {fixes[0].X + sum.X / count, fixes[0].Y + sum.Y / count};
}

/// Not std::hypot, whose last bit differs between libraries.
double distance(const Point& a, const Point& b) {
    return std::sqrt((a.X - b.X) * (a.X - b.X) + (a.Y - b.Y) * (a.Y - b.Y));
}

std::vector<Point> nearest(const std::vector<Point>& fixes, double percent) {
    if (percent >= 100.0) return fixes;
    const Point centre = centre_of(fixes);
    std::vector<double> distances;
    distances.reserve(fixes.size());
    for (const Point& fix : fixes) distances.push_back(distance(fix, centre));
    std::vector<double> ascending = distances;
    std::sort(ascending.begin(), ascending.end());
    const double limit = quantile(ascending, percent) * (1.0 + kTieTolerance);
    std::vector<Point> kept;
    for (std::size_t i = 0; i < fixes.size(); ++i)
        if (distances[i] <= limit) kept.push_back(fixes[i]);
    return kept;
}

}  // namespace

std::string_view status_name(PolygonStatus status) {
    switch (status) {
        case PolygonStatus::kGood:
            return "ok";
        case PolygonStatus::kNoFix:
            return "no fix";
        case PolygonStatus::kNoArea:
            return "no area";
    }
    return "";
}

std::optional<double> area_of(const MinimumConvexPolygon& polygon) {
    return polygon.Status == PolygonStatus::kNoFix ? std::nullopt : std::optional(polygon.Area);
}

MinimumConvexPolygon minimum_convex_polygon(std::span<const Point> fixes, double percent) {
    MinimumConvexPolygon polygon;
    polygon.Percent = percent;
    const std::vector<Point> points = located(fixes);
    if (points.empty()) return polygon;
    std::vector<Point> kept = nearest(points, percent);
    polygon.Kept = kept.size();
    polygon.Corners = convex_hull(std::move(kept));
    polygon.Area = polygon_area(polygon.Corners);
    polygon.Status = polygon.Corners.size() < 3 ? PolygonStatus::kNoArea : PolygonStatus::kGood;
    return polygon;
}

}  // namespace wxl::comparison
