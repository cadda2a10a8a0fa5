#pragma once
// The utilization distribution with a bandwidth matrix, and the areas that it holds.

#include "engine/kernel_grid.h"
#include "engine/work_clock.h"
#include "movement_models/models.h"
#include "platform/values.h"

#include <optional>
#include <span>
#include <vector>

namespace wxl::movement_models {

/// Adds to every cell the density at its centre: sum over the fixes of weight x bivariate normal density with this
/// covariance around the fix (per square map unit). The grid has the size of `geometry`.
///
/// A full matrix is taken by shearing: along a row the kernel is a Gaussian of the column, moved from row to row by
/// whole cells and a rest that separates into a factor of the cell and one of the fix. So every covariance costs what
/// round kernels cost. What lies further than 10 standard deviations from a fix is left out: less than 1e-21 of its
/// peak.
void add_density(std::span<const platform::Point> fixes, std::span<const double> weights, const Matrix2& covariance,
                 const platform::RasterGeometry& geometry, engine::KernelGrid& grid, engine::WorkClock& clock);

/// The cells that hold every kernel to four standard deviations: the corner at a whole multiple of the cell size.
platform::RasterGeometry grid_around(std::span<const platform::Point> fixes, const Matrix2& covariance, double cellSize,
                                     double deviations = 4.0);

/// A fifth of the shorter standard deviation of the kernel.
double advised_cell_size(const Matrix2& covariance);

/// How much of a density's volume lies in how much of its densest area (Fleming and Calabrese 2017).
class VolumeCurve {
public:
    /// `cellArea` in square map units.
    VolumeCurve(const engine::KernelGrid& grid, double cellArea);

    /// Smallest area that holds this share (0 to 1) of the volume on the grid, linear between cells.
    double AreaOf(double share) const;

    /// Density at the border of the densest cells with this area, linear between cells; nothing where the grid has not
    /// that much area with a density above 0.
    std::optional<double> LevelOf(double area) const;

    /// Sum of the cells times their area: 1 less what the grid cuts off.
    double Volume() const;

private:
    std::vector<double> m_cells;    ///< densities, from dense to thin
    std::vector<double> m_volumes;  ///< of the first k + 1 cells, in units of a cell
    double m_cellArea;
};

}  // namespace wxl::movement_models
