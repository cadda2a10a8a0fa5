#include "analysis/coincidence.h"

#include <algorithm>
#include <iterator>
#include <vector>

namespace wxl::analysis {

Coincidence coincidence_of(std::span<const platform::Point> fixes) {
    std::vector<platform::Point> sorted(fixes.begin(), fixes.end());
    std::sort(sorted.begin(), sorted.end(),
              [](const platform::Point& a, const platform::Point& b) { return a.X != b.X ? a.X < b.X : a.Y < b.Y; });
    Coincidence found;
    for (auto begin = sorted.begin(); begin != sorted.end();) {
        const auto end =
            std::find_if(std::next(begin), sorted.end(), [&](const auto& fix) { return !(fix == *begin); });
        const std::int64_t together = std::distance(begin, end);
        if (together > 1) found.Fixes += static_cast<std::int32_t>(together);
        found.Pairs += together * (together - 1) / 2;
        begin = end;
    }
    return found;
}

}  // namespace wxl::analysis
