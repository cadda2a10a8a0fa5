#include "comparison/permutation.h"

#include <algorithm>
#include <gtest/gtest.h>
#include <set>

namespace wxl::comparison {
namespace {

TEST(Permutation, Is_the_stated_one_on_every_machine) {
    EXPECT_EQ(permutation(10, 42), (std::vector<std::size_t>{6, 0, 4, 7, 9, 8, 1, 3, 5, 2}));
    EXPECT_EQ(std::mt19937_64(42)(), 13930160852258120406U);
}

TEST(Permutation, Holds_every_number_once) {
    for (const std::size_t count : {0U, 1U, 2U, 257U}) {
        const std::vector<std::size_t> order = permutation(count, 1);
        EXPECT_EQ(order.size(), count);
        EXPECT_EQ(std::set<std::size_t>(order.begin(), order.end()).size(), count);
        EXPECT_TRUE(std::all_of(order.begin(), order.end(), [&](std::size_t place) { return place < count; }));
    }
}

// Three quarters of the outputs can be used with this bound: the first of seed 42, 13930160852258120406, is above
// 3 x 2^62 = 13835058055282163712 and is drawn again.
TEST(Permutation, Draws_again_beyond_the_largest_multiple) {
    constexpr std::uint64_t kBound = 3U * (std::uint64_t{1} << 62U);
    std::mt19937_64 generator(42);
    std::mt19937_64 plain(42);
    plain();
    EXPECT_EQ(draw_below(generator, kBound), plain());
}

TEST(Permutation, A_bound_that_divides_all_outputs_never_draws_again) {
    std::mt19937_64 generator(42);
    EXPECT_EQ(draw_below(generator, 16), 13930160852258120406U % 16U);
    EXPECT_EQ(draw_below(generator, 1), 0U);
}

}  // namespace
}  // namespace wxl::comparison
