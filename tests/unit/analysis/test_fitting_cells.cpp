#include "analysis/fitting_cells.h"

#include <gtest/gtest.h>
#include <limits>

namespace wxl::analysis {
namespace {

constexpr platform::Extent kSmall{0.0, 0.0, 100.0, 100.0};

TEST(FittingCells, Are_a_tenth_of_the_bandwidth_rounded_to_1_2_or_5) {
    EXPECT_EQ(fitting_cell_size(91.6486, kSmall, 0.0), 10.0);
    EXPECT_EQ(fitting_cell_size(149.0, kSmall, 0.0), 10.0);
    EXPECT_EQ(fitting_cell_size(151.0, kSmall, 0.0), 20.0);
    EXPECT_EQ(fitting_cell_size(340.0, kSmall, 0.0), 20.0);
    EXPECT_EQ(fitting_cell_size(360.0, kSmall, 0.0), 50.0);
    EXPECT_EQ(fitting_cell_size(740.0, kSmall, 0.0), 50.0);
    EXPECT_EQ(fitting_cell_size(760.0, kSmall, 0.0), 100.0);
    EXPECT_EQ(fitting_cell_size(1000.0, kSmall, 0.0), 100.0);
}

TEST(FittingCells, Are_fractions_of_a_unit_where_the_animal_is_small) {
    EXPECT_EQ(fitting_cell_size(2.3, kSmall, 0.0), 0.2);
    EXPECT_EQ(fitting_cell_size(0.05, {0.0, 0.0, 1.0, 1.0}, 0.0), 0.005);
    EXPECT_EQ(fitting_cell_size(1e-4, {0.0, 0.0, 0.001, 0.001}, 0.0), 1e-5);
}

// 100,000 / 10 = 10,000 cells a side are too many, 5,000 as well; 100,000 / 50 = 2,000 are not.
TEST(FittingCells, Grow_where_there_would_be_more_than_ten_million) {
    EXPECT_EQ(fitting_cell_size(100.0, {0.0, 0.0, 90000.0, 90000.0}, 5000.0), 50.0);
}

TEST(FittingCells, Grow_no_further_than_half_the_bandwidth) {
    EXPECT_EQ(fitting_cell_size(100.0, {0.0, 0.0, 1e9, 1e9}, 0.0), 50.0);
    EXPECT_EQ(fitting_cell_size(95.0, {0.0, 0.0, 1e9, 1e9}, 0.0), 20.0);
}

TEST(FittingCells, Are_none_without_a_bandwidth) {
    for (const double none :
         {0.0, -1.0, std::numeric_limits<double>::quiet_NaN(), std::numeric_limits<double>::infinity()})
        EXPECT_EQ(fitting_cell_size(none, kSmall, 0.0), 0.0);
}

}  // namespace
}  // namespace wxl::analysis
