#pragma once
// The bandwidth of the autocorrelated Gaussian reference function (Fleming et al. 2015, Ecology 96:1182).

#include "movement_models/models.h"
#include "movement_models/time_tree.h"
#include "movement_models/track.h"

#include <cstddef>
#include <functional>
#include <span>
#include <vector>

namespace wxl::movement_models {

/// H = h^2 that n independent fixes ask for; n >= 1, not only whole numbers. 2 for one fix.
double independent_bandwidth(double fixes);

/// How many independent fixes would ask for this H: the effective sample size of the bandwidth.
double equivalent_fixes(double squaredBandwidth);

/// Sums over all pairs of a track under a model, made once for all bandwidths.
class PairSums {
public:
    /// Weights are >= 0 and sum to 1. The tree is that of the track's times, resolved for the model
    /// (bandwidth_resolution).
    PairSums(const TimeTree& tree, const Autocorrelation& model, std::span<const double> weights);

    /// IID: the nodes are one lag.
    PairSums(const Autocorrelation& model, std::span<const double> weights);

    /// Mean integrated squared error, in units in which the range's Gaussian has a roughness of 1/2.
    double Error(double squaredBandwidth) const;

    /// Derivative of Error in H.
    double Slope(double squaredBandwidth) const;

    /// Expected spread of the density over the true one: 1 - sum of w_i w_j rho_ij + H (Fleming and Calabrese 2017).
    double Bias(double squaredBandwidth) const;

private:
    std::vector<double> m_semivariances;
    std::vector<double> m_coefficients;  ///< both orders of a pair
    double m_diagonal = 0.0;             ///< sum of squared weights
};

/// How finely lags are told apart for this model and bandwidths from that of as many independent fixes upwards.
LagResolution bandwidth_resolution(const Track& track, const Autocorrelation& model);

/// The H of the least error between `lowest` and 2, given error and slope.
double best_bandwidth(double lowest, const std::function<double(double)>& error,
                      const std::function<double(double)>& slope);

/// What smooths a track best.
struct Bandwidth {
    double Squared = 0.0;  ///< H: the bandwidth matrix is H times the model's covariance
    double Error = 0.0;
    double Bias = 0.0;            ///< b
    std::vector<double> Weights;  ///< of every fix, sum 1

    double H() const;                 ///< in units of the range
    double EffectiveWeights() const;  ///< 1/sum of squares
    std::size_t ZeroWeights() const;
};

/// With equal weights.
Bandwidth uniform_bandwidth(const Track& track, const Autocorrelation& model);

}  // namespace wxl::movement_models
