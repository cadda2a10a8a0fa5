#include "movement_models/density.h"

#include "engine/vector_math.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <numbers>
#include <numeric>

namespace wxl::movement_models {

namespace {

using engine::kRankOfUpdate;
using platform::Point;
using platform::RasterGeometry;

constexpr double kReach = 10.0;             ///< standard deviations
constexpr double kLargestExponent = 300.0;  ///< of the factors that a rest of the shear leaves

/// Inclusive; empty where First > Last.
struct Range {
    std::int64_t First = 0;
    std::int64_t Last = -1;
    bool IsEmpty() const { return First > Last; }
    std::size_t Count() const { return static_cast<std::size_t>(Last - First + 1); }
};

/// Cells whose centres (first + k x step) lie within `reach` of a place, of `count` cells.
Range cells_near(double place, double reach, double first, double step, std::int64_t low, std::int64_t high) {
    const double from = std::ceil((place - reach - first) / step);
    const double to = std::floor((place + reach - first) / step);
    return {static_cast<std::int64_t>(std::clamp(from, static_cast<double>(low), static_cast<double>(high) + 1.0)),
            static_cast<std::int64_t>(std::clamp(to, static_cast<double>(low) - 1.0, static_cast<double>(high)))};
}

/// Kernels of one covariance on one grid.
class ShearedKernels {
public:
    ShearedKernels(const Matrix2& covariance, const RasterGeometry& geometry, engine::KernelGrid& grid)
        : m_geometry(geometry),
          m_grid(grid),
          m_shear(covariance.XY / covariance.YY),
          m_deviationX(std::sqrt(covariance.Determinant() / covariance.YY)),
          m_deviationY(std::sqrt(covariance.YY)),
          m_peak(1.0 / (2.0 * std::numbers::pi * m_deviationX * m_deviationY)),
          m_middle({geometry.OriginX + 0.5 * geometry.CellSize * geometry.Columns,
                    geometry.OriginY + 0.5 * geometry.CellSize * geometry.Rows}) {
        for (std::int32_t row = 0; row < geometry.Rows; ++row) {
            const double moved = m_shear * (RowCentre(row) - m_middle.Y);
            const double whole = std::nearbyint(moved / geometry.CellSize);
            m_whole.push_back(static_cast<std::int64_t>(whole));
            m_rest.push_back(moved - whole * geometry.CellSize);
        }
        const auto [low, high] = std::minmax_element(m_whole.begin(), m_whole.end());
        m_columns = {-*high, geometry.Columns - 1 - *low};
    }

    /// Whether the factors of the rests stay within what numbers can hold: not for cells as large as kernels.
    bool IsSeparable() const {
        double rest = 0.0;
        for (const double r : m_rest) rest = std::max(rest, std::abs(r));
        const double width = static_cast<double>(m_columns.Count()) * m_geometry.CellSize;
        return rest * width / (m_deviationX * m_deviationX) < kLargestExponent;
    }

    /// In an order that makes neighbours of fixes near each other.
    std::vector<std::size_t> OrderOf(std::span<const Point> fixes) const {
        std::vector<std::size_t> order(fixes.size());
        std::iota(order.begin(), order.end(), std::size_t{0});
        const auto band = [&](std::size_t i) {
            return static_cast<std::int64_t>(std::floor((fixes[i].Y - m_middle.Y) / (2.0 * m_deviationY)));
        };
        std::sort(order.begin(), order.end(), [&](std::size_t a, std::size_t b) {
            const std::int64_t bandA = band(a);
            const std::int64_t bandB = band(b);
            if (bandA != bandB) return bandA < bandB;
            const double sheared = Sheared(fixes[a]) - Sheared(fixes[b]);
            return sheared != 0.0 ? sheared < 0.0 : a < b;
        });
        return order;
    }

    /// Up to kRankOfUpdate fixes in one pass over the cells; FinishRows makes densities of the sums.
    void Add(std::span<const std::size_t> group, std::span<const Point> fixes, std::span<const double> weights) {
        Range columns{m_columns.Last + 1, m_columns.First - 1};
        Range rows{m_geometry.Rows, -1};
        for (const std::size_t i : group) {
            const Range c = ColumnsOf(fixes[i]);
            const Range r = RowsOf(fixes[i]);
            columns = {std::min(columns.First, c.First), std::max(columns.Last, c.Last)};
            rows = {std::min(rows.First, r.First), std::max(rows.Last, r.Last)};
        }
        if (columns.IsEmpty() || rows.IsEmpty()) return;
        const std::size_t width = columns.Count();
        m_columnFactors.assign(kRankOfUpdate * width, 0.0);
        m_rowFactors.assign(kRankOfUpdate * rows.Count(), 0.0);
        for (std::size_t k = 0; k < group.size(); ++k) {
            const Point& fix = fixes[group[k]];
            FillColumns(fix, columns, &m_columnFactors[k * width]);
            FillRows(fix, weights[group[k]], rows, &m_rowFactors[k * rows.Count()]);
        }
        for (std::int64_t row = rows.First; row <= rows.Last; ++row) AddRow(row, rows, columns);
    }

    void FinishRows() {
        std::vector<double> factors(static_cast<std::size_t>(m_geometry.Columns));
        for (std::int32_t row = 0; row < m_geometry.Rows; ++row) {
            const auto r = static_cast<std::size_t>(row);
            if (m_rest[r] == 0.0) continue;
            const double rate = m_rest[r] / (m_deviationX * m_deviationX);
            const std::span<double> cells = m_grid.Row(row);
            for (std::size_t c = 0; c < factors.size(); ++c)
                cells[c] *= std::exp((ColumnCentre(static_cast<std::int64_t>(c) - m_whole[r]) - m_middle.X) * rate);
        }
    }

    /// One fix cell by cell, each with its own exponential.
    void AddLiterally(const Point& fix, double weight) {
        const Range rows = RowsOf(fix);
        for (std::int64_t row = rows.First; row <= rows.Last; ++row) {
            const double dy = RowCentre(row) - fix.Y;
            const double along = dy / m_deviationY;
            const Range columns = cells_near(fix.X + m_shear * dy, kReach * m_deviationX, ColumnCentre(0),
                                             m_geometry.CellSize, 0, m_geometry.Columns - 1);
            const std::span<double> cells = m_grid.Row(static_cast<std::int32_t>(row));
            for (std::int64_t c = columns.First; c <= columns.Last; ++c) {
                const double across = (ColumnCentre(c) - fix.X - m_shear * dy) / m_deviationX;
                cells[static_cast<std::size_t>(c)] +=
                    weight * m_peak * std::exp(-0.5 * (across * across + along * along));
            }
        }
    }

private:
    double ColumnCentre(std::int64_t column) const {
        return m_geometry.OriginX + (static_cast<double>(column) + 0.5) * m_geometry.CellSize;
    }
    double RowCentre(std::int64_t row) const {
        return m_geometry.OriginY + (static_cast<double>(m_geometry.Rows - row) - 0.5) * m_geometry.CellSize;
    }
    double Sheared(const Point& fix) const { return fix.X - m_shear * (fix.Y - m_middle.Y); }

    Range ColumnsOf(const Point& fix) const {
        const double reach = kReach * m_deviationX + 0.5 * m_geometry.CellSize;
        return cells_near(Sheared(fix), reach, ColumnCentre(0), m_geometry.CellSize, m_columns.First, m_columns.Last);
    }
    Range RowsOf(const Point& fix) const {
        const double south = RowCentre(m_geometry.Rows - 1);
        const Range fromSouth =
            cells_near(fix.Y, kReach * m_deviationY, south, m_geometry.CellSize, 0, m_geometry.Rows - 1);
        return {m_geometry.Rows - 1 - fromSouth.Last, m_geometry.Rows - 1 - fromSouth.First};
    }

    void FillColumns(const Point& fix, const Range& columns, double* factors) const {
        const double place = Sheared(fix);
        for (std::size_t c = 0; c < columns.Count(); ++c) {
            const double u = (ColumnCentre(columns.First + static_cast<std::int64_t>(c)) - place) / m_deviationX;
            factors[c] = -0.5 * u * u;
        }
        m_math.Exponentials(factors, columns.Count());
    }

    void FillRows(const Point& fix, double weight, const Range& rows, double* factors) const {
        const double place = Sheared(fix);
        const double variance = m_deviationX * m_deviationX;
        for (std::size_t r = 0; r < rows.Count(); ++r) {
            const std::int64_t row = rows.First + static_cast<std::int64_t>(r);
            const double rest = m_rest[static_cast<std::size_t>(row)];
            const double v = (RowCentre(row) - fix.Y) / m_deviationY;
            factors[r] =
                weight * m_peak * std::exp(-0.5 * v * v + ((m_middle.X - place) * rest - 0.5 * rest * rest) / variance);
        }
    }

    void AddRow(std::int64_t row, const Range& rows, const Range& columns) {
        const std::int64_t moved = m_whole[static_cast<std::size_t>(row)];
        const std::int64_t first = std::max(columns.First, -moved);
        const std::int64_t last = std::min(columns.Last, m_geometry.Columns - 1 - moved);
        if (first > last) return;
        double weights[kRankOfUpdate];
        for (std::size_t k = 0; k < kRankOfUpdate; ++k)
            weights[k] = m_rowFactors[k * rows.Count() + static_cast<std::size_t>(row - rows.First)];
        double* cells = &m_grid.Row(static_cast<std::int32_t>(row))[static_cast<std::size_t>(first + moved)];
        m_math.AddRanks(cells, &m_columnFactors[static_cast<std::size_t>(first - columns.First)], columns.Count(),
                        weights, static_cast<std::size_t>(last - first + 1));
    }

    RasterGeometry m_geometry;
    engine::KernelGrid& m_grid;
    double m_shear;       ///< columns that a row further north moves the kernel by, map units per map unit
    double m_deviationX;  ///< along a row
    double m_deviationY;
    double m_peak;
    Point m_middle;
    std::vector<std::int64_t> m_whole;  ///< cells that each row is moved by
    std::vector<double> m_rest;         ///< and map units beyond that
    Range m_columns;                    ///< of all rows before they are moved
    const engine::VectorMath& m_math = engine::vector_math();
    std::vector<double> m_columnFactors;
    std::vector<double> m_rowFactors;
};

}  // namespace

void add_density(std::span<const Point> fixes, std::span<const double> weights, const Matrix2& covariance,
                 const RasterGeometry& geometry, engine::KernelGrid& grid, engine::WorkClock& clock) {
    ShearedKernels kernels(covariance, geometry, grid);
    if (!kernels.IsSeparable()) {
        for (std::size_t i = 0; i < fixes.size(); ++i) {
            if (weights[i] > 0.0) kernels.AddLiterally(fixes[i], weights[i]);
            clock.Tick();
        }
        return;
    }
    std::vector<std::size_t> order = kernels.OrderOf(fixes);
    std::erase_if(order, [&](std::size_t i) { return weights[i] == 0.0; });
    const std::span<const std::size_t> all(order);
    for (std::size_t first = 0; first < all.size(); first += kRankOfUpdate) {
        kernels.Add(all.subspan(first, std::min(kRankOfUpdate, all.size() - first)), fixes, weights);
        clock.Tick();
    }
    kernels.FinishRows();
}

RasterGeometry grid_around(std::span<const Point> fixes, const Matrix2& covariance, double cellSize,
                           double deviations) {
    const platform::Extent extent = platform::bounds_of(fixes);
    const double reachX = deviations * std::sqrt(covariance.XX);
    const double reachY = deviations * std::sqrt(covariance.YY);
    const double left = std::floor((extent.XMin - reachX) / cellSize);
    const double bottom = std::floor((extent.YMin - reachY) / cellSize);
    const double columns = std::ceil((extent.XMax + reachX) / cellSize) - left;
    const double rows = std::ceil((extent.YMax + reachY) / cellSize) - bottom;
    constexpr double kMost = 2e9;
    return {left * cellSize, bottom * cellSize, cellSize, static_cast<std::int32_t>(std::min(columns, kMost)),
            static_cast<std::int32_t>(std::min(rows, kMost))};
}

double advised_cell_size(const Matrix2& covariance) {
    return ellipse_of(covariance).Minor / 5.0;
}

VolumeCurve::VolumeCurve(const engine::KernelGrid& grid, double cellArea) : m_cellArea(cellArea) {
    for (std::int32_t row = 0; row < grid.Rows(); ++row)
        for (const double cell : grid.Row(row))
            if (cell > 0.0) m_cells.push_back(cell);
    std::sort(m_cells.begin(), m_cells.end(), std::greater<>());
    m_volumes.resize(m_cells.size());
    std::partial_sum(m_cells.begin(), m_cells.end(), m_volumes.begin());
}

double VolumeCurve::AreaOf(double share) const {
    if (m_cells.empty()) return 0.0;
    const double wanted = share * m_volumes.back();
    const auto reached = std::lower_bound(m_volumes.begin(), m_volumes.end(), wanted);
    if (reached == m_volumes.end()) return m_cellArea * static_cast<double>(m_cells.size());
    const auto k = static_cast<std::size_t>(reached - m_volumes.begin());
    const double before = k == 0 ? 0.0 : m_volumes[k - 1];
    return m_cellArea * (static_cast<double>(k) + (wanted - before) / m_cells[k]);
}

std::optional<double> VolumeCurve::LevelOf(double area) const {
    // The k-th densest cell stands at k cells.
    const double place = area / m_cellArea - 1.0;
    if (m_cells.empty() || place > static_cast<double>(m_cells.size() - 1)) return std::nullopt;
    if (place <= 0.0) return m_cells.front();
    const auto k = static_cast<std::size_t>(place);
    const double next = k + 1 < m_cells.size() ? m_cells[k + 1] : m_cells[k];
    return m_cells[k] + (place - static_cast<double>(k)) * (next - m_cells[k]);
}

double VolumeCurve::Volume() const {
    return m_volumes.empty() ? 0.0 : m_cellArea * m_volumes.back();
}

}  // namespace wxl::movement_models
