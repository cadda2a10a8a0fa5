#pragma once
#include "adapters/tracking/tracking_file.h"
#include "platform/distortion.h"

#include <optional>
#include <span>
#include <string>

namespace wxl::tracking {

/// A coordinate system, and how a user would ask for it or tell it.
struct NamedSystem {
    platform::SpatialReference Reference;
    std::string Code;
};

/// How far from the middle of its zone a fix may lie for UTM: a zone and a half wide, degrees.
inline constexpr double kZoneAndAHalf = 4.5;

/// The system in which fixes (degrees, WGS 84, not empty) are best measured: the UTM zone of their median where all lie
/// within 4.5 degrees of its middle, a zone and a half wide, so that areas are right to 0.6 %; else equal_area_of.
NamedSystem best_projection(std::span<const TrackingFix> degrees);

/// Lambert's azimuthal equal-area projection around the middle of the fixes (that of their directions from the earth's
/// centre, to a tenth of a degree): areas are right everywhere, and nothing tears at the poles or at 180 degrees.
/// Snyder 1987, "Map projections", section 24.
NamedSystem equal_area_of(std::span<const TrackingFix> degrees);

/// The median longitude and latitude (files::median_position).
platform::Point median_of(std::span<const TrackingFix> degrees);

/// Projects the positions of fixes in place. The index of the first that cannot be projected, or nothing when all were.
/// RuntimeError 5 when there is no way between the two.
std::optional<std::size_t> project_fixes(std::span<TrackingFix> fixes, const platform::SpatialReference& from,
                                         const platform::SpatialReference& to);

/// The largest distortion over some 2,000 of the fixes, the outermost ones among them (platform::IDistortions). Fixes
/// are in units of `reference`.
std::optional<platform::Distortion> largest_distortion(std::span<const TrackingFix> fixes,
                                                       const platform::SpatialReference& reference);

}  // namespace wxl::tracking
