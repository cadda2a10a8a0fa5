#include "adapters/gdal/distortions.h"

#include "adapters/gdal/gdal_support.h"
#include "platform/runtime_error.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <numbers>
#include <utility>

namespace wxl::files {
namespace {

using platform::Distortion;
using platform::Point;

constexpr double kRadians = std::numbers::pi / 180.0;
constexpr double kStep = 1e-4;         // degrees, some 11 m
constexpr double kNearestPole = 89.9;  // degrees; nearer to it a step east is too short

/// Scale of an area and of a distance on the map, as deviations from 1. `mapped` is the place, one a step east of it
/// and one a step north; `metres` are in a map unit.
Distortion at_place(const Point& degrees, const std::array<Point, 3>& mapped, double metres) {
    constexpr double kAxis = 6378137.0;
    constexpr double kEccentricity2 = 0.0066943799901413165;
    const double sine = std::sin(degrees.Y * kRadians);
    const double w = 1.0 - kEccentricity2 * sine * sine;
    const double north = kAxis * (1.0 - kEccentricity2) / (w * std::sqrt(w)) * kStep * kRadians;
    const double east = kAxis / std::sqrt(w) * std::cos(degrees.Y * kRadians) * kStep * kRadians;
    const double a = (mapped[1].X - mapped[0].X) * metres / east;
    const double b = (mapped[2].X - mapped[0].X) * metres / north;
    const double c = (mapped[1].Y - mapped[0].Y) * metres / east;
    const double d = (mapped[2].Y - mapped[0].Y) * metres / north;
    // Singular values of the two by two matrix.
    const double sum = std::hypot(a + d, c - b);
    const double difference = std::hypot(a - d, c + b);
    const double longest = (sum + difference) / 2.0;
    const double shortest = std::abs(sum - difference) / 2.0;
    return {std::abs(std::abs(a * d - b * c) - 1.0), std::max(std::abs(longest - 1.0), std::abs(1.0 - shortest))};
}

/// To a millionth: what lies beyond differs between versions of PROJ.
double rounded(double share) {
    return std::round(share * 1e6) / 1e6;
}

std::vector<Point> with_steps(const std::vector<Point>& degrees) {
    std::vector<Point> places;
    places.reserve(3 * degrees.size());
    for (const Point& place : degrees) {
        places.push_back(place);
        places.push_back({place.X + kStep, place.Y});
        places.push_back({place.X, place.Y + kStep});
    }
    return places;
}

}  // namespace

void Distortions::Prepare(const platform::SpatialReference& reference) {
    if (m_back && m_reference == reference) return;
    m_back.reset();
    const platform::SpatialReference degrees = ReferenceFromText("EPSG:4326");
    m_toDegrees = std::make_unique<PointProjector>(reference, degrees);
    m_back = std::make_unique<PointProjector>(degrees, reference);
    m_reference = reference;
}

std::optional<Distortion> Distortions::Largest(std::span<const Point> points,
                                               const platform::SpatialReference& reference) {
    return Over(told_places(points), reference);
}

std::optional<Distortion> Distortions::Over(std::vector<Point> places, const platform::SpatialReference& reference) {
    if (places.empty() || reference.IsGeographic || reference.Wkt.empty()) return std::nullopt;
    try {
        Prepare(reference);
    } catch (const platform::RuntimeError&) {
        return std::nullopt;
    }
    if (m_toDegrees->Project(places)) return std::nullopt;
    std::erase_if(places, [](const Point& place) { return std::abs(place.Y) > kNearestPole; });
    std::vector<Point> mapped = with_steps(places);
    if (m_back->Project(mapped)) return std::nullopt;
    const double metres = reference.MetersPerUnit > 0.0 ? reference.MetersPerUnit : 1.0;
    Distortion worst;
    for (std::size_t i = 0; i < places.size(); ++i)
        worst = larger_of(worst, at_place(places[i], {mapped[3 * i], mapped[3 * i + 1], mapped[3 * i + 2]}, metres));
    return Distortion{rounded(worst.Area), rounded(worst.Length)};
}

}  // namespace wxl::files
