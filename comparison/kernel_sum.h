#pragma once
#include "engine/kernel_grid.h"
#include "platform/values.h"

#include <span>

namespace wxl::comparison {

/// The fixed bivariate normal kernels of fixes, added up on a grid. Kernels reach four bandwidths, in whole cells
/// beyond the fix's own, as those of an analysis do.
class KernelSum {
public:
    /// RuntimeError 7 for more cells than a raster may have, or no memory.
    explicit KernelSum(const platform::RasterGeometry& grid);

    /// Makes every cell 0.
    void Clear();

    /// Adds the kernels of the fixes, each 1 at its centre.
    /// @param fixes map units, finite
    /// @param bandwidth map units, above 0
    void Add(std::span<const platform::Point> fixes, double bandwidth);

    /// Proportional to the density, row by row from the north.
    std::span<const double> Cells() const;

    const platform::RasterGeometry& Grid() const { return m_grid; }

private:
    platform::RasterGeometry m_grid;
    engine::KernelGrid m_cells;
};

/// The grid that covers `extent` enlarged by `margin` on every side, in whole cells, counted upward.
platform::RasterGeometry covering_grid(const platform::Extent& extent, double margin, double cellSize);

/// A cell size for distributions of that bandwidth and more: the largest of 1, 2, 5, 10, 20, 50 ... map units that is a
/// fifth of the bandwidth or less, at least 1. Greater, but not above the bandwidth, where the grid of that extent,
/// enlarged by `margin`, would have more than a million cells; greater still where it would have more than 25 million.
double usual_cell_size(double smallestBandwidth, const platform::Extent& extent, double margin);

/// HREF in map units, or 0 where there is none: fewer than two fixes, or fixes that differ by rounding alone.
double reference_bandwidth(std::span<const platform::Point> fixes);

}  // namespace wxl::comparison
