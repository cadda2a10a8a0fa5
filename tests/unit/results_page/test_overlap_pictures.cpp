#include "results_page/overlap_pictures.h"

#include <gmock/gmock.h>

namespace wxl::results_page {
namespace {

using comparison::ComparedRanges;
using comparison::IndexSection;
using comparison::OverlapIndices;
using testing::ElementsAre;

/// Animals in a row, of which each is near the one `apart` places on and no other.
ComparedRanges in_a_row(std::uint32_t count, std::uint32_t apart) {
    ComparedRanges ranges;
    ranges.Densities.Percents = {95.0};
    for (std::uint32_t i = 0; i < count; ++i) {
        ranges.Animals.push_back({.Name = "a" + std::to_string(i)});
        ranges.Densities.Animals.emplace_back();
        for (std::uint32_t j = i; j < count; ++j) {
            OverlapIndices indices;
            indices.Ba = i == j ? 1.0 : j - i == apart ? 0.5 + 0.001 * i : 0.0;
            indices.Hd = 1.0 - indices.Ba;
            ranges.Pairs.push_back({i, j, 95.0, false, indices});
        }
    }
    return ranges;
}

IndexSection section(const char* index) {
    return {comparison::index_kind(index), 95.0, false};
}

TEST(OverlapPictures, Few_animals_stand_in_their_own_order) {
    EXPECT_THAT(heat_order(in_a_row(4, 2), section("ba"), 60), ElementsAre(0, 1, 2, 3));
}

// Of 22 animals the even ones are a chain and the odd ones; 19 and 21 are nearest, and after the end of the odd chain
// comes the first that is left.
TEST(OverlapPictures, Of_many_animals_near_ones_stand_side_by_side) {
    for (const char* index : {"ba", "hd"}) {
        const std::vector<std::uint32_t> order = heat_order(in_a_row(22, 2), section(index), 60);
        ASSERT_EQ(order.size(), 22U);
        for (std::size_t i = 0; i < 10; ++i) EXPECT_EQ(order[i] % 2, 1U) << index;
        int near = 0;
        for (std::size_t i = 1; i < order.size(); ++i)
            near += order[i] == order[i - 1] + 2 || order[i - 1] == order[i] + 2 ? 1 : 0;
        EXPECT_GE(near, 20) << index;
    }
}

TEST(OverlapPictures, Of_too_many_animals_those_of_the_nearest_pairs_are_shown) {
    std::vector<std::uint32_t> order = heat_order(in_a_row(80, 1), section("ba"), 60);
    std::sort(order.begin(), order.end());
    ASSERT_EQ(order.size(), 60U);
    EXPECT_EQ(order.front(), 20U);
    EXPECT_EQ(order.back(), 79U);
}

// Beyond 200 animals, pairs that share nothing have no record: 0, or the distance of two whole volumes.
TEST(OverlapPictures, Pairs_that_are_left_out_share_nothing) {
    ComparedRanges ranges;
    ranges.Densities.Grid = {0.0, 0.0, 1.0, 3, 1};
    ranges.Densities.Percents = {95.0};
    const std::vector<std::vector<double>> cells = {{1.0, 0.0, 0.0}, {0.0, 0.0, 1.0}, {}};
    for (const std::vector<double>& density : cells)
        comparison::add_animal(ranges, {.Name = "a"}, comparison::whole_of(ranges.Densities.Grid, density), false);
    ranges.Pairs = comparison::overlaps(ranges.Densities, {});
    ASSERT_EQ(ranges.Pairs.size(), 2U);
    EXPECT_THAT(heat_map(ranges, section("ba"), {0, 1, 2}).Values,
                ElementsAre(1.0, 0.0, std::nullopt, 0.0, 1.0, std::nullopt, std::nullopt, std::nullopt, std::nullopt));
    EXPECT_THAT(heat_map(ranges, section("hd"), {0, 1}).Values, ElementsAre(0.0, 1.41421, 1.41421, 0.0));
}

TEST(OverlapPictures, A_heat_map_has_the_values_of_its_animals) {
    const pictures::HeatMapPicture picture = heat_map(in_a_row(4, 2), section("ba"), {3, 1});
    EXPECT_THAT(picture.Names, ElementsAre("a3", "a1"));
    EXPECT_THAT(picture.Values, ElementsAre(1.0, 0.501, 0.501, 1.0));
    EXPECT_EQ(picture.Full, 1.0);
}

}  // namespace
}  // namespace wxl::results_page
