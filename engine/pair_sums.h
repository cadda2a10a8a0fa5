#pragma once
// Sums over pairs of fixes for many bandwidths at once.

#include "engine/criterion.h"
#include "engine/work_clock.h"
#include "platform/values.h"

#include <cstddef>
#include <span>
#include <vector>

namespace wxl::engine {

/// Ways of summing over pairs.
enum class PairMethod {
    kDirect,    ///< every pair once, into bins of the squared distance
    kSpectrum,  ///< bandwidths in groups, each with one Fourier transform of all points
    kTiles      ///< bandwidths in groups; tiles of the plane, each with the faster of the two for its group
};

/// The method that is expected to be the fastest and fits in memory (a transform of at most 1 GB).
PairMethod fastest_pair_method(Criterion criterion, std::span<const platform::Point> points,
                               std::span<const double> bandwidths);

/// Pair sums for bandwidths in ascending order, > 0, none so small that the sample's extent over it overflows when
/// squared. No method holds the pairs in memory.
std::vector<PairSum> pair_sums(Criterion criterion, std::span<const platform::Point> points,
                               std::span<const double> bandwidths, PairMethod method, WorkClock& clock);

/// Megabytes of the largest transform that the fastest method takes, about, for `count` points in `extent` and
/// bandwidths from `lowest` (> 0) to `highest`; 0 where it sums pairs.
double megabytes_of_transforms(Criterion criterion, const platform::Extent& extent, std::size_t count, double lowest,
                               double highest);

}  // namespace wxl::engine
