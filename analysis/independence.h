#pragma once
#include "platform/values.h"

#include <optional>
#include <span>

namespace wxl::analysis {

/// Schoener's ratio t^2 / r^2 of successive fixes (Schoener 1981): mean square distance between successive fixes over
/// mean square distance from the centre, both sums divided by n - 1. About 2 for independent fixes. Not defined for
/// fewer than two fixes and when all fixes share one location.
std::optional<double> Schoener(std::span<const platform::Point> fixes);

/// Index of Swihart and Slade (1985) from the lag-one pairs: correlation of x with next x, plus y with next y, plus the
/// absolute values of the two cross terms. Not defined for fewer than three fixes, nor when one of the four
/// coordinates (leading or trailing, x or y) does not vary.
std::optional<double> SwihartSlade(std::span<const platform::Point> fixes);

}  // namespace wxl::analysis
