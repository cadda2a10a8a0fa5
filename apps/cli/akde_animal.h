#pragma once
// The utilization distribution of one animal's autocorrelated fixes, from its model to areas with limits.

#include "apps/cli/movement_fit.h"
#include "engine/kernel_grid.h"
#include "movement_models/bandwidth.h"
#include "platform/values.h"

#include <optional>
#include <string>
#include <vector>

namespace wxl::cli {

/// The border of the area that holds a percentage: of the estimate or of a limit of it.
struct AkdeIsopleth {
    double Percent = 0.0;
    std::string Bound;            ///< "low", "est", "high"
    double Area = 0.0;            ///< square map units
    std::optional<double> Level;  ///< density at the border; nothing where the grid has not that much area
};

/// What the grid is to be.
struct AkdeGrid {
    std::optional<double> CellSize;                     ///< nothing: fine enough for kernel and range
    std::optional<platform::RasterGeometry> Reference;  ///< the grid itself
};

struct AkdeAnimal {
    movement_models::Bandwidth Bandwidth;
    movement_models::Matrix2 Matrix;  ///< of the kernel, square map units
    platform::RasterGeometry Geometry;
    engine::KernelGrid Density;  ///< per square map unit
    double Volume = 0.0;         ///< of the density on the grid; 1 where nothing is cut
    std::vector<AkdeIsopleth> Isopleths;
};

/// Bandwidth, weights, density, areas. The animal has a chosen model. A grid of its own is enlarged until all areas
/// fit or the density has no numbers left. RuntimeError 7 for more cells than a grid may have.
AkdeAnimal akde_of(const AnimalModels& fitted, const AkdeGrid& wanted, const std::vector<double>& percentages,
                   bool optimal, Console& console);

}  // namespace wxl::cli
