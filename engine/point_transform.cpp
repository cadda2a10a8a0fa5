#include "engine/point_transform.h"

#include "platform/runtime_error.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <fftw3.h>

namespace wxl::engine {
namespace {

constexpr double kPi = 3.141592653589793;

/// The grid resolves this many times the highest wave number asked for.
constexpr double kOversampling = 1.5;

/// Sharpness of the window that suits its width and the oversampling: 0.976 pi w (1 - 1 / (2 x oversampling)).
constexpr double kSharpness = 0.976 * kPi * static_cast<double>(kSpreadWidth) * (1.0 - 0.5 / kOversampling);

constexpr double kHalfWidth = static_cast<double>(kSpreadWidth) / 2.0;

/// Smallest even number at or above `least` without prime factors beyond 7, for which the transform is fast.
std::size_t good_size(double least) {
    for (auto size = static_cast<std::size_t>(std::ceil(least / 2.0)) * 2;; size += 2) {
        std::size_t rest = size;
        for (const std::size_t prime : {2U, 3U, 5U, 7U})
            while (rest % prime == 0) rest /= prime;
        if (rest == 1) return size;
    }
}

/// Transform of the window at a wave number given in radians per cell, by the midpoint rule in theta, z = sin(theta).
double window_gain(double perCell) {
    constexpr int kNodes = 48;
    double sum = 0.0;
    for (int i = 0; i < kNodes; ++i) {
        const double theta = (i + 0.5) * (kPi / 2.0) / kNodes;
        sum += std::exp(kSharpness * (std::cos(theta) - 1.0)) * std::cos(perCell * kHalfWidth * std::sin(theta)) *
               std::cos(theta);
    }
    return sum * kPi / kNodes * kHalfWidth;
}

/// The window's weights on the cells around a position given in cells; returns the first of them.
std::size_t window(double position, double* weights) {
    const double first = std::ceil(position - kHalfWidth);
    for (std::size_t i = 0; i < kSpreadWidth; ++i) {
        const double z = (first + static_cast<double>(i) - position) / kHalfWidth;
        weights[i] = kSharpness * (std::sqrt(std::max(1.0 - z * z, 0.0)) - 1.0);
    }
    return static_cast<std::size_t>(first);
}

}  // namespace

TransformBox TransformBox::For(const platform::Extent& extent, double apart, double highest) {
    const double cell = kPi / (kOversampling * highest);
    // The window reaches beyond the points on both sides.
    const double margin = std::max(apart / cell, static_cast<double>(kSpreadWidth) + 4.0);
    return {{extent.XMin, extent.YMin},
            cell,
            good_size(extent.Width() / cell + margin),
            good_size(extent.Height() / cell + margin)};
}

void PointTransform::Release::operator()(double* cells) const {
    fftw_free(cells);
}

PointTransform::PointTransform(const TransformBox& box, double highest)
    : m_box(box),
      m_highest(highest),
      m_stride(2 * (box.Columns / 2 + 1)),
      m_cells(fftw_alloc_real(m_stride * box.Rows)),
      m_columnWaves(WavesUpTo(highest, box.Columns, false)),
      m_rowWaves(WavesUpTo(highest, box.Rows, true)),
      m_squares(m_columnWaves.size()),
      m_weights(m_columnWaves.size()),
      m_real(m_columnWaves.size()),
      m_imaginary(m_columnWaves.size()) {
    if (!m_cells) platform::Raise(platform::error_number::kOutOfMemory);
}

std::vector<PointTransform::Wave> PointTransform::WavesUpTo(double highest, std::size_t cells, bool negative) const {
    const double step = 2.0 * kPi / (m_box.CellSize * static_cast<double>(cells));
    std::vector<Wave> waves;
    for (std::size_t i = 0; i <= cells / 2 && static_cast<double>(i) * step <= highest; ++i) {
        const double number = static_cast<double>(i) * step;
        const Wave wave{i, number, window_gain(number * m_box.CellSize)};
        waves.push_back(wave);
        if (negative && i > 0) waves.push_back({cells - i, -number, wave.Gain});
    }
    return waves;
}

void PointTransform::Transform(std::span<const platform::Point> points, WorkClock& clock) {
    std::fill_n(m_cells.get(), m_stride * m_box.Rows, 0.0);
    SpreadPoints(points, clock);
    auto* waves = reinterpret_cast<fftw_complex*>(m_cells.get());
    auto* const plan = fftw_plan_dft_r2c_2d(static_cast<int>(m_box.Rows), static_cast<int>(m_box.Columns),
                                            m_cells.get(), waves, FFTW_ESTIMATE);
    if (plan == nullptr) platform::Raise(platform::error_number::kOutOfMemory);
    fftw_execute(plan);
    fftw_destroy_plan(plan);
    clock.Tick();
}

void PointTransform::SpreadPoints(std::span<const platform::Point> points, WorkClock& clock) {
    struct Place {
        std::uint64_t Order;
        double Column;
        double Row;
    };
    // Points that are near one another in memory are spread one after the other.
    std::vector<Place> places;
    places.reserve(points.size());
    for (const platform::Point& point : points) {
        const double column = (point.X - m_box.Corner.X) / m_box.CellSize + kHalfWidth + 1.0;
        const double row = (point.Y - m_box.Corner.Y) / m_box.CellSize + kHalfWidth + 1.0;
        const auto band = static_cast<std::uint64_t>(row) / kSpreadWidth;
        places.push_back({band << 32U | static_cast<std::uint64_t>(column), column, row});
    }
    std::sort(places.begin(), places.end(), [](const Place& a, const Place& b) { return a.Order < b.Order; });

    const VectorMath& math = vector_math();
    std::array<double, 2 * kSpreadWidth> weights{};
    std::size_t done = 0;
    for (const Place& place : places) {
        const std::size_t column = window(place.Column, weights.data());
        const std::size_t row = window(place.Row, weights.data() + kSpreadWidth);
        math.Exponentials(weights.data(), weights.size());
        math.Spread(&m_cells[row * m_stride + column], m_stride, weights.data() + kSpreadWidth, weights.data());
        if (++done % 4096 == 0) clock.Tick();
    }
}

TransformLine PointTransform::Line(std::size_t line) {
    const Wave& row = m_rowWaves[line];
    const double* cells = &m_cells[row.Index * m_stride];
    const double highest = m_highest * m_highest;
    std::size_t count = 0;
    for (; count < m_columnWaves.size(); ++count) {
        const Wave& column = m_columnWaves[count];
        const double square = column.Number * column.Number + row.Number * row.Number;
        if (square > highest) break;
        const double gain = 1.0 / (column.Gain * row.Gain);
        m_squares[count] = square;
        m_weights[count] = column.Index == 0 || 2 * column.Index == m_box.Columns ? 1.0 : 2.0;
        m_real[count] = cells[2 * column.Index] * gain;
        m_imaginary[count] = cells[2 * column.Index + 1] * gain;
    }
    return {{m_squares.data(), count}, {m_weights.data(), count}, {m_real.data(), count}, {m_imaginary.data(), count}};
}

}  // namespace wxl::engine
