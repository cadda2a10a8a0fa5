#pragma once
// What suits a sample, for those who have not chosen yet.

#include "analysis/animal_fixes.h"
#include "analysis/statistics.h"

#include <optional>
#include <span>

namespace wxl::analysis {

/// The nearest of 1, 2 and 5 times a power of ten; half-way the larger one. `value` is above 0 and finite.
double round_number(double value);

/// Side of cells in map units: a tenth of the smallest reference bandwidth above 0 as a round number, at least 1, and
/// as much larger as the smallest extent of every animal needs to fit into a raster. `hrefs` are those of `animals`.
/// Nothing where no reference bandwidth is above 0.
std::optional<double> suggested_cell_size(std::span<const AnimalFixes> animals, std::span<const HrefRow> hrefs);

}  // namespace wxl::analysis
