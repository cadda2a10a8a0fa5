#pragma once
#include <span>

namespace wxl::comparison {

/// Quantile of type 7 (Hyndman and Fan 1996): linear between the order statistics, so that equal values give exactly
/// themselves.
/// @param ascending at least one value, in ascending order
/// @param percent 0 to 100
double quantile(std::span<const double> ascending, double percent);

}  // namespace wxl::comparison
