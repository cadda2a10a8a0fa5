#pragma once
#include "platform/values.h"

#include <cstddef>
#include <memory>
#include <optional>
#include <span>
#include <string>

namespace wxl::files {

/// A zone of the Universal Transverse Mercator grid on WGS 84: 6 degrees of longitude each, number 1 from 180 W.
/// The wider zones around Norway and Svalbard are not applied.
struct UtmZone {
    int Number = 1;
    bool South = false;

    std::string Name() const;      ///< "32N"
    std::string Code() const;      ///< "EPSG:32632"
    double MiddleDegrees() const;  ///< central meridian
};

/// The zone of a position in degrees, longitudes -180 to 360; nothing beyond 84 N and 80 S, where there are no zones.
std::optional<UtmZone> utm_zone_of(const platform::Point& degrees);

/// The median longitude and latitude. Longitudes are taken around the first one, so that fixes on both sides of the
/// 180th meridian have their median there. `degrees` is not empty.
platform::Point median_position(std::span<const platform::Point> degrees);

/// The way from one coordinate system to another, x before y in both, for points that come in parts.
class PointProjector {
public:
    /// RuntimeError 5 when there is no way between the two.
    PointProjector(const platform::SpatialReference& from, const platform::SpatialReference& to);
    ~PointProjector();
    PointProjector(const PointProjector&) = delete;
    PointProjector& operator=(const PointProjector&) = delete;

    /// Projects points in place. The index of the first that cannot be projected, or nothing when all were.
    std::optional<std::size_t> Project(std::span<platform::Point> points);

private:
    struct Way;
    std::unique_ptr<Way> m_way;
};

/// Projects points in place from one coordinate system to another, x before y in both. The index of the first point
/// that cannot be projected, or nothing when all were. RuntimeError 5 when there is no way between the two.
std::optional<std::size_t> project(std::span<platform::Point> points, const platform::SpatialReference& from,
                                   const platform::SpatialReference& to);

/// What a Mercator projection of the whole world does to areas around a place.
struct MercatorStretch {
    platform::Point Degrees;  ///< the place: longitude and latitude
    double AreaFactor = 1.0;  ///< area on the map over area on the ground
};

/// Whether a coordinate system is a Mercator projection of the world (not a transverse or oblique one).
bool is_mercator(const platform::SpatialReference& reference);

/// The stretch around `where`, a place in the units of `reference`: (cos of the standard parallel / cos of the
/// latitude)^2 times the scale factor's square (Snyder 1987, "Map projections", section 7, on the sphere; the ellipsoid
/// differs by less than 1 %). Nothing for any other projection (transverse Mercator and UTM among them), and for a
/// place that has no latitude.
std::optional<MercatorStretch> mercator_stretch(const platform::SpatialReference& reference,
                                                const platform::Point& where);

}  // namespace wxl::files
