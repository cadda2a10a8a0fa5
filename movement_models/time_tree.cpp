#include "movement_models/time_tree.h"

#include <algorithm>
#include <cmath>

namespace wxl::movement_models {

namespace {

constexpr int kMostLevels = 50;       ///< below a panel of 2^-50 of the duration times have no digits left
constexpr std::size_t kDeepest = 52;  ///< box numbers stay whole numbers of a double
constexpr std::size_t kHighOrder = 20;
constexpr std::size_t kLargeBox = 16;
constexpr int kSamples = 65;

/// The power of two at or above a duration: boxes of such a size have exact edges, however long the duration is beside
/// the lags that matter.
double power_of_two(double duration) {
    int exponent = 0;
    const double fraction = std::frexp(duration, &exponent);
    return fraction == 0.5 || duration == 0.0 ? duration : std::ldexp(1.0, exponent);
}

/// Largest error of interpolating `function` on [from, to], beside its value there.
double interpolation_error(const Chebyshev& chebyshev, double from, double to, const LagFunction& function) {
    std::vector<double> values;
    for (const double node : chebyshev.Nodes())
        values.push_back(function(0.5 * (from + to) + 0.5 * (to - from) * node));
    std::vector<double> basis(chebyshev.Order());
    double worst = 0.0;
    for (int k = 0; k < kSamples; ++k) {
        const double x = -1.0 + 2.0 * k / (kSamples - 1.0);
        chebyshev.Basis(x, basis.data());
        double sum = 0.0;
        for (std::size_t a = 0; a < basis.size(); ++a) sum += basis[a] * values[a];
        worst = std::max(worst, std::abs(sum - function(0.5 * (from + to) + 0.5 * (to - from) * x)));
    }
    return worst;
}

/// Panels of lags and what is poured into them.
class Panels {
public:
    Panels(double duration, const LagResolution& resolution, const Chebyshev& chebyshev)
        : m_first(std::ldexp(duration, -resolution.Levels)),
          m_chebyshev(chebyshev),
          m_sums(static_cast<std::size_t>(resolution.Levels + 2) * resolution.Order),
          m_basis(resolution.Order) {}

    void Add(double lag, double weight) {
        const int panel = PanelOf(lag);
        const double from = panel == 0 ? 0.0 : std::ldexp(m_first, panel - 1);
        const double to = std::ldexp(m_first, panel);
        m_chebyshev.Basis((2.0 * lag - from - to) / (to - from), m_basis.data());
        double* sums = &m_sums[static_cast<std::size_t>(panel) * m_basis.size()];
        for (std::size_t a = 0; a < m_basis.size(); ++a) sums[a] += weight * m_basis[a];
    }

    LagNodes Nodes() const {
        LagNodes nodes;
        const std::size_t order = m_basis.size();
        for (std::size_t k = 0; k < m_sums.size(); ++k) {
            if (m_sums[k] == 0.0) continue;
            const auto panel = static_cast<int>(k / order);
            const double from = panel == 0 ? 0.0 : std::ldexp(m_first, panel - 1);
            const double to = std::ldexp(m_first, panel);
            nodes.Lags.push_back(0.5 * (from + to) + 0.5 * (to - from) * m_chebyshev.Nodes()[k % order]);
            nodes.Coefficients.push_back(m_sums[k]);
        }
        return nodes;
    }

private:
    int PanelOf(double lag) const {
        if (lag <= m_first) return 0;
        int exponent = 0;
        const double fraction = std::frexp(lag / m_first, &exponent);
        const int panel = fraction == 0.5 ? exponent - 1 : exponent;
        return std::min(panel, static_cast<int>(m_sums.size() / m_basis.size()) - 1);
    }

    double m_first;
    const Chebyshev& m_chebyshev;
    std::vector<double> m_sums;
    std::vector<double> m_basis;
};

}  // namespace

LagResolution resolution_of(double duration, const LagFunction& function) {
    constexpr double kExact = 1e-13;
    constexpr double kGood = 1e-11;
    LagResolution resolution;
    const Chebyshev chebyshev(resolution.Order);
    const double largest = std::abs(function(0.0));
    duration = power_of_two(duration);
    int levels = kMostLevels;
    while (levels > 0 &&
           interpolation_error(chebyshev, 0.0, std::ldexp(duration, 2 - levels), function) <= kExact * largest)
        --levels;
    resolution.Levels = levels;
    for (int panel = 0; panel < levels; ++panel) {
        const double from = std::ldexp(duration, panel - levels);
        if (interpolation_error(chebyshev, from, 2.0 * from, function) > kGood * largest) resolution.Order = kHighOrder;
    }
    return resolution;
}

TimeTree::TimeTree(std::span<const double> times, const LagResolution& resolution, double nearPairs)
    : m_times(times),
      m_resolution(resolution),
      m_chebyshev(resolution.Order),
      m_duration(times.empty() ? 0.0 : power_of_two(times.back() - times.front())) {
    m_levels.push_back({{0, 0, times.size(), {kNone, kNone}}});
    if (times.size() < 2) return;
    const double enough = nearPairs * static_cast<double>(times.size());
    while (static_cast<int>(m_levels.size()) <= m_resolution.Levels && PairsNearby(m_levels.back()) > enough)
        Split(false);
    m_uniform = m_levels.size() - 1;
    m_nextByMoments = PairsNearby(m_levels.back()) > enough;
    while (m_nextByMoments && m_levels.size() <= kDeepest &&
           std::any_of(m_levels.back().begin(), m_levels.back().end(),
                       [](const Box& box) { return box.Count() > kLargeBox; }))
        Split(true);
}

double TimeTree::BoxWidth(std::size_t level) const {
    return std::ldexp(m_duration, -static_cast<int>(level));
}

double TimeTree::PairsNearby(const Level& level) const {
    double pairs = 0.0;
    for (std::size_t k = 0; k < level.size(); ++k) {
        const auto count = static_cast<double>(level[k].Count());
        pairs += 0.5 * count * (count - 1.0);
        if (k + 1 < level.size() && level[k + 1].Index == level[k].Index + 1)
            pairs += count * static_cast<double>(level[k + 1].Count());
    }
    return pairs;
}

void TimeTree::Split(bool onlyLarge) {
    Level children;
    for (Box& box : m_levels.back())
        if (!onlyLarge || box.Count() > kLargeBox) SplitBox(box, children);
    m_levels.push_back(std::move(children));
}

void TimeTree::SplitBox(Box& box, Level& children) const {
    const double middle = m_times.front() + BoxWidth(m_levels.size()) * static_cast<double>(2 * box.Index + 1);
    const auto begin = m_times.begin();
    const auto first =
        static_cast<std::size_t>(std::lower_bound(begin + static_cast<std::ptrdiff_t>(box.First),
                                                  begin + static_cast<std::ptrdiff_t>(box.Last), middle) -
                                 begin);
    const std::size_t edges[3] = {box.First, first, box.Last};
    for (std::size_t half = 0; half < 2; ++half) {
        if (edges[half] == edges[half + 1]) continue;
        box.Children[half] = children.size();
        children.push_back(
            {2 * box.Index + static_cast<std::int64_t>(half), edges[half], edges[half + 1], {kNone, kNone}});
    }
}

double TimeTree::PlaceIn(const Box& box, std::size_t level, std::size_t fix) const {
    const double width = BoxWidth(level);
    const double from = m_times.front() + width * static_cast<double>(box.Index);
    return std::clamp(2.0 * (m_times[fix] - from) / width - 1.0, -1.0, 1.0);
}

void TimeTree::VisitMeetings(std::size_t level, const std::function<void(int, std::size_t, std::size_t)>& visit) const {
    const Level& boxes = m_levels[level];
    for (std::size_t a = 0; a < boxes.size(); ++a)
        for (std::size_t b = a + 1; b < boxes.size() && boxes[b].Index <= boxes[a].Index + 3; ++b) {
            const auto offset = static_cast<int>(boxes[b].Index - boxes[a].Index);
            const bool even = boxes[a].Index % 2 == 0;
            const bool meets = level > m_uniform ? offset == 1 && even
                                                 : offset == 2 || (offset == 3 && even) ||
                                                       (offset == 1 && level == m_uniform && m_nextByMoments);
            if (meets) visit(offset, a, b);
        }
}

void TimeTree::VisitNearFixes(const std::function<void(std::size_t, std::size_t, std::size_t)>& visit) const {
    for (std::size_t level = m_uniform; level < m_levels.size(); ++level) {
        const Level& boxes = m_levels[level];
        for (std::size_t k = 0; k < boxes.size(); ++k) {
            if (!boxes[k].IsLeaf()) continue;
            const bool next = !m_nextByMoments && k + 1 < boxes.size() && boxes[k + 1].Index == boxes[k].Index + 1;
            const std::size_t last = next ? boxes[k + 1].Last : boxes[k].Last;
            for (std::size_t i = boxes[k].First; i < boxes[k].Last; ++i)
                if (i + 1 < last) visit(i, i + 1, last);
        }
    }
}

std::vector<double> TimeTree::LeafBasis() const {
    const std::size_t order = m_resolution.Order;
    std::vector<double> basis(m_times.size() * order);
    for (std::size_t level = m_uniform; level < m_levels.size(); ++level)
        for (const Box& box : m_levels[level])
            for (std::size_t i = box.First; box.IsLeaf() && i < box.Last; ++i)
                m_chebyshev.Basis(PlaceIn(box, level, i), &basis[i * order]);
    return basis;
}

std::vector<std::vector<double>> TimeTree::Moments(std::span<const double> weights,
                                                   const std::vector<double>& basis) const {
    const std::size_t order = m_resolution.Order;
    std::vector<std::vector<double>> moments(m_levels.size());
    for (std::size_t level = m_levels.size(); level-- > 0;) {
        const Level& boxes = m_levels[level];
        moments[level].assign(boxes.size() * order, 0.0);
        for (std::size_t k = 0; k < boxes.size(); ++k) {
            double* sums = &moments[level][k * order];
            if (boxes[k].IsLeaf()) {
                for (std::size_t i = boxes[k].First; i < boxes[k].Last; ++i)
                    for (std::size_t a = 0; a < order; ++a) sums[a] += weights[i] * basis[i * order + a];
                continue;
            }
            for (int half = 0; half < 2; ++half)
                if (const std::size_t child = boxes[k].Children[half]; child != kNone)
                    m_chebyshev.AddProduct(m_chebyshev.FromHalf(half).data(), &moments[level + 1][child * order], sums);
        }
    }
    return moments;
}

LagNodes TimeTree::Compress(std::span<const double> weights) const {
    const std::size_t order = m_resolution.Order;
    Panels panels(m_duration, m_resolution, m_chebyshev);
    const auto moments = Moments(weights, LeafBasis());
    for (std::size_t level = 0; level < m_levels.size(); ++level) {
        std::vector<double> products[4];
        VisitMeetings(level, [&](int offset, std::size_t a, std::size_t b) {
            std::vector<double>& sums = products[offset];
            sums.resize(order * order);
            const double* left = &moments[level][a * order];
            const double* right = &moments[level][b * order];
            for (std::size_t p = 0; p < order; ++p)
                for (std::size_t q = 0; q < order; ++q) sums[p * order + q] += left[p] * right[q];
        });
        const double half = 0.5 * BoxWidth(level);
        for (int offset = 1; offset <= 3; ++offset)
            for (std::size_t k = 0; k < products[offset].size(); ++k) {
                const double nodes = m_chebyshev.Nodes()[k % order] - m_chebyshev.Nodes()[k / order];
                panels.Add(half * (2.0 * offset + nodes), products[offset][k]);
            }
    }
    VisitNearFixes([&](std::size_t i, std::size_t first, std::size_t last) {
        if (weights[i] == 0.0) return;
        for (std::size_t j = first; j < last; ++j) panels.Add(m_times[j] - m_times[i], weights[i] * weights[j]);
    });
    return panels.Nodes();
}

LagProduct::Kernel LagProduct::KernelOf(double half, int offset) const {
    const Chebyshev& chebyshev = m_tree.m_chebyshev;
    const std::size_t order = chebyshev.Order();
    Kernel kernel;
    for (std::size_t k = 0; k < order * order; ++k) {
        const double nodes = chebyshev.Nodes()[k % order] - chebyshev.Nodes()[k / order];
        kernel.LeftToRight.push_back(m_function(half * (2.0 * offset + nodes)));
        kernel.RightToLeft.push_back(m_function(half * (2.0 * offset - nodes)));
    }
    return kernel;
}

LagProduct::LagProduct(const TimeTree& tree, const LagFunction& function)
    : m_tree(tree),
      m_function(function),
      m_diagonal(function(0.0)),
      m_kernels(tree.m_levels.size()),
      m_basis(tree.LeafBasis()) {
    for (std::size_t level = 0; level < tree.m_levels.size(); ++level) {
        m_kernels[level].resize(4);
        const double half = 0.5 * tree.BoxWidth(level);
        tree.VisitMeetings(level, [&](int offset, std::size_t, std::size_t) {
            Kernel& kernel = m_kernels[level][static_cast<std::size_t>(offset)];
            if (kernel.LeftToRight.empty()) kernel = KernelOf(half, offset);
        });
    }
    tree.VisitNearFixes([&](std::size_t i, std::size_t first, std::size_t last) {
        for (std::size_t j = first; j < last; ++j) m_near.push_back(m_function(tree.m_times[j] - tree.m_times[i]));
    });
}

void LagProduct::Multiply(std::span<const double> weights, std::span<double> product) const {
    const Chebyshev& chebyshev = m_tree.m_chebyshev;
    const std::size_t order = chebyshev.Order();
    const auto moments = m_tree.Moments(weights, m_basis);
    auto local = moments;
    for (auto& level : local) std::fill(level.begin(), level.end(), 0.0);
    for (std::size_t level = 0; level < moments.size(); ++level)
        m_tree.VisitMeetings(level, [&](int offset, std::size_t a, std::size_t b) {
            const Kernel& kernel = m_kernels[level][static_cast<std::size_t>(offset)];
            chebyshev.AddProduct(kernel.LeftToRight.data(), &moments[level][a * order], &local[level][b * order]);
            chebyshev.AddProduct(kernel.RightToLeft.data(), &moments[level][b * order], &local[level][a * order]);
        });
    for (std::size_t i = 0; i < product.size(); ++i) product[i] = m_diagonal * weights[i];
    for (std::size_t level = 0; level < moments.size(); ++level)
        for (std::size_t k = 0; k < m_tree.m_levels[level].size(); ++k) {
            const TimeTree::Box& box = m_tree.m_levels[level][k];
            const double* here = &local[level][k * order];
            for (int half = 0; half < 2; ++half)
                if (const std::size_t child = box.Children[half]; child != TimeTree::kNone)
                    chebyshev.AddProduct(chebyshev.ToHalf(half).data(), here, &local[level + 1][child * order]);
            for (std::size_t i = box.First; box.IsLeaf() && i < box.Last; ++i)
                for (std::size_t a = 0; a < order; ++a) product[i] += m_basis[i * order + a] * here[a];
        }
    const double* value = m_near.data();
    m_tree.VisitNearFixes([&](std::size_t i, std::size_t first, std::size_t last) {
        double sum = 0.0;
        for (std::size_t j = first; j < last; ++j, ++value) {
            sum += *value * weights[j];
            product[j] += *value * weights[i];
        }
        product[i] += sum;
    });
}

}  // namespace wxl::movement_models
