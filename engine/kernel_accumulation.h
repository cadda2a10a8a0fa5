#pragma once
// Sum of the fixes' kernels over a grid.

#include "engine/kernel_grid.h"
#include "engine/vector_math.h"
#include "engine/work_clock.h"
#include "platform/values.h"

#include <cstdint>
#include <vector>

namespace wxl::engine {

/// Where the cells lie in the units of the fixes: centres of the columns from west to east and of the rows from north
/// to south.
struct CellCentres {
    std::vector<double> X;
    std::vector<double> Y;
};

/// The kernel of one fix: Weight x exp(-(distance / Bandwidth)^2 / 2) on the cells of its square.
struct FixKernel {
    platform::Point Centre;
    double Bandwidth = 0.0;
    double Weight = 0.0;
    SearchSquare Square;
};

/// Adds the kernels to the grid. The kernel is a product of a function of the column and one of the row, so a fix costs
/// width + height exponentials and width x height multiply-adds; near fixes share one pass over the cells. Kernels are
/// reordered. Contributions below 1E-150 of a fix's peak may be left out.
void accumulate(std::vector<FixKernel>& kernels, const CellCentres& centres, KernelGrid& grid, WorkClock& clock,
                const VectorMath& math = vector_math());

}  // namespace wxl::engine
