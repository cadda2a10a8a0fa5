// Setters and getters of the kernel calculator.

#include "adapters/memory/memory_map.h"
#include "tests/unit/engine/calculator_fixture.h"

#include <limits>

namespace wxl::engine {
namespace {

constexpr double kInfinity = std::numeric_limits<double>::infinity();
constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
constexpr const char* kTooLarge =
    "Output raster is too large (> 50 million cells). Kernel could not be calculated. Please increase the output cell "
    "size.\r";

TEST_F(KernelCalculator, Starts_empty) {
    EXPECT_FALSE(k.LSCVMinimized);
    EXPECT_FALSE(k.HasLSCVProfile);
    EXPECT_EQ(k.lErrorStatus, 0);
    EXPECT_EQ(k.GetKernel(), nullptr);
    EXPECT_FALSE(k.GetLSCVProfile().has_value());
    EXPECT_EQ(k.GetBandwidth(), 0.0);
    EXPECT_EQ(k.GetHREF(), 0.0);
    EXPECT_EQ(k.GetCellSize(), 0.0);
    EXPECT_EQ(k.GetRowCount(), 0);
    EXPECT_EQ(k.GetColumnCount(), 0);
    EXPECT_EQ(k.GetKernelVolume(), 0.0);
    EXPECT_EQ(k.WarningMessages(), "");
}

TEST_F(KernelCalculator, SetCellSize_rounds_half_to_even) {
    for (const auto& [typed, kept] : {std::pair(2.5, 2.0), std::pair(3.5, 4.0), std::pair(39.5, 40.0),
                                      std::pair(2.51, 3.0), std::pair(0.4, 0.0), std::pair(0.5, 0.0)}) {
        k.SetCellSize(typed);
        EXPECT_EQ(k.GetCellSize(), kept) << typed;
    }
}

TEST_F(KernelCalculator, SetExactCellSize_keeps_fractions) {
    for (const double side : {0.2, 2.5, 3.0}) {
        k.SetExactCellSize(side);
        EXPECT_EQ(k.GetCellSize(), side);
    }
    for (const double refused : {0.0, -3.0, kNaN, kInfinity, 2147483648.0}) k.SetExactCellSize(refused);
    EXPECT_EQ(k.GetCellSize(), 3.0);
}

TEST_F(KernelCalculator, SetCellSize_keeps_the_old_value_where_it_cannot_take_the_new_one) {
    k.SetCellSize(7.0);
    for (const double refused : {0.0, -3.0, kNaN, kInfinity, 1e300, 2147483648.0}) k.SetCellSize(refused);
    EXPECT_EQ(k.GetCellSize(), 7.0);
    k.SetCellSize(2147483647.0);
    EXPECT_EQ(k.GetCellSize(), 2147483647.0);
}

TEST_F(KernelCalculator, SetManualBandwidth_keeps_the_old_value_where_it_refuses) {
    k.SetManualBandwidth(12.5);
    for (const double refused : {0.0, -1.0, kNaN, kInfinity}) k.SetManualBandwidth(refused);
    EXPECT_EQ(k.GetBandwidth(), 12.5);
}

// HREF, then a refused bandwidth: what remains is HREF, but it is now divided like a manual bandwidth.
TEST_F(KernelCalculator, A_refused_manual_bandwidth_still_sets_the_estimator_to_manual) {
    k.SetInputCoords(kRectangle);
    k.SetEnforceUnitVariance(true);
    SetGrid(4, 4, 1.0);
    k.CalculateHREF();
    const double href = k.GetHREF();
    k.SetManualBandwidth(0.0);
    k.CalculateKernel();
    EXPECT_NEAR(k.GetBandwidth(), href / 1.7320508075688772, 1e-15);
}

TEST_F(KernelCalculator, A_refused_proportion_still_sets_the_estimator_to_manual) {
    k.SetInputCoords(kRectangle);
    k.SetEnforceUnitVariance(true);
    SetGrid(4, 4, 1.0);
    k.CalculateHREF();
    const double href = k.GetHREF();
    k.SetProportionHRefBandwidth(-2.0);
    k.CalculateKernel();
    EXPECT_NEAR(k.GetBandwidth(), href / 1.7320508075688772, 1e-15);
}

TEST_F(KernelCalculator, Fifty_million_cells_are_accepted) {
    k.SetRows(10000);
    k.SetColumns(5000);
    EXPECT_EQ(k.lErrorStatus, 0);
    EXPECT_EQ(k.WarningMessages(), "");
}

TEST_F(KernelCalculator, SetColumns_reports_more_than_fifty_million_cells) {
    k.SetRows(10000);
    k.SetColumns(5001);
    EXPECT_EQ(k.lErrorStatus, 1001);
    EXPECT_EQ(k.WarningMessages(), kTooLarge);
    EXPECT_EQ(k.GetColumnCount(), 5001);
}

TEST_F(KernelCalculator, SetRows_refuses_more_than_fifty_million_cells_silently) {
    k.SetColumns(5001);
    k.SetRows(10000);
    EXPECT_EQ(k.lErrorStatus, 1001);
    EXPECT_EQ(k.WarningMessages(), "");
}

TEST_F(KernelCalculator, The_product_of_rows_and_columns_does_not_overflow) {
    k.SetRows(2147483647);
    k.SetColumns(2147483647);
    EXPECT_EQ(k.lErrorStatus, 1001);
}

TEST_F(KernelCalculator, Rows_and_columns_below_1_are_ignored) {
    k.SetRows(3);
    k.SetColumns(4);
    k.SetRows(0);
    k.SetColumns(-2147483647 - 1);
    EXPECT_EQ(k.GetRowCount(), 3);
    EXPECT_EQ(k.GetColumnCount(), 4);
}

TEST_F(KernelCalculator, SetReferenceRaster_takes_the_geometry) {
    const platform::RasterGeometry layer{
        .OriginX = 12.5, .OriginY = -7.25, .CellSize = 29.6, .Columns = 40, .Rows = 30};
    k.SetReferenceRaster(&layer);
    EXPECT_EQ(k.GetCellSize(), 30.0);
    EXPECT_EQ(k.GetColumnCount(), 40);
    EXPECT_EQ(k.GetRowCount(), 30);
    EXPECT_EQ(k.GetOriginX(), 12.5);
    EXPECT_EQ(k.GetOriginY(), -7.25);
    EXPECT_EQ(k.lErrorStatus, 0);
}

TEST_F(KernelCalculator, SetReferenceRaster_without_a_raster_blocks_every_calculation_until_the_next_sample) {
    k.SetInputCoords(kSquare);
    k.SetReferenceRaster(nullptr);
    EXPECT_EQ(k.lErrorStatus, 1010);
    k.CalculateHREF();
    k.CalculateLSCV();
    k.CalculateBCV();
    k.CalculateKernel();
    EXPECT_EQ(k.lErrorStatus, 1010);
    EXPECT_EQ(k.GetHREF(), 0.0);
    k.SetInputCoords(kSquare);
    EXPECT_EQ(k.lErrorStatus, 0);
    k.CalculateHREF();
    EXPECT_GT(k.GetHREF(), 0.0);
}

TEST_F(KernelCalculator, A_reference_raster_over_fifty_million_cells_is_refused) {
    const platform::RasterGeometry layer{.CellSize = 1.0, .Columns = 10000, .Rows = 10000};
    k.SetReferenceRaster(&layer);
    EXPECT_EQ(k.lErrorStatus, 1001);
    EXPECT_EQ(k.WarningMessages(), "");
}

TEST_F(KernelCalculator, A_grid_over_fifty_million_cells_blocks_every_calculation_until_the_next_sample) {
    k.SetInputCoords(kSquare);
    k.SetColumns(5001);
    k.SetRows(10000);
    const std::vector<void (clsKernelCalculator::*)()> calculations = {
        &clsKernelCalculator::CalculateHREF, &clsKernelCalculator::CalculateLSCV, &clsKernelCalculator::CalculateBCV,
        &clsKernelCalculator::CalculateKernel};
    for (std::size_t i = 0; i < calculations.size(); ++i) {
        (k.*calculations[i])();
        EXPECT_EQ(k.lErrorStatus, 1001) << i;
        EXPECT_EQ(k.GetHREF(), 0.0) << i;
        EXPECT_EQ(k.GetBandwidth(), 0.0) << i;
        EXPECT_EQ(k.WarningMessages(), "") << i;
    }
    k.SetInputCoords(kSquare);
    EXPECT_EQ(k.lErrorStatus, 0);
    k.CalculateHREF();
    EXPECT_DOUBLE_EQ(k.GetHREF(), 0.916486424665735);
}

TEST_F(KernelCalculator, SetInputCoords_keeps_bandwidth_and_grid_but_clears_the_rest) {
    k.SetInputCoords(kSquare);
    SetGrid(10, 10, 1.0);
    k.SetManualBandwidth(0.5);
    k.CalculateKernel();
    EXPECT_EQ(k.lErrorStatus, 5002);
    k.LSCVMinimized = true;
    k.HasLSCVProfile = true;
    k.SetInputCoords(kSquare);
    EXPECT_EQ(k.lErrorStatus, 0);
    EXPECT_EQ(k.WarningMessages(), "");
    EXPECT_FALSE(k.LSCVMinimized);
    EXPECT_FALSE(k.HasLSCVProfile);
    EXPECT_EQ(k.GetBandwidth(), 0.5);
    EXPECT_EQ(k.GetColumnCount(), 10);
}

// Both samples have HREF 4^(-1/6) once rescaled; standard deviations of the second: sqrt(16/3) and sqrt(64/3).
TEST_F(KernelCalculator, SetInputCoords_clears_the_proportion_and_rescales_the_new_sample) {
    k.SetInputCoords(kRectangle);
    k.SetEnforceUnitVariance(true);
    SetGrid(5, 5, 1.0);
    k.SetManualBandwidth(4.0);
    k.SetProportionHRefBandwidth(2.0);
    k.CalculateHREF();
    k.SetInputCoords(PointSample{{0.0, 0.0}, {4.0, 0.0}, {0.0, 8.0}, {4.0, 8.0}});
    k.CalculateHREF();
    EXPECT_DOUBLE_EQ(k.GetHREF(), 0.7937005259840998);
    k.CalculateKernel();
    EXPECT_EQ(k.lErrorStatus, 0);
    EXPECT_DOUBLE_EQ(k.GetBandwidth(), 0.7937005259840998);
    EXPECT_DOUBLE_EQ(k.GetScaledBandwidth(), 2.749459273997206);
}

// 3 map units are sqrt(3) of the rescaled units of the rectangle; HREF is in those units already.
TEST_F(KernelCalculator, SetInputCoords_keeps_href_and_the_way_of_choosing_the_bandwidth) {
    k.SetInputCoords(kRectangle);
    k.SetEnforceUnitVariance(true);
    SetGrid(5, 5, 1.0);
    k.CalculateHREF();
    k.SetInputCoords(kRectangle);
    EXPECT_DOUBLE_EQ(k.GetHREF(), 0.7937005259840998);
    k.CalculateKernel();
    EXPECT_DOUBLE_EQ(k.GetBandwidth(), 0.7937005259840998);
    k.SetManualBandwidth(3.0);
    k.SetInputCoords(kRectangle);
    k.CalculateKernel();
    EXPECT_NEAR(k.GetBandwidth(), 1.7320508075688772, 1e-15);
}

// Radius 2 of cells of 1: three cells beyond the fix's own. Peak: 10 / (2 pi 2^2).
TEST_F(KernelCalculator, SetInputCoords_keeps_limit_radius_and_scaling_factor) {
    k.SetLimitRadius(2.0);
    k.SetScalingFactor(10.0);
    SetGrid(11, 11, 1.0);
    k.SetManualBandwidth(2.0);
    k.SetInputCoords(PointSample{{5.5, 5.5}});
    k.CalculateKernel();
    ASSERT_EQ(k.lErrorStatus, 0);
    EXPECT_NEAR(Cell(5, 5), 0.3978873577297387, 1e-15);
    EXPECT_GT(Cell(8, 8), 0.0);
    EXPECT_EQ(Cell(9, 5), 0.0);
    EXPECT_EQ(Cell(5, 9), 0.0);
}

TEST_F(KernelCalculator, Every_accepted_setting_makes_the_kernel_invalid) {
    SetGrid(5, 5, 1.0);
    k.SetInputCoords(kSquare);
    const auto computed = [this] {
        k.SetManualBandwidth(1.0);
        k.CalculateKernel();
        return k.GetKernel() != nullptr;
    };
    const std::vector<std::function<void()>> accepted = {[this] { k.SetCellSize(1.0); },
                                                         [this] { k.SetManualBandwidth(1.0); },
                                                         [this] { k.SetScalingFactor(10.0); },
                                                         [this] { k.SetKernelType(kernel_Guassian); },
                                                         [this] { k.SetRows(5); },
                                                         [this] { k.SetColumns(5); },
                                                         [this] { k.SetOriginCoords(0.0, 0.0); },
                                                         [this] { k.SetFixedKernel(true); },
                                                         [this] { k.SetLimitRadius(1.0); },
                                                         [this] { k.SetEnforceUnitVariance(false); },
                                                         [this] { k.SetInputCoords(kSquare); },
                                                         [this] { k.SetProportionHRefBandwidth(1.0); }};
    for (std::size_t i = 0; i < accepted.size(); ++i) {
        ASSERT_TRUE(computed()) << i;
        accepted[i]();
        EXPECT_EQ(k.GetKernel(), nullptr) << i;
    }
}

TEST_F(KernelCalculator, Refused_settings_leave_the_kernel_valid) {
    SetGrid(5, 5, 1.0);
    k.SetInputCoords(kSquare);
    k.SetManualBandwidth(1.0);
    k.CalculateKernel();
    double bar = 0.0;
    k.SetCellSize(0.0);
    k.SetManualBandwidth(-1.0);
    k.SetProportionHRefBandwidth(0.0);
    k.SetScalingFactor(0.0);
    k.SetLimitRadius(-1.0);
    k.SetRows(0);
    k.SetColumns(0);
    k.SetProgressBar(&bar);
    EXPECT_NE(k.GetKernel(), nullptr);
    EXPECT_EQ(bar, 0.0);
}

TEST_F(KernelCalculator, Enumerations_have_their_values) {
    EXPECT_EQ(kernel_Guassian, 0);
    EXPECT_EQ(be_Manual, 0);
    EXPECT_EQ(be_LSCV, 1);
    EXPECT_EQ(be_HREF, 2);
    EXPECT_EQ(be_BCV, 3);
}

}  // namespace
}  // namespace wxl::engine
