#include "comparison/permutation.h"

#include <numeric>
#include <utility>

namespace wxl::comparison {

std::uint64_t draw_below(std::mt19937_64& generator, std::uint64_t bound) {
    // 2^64 modulo the bound, which 64 bits cannot hold before the division.
    const std::uint64_t excess = (0 - bound) % bound;
    std::uint64_t drawn = generator();
    while (drawn > UINT64_MAX - excess) drawn = generator();
    return drawn % bound;
}

std::vector<std::size_t> permutation(std::size_t count, std::uint64_t seed) {
    std::mt19937_64 generator(seed);
    std::vector<std::size_t> order(count);
    std::iota(order.begin(), order.end(), std::size_t{0});
    for (std::size_t i = 0; i + 1 < count; ++i)
        std::swap(order[i], order[i + static_cast<std::size_t>(draw_below(generator, count - i))]);
    return order;
}

}  // namespace wxl::comparison
