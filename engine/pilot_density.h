#pragma once
#include "engine/work_clock.h"
#include "platform/values.h"

#include <span>
#include <vector>

namespace wxl::engine {

/// At each point, the sum over all points (itself included) of GaussianKernel(distance / bandwidth). `bandwidth` > 0,
/// coordinates finite. Relative error below 1E-9 everywhere, at isolated points too.
std::vector<double> pilot_density(std::span<const platform::Point> points, double bandwidth, WorkClock& clock);

}  // namespace wxl::engine
