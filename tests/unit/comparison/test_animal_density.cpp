#include "comparison/animal_density.h"
#include "comparison/kernel_sum.h"
#include "tests/support/samples.h"

#include <cmath>
#include <gtest/gtest.h>
#include <numeric>

namespace wxl::comparison {
namespace {

// Four corners of a square of side 2: both variances are 4/3, HREF = sqrt(4/3) x 4^(-1/6).
const engine::PointSample kSquare = {{0, 0}, {2, 0}, {0, 2}, {2, 2}};
const double kSquareHref = std::sqrt(4.0 / 3.0) * std::pow(4.0, -1.0 / 6.0);

TEST(AnimalDensity, Bandwidth_by_each_rule) {
    EXPECT_NEAR(bandwidth_of(kSquare, {}).MapUnits, kSquareHref, 1e-12);
    EXPECT_NEAR(bandwidth_of(kSquare, {.Rule = BandwidthRule::kProportion, .Value = 0.5}).MapUnits, kSquareHref / 2,
                1e-12);
    EXPECT_EQ(bandwidth_of(kSquare, {.Rule = BandwidthRule::kManual, .Value = 7.5}).MapUnits, 7.5);
    EXPECT_NEAR(bandwidth_of(kSquare, {.Rescale = true}).MapUnits, kSquareHref, 1e-12);  // both deviations are alike
    const engine::PointSample fixes = tests::normal_sample(80, 50.0, {0.0, 0.0}, 4);
    for (const BandwidthRule rule : {BandwidthRule::kLscv, BandwidthRule::kBcv, BandwidthRule::kAdHoc})
        EXPECT_GT(bandwidth_of(fixes, {.Rule = rule}).MapUnits, 0.0);
}

TEST(AnimalDensity, Without_a_bandwidth_the_reason_is_told) {
    EXPECT_EQ(bandwidth_of({}, {}).Reason, "no fix");
    EXPECT_EQ(bandwidth_of({}, {.Rule = BandwidthRule::kManual, .Value = 5.0}).Reason, "no fix");
    EXPECT_EQ(bandwidth_of({{1, 1}}, {}).Reason, "one fix is too few for a bandwidth");
    EXPECT_EQ(bandwidth_of(engine::PointSample(5, {5e5, 5e6}), {}).Reason, "the fixes have no spread");
    EXPECT_EQ(bandwidth_of({{1, 1}}, {.Rule = BandwidthRule::kManual, .Value = 5.0}).MapUnits, 5.0);
}

TEST(AnimalDensity, Grid_holds_every_kernel) {
    const engine::PointSample near = tests::normal_sample(50, 30.0, {100.0, 100.0}, 1);
    const engine::PointSample far = tests::normal_sample(50, 60.0, {900.0, 300.0}, 2);
    const std::vector<engine::PointSample> animals = {near, {}, far};
    std::vector<AnimalBandwidth> bandwidths;
    for (const auto& animal : animals) bandwidths.push_back(bandwidth_of(animal, {}));
    const platform::RasterGeometry grid = shared_grid(animals, bandwidths, 0.0);
    EXPECT_EQ(grid.CellSize, 2.0);  // a fifth of the smaller HREF, about 15
    for (const std::size_t i : {0U, 2U}) {
        const AnimalDensity density = density_of(animals[i], bandwidths[i], {}, grid);
        EXPECT_EQ(density.Reason, "");
        const double sum = std::accumulate(density.Part.Cells.begin(), density.Part.Cells.end(), 0.0);
        EXPECT_NEAR(sum * 4.0, 1.0, 3e-4);  // what lies beyond four bandwidths
    }
    EXPECT_EQ(density_of(animals[1], bandwidths[1], {}, grid).Reason, "no fix");
}

TEST(AnimalDensity, Fixed_kernels_add_up_to_the_plain_sum) {
    const engine::PointSample fixes = tests::normal_sample(40, 30.0, {100.0, 100.0}, 1);
    const AnimalBandwidth bandwidth = bandwidth_of(fixes, {});
    const platform::RasterGeometry grid =
        shared_grid(std::vector<engine::PointSample>{fixes}, std::vector{bandwidth}, 3.0);
    KernelSum sum(grid);
    sum.Add(fixes, bandwidth.MapUnits);
    const AnimalDensity density = density_of(fixes, bandwidth, {}, grid);
    const double factor = 40.0 * 2.0 * 3.14159265358979 * bandwidth.MapUnits * bandwidth.MapUnits;
    ASSERT_EQ(density.Part.Cells.size(), sum.Cells().size());
    for (std::size_t cell = 0; cell < density.Part.Cells.size(); ++cell)
        ASSERT_NEAR(density.Part.Cells[cell] * factor, sum.Cells()[cell], 1e-9);
}

// One animal in the west of a grid of two, and one in its north-east.
TEST(AnimalDensity, Is_told_where_kernels_reach_and_is_nothing_beyond) {
    const platform::RasterGeometry grid{0.0, 0.0, 10.0, 60, 40};
    for (const engine::PointSample& fixes : {engine::PointSample{{105.0, 105.0}, {155.0, 145.0}, {95.0, 215.0}},
                                             engine::PointSample{{585.0, 385.0}, {505.0, 305.0}}}) {
        const AnimalBandwidth bandwidth = bandwidth_of(fixes, {.Rule = BandwidthRule::kManual, .Value = 15.0});
        const PartOfGrid part = density_of(fixes, bandwidth, {}, grid).Part;
        KernelSum sum(grid);
        sum.Add(fixes, 15.0);
        const double factor = static_cast<double>(fixes.size()) * 2.0 * 3.14159265358979 * 15.0 * 15.0;
        for (std::int32_t row = 0; row < 40; ++row)
            for (std::int32_t column = 0; column < 60; ++column) {
                const bool within = column >= part.FirstColumn && column < part.FirstColumn + part.Columns &&
                                    row >= part.FirstRow && row < part.FirstRow + part.Rows;
                const double wanted = sum.Cells()[static_cast<std::size_t>(row * 60 + column)];
                ASSERT_NEAR(within ? part(column, row) * factor : 0.0, wanted, 1e-12) << column << ", " << row;
            }
    }
}

// A reach of four bandwidths is seven cells on each side of the fix's own.
TEST(AnimalDensity, Holds_the_cells_of_all_search_squares) {
    const platform::RasterGeometry grid{0.0, 0.0, 10.0, 60, 40};
    const PartOfGrid part =
        density_of({{105.0, 205.0}, {155.0, 155.0}},
                   bandwidth_of({{105.0, 205.0}, {155.0, 155.0}}, {.Rule = BandwidthRule::kManual, .Value = 15.0}), {},
                   grid)
            .Part;
    EXPECT_EQ(part.FirstColumn, 3);
    EXPECT_EQ(part.Columns, 20);
    EXPECT_EQ(part.FirstRow, 12);
    EXPECT_EQ(part.Rows, 20);
}

TEST(AnimalDensity, A_bandwidth_below_the_cell_gives_none) {
    const AnimalBandwidth small = bandwidth_of(kSquare, {.Rule = BandwidthRule::kManual, .Value = 2.5});
    EXPECT_EQ(density_of(kSquare, small, {}, {0.0, 0.0, 3.0, 10, 10}).Reason,
              "the bandwidth (2.5) is smaller than the cell size (3)");
    EXPECT_EQ(density_of(kSquare, small, {}, {1e6, 0.0, 1.0, 10, 10}).Reason, "no volume in the grid");
}

TEST(AnimalDensity, Of_nobody_has_a_grid_of_one_cell) {
    const platform::RasterGeometry grid = shared_grid({}, {}, 0.0);
    EXPECT_EQ(grid.Columns, 1);
    EXPECT_EQ(grid.Rows, 1);
}

}  // namespace
}  // namespace wxl::comparison
