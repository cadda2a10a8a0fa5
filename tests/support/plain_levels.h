#pragma once
// Levels by plain accumulation, anew for every percentage: the literal twin of VolumeHistogram.

#include "platform/checked.h"
#include "platform/runtime_error.h"

#include <cstdint>
#include <vector>

namespace wxl::tests {

inline std::vector<double> plain_levels(const std::vector<double>& cells, const std::vector<double>& percentages) {
    double minimum = cells.front();
    double maximum = cells.front();
    for (const double cell : cells) {
        if (cell < minimum) minimum = cell;
        if (cell > maximum) maximum = cell;
    }
    const double range = maximum - minimum;
    std::vector<std::int32_t> histogram(100001, 0);
    for (const double cell : cells) {
        const std::int32_t bin = platform::floor_i32(platform::quotient((cell - minimum) * 100000.0, range));
        if (bin < 0 || bin > 100000) platform::Raise(platform::error_number::kSubscript);
        ++histogram.at(static_cast<std::size_t>(bin));
    }
    const auto weight = [&](std::int32_t b) {
        if (b < 0 || b > 100000) platform::Raise(platform::error_number::kSubscript);
        return platform::product_i32(histogram.at(static_cast<std::size_t>(b)), b);
    };
    double total = 0.0;
    for (std::int32_t b = 1; b <= 100000; ++b) total += weight(b);
    std::vector<double> levels;
    for (const double percentage : percentages) {
        const double target = percentage / 100.0 * total;
        double accumulated = 0.0;
        std::int32_t b = 100001;
        while (accumulated < target) {
            --b;
            accumulated += weight(b);
        }
        levels.push_back(b * range / 100000.0 + minimum);
    }
    return levels;
}

}  // namespace wxl::tests
