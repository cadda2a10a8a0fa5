#include "adapters/tracking/target_projection.h"

#include "adapters/gdal/distortions.h"
#include "adapters/gdal/gdal_support.h"
#include "adapters/gdal/projection.h"

#include <algorithm>
#include <cmath>
#include <fmt/format.h>
#include <numbers>
#include <optional>
#include <vector>

namespace wxl::tracking {

namespace {

using platform::Point;

constexpr double kRadians = std::numbers::pi / 180.0;

/// The middle of the directions from the earth's centre.
Point centre_of(std::span<const TrackingFix> degrees) {
    double x = 0.0;
    double y = 0.0;
    double z = 0.0;
    for (const TrackingFix& point : degrees) {
        const double cosine = std::cos(point.Y * kRadians);
        x += cosine * std::cos(point.X * kRadians);
        y += cosine * std::sin(point.X * kRadians);
        z += std::sin(point.Y * kRadians);
    }
    const auto tenth = [](double value) { return std::round(value * 10.0) / 10.0 + 0.0; };
    return {tenth(std::atan2(y, x) / kRadians), tenth(std::atan2(z, std::hypot(x, y)) / kRadians)};
}

std::string place_text(const Point& place) {
    return fmt::format("{:.1f} {} {:.1f} {}", std::abs(place.Y), place.Y < 0.0 ? 'S' : 'N', std::abs(place.X),
                       place.X < 0.0 ? 'W' : 'E');
}

}  // namespace

NamedSystem equal_area_of(std::span<const TrackingFix> degrees) {
    const Point centre = centre_of(degrees);
    OGRSpatialReference system;
    const std::string name = "Lambert azimuthal equal-area, centre " + place_text(centre);
    system.SetProjCS(name.c_str());
    system.SetWellKnownGeogCS("WGS84");
    system.SetLAEA(centre.Y, centre.X, 0.0, 0.0);
    system.SetLinearUnits(SRS_UL_METER, 1.0);
    return {files::FromOgr(&system), "equal-area"};
}

Point median_of(std::span<const TrackingFix> degrees) {
    // More than these tell no more of the middle, and take memory.
    constexpr std::size_t kAtMost = 200'000;
    const std::size_t step = degrees.size() / kAtMost + 1;
    std::vector<Point> points;
    for (std::size_t i = 0; i < degrees.size(); i += step) points.push_back({degrees[i].X, degrees[i].Y});
    return files::median_position(points);
}

std::optional<std::size_t> project_fixes(std::span<TrackingFix> fixes, const platform::SpatialReference& from,
                                         const platform::SpatialReference& to) {
    if (from == to) return std::nullopt;
    constexpr std::size_t kAtOnce = std::size_t{1} << 16;
    files::PointProjector projector(from, to);
    std::vector<Point> points;
    for (std::size_t start = 0; start < fixes.size(); start += kAtOnce) {
        const auto part = fixes.subspan(start, std::min(kAtOnce, fixes.size() - start));
        points.clear();
        for (const TrackingFix& fix : part) points.push_back({fix.X, fix.Y});
        if (const auto failed = projector.Project(points)) return start + *failed;
        for (std::size_t i = 0; i < part.size(); ++i) {
            part[i].X = points[i].X;
            part[i].Y = points[i].Y;
        }
    }
    return std::nullopt;
}

NamedSystem best_projection(std::span<const TrackingFix> degrees) {
    const auto zone = files::utm_zone_of(median_of(degrees));
    const auto fits = [&](const TrackingFix& point) {
        return point.Y >= -80.0 && point.Y <= 84.0 &&
               std::abs(std::remainder(point.X - zone->MiddleDegrees(), 360.0)) <= kZoneAndAHalf;
    };
    if (!zone || !std::all_of(degrees.begin(), degrees.end(), fits)) return equal_area_of(degrees);
    return {files::ReferenceFromText(zone->Code()), zone->Code()};
}

std::optional<platform::Distortion> largest_distortion(std::span<const TrackingFix> fixes,
                                                       const platform::SpatialReference& reference) {
    return files::Distortions().Over(files::told_places(fixes), reference);
}

}  // namespace wxl::tracking
