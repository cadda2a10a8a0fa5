#pragma once
// Scores of the bandwidth searches: least squares cross-validation (Silverman 1986, ch. 3) and biased cross-validation
// (Sain, Baggerly and Scott 1994).

#include "engine/criterion.h"
#include "engine/work_clock.h"
#include "platform/values.h"

#include <cstddef>
#include <span>
#include <vector>

namespace wxl::engine {

/// Whether every distance between two of the points is a number: at least two points, finite, not too far apart.
bool has_pair_distances(std::span<const platform::Point> points);

/// The pair sum by the plain double loop, in the order i = 0 ..., j = i + 1 ...
double literal_pair_sum(Criterion criterion, std::span<const platform::Point> points, double bandwidth,
                        WorkClock& clock);

/// The score of `count` fixes from their pair sum. RuntimeError 6 or 11 where the formula divides by zero, leaves the
/// range of numbers, or (BCV) (n - 2)(n - 1) does not fit in 32 bits.
double score_of(Criterion criterion, double pairSum, std::size_t count, double bandwidth);

/// The row of a search's result and the scores of all its rows.
struct SearchScores {
    std::vector<double> Values;  ///< a score that faults is 0
    std::size_t Best = 0;        ///< the first row with the smallest score
};

/// Scores of all bandwidths (ascending, at least one). Values differ from the plain loop's by less than 1E-9 of the
/// largest absolute score. Where the bound of the error leaves several rows as the smallest, these rows are computed
/// again by the plain loop, unless this would take more than 2E8 pairs.
SearchScores search_scores(Criterion criterion, std::span<const platform::Point> points,
                           std::span<const double> bandwidths, WorkClock& clock);

}  // namespace wxl::engine
