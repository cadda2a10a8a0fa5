#pragma once
// The search for the time scales of a model at which the likelihood is largest.

#include "movement_models/expansion.h"
#include "movement_models/likelihood.h"

#include <functional>
#include <optional>
#include <vector>

namespace wxl::movement_models {

/// Between which time scales a fit searches: a thirtieth of the shortest step and a hundred times the duration.
struct ScaleLimits {
    double Shortest = 0.0;
    double Longest = 0.0;
};

ScaleLimits limits_of(const Track& track);

/// Sums of a track with derivatives in ln tau, of whichever model.
class SlopeSums {
public:
    SlopeSums(const Track& track, const Autocorrelation& model);

    /// p, which a fit minimises; of IID without variables.
    Expansion Penalty(RangeShape shape, Criterion criterion) const;

    /// ln A.
    Expansion LogSize(RangeShape shape) const;

private:
    std::size_t m_fixes;
    ModelKind m_kind;
    FilterSums<double> m_none;
    FilterSums<Taylor<1>> m_one;
    FilterSums<Taylor<2>> m_two;
};

/// A coarse grid of time scales with the sums at each: what every shape and criterion of one model starts from.
class ScaleGrid {
public:
    /// `tick` is called after every likelihood.
    ScaleGrid(const Track& track, ModelKind kind, const std::function<void()>& tick);

    /// The best few places where p is smaller than at all neighbours, best first.
    std::vector<TimeScales> Starts(RangeShape shape, Criterion criterion) const;

private:
    struct Node {
        TimeScales Scales;
        FilterSums<double> Sums;
    };
    double PenaltyAt(std::size_t row, std::size_t column, RangeShape shape, Criterion criterion) const;

    std::size_t m_fixes;
    std::size_t m_side;   ///< rows (tau1); for one scale there is one column
    std::size_t m_width;  ///< columns (tau2)
    std::vector<Node> m_nodes;
};

/// A minimum of p within the limits.
struct Optimum {
    TimeScales Scales;
    double Penalty = 0.0;
};

/// Goes down to the nearest minimum. Nothing where that lies at a limit or at equal scales, or does not settle.
std::optional<Optimum> minimum_from(const Track& track, ModelKind kind, RangeShape shape, Criterion criterion,
                                    const TimeScales& start, const std::function<void()>& tick);

}  // namespace wxl::movement_models
