#include "dense_twin.h"

#include <cmath>
#include <cstddef>

namespace wxl::tests {

namespace {

using movement_models::Autocorrelation;
using movement_models::ModelKind;
using movement_models::Track;
using Numbers = std::vector<long double>;

/// Lower factor in place.
void factorise(Numbers& a, std::size_t n) {
    for (std::size_t j = 0; j < n; ++j)
        for (std::size_t i = j; i < n; ++i) {
            long double sum = a[i * n + j];
            for (std::size_t k = 0; k < j; ++k) sum -= a[i * n + k] * a[j * n + k];
            a[i * n + j] = i == j ? std::sqrt(sum) : sum / a[j * n + j];
        }
}

Numbers whitened(const Numbers& factor, Numbers right) {
    const std::size_t n = right.size();
    for (std::size_t i = 0; i < n; ++i) {
        for (std::size_t k = 0; k < i; ++k) right[i] -= factor[i * n + k] * right[k];
        right[i] /= factor[i * n + i];
    }
    return right;
}

long double dot(const Numbers& a, const Numbers& b) {
    long double sum = 0.0L;
    for (std::size_t i = 0; i < a.size(); ++i) sum += a[i] * b[i];
    return sum;
}

Numbers minus(Numbers a, long double factor, const Numbers& b) {
    for (std::size_t i = 0; i < a.size(); ++i) a[i] -= factor * b[i];
    return a;
}

}  // namespace

long double dense_correlation(const Autocorrelation& model, long double lag, bool same) {
    if (same) return 1.0L;
    const long double tau1 = model.Scales.Position;
    const long double tau2 = model.Scales.Velocity;
    switch (model.Kind) {
        case ModelKind::kIid:
            return 0.0L;
        case ModelKind::kOu:
            return std::exp(-lag / tau1);
        case ModelKind::kCritical:
            return (1.0L + lag / tau1) * std::exp(-lag / tau1);
        case ModelKind::kOuf:
            break;
    }
    return (tau1 * std::exp(-lag / tau1) - tau2 * std::exp(-lag / tau2)) / (tau1 - tau2);
}

std::vector<long double> dense_solution(Numbers matrix, Numbers right) {
    const std::size_t n = right.size();
    factorise(matrix, n);
    Numbers solution = whitened(matrix, std::move(right));
    for (std::size_t i = n; i-- > 0;) {
        for (std::size_t k = i + 1; k < n; ++k) solution[i] -= matrix[k * n + i] * solution[k];
        solution[i] /= matrix[i * n + i];
    }
    return solution;
}

movement_models::FilterSums<double> dense_sums(const Track& track, const Autocorrelation& model) {
    const std::size_t n = track.Size();
    Numbers matrix(n * n);
    for (std::size_t i = 0; i < n; ++i)
        for (std::size_t j = 0; j < n; ++j)
            matrix[i * n + j] =
                dense_correlation(model, std::abs(static_cast<long double>(track.Times[i]) - track.Times[j]), i == j);
    factorise(matrix, n);
    const Numbers one = whitened(matrix, Numbers(n, 1.0L));
    const Numbers x = whitened(matrix, Numbers(track.X.begin(), track.X.end()));
    const Numbers y = whitened(matrix, Numbers(track.Y.begin(), track.Y.end()));
    const long double weight = dot(one, one);
    const long double meanX = dot(one, x) / weight;
    const long double meanY = dot(one, y) / weight;
    const Numbers restX = minus(x, meanX, one);
    const Numbers restY = minus(y, meanY, one);
    long double logs = 0.0L;
    for (std::size_t i = 0; i < n; ++i) logs += 2.0L * std::log(matrix[i * n + i]);
    movement_models::FilterSums<double> sums;
    sums.LogDeterminant = static_cast<double>(logs);
    sums.Weight = static_cast<double>(weight);
    sums.MeanX = static_cast<double>(meanX);
    sums.MeanY = static_cast<double>(meanY);
    sums.XX = static_cast<double>(dot(restX, restX));
    sums.XY = static_cast<double>(dot(restX, restY));
    sums.YY = static_cast<double>(dot(restY, restY));
    return sums;
}

Track track_of(const std::vector<double>& times, const std::vector<double>& x, const std::vector<double>& y) {
    std::vector<platform::Point> fixes;
    for (std::size_t i = 0; i < x.size(); ++i) fixes.push_back({x[i], y[i]});
    return movement_models::prepare_track(times, fixes).Fixes;
}

}  // namespace wxl::tests
