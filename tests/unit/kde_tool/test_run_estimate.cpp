#include "engine/pair_sums.h"
#include "kde_tool/run_estimate.h"

#include <gtest/gtest.h>

namespace wxl::kde_tool {
namespace {

using platform::RasterGeometry;

constexpr double kRounding = 1e-12;

RunInputs inputs(BandwidthMethod method, ExtentMode mode, const std::string& cellSize) {
    RunInputs result;
    result.Method = method;
    result.Mode = mode;
    result.CellSizeText = cellSize;
    result.FixedKernel = true;
    return result;
}

AnimalFixes animal(std::size_t fixes) {
    AnimalFixes result;
    result.Fixes.assign(fixes, {0.0, 0.0});
    return result;
}

// 1,200 x 700 m in cells of 50 m; each fix reaches floor(100 / 50) + 1 = 3 cells to each side, so 7 x 7.
TEST(RunEstimate, The_full_extent_is_one_grid_for_all) {
    RunInputs settings = inputs(BandwidthMethod::kHref, ExtentMode::kFull, "50");
    EstimateFrame frame = estimate_frame(settings, {0.0, 0.0, 1000.0, 500.0}, 100.0, {});
    const DistributionEstimate fixed = estimate(frame, animal(10), 25.0, 0.0);
    EXPECT_EQ(fixed.Grid, (RasterGeometry{-100.0, -100.0, 50.0, 24, 14}));
    EXPECT_EQ(fixed.Bandwidth, 25.0);
    EXPECT_NEAR(fixed.Megabytes, 0.002688, kRounding);
    EXPECT_NEAR(fixed.Seconds, 0.005033649, kRounding);

    frame.Inputs.FixedKernel = false;
    EXPECT_NEAR(estimate(frame, animal(10), 25.0, 0.0).Seconds, 0.005033698, kRounding);
}

TEST(RunEstimate, The_smallest_extent_is_the_animals_box_and_four_bandwidths) {
    const EstimateFrame frame =
        estimate_frame(inputs(BandwidthMethod::kHref, ExtentMode::kMinimum, "10"), {0.0, 0.0, 9e6, 9e6}, 500.0, {});
    AnimalFixes two;
    two.Fixes = {{100.0, 0.0}, {0.0, 40.0}};
    EXPECT_EQ(estimate(frame, two, 10.0, 0.0).Grid, (RasterGeometry{-40.0, -40.0, 10.0, 18, 12}));
}

TEST(RunEstimate, A_reference_raster_gives_grid_and_cell_size) {
    const RasterGeometry reference{5.0, 6.0, 2.5, 30, 20};
    const EstimateFrame frame = estimate_frame(inputs(BandwidthMethod::kHref, ExtentMode::kReference, "no number"),
                                               {0.0, 0.0, 1.0, 1.0}, 7.0, reference);
    EXPECT_EQ(frame.CellSize, 2.5);
    EXPECT_EQ(estimate(frame, animal(1), 3.0, 0.0).Grid, reference);
}

TEST(RunEstimate, Cell_sizes_are_whole_rounded_half_to_even) {
    for (const auto& [text, size] : {std::pair{"2.5", 2.0}, std::pair{"3.5", 4.0}, std::pair{"0.6", 1.0}})
        EXPECT_EQ(
            estimate_frame(inputs(BandwidthMethod::kHref, ExtentMode::kFull, text), {0.0, 0.0, 40.0, 40.0}, 0.0, {})
                .CellSize,
            size);
}

TEST(RunEstimate, Bandwidths_follow_the_method) {
    const auto bandwidth = [](BandwidthMethod method) {
        const EstimateFrame frame =
            estimate_frame(inputs(method, ExtentMode::kReference, ""), {}, 0.0, {0.0, 0.0, 1.0, 10, 10});
        return estimate(frame, animal(1), 80.0, 0.5).Bandwidth;
    };
    EXPECT_EQ(bandwidth(BandwidthMethod::kHref), 80.0);
    EXPECT_EQ(bandwidth(BandwidthMethod::kLscv), 80.0);
    EXPECT_EQ(bandwidth(BandwidthMethod::kBcv), 80.0);
    EXPECT_EQ(bandwidth(BandwidthMethod::kProportion), 40.0);
    EXPECT_EQ(bandwidth(BandwidthMethod::kManual), 0.5);
}

// All 10 x 10 cells are reached. Pairs cost 8e-9 s each; from some point on a transform of 0.5 s and 3e-6 s a fix is
// cheaper.
TEST(RunEstimate, A_search_costs_pairs_or_a_transform) {
    const auto seconds = [](BandwidthMethod method, std::size_t fixes) {
        const EstimateFrame frame =
            estimate_frame(inputs(method, ExtentMode::kReference, ""), {}, 0.0, {0.0, 0.0, 1.0, 10, 10});
        return estimate(frame, animal(fixes), 1.0, 0.0).Seconds;
    };
    EXPECT_NEAR(seconds(BandwidthMethod::kHref, 1000), 0.00502, kRounding);
    EXPECT_NEAR(seconds(BandwidthMethod::kLscv, 1000), 0.01302, kRounding);
    EXPECT_NEAR(seconds(BandwidthMethod::kBcv, 1000), 0.01302, kRounding);
    EXPECT_NEAR(seconds(BandwidthMethod::kLscv, 100000), 0.80601, kRounding);
}

// The usual ranges are 0.05 to 2 HREF and 0.05 to 3 HREF.
TEST(RunEstimate, A_search_by_transforms_takes_their_memory_before_the_grid_is_made) {
    AnimalFixes wide = animal(200000);
    wide.Fixes.front() = {36000.0, 27000.0};
    const auto megabytes = [&](BandwidthMethod method, const platform::RasterGeometry& grid) {
        const EstimateFrame frame = estimate_frame(inputs(method, ExtentMode::kReference, ""), {}, 0.0, grid);
        return estimate(frame, wide, 400.0, 0.0).Megabytes;
    };
    const platform::Extent extent{0.0, 0.0, 36000.0, 27000.0};
    const double lscv = engine::megabytes_of_transforms(engine::Criterion::kLscv, extent, 200000, 20.0, 800.0);
    const double bcv = engine::megabytes_of_transforms(engine::Criterion::kBcv, extent, 200000, 20.0, 1200.0);
    EXPECT_GT(lscv, 100.0);
    EXPECT_DOUBLE_EQ(megabytes(BandwidthMethod::kLscv, {0.0, 0.0, 1.0, 10, 10}), lscv);
    EXPECT_DOUBLE_EQ(megabytes(BandwidthMethod::kBcv, {0.0, 0.0, 1.0, 10, 10}), bcv);
    EXPECT_DOUBLE_EQ(megabytes(BandwidthMethod::kHref, {0.0, 0.0, 1.0, 10, 10}), 0.0008);
    EXPECT_DOUBLE_EQ(megabytes(BandwidthMethod::kLscv, {0.0, 0.0, 1.0, 10000, 9000}), 720.0);
}

TEST(RunEstimate, A_search_without_a_reference_bandwidth_takes_nothing) {
    const EstimateFrame frame =
        estimate_frame(inputs(BandwidthMethod::kLscv, ExtentMode::kReference, ""), {}, 0.0, {0.0, 0.0, 1.0, 10, 10});
    EXPECT_DOUBLE_EQ(estimate(frame, animal(200000), 0.0, 0.0).Megabytes, 0.0008);
}

TEST(RunEstimate, Reference_bandwidths_are_scaled_back_by_the_mean_deviation) {
    const HrefRow href{.Id = {}, .Count = 4, .Href = 7.0, .HrefScaled = 0.5};
    const VarianceRow spread{.Id = {}, .Count = 4, .SdX = 10.0, .SdY = 30.0, .Ratio = {}};
    EXPECT_EQ(applied_href(href, spread, false), 7.0);
    EXPECT_EQ(applied_href(href, spread, true), 10.0);
    EXPECT_EQ(applied_href({}, {}, false), 0.0);
    EXPECT_EQ(applied_href({}, spread, true), 0.0);
    EXPECT_EQ(applied_href(href, {}, true), 0.0);
}

TEST(RunEstimate, Fifty_million_cells_are_not_too_large_and_more_are) {
    const auto grid = [](std::int32_t columns, std::int32_t rows) {
        DistributionEstimate result;
        result.Grid = {0.0, 0.0, 1.0, columns, rows};
        return result;
    };
    EXPECT_FALSE(is_too_large(grid(10000, 5000)));
    EXPECT_TRUE(is_too_large(grid(10000, 5001)));
    EXPECT_TRUE(is_too_large(grid(50000001, 50000001)));
}

}  // namespace
}  // namespace wxl::kde_tool
