#pragma once
#include "platform/geometry_operators.h"
#include "platform/values.h"

#include <cstdint>
#include <optional>

namespace wxl::movement {

/// Time, distance and speed of one observation since the one before it, unrounded. Distances in metres, times in
/// seconds.
struct ObservationStep {
    double T_Obs_Sec = 0.0;
    double T_Cumul = 0.0;
    double Dist = 0.0;
    double Dist_Cumul = 0.0;
    double Me_Per_Sec = 0.0;
    double Mi_Per_Hr = 0.0;
};

/// Walks along the observations of a track and keeps the running sums, which carry unrounded values.
class ObservationSteps {
public:
    explicit ObservationSteps(platform::IGeometryOperators& geometry) : m_geometry(geometry) {}

    /// The first observation: the sums start at 0.
    void Start(std::int32_t time2, const platform::Geometry& point);

    /// The step to the next observation; nothing when no time passed, which leaves no speed to be computed. A step back
    /// in time has a negative duration and negative speeds.
    ///
    /// RuntimeError 91 when either observation has no location, 6 when the times lie too far apart for 32 bits.
    std::optional<ObservationStep> Next(std::int32_t time2, const platform::Geometry& point);

private:
    platform::IGeometryOperators& m_geometry;
    std::int32_t m_time2 = 0;
    platform::Geometry m_point;
    double m_cumulativeTime = 0.0;
    double m_cumulativeDistance = 0.0;
};

}  // namespace wxl::movement
