#pragma once
// Weights that make up for uneven sampling: fixes close in time say the same and count less (Fleming et al. 2018, Ecol.
// Appl. 28:1372).

#include "movement_models/bandwidth.h"

#include <cstddef>
#include <functional>
#include <memory>
#include <span>
#include <vector>

namespace wxl::movement_models {

/// The matrix G_ij = (1/2)/(gamma_ij + H) of a track, as far as the weights need it.
class WeightMatrix {
public:
    virtual ~WeightMatrix() = default;

    /// The solution v of G v = 1 on the fixes of `support` (ascending); one number for each of these.
    /// `start` is a guess of that size; `residual` the error of a row that is good enough.
    virtual std::vector<double> Solve(std::span<const std::size_t> support, std::vector<double> start,
                                      double residual) const = 0;

    /// product = G weights, for all fixes.
    virtual void Multiply(std::span<const double> weights, std::span<double> product) const = 0;
};

/// The whole matrix by Cholesky's factor: time n^3.
std::unique_ptr<WeightMatrix> dense_weight_matrix(const Track& track, const Autocorrelation& model, double squared);

/// Products by the tree; systems by conjugate gradients, preconditioned by a sparse approximate inverse of which every
/// row sees a fix and the eight before it (Kolotilina and Yeremin 1993). The tree and the track must outlive it.
std::unique_ptr<WeightMatrix> sparse_weight_matrix(const Track& track, const TimeTree& tree,
                                                   const Autocorrelation& model, double squared);

/// The weights >= 0 of sum 1 with the least w'G w, by an active set that starts from the fixes with a weight above 0 in
/// `start`. One fix at least has such a weight.
std::vector<double> least_weights(const WeightMatrix& matrix, const std::vector<double>& start);

/// Bandwidth and weights of the least error. `tick` is called between the steps of the search.
Bandwidth optimal_bandwidth(const Track& track, const Autocorrelation& model, const std::function<void()>& tick = {});

}  // namespace wxl::movement_models
