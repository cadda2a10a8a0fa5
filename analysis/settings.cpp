#include "analysis/settings.h"

namespace wxl::analysis {

std::vector<double> values_of(const Settings& settings) {
    return is_list(settings.Method) ? list_of(settings).Values : std::vector<double>{0.0};
}

const TypedNumbers& list_of(const Settings& settings) {
    static const TypedNumbers kNone;
    if (settings.Method == BandwidthMethod::kManual) return settings.Bandwidths;
    return settings.Method == BandwidthMethod::kProportion ? settings.Proportions : kNone;
}

}  // namespace wxl::analysis
