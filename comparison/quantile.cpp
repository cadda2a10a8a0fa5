#include "comparison/quantile.h"

#include <algorithm>
#include <cmath>
#include <cstddef>

namespace wxl::comparison {

double quantile(std::span<const double> ascending, double percent) {
    const std::size_t last = ascending.size() - 1;
    const double place = static_cast<double>(last) * percent / 100.0;
    const std::size_t low = std::min(last, static_cast<std::size_t>(std::floor(place)));
    const std::size_t high = std::min(last, low + 1);
    const double share = place - static_cast<double>(low);
    return ascending[low] + share * (ascending[high] - ascending[low]);
}

}  // namespace wxl::comparison
