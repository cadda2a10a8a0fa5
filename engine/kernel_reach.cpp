#include "engine/kernel_reach.h"

#include "engine/numeric.h"
#include "engine/pilot_density.h"
#include "platform/checked.h"

#include <algorithm>
#include <cmath>
#include <vector>

namespace wxl::engine {
namespace {

/// The largest of the local factors: that of the fix with the thinnest pilot density.
double largest_factor(std::span<const platform::Point> fixes, double bandwidth, WorkClock& clock) {
    const std::vector<double> pilots = pilot_density(fixes, bandwidth, clock);
    double logs = 0.0;
    for (const double pilot : pilots) logs += SafeLog(pilot);
    const double mean = SafeExp(platform::quotient(logs, static_cast<double>(pilots.size())));
    return SafeExp(-0.5 * SafeLog(platform::quotient(*std::ranges::min_element(pilots), mean)));
}

}  // namespace

double widest_bandwidth(std::span<const platform::Point> fixes, const KernelShape& shape, WorkClock& clock) {
    if (!(shape.Bandwidth > 0.0) || fixes.empty()) return 0.0;
    if (!shape.Rescaled)
        return shape.Bandwidth * (shape.Adaptive ? largest_factor(fixes, shape.Bandwidth, clock) : 1.0);

    const double sdX = std::sqrt(Variance(fixes, 0));
    const double sdY = std::sqrt(Variance(fixes, 1));
    const double bandwidth = platform::quotient(shape.Bandwidth, (sdX + sdY) / 2.0);
    std::vector<platform::Point> scaled(fixes.begin(), fixes.end());
    for (platform::Point& fix : scaled) fix = {platform::quotient(fix.X, sdX), platform::quotient(fix.Y, sdY)};
    return bandwidth * std::max(sdX, sdY) * (shape.Adaptive ? largest_factor(scaled, bandwidth, clock) : 1.0);
}

}  // namespace wxl::engine
