#pragma once
// The likelihood of a track under a movement model, in time that grows with the number of fixes (Fleming et al. 2017,
// Ecol. Inform. 40:8).

#include "movement_models/models.h"
#include "movement_models/taylor.h"
#include "movement_models/track.h"

#include <cstddef>

namespace wxl::movement_models {

/// What the likelihood needs of a track, at given time scales: the rest is algebra.
template <class T>
struct FilterSums {
    T LogDeterminant = 0.0;  ///< D: of the correlation matrix
    T Weight = 0.0;          ///< W: the effective number of fixes for the mean
    T MeanX = 0.0;           ///< generalised least squares, from the track's Origin
    T MeanY = 0.0;
    T XX = 0.0;  ///< S: sums of squares and products of the whitened residuals, square map units
    T XY = 0.0;
    T YY = 0.0;

    T Trace() const { return XX + YY; }
    T Determinant() const { return XX * YY - XY * XY; }
};

/// Sums at the model's time scales. OUF whose scales differ by less than 1e-4 of the longer is taken for OUf.
/// The track has at least one fix.
FilterSums<double> filter(const Track& track, const Autocorrelation& model);

/// The same with derivatives in ln tau, of a model with one time scale (OU, OUf).
FilterSums<Taylor<1>> filter_with_slopes(const Track& track, ModelKind kind, double tau);

/// And of OUF, in ln tau1 and ln tau2.
FilterSums<Taylor<2>> filter_with_slopes(const Track& track, const TimeScales& scales);

/// Maximum likelihood, or restricted (residual) maximum likelihood (Patterson and Thompson 1971).
enum class Criterion { kMl, kReml };

/// Covariance at its best value for these time scales: S/n or S/(n - 1), for isotropic models the mean of both axes.
Matrix2 profiled_covariance(const FilterSums<double>& sums, std::size_t fixes, RangeShape shape, Criterion criterion);

/// Log-likelihood with mean and covariance at their best values.
double profiled_log_likelihood(const FilterSums<double>& sums, std::size_t fixes, RangeShape shape,
                               Criterion criterion);

/// Log-likelihood at any covariance, the mean at its best value.
double log_likelihood(const FilterSums<double>& sums, std::size_t fixes, const Matrix2& covariance,
                      Criterion criterion);

/// ln A, A = trace of S (isotropic) or the root of its determinant (anisotropic): the size of the range.
template <class T>
T log_size(const FilterSums<T>& sums, RangeShape shape) {
    using std::log;
    return shape == RangeShape::kIsotropic ? log(sums.Trace()) : 0.5 * log(sums.Determinant());
}

/// p, which a fit minimises: -l without its constants.
template <class T>
T penalty(const FilterSums<T>& sums, std::size_t fixes, RangeShape shape, Criterion criterion) {
    using std::log;
    const T size = log_size(sums, shape);
    const auto n = static_cast<double>(fixes);
    if (criterion == Criterion::kMl) return sums.LogDeterminant + n * size;
    return sums.LogDeterminant + log(sums.Weight) + (n - 1.0) * size;
}

}  // namespace wxl::movement_models
