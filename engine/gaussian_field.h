#pragma once
#include "engine/vector_math.h"
#include "engine/work_clock.h"
#include "platform/values.h"

#include <cstddef>
#include <span>
#include <vector>

namespace wxl::engine {

/// Sums of exp(-(distance / bandwidth)^2 / 2) over `sources` at each of `targets`, for points that lie close together
/// (some hundred bandwidths across).
///
/// Every sum has at least one term of 1 when the targets are among the sources; then the relative error is below 1E-10
/// at each target, however few or many points are around it. A transform over the whole plane would not do: its error
/// is relative to the largest sum.
class GaussianField {
public:
    explicit GaussianField(double bandwidth);

    /// Pair by pair.
    void AddDirectly(std::span<const platform::Point> sources, std::span<const platform::Point> targets,
                     std::span<double> sums, WorkClock& clock) const;

    /// By Chebyshev moments of the sources in boxes two bandwidths wide; boxes reach five boxes far, one axis after
    /// the other.
    void AddByMoments(std::span<const platform::Point> sources, std::span<const platform::Point> targets,
                      std::span<double> sums, WorkClock& clock) const;

    /// Whether the moments are expected to be faster.
    bool MomentsPay(std::span<const platform::Point> sources, std::span<const platform::Point> targets) const;

    /// Bandwidths beyond which a source adds nothing.
    static constexpr double kReach = 10.0;

private:
    static constexpr std::size_t kOrder = 20;  ///< Chebyshev polynomials along each axis
    static constexpr int kBoxReach = 5;
    static constexpr std::size_t kBoxSize = kOrder * kOrder;

    struct Boxes;
    void AddColumn(const Boxes& boxes, std::size_t column, std::vector<double>& moved) const;
    void AddBox(const Boxes& boxes, std::size_t row, const std::vector<double>& moved, double* series) const;

    double m_bandwidth;
    /// For boxes d = -5 to 5 apart: the coefficients (target order, source order) of exp(-(2 d + u - v)^2 / 2).
    std::vector<double> m_transfers;
};

}  // namespace wxl::engine
