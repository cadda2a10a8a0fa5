// Grids of the kernel calculator beside the plain loop over fixes and cells.

#include "tests/support/engine_twins.h"
#include "tests/support/samples.h"
#include "tests/unit/engine/calculator_fixture.h"

#include <algorithm>
#include <cmath>

namespace wxl::engine {
namespace {

/// Tells a calculator what the twin is told. The twin's bandwidth is that of the points as used, the calculator's
/// manual one in map units.
void configure(clsKernelCalculator& k, const tests::TwinKernel& twin) {
    k.SetInputCoords(twin.Points);
    k.SetCellSize(twin.CellSize);
    k.SetColumns(twin.Columns);
    k.SetRows(twin.Rows);
    k.SetOriginCoords(twin.OriginX, twin.OriginY);
    k.SetLimitRadius(twin.LimitRadius);
    k.SetScalingFactor(twin.ScalingFactor);
    k.SetFixedKernel(!twin.Adaptive);
    k.SetEnforceUnitVariance(twin.UnitVariance);
    k.SetManualBandwidth(twin.Bandwidth);
    if (twin.UnitVariance) {
        double sdX = 0.0;
        double sdY = 0.0;
        tests::twin_rescaled(twin.Points, sdX, sdY);
        k.SetManualBandwidth(twin.Bandwidth * (sdX + sdY) / 2.0);
    }
}

void expect_same_grid(const tests::TwinKernel& twin, const std::string& name) {
    memory::MemoryMessages messages;
    clsKernelCalculator k(messages);
    configure(k, twin);
    k.CalculateKernel();
    ASSERT_EQ(k.lErrorStatus, 0) << name << ": " << k.WarningMessages() << messages.Last().Text;

    const tests::TwinGrid expected = tests::twin_grid(twin);
    const double peak = *std::max_element(expected.Cells.begin(), expected.Cells.end());
    double worst = 0.0;
    std::size_t unlike = 0;
    for (std::int32_t row = 0; row < twin.Rows; ++row) {
        for (std::int32_t column = 0; column < twin.Columns; ++column) {
            const double cell = expected.Cells[static_cast<std::size_t>(row) * static_cast<std::size_t>(twin.Columns) +
                                               static_cast<std::size_t>(column)];
            const double got = (*k.GetKernel())(column, row);
            worst = std::max(worst, std::abs(got - cell));
            // Cells that no fix reaches are 0 in both; contributions that vanish beside the peak may be left out.
            unlike += (got == 0.0) != (cell == 0.0) && cell > 1e-140 * peak;
        }
    }
    EXPECT_LE(worst, 1e-12 * peak) << name;
    EXPECT_EQ(unlike, 0U) << name;
    EXPECT_NEAR(k.GetKernelVolume(), expected.Volume, 1e-12 * expected.Volume) << name;
}

/// A grid over the bulk of the sample that leaves some fixes outside.
tests::TwinKernel over(const tests::NamedSample& sample, std::int32_t cells) {
    std::vector<double> xs;
    std::vector<double> ys;
    for (const auto& p : sample.Points) {
        xs.push_back(p.X);
        ys.push_back(p.Y);
    }
    std::sort(xs.begin(), xs.end());
    std::sort(ys.begin(), ys.end());
    const std::size_t low = xs.size() / 20;
    const std::size_t high = xs.size() - 1 - low;
    const double span = std::max({xs[high] - xs[low], ys[high] - ys[low], 1.0});
    tests::TwinKernel twin;
    twin.Points = sample.Points;
    twin.CellSize = std::max(1, static_cast<std::int32_t>(span / cells));
    twin.Columns = cells + 7;
    twin.Rows = cells;
    twin.OriginX = xs[low] - 0.37 * twin.CellSize;
    twin.OriginY = ys[low] + 0.21 * twin.CellSize;
    twin.Bandwidth = 3.0 * twin.CellSize;
    twin.LimitRadius = 12.0 * twin.CellSize;
    return twin;
}

TEST(KernelDifferential, Fixed_kernel_on_hostile_samples) {
    for (const auto& sample : tests::hostile_samples(300)) expect_same_grid(over(sample, 60), sample.Name);
}

TEST(KernelDifferential, Adaptive_kernel_on_hostile_samples) {
    for (const auto& sample : tests::hostile_samples(700)) {
        tests::TwinKernel twin = over(sample, 60);
        twin.Adaptive = true;
        expect_same_grid(twin, sample.Name);
    }
}

TEST(KernelDifferential, Rescaled_kernel_on_hostile_samples) {
    for (const auto& sample : tests::hostile_samples(200)) {
        if (sample.Name == "on a line") continue;  // no spread along y: nothing to rescale by
        double sdX = 0.0;
        double sdY = 0.0;
        tests::twin_rescaled(sample.Points, sdX, sdY);
        for (const bool adaptive : {false, true}) {
            tests::TwinKernel twin = over(sample, 50);
            twin.UnitVariance = true;
            twin.Adaptive = adaptive;
            twin.Bandwidth = std::max(0.4, 1.01 * twin.CellSize / ((sdX + sdY) / 2.0));
            expect_same_grid(twin, sample.Name);
        }
    }
}

TEST(KernelDifferential, Random_grids_bandwidths_and_radii) {
    tests::Dice dice(91);
    for (int round = 0; round < 60; ++round) {
        tests::TwinKernel twin;
        const auto count = static_cast<std::size_t>(1.0 + 60.0 * dice.Uniform());
        twin.Points =
            tests::normal_sample(count, 5.0 + 60.0 * dice.Uniform(), {100.0, 120.0}, static_cast<std::uint64_t>(round));
        twin.CellSize = 1 + static_cast<std::int32_t>(4.0 * dice.Uniform());
        twin.Columns = 1 + static_cast<std::int32_t>(70.0 * dice.Uniform());
        twin.Rows = 1 + static_cast<std::int32_t>(50.0 * dice.Uniform());
        twin.OriginX = 150.0 * dice.Uniform();
        twin.OriginY = 150.0 * dice.Uniform();
        twin.Bandwidth = twin.CellSize * (1.0 + 20.0 * dice.Uniform());
        twin.LimitRadius = twin.CellSize * 100.0 * dice.Uniform();
        twin.ScalingFactor = round % 3 == 0 ? 1.0 : 1e6;
        twin.Adaptive = round % 2 == 1;
        expect_same_grid(twin, "round " + std::to_string(round));
    }
}

// Factors and their products go far below the smallest numbers here.
TEST(KernelDifferential, A_reach_of_a_hundred_bandwidths) {
    tests::TwinKernel twin;
    twin.Points = tests::normal_sample(40, 80.0, {150.0, 150.0}, 92);
    twin.Columns = twin.Rows = 300;
    twin.Bandwidth = 1.0;
    twin.LimitRadius = 100.0;
    expect_same_grid(twin, "fixed");
    twin.Adaptive = true;
    expect_same_grid(twin, "adaptive");
}

// More columns than one tile of the accumulation holds.
TEST(KernelDifferential, Squares_wider_than_a_tile) {
    tests::TwinKernel twin;
    twin.Points = tests::normal_sample(30, 200.0, {700.0, 40.0}, 93);
    twin.Columns = 1400;
    twin.Rows = 80;
    twin.Bandwidth = 150.0;
    twin.LimitRadius = 600.0;
    expect_same_grid(twin, "wide");
}

}  // namespace
}  // namespace wxl::engine
