#include "movement_models/scale_search.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace wxl::movement_models {

namespace {

constexpr std::size_t kNodesOfOneScale = 61;
constexpr std::size_t kNodesOfTwoScales = 25;
constexpr std::size_t kStarts = 3;
constexpr double kNearest = 1e-4;     ///< scales nearer than this, in logarithms, are equal
constexpr double kLongestStep = 1.5;  ///< in logarithms
constexpr int kMostSteps = 80;
constexpr double kSettled = 1e-9;  ///< in logarithms

double log_place(const ScaleLimits& limits, std::size_t k, std::size_t count) {
    const double share = static_cast<double>(k) / static_cast<double>(count - 1);
    return limits.Shortest * std::pow(limits.Longest / limits.Shortest, share);
}

/// A NaN is no better than anything.
double or_infinite(double p) {
    return std::isnan(p) ? std::numeric_limits<double>::infinity() : p;
}

/// Walks down p with Newton steps.
class Descent {
public:
    Descent(const Track& track, ModelKind kind, RangeShape shape, Criterion criterion, const TimeScales& start,
            const std::function<void()>& tick)
        : m_track(track), m_kind(kind), m_shape(shape), m_criterion(criterion), m_tick(tick), m_place(Logs(start)) {
        const ScaleLimits limits = limits_of(track);
        m_lowest = std::log(limits.Shortest);
        m_highest = std::log(limits.Longest);
    }

    std::optional<Optimum> Run() {
        for (int i = 0; i < kMostSteps; ++i) {
            const Expansion here = Slopes();
            if (!std::isfinite(here.Value)) return std::nullopt;
            const Vector2 step = Limited(downhill_step(here));
            const bool bowl = is_positive_definite(here.Hessian, here.Count);
            if (bowl && Size(step) < kSettled) return Found(here.Value);
            if (!Move(here, step, bowl)) return std::nullopt;
            if (AtLimit()) return std::nullopt;
        }
        return std::nullopt;
    }

private:
    bool HasTwo() const { return m_kind == ModelKind::kOuf; }

    Vector2 Logs(const TimeScales& scales) const {
        return {std::log(scales.Position), HasTwo() ? std::log(scales.Velocity) : 0.0};
    }

    TimeScales Scales(const Vector2& place) const { return {std::exp(place[0]), HasTwo() ? std::exp(place[1]) : 0.0}; }

    static double Size(const Vector2& step) { return std::max(std::abs(step[0]), std::abs(step[1])); }

    static Vector2 Limited(Vector2 step) {
        const double size = Size(step);
        if (size > kLongestStep)
            for (double& part : step) part *= kLongestStep / size;
        return step;
    }

    Expansion Slopes() const {
        m_tick();
        return SlopeSums(m_track, {m_kind, Scales(m_place)}).Penalty(m_shape, m_criterion);
    }

    double PenaltyAt(const Vector2& place) const {
        m_tick();
        return or_infinite(penalty(filter(m_track, {m_kind, Scales(place)}), m_track.Size(), m_shape, m_criterion));
    }

    Vector2 Clamped(Vector2 place) const {
        place[0] = std::clamp(place[0], m_lowest, m_highest);
        if (!HasTwo()) return place;
        place[1] = std::max(place[1], m_lowest);
        if (place[0] - place[1] < kNearest) place[1] = place[0] - kNearest;
        return place;
    }

    bool AtLimit() const {
        if (m_place[0] <= m_lowest || m_place[0] >= m_highest) return true;
        return HasTwo() && (m_place[1] <= m_lowest || m_place[0] - m_place[1] <= kNearest * 1.000001);
    }

    /// Goes along the step as far as p falls; false where it does not.
    bool Move(const Expansion& here, const Vector2& step, bool bowl) {
        // So near the minimum p itself no longer tells better from worse: its derivatives do.
        const double expected = -0.5 * product(here.Gradient, step);
        if (bowl && expected < 1e-9 * std::max(1.0, std::abs(here.Value)) && Size(step) < 1e-2) {
            m_place = Clamped({m_place[0] + step[0], m_place[1] + step[1]});
            return true;
        }
        for (double share = 1.0; share > 1e-4; share *= 0.4) {
            const Vector2 next = Clamped({m_place[0] + share * step[0], m_place[1] + share * step[1]});
            if (PenaltyAt(next) >= here.Value) continue;
            m_place = next;
            return true;
        }
        return false;
    }

    Optimum Found(double p) const { return {Scales(m_place), p}; }

    const Track& m_track;
    ModelKind m_kind;
    RangeShape m_shape;
    Criterion m_criterion;
    const std::function<void()>& m_tick;
    Vector2 m_place;
    double m_lowest = 0.0;
    double m_highest = 0.0;
};

}  // namespace

ScaleLimits limits_of(const Track& track) {
    return {track.ShortestStep() / 30.0, 100.0 * track.Duration()};
}

SlopeSums::SlopeSums(const Track& track, const Autocorrelation& model) : m_fixes(track.Size()), m_kind(model.Kind) {
    const int scales = scale_count(model.Kind);
    if (scales == 0) m_none = filter(track, model);
    if (scales == 1) m_one = filter_with_slopes(track, model.Kind, model.Scales.Position);
    if (scales == 2) m_two = filter_with_slopes(track, model.Scales);
}

/// Three fixes leave two contrasts, as many as there are axes: the determinants of times and of an elliptic range then
/// cancel, and what is computed as slope and curvature is rounding.
Expansion SlopeSums::Penalty(RangeShape shape, Criterion criterion) const {
    const int scales = scale_count(m_kind);
    if (scales == 0) return {0, penalty(m_none, m_fixes, shape, criterion), {}, {}};
    Expansion p = scales == 1 ? expansion_of(penalty(m_one, m_fixes, shape, criterion))
                              : expansion_of(penalty(m_two, m_fixes, shape, criterion));
    if (m_fixes == 3 && shape == RangeShape::kAnisotropic && criterion == Criterion::kReml) {
        p.Gradient = {};
        p.Hessian = {};
    }
    return p;
}

Expansion SlopeSums::LogSize(RangeShape shape) const {
    const int scales = scale_count(m_kind);
    if (scales == 0) return {0, log_size(m_none, shape), {}, {}};
    return scales == 1 ? expansion_of(log_size(m_one, shape)) : expansion_of(log_size(m_two, shape));
}

ScaleGrid::ScaleGrid(const Track& track, ModelKind kind, const std::function<void()>& tick)
    : m_fixes(track.Size()),
      m_side(scale_count(kind) == 2 ? kNodesOfTwoScales : kNodesOfOneScale),
      m_width(scale_count(kind) == 2 ? kNodesOfTwoScales : 1),
      m_nodes(m_side * m_width) {
    const ScaleLimits limits = limits_of(track);
    for (std::size_t row = 0; row < m_side; ++row)
        for (std::size_t column = 0; column < (m_width > 1 ? row : 1); ++column) {
            Node& node = m_nodes[row * m_width + column];
            node.Scales.Position = log_place(limits, row, m_side);
            if (m_width > 1) node.Scales.Velocity = log_place(limits, column, m_side);
            node.Sums = filter(track, {kind, node.Scales});
            tick();
        }
}

double ScaleGrid::PenaltyAt(std::size_t row, std::size_t column, RangeShape shape, Criterion criterion) const {
    const bool outside = row >= m_side || column >= m_width || (m_width > 1 && column >= row);
    if (outside) return std::numeric_limits<double>::infinity();
    return or_infinite(penalty(m_nodes[row * m_width + column].Sums, m_fixes, shape, criterion));
}

std::vector<TimeScales> ScaleGrid::Starts(RangeShape shape, Criterion criterion) const {
    struct Candidate {
        double Penalty;
        TimeScales Scales;
    };
    std::vector<Candidate> found;
    for (std::size_t row = 0; row < m_side; ++row)
        for (std::size_t column = 0; column < m_width; ++column) {
            const double here = PenaltyAt(row, column, shape, criterion);
            if (!std::isfinite(here)) continue;
            bool lowest = true;
            // One below 0 wraps to a number beyond the grid.
            for (const std::size_t r : {row - 1, row, row + 1})
                for (const std::size_t c : {column - 1, column, column + 1})
                    lowest = lowest && here <= PenaltyAt(r, c, shape, criterion);
            if (lowest) found.push_back({here, m_nodes[row * m_width + column].Scales});
        }
    std::stable_sort(found.begin(), found.end(),
                     [](const Candidate& a, const Candidate& b) { return a.Penalty < b.Penalty; });
    std::vector<TimeScales> starts;
    for (const Candidate& candidate : found)
        if (starts.size() < kStarts) starts.push_back(candidate.Scales);
    return starts;
}

std::optional<Optimum> minimum_from(const Track& track, ModelKind kind, RangeShape shape, Criterion criterion,
                                    const TimeScales& start, const std::function<void()>& tick) {
    return Descent(track, kind, shape, criterion, start, tick).Run();
}

}  // namespace wxl::movement_models
