#pragma once
// How far the kernels of a run reach.

#include "analysis/settings.h"
#include "engine/work_clock.h"
#include "platform/values.h"

#include <span>

namespace wxl::analysis {

/// Search radius of a distribution in map units, and padding of its smallest extent. `bandwidth` (map units) is HREF
/// for proportions, and `value` the proportion. As usual: four times `bandwidth`, whatever the proportion. A number: so
/// many times the distribution's own bandwidth. "whole": four bandwidths of the widest kernel, which is that of the
/// sparsest fix where the kernel is adaptive, and lies along the wider axis where fixes are rescaled; four own
/// bandwidths where that cannot be computed, and the kernel says why.
double kernel_radius(const Settings& settings, std::span<const platform::Point> fixes, double bandwidth, double value,
                     const engine::Turns& turns);

}  // namespace wxl::analysis
