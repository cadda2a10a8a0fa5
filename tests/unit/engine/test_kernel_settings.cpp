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
    memory::MemoryRasterLayer layer("relief",
                                    {.OriginX = 12.5, .OriginY = -7.25, .CellSize = 29.6, .Columns = 40, .Rows = 30});
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
    memory::MemoryRasterLayer layer("relief", {.CellSize = 1.0, .Columns = 10000, .Rows = 10000});
    k.SetReferenceRaster(&layer);
    EXPECT_EQ(k.lErrorStatus, 1001);
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
    platform::ProgressBar bar;
    k.SetCellSize(0.0);
    k.SetManualBandwidth(-1.0);
    k.SetProportionHRefBandwidth(0.0);
    k.SetScalingFactor(0.0);
    k.SetLimitRadius(-1.0);
    k.SetRows(0);
    k.SetColumns(0);
    k.SetProgressBar(&bar);
    EXPECT_NE(k.GetKernel(), nullptr);
    EXPECT_EQ(bar.Value, 0.0);
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
