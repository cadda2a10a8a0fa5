#pragma once
// The likelihood by its definition: a full covariance matrix and its Cholesky factor, in 80 bits.

#include "movement_models/likelihood.h"

#include <vector>

namespace wxl::tests {

movement_models::FilterSums<double> dense_sums(const movement_models::Track& track,
                                               const movement_models::Autocorrelation& model);

/// Solves the symmetric positive definite system of `matrix` (row by row) for `right`.
std::vector<long double> dense_solution(std::vector<long double> matrix, std::vector<long double> right);

/// Correlation of two fixes of a track, by index for IID.
long double dense_correlation(const movement_models::Autocorrelation& model, long double lag, bool same);

/// A track of fixes at these times and places, moved to its mean.
movement_models::Track track_of(const std::vector<double>& times, const std::vector<double>& x,
                                const std::vector<double>& y);

}  // namespace wxl::tests
