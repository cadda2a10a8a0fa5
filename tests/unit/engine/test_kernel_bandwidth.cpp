// The bandwidth of the kernel calculator: HREF, searches, unit variance, manual values, proportions.

#include "engine/clsLSCV.h"
#include "tests/support/samples.h"
#include "tests/unit/engine/calculator_fixture.h"

#include <cmath>
#include <limits>

namespace wxl::engine {
namespace {

// Each place twice: both scores fall without bound as h goes to 0.
const PointSample kTwice = {{0.0, 0.0}, {0.0, 0.0}, {9.0, 0.0}, {9.0, 0.0},
                            {0.0, 9.0}, {0.0, 9.0}, {9.0, 9.0}, {9.0, 9.0}};

// Both variances are 4/3, sigma 1.1547005, and 4^(-1/6) = 0.7937005.
TEST_F(KernelCalculator, Href_of_a_square) {
    k.SetInputCoords(kSquare);
    k.CalculateHREF();
    EXPECT_DOUBLE_EQ(k.GetHREF(), 0.916486424665735);
    EXPECT_EQ(k.GetBandwidth(), k.GetHREF());
    EXPECT_EQ(k.GetScaledBandwidth(), k.GetHREF());
    EXPECT_EQ(k.lErrorStatus, 0);
}

// Rescaled, both variances are 1: HREF is n^(-1/6) whatever the spread, in units of standard deviations.
TEST_F(KernelCalculator, Href_under_unit_variance_is_in_standard_deviations) {
    k.SetInputCoords(kRectangle);
    k.SetEnforceUnitVariance(true);
    k.CalculateHREF();
    EXPECT_DOUBLE_EQ(k.GetHREF(), std::pow(4.0, -1.0 / 6.0));
    EXPECT_DOUBLE_EQ(k.GetScaledBandwidth(), std::pow(4.0, -1.0 / 6.0) * 1.7320508075688772);
}

TEST_F(KernelCalculator, Href_of_an_unusable_sample_is_minus_1_and_leaves_the_bandwidth) {
    const double nan = std::numeric_limits<double>::quiet_NaN();
    for (const PointSample& sample : {PointSample{}, PointSample{{1.0, 2.0}}, PointSample{{1.0, nan}, {2.0, 3.0}},
                                      PointSample{{1e200, 0.0}, {-1e200, 0.0}}}) {
        k.SetInputCoords(sample);
        k.SetManualBandwidth(33.0);
        k.CalculateHREF();
        EXPECT_EQ(k.GetHREF(), -1.0);
        EXPECT_EQ(k.GetBandwidth(), 33.0);
        EXPECT_EQ(k.lErrorStatus, 0);
        k.CalculateLSCV();
        k.CalculateBCV();
        EXPECT_EQ(k.GetBandwidth(), 33.0);
        EXPECT_EQ(k.lErrorStatus, 0);
        EXPECT_FALSE(k.GetLSCVProfile().has_value());
    }
}

TEST_F(KernelCalculator, Rescaling_without_a_spread_faults_with_the_number_of_its_step) {
    const PointSample sample = {{3.0, 1.0}, {3.0, 2.0}, {3.0, 5.0}};
    const auto status_after = [&](void (clsKernelCalculator::*calculate)()) {
        k.SetInputCoords(sample);
        k.SetEnforceUnitVariance(true);
        (k.*calculate)();
        return k.lErrorStatus;
    };
    EXPECT_EQ(status_after(&clsKernelCalculator::CalculateHREF), 1061);
    EXPECT_EQ(status_after(&clsKernelCalculator::CalculateLSCV), 10601);
    EXPECT_EQ(messages.Last().Text.substr(0, 10), "CalcLSCV: ");
    EXPECT_EQ(messages.Last().Title, "Error");
    EXPECT_EQ(status_after(&clsKernelCalculator::CalculateBCV), 11601);
    EXPECT_EQ(messages.Last().Text.substr(0, 9), "CalcBCV: ");
    EXPECT_EQ(messages.Last().Title, "Error");
    SetGrid(5, 5, 1.0);
    k.SetManualBandwidth(2.0);
    EXPECT_EQ(status_after(&clsKernelCalculator::CalculateKernel), 1006);
}

// Variance of x is 0: the first rescaled coordinate is a division by it.
TEST_F(KernelCalculator, Rescaling_without_a_spread_in_x_shows_what_went_wrong) {
    k.SetInputCoords(PointSample{{3.0, 1.0}, {3.0, 2.0}});
    k.SetEnforceUnitVariance(true);
    k.CalculateHREF();
    EXPECT_EQ(k.lErrorStatus, 1061);
    EXPECT_EQ(messages.Last().Text, "CalcHREF: 11, Division by zero");
    EXPECT_EQ(messages.Last().Title, "Error");
}

TEST_F(KernelCalculator, Rescaling_of_one_fix_faults_with_the_number_of_its_step) {
    k.SetInputCoords(PointSample{{3.0, 1.0}});
    k.SetEnforceUnitVariance(true);
    k.CalculateLSCV();
    EXPECT_EQ(k.lErrorStatus, 1060);
    k.SetInputCoords(PointSample{{3.0, 1.0}});
    k.CalculateBCV();
    EXPECT_EQ(k.lErrorStatus, 1160);
}

TEST_F(KernelCalculator, All_fixes_equal_leave_no_bandwidth) {
    k.SetInputCoords(PointSample{{3.0, 1.0}, {3.0, 1.0}, {3.0, 1.0}});
    SetGrid(5, 5, 1.0);
    k.CalculateHREF();
    EXPECT_EQ(k.GetHREF(), 0.0);
    k.CalculateLSCV();
    EXPECT_EQ(messages.Last().Text, "LSCV: 961, 0, 0");
    EXPECT_EQ(k.lErrorStatus, 0);
    k.CalculateKernel();
    EXPECT_EQ(k.lErrorStatus, 5001);
}

TEST_F(KernelCalculator, A_search_without_an_interior_minimum_warns_and_takes_href) {
    k.SetInputCoords(kTwice);
    k.CalculateLSCV();
    EXPECT_FALSE(k.LSCVMinimized);
    EXPECT_TRUE(k.HasLSCVProfile);
    EXPECT_GT(k.GetHREF(), 0.0);
    EXPECT_EQ(k.GetBandwidth(), k.GetHREF());
    EXPECT_EQ(k.lErrorStatus, 0);
    const std::string lscv =
        "Warning: the LSCV function failed to minimize between 0.05*HREF and 2.00*HREF. The bandwidth defaulted to "
        "HREF.\r";
    EXPECT_EQ(k.WarningMessages(), lscv);
    // A large first term makes this search, too, end at an edge for two fixes: every score is 0.
    k.SetInputCoords(PointSample{{0.0, 0.0}, {3.0, 4.0}});
    k.CalculateBCV();
    EXPECT_FALSE(k.LSCVMinimized);
    EXPECT_EQ(k.GetBandwidth(), k.GetHREF());
    EXPECT_EQ(
        k.WarningMessages(),
        "Warning: the BCV function failed to minimize between 0.05*HREF and 2.00*HREF. The bandwidth defaulted to "
        "HREF.\r");
}

// LSCV of a square falls up to the end of its range.
TEST_F(KernelCalculator, A_search_that_fails_after_one_that_did_not_says_so) {
    k.SetInputCoords(kSquare);
    k.CalculateBCV();
    EXPECT_TRUE(k.LSCVMinimized);
    EXPECT_NEAR(k.GetBandwidth(), 1.22190552568559, 1e-13);
    EXPECT_EQ(k.WarningMessages(), "");
    k.CalculateLSCV();
    EXPECT_FALSE(k.LSCVMinimized);
    EXPECT_DOUBLE_EQ(k.GetBandwidth(), 0.916486424665735);
    EXPECT_EQ(
        k.WarningMessages(),
        "Warning: the LSCV function failed to minimize between 0.05*HREF and 2.00*HREF. The bandwidth defaulted to "
        "HREF.\r");
    const SearchProfile profile = *k.GetLSCVProfile();
    for (std::size_t row = 1; row + 2 < profile.size(); ++row) EXPECT_LT(profile[row].Score, profile[row - 1].Score);
}

TEST_F(KernelCalculator, A_search_with_an_interior_minimum_takes_it) {
    k.SetInputCoords(tests::normal_sample(150, 100.0, {5e5, 5.8e6}, 81));
    k.CalculateLSCV();
    ASSERT_TRUE(k.LSCVMinimized);
    EXPECT_EQ(k.WarningMessages(), "");
    const auto profile = k.GetLSCVProfile();
    ASSERT_TRUE(profile.has_value());
    EXPECT_EQ(profile->front().Bandwidth, 0.05 * k.GetHREF());
    double lowest = std::numeric_limits<double>::infinity();
    double best = 0.0;
    for (const ProfileRow& row : *profile) {
        if (row.Bandwidth == 0.0 || row.Score >= lowest) continue;
        lowest = row.Score;
        best = row.Bandwidth;
    }
    EXPECT_EQ(k.GetBandwidth(), best);
}

// Rescaled coordinates go into the search: the range is that of the HREF in standard deviations.
TEST_F(KernelCalculator, Searches_under_unit_variance_run_in_standard_deviations) {
    PointSample stretched = tests::normal_sample(60, 1.0, {0.0, 0.0}, 82);
    for (auto& point : stretched) point.X *= 1000.0;
    k.SetInputCoords(stretched);
    k.SetEnforceUnitVariance(true);
    k.CalculateBCV();
    EXPECT_NEAR(k.GetHREF(), std::pow(60.0, -1.0 / 6.0), 1e-14);
    EXPECT_NEAR(k.GetLSCVProfile()->front().Bandwidth, 0.05 * std::pow(60.0, -1.0 / 6.0), 1e-14);
}

// Mean standard deviation 1.7320508: 3 map units are 1.7320508 of the rescaled units.
TEST_F(KernelCalculator, A_manual_bandwidth_is_in_map_units_before_and_after_the_kernel) {
    k.SetInputCoords(kRectangle);
    k.SetEnforceUnitVariance(true);
    SetGrid(5, 5, 1.0);
    k.SetManualBandwidth(3.0);
    EXPECT_EQ(k.GetScaledBandwidth(), 3.0);
    k.CalculateKernel();
    EXPECT_EQ(k.lErrorStatus, 0);
    EXPECT_NEAR(k.GetBandwidth(), 1.7320508075688772, 1e-15);
    EXPECT_NEAR(k.GetScaledBandwidth(), 3.0, 1e-15);
}

// 4^(-1/6) in standard deviations, whose mean is sqrt(3) map units.
TEST_F(KernelCalculator, Href_is_not_divided_under_unit_variance) {
    for (const double earlier : {0.0, 3.0}) {
        k.SetInputCoords(kRectangle);
        k.SetEnforceUnitVariance(true);
        SetGrid(5, 5, 1.0);
        k.SetManualBandwidth(earlier);
        k.CalculateHREF();
        k.CalculateKernel();
        EXPECT_EQ(k.lErrorStatus, 0) << earlier;
        EXPECT_DOUBLE_EQ(k.GetBandwidth(), 0.7937005259840998) << earlier;
        EXPECT_DOUBLE_EQ(k.GetScaledBandwidth(), 1.374729636998602) << earlier;
    }
}

TEST_F(KernelCalculator, The_bandwidth_of_a_search_is_not_divided_under_unit_variance) {
    for (const auto search : {&clsKernelCalculator::CalculateLSCV, &clsKernelCalculator::CalculateBCV}) {
        k.SetInputCoords(tests::normal_sample(60, 100.0, {500.0, 500.0}, 82));
        k.SetEnforceUnitVariance(true);
        SetGrid(5, 5, 1.0);
        k.SetManualBandwidth(300.0);
        (k.*search)();
        const double found = k.GetBandwidth();
        EXPECT_GT(found, 0.0);
        EXPECT_LT(found, 2.0);
        k.CalculateKernel();
        EXPECT_EQ(k.lErrorStatus, 0);
        EXPECT_EQ(k.GetBandwidth(), found);
    }
}

TEST_F(KernelCalculator, GetScaledBandwidth_scales_only_while_unit_variance_is_enforced) {
    k.SetInputCoords(kRectangle);
    k.SetEnforceUnitVariance(true);
    k.CalculateHREF();
    k.SetEnforceUnitVariance(false);
    EXPECT_DOUBLE_EQ(k.GetScaledBandwidth(), 0.7937005259840998);
}

TEST_F(KernelCalculator, A_proportion_multiplies_the_bandwidth_at_each_call) {
    k.SetInputCoords(kSquare);
    SetGrid(5, 5, 1.0);
    k.SetManualBandwidth(4.0);
    k.SetProportionHRefBandwidth(1.5);
    k.CalculateKernel();
    EXPECT_EQ(k.GetBandwidth(), 6.0);
    k.CalculateKernel();
    EXPECT_EQ(k.GetBandwidth(), 9.0);
}

TEST_F(KernelCalculator, A_proportion_of_href_under_unit_variance_is_not_divided) {
    k.SetInputCoords(kRectangle);
    k.SetEnforceUnitVariance(true);
    SetGrid(5, 5, 1.0);
    k.CalculateHREF();
    k.SetProportionHRefBandwidth(2.0);
    k.CalculateKernel();
    EXPECT_DOUBLE_EQ(k.GetBandwidth(), 2.0 * std::pow(4.0, -1.0 / 6.0));
}

TEST_F(KernelCalculator, A_bandwidth_below_the_cell_size_is_refused_with_both_numbers) {
    k.SetInputCoords(kSquare);
    SetGrid(5, 5, 10.0);
    k.SetManualBandwidth(9.999);
    k.CalculateKernel();
    EXPECT_EQ(k.lErrorStatus, 5002);
    EXPECT_EQ(k.WarningMessages(), "The bandwidth (9.999) is smaller than the cell size (10). Processing aborted.\r");
    EXPECT_EQ(k.GetKernel(), nullptr);
}

// A manual bandwidth was divided by sqrt(3) by then: the text has it in map units again.
TEST_F(KernelCalculator, The_refused_bandwidth_is_told_in_map_units_under_unit_variance) {
    k.SetInputCoords(kRectangle);
    k.SetEnforceUnitVariance(true);
    SetGrid(5, 5, 4.0);
    k.SetManualBandwidth(3.0);
    k.CalculateKernel();
    EXPECT_EQ(k.lErrorStatus, 5002);
    EXPECT_EQ(k.WarningMessages(), "The bandwidth (3) is smaller than the cell size (4). Processing aborted.\r");
}

TEST_F(KernelCalculator, The_refused_bandwidth_is_told_with_15_digits) {
    k.SetInputCoords(kSquare);
    SetGrid(5, 5, 4.0);
    k.SetManualBandwidth(10.0 / 3.0);
    k.CalculateKernel();
    EXPECT_EQ(k.WarningMessages(),
              "The bandwidth (3.33333333333333) is smaller than the cell size (4). Processing aborted.\r");
    k.SetInputCoords(kSquare);
    k.SetCellSize(1.0);
    k.CalculateHREF();
    k.CalculateKernel();
    EXPECT_EQ(k.WarningMessages(),
              "The bandwidth (0.916486424665735) is smaller than the cell size (1). Processing aborted.\r");
}

// 0.75 x 1.5 = 1.125 is above the cell size, 0.75 x 1.125 below it.
TEST_F(KernelCalculator, A_second_kernel_that_fails_leaves_nothing_of_the_first) {
    k.SetInputCoords(kSquare);
    SetGrid(5, 5, 1.0);
    k.SetManualBandwidth(1.5);
    k.SetProportionHRefBandwidth(0.75);
    k.CalculateKernel();
    ASSERT_EQ(k.lErrorStatus, 0);
    ASSERT_NE(k.GetKernel(), nullptr);
    ASSERT_GT(k.GetKernelVolume(), 0.0);
    k.CalculateKernel();
    EXPECT_EQ(k.lErrorStatus, 5002);
    EXPECT_EQ(k.WarningMessages(), "The bandwidth (0.84375) is smaller than the cell size (1). Processing aborted.\r");
    EXPECT_EQ(k.GetKernelVolume(), 0.0);
    EXPECT_EQ(k.GetKernel(), nullptr);
}

TEST_F(KernelCalculator, A_bandwidth_equal_to_the_cell_size_passes) {
    k.SetInputCoords(kSquare);
    SetGrid(5, 5, 10.0);
    k.SetManualBandwidth(10.0);
    k.CalculateKernel();
    EXPECT_EQ(k.lErrorStatus, 0);
}

// Divided by the mean standard deviation and multiplied back, 10 may come out as 9.999999999999998.
TEST_F(KernelCalculator, A_manual_bandwidth_equal_to_the_cell_size_passes_under_unit_variance) {
    for (std::uint64_t seed = 1; seed <= 200; ++seed) {
        k.SetInputCoords(tests::normal_sample(5, 37.0, {100.0, 100.0}, seed));
        k.SetEnforceUnitVariance(true);
        SetGrid(3, 3, 10.0);
        k.SetManualBandwidth(10.0);
        k.CalculateKernel();
        EXPECT_EQ(k.lErrorStatus, 0) << seed;
        k.SetManualBandwidth(9.999);
        k.CalculateKernel();
        EXPECT_EQ(k.lErrorStatus, 5002) << seed;
    }
}

}  // namespace
}  // namespace wxl::engine
