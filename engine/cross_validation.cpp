#include "engine/cross_validation.h"

#include "engine/numeric.h"
#include "engine/pair_sums.h"
#include "platform/checked.h"
#include "platform/runtime_error.h"
#include "platform/values.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace wxl::engine {
namespace {

double lscv_term(double t) {
    return GaussianKernel2(t) - 2.0 * GaussianKernel(t);
}

double bcv_term(double t) {
    const double square = t * t;
    return (square * square - 8.0 * square + 8.0) * SafeExp(square * -0.5);
}

/// Powers of d / h leave the range of numbers where those of the sample's extent do.
void check_powers(Criterion criterion, const platform::Extent& bounds, double bandwidth) {
    const double t = platform::quotient(std::hypot(bounds.Width(), bounds.Height()), bandwidth);
    const double highest = criterion == Criterion::kLscv ? t * t : t * t * t * t;
    if (!std::isfinite(highest)) platform::Raise(platform::error_number::kOverflow);
}

double lscv_score(double pairSum, std::size_t count, double bandwidth) {
    const auto n = static_cast<double>(count);
    const double bothOrders = 2.0 * pairSum;
    const double withDiagonal = (GaussianKernel2(0.0) - 2.0 * GaussianKernel(0.0)) * n + bothOrders;
    return platform::quotient(withDiagonal, n * n * (bandwidth * bandwidth)) +
           platform::quotient(2.0 * GaussianKernel(0.0), n * (bandwidth * bandwidth));
}

double bcv_score(double pairSum, std::size_t count, double bandwidth) {
    const auto n = static_cast<std::int32_t>(count);
    const auto pairs = static_cast<double>(platform::product_i32(n - 2, n - 1));
    const double square = bandwidth * bandwidth;
    return platform::quotient(2.0 * pairSum, square * pairs * 8.0 * 3.14159265358979) +
           platform::quotient(1.0, static_cast<double>(n - 1) * 12.56637061435916 * square);
}

/// Whether the score's arithmetic stays within numbers: it does not where powers of d / h leave them, or where the
/// formula itself cannot be computed for this many fixes.
bool has_score(Criterion criterion, const platform::Extent& bounds, std::size_t count, double bandwidth) {
    try {
        check_powers(criterion, bounds, bandwidth);
        score_of(criterion, 0.0, count, bandwidth);
        return true;
    } catch (const platform::RuntimeError&) {
        return false;
    }
}

double pairs_of(std::size_t count) {
    const auto n = static_cast<double>(count);
    return n * (n - 1.0) / 2.0;
}

std::size_t first_smallest(const std::vector<double>& values) {
    return static_cast<std::size_t>(std::min_element(values.begin(), values.end()) - values.begin());
}

/// Up to this many evaluations of a pair the plain loop is used for the whole search.
constexpr double kWorthLiteral = 5e6;

/// Up to this many it decides between rows that the quick sums cannot tell apart.
constexpr double kMostToDecide = 2e8;

/// Fills the scores of a search.
class Evaluation {
public:
    Evaluation(Criterion criterion, std::span<const platform::Point> points, std::span<const double> bandwidths,
               std::vector<double>& values, WorkClock& clock)
        : m_criterion(criterion), m_points(points), m_bandwidths(bandwidths), m_values(&values), m_clock(&clock) {}

    void Literally(std::span<const std::size_t> rows) {
        for (const std::size_t row : rows)
            Set(row, literal_pair_sum(m_criterion, m_points, m_bandwidths[row], *m_clock));
    }

    void Quickly(std::span<const std::size_t> rows) {
        std::vector<double> bandwidths;
        for (const std::size_t row : rows) bandwidths.push_back(m_bandwidths[row]);
        const PairMethod method = fastest_pair_method(m_criterion, m_points, bandwidths);
        const std::vector<PairSum> sums = pair_sums(m_criterion, m_points, bandwidths, method, *m_clock);
        std::vector<double> errors;
        for (std::size_t i = 0; i < rows.size(); ++i) {
            Set(rows[i], sums[i].Value);
            errors.push_back(std::abs(Score(rows[i], sums[i].Value + sums[i].Error) - (*m_values)[rows[i]]) +
                             1e-15 * std::abs((*m_values)[rows[i]]));
        }
        DecideLiterally(rows, errors);
    }

private:
    double Score(std::size_t row, double pairSum) const {
        try {
            return score_of(m_criterion, pairSum, m_points.size(), m_bandwidths[row]);
        } catch (const platform::RuntimeError&) {
            return 0.0;
        }
    }

    void Set(std::size_t row, double pairSum) { (*m_values)[row] = Score(row, pairSum); }

    void DecideLiterally(std::span<const std::size_t> rows, const std::vector<double>& errors) {
        double limit = std::numeric_limits<double>::infinity();
        for (std::size_t i = 0; i < rows.size(); ++i) limit = std::min(limit, (*m_values)[rows[i]] + errors[i]);
        std::vector<std::size_t> contenders;
        bool distinct = false;
        for (std::size_t i = 0; i < rows.size(); ++i) {
            if ((*m_values)[rows[i]] - errors[i] > limit) continue;
            // Rows of one and the same bandwidth have one and the same score however it is computed.
            distinct |= !contenders.empty() && m_bandwidths[rows[i]] != m_bandwidths[contenders.front()];
            contenders.push_back(rows[i]);
        }
        if (!distinct || static_cast<double>(contenders.size()) * pairs_of(m_points.size()) > kMostToDecide) return;
        Literally(contenders);
    }

    Criterion m_criterion;
    std::span<const platform::Point> m_points;
    std::span<const double> m_bandwidths;
    std::vector<double>* m_values;
    WorkClock* m_clock;
};

}  // namespace

bool has_pair_distances(std::span<const platform::Point> points) {
    if (points.size() < 2 || points.size() > static_cast<std::size_t>(std::numeric_limits<std::int32_t>::max()))
        return false;
    for (const platform::Point& point : points)
        if (!std::isfinite(point.X) || !std::isfinite(point.Y)) return false;
    const platform::Extent bounds = platform::bounds_of(points);
    return std::isfinite(bounds.Width() * bounds.Width() + bounds.Height() * bounds.Height());
}

double literal_pair_sum(Criterion criterion, std::span<const platform::Point> points, double bandwidth,
                        WorkClock& clock) {
    double sum = 0.0;
    for (std::size_t i = 0; i + 1 < points.size(); ++i) {
        for (std::size_t j = i + 1; j < points.size(); ++j) {
            const double t = PointDistance(points[i].X, points[i].Y, points[j].X, points[j].Y) / bandwidth;
            sum += criterion == Criterion::kLscv ? lscv_term(t) : bcv_term(t);
        }
        clock.Tick();
    }
    return sum;
}

double score_of(Criterion criterion, double pairSum, std::size_t count, double bandwidth) {
    const double score =
        criterion == Criterion::kLscv ? lscv_score(pairSum, count, bandwidth) : bcv_score(pairSum, count, bandwidth);
    if (!std::isfinite(score)) platform::Raise(platform::error_number::kOverflow);
    return score;
}

SearchScores search_scores(Criterion criterion, std::span<const platform::Point> points,
                           std::span<const double> bandwidths, WorkClock& clock) {
    const platform::Extent bounds = platform::bounds_of(points);
    SearchScores scores;
    scores.Values.assign(bandwidths.size(), 0.0);
    std::vector<std::size_t> rows;
    for (std::size_t row = 0; row < bandwidths.size(); ++row)
        if (has_score(criterion, bounds, points.size(), bandwidths[row])) rows.push_back(row);
    if (!rows.empty()) {
        Evaluation evaluation(criterion, points, bandwidths, scores.Values, clock);
        const double work = static_cast<double>(rows.size()) * pairs_of(points.size());
        if (work <= kWorthLiteral)
            evaluation.Literally(rows);
        else
            evaluation.Quickly(rows);
    }
    scores.Best = first_smallest(scores.Values);
    return scores;
}

}  // namespace wxl::engine
