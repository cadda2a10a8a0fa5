#include "analysis/raster_extent.h"

#include <gtest/gtest.h>
#include <limits>

namespace wxl::analysis {
namespace {

TEST(RasterExtent, Grids_count_whole_cells_only) {
    const platform::Extent extent{1000.0, 500.0, 1900.0, 800.0};
    EXPECT_EQ(enlarged_grid(extent, 400.0, 50.0), (platform::RasterGeometry{600.0, 100.0, 50.0, 34, 22}));
    EXPECT_EQ(enlarged_grid(extent, 0.0, 70.0), (platform::RasterGeometry{1000.0, 500.0, 70.0, 12, 4}));
    EXPECT_EQ(enlarged_grid({5.0, 5.0, 5.0, 5.0}, 0.0, 10.0), (platform::RasterGeometry{5.0, 5.0, 10.0, 0, 0}));
}

TEST(RasterExtent, Grids_beyond_any_raster_are_counted_as_far_as_32_bits_go) {
    const platform::RasterGeometry grid = enlarged_grid({0.0, 0.0, 1e300, 100.0}, -20.0, 10.0);
    EXPECT_EQ(grid.Columns, 2147483647);
    EXPECT_EQ(grid.Rows, 6);
    EXPECT_EQ(enlarged_grid({1000.0, 500.0, 1900.0, 800.0}, 1e8, 1.0).Columns, 200000900);
    EXPECT_EQ(enlarged_grid({}, 0.0, 10.0).Columns, 0);
    EXPECT_EQ(enlarged_grid({0.0, 0.0, std::numeric_limits<double>::quiet_NaN(), 1.0}, 0.0, 1.0).Columns, 0);
}

}  // namespace
}  // namespace wxl::analysis
