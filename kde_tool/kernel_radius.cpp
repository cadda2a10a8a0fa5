#include "kde_tool/kernel_radius.h"

#include "engine/kernel_reach.h"
#include "platform/runtime_error.h"
#include "platform/text.h"

namespace wxl::kde_tool {
namespace {

double widest(const RunInputs& inputs, std::span<const platform::Point> fixes, double bandwidth,
              const engine::Turns& turns) {
    engine::WorkClock clock(turns);
    return engine::widest_bandwidth(
        fixes, {.Bandwidth = bandwidth, .Rescaled = inputs.Rescale, .Adaptive = !inputs.FixedKernel}, clock);
}

}  // namespace

bool is_reach(const std::string& text) {
    return text.empty() || text == kWholeReach || (platform::IsNumeric(text) && platform::NumberFromText(text) > 0.0);
}

double kernel_radius(const RunInputs& inputs, std::span<const platform::Point> fixes, double bandwidth, double value,
                     const engine::Turns& turns) {
    if (inputs.ReachText.empty()) return kUsualReach * bandwidth;
    const double own = inputs.Method == BandwidthMethod::kProportion ? value * bandwidth : bandwidth;
    if (inputs.ReachText != kWholeReach) return platform::NumberFromText(inputs.ReachText) * own;
    try {
        return kUsualReach * widest(inputs, fixes, own, turns);
    } catch (const platform::RuntimeError&) {
        return kUsualReach * own;
    }
}

}  // namespace wxl::kde_tool
