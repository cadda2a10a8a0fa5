#pragma once
// The utilization distribution of one animal's autocorrelated fixes, from its model to areas with limits.

#include "akde/animal_models.h"
#include "engine/kernel_grid.h"
#include "movement_models/bandwidth.h"
#include "platform/values.h"

#include <optional>
#include <span>
#include <string>
#include <vector>

namespace wxl::akde {

/// What smooths an animal's fixes.
struct Smoothing {
    movement_models::Bandwidth Bandwidth;
    movement_models::Matrix2 Matrix;     ///< of the kernel, square map units
    std::vector<platform::Point> Fixes;  ///< those of the model, in the order of time
};

/// The bandwidth and the weights that the chosen model advises.
Smoothing smoothing_of(const AnimalModels& fitted, bool optimal, IListener& listener);

/// Cells fine enough for the kernel and for the area of the range; not finer than what a desktop can show.
double advised_cell_size(const Smoothing& smoothing);

/// A grid that all of them have in common: the extent of all fixes, and `buffer` map units around them, or, without
/// one, as far as the widest kernel reaches in four standard deviations. `cellSize` 0: the finest that one of them is
/// advised to have. At least one.
platform::RasterGeometry common_grid(std::span<const Smoothing* const> smoothings, std::optional<double> buffer,
                                     double cellSize);

/// The border of the area that holds a percentage: of the estimate or of a limit of it.
struct RangeIsopleth {
    double Percent = 0.0;
    std::string Bound;            ///< "low", "est", "high"
    double Area = 0.0;            ///< square map units
    std::optional<double> Level;  ///< density at the border; nothing where the grid has not that much area
    friend bool operator==(const RangeIsopleth&, const RangeIsopleth&) = default;
};

struct AnimalRange {
    platform::RasterGeometry Geometry;
    engine::KernelGrid Density;  ///< per square map unit
    double Volume = 0.0;         ///< of the density on the grid; 1 where nothing is cut
    double HighestAtEdge = 0.0;  ///< of the cells along the edge
    std::vector<RangeIsopleth> Isopleths;
};

/// Standard deviations that kernels reach.
inline constexpr double kKernelReach = 10.0;

/// What is wrong with cells that are wider than the smaller standard deviation of a kernel, so that areas on them are
/// rough, in one line without a full stop; "" where nothing is.
std::string coarse_cells_text(const movement_models::Matrix2& kernel, double cellSize);

/// The density on a grid, its areas and their limits by the model's effective sample size `dof`. RuntimeError 7 for
/// more cells than a grid may have, 5 where nothing of the distribution is on them.
AnimalRange range_on(const Smoothing& smoothing, double dof, const platform::RasterGeometry& grid,
                     const std::vector<double>& percentages, IListener& listener);

/// The same on a grid of its own with cells of `cellSize` (0: as advised), which is enlarged until all areas fit or the
/// density has no numbers left.
AnimalRange range_of(const Smoothing& smoothing, double dof, double cellSize, const std::vector<double>& percentages,
                     IListener& listener);

}  // namespace wxl::akde
