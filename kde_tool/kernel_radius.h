#pragma once
// How far the kernels of a run reach.

#include "engine/work_clock.h"
#include "kde_tool/run_inputs.h"
#include "platform/values.h"

#include <optional>
#include <span>
#include <string>

namespace wxl::kde_tool {

/// Kernels reach this many bandwidths, unless a run is told otherwise; smallest extents are padded by as much.
inline constexpr double kUsualReach = 4.0;

/// What a run is told for as many bandwidths of the widest kernel.
inline constexpr const char* kWholeReach = "whole";

/// Whether a text says how far kernels reach: "" (as usual), "whole", or a number of bandwidths above 0.
bool is_reach(const std::string& text);

/// Search radius of a distribution in map units, and padding of its smallest extent. `bandwidth` (map units) is HREF
/// for proportions, and `value` the proportion. As usual: four times `bandwidth`, whatever the proportion. A number: so
/// many times the distribution's own bandwidth. "whole": four bandwidths of the widest kernel, which is that of the
/// sparsest fix where the kernel is adaptive, and lies along the wider axis where fixes are rescaled; four own
/// bandwidths where that cannot be computed, and the kernel says why.
double kernel_radius(const RunInputs& inputs, std::span<const platform::Point> fixes, double bandwidth, double value,
                     const engine::Turns& turns);

}  // namespace wxl::kde_tool
