// The overlap of all pairs beside its plain twin: double sums over all cells of the grid.

#include "comparison/overlap.h"
#include "tests/unit/comparison/density_scenes.h"

#include <algorithm>
#include <gtest/gtest.h>
#include <numeric>

namespace wxl::comparison {
namespace {

struct Twin {
    const platform::RasterGeometry& Grid;
    const std::vector<std::vector<double>>& Densities;

    /// The range by sorting: cells by falling density until p % is reached, then all as dense as the last.
    std::vector<bool> RangeOf(std::size_t animal, double percent) const {
        std::vector<double> falling = Densities[animal];
        const double total = std::accumulate(falling.begin(), falling.end(), 0.0);
        std::sort(falling.rbegin(), falling.rend());
        double level = 0.0;
        double reached = 0.0;
        for (const double density : falling) {
            if (percent == 100.0 || reached >= (percent / 100.0 - 1e-12) * total) break;
            reached += density;
            level = density;
        }
        std::vector<bool> range;
        for (const double density : Densities[animal])
            range.push_back(density > 0.0 && density >= level * (1.0 - 1e-9));
        return range;
    }

    OverlapIndices Indices(std::size_t i, std::size_t j, double percent, bool conditional) const {
        const std::vector<bool> inI = RangeOf(i, percent);
        const std::vector<bool> inJ = RangeOf(j, percent);
        const double area = Grid.CellSize * Grid.CellSize;
        double common = 0.0;
        double product = 0.0;
        double apart = 0.0;
        OverlapIndices result;
        for (std::size_t cell = 0; cell < inI.size(); ++cell) {
            const double f = conditional && !inI[cell] ? 0.0 : Densities[i][cell];
            const double g = conditional && !inJ[cell] ? 0.0 : Densities[j][cell];
            common += inI[cell] && inJ[cell] ? 1.0 : 0.0;
            result.PhrIj += inI[cell] && (!conditional || inJ[cell]) ? area * g : 0.0;
            result.PhrJi += inJ[cell] && (!conditional || inI[cell]) ? area * f : 0.0;
            result.Vi += area * std::min(f, g);
            result.Ba += area * std::sqrt(f * g);
            product += f * g;
            apart += area * (std::sqrt(f) - std::sqrt(g)) * (std::sqrt(f) - std::sqrt(g));
        }
        result.HrIj = common / static_cast<double>(std::count(inI.begin(), inI.end(), true));
        result.HrJi = common / static_cast<double>(std::count(inJ.begin(), inJ.end(), true));
        result.Udoi = common * area * area * product;
        result.Hd = std::sqrt(apart);
        return result;
    }
};

// Roots are rounded to 24 bits and 512 of them added in floats, 32 to a lane: some 1E-7 of the sum.
void expect_near(const OverlapIndices& found, const OverlapIndices& twin) {
    constexpr double kRounding = 2e-7;
    EXPECT_EQ(found.HrIj, twin.HrIj);
    EXPECT_EQ(found.HrJi, twin.HrJi);
    EXPECT_NEAR(found.PhrIj, twin.PhrIj, kRounding);
    EXPECT_NEAR(found.PhrJi, twin.PhrJi, kRounding);
    EXPECT_NEAR(found.Vi, twin.Vi, kRounding);
    EXPECT_NEAR(found.Ba, twin.Ba, kRounding);
    EXPECT_NEAR(found.Udoi, twin.Udoi, 2.0 * kRounding * std::max(1.0, twin.Udoi));  // twice as many roots
    // 32 small terms beside one near 1 in the same lane: 6E-8 each at worst.
    EXPECT_NEAR(found.Hd * found.Hd, twin.Hd * twin.Hd, 1e-6);
}

/// Animals on a grid that is no multiple of a tile: round ones, ones with two centres, one that fills the grid, one of
/// a single cell, one cut by the edge, one on a plateau of equal cells.
std::vector<std::vector<double>> hostile_densities(const platform::RasterGeometry& grid) {
    std::vector<std::vector<double>> densities = {
        gaussian(grid, 150.0, 120.0, 12.0), gaussian(grid, 170.0, 130.0, 20.0), gaussian(grid, 150.0, 120.0, 1.0),
        gaussian(grid, 390.0, 5.0, 30.0), gaussian(grid, 200.0, 150.0, 900.0)};
    const std::size_t count = densities[0].size();
    densities.emplace_back(count, 0.0).at(count / 2) = 1.0 / (grid.CellSize * grid.CellSize);
    std::vector<double> plateau(count, 0.0);
    for (std::size_t cell = 1000; cell < 1600; ++cell) plateau[cell] = 1.0 / 600.0 / grid.CellSize / grid.CellSize;
    densities.push_back(plateau);
    std::vector<double> two = gaussian(grid, 60.0, 60.0, 8.0);
    const std::vector<double> second = gaussian(grid, 300.0, 200.0, 8.0);
    for (std::size_t cell = 0; cell < count; ++cell) two[cell] = 0.7 * two[cell] + 0.3 * second[cell];
    densities.push_back(two);
    return densities;
}

TEST(OverlapDifferential, Hostile_densities_agree_with_plain_sums) {
    const platform::RasterGeometry grid{0.0, 0.0, 4.0, 101, 77};
    const auto densities = hostile_densities(grid);
    const std::vector<double> percents = {95.0, 50.0, 100.0, 0.5};
    const Twin twin{grid, densities};
    const auto pairs = overlaps(set_of(grid, densities, percents), {.Conditional = true, .AllPairs = true});
    ASSERT_EQ(pairs.size(), 2 * percents.size() * densities.size() * (densities.size() + 1) / 2);
    for (const PairOverlap& pair : pairs) {
        SCOPED_TRACE(testing::Message() << pair.First << " with " << pair.Second << " at " << pair.Percent);
        expect_near(pair.Indices.value(), twin.Indices(pair.First, pair.Second, pair.Percent, pair.Conditional));
    }
}

/// More animals than are compared at once, small ones all over a grid.
std::vector<std::vector<double>> many(const platform::RasterGeometry& grid, std::size_t count) {
    tests::Dice dice(9);
    std::vector<std::vector<double>> densities;
    for (std::size_t i = 0; i < count; ++i) {
        const double x = 200.0 * dice.Uniform();
        densities.push_back(gaussian(grid, x, 200.0 * dice.Uniform(), 2.0 + 10.0 * dice.Uniform()));
        for (double& cell : densities.back())
            if (cell < 1e-7) cell = 0.0;
    }
    return densities;
}

TEST(OverlapDifferential, Many_animals_agree_with_plain_sums) {
    const platform::RasterGeometry grid = square_grid(50, 4.0);
    const auto densities = many(grid, 70);
    const Twin twin{grid, densities};
    const auto pairs = overlaps(set_of(grid, densities, {95.0}), {.AllPairs = true});
    ASSERT_EQ(pairs.size(), 70U * 71U / 2U);
    for (const PairOverlap& pair : pairs)
        expect_near(pair.Indices.value(), twin.Indices(pair.First, pair.Second, 95.0, false));
}

// What is left out shares no cell, and what stays is what was there.
TEST(OverlapDifferential, Pairs_that_meet_are_the_same_with_and_without_the_others) {
    const platform::RasterGeometry grid = square_grid(50, 4.0);
    const DensitySet set = set_of(grid, many(grid, 70), {95.0});
    const auto all = overlaps(set, {.AllPairs = true});
    const auto meeting = overlaps(set, {});
    ASSERT_LT(meeting.size(), all.size());
    auto next = meeting.begin();
    for (const PairOverlap& pair : all) {
        if (next != meeting.end() && next->First == pair.First && next->Second == pair.Second) {
            EXPECT_EQ(*next++, pair);
        } else {
            EXPECT_EQ(pair.Indices.value().Ba, 0.0);
            EXPECT_EQ(pair.Indices.value().HrIj, 0.0);
        }
    }
    EXPECT_EQ(next, meeting.end());
}

// The order of the animals decides nothing, to the last bit: neither their places in a block nor who comes first.
TEST(OverlapDifferential, Animals_in_another_order_have_the_same_indices) {
    const platform::RasterGeometry grid = square_grid(50, 4.0);
    auto densities = many(grid, 70);
    const auto forth = overlaps(set_of(grid, densities, {95.0}), {.Conditional = true, .AllPairs = true});
    std::reverse(densities.begin(), densities.end());
    const auto back = overlaps(set_of(grid, densities, {95.0}), {.Conditional = true, .AllPairs = true});
    for (const PairOverlap& pair : forth) {
        const OverlapIndices mirrored =
            find(back, 69 - pair.Second, 69 - pair.First, 95.0, pair.Conditional).Indices.value();
        const OverlapIndices turned{mirrored.HrJi, mirrored.HrIj, mirrored.PhrJi, mirrored.PhrIj,
                                    mirrored.Vi,   mirrored.Ba,   mirrored.Udoi,  mirrored.Hd};
        EXPECT_EQ(pair.Indices.value(), turned);
    }
}

TEST(OverlapDifferential, Indices_keep_to_their_ranges) {
    const platform::RasterGeometry grid = square_grid(50, 4.0);
    const DensitySet set = set_of(grid, many(grid, 40), {95.0});
    for (const PairOverlap& pair : overlaps(set, {.Conditional = true, .AllPairs = true})) {
        const OverlapIndices& indices = pair.Indices.value();
        constexpr double kRounding = 1e-6;
        for (const double share : {indices.HrIj, indices.HrJi, indices.PhrIj, indices.PhrJi, indices.Vi, indices.Ba}) {
            EXPECT_GE(share, 0.0);
            EXPECT_LE(share, 1.0 + kRounding);
        }
        EXPECT_GE(indices.Udoi, 0.0);
        EXPECT_GE(indices.Hd, 0.0);
        EXPECT_LE(indices.Hd, std::sqrt(2.0) + kRounding);
        EXPECT_GE(indices.Ba, indices.Vi - kRounding);
        if (pair.Conditional) continue;
        const double volumes = set.Animals[pair.First].Volume() + set.Animals[pair.Second].Volume();
        EXPECT_NEAR(indices.Hd * indices.Hd, volumes - 2.0 * indices.Ba, 1e-6);
    }
}

TEST(OverlapDifferential, Both_forms_of_the_inner_loops_give_the_same_bits) {
    tests::Dice dice(3);
    std::vector<float> cells;
    for (std::size_t cell = 0; cell < 3 * kTileCells; ++cell)
        cells.push_back(dice.Uniform() < 0.2 ? 0.0F : static_cast<float>(dice.Uniform()));
    const float* s = cells.data();
    const float* t = s + kTileCells;
    const AgreementSums wide = tile_math().Agreement(s, t);
    const AgreementSums portable = portable_tile_math().Agreement(s, t);
    EXPECT_EQ(wide.Affinity, portable.Affinity);
    EXPECT_EQ(wide.Shared, portable.Shared);
    EXPECT_EQ(wide.Product, portable.Product);
    EXPECT_EQ(wide.Distance, portable.Distance);
    EXPECT_EQ(tile_math().Squares(t, s), portable_tile_math().Squares(t, s));
}

// Lane l adds the cells l, l + 16, ... as floats, then the lanes are added as doubles.
TEST(OverlapDifferential, The_inner_loops_add_in_the_stated_order) {
    tests::Dice dice(4);
    std::vector<float> s;
    std::vector<float> t;
    for (std::size_t cell = 0; cell < kTileCells; ++cell) {
        s.push_back(static_cast<float>(dice.Uniform()));
        t.push_back(static_cast<float>(dice.Uniform()));
    }
    double affinity = 0.0;
    double distance = 0.0;
    for (std::size_t lane = 0; lane < 16; ++lane) {
        float a = 0.0F;
        float d = 0.0F;
        for (std::size_t cell = lane; cell < 512; cell += 16) {
            a += s[cell] * t[cell];
            d += (s[cell] - t[cell]) * (s[cell] - t[cell]);
        }
        affinity += static_cast<double>(a);
        distance += static_cast<double>(d);
    }
    const AgreementSums sums = portable_tile_math().Agreement(s.data(), t.data());
    EXPECT_EQ(sums.Affinity, affinity);
    EXPECT_EQ(sums.Distance, distance);
}

}  // namespace
}  // namespace wxl::comparison
