#pragma once
#include "platform/values.h"

#include <cstddef>
#include <optional>
#include <span>
#include <string_view>
#include <vector>

namespace wxl::comparison {

/// How a minimum convex polygon came out.
enum class PolygonStatus {
    kGood,
    kNoFix,   ///< no fix with coordinates: no polygon, no area
    kNoArea,  ///< kept fixes at fewer than three places, or on a line: area 0, no polygon
};

/// "ok", "no fix", "no area"
std::string_view status_name(PolygonStatus status);

/// The smallest convex polygon around the fixes nearest to their centre (Mohr 1947).
struct MinimumConvexPolygon {
    double Percent = 100.0;
    PolygonStatus Status = PolygonStatus::kNoFix;
    double Area = 0.0;                     ///< square map units
    std::size_t Kept = 0;                  ///< fixes within the distance
    std::vector<platform::Point> Corners;  ///< counter-clockwise from the lowest x; without area its one or two ends
    friend bool operator==(const MinimumConvexPolygon&, const MinimumConvexPolygon&) = default;
};

/// The area; none where there is no fix.
std::optional<double> area_of(const MinimumConvexPolygon& polygon);

/// The distances from the arithmetic mean are sorted; fixes up to their quantile of type 7 at `percent` are kept (but
/// for a billionth, so that rounding parts no equal distances). Fixes without two finite coordinates do not count.
/// @param fixes in map units; repeated ones count as often as they come
/// @param percent above 0 and up to 100; 100 keeps all
MinimumConvexPolygon minimum_convex_polygon(std::span<const platform::Point> fixes, double percent);

}  // namespace wxl::comparison
