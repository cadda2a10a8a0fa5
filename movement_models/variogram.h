#pragma once
#include "movement_models/fit.h"
#include "movement_models/track.h"

#include <cstddef>
#include <vector>

namespace wxl::movement_models {

/// Pairs of fixes about as far apart in time: half their mean squared distance per axis.
struct VariogramPoint {
    double Lag = 0.0;           ///< mean of the pairs, seconds
    double Semivariance = 0.0;  ///< mean of (dx^2 + dy^2)/4, square map units
    double Pairs = 0.0;
    friend bool operator==(const VariogramPoint&, const VariogramPoint&) = default;
};

/// How positions drift apart with time (Fleming et al. 2014), up to half the duration.
///
/// Lags are told apart to the median step: bin b holds those from (b - 1/2) to (b + 1/2) of it. Where there would be
/// more than `mostPoints` bins, the later half of the points takes several bins each, ever more of them.
std::vector<VariogramPoint> variogram_of(const Track& track, std::size_t mostPoints = 1000);

/// The same curve of a model: (trace of the covariance)/2 times the semivariance at that lag.
double model_semivariance(const FittedModel& fit, double lag);

/// Cautious limits at 95 %: chi-square with two degrees for every pair, but for no more pairs than the duration holds
/// lags.
Interval variogram_interval(const VariogramPoint& point, double duration);

/// Whether the curve still rises where it is shown to end: pairs of the last quarter of lags lie apart by 25 % more
/// than those of the quarter before. Not where either has no pairs.
bool still_rises(const std::vector<VariogramPoint>& points, double duration);

}  // namespace wxl::movement_models
