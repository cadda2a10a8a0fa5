#pragma once
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <memory>
#include <span>

namespace wxl::engine {

/// Inclusive ranges of cells within the grid; empty where First > Last.
struct SearchSquare {
    std::int32_t FirstColumn = 0;
    std::int32_t LastColumn = -1;
    std::int32_t FirstRow = 0;
    std::int32_t LastRow = -1;

    bool IsEmpty() const { return FirstColumn > LastColumn || FirstRow > LastRow; }
    double Area() const;
};

/// A grid of densities, indexed (column, row) from 0, row 0 north. Rows lie one after the other in memory, so that a
/// raster is streamed out row by row. What is never written takes no memory: large grids come as pages of zeros that
/// the system keeps once, so that one animal in a corner of the grid of all costs what the corner costs.
class KernelGrid {
public:
    /// Largest number of cells that a grid may have.
    static constexpr std::int64_t kMaximumCells = 50'000'000;

    KernelGrid() = default;

    /// Makes every one of columns x rows cells 0. RuntimeError 9 for a negative size, 7 for more than kMaximumCells or
    /// when there is no memory; nothing is allocated then.
    void Reset(std::int32_t columns, std::int32_t rows);

    std::int32_t Columns() const { return m_columns; }
    std::int32_t Rows() const { return m_rows; }

    /// The cell (column, row), both within the grid.
    double operator()(std::int32_t column, std::int32_t row) const { return m_cells.get()[Index(column, row)]; }
    double& operator()(std::int32_t column, std::int32_t row) { return m_cells.get()[Index(column, row)]; }

    /// The cells of one row from west to east.
    std::span<const double> Row(std::int32_t row) const { return {m_cells.get() + Index(0, row), Width()}; }
    std::span<double> Row(std::int32_t row) { return {m_cells.get() + Index(0, row), Width()}; }

private:
    struct Free {
        // NOLINTNEXTLINE(cppcoreguidelines-no-malloc,cppcoreguidelines-owning-memory): what calloc gave
        void operator()(double* cells) const { std::free(cells); }
    };

    std::size_t Width() const { return static_cast<std::size_t>(m_columns); }
    std::size_t Index(std::int32_t column, std::int32_t row) const {
        return static_cast<std::size_t>(row) * Width() + static_cast<std::size_t>(column);
    }

    std::int32_t m_columns = 0;
    std::int32_t m_rows = 0;
    std::unique_ptr<double, Free> m_cells;
};

}  // namespace wxl::engine
