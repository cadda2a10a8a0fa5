#pragma once
#include "engine/work_clock.h"
#include "platform/values.h"

#include <span>

namespace wxl::engine {

/// Kernels reach this many bandwidths, unless a run is told otherwise; smallest extents are padded by as much.
inline constexpr double kUsualReach = 4.0;

/// A sample's kernels as they are to be computed.
struct KernelShape {
    double Bandwidth = 0.0;  ///< map units; with unit variance that of the mean standard deviation
    bool Rescaled = false;   ///< to unit variance: kernels are wider along the axis of the larger spread
    bool Adaptive = false;   ///< local bandwidths by the factors (pilot / geometric mean)^(-1/2) (Abramson 1982)
};

/// The widest kernel's bandwidth along either axis in map units. Costs a pilot estimate where the kernel is adaptive.
/// 0 for a bandwidth that is not above 0. RuntimeError as the kernel calculator meets it (11 for a sample of less than
/// two fixes, or without spread, that is rescaled).
double widest_bandwidth(std::span<const platform::Point> fixes, const KernelShape& shape, WorkClock& clock);

}  // namespace wxl::engine
