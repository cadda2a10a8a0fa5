#include "comparison/overlap.h"
#include "tests/unit/comparison/density_scenes.h"

#include <algorithm>
#include <cmath>
#include <gtest/gtest.h>
#include <numbers>
#include <utility>

namespace wxl::comparison {
namespace {

// One row of five cells of side 10: shares .4 .3 .2 .1 0 and 0 .1 .6 .2 .1. The ranges at 80 % are the first three
// cells and the third and fourth.
DensitySet five_cells() {
    return set_of({0.0, 0.0, 10.0, 5, 1}, {{0.004, 0.003, 0.002, 0.001, 0.0}, {0.0, 0.001, 0.006, 0.002, 0.001}},
                  {80.0});
}

TEST(Overlap, Five_cells_by_hand) {
    const std::vector<PairOverlap> pairs = overlaps(five_cells(), {.Conditional = true});
    const OverlapIndices whole = find(pairs, 0, 1, 80.0).Indices.value();
    EXPECT_DOUBLE_EQ(whole.HrIj, 1.0 / 3.0);
    EXPECT_DOUBLE_EQ(whole.HrJi, 0.5);
    EXPECT_NEAR(whole.PhrIj, 0.7, 5e-8);
    EXPECT_NEAR(whole.PhrJi, 0.3, 5e-8);
    EXPECT_NEAR(whole.Vi, 0.4, 5e-8);
    EXPECT_NEAR(whole.Ba, 0.661037, 5e-7);
    EXPECT_NEAR(whole.Udoi, 0.17, 5e-8);
    EXPECT_NEAR(whole.Hd, 0.823363, 5e-7);
    const OverlapIndices conditional = find(pairs, 0, 1, 80.0, true).Indices.value();
    EXPECT_DOUBLE_EQ(conditional.HrIj, 1.0 / 3.0);
    EXPECT_NEAR(conditional.PhrIj, 0.6, 5e-8);
    EXPECT_NEAR(conditional.PhrJi, 0.2, 5e-8);
    EXPECT_NEAR(conditional.Vi, 0.2, 5e-8);
    EXPECT_NEAR(conditional.Ba, 0.346410, 5e-7);
    EXPECT_NEAR(conditional.Udoi, 0.12, 5e-8);
    EXPECT_NEAR(conditional.Hd, 1.003583, 5e-7);
}

// f and g round Gaussians of standard deviations s and t at distance D, S = s^2 + t^2: BA = 2 s t / S exp(-D^2 / 4 S),
// sum of f g = exp(-D^2 / 2 S) / (2 pi S); equal standard deviations: VI = 2 Phi(-D / 2 s).
TEST(Overlap, Rows_of_tiles_apart_are_the_whole_bit_by_bit) {
    const platform::RasterGeometry grid = square_grid(200, 1.0);
    std::vector<std::vector<double>> densities;
    for (int i = 0; i < 40; ++i) densities.push_back(gaussian(grid, 20.0 + 4.0 * i, 30.0 + 3.5 * i, 9.0 + i % 5));
    const DensitySet set = set_of(grid, densities, {95.0, 50.0});
    for (const std::uint32_t size : {1U, 4U, 100U}) {
        std::vector<RowSums> rows;
        for (std::uint32_t first = tile_rows(grid); first > 0;) {
            const std::uint32_t end = first;
            first -= std::min(first, size);
            for (RowSums& row : row_sums(set, true, first, end, nullptr)) rows.push_back(std::move(row));
        }
        EXPECT_EQ(overlaps_from(set, {.Conditional = true, .AllPairs = true}, added_rows(std::move(rows))),
                  overlaps(set, {.Conditional = true, .AllPairs = true}));
    }
    EXPECT_EQ(tile_rows(grid), 13U);
}

TEST(Overlap, Gaussians_in_closed_form) {
    const platform::RasterGeometry grid = square_grid(400, 1.0);
    constexpr double kS = 20.0;
    constexpr double kT = 30.0;
    constexpr double kDistance = 45.0;
    const DensitySet set = set_of(grid,
                                  {gaussian(grid, 180.0, 200.0, kS), gaussian(grid, 180.0 + kDistance, 200.0, kT),
                                   gaussian(grid, 180.0, 200.0 + kDistance, kS)},
                                  {95.0});
    const std::vector<PairOverlap> pairs = overlaps(set, {});
    constexpr double kSum = kS * kS + kT * kT;
    const double affinity = 2.0 * kS * kT / kSum * std::exp(-kDistance * kDistance / (4.0 * kSum));
    const OverlapIndices unequal = find(pairs, 0, 1, 95.0).Indices.value();
    EXPECT_NEAR(unequal.Ba, affinity, 2e-7);
    EXPECT_NEAR(unequal.Hd, std::sqrt(2.0 - 2.0 * affinity), 2e-7);
    const double product = std::exp(-kDistance * kDistance / (2.0 * kSum)) / (2.0 * std::numbers::pi * kSum);
    const double common = unequal.HrIj * static_cast<double>(set.Animals[0].Ranges()[0].Cells);
    EXPECT_NEAR(unequal.Udoi, common * product, 2e-7);

    const OverlapIndices equal = find(pairs, 0, 2, 95.0).Indices.value();
    EXPECT_NEAR(equal.Vi, std::erfc(kDistance / (2.0 * kS) / std::sqrt(2.0)), 2e-4);  // the crease is wider than 0
    // Two equal circles, the lens over the circle; as many cells as make their edge are in doubt.
    const double radius = kS * std::sqrt(-2.0 * std::log(0.05));
    const double half = kDistance / 2.0 / radius;
    const double lens = 2.0 * (std::acos(half) - half * std::sqrt(1.0 - half * half)) / std::numbers::pi;
    EXPECT_NEAR(equal.HrIj, lens, 0.005);
}

TEST(Overlap, Equal_uniform_distributions_have_an_udoi_of_1) {
    const std::vector<double> uniform(64, 1.0 / 64.0);
    const std::vector<PairOverlap> pairs = overlaps(set_of(square_grid(8, 1.0), {uniform, uniform}, {100.0}), {});
    EXPECT_NEAR(find(pairs, 0, 1, 100.0).Indices.value().Udoi, 1.0, 1e-7);
}

TEST(Overlap, Of_an_animal_with_itself) {
    const platform::RasterGeometry grid = square_grid(70, 2.0);
    const std::vector<double> cells = gaussian(grid, 60.0, 75.0, 11.0);
    const std::vector<PairOverlap> pairs = overlaps(set_of(grid, {cells, cells}, {95.0, 50.0}), {.Conditional = true});
    for (const double percent : {95.0, 50.0})
        for (const std::uint32_t other : {0U, 1U}) {
            const OverlapIndices self = find(pairs, 0, other, percent).Indices.value();
            EXPECT_EQ(self.HrIj, 1.0);
            EXPECT_EQ(self.Hd, 0.0);
            EXPECT_NEAR(self.Vi, 1.0, 1e-6);
            EXPECT_NEAR(self.Ba, 1.0, 1e-6);
            EXPECT_GE(self.PhrIj, percent / 100.0 - 1e-6);
            EXPECT_LE(self.PhrIj, percent / 100.0 + 0.01);
            const OverlapIndices conditional = find(pairs, 0, other, percent, true).Indices.value();
            EXPECT_EQ(conditional.Hd, 0.0);
            EXPECT_NEAR(conditional.Ba, self.PhrIj, 1e-6);
            EXPECT_NEAR(conditional.Vi, self.PhrIj, 1e-6);
        }
}

TEST(Overlap, Disjoint_ranges_share_nothing_and_are_left_out_unless_asked_for) {
    const platform::RasterGeometry grid{0.0, 0.0, 1.0, 96, 1};
    std::vector<double> west(96, 0.0);
    std::vector<double> east(96, 0.0);
    west[2] = 1.0;
    east[90] = 1.0;
    const DensitySet set = set_of(grid, {west, east}, {95.0});
    EXPECT_EQ(overlaps(set, {}).size(), 2U);  // each with itself
    const std::vector<PairOverlap> pairs = overlaps(set, {.AllPairs = true});
    ASSERT_EQ(pairs.size(), 3U);
    OverlapIndices nothing;
    nothing.Hd = std::sqrt(2.0);
    EXPECT_EQ(pairs[1].Indices.value(), nothing);
}

TEST(Overlap, Densities_in_one_tile_that_share_no_cell_are_disjoint) {
    const DensitySet set = set_of({0.0, 0.0, 1.0, 4, 1}, {{0.5, 0.5, 0.0, 0.0}, {0.0, 0.0, 0.25, 0.75}}, {95.0});
    const OverlapIndices indices =
        find(overlaps(set, {.Conditional = true, .AllPairs = true}), 0, 1, 95.0, true).Indices.value();
    EXPECT_EQ(indices.HrIj, 0.0);
    EXPECT_EQ(indices.Ba, 0.0);
    EXPECT_EQ(indices.Udoi, 0.0);
    EXPECT_NEAR(indices.Hd, std::sqrt(2.0), 1e-7);
    EXPECT_EQ(overlaps(set, {}).size(), 2U);  // each with itself
}

TEST(Overlap, An_animal_without_a_distribution_has_no_indices_and_leaves_the_others_alone) {
    const DensitySet two = five_cells();
    DensitySet three = two;
    three.Animals.insert(three.Animals.begin() + 1, TiledDensity());
    const std::vector<PairOverlap> pairs = overlaps(three, {.AllPairs = true});
    ASSERT_EQ(pairs.size(), 6U);
    EXPECT_FALSE(find(pairs, 0, 1, 80.0).Indices);
    EXPECT_FALSE(find(pairs, 1, 1, 80.0).Indices);
    EXPECT_FALSE(find(pairs, 1, 2, 80.0).Indices);
    EXPECT_EQ(find(pairs, 0, 2, 80.0).Indices, find(overlaps(two, {}), 0, 1, 80.0).Indices);
}

// Every animal has a cell of its own, but for the last, which lives where the first does: 10,000 pairs of an animal
// with itself, and that one, of 50,005,000.
TEST(Overlap, Of_ten_thousand_animals_of_which_two_meet) {
    constexpr std::size_t kAnimals = 10000;
    const platform::RasterGeometry grid{0.0, 0.0, 1.0, 128, 80};
    DensitySet set{grid, {95.0}, {}};
    std::vector<double> cells(kAnimals + 240, 0.0);
    for (std::size_t i = 0; i < kAnimals; ++i) {
        const std::size_t home = i + 1 == kAnimals ? 0 : i;
        cells[home] = 1.0;
        set.Animals.emplace_back(grid, whole_of(grid, cells), set.Percents);
        cells[home] = 0.0;
    }
    const std::vector<PairOverlap> pairs = overlaps(set, {});
    ASSERT_EQ(pairs.size(), kAnimals + 1);
    EXPECT_EQ(pairs[1].First, 0U);
    EXPECT_EQ(pairs[1].Second, kAnimals - 1);
    EXPECT_EQ(pairs[1].Indices->HrIj, 1.0);
    EXPECT_EQ(pairs[1].Indices->Hd, 0.0);
}

// A part that begins and ends within tiles, at the grid's edge too.
TEST(TiledDensity, Of_a_part_of_the_grid_is_that_of_the_whole_grid) {
    const platform::RasterGeometry grid = square_grid(100, 1.0);
    const std::vector<double> percents = {95.0, 50.0, 100.0};
    for (const auto& [firstColumn, firstRow] : {std::pair{27, 13}, std::pair{0, 0}, std::pair{60, 70}}) {
        PartOfGrid part{firstColumn, firstRow, 40, 30, {}};
        std::vector<double> cells(10000, 0.0);
        for (std::int32_t row = 0; row < 30; ++row)
            for (std::int32_t column = 0; column < 40; ++column) {
                const double density = (row + column) % 7 == 0 ? 0.0 : 1e-5 * ((3 * row + 5 * column) % 11);
                part.Cells.push_back(density);
                cells[static_cast<std::size_t>((firstRow + row) * 100 + firstColumn + column)] = density;
            }
        const TiledDensity found(grid, part, percents);
        const TiledDensity whole(grid, whole_of(grid, cells), percents);
        EXPECT_EQ(found.Volume(), whole.Volume());
        ASSERT_EQ(found.Tiles(), whole.Tiles());
        for (std::size_t percent = 0; percent < percents.size(); ++percent) {
            EXPECT_EQ(found.Ranges()[percent].Cells, whole.Ranges()[percent].Cells);
            EXPECT_EQ(found.Ranges()[percent].Level, whole.Ranges()[percent].Level);
            for (std::size_t place = 0; place < found.Tiles().size(); ++place)
                EXPECT_EQ(found.Mask(percent, place), whole.Mask(percent, place));
        }
        for (std::size_t place = 0; place < found.Tiles().size(); ++place)
            for (std::size_t cell = 0; cell < kTileCells; ++cell)
                ASSERT_EQ(found.Roots(place)[cell], whole.Roots(place)[cell]);
    }
}

TEST(Overlap, Of_one_animal_and_of_none) {
    const platform::RasterGeometry grid = square_grid(3, 1.0);
    EXPECT_EQ(overlaps(set_of(grid, {std::vector<double>(9, 1.0 / 9.0)}, {95.0}), {}).size(), 1U);
    EXPECT_TRUE(overlaps(set_of(grid, {}, {95.0}), {.AllPairs = true}).empty());
    const std::vector<PairOverlap> missing = overlaps(set_of(grid, {{}}, {95.0}), {.AllPairs = true});
    ASSERT_EQ(missing.size(), 1U);
    EXPECT_FALSE(missing[0].Indices);
}

// Shares of 1E-30 in tiles of their own: nothing underflows, and no index knows of them.
TEST(Overlap, Vanishing_densities_add_nothing) {
    std::vector<double> cells(64, 0.0);
    cells[0] = 1.0;
    cells[40] = 1e-30;
    std::vector<double> other(64, 0.0);
    other[40] = 1e-30;
    other[63] = 1.0;
    const std::vector<PairOverlap> pairs =
        overlaps(set_of({0.0, 0.0, 1.0, 64, 1}, {cells, other}, {95.0}), {.AllPairs = true});
    const OverlapIndices indices = find(pairs, 0, 1, 95.0).Indices.value();
    EXPECT_EQ(indices.Ba, 0.0);
    EXPECT_EQ(indices.Udoi, 0.0);
    EXPECT_NEAR(indices.Hd, std::sqrt(2.0), 1e-7);
}

TEST(Overlap, Progress_rises_to_the_end) {
    std::vector<double> told;
    overlaps(five_cells(), {}, [&](double done) { told.push_back(done); });
    ASSERT_FALSE(told.empty());
    EXPECT_EQ(told.back(), 1.0);
}

}  // namespace
}  // namespace wxl::comparison
