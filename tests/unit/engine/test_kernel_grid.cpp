// The grid of the kernel calculator: values and faults worked by hand.

#include "platform/runtime_error.h"
#include "tests/unit/engine/calculator_fixture.h"

#include <cmath>
#include <limits>

namespace wxl::engine {
namespace {

/// Columns and rows of the cells that are not 0.
platform::Extent touched(const KernelGrid& grid) {
    platform::Extent extent;
    for (std::int32_t row = 0; row < grid.Rows(); ++row)
        for (std::int32_t column = 0; column < grid.Columns(); ++column)
            if (grid(column, row) != 0.0) extent.Include({static_cast<double>(column), static_cast<double>(row)});
    return extent;
}

TEST_F(KernelCalculator, One_fix_on_a_cell_centre_has_the_peak_of_the_kernel_there) {
    k.SetInputCoords(PointSample{{2.5, 1.5}});
    SetGrid(5, 4, 1.0);
    k.SetManualBandwidth(2.0);
    k.CalculateKernel();
    ASSERT_EQ(k.lErrorStatus, 0);
    // 1000000 / (2 pi h^2), and exp(-1/8) and exp(-1/4) of it one cell away along an axis and diagonally.
    EXPECT_NEAR(Cell(2, 2), 39788.73577297387, 1e-9);
    EXPECT_NEAR(Cell(1, 2), 39788.73577297387 * std::exp(-0.125), 1e-9);
    EXPECT_NEAR(Cell(2, 1), 39788.73577297387 * std::exp(-0.125), 1e-9);
    EXPECT_NEAR(Cell(3, 3), 39788.73577297387 * std::exp(-0.25), 1e-9);
}

TEST_F(KernelCalculator, Without_a_limit_radius_a_fix_reaches_three_by_three_cells) {
    k.SetInputCoords(PointSample{{4.5, 4.5}});
    SetGrid(9, 9, 1.0);
    k.SetManualBandwidth(3.0);
    k.CalculateKernel();
    EXPECT_EQ(touched(*k.GetKernel()), (platform::Extent{3, 3, 5, 5}));
}

// Int(12 / 5) + 1 = 3 cells.
TEST_F(KernelCalculator, The_limit_radius_counts_in_whole_cells_whatever_the_bandwidth) {
    k.SetInputCoords(PointSample{{52.5, 52.5}});
    SetGrid(21, 21, 5.0);
    k.SetLimitRadius(12.0);
    k.SetManualBandwidth(500.0);
    k.CalculateKernel();
    EXPECT_EQ(touched(*k.GetKernel()), (platform::Extent{7, 7, 13, 13}));
}

// x = 4 opens column 4; y = 5 is the upper edge of the row whose cells go from 4 to 5, which is row 9 - 5 = 4.
TEST_F(KernelCalculator, A_fix_on_a_cell_boundary_belongs_to_the_right_column_and_the_lower_row) {
    k.SetInputCoords(PointSample{{4.0, 5.0}});
    SetGrid(9, 9, 1.0);
    k.SetManualBandwidth(3.0);
    k.CalculateKernel();
    EXPECT_EQ(touched(*k.GetKernel()), (platform::Extent{3, 3, 5, 5}));
}

// Pilot 2 : 1 (a kilometre is 500 bandwidths: nothing reaches across), so g is 2^(2/3) of the lower one, and lambda
// is 2^(-1/6) at the pair and 2^(1/3) at the lone fix. Peaks: 1e6 / (2 pi 4) x (2/3) 2^(1/3) and x (1/3) 2^(-2/3), both
// but for the tenth digit, because logarithms have the base 2.718281828.
TEST_F(KernelCalculator, The_adaptive_kernel_narrows_where_fixes_are_dense) {
    k.SetInputCoords(PointSample{{2.5, 2.5}, {2.5, 2.5}, {1002.5, 2.5}});
    SetGrid(1005, 5, 1.0);
    k.SetManualBandwidth(2.0);
    k.SetFixedKernel(false);
    k.CalculateKernel();
    ASSERT_EQ(k.lErrorStatus, 0);
    EXPECT_NEAR(Cell(2, 2), 33420.44385580965, 1e-7);
    EXPECT_NEAR(Cell(1002, 2), 8355.110962974412, 1e-7);
}

TEST_F(KernelCalculator, Row_0_is_the_northern_row) {
    k.SetInputCoords(PointSample{{1.5, 8.5}});
    SetGrid(9, 9, 1.0);
    k.SetManualBandwidth(1.0);
    k.CalculateKernel();
    EXPECT_EQ(touched(*k.GetKernel()), (platform::Extent{0, 0, 2, 1}));
    EXPECT_GT(Cell(1, 0), Cell(1, 1));
}

TEST_F(KernelCalculator, A_fix_outside_adds_only_where_its_square_overlaps_the_grid) {
    SetGrid(9, 9, 1.0);
    k.SetManualBandwidth(1.0);
    for (const auto& fix :
         {platform::Point{-1.5, 4.5}, {4.5, 11.5}, {10.5, 4.5}, {4.5, -1.5}, {-5e8, 4.5}, {4.5, 5e8}}) {
        k.SetInputCoords(PointSample{fix});
        k.CalculateKernel();
        EXPECT_EQ(k.lErrorStatus, 0);
        EXPECT_TRUE(touched(*k.GetKernel()).IsEmpty()) << fix.X << " " << fix.Y;
        EXPECT_EQ(k.GetKernelVolume(), 0.0);
    }
    k.SetInputCoords(PointSample{{-0.5, -0.5}});
    k.CalculateKernel();
    EXPECT_EQ(touched(*k.GetKernel()), (platform::Extent{0, 8, 0, 8}));
}

TEST_F(KernelCalculator, The_volume_of_a_captured_fix_is_the_scaling_factor) {
    k.SetInputCoords(PointSample{{503.0, 498.0}});
    SetGrid(200, 200, 5.0);
    k.SetManualBandwidth(40.0);
    k.SetLimitRadius(400.0);
    k.CalculateKernel();
    EXPECT_NEAR(k.GetKernelVolume(), 1000000.0, 1e-3);
    k.SetScalingFactor(1.0);
    k.SetManualBandwidth(40.0);
    k.CalculateKernel();
    EXPECT_NEAR(k.GetKernelVolume(), 1.0, 1e-9);
}

TEST_F(KernelCalculator, Nothing_to_compute_is_reported_before_anything_else) {
    const std::string text = "The bandwidth or dimensions of the output raster were 0. Could not calculate kernel.\r";
    k.SetInputCoords(kSquare);
    SetGrid(5, 5, 1.0);
    k.SetProportionHRefBandwidth(0.5);
    k.CalculateKernel();
    EXPECT_EQ(k.lErrorStatus, 5001);
    EXPECT_EQ(k.WarningMessages(), text);
    k.CalculateKernel();
    EXPECT_EQ(k.WarningMessages(), text);

    clsKernelCalculator noGrid(messages);
    noGrid.SetInputCoords(kSquare);
    noGrid.SetManualBandwidth(1.0);
    noGrid.CalculateKernel();
    EXPECT_EQ(noGrid.lErrorStatus, 5001);
}

TEST_F(KernelCalculator, A_cell_size_that_rounds_to_0_faults) {
    k.SetInputCoords(kSquare);
    SetGrid(5, 5, 0.4);
    k.SetManualBandwidth(1.0);
    k.SetLimitRadius(3.0);
    k.CalculateKernel();
    EXPECT_EQ(k.lErrorStatus, 1000);
    EXPECT_EQ(messages.Last().Text, "KernelCalculator: 1000, 11, Division by zero");
    EXPECT_EQ(messages.Last().Title, "Error");
    EXPECT_EQ(messages.Last().Sign, platform::Icon::kCritical);
    EXPECT_EQ(k.GetKernel(), nullptr);
}

// The status was cleared by the sample; the grid is still too large and must not be allocated.
TEST_F(KernelCalculator, A_grid_over_the_limit_is_refused_even_when_the_sample_comes_last) {
    SetGrid(2000000, 2000000, 1.0);
    k.SetInputCoords(kSquare);
    k.SetManualBandwidth(1.0);
    k.CalculateKernel();
    EXPECT_EQ(k.lErrorStatus, 1001);
    EXPECT_EQ(k.GetKernel(), nullptr);
}

TEST_F(KernelCalculator, No_fixes_fault_without_a_grid) {
    k.SetInputCoords(PointSample{});
    SetGrid(5, 5, 1.0);
    k.SetManualBandwidth(1.0);
    k.CalculateKernel();
    EXPECT_EQ(k.lErrorStatus, 1008);
    EXPECT_EQ(k.GetKernel(), nullptr);
    k.SetInputCoords(PointSample{});
    k.SetFixedKernel(false);
    k.SetManualBandwidth(2.0);
    k.CalculateKernel();
    EXPECT_EQ(k.lErrorStatus, 10082);
    EXPECT_EQ(messages.Last().Text, "Local smooth error: 10082, 0, 0, 2");
}

TEST_F(KernelCalculator, Coordinates_that_are_no_numbers_fault_without_a_grid) {
    SetGrid(5, 5, 1.0);
    for (const double bad :
         {std::numeric_limits<double>::quiet_NaN(), std::numeric_limits<double>::infinity(), 1e300}) {
        k.SetFixedKernel(true);
        k.SetInputCoords(PointSample{{1.0, 1.0}, {bad, 1.0}});
        k.SetManualBandwidth(1.0);
        k.CalculateKernel();
        EXPECT_EQ(k.lErrorStatus, 1010) << bad;
        EXPECT_EQ(k.GetKernel(), nullptr);
        k.SetFixedKernel(false);
        k.SetInputCoords(PointSample{{1.0, 1.0}, {1.0, bad}});
        k.CalculateKernel();
        EXPECT_EQ(k.lErrorStatus, bad == 1e300 ? 1010 : 10081) << bad;
        EXPECT_EQ(k.GetKernel(), nullptr);
    }
}

TEST_F(KernelCalculator, An_origin_that_is_no_number_faults) {
    k.SetInputCoords(kSquare);
    SetGrid(5, 5, 1.0);
    k.SetManualBandwidth(1.0);
    for (const double bad : {std::numeric_limits<double>::quiet_NaN(), std::numeric_limits<double>::infinity()}) {
        k.SetInputCoords(kSquare);
        k.SetOriginCoords(0.0, bad);
        k.CalculateKernel();
        EXPECT_EQ(k.lErrorStatus, 1000);
    }
}

// A bandwidth of 1.4E-9 standard deviations: the scaling factor over its square is no number any more.
TEST_F(KernelCalculator, Results_beyond_the_range_of_numbers_fault) {
    k.SetInputCoords(PointSample{{0.0, 0.0}, {1e9, 1e9}});
    SetGrid(5, 5, 1.0);
    k.SetEnforceUnitVariance(true);
    k.SetManualBandwidth(1.0);
    k.SetScalingFactor(1.7e308);
    k.CalculateKernel();
    EXPECT_EQ(k.lErrorStatus, 1020);
    EXPECT_EQ(k.GetKernel(), nullptr);
}

// n x h^2 is beyond the range of numbers: in the normalisation, after the step of the last point, and in the pilot.
TEST_F(KernelCalculator, A_bandwidth_whose_square_overflows_faults) {
    k.SetInputCoords(kSquare);
    SetGrid(5, 5, 1.0);
    k.SetManualBandwidth(1e200);
    k.CalculateKernel();
    EXPECT_EQ(k.lErrorStatus, 1020);
    EXPECT_EQ(k.GetKernel(), nullptr);
    k.SetInputCoords(kSquare);
    k.SetFixedKernel(false);
    k.CalculateKernel();
    EXPECT_EQ(k.lErrorStatus, 10082);
    EXPECT_EQ(k.GetKernel(), nullptr);
}

TEST_F(KernelCalculator, A_search_radius_beyond_32_bits_faults) {
    k.SetInputCoords(kSquare);
    SetGrid(5, 5, 1.0);
    k.SetManualBandwidth(1.0);
    k.SetLimitRadius(3e9);
    k.CalculateKernel();
    EXPECT_EQ(k.lErrorStatus, 1000);
}

TEST(KernelGrid, Reset_refuses_what_it_cannot_hold) {
    KernelGrid grid;
    EXPECT_THROW(grid.Reset(50'000'001, 1), platform::RuntimeError);
    EXPECT_THROW(grid.Reset(2147483647, 2147483647), platform::RuntimeError);
    EXPECT_THROW(grid.Reset(-1, 5), platform::RuntimeError);
    EXPECT_EQ(grid.Columns(), 0);
    grid.Reset(3, 2);
    grid(2, 1) = 7.0;
    EXPECT_EQ(grid.Row(1)[2], 7.0);
    grid.Reset(3, 2);
    EXPECT_EQ(grid(2, 1), 0.0);
}

}  // namespace
}  // namespace wxl::engine
