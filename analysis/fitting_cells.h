#pragma once
#include "platform/values.h"

namespace wxl::analysis {

/// The side of cells that suits a bandwidth (map units): a tenth of it, rounded to the nearest of 1, 2 and 5 times a
/// power of ten. Where `extent` enlarged by `margin` would then have more than 10 million cells, the next such sides
/// are taken while they are at most half the bandwidth. 0 for a bandwidth that is not above 0 and finite.
double fitting_cell_size(double bandwidth, const platform::Extent& extent, double margin);

}  // namespace wxl::analysis
