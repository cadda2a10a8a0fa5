#include "adapters/tracking/target_projection.h"

#include "adapters/gdal/gdal_support.h"
#include "adapters/gdal/projection.h"

#include <algorithm>
#include <array>
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

/// The outermost places in sixteen directions, and others at equal steps. A place is anything with X and Y.
template <class Place>
std::vector<Point> told_points(std::span<const Place> points) {
    constexpr std::size_t kAbout = 2000;
    constexpr int kDirections = 16;
    std::vector<Point> told;
    const auto tell = [&](const Place& place) { told.push_back({place.X, place.Y}); };
    for (int direction = 0; direction < kDirections; ++direction) {
        const double angle = 2.0 * std::numbers::pi * direction / kDirections;
        const double x = std::cos(angle);
        const double y = std::sin(angle);
        const auto farther = [&](const Place& a, const Place& b) { return a.X * x + a.Y * y < b.X * x + b.Y * y; };
        tell(*std::max_element(points.begin(), points.end(), farther));
    }
    const std::size_t step = std::max<std::size_t>(points.size() / kAbout, 1);
    for (std::size_t i = 0; i < points.size(); i += step) tell(points[i]);
    return told;
}

/// Scale of an area and of a distance on the map, largest deviations from 1. `places` are degrees; each third point of
/// `mapped` belongs to a place, the next to one a step east of it, the next to one a step north.
constexpr double kStep = 1e-4;  // degrees, some 11 m

void widen(Distortion& worst, const Point& place, const std::array<Point, 3>& mapped, double metres) {
    constexpr double kAxis = 6378137.0;
    constexpr double kEccentricity2 = 0.0066943799901413165;
    const double sine = std::sin(place.Y * kRadians);
    const double w = 1.0 - kEccentricity2 * sine * sine;
    const double north = kAxis * (1.0 - kEccentricity2) / (w * std::sqrt(w)) * kStep * kRadians;
    const double east = kAxis / std::sqrt(w) * std::cos(place.Y * kRadians) * kStep * kRadians;
    const double a = (mapped[1].X - mapped[0].X) * metres / east;
    const double b = (mapped[2].X - mapped[0].X) * metres / north;
    const double c = (mapped[1].Y - mapped[0].Y) * metres / east;
    const double d = (mapped[2].Y - mapped[0].Y) * metres / north;
    const double area = std::abs(a * d - b * c);
    // Singular values of the two by two matrix.
    const double sum = std::hypot(a + d, c - b);
    const double difference = std::hypot(a - d, c + b);
    const double longest = (sum + difference) / 2.0;
    const double shortest = std::abs(sum - difference) / 2.0;
    worst.Area = std::max(worst.Area, std::abs(area - 1.0));
    worst.Length = std::max({worst.Length, std::abs(longest - 1.0), std::abs(1.0 - shortest)});
}

Distortion largest_of(std::vector<Point> places, const platform::SpatialReference& reference) {
    Distortion worst;
    if (reference.Wkt.empty() || reference.IsGeographic) return worst;
    const auto degrees = files::ReferenceFromText("EPSG:4326");
    if (files::project(places, reference, degrees)) return worst;
    std::erase_if(places, [](const Point& place) { return std::abs(place.Y) > 89.9; });
    std::vector<Point> mapped;
    for (const Point& place : places) {
        mapped.push_back(place);
        mapped.push_back({place.X + kStep, place.Y});
        mapped.push_back({place.X, place.Y + kStep});
    }
    if (files::project(mapped, degrees, reference)) return worst;
    const double metres = reference.MetersPerUnit > 0.0 ? reference.MetersPerUnit : 1.0;
    for (std::size_t i = 0; i < places.size(); ++i)
        widen(worst, places[i], {mapped[3 * i], mapped[3 * i + 1], mapped[3 * i + 2]}, metres);
    return worst;
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

Distortion largest_distortion(std::span<const TrackingFix> fixes, const platform::SpatialReference& reference) {
    return fixes.empty() ? Distortion{} : largest_of(told_points(fixes), reference);
}

Distortion largest_distortion(std::span<const Point> points, const platform::SpatialReference& reference) {
    return points.empty() ? Distortion{} : largest_of(told_points(points), reference);
}

std::string distortion_text(const Distortion& distortion) {
    const auto percent = [](double share) {
        return share < 0.0005 ? std::string("less than 0.05 %") : fmt::format("up to {:.1f} %", share * 100.0);
    };
    return fmt::format("areas are {} and distances {} wrong", percent(distortion.Area), percent(distortion.Length));
}

}  // namespace wxl::tracking
