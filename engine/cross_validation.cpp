#include "engine/cross_validation.h"

#include "engine/numeric.h"
#include "platform/checked.h"
#include "platform/runtime_error.h"
#include "platform/values.h"

#include <cmath>

namespace wxl::engine {
namespace {

double lscv_term(double t) {
    return GaussianKernel2(t) - 2.0 * GaussianKernel(t);
}

double bcv_term(double t) {
    const double square = t * t;
    return (square * square - 8.0 * square + 8.0) * SafeExp(square * -0.5);
}

platform::Extent bounds_of(std::span<const platform::Point> points) {
    platform::Extent bounds;
    for (const platform::Point& point : points) bounds.Include(point);
    return bounds;
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

}  // namespace

bool has_pair_distances(std::span<const platform::Point> points) {
    if (points.size() < 2 || points.size() > static_cast<std::size_t>(std::numeric_limits<std::int32_t>::max()))
        return false;
    for (const platform::Point& point : points)
        if (!std::isfinite(point.X) || !std::isfinite(point.Y)) return false;
    const platform::Extent bounds = bounds_of(points);
    return std::isfinite(bounds.Width() * bounds.Width() + bounds.Height() * bounds.Height());
}

PairSum literal_pair_sum(Criterion criterion, std::span<const platform::Point> points, double bandwidth) {
    double sum = 0.0;
    for (std::size_t i = 0; i + 1 < points.size(); ++i) {
        for (std::size_t j = i + 1; j < points.size(); ++j) {
            const double t = PointDistance(points[i].X, points[i].Y, points[j].X, points[j].Y) / bandwidth;
            sum += criterion == Criterion::kLscv ? lscv_term(t) : bcv_term(t);
        }
    }
    return {sum, 0.0};
}

double score_of(Criterion criterion, double pairSum, std::size_t count, double bandwidth) {
    const double score =
        criterion == Criterion::kLscv ? lscv_score(pairSum, count, bandwidth) : bcv_score(pairSum, count, bandwidth);
    if (!std::isfinite(score)) platform::Raise(platform::error_number::kOverflow);
    return score;
}

SearchScores search_scores(Criterion criterion, std::span<const platform::Point> points,
                           std::span<const double> bandwidths, WorkClock& clock) {
    const platform::Extent bounds = bounds_of(points);
    SearchScores scores;
    for (const double bandwidth : bandwidths) {
        double value = 0.0;
        try {
            check_powers(criterion, bounds, bandwidth);
            value = score_of(criterion, literal_pair_sum(criterion, points, bandwidth).Value, points.size(), bandwidth);
        } catch (const platform::RuntimeError&) {
            scores.Faulted = true;
        }
        scores.Values.push_back(value);
        if (value < scores.Values[scores.Best]) scores.Best = scores.Values.size() - 1;
        clock.Tick();
    }
    return scores;
}

}  // namespace wxl::engine
