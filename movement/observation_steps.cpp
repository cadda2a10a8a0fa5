#include "movement/observation_steps.h"

#include "platform/checked.h"
#include "platform/runtime_error.h"

namespace wxl::movement {

using namespace wxl::platform;

namespace {

// Deliberately rounded: the figure is compared with tables made with it.
constexpr double kFeetPerMetre = 3.28;
constexpr double kFeetPerMile = 5280.0;

double miles_per_hour(double metres, double seconds) {
    return quotient(metres * kFeetPerMetre / kFeetPerMile, (seconds / 60.0) / 60.0);
}

}  // namespace

void ObservationSteps::Start(std::int32_t time2, const Geometry& point) {
    m_time2 = time2;
    m_point = point;
    m_cumulativeTime = 0.0;
    m_cumulativeDistance = 0.0;
}

std::optional<ObservationStep> ObservationSteps::Next(std::int32_t time2, const Geometry& point) {
    if (m_point.IsNull() || point.IsNull()) Raise(error_number::kObjectNotSet);
    ObservationStep step;
    step.Dist = m_geometry.Distance(m_point.Location, point.Location);
    m_cumulativeDistance += step.Dist;
    step.Dist_Cumul = m_cumulativeDistance;
    m_point = point;

    step.T_Obs_Sec = difference_i32(time2, m_time2);
    step.T_Cumul = step.T_Obs_Sec + m_cumulativeTime;
    if (step.T_Obs_Sec == 0.0) return std::nullopt;
    step.Me_Per_Sec = quotient(step.Dist, step.T_Obs_Sec);
    step.Mi_Per_Hr = miles_per_hour(step.Dist, step.T_Obs_Sec);
    m_time2 = time2;
    m_cumulativeTime = step.T_Cumul;
    return step;
}

}  // namespace wxl::movement
