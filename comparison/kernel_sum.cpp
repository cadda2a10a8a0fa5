#include "comparison/kernel_sum.h"

#include "engine/kernel_accumulation.h"
#include "engine/kernel_reach.h"
#include "engine/numeric.h"
#include "platform/runtime_error.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <vector>

namespace wxl::comparison {
namespace {

constexpr double kUsualCells = 1e6;
constexpr double kMostCells = 25e6;
constexpr std::int32_t kSideLimit = 50'000'000;

struct CellRange {
    std::int32_t First = 0;
    std::int32_t Last = -1;
};

/// The cells within reach of the one that lies `offset` from the first, as far as the grid goes.
CellRange cells_around(double offset, double cellSize, double reach, std::int32_t count) {
    const double own = std::floor(offset / cellSize);
    const double first = std::max(own - reach, 0.0);
    const double last = std::min(own + reach, count - 1.0);
    if (!(first <= last)) return {};
    return {static_cast<std::int32_t>(first), static_cast<std::int32_t>(last)};
}

engine::CellCentres centres_of(const platform::RasterGeometry& grid) {
    engine::CellCentres centres;
    for (std::int32_t column = 0; column < grid.Columns; ++column)
        centres.X.push_back(grid.OriginX + (column + 0.5) * grid.CellSize);
    for (std::int32_t row = 0; row < grid.Rows; ++row)
        centres.Y.push_back(grid.OriginY + (grid.Rows - row - 0.5) * grid.CellSize);
    return centres;
}

std::int32_t whole_cells(double length, double cellSize) {
    const double cells = std::ceil(length / cellSize);
    return cells > kSideLimit ? kSideLimit + 1 : std::max(1, static_cast<std::int32_t>(cells));
}

double cells_of(const platform::RasterGeometry& grid) {
    return static_cast<double>(grid.Columns) * static_cast<double>(grid.Rows);
}

/// 1, 2, 5, 10, 20, 50 ... map units.
double round_size(int number) {
    constexpr std::array<double, 3> kDigits = {1.0, 2.0, 5.0};
    double size = kDigits[static_cast<std::size_t>(number) % 3];
    for (int decade = 0; decade < number / 3; ++decade) size *= 10.0;
    return size;
}

bool have_spread(std::span<const platform::Point> fixes) {
    constexpr double kRounding = 1e-12;
    const platform::Extent extent = platform::bounds_of(fixes);
    if (extent.IsEmpty()) return false;
    const double size =
        std::max({std::abs(extent.XMin), std::abs(extent.XMax), std::abs(extent.YMin), std::abs(extent.YMax)});
    return std::max(extent.Width(), extent.Height()) > kRounding * size;
}

}  // namespace

KernelSum::KernelSum(const platform::RasterGeometry& grid) : m_grid(grid) {
    Clear();
}

void KernelSum::Clear() {
    m_cells.Reset(m_grid.Columns, m_grid.Rows);
}

void KernelSum::Add(std::span<const platform::Point> fixes, double bandwidth) {
    const double reach = std::floor(engine::kUsualReach * bandwidth / m_grid.CellSize) + 1.0;
    const double top = m_grid.OriginY + m_grid.Rows * m_grid.CellSize;
    std::vector<engine::FixKernel> kernels;
    for (const platform::Point& fix : fixes) {
        const CellRange columns = cells_around(fix.X - m_grid.OriginX, m_grid.CellSize, reach, m_grid.Columns);
        const CellRange rows = cells_around(top - fix.Y, m_grid.CellSize, reach, m_grid.Rows);
        kernels.push_back({.Centre = fix,
                           .Bandwidth = bandwidth,
                           .Weight = 1.0,
                           .Square = {columns.First, columns.Last, rows.First, rows.Last}});
    }
    engine::WorkClock clock;
    engine::accumulate(kernels, centres_of(m_grid), m_cells, clock);
}

std::span<const double> KernelSum::Cells() const {
    const std::size_t count = static_cast<std::size_t>(m_grid.Columns) * static_cast<std::size_t>(m_grid.Rows);
    return {m_cells.Row(0).data(), count};
}

platform::RasterGeometry covering_grid(const platform::Extent& extent, double margin, double cellSize) {
    return {extent.XMin - margin, extent.YMin - margin, cellSize, whole_cells(extent.Width() + 2.0 * margin, cellSize),
            whole_cells(extent.Height() + 2.0 * margin, cellSize)};
}

double usual_cell_size(double smallestBandwidth, const platform::Extent& extent, double margin) {
    constexpr double kCellsPerBandwidth = 5.0;
    int number = 0;
    while (round_size(number + 1) <= smallestBandwidth / kCellsPerBandwidth) ++number;
    const auto cells = [&] { return cells_of(covering_grid(extent, margin, round_size(number))); };
    while (cells() > kUsualCells && round_size(number + 1) <= smallestBandwidth) ++number;
    while (cells() > kMostCells) ++number;
    return round_size(number);
}

double reference_bandwidth(std::span<const platform::Point> fixes) {
    if (fixes.size() < 2 || !have_spread(fixes)) return 0.0;
    try {
        return engine::ReferenceBandwidth(fixes);
    } catch (const platform::RuntimeError&) {
        return 0.0;
    }
}

}  // namespace wxl::comparison
