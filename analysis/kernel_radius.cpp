#include "analysis/kernel_radius.h"

#include "engine/kernel_reach.h"
#include "platform/runtime_error.h"

namespace wxl::analysis {
namespace {

double widest(const Settings& settings, std::span<const platform::Point> fixes, double bandwidth,
              const engine::Turns& turns) {
    engine::WorkClock clock(turns);
    return engine::widest_bandwidth(
        fixes, {.Bandwidth = bandwidth, .Rescaled = settings.Rescale, .Adaptive = !settings.FixedKernel}, clock);
}

}  // namespace

double kernel_radius(const Settings& settings, std::span<const platform::Point> fixes, double bandwidth, double value,
                     const engine::Turns& turns) {
    if (settings.KernelReach.How == Reach::Kind::kUsual) return engine::kUsualReach * bandwidth;
    const double own = settings.Method == BandwidthMethod::kProportion ? value * bandwidth : bandwidth;
    if (settings.KernelReach.How == Reach::Kind::kBandwidths) return settings.KernelReach.Bandwidths * own;
    try {
        return engine::kUsualReach * widest(settings, fixes, own, turns);
    } catch (const platform::RuntimeError&) {
        return engine::kUsualReach * own;
    }
}

}  // namespace wxl::analysis
