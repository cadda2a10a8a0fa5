#include "akde/animal_range.h"
#include "platform/runtime_error.h"
#include "tests/unit/akde/kept_lines.h"

#include <cmath>
#include <gtest/gtest.h>
#include <string>

namespace wxl::akde {
namespace {

/// One fix with a round kernel of this standard deviation.
Smoothing one_fix(double x, double y, double deviation) {
    Smoothing smoothing;
    smoothing.Bandwidth.Squared = 1.0;
    smoothing.Bandwidth.Bias = 1.0;
    smoothing.Bandwidth.Weights = {1.0};
    smoothing.Matrix = {deviation * deviation, 0.0, deviation * deviation};
    smoothing.Fixes = {{x, y}};
    return smoothing;
}

// Two fixes 1000 apart, kernels of 10 and 50: four times 50 around both, in cells of 50.
TEST(CommonGrid, Reaches_as_far_as_the_widest_kernel) {
    const Smoothing a = one_fix(0, 0, 10);
    const Smoothing b = one_fix(1000, 0, 50);
    const Smoothing* both[] = {&a, &b};
    const auto grid = common_grid(both, std::nullopt, 50.0);
    EXPECT_EQ(grid.OriginX, -200.0);
    EXPECT_EQ(grid.OriginY, -200.0);
    EXPECT_EQ(grid.Columns, 28);
    EXPECT_EQ(grid.Rows, 8);
}

// A fifth of the narrower kernel is 2; 1400 map units in 400 cells is 3.5, in 3000 cells 0.47.
TEST(CommonGrid, Cells_suit_the_narrowest_kernel) {
    const Smoothing a = one_fix(0, 0, 10);
    const Smoothing b = one_fix(1000, 0, 50);
    const Smoothing* both[] = {&a, &b};
    EXPECT_EQ(common_grid(both, std::nullopt, 0.0).CellSize, 2.0);
    EXPECT_EQ(common_grid(both, 100.0, 50.0).Columns, 24);
}

// -2 ln(1 - P) pi sigma^2 for a Gaussian of sigma 10: 95 % 1882.28, 50 % 435.52; linear between cells of 0.5.
TEST(Range, Areas_of_one_kernel_are_those_of_a_gaussian) {
    KeptLines lines;
    const AnimalRange range = range_of(one_fix(0, 0, 10), 10.0, 0.5, {95.0, 50.0}, lines);
    ASSERT_EQ(range.Isopleths.size(), 6U);
    EXPECT_EQ(range.Isopleths[1].Bound, "est");
    EXPECT_NEAR(range.Isopleths[1].Area, 1882.28, 4.0);
    EXPECT_NEAR(range.Isopleths[4].Area, 435.52, 1.0);
    // chi-square with 20 degrees: 9.59078 and 34.16961 of 20
    EXPECT_NEAR(range.Isopleths[0].Area / range.Isopleths[1].Area, 9.59078 / 20.0, 1e-5);
    EXPECT_NEAR(range.Isopleths[2].Area / range.Isopleths[1].Area, 34.16961 / 20.0, 1e-5);
    EXPECT_NEAR(range.Volume, 1.0, 1e-3);
}

// The high outline of one effective fix is 3.69 times the area: beyond four standard deviations.
TEST(Range, The_grid_grows_until_all_outlines_fit) {
    KeptLines lines;
    const AnimalRange range = range_of(one_fix(0, 0, 10), 1.0, 1.0, {95.0}, lines);
    for (const RangeIsopleth& isopleth : range.Isopleths) EXPECT_TRUE(isopleth.Level) << isopleth.Bound;
    EXPECT_GT(range.Geometry.Columns, 80);
}

// Without limits there is the estimate alone.
TEST(Range, No_limits_where_the_effective_sample_size_is_not_defined) {
    KeptLines lines;
    const AnimalRange range = range_of(one_fix(0, 0, 10), 0.0, 1.0, {95.0}, lines);
    ASSERT_EQ(range.Isopleths.size(), 1U);
    EXPECT_EQ(range.Isopleths[0].Bound, "est");
}

// The raster ends at the fix: half of the distribution, and its highest cell on the edge.
TEST(Range, A_given_grid_may_cut) {
    KeptLines lines;
    const AnimalRange range = range_on(one_fix(0, 0, 10), 5.0, {0.0, -100.0, 1.0, 100, 200}, {95.0}, lines);
    EXPECT_NEAR(range.Volume, 0.5, 1e-3);
    EXPECT_NEAR(range.HighestAtEdge, 1.0 / (2.0 * M_PI * 100.0), 1e-5);
}

std::string failure_on(const Smoothing& smoothing, const platform::RasterGeometry& grid) {
    KeptLines lines;
    try {
        range_on(smoothing, 5.0, grid, {95.0}, lines);
    } catch (const platform::RuntimeError& error) {
        return error.Description;
    }
    return {};
}

// A kernel of 10 between the centres of cells of 500, and one that is 3000 away from the raster.
TEST(Range, A_raster_that_misses_the_distribution_has_no_areas) {
    EXPECT_EQ(failure_on(one_fix(0, 0, 10), {-500.0, -500.0, 500.0, 2, 2}),
              "no cell meets its distribution: cells of 500 are coarser than its kernel, whose deviation is 10 at the "
              "narrowest: give a smaller cell size");
    EXPECT_EQ(failure_on(one_fix(0, 0, 10), {3000.0, 0.0, 5.0, 20, 20}),
              "nothing of the distribution lies on the raster: choose another extent");
    EXPECT_EQ(failure_on(one_fix(0, 0, 10), {-50.0, -50.0, 5.0, 20, 20}), "");
}

// Eigenvalues 58 + 42 = 100 and 58 - 42 = 16.
TEST(Range, Cells_wider_than_the_narrow_side_of_the_kernel_are_coarse) {
    const movement_models::Matrix2 kernel{58.0, 42.0, 58.0};
    EXPECT_EQ(coarse_cells_text(kernel, 4.0), "");
    EXPECT_EQ(
        coarse_cells_text(kernel, 4.5),
        "cells of 4.5 are coarser than its kernel, whose deviation is 4 at the narrowest: give a smaller cell size");
}

}  // namespace
}  // namespace wxl::akde
