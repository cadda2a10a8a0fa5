#pragma once
// Sums over all pairs of fixes of a smooth function of their lag, in time that grows with the number of fixes: moments
// of equal time boxes in a tree (Greengard and Rokhlin 1987; by Chebyshev nodes: Fong and Darve 2009).

#include "movement_models/chebyshev.h"

#include <cstddef>
#include <cstdint>
#include <functional>
#include <span>
#include <vector>

namespace wxl::movement_models {

/// A function of a lag >= 0 in seconds.
using LagFunction = std::function<double(double)>;

/// How finely lags must be told apart.
struct LagResolution {
    std::size_t Order = 16;  ///< Chebyshev nodes per panel and box
    int Levels = 0;          ///< the first panel is duration x 2^-Levels wide
};

/// The widest first panel on which all functions given are interpolated to 1e-13 of their largest value, and the order
/// that the further ones need. It is found from narrow panels upwards: on a wide one a short time scale would hide
/// between the samples.
LagResolution resolution_of(double duration, const LagFunction& function);

/// Lags with coefficients: sum over i < j of w_i w_j F(t_j - t_i) = sum over q of c_q F(d_q), for every F as smooth as
/// those that the resolution was made for.
struct LagNodes {
    std::vector<double> Lags;
    std::vector<double> Coefficients;
};

/// The boxes of a track's times. The times are ascending and differ; they must outlive the tree.
class TimeTree {
public:
    /// Boxes are split until fixes meet `nearPairs` others one by one: more of them make fewer boxes.
    TimeTree(std::span<const double> times, const LagResolution& resolution, double nearPairs = 8.0);

    std::size_t Size() const { return m_times.size(); }

    /// Pairs compressed to some hundred lags, for these weights.
    LagNodes Compress(std::span<const double> weights) const;

    friend class LagProduct;

private:
    struct Box {
        std::int64_t Index = 0;                    ///< along its level
        std::size_t First = 0;                     ///< fixes
        std::size_t Last = 0;                      ///< behind the last
        std::size_t Children[2] = {kNone, kNone};  ///< places in the next level
        bool IsLeaf() const { return Children[0] == kNone && Children[1] == kNone; }
        std::size_t Count() const { return Last - First; }
    };
    static constexpr std::size_t kNone = static_cast<std::size_t>(-1);
    using Level = std::vector<Box>;

    double BoxWidth(std::size_t level) const;
    double PairsNearby(const Level& level) const;
    void Split(bool onlyLarge);
    void SplitBox(Box& box, Level& children) const;
    double PlaceIn(const Box& box, std::size_t level, std::size_t fix) const;  ///< -1 to 1

    /// Calls visit(offset, a, b) for all boxes a < b of a level whose fixes meet at this level by moments.
    void VisitMeetings(std::size_t level, const std::function<void(int, std::size_t, std::size_t)>& visit) const;

    /// Calls visit(i, first, last): fix i meets the fixes from first to before last, all later, one by one.
    void VisitNearFixes(const std::function<void(std::size_t, std::size_t, std::size_t)>& visit) const;

    /// The basis of every fix in its leaf, Order numbers a fix.
    std::vector<double> LeafBasis() const;

    /// Moments of every box, by level: Order numbers a box.
    std::vector<std::vector<double>> Moments(std::span<const double> weights, const std::vector<double>& basis) const;

    std::span<const double> m_times;
    LagResolution m_resolution;
    Chebyshev m_chebyshev;
    double m_duration = 0.0;  ///< or the power of two above it
    std::vector<Level> m_levels;
    std::size_t m_uniform = 0;     ///< last level of which every box was split from its parent
    bool m_nextByMoments = false;  ///< neighbours on that level meet by moments, not fix by fix
};

/// Products y_i = sum over j of w_j F(|t_i - t_j|), j = i included, for one function and any weights.
class LagProduct {
public:
    LagProduct(const TimeTree& tree, const LagFunction& function);

    /// `weights` and `product` have one number for each fix.
    void Multiply(std::span<const double> weights, std::span<double> product) const;

private:
    /// A function between the nodes of two boxes.
    struct Kernel {
        std::vector<double> LeftToRight;  ///< (node of the left box, node of the right box)
        std::vector<double> RightToLeft;  ///< the other way
    };
    Kernel KernelOf(double half, int offset) const;

    const TimeTree& m_tree;
    LagFunction m_function;
    double m_diagonal;
    std::vector<std::vector<Kernel>> m_kernels;  ///< by level and offset 1 to 3; empty where no boxes meet
    std::vector<double> m_near;                  ///< values of the pairs that meet fix by fix, in order
    std::vector<double> m_basis;                 ///< Order numbers a fix, in its leaf
};

}  // namespace wxl::movement_models
