#include "comparison/volume_range.h"
#include "tests/support/samples.h"

#include <algorithm>
#include <gtest/gtest.h>
#include <numbers>
#include <numeric>

namespace wxl::comparison {
namespace {

VolumeRange range_of(const std::vector<double>& cells, double percent) {
    return ranges_by_volume(cells, std::vector<double>{percent}).at(0);
}

TEST(VolumeRange, The_cell_that_reaches_the_share_belongs_to_it) {
    const std::vector<double> cells = {0.4, 0.3, 0.2, 0.1, 0.0};
    EXPECT_EQ(range_of(cells, 80.0).Level, 0.2);
    EXPECT_EQ(range_of(cells, 80.0).Cells, 3);
    EXPECT_EQ(range_of(cells, 70.0).Cells, 2);  // .4 + .3 is .7 but for rounding
    EXPECT_EQ(range_of(cells, 1.0).Cells, 1);
}

TEST(VolumeRange, Everything_with_any_density_at_100_percent) {
    const VolumeRange whole = range_of({0.4, 1e-300, 0.0, 0.6}, 100.0);
    EXPECT_EQ(whole.Cells, 3);
    EXPECT_EQ(whole.Level, 0.0);
    EXPECT_TRUE(belongs(whole, 5e-324));
    EXPECT_FALSE(belongs(whole, 0.0));
}

TEST(VolumeRange, Ties_enter_together) {
    EXPECT_EQ(range_of({0.25, 0.25, 0.25 * (1.0 - 5e-10), 0.25}, 10.0).Cells, 4);
    EXPECT_EQ(range_of({0.25, 0.25, 0.25 * (1.0 - 2e-9), 0.25}, 10.0).Cells, 3);
}

TEST(VolumeRange, Without_density_there_is_no_range) {
    EXPECT_EQ(range_of({0.0, 0.0}, 95.0).Cells, 0);
    EXPECT_EQ(range_of({0.0, 0.0}, 100.0).Cells, 0);
}

TEST(VolumeRange, One_cell_is_the_range_at_any_percentage) {
    for (const double percent : {1e-9, 50.0, 99.9999999999999, 100.0})
        EXPECT_EQ(range_of({0.0, 3.0}, percent).Cells, 1);
}

// A round Gaussian: the range at p % is a circle of area 2 pi sd^2 (-ln(1 - p / 100)).
TEST(VolumeRange, Of_a_gaussian_is_its_circle) {
    std::vector<double> cells;
    for (int row = 0; row < 300; ++row)
        for (int column = 0; column < 300; ++column) {
            const double x = column - 149.7;
            const double y = row - 149.2;
            cells.push_back(std::exp(-(x * x + y * y) / (2.0 * 900.0)));
        }
    for (const double percent : {95.0, 50.0, 10.0}) {
        const double area = 2.0 * std::numbers::pi * 900.0 * -std::log(1.0 - percent / 100.0);
        EXPECT_NEAR(static_cast<double>(range_of(cells, percent).Cells), area, 0.002 * area + 2.0) << percent;
    }
}

/// By sorting all cells.
double plain_level(std::vector<double> cells, double percent) {
    const double total = std::accumulate(cells.begin(), cells.end(), 0.0);
    std::sort(cells.rbegin(), cells.rend());
    double reached = 0.0;
    for (const double cell : cells)
        if ((reached += cell) >= (percent / 100.0 - 1e-12) * total) return cell;
    return cells.back();
}

TEST(VolumeRange, Classes_find_the_level_that_sorting_finds) {
    tests::Dice dice(17);
    for (const double spread : {0.01, 1.0, 30.0, 400.0}) {
        std::vector<double> cells;
        for (int i = 0; i < 5000; ++i) cells.push_back(dice.Uniform() < 0.3 ? 0.0 : std::exp(-spread * dice.Uniform()));
        for (const double percent : {0.1, 20.0, 50.0, 95.0, 99.0})
            EXPECT_EQ(range_of(cells, percent).Level, plain_level(cells, percent)) << spread << " " << percent;
    }
}

}  // namespace
}  // namespace wxl::comparison
