#pragma once
#include "platform/values.h"

namespace wxl::analysis {

/// The grid that covers `extent` enlarged by `margin` on every side, in whole cells of side `cellSize`, counted
/// downward. A side without a cell has 0, one of more than 2147483647 cells that many.
platform::RasterGeometry enlarged_grid(const platform::Extent& extent, double margin, double cellSize);

}  // namespace wxl::analysis
