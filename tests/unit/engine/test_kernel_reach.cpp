#include "adapters/memory/memory_services.h"
#include "engine/clsKernelCalculator.h"
#include "engine/kernel_reach.h"
#include "platform/runtime_error.h"

#include <gtest/gtest.h>

namespace wxl::engine {
namespace {

using platform::Point;

const std::vector<Point> kFour = {{25, 25}, {125, 25}, {25, 125}, {1025, 25}};

double widest(const std::vector<Point>& fixes, const KernelShape& shape) {
    WorkClock clock;
    return widest_bandwidth(fixes, shape, clock);
}

// Standard deviations of x and y: 485.6267428111155 and 50. Pilot densities and factors were summed by hand in Python.
TEST(WidestBandwidth, Is_that_of_the_sparsest_fix_along_the_wider_axis) {
    EXPECT_DOUBLE_EQ(widest(kFour, {.Bandwidth = 100}), 100);
    EXPECT_NEAR(widest(kFour, {.Bandwidth = 100, .Adaptive = true}), 130.91322509053654, 1e-6);
    EXPECT_NEAR(widest(kFour, {.Bandwidth = 100, .Rescaled = true}), 181.33028245095218, 1e-9);
    EXPECT_NEAR(widest(kFour, {.Bandwidth = 100, .Rescaled = true, .Adaptive = true}), 211.73199371746495, 1e-6);
    EXPECT_EQ(widest(kFour, {.Bandwidth = 0, .Adaptive = true}), 0);
    EXPECT_THROW(widest({{1, 2}}, {.Bandwidth = 100, .Rescaled = true}), platform::RuntimeError);
}

struct CalculatorFixture {
    memory::MemoryMessages Messages;
    clsKernelCalculator Calculator{Messages};
};

/// Cells of 50 with the fixes at cell centres: a radius of 400 reaches 9 cells, 475 from the fix to the square's side.
clsKernelCalculator& computed(CalculatorFixture& rig, bool fixed, double radius) {
    clsKernelCalculator& k = rig.Calculator;
    k.SetInputCoords(kFour);
    k.SetFixedKernel(fixed);
    k.SetCellSize(50);
    k.SetColumns(80);
    k.SetRows(60);
    k.SetOriginCoords(-1500, -1500);
    k.SetManualBandwidth(100);
    k.SetLimitRadius(radius);
    k.CalculateKernel();
    return k;
}

// 1 - s^2 with s = erf(4.75 / sqrt 2) + 50^2 / 24 x 2 x slope of the normal curve there, and the mean of the same over
// the local bandwidths.
TEST(ShareBeyondReach, Is_what_the_search_squares_leave_out) {
    CalculatorFixture rig;
    EXPECT_EQ(rig.Calculator.GetShareBeyondReach(), 0.0);
    EXPECT_NEAR(computed(rig, true, 400).GetShareBeyondReach(), 3.0729072920676614e-06, 1e-12);
    CalculatorFixture adaptive;
    EXPECT_NEAR(computed(adaptive, false, 400).GetShareBeyondReach(), 0.0001306701088640283, 1e-10);
    // The sum over the cells says the same, but for the next term of the midpoint rule.
    EXPECT_NEAR(adaptive.Calculator.GetKernelVolume() / 1e6, 1.0 - 0.0001306701088640283, 1e-6);
}

TEST(ShareBeyondReach, Does_not_count_what_the_grid_cuts) {
    CalculatorFixture rig;
    computed(rig, true, 400).SetColumns(20);
    rig.Calculator.CalculateKernel();
    EXPECT_LT(rig.Calculator.GetKernelVolume(), 0.9e6);
    EXPECT_NEAR(rig.Calculator.GetShareBeyondReach(), 3.0729072920676614e-06, 1e-12);
}

}  // namespace
}  // namespace wxl::engine
