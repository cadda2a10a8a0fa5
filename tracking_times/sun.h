#pragma once
#include <cstdint>

namespace wxl::tracking_times {

/// Elevation of the sun's centre above the horizon in degrees, without refraction, -90 to 90, at a place (degrees,
/// longitude east) and a time (seconds since 1970-01-01 UTC).
///
/// The equations of NOAA's Global Monitoring Laboratory, "Solar calculation details" (after Meeus 1998, "Astronomical
/// algorithms"); within 0.015 degrees of an ephemeris from 1990 to 2035.
double sun_elevation(double longitude, double latitude, std::int64_t seconds);

inline constexpr double kCivilTwilight = -6.0;  ///< elevation at which civil twilight ends, degrees

}  // namespace wxl::tracking_times
