#include "adapters/memory/memory_rasters.h"
#include "isopleths/levels.h"
#include "platform/runtime_error.h"
#include "tests/support/plain_levels.h"

#include <algorithm>
#include <cmath>
#include <functional>
#include <gtest/gtest.h>
#include <limits>
#include <random>

namespace wxl::isopleths {
namespace {

using platform::RuntimeError;
using tests::plain_levels;

/// Scans cells that stand row by row from the north.
void scan(const std::vector<float>& cells, std::int32_t columns, SurfaceEdge& edge, VolumeHistogram& histogram) {
    const auto rows = columns == 0 ? 0 : static_cast<std::int32_t>(cells.size()) / columns;
    const auto raster = memory::MakeRaster("surface", {0.0, 0.0, 1.0, columns, rows}, cells);
    scan_surface(*raster->Band(), nullptr, edge, histogram);
}

std::vector<double> levels_of(const std::vector<float>& cells, std::int32_t columns,
                              const std::vector<double>& percentages) {
    const auto [minimum, maximum] = std::ranges::minmax(cells);
    VolumeHistogram histogram(static_cast<double>(minimum), static_cast<double>(maximum));
    SurfaceEdge edge;
    scan(cells, columns, edge, histogram);
    return histogram.Levels(percentages);
}

std::int32_t fault_of(const std::function<void()>& action) {
    try {
        action();
    } catch (const RuntimeError& error) {
        return error.Number;
    }
    return 0;
}

// Cells 0, 1, 2, 3 lie in the bins 0, 33333, 66666 and 100000; the total is 199999.
TEST(Levels, A_level_is_the_lowest_bin_that_completes_the_share_from_the_top) {
    const std::vector<double> levels = levels_of({0, 1, 2, 3}, 2, {50, 51, 83.3, 83.4, 100});
    ASSERT_EQ(levels.size(), 5U);
    EXPECT_DOUBLE_EQ(levels[0], 3.0);      // 99999.5 of bin 100000's 100000
    EXPECT_DOUBLE_EQ(levels[1], 1.99998);  // 101999.49: bin 66666 is needed
    EXPECT_DOUBLE_EQ(levels[2], 1.99998);  // 166599.167 of 166666
    EXPECT_DOUBLE_EQ(levels[3], 0.99999);  // 166799.166: bin 33333 is needed
    EXPECT_DOUBLE_EQ(levels[4], 0.99999);
}

// One cell in bin 100000, two in bin 50000, one in bin 0: total 200000, of which the top bin holds exactly 50 %.
TEST(Levels, A_share_that_falls_on_a_bins_boundary_takes_that_bin) {
    const std::vector<double> levels = levels_of({0, 5, 5, 10}, 2, {50, 50.001});
    EXPECT_DOUBLE_EQ(levels[0], 10.0);
    EXPECT_DOUBLE_EQ(levels[1], 5.0);  // 100002: bin 50000 is needed
}

TEST(Levels, Zero_percent_lies_above_every_cell) {
    EXPECT_DOUBLE_EQ(levels_of({10, 20, 30, 40}, 2, {0}).front(), 10 + 1.00001 * 30);
}

TEST(Levels, Hundred_percent_with_cells_in_bin_1_is_one_bin_above_the_minimum) {
    // 0.000015 of a range of 1 lies in bin 1.
    EXPECT_DOUBLE_EQ(levels_of({0, 0.000015F, 0.5F, 1}, 2, {100}).front(), 0.00001);
}

TEST(Levels, Hundred_percent_stops_at_the_lowest_bin_with_weight) {
    EXPECT_DOUBLE_EQ(levels_of({0, 0, 0, 7}, 2, {100}).front(), 7.0);
}

TEST(Levels, More_than_hundred_percent_is_a_subscript_out_of_range) {
    EXPECT_EQ(fault_of([] { levels_of({0, 1, 2, 3}, 2, {50, 100.1}); }), 9);
}

TEST(Levels, Percentages_keep_their_order_and_may_repeat) {
    const std::vector<double> levels = levels_of({0, 1, 2, 3}, 2, {100, 0, 100, 51});
    EXPECT_DOUBLE_EQ(levels[0], 0.99999);
    EXPECT_DOUBLE_EQ(levels[1], 3.00003);
    EXPECT_DOUBLE_EQ(levels[2], 0.99999);
    EXPECT_DOUBLE_EQ(levels[3], 1.99998);
}

TEST(Levels, Negative_percentages_count_as_none) {
    EXPECT_DOUBLE_EQ(levels_of({0, 1, 2, 3}, 2, {-5}).front(), 3.00003);
}

TEST(Levels, Equal_cells_are_a_fault) {
    EXPECT_EQ(fault_of([] { levels_of({4, 4, 4, 4}, 2, {50}); }), 6);
}

TEST(Levels, A_value_that_is_not_a_number_is_a_fault) {
    VolumeHistogram histogram(0.0, 1.0);
    EXPECT_EQ(fault_of([&] { histogram.Add(std::vector{0.0F, std::numeric_limits<float>::quiet_NaN(), 1.0F}); }), 9);
}

TEST(Levels, Values_outside_the_range_are_a_fault) {
    for (const float outside : {-0.001F, 1.00002F, 1e38F, -std::numeric_limits<float>::infinity()}) {
        VolumeHistogram histogram(0.0, 1.0);
        EXPECT_EQ(fault_of([&] { histogram.Add(std::vector{outside}); }), 9) << outside;
    }
}

// A cell one ulp of single precision above 0.5 lies in bin 50000 + 0.00596: floor, no rounding.
TEST(Levels, Cells_of_single_precision_are_binned_in_double_precision) {
    VolumeHistogram histogram(0.0, 1.0);
    const std::vector<float> cells = {0.0F, std::nextafter(0.5F, 1.0F), std::nextafter(0.5F, 0.0F), 1.0F};
    histogram.Add(cells);
    EXPECT_EQ(histogram.TotalVolume(), 100000.0 + 50000.0 + 49999.0);
}

// 21474 x 100000 is 2147400000, 21475 x 100000 is 2147500000, and the largest 32-bit number is 2147483647.
TEST(Levels, A_bin_100000_of_21474_cells_passes_and_of_21475_overflows) {
    std::vector<float> cells(1, 0.0F);
    cells.resize(1 + 21474, 1.0F);
    EXPECT_DOUBLE_EQ(levels_of(cells, 1 + 21474, {50}).front(), 1.0);
    cells.resize(1 + 21475, 1.0F);
    EXPECT_EQ(fault_of([&] { levels_of(cells, 1 + 21475, {50}); }), 6);
}

// 28633 x 75000 is 2147475000, 28634 x 75000 is 2147550000.
TEST(Levels, A_bin_75000_overflows_at_28634_cells) {
    for (const std::size_t count : {28633U, 28634U}) {
        std::vector<float> cells(count, 0.75F);
        cells.push_back(0.0F);
        cells.push_back(1.0F);
        const auto columns = static_cast<std::int32_t>(cells.size());
        EXPECT_EQ(fault_of([&] { levels_of(cells, columns, {50}); }), count == 28633U ? 0 : 6) << count;
    }
}

TEST(Levels, Missing_data_cells_enter_as_the_values_they_hold) {
    const float lowest = -std::numeric_limits<float>::max();
    const std::vector<double> levels = levels_of({lowest, 0, 0, 8}, 2, {60});
    const auto missing = static_cast<double>(lowest);
    // All three others share bin 100000.
    EXPECT_EQ(levels.front(), 100000 * (8 - missing) / 100000.0 + missing);
}

TEST(Levels, A_surface_without_cells_is_a_fault) {
    VolumeHistogram histogram(0, 1);
    SurfaceEdge edge;
    EXPECT_EQ(fault_of([&] { scan({}, 0, edge, histogram); }), 9);
}

TEST(Levels, Equal_the_plain_loop_on_random_and_hostile_grids) {
    std::mt19937 random(20261120);
    std::uniform_real_distribution<double> uniform(0.0, 1.0);
    for (int round = 0; round < 60; ++round) {
        const std::size_t count = 2 + static_cast<std::size_t>(random() % 3000);
        const double power = 1.0 + 6.0 * uniform(random);
        const double base = (uniform(random) - 0.5) * std::pow(10.0, std::floor(uniform(random) * 8.0));
        std::vector<float> cells(count);
        for (float& cell : cells) cell = static_cast<float>(base + std::pow(uniform(random), power));
        if (round % 7 == 0) cells.assign(30000, cells.front());
        if (round % 7 == 0) cells.back() = cells.front() + (round % 2 == 0 ? 1.0F : -1.0F);
        std::vector<double> percentages = {0, 100, 95, 50, 99.999, 1e-9};
        for (int i = 0; i < 8; ++i) percentages.push_back(100.0 * uniform(random));
        if (round % 5 == 4) percentages.push_back(100.0 + 1e-9);

        std::vector<double> expected;
        std::vector<double> found;
        const std::int32_t expectedFault = fault_of([&] {
            expected = plain_levels({cells.begin(), cells.end()}, percentages);
        });
        const auto columns = static_cast<std::int32_t>(cells.size());
        const std::int32_t foundFault = fault_of([&] { found = levels_of(cells, columns, percentages); });
        EXPECT_EQ(foundFault, expectedFault) << round;
        EXPECT_EQ(found, expected) << round;
    }
}

TEST(SurfaceEdge, Holds_the_cells_of_all_four_sides) {
    const std::vector<float> cells = {1, 2, 3, 4, 99, 6, 7, 98, 9, 10, 11, 12};
    VolumeHistogram histogram(1, 99);
    SurfaceEdge edge;
    scan(cells, 3, edge, histogram);
    EXPECT_EQ(edge.North, (std::vector<double>{1, 2, 3}));
    EXPECT_EQ(edge.South, (std::vector<double>{10, 11, 12}));
    EXPECT_EQ(edge.West, (std::vector<double>{1, 4, 7, 10}));
    EXPECT_EQ(edge.East, (std::vector<double>{3, 6, 9, 12}));
    EXPECT_EQ(edge.MaxValue, 12.0);
}

TEST(SurfaceEdge, The_largest_value_of_a_non_positive_edge_is_0) {
    const std::vector<float> cells = {-1, -2, -3, -4, 5, -6, 0, -8, -9};
    VolumeHistogram histogram(-9, 5);
    SurfaceEdge edge;
    scan(cells, 3, edge, histogram);
    EXPECT_EQ(edge.MaxValue, 0.0);
}

TEST(SurfaceEdge, Is_measured_on_every_side) {
    for (const std::size_t highest : {0U, 1U, 2U, 3U, 5U, 6U, 7U, 8U}) {
        std::vector<float> cells(9, 0.0F);
        cells[highest] = 7.5F;
        VolumeHistogram histogram(0, 7.5);
        SurfaceEdge edge;
        scan(cells, 3, edge, histogram);
        EXPECT_EQ(edge.MaxValue, 7.5) << highest;
    }
}

TEST(SurfaceEdge, Is_known_after_a_fault_of_the_histogram) {
    const std::vector<float> cells = {3, 3, 3, 3};
    VolumeHistogram histogram(3, 3);
    SurfaceEdge edge;
    EXPECT_NE(fault_of([&] { scan(cells, 2, edge, histogram); }), 0);
    EXPECT_EQ(edge.MaxValue, 3.0);
}

}  // namespace
}  // namespace wxl::isopleths
