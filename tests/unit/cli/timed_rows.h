#pragma once
#include <fmt/format.h>
#include <string>

namespace wxl::cli {

/// Fourteen fixes every two hours, as rows of make_layer, 500 km and 5800 km from the origin.
inline std::string fourteen_rows(const std::string& animal) {
    constexpr int kX[] = {50, 70, 347, 444, 256, -82, 538, 180, 391, 244, 344, -9, -56, -74};
    constexpr int kY[] = {-509, -425, -71, 50, -357, -330, -135, 491, 571, 209, 688, 416, 573, 698};
    std::string rows;
    for (int i = 0; i < 14; ++i)
        rows += fmt::format("{},{},{},2020-01-{:02d}T{:02d}:00:00Z\n", animal, 500000 + kX[i], 5800000 + kY[i],
                            1 + 2 * i / 24, 2 * i % 24);
    return rows;
}

}  // namespace wxl::cli
