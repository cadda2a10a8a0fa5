#pragma once
#include "engine/vector_math.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

namespace wxl::engine {

/// (Constant + Linear q + Square q^2) exp(-Decay q): what is summed over the values of MomentBins.
struct DecayingFunction {
    double Decay = 0.0;
    double Constant = 1.0;
    double Linear = 0.0;
    double Square = 0.0;
};

/// A weighted set of numbers q >= 0, kept as bins with power sums, over which smooth functions of q are summed for many
/// decay rates without going back to the numbers.
///
/// A bin is narrow against the scale 1 / decay of every function that still sees it, so that the series of exp around
/// its centre to order 7 leaves a relative error below 1E-12.
class MomentBins {
public:
    /// For functions with a decay of `largestDecay` or less; values beyond `largestValue` are dropped.
    MomentBins(double largestDecay, double largestValue, const VectorMath& math = vector_math());

    /// Adds values with their weights.
    void Add(std::span<const double> values, std::span<const double> weights);

    /// Sum over all values so far of weight x function.
    double Sum(const DecayingFunction& function) const;

private:
    /// The bins that hold something, each order in one row.
    struct Filled {
        std::vector<double> Centre;
        std::vector<double> HalfWidth;
        std::array<std::vector<double>, kMomentOrders> Moments;
    };
    void Collect() const;

    const VectorMath* m_math;
    double m_shift;
    std::int64_t m_firstBin;
    std::int64_t m_lastBin;  ///< takes the values beyond the largest one
    std::vector<double> m_moments;
    std::vector<std::int64_t> m_bins;
    std::vector<double> m_offsets;
    mutable Filled m_filled;
    mutable bool m_collected = false;
};

}  // namespace wxl::engine
