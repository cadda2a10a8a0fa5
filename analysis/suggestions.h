#pragma once
// What suits a sample, for those who have not chosen yet.

#include "analysis/animal_fixes.h"
#include "analysis/statistics.h"

#include <optional>
#include <span>

namespace wxl::analysis {

/// One side of cells in map units for all animals: the largest that fits the smallest reference bandwidth above 0 and
/// the smallest extent of each of them (fitting_cell_size), at least 1. `hrefs` are those of `animals`. Nothing where
/// no reference bandwidth is above 0.
std::optional<double> suggested_cell_size(std::span<const AnimalFixes> animals, std::span<const HrefRow> hrefs);

}  // namespace wxl::analysis
