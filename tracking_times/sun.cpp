#include "tracking_times/sun.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace wxl::tracking_times {

namespace {

constexpr double kRadians = std::numbers::pi / 180.0;
constexpr std::int64_t kSecondsPerDay = 86400;
constexpr std::int64_t kEpoch2000 = 946728000;  // 2000-01-01 12:00 UTC

double wrapped(double value, double period) {
    return value - period * std::floor(value / period);
}

/// Where the sun stands among the stars, and how far the sundial is ahead of the clock.
struct SolarPosition {
    double SinDeclination;
    double EquationOfTime;  ///< minutes
};

SolarPosition solar_position(double centuries) {
    const double t = centuries;
    const double meanLongitude = wrapped(280.46646 + t * (36000.76983 + 0.0003032 * t), 360.0) * kRadians;
    const double anomaly = (357.52911 + t * (35999.05029 - 0.0001537 * t)) * kRadians;
    const double eccentricity = 0.016708634 - t * (0.000042037 + 0.0000001267 * t);
    const double centre = std::sin(anomaly) * (1.914602 - t * (0.004817 + 0.000014 * t)) +
                          std::sin(2.0 * anomaly) * (0.019993 - 0.000101 * t) + 0.000289 * std::sin(3.0 * anomaly);
    const double node = (125.04 - 1934.136 * t) * kRadians;
    const double longitude = meanLongitude + (centre - 0.00569 - 0.00478 * std::sin(node)) * kRadians;
    const double obliquitySeconds = 21.448 - t * (46.815 + t * (0.00059 - 0.001813 * t));
    const double obliquity = (23.0 + (26.0 + obliquitySeconds / 60.0) / 60.0 + 0.00256 * std::cos(node)) * kRadians;
    const double half = std::tan(obliquity / 2.0);
    const double y = half * half;
    const double minutes =
        4.0 / kRadians *
        (y * std::sin(2.0 * meanLongitude) - 2.0 * eccentricity * std::sin(anomaly) +
         4.0 * eccentricity * y * std::sin(anomaly) * std::cos(2.0 * meanLongitude) -
         0.5 * y * y * std::sin(4.0 * meanLongitude) - 1.25 * eccentricity * eccentricity * std::sin(2.0 * anomaly));
    return {std::sin(obliquity) * std::sin(longitude), minutes};
}

}  // namespace

double sun_elevation(double longitude, double latitude, std::int64_t seconds) {
    constexpr double kSecondsPerCentury = 36525.0 * static_cast<double>(kSecondsPerDay);
    const SolarPosition sun = solar_position(static_cast<double>(seconds - kEpoch2000) / kSecondsPerCentury);
    const std::int64_t ofDay = ((seconds % kSecondsPerDay) + kSecondsPerDay) % kSecondsPerDay;
    const double solarMinutes =
        wrapped(static_cast<double>(ofDay) / 60.0 + sun.EquationOfTime + 4.0 * longitude, 1440.0);
    const double hourAngle = (solarMinutes / 4.0 - 180.0) * kRadians;
    const double cosDeclination = std::sqrt(1.0 - sun.SinDeclination * sun.SinDeclination);
    const double sine = std::sin(latitude * kRadians) * sun.SinDeclination +
                        std::cos(latitude * kRadians) * cosDeclination * std::cos(hourAngle);
    return std::asin(std::clamp(sine, -1.0, 1.0)) / kRadians;
}

}  // namespace wxl::tracking_times
