#pragma once
// Pair sums for one range of bandwidths, gathered from pairs and from Fourier transforms.

#include "engine/criterion.h"
#include "engine/moment_bins.h"
#include "engine/point_transform.h"
#include "engine/work_clock.h"
#include "platform/values.h"

#include <cstddef>
#include <span>
#include <vector>

namespace wxl::engine {

/// Beyond this many bandwidths a pair adds nothing (less than 1E-17 of the value at distance 0).
double reach_of(Criterion criterion);

/// Wave numbers beyond this many inverse bandwidths add nothing.
double highest_wave_of(Criterion criterion);

/// Pair sums for bandwidths from Lowest to Highest. Lengths are taken in units of about Highest, so that no power of
/// them leaves the range of numbers.
class PairLevel {
public:
    PairLevel(Criterion criterion, double lowest, double highest);

    /// Adds each pair of `points` once.
    void AddPairs(std::span<const platform::Point> points, WorkClock& clock);

    /// Adds half of each pair of one of `owners` with one of `others`: the other half comes with the others' own turn.
    void AddHalfPairs(std::span<const platform::Point> owners, std::span<const platform::Point> others,
                      WorkClock& clock);

    /// Adds each pair of `points` once, by a Fourier transform.
    void AddSpectrum(std::span<const platform::Point> points, WorkClock& clock);

    /// Adds each pair of `owners` once and half of each pair of owner and other, by two Fourier transforms. All points
    /// lie within reach of one another.
    void AddHalfSpectrum(std::span<const platform::Point> owners, std::span<const platform::Point> others,
                         WorkClock& clock);

    /// The box that AddSpectrum uses for points of this extent.
    TransformBox BoxFor(const platform::Extent& extent) const;

    /// The sum over the pairs so far at a bandwidth of the range.
    PairSum At(double bandwidth) const;

private:
    std::vector<platform::Point> Scaled(std::span<const platform::Point> points) const;
    void AddRow(const platform::Point& point, std::size_t first, double weight);
    void Load(std::span<const platform::Point> points);
    PairSum LscvAt(double h) const;
    PairSum BcvAt(double h) const;

    Criterion m_criterion;
    double m_unit;  ///< a power of two, so that scaling by it is exact
    double m_lowest;
    double m_highest;
    MomentBins m_pairs;        ///< of squared distances
    MomentBins m_spectra;      ///< of squared wave numbers, weighted by the power per area
    double m_selfPairs = 0.0;  ///< pairs of a point with itself, which the spectra contain
    std::vector<double> m_xs, m_ys, m_squares, m_weights;
};

}  // namespace wxl::engine
