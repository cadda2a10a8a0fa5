#include "movement_models/bandwidth.h"

#include <algorithm>
#include <cmath>
#include <optional>

namespace wxl::movement_models {

namespace {

constexpr double kWidest = 2.0;  ///< H of one fix

/// Root of a function between two places of different sign, by the method of Illinois with halving.
double root_between(double low, double high, double atLow, double atHigh, const std::function<double(double)>& f) {
    for (int i = 0; i < 200 && high - low > 4e-16 * high; ++i) {
        double middle = low - atLow * (high - low) / (atHigh - atLow);
        if (!(middle > low && middle < high) || i % 3 == 2) middle = 0.5 * (low + high);
        if (middle <= low || middle >= high) break;
        const double value = f(middle);
        if (value == 0.0) return middle;
        const bool left = (value < 0.0) == (atLow < 0.0);
        (left ? low : high) = middle;
        (left ? atLow : atHigh) = value;
    }
    return 0.5 * (low + high);
}

/// (a + shift)^-2 - (b + shift)^-2 without cancellation, a < b.
double difference_of_squares(double a, double b) {
    return (b - a) * (b + a) / (a * a * b * b);
}

}  // namespace

double equivalent_fixes(double squaredBandwidth) {
    const double h = squaredBandwidth;
    return difference_of_squares(2.0 * h, 2.0 + 2.0 * h) / difference_of_squares(2.0 + h, 2.0 + 2.0 * h);
}

double independent_bandwidth(double fixes) {
    if (fixes <= 1.0) return kWidest;
    double low = 1.0;
    while (equivalent_fixes(low) < fixes) low *= 0.5;
    const double high = low == 1.0 ? kWidest : 2.0 * low;
    const auto f = [&](double h) { return std::log(equivalent_fixes(h) / fixes); };
    return root_between(low, high, f(low), f(high), f);
}

PairSums::PairSums(const TimeTree& tree, const Autocorrelation& model, std::span<const double> weights) {
    for (const double w : weights) m_diagonal += w * w;
    const LagNodes nodes = tree.Compress(weights);
    for (std::size_t q = 0; q < nodes.Lags.size(); ++q) {
        m_semivariances.push_back(model.Semivariance(nodes.Lags[q]));
        m_coefficients.push_back(2.0 * nodes.Coefficients[q]);
    }
}

PairSums::PairSums(const Autocorrelation& model, std::span<const double> weights) {
    for (const double w : weights) m_diagonal += w * w;
    m_semivariances.push_back(model.Semivariance(1.0));
    m_coefficients.push_back(1.0 - m_diagonal);
}

double PairSums::Error(double squaredBandwidth) const {
    const double h = squaredBandwidth;
    double sum = m_diagonal / h;
    for (std::size_t q = 0; q < m_coefficients.size(); ++q) sum += m_coefficients[q] / (m_semivariances[q] + h);
    return 0.5 * sum - 2.0 / (2.0 + h) + 0.5;
}

double PairSums::Slope(double squaredBandwidth) const {
    const double h = squaredBandwidth;
    double sum = m_diagonal / (h * h);
    for (std::size_t q = 0; q < m_coefficients.size(); ++q) {
        const double r = 1.0 / (m_semivariances[q] + h);
        sum += m_coefficients[q] * r * r;
    }
    return -0.5 * sum + 2.0 / ((2.0 + h) * (2.0 + h));
}

double PairSums::Bias(double squaredBandwidth) const {
    double sum = 0.0;
    for (std::size_t q = 0; q < m_coefficients.size(); ++q) sum += m_coefficients[q] * m_semivariances[q];
    return sum + squaredBandwidth;
}

LagResolution bandwidth_resolution(const Track& track, const Autocorrelation& model) {
    const double h = independent_bandwidth(static_cast<double>(track.Size()));
    return resolution_of(track.Duration(), [&](double lag) { return 1.0 / (model.Semivariance(lag) + h); });
}

double best_bandwidth(double lowest, const std::function<double(double)>& error,
                      const std::function<double(double)>& slope) {
    constexpr int kScan = 48;
    double best = kWidest;
    double least = error(kWidest);
    const auto offer = [&](double h) {
        if (const double e = error(h); e < least) {
            least = e;
            best = h;
        }
    };
    double before = lowest;
    double slopeBefore = slope(lowest);
    if (slopeBefore >= 0.0) offer(lowest);
    for (int k = 1; k <= kScan; ++k) {
        const double here = k == kScan ? kWidest : lowest * std::pow(kWidest / lowest, static_cast<double>(k) / kScan);
        const double slopeHere = slope(here);
        if (slopeBefore < 0.0 && slopeHere >= 0.0) offer(root_between(before, here, slopeBefore, slopeHere, slope));
        before = here;
        slopeBefore = slopeHere;
    }
    return best;
}

double Bandwidth::H() const {
    return std::sqrt(Squared);
}

double Bandwidth::EffectiveWeights() const {
    double sum = 0.0;
    for (const double w : Weights) sum += w * w;
    return 1.0 / sum;
}

std::size_t Bandwidth::ZeroWeights() const {
    return static_cast<std::size_t>(std::count(Weights.begin(), Weights.end(), 0.0));
}

Bandwidth uniform_bandwidth(const Track& track, const Autocorrelation& model) {
    const auto n = static_cast<double>(track.Size());
    Bandwidth bandwidth;
    bandwidth.Weights.assign(track.Size(), 1.0 / n);
    std::optional<PairSums> sums;
    if (model.Kind == ModelKind::kIid) {
        sums.emplace(model, bandwidth.Weights);
    } else {
        const TimeTree tree(track.Times, bandwidth_resolution(track, model));
        sums.emplace(tree, model, bandwidth.Weights);
    }
    const double lowest = independent_bandwidth(n);
    bandwidth.Squared = model.Kind == ModelKind::kIid ? lowest
                                                      : best_bandwidth(
                                                            lowest, [&](double h) { return sums->Error(h); },
                                                            [&](double h) { return sums->Slope(h); });
    bandwidth.Error = sums->Error(bandwidth.Squared);
    bandwidth.Bias = sums->Bias(bandwidth.Squared);
    return bandwidth;
}

}  // namespace wxl::movement_models
