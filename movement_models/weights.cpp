#include "movement_models/weights.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <numeric>

namespace wxl::movement_models {

namespace {

constexpr std::size_t kDense = 250;     ///< fixes up to which a full matrix is faster
constexpr std::size_t kNeighbours = 8;  ///< of the preconditioner
constexpr double kResidual = 1e-11;     ///< of a system, beside its right side
constexpr double kRoughly = 1e-6;       ///< the same while fixes are still dropped by the hundred
constexpr double kNearPairs = 32.0;     ///< of a product's tree: the values of such pairs are kept
constexpr int kMostSteps = 400;
constexpr int kMostRounds = 200;
constexpr double kGain = 1e-13;      ///< in w'G w, below which a round is the last
constexpr double kTakenBack = 1e-8;  ///< share by which a fix left out must be better than the mean

double element(const Track& track, const Autocorrelation& model, double squared, std::size_t i, std::size_t j) {
    const double lag = std::abs(track.Times[i] - track.Times[j]);
    return 0.5 / ((i == j ? 0.0 : model.Semivariance(lag)) + squared);
}

/// Lower factor of a symmetric matrix in place, row by row.
void factorise(double* a, std::size_t n) {
    for (std::size_t i = 0; i < n; ++i)
        for (std::size_t j = 0; j <= i; ++j) {
            double sum = a[i * n + j];
            for (std::size_t k = 0; k < j; ++k) sum -= a[i * n + k] * a[j * n + k];
            // Rounding may take a pivot of fixes that are all but one below 0.
            a[i * n + j] = i == j ? std::sqrt(std::max(sum, 1e-300)) : sum / a[j * n + j];
        }
}

void solve_factored(const double* a, std::size_t n, double* x) {
    for (std::size_t i = 0; i < n; ++i) {
        for (std::size_t k = 0; k < i; ++k) x[i] -= a[i * n + k] * x[k];
        x[i] /= a[i * n + i];
    }
    for (std::size_t i = n; i-- > 0;) {
        for (std::size_t k = i + 1; k < n; ++k) x[i] -= a[k * n + i] * x[k];
        x[i] /= a[i * n + i];
    }
}

double dot(const std::vector<double>& a, const std::vector<double>& b) {
    double sum = 0.0;
    for (std::size_t i = 0; i < a.size(); ++i) sum += a[i] * b[i];
    return sum;
}

class DenseMatrix final : public WeightMatrix {
public:
    DenseMatrix(const Track& track, const Autocorrelation& model, double squared)
        : m_size(track.Size()), m_elements(m_size * m_size) {
        for (std::size_t i = 0; i < m_size; ++i)
            for (std::size_t j = 0; j <= i; ++j) At(i, j) = At(j, i) = element(track, model, squared, i, j);
    }

    std::vector<double> Solve(std::span<const std::size_t> support, std::vector<double> start,
                              double /*accuracy*/) const override {
        const std::size_t n = support.size();
        std::vector<double> part(n * n);
        for (std::size_t i = 0; i < n; ++i)
            for (std::size_t j = 0; j <= i; ++j) part[i * n + j] = m_elements[support[i] * m_size + support[j]];
        factorise(part.data(), n);
        start.assign(n, 1.0);
        solve_factored(part.data(), n, start.data());
        return start;
    }

    void Multiply(std::span<const double> weights, std::span<double> product) const override {
        for (std::size_t i = 0; i < m_size; ++i) {
            double sum = 0.0;
            for (std::size_t j = 0; j < m_size; ++j) sum += m_elements[i * m_size + j] * weights[j];
            product[i] = sum;
        }
    }

private:
    double& At(std::size_t i, std::size_t j) { return m_elements[i * m_size + j]; }

    std::size_t m_size;
    std::vector<double> m_elements;
};

/// A sparse factor F of the inverse of a matrix: F'F is near it.
class ApproximateInverse {
public:
    ApproximateInverse(const Track& track, const Autocorrelation& model, double squared,
                       std::span<const std::size_t> support)
        : m_rows(support.size()) {
        // elements[i % rows][k]: of the fix with the one k places before it.
        std::array<Row, kNeighbours + 1> elements{};
        std::array<double, (kNeighbours + 1) * (kNeighbours + 1)> matrix{};
        for (std::size_t i = 0; i < support.size(); ++i) {
            const std::size_t n = std::min(i, kNeighbours) + 1;
            Row& latest = elements[i % elements.size()];
            for (std::size_t k = 0; k < n; ++k) latest[k] = element(track, model, squared, support[i], support[i - k]);
            for (std::size_t r = 0; r < n; ++r)
                for (std::size_t c = 0; c <= r; ++c)
                    matrix[r * n + c] = elements[(i + 1 - n + r) % elements.size()][r - c];
            factorise(matrix.data(), n);
            Row& row = m_rows[i];
            row.fill(0.0);
            // The last row of the inverse of the factor is what is wanted.
            row[0] = 1.0 / matrix[n * n - 1];
            for (std::size_t c = n - 1; c-- > 0;) {
                double sum = 0.0;
                for (std::size_t k = c + 1; k < n; ++k) sum += row[n - 1 - k] * matrix[k * n + c];
                row[n - 1 - c] = -sum / matrix[c * n + c];
            }
        }
    }

    void Apply(const std::vector<double>& r, std::vector<double>& z) const {
        std::fill(z.begin(), z.end(), 0.0);
        for (std::size_t i = 0; i < r.size(); ++i) {
            const Row& row = m_rows[i];
            const std::size_t n = std::min(i, kNeighbours) + 1;
            double sum = 0.0;
            for (std::size_t k = 0; k < n; ++k) sum += row[k] * r[i - k];
            for (std::size_t k = 0; k < n; ++k) z[i - k] += row[k] * sum;
        }
    }

private:
    using Row = std::array<double, kNeighbours + 1>;  ///< the fix itself, then those before it
    std::vector<Row> m_rows;
};

class SparseMatrix final : public WeightMatrix {
public:
    SparseMatrix(const Track& track, const TimeTree& tree, const Autocorrelation& model, double squared)
        : m_track(track),
          m_model(model),
          m_squared(squared),
          m_product(tree, [model, squared](double lag) { return 0.5 / (model.Semivariance(lag) + squared); }) {}

    /// Conjugate gradients (Hestenes and Stiefel 1952).
    std::vector<double> Solve(std::span<const std::size_t> support, std::vector<double> x,
                              double residual) const override {
        const std::size_t n = support.size();
        const ApproximateInverse inverse(m_track, m_model, m_squared, support);
        std::vector<double> product(n);
        std::vector<double> r(n);
        Part(support, x, product);
        for (std::size_t i = 0; i < n; ++i) r[i] = 1.0 - product[i];
        std::vector<double> z(n);
        inverse.Apply(r, z);
        std::vector<double> direction = z;
        double rz = dot(r, z);
        const double enough = residual * std::sqrt(static_cast<double>(n));
        for (int step = 0; step < kMostSteps && std::sqrt(dot(r, r)) > enough; ++step) {
            Part(support, direction, product);
            const double length = rz / dot(direction, product);
            for (std::size_t i = 0; i < n; ++i) {
                x[i] += length * direction[i];
                r[i] -= length * product[i];
            }
            inverse.Apply(r, z);
            const double next = dot(r, z);
            for (std::size_t i = 0; i < n; ++i) direction[i] = z[i] + next / rz * direction[i];
            rz = next;
        }
        return x;
    }

    void Multiply(std::span<const double> weights, std::span<double> product) const override {
        m_product.Multiply(weights, product);
    }

private:
    /// The product on the support alone.
    void Part(std::span<const std::size_t> support, const std::vector<double>& x, std::vector<double>& product) const {
        std::vector<double> all(m_track.Size());
        std::vector<double> result(m_track.Size());
        for (std::size_t i = 0; i < support.size(); ++i) all[support[i]] = x[i];
        m_product.Multiply(all, result);
        for (std::size_t i = 0; i < support.size(); ++i) product[i] = result[support[i]];
    }

    const Track& m_track;
    Autocorrelation m_model;
    double m_squared;
    LagProduct m_product;
};

std::vector<std::size_t> support_of(const std::vector<double>& weights) {
    std::vector<std::size_t> support;
    for (std::size_t i = 0; i < weights.size(); ++i)
        if (weights[i] > 0.0) support.push_back(i);
    return support;
}

/// Solutions at bandwidths of a search, each started from the last.
class WeightSearch {
public:
    WeightSearch(const Track& track, const Autocorrelation& model, const std::function<void()>& tick)
        : m_track(track),
          m_model(model),
          m_tick(tick),
          m_tree(track.Times, bandwidth_resolution(track, model)),
          m_productTree(track.Times, bandwidth_resolution(track, model), kNearPairs),
          m_weights(track.Size(), 1.0 / static_cast<double>(track.Size())) {}

    /// d MISE/dH: that the weights change with H does not count where they are the best.
    double Slope(double squared) {
        SolveAt(squared);
        return Sums().Slope(squared);
    }

    double Error(double squared) {
        SolveAt(squared);
        return Sums().Error(squared);
    }

    Bandwidth Result(double squared) {
        SolveAt(squared);
        const PairSums sums = Sums();
        return {squared, sums.Error(squared), sums.Bias(squared), m_weights};
    }

private:
    PairSums Sums() const { return {m_tree, m_model, m_weights}; }

    void SolveAt(double squared) {
        if (squared == m_squared) return;
        const auto matrix = m_track.Size() <= kDense ? dense_weight_matrix(m_track, m_model, squared)
                                                     : sparse_weight_matrix(m_track, m_productTree, m_model, squared);
        m_weights = least_weights(*matrix, m_weights);
        m_squared = squared;
        if (m_tick) m_tick();
    }

    const Track& m_track;
    const Autocorrelation& m_model;
    const std::function<void()>& m_tick;
    TimeTree m_tree;
    TimeTree m_productTree;
    std::vector<double> m_weights;
    double m_squared = 0.0;
};

/// Root of the slope near `start`, by secants within a bracket that grows until it holds the root.
double root_near(WeightSearch& search, double start, double lowest, double highest) {
    constexpr double kSettled = 1e-10;
    double a = start;
    double atA = search.Slope(a);
    double low = lowest;
    double high = highest;
    double b = std::clamp(a * (atA > 0.0 ? 0.98 : 1.02), low, high);
    for (int i = 0; i < 60 && b != a && atA != 0.0; ++i) {
        (atA > 0.0 ? high : low) = a;
        const double atB = search.Slope(b);
        (atB > 0.0 ? high : low) = b;
        double next = b - atB * (b - a) / (atB - atA);
        if (!(next >= low && next <= high)) next = std::sqrt(low * high);
        a = b;
        atA = atB;
        b = next;
        if (std::abs(b - a) <= kSettled * a) break;
    }
    return b;
}

}  // namespace

std::unique_ptr<WeightMatrix> dense_weight_matrix(const Track& track, const Autocorrelation& model, double squared) {
    return std::make_unique<DenseMatrix>(track, model, squared);
}

std::unique_ptr<WeightMatrix> sparse_weight_matrix(const Track& track, const TimeTree& tree,
                                                   const Autocorrelation& model, double squared) {
    return std::make_unique<SparseMatrix>(track, tree, model, squared);
}

std::vector<double> least_weights(const WeightMatrix& matrix, const std::vector<double>& start) {
    std::vector<double> weights = start;
    std::vector<double> product(start.size());
    // G v = 1 has solutions about as large as the weights times this.
    matrix.Multiply(weights, product);
    double scale = 1.0 / std::inner_product(weights.begin(), weights.end(), product.begin(), 0.0);
    double residual = kRoughly;
    double least = std::numeric_limits<double>::infinity();
    std::vector<double> best;
    for (int round = 0; round < kMostRounds; ++round) {
        const std::vector<std::size_t> support = support_of(weights);
        std::vector<double> guess;
        for (const std::size_t i : support) guess.push_back(scale * weights[i]);
        const std::vector<double> v = matrix.Solve(support, std::move(guess), residual);
        std::fill(weights.begin(), weights.end(), 0.0);
        double sum = 0.0;
        std::size_t dropped = 0;
        for (std::size_t k = 0; k < v.size(); ++k) {
            if (v[k] < 0.0) ++dropped;
            sum += std::max(v[k], 0.0);
        }
        for (std::size_t k = 0; k < v.size(); ++k) weights[support[k]] = std::max(v[k], 0.0) / sum;
        scale = sum;
        if (dropped > 0) continue;
        if (residual > kResidual) {
            residual = kResidual;
            continue;
        }
        // Fixes taken back together may drop others that come back next: where that gains nothing the minimum is flat.
        if (!(1.0 / sum < least * (1.0 - kGain))) return best.empty() ? weights : best;
        least = 1.0 / sum;
        best = weights;
        matrix.Multiply(weights, product);
        bool added = false;
        for (std::size_t i = 0; i < weights.size(); ++i) {
            if (weights[i] > 0.0 || product[i] >= (1.0 - kTakenBack) / sum) continue;
            // Just above 0 is enough to be in the support.
            weights[i] = std::numeric_limits<double>::min();
            added = true;
        }
        if (!added) break;
    }
    return weights;
}

Bandwidth optimal_bandwidth(const Track& track, const Autocorrelation& model, const std::function<void()>& tick) {
    Bandwidth uniform = uniform_bandwidth(track, model);
    if (model.Kind == ModelKind::kIid) return uniform;
    constexpr double kWidest = 2.0;
    const double lowest = independent_bandwidth(static_cast<double>(track.Size()));
    WeightSearch search(track, model, tick);
    return search.Result(root_near(search, std::max(uniform.Squared, lowest), lowest, kWidest));
}

}  // namespace wxl::movement_models
