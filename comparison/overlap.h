#pragma once
// Overlap of utilization distributions: every pair of animals on one grid.

#include "comparison/pair_table.h"
#include "comparison/tiled_density.h"

#include <cstdint>
#include <functional>
#include <optional>
#include <vector>

namespace wxl::comparison {

/// The indices of overlap of animal i with animal j, pure numbers. T is the volume of a distribution, 1 when the grid
/// holds all of it; it is never divided away. A(p) is the range at p %.
struct OverlapIndices {
    double HrIj = 0.0;   ///< share of i's range that lies in j's (Kernohan, Gitzen and Millspaugh 2001): 0 to 1
    double HrJi = 0.0;   ///< share of j's range that lies in i's
    double PhrIj = 0.0;  ///< probability of meeting j within the range of i (Kernohan et al. 2001): 0 to T of j
    double PhrJi = 0.0;  ///< probability of meeting i within the range of j
    double Vi = 0.0;     ///< volume of intersection (Seidel 1992, Millspaugh et al. 2004): 0 to 1
    double Ba = 0.0;     ///< Bhattacharyya's affinity (Bhattacharyya 1943, Fieberg and Kochanny 2005): 0 to 1
    double Udoi = 0.0;   ///< utilization distribution overlap index (Fieberg and Kochanny 2005): 0 up, may pass 1
    double Hd = 0.0;     ///< Hellinger's distance: 0 to sqrt 2

    friend bool operator==(const OverlapIndices&, const OverlapIndices&) = default;
};

/// One pair at one percentage.
struct PairOverlap {
    std::uint32_t First = 0;
    std::uint32_t Second = 0;  ///< not below First
    double Percent = 95.0;
    bool Conditional = false;               ///< VI, BA, UDOI and HD of the densities within their own ranges alone
    std::optional<OverlapIndices> Indices;  ///< none where an animal has no distribution

    friend bool operator==(const PairOverlap&, const PairOverlap&) = default;
};

/// What is asked for.
struct OverlapSettings {
    bool Conditional = false;  ///< also the conditional indices: both densities count as 0 outside their own ranges
    bool AllPairs = false;     ///< also pairs that share nothing, and those of animals without a distribution
};

/// Told now and then how much of the work is done, 0 to 1; may throw to end it.
using ProgressSink = std::function<void(double)>;

/// The overlap of every pair i <= j of the set's animals, each with itself included, ascending by i, j, then
/// percentages in their order, whole distributions before conditional ones.
///
/// Densities enter as 32-bit floats and are added in doubles tile by tile: indices are exact to about 1E-7, and
/// to 1E-6 where one cell holds nearly all of a distribution.
std::vector<PairOverlap> overlaps(const DensitySet& set, const OverlapSettings& settings,
                                  const ProgressSink& progress = nullptr);

/// The same from sums that were made before.
std::vector<PairOverlap> overlaps_from(const DensitySet& set, const OverlapSettings& settings,
                                       const std::vector<PairSums>& shared);

}  // namespace wxl::comparison
