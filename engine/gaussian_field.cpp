#include "engine/gaussian_field.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace wxl::engine {
namespace {

constexpr double kPi = 3.141592653589793;

/// Costs in nanoseconds, as measured; only their ratios matter.
constexpr double kPerPair = 5.0;
constexpr double kPerBox = 25000.0;
constexpr double kPerPoint = 1200.0;

/// Chebyshev polynomials of order 0 to N - 1 at u.
template <std::size_t N>
void chebyshev(double u, double* values) {
    values[0] = 1.0;
    values[1] = u;
    for (std::size_t k = 2; k < N; ++k) values[k] = 2.0 * u * values[k - 1] - values[k - 2];
}

/// Coefficients (a, b) of the Chebyshev series of exp(-(shift + u - v)^2 / 2) in u and v, by interpolation at the
/// Chebyshev nodes.
template <std::size_t N>
void gaussian_coefficients(double shift, double* coefficients) {
    std::array<double, N> nodes{};
    std::array<std::array<double, N>, N> polynomials{};  // node, order
    for (std::size_t i = 0; i < N; ++i) {
        nodes[i] = std::cos(kPi * (static_cast<double>(i) + 0.5) / static_cast<double>(N));
        for (std::size_t k = 0; k < N; ++k)
            polynomials[i][k] =
                std::cos(kPi * static_cast<double>(k) * (static_cast<double>(i) + 0.5) / static_cast<double>(N)) *
                (k == 0 ? 1.0 : 2.0) / static_cast<double>(N);
    }
    for (std::size_t i = 0; i < N; ++i) {
        for (std::size_t j = 0; j < N; ++j) {
            const double t = shift + nodes[i] - nodes[j];
            const double value = std::exp(-0.5 * t * t);
            for (std::size_t a = 0; a < N; ++a)
                for (std::size_t b = 0; b < N; ++b)
                    coefficients[a * N + b] += value * polynomials[i][a] * polynomials[j][b];
        }
    }
}

}  // namespace

/// Boxes over all points: which points each holds as targets, and the moments of its sources.
struct GaussianField::Boxes {
    Boxes(const platform::Extent& extent, double bandwidth)
        : West(extent.XMin),
          South(extent.YMin),
          Side(2.0 * bandwidth),
          Columns(static_cast<std::size_t>(extent.Width() / Side) + 1),
          Rows(static_cast<std::size_t>(extent.Height() / Side) + 1),
          Moments(Columns * Rows),
          Targets(Columns * Rows) {}

    /// Number of the point's box, and where the point lies in it, from -1 to 1 along each axis.
    std::size_t Locate(const platform::Point& point, double& u, double& v) const {
        const double x = (point.X - West) / Side;
        const double y = (point.Y - South) / Side;
        const std::size_t column = std::min(static_cast<std::size_t>(x), Columns - 1);
        const std::size_t row = std::min(static_cast<std::size_t>(y), Rows - 1);
        u = 2.0 * (x - static_cast<double>(column)) - 1.0;
        v = 2.0 * (y - static_cast<double>(row)) - 1.0;
        return column * Rows + row;
    }

    void AddSource(const platform::Point& point) {
        double u = 0.0;
        double v = 0.0;
        std::vector<double>& moments = Moments[Locate(point, u, v)];
        if (moments.empty()) moments.assign(kBoxSize, 0.0);
        std::array<double, kOrder> across{};
        std::array<double, kOrder> along{};
        chebyshev<kOrder>(u, across.data());
        chebyshev<kOrder>(v, along.data());
        for (std::size_t a = 0; a < kOrder; ++a)
            for (std::size_t b = 0; b < kOrder; ++b) moments[a * kOrder + b] += across[a] * along[b];
    }

    double West;
    double South;
    double Side;
    std::size_t Columns;
    std::size_t Rows;
    std::vector<std::vector<double>> Moments;       ///< (order in x, order in y); empty: no sources
    std::vector<std::vector<std::size_t>> Targets;  ///< indexes of the targets, by box
};

GaussianField::GaussianField(double bandwidth)
    : m_bandwidth(bandwidth), m_transfers((2 * kBoxReach + 1) * kBoxSize, 0.0) {
    for (int d = -kBoxReach; d <= kBoxReach; ++d)
        gaussian_coefficients<kOrder>(2.0 * d, &m_transfers[static_cast<std::size_t>(d + kBoxReach) * kBoxSize]);
}

bool GaussianField::MomentsPay(std::span<const platform::Point> sources,
                               std::span<const platform::Point> targets) const {
    platform::Extent extent = platform::bounds_of(sources);
    const double side = 2.0 * m_bandwidth;
    const double boxes = std::ceil(extent.Width() / side + 1.0) * std::ceil(extent.Height() / side + 1.0);
    const auto count = static_cast<double>(sources.size());
    const double pairs = count * static_cast<double>(targets.size());
    return kPerBox * std::min(boxes, count) + kPerPoint * count < kPerPair * pairs;
}

void GaussianField::AddDirectly(std::span<const platform::Point> sources, std::span<const platform::Point> targets,
                                std::span<double> sums, WorkClock& clock) const {
    constexpr std::size_t kBlock = 512;
    std::vector<double> xs;
    std::vector<double> ys;
    for (const platform::Point& source : sources) {
        xs.push_back(source.X);
        ys.push_back(source.Y);
    }
    const VectorMath& math = vector_math();
    const double inverse = 1.0 / m_bandwidth;
    std::array<double, kBlock> terms{};
    for (std::size_t i = 0; i < targets.size(); ++i) {
        for (std::size_t first = 0; first < sources.size(); first += kBlock) {
            const std::size_t count = std::min(kBlock, sources.size() - first);
            math.SquaredDistances(targets[i].X, targets[i].Y, &xs[first], &ys[first], terms.data(), count);
            for (std::size_t k = 0; k < count; ++k) terms[k] = terms[k] * inverse * inverse * -0.5;
            math.Exponentials(terms.data(), count);
            double sum = 0.0;
            for (std::size_t k = 0; k < count; ++k) sum += terms[k];
            sums[i] += sum;
        }
        clock.Tick();
    }
}

void GaussianField::AddByMoments(std::span<const platform::Point> sources, std::span<const platform::Point> targets,
                                 std::span<double> sums, WorkClock& clock) const {
    platform::Extent extent = platform::bounds_of(sources);
    for (const platform::Point& target : targets) extent.Include(target);
    Boxes boxes(extent, m_bandwidth);
    for (const platform::Point& source : sources) boxes.AddSource(source);
    double u = 0.0;
    double v = 0.0;
    for (std::size_t i = 0; i < targets.size(); ++i) boxes.Targets[boxes.Locate(targets[i], u, v)].push_back(i);

    std::vector<double> moved(boxes.Rows * kBoxSize);
    std::array<double, kBoxSize> series{};
    std::array<double, kOrder> across{};
    std::array<double, kOrder> along{};
    for (std::size_t column = 0; column < boxes.Columns; ++column) {
        const auto* targetsOfColumn = &boxes.Targets[column * boxes.Rows];
        if (std::all_of(targetsOfColumn, targetsOfColumn + boxes.Rows, [](const auto& t) { return t.empty(); }))
            continue;
        AddColumn(boxes, column, moved);
        for (std::size_t row = 0; row < boxes.Rows; ++row) {
            if (targetsOfColumn[row].empty()) continue;
            AddBox(boxes, row, moved, series.data());
            for (const std::size_t target : targetsOfColumn[row]) {
                boxes.Locate(targets[target], u, v);
                chebyshev<kOrder>(u, across.data());
                chebyshev<kOrder>(v, along.data());
                double sum = 0.0;
                for (std::size_t a = 0; a < kOrder; ++a) {
                    double inner = 0.0;
                    for (std::size_t b = 0; b < kOrder; ++b) inner += series[a * kOrder + b] * along[b];
                    sum += across[a] * inner;
                }
                sums[target] += sum;
            }
        }
        clock.Tick();
    }
}

/// Moves the sources' moments along x into one column of boxes: series in x, moments in y.
void GaussianField::AddColumn(const Boxes& boxes, std::size_t column, std::vector<double>& moved) const {
    std::fill(moved.begin(), moved.end(), 0.0);
    const auto here = static_cast<int>(column);
    const int first = std::max(here - kBoxReach, 0);
    const int last = std::min(here + kBoxReach, static_cast<int>(boxes.Columns) - 1);
    for (int from = first; from <= last; ++from) {
        const double* transfer = &m_transfers[static_cast<std::size_t>(here - from + kBoxReach) * kBoxSize];
        for (std::size_t row = 0; row < boxes.Rows; ++row) {
            const std::vector<double>& moments = boxes.Moments[static_cast<std::size_t>(from) * boxes.Rows + row];
            if (moments.empty()) continue;
            double* result = &moved[row * kBoxSize];
            for (std::size_t t = 0; t < kOrder; ++t)
                for (std::size_t a = 0; a < kOrder; ++a) {
                    const double weight = transfer[t * kOrder + a];
                    for (std::size_t b = 0; b < kOrder; ++b) result[t * kOrder + b] += weight * moments[a * kOrder + b];
                }
        }
    }
}

/// Moves them along y into one box: series in x and y.
void GaussianField::AddBox(const Boxes& boxes, std::size_t row, const std::vector<double>& moved,
                           double* series) const {
    std::fill_n(series, kBoxSize, 0.0);
    const auto here = static_cast<int>(row);
    const int first = std::max(here - kBoxReach, 0);
    const int last = std::min(here + kBoxReach, static_cast<int>(boxes.Rows) - 1);
    for (int from = first; from <= last; ++from) {
        // The transfer the other way is this one with its orders exchanged, so that the inner loop runs over
        // neighbours.
        const double* transfer = &m_transfers[static_cast<std::size_t>(from - here + kBoxReach) * kBoxSize];
        const double* moments = &moved[static_cast<std::size_t>(from) * kBoxSize];
        for (std::size_t a = 0; a < kOrder; ++a)
            for (std::size_t b = 0; b < kOrder; ++b) {
                const double weight = moments[a * kOrder + b];
                for (std::size_t t = 0; t < kOrder; ++t) series[a * kOrder + t] += transfer[b * kOrder + t] * weight;
            }
    }
}

}  // namespace wxl::engine
