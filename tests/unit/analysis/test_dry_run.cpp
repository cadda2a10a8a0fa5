#include "analysis/dry_run.h"
#include "analysis/settings_text.h"
#include "engine/pair_sums.h"

#include <gtest/gtest.h>

namespace wxl::analysis {
namespace {

using platform::RasterGeometry;

constexpr double kRounding = 1e-12;

Settings wanted(BandwidthMethod method, ExtentMode mode, const std::string& cellSize, double buffer = 0.0) {
    Settings settings;
    settings.Method = method;
    settings.Mode = mode;
    settings.Cells = cell_size_of(cellSize);
    settings.Buffer = typed_number(buffer);
    return settings;
}

AnimalFixes animal(std::size_t fixes) {
    AnimalFixes result;
    result.Fixes.assign(fixes, {0.0, 0.0});
    return result;
}

// 1,200 x 700 m in cells of 50 m; each fix reaches floor(100 / 50) + 1 = 3 cells to each side, so 7 x 7.
TEST(DryRun, The_full_extent_is_one_grid_for_all) {
    Settings settings = wanted(BandwidthMethod::kHref, ExtentMode::kFull, "50", 100.0);
    EstimateFrame frame = estimate_frame(settings, {0.0, 0.0, 1000.0, 500.0}, {});
    const DistributionEstimate fixed = estimate(frame, animal(10), 25.0, 0.0);
    EXPECT_EQ(fixed.Grid, (RasterGeometry{-100.0, -100.0, 50.0, 24, 14}));
    EXPECT_EQ(fixed.Bandwidth, 25.0);
    EXPECT_NEAR(fixed.Megabytes, 0.002688, kRounding);
    EXPECT_NEAR(fixed.Seconds, 0.005033649, kRounding);

    frame.Wanted.FixedKernel = false;
    EXPECT_NEAR(estimate(frame, animal(10), 25.0, 0.0).Seconds, 0.005033698, kRounding);
}

// Twelve kernels in place of one: 10 fixes x 49 cells x 1E-10 s each.
TEST(DryRun, Ad_hoc_bandwidths_are_planned_with_the_reference) {
    const EstimateFrame frame =
        estimate_frame(wanted(BandwidthMethod::kAdHoc, ExtentMode::kFull, "50", 100.0), {0.0, 0.0, 1000.0, 500.0}, {});
    const DistributionEstimate cost = estimate(frame, animal(10), 25.0, 0.0);
    EXPECT_EQ(cost.Bandwidth, 25.0);
    EXPECT_NEAR(cost.Seconds, 0.005 + 336e-7 + 12 * 490e-10, kRounding);
}

TEST(DryRun, The_smallest_extent_is_the_animals_box_and_four_bandwidths) {
    const EstimateFrame frame =
        estimate_frame(wanted(BandwidthMethod::kHref, ExtentMode::kMinimum, "10"), {0.0, 0.0, 9e6, 9e6}, {});
    AnimalFixes two;
    two.Fixes = {{100.0, 0.0}, {0.0, 40.0}};
    EXPECT_EQ(estimate(frame, two, 10.0, 0.0).Grid, (RasterGeometry{-40.0, -40.0, 10.0, 18, 12}));
}

// 100 + 2 x 40 and 40 + 2 x 40 in cells of 10 / 10; with the full extent 1,000 by 500 and twice the buffer of 100.
TEST(DryRun, Cells_that_suit_the_bandwidth_differ_between_animals) {
    AnimalFixes two;
    two.Fixes = {{100.0, 0.0}, {0.0, 40.0}};
    EstimateFrame frame =
        estimate_frame(wanted(BandwidthMethod::kHref, ExtentMode::kMinimum, "auto"), {0.0, 0.0, 9e6, 9e6}, {});
    EXPECT_EQ(estimate(frame, two, 10.0, 0.0).Grid, (RasterGeometry{-40.0, -40.0, 1.0, 180, 120}));
    EXPECT_EQ(estimate(frame, two, 20.0, 0.0).Grid, (RasterGeometry{-80.0, -80.0, 2.0, 130, 100}));
    EXPECT_EQ(estimate(frame, two, 0.0, 0.0).Grid.Columns, 0);
    frame =
        estimate_frame(wanted(BandwidthMethod::kHref, ExtentMode::kFull, "auto", 100.0), {0.0, 0.0, 1000.0, 500.0}, {});
    EXPECT_EQ(estimate(frame, two, 52.0, 0.0).Grid, (RasterGeometry{-100.0, -100.0, 5.0, 240, 140}));
}

TEST(DryRun, A_reference_raster_gives_grid_and_cell_size) {
    const RasterGeometry reference{5.0, 6.0, 2.5, 30, 20};
    const EstimateFrame frame = estimate_frame(wanted(BandwidthMethod::kHref, ExtentMode::kReference, "no number"),
                                               {0.0, 0.0, 1.0, 1.0}, reference);
    EXPECT_EQ(frame.CellSize, 2.5);
    EXPECT_EQ(estimate(frame, animal(1), 3.0, 0.0).Grid, reference);
}

TEST(DryRun, Cell_sizes_are_whole_rounded_half_to_even) {
    for (const auto& [text, size] : {std::pair{"2.5", 2.0}, std::pair{"3.5", 4.0}, std::pair{"0.6", 1.0}})
        EXPECT_EQ(estimate_frame(wanted(BandwidthMethod::kHref, ExtentMode::kFull, text), {0.0, 0.0, 40.0, 40.0}, {})
                      .CellSize,
                  size);
}

TEST(DryRun, Bandwidths_follow_the_method) {
    const auto bandwidth = [](BandwidthMethod method) {
        const EstimateFrame frame =
            estimate_frame(wanted(method, ExtentMode::kReference, ""), {}, {0.0, 0.0, 1.0, 10, 10});
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
TEST(DryRun, A_search_costs_pairs_or_a_transform) {
    const auto seconds = [](BandwidthMethod method, std::size_t fixes) {
        const EstimateFrame frame =
            estimate_frame(wanted(method, ExtentMode::kReference, ""), {}, {0.0, 0.0, 1.0, 10, 10});
        return estimate(frame, animal(fixes), 1.0, 0.0).Seconds;
    };
    EXPECT_NEAR(seconds(BandwidthMethod::kHref, 1000), 0.00502, kRounding);
    EXPECT_NEAR(seconds(BandwidthMethod::kLscv, 1000), 0.01302, kRounding);
    EXPECT_NEAR(seconds(BandwidthMethod::kBcv, 1000), 0.01302, kRounding);
    EXPECT_NEAR(seconds(BandwidthMethod::kLscv, 100000), 0.80601, kRounding);
}

// The usual ranges are 0.05 to 2 HREF and 0.05 to 3 HREF.
TEST(DryRun, A_search_by_transforms_takes_their_memory_before_the_grid_is_made) {
    AnimalFixes wide = animal(200000);
    wide.Fixes.front() = {36000.0, 27000.0};
    const auto megabytes = [&](BandwidthMethod method, const platform::RasterGeometry& grid) {
        const EstimateFrame frame = estimate_frame(wanted(method, ExtentMode::kReference, ""), {}, grid);
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

TEST(DryRun, A_search_without_a_reference_bandwidth_takes_nothing) {
    const EstimateFrame frame =
        estimate_frame(wanted(BandwidthMethod::kLscv, ExtentMode::kReference, ""), {}, {0.0, 0.0, 1.0, 10, 10});
    EXPECT_DOUBLE_EQ(estimate(frame, animal(200000), 0.0, 0.0).Megabytes, 0.0008);
}

TEST(DryRun, Reference_bandwidths_are_scaled_back_by_the_mean_deviation) {
    const HrefRow href{.Id = {}, .Count = 4, .Href = 7.0, .HrefScaled = 0.5};
    const VarianceRow spread{.Id = {}, .Count = 4, .SdX = 10.0, .SdY = 30.0, .Ratio = {}};
    EXPECT_EQ(applied_href(href, spread, false), 7.0);
    EXPECT_EQ(applied_href(href, spread, true), 10.0);
    EXPECT_EQ(applied_href({}, {}, false), 0.0);
    EXPECT_EQ(applied_href({}, spread, true), 0.0);
    EXPECT_EQ(applied_href(href, {}, true), 0.0);
}

TEST(DryRun, Fifty_million_cells_are_not_too_large_and_more_are) {
    const auto grid = [](std::int32_t columns, std::int32_t rows) {
        DistributionEstimate result;
        result.Grid = {0.0, 0.0, 1.0, columns, rows};
        return result;
    };
    EXPECT_FALSE(is_too_large(grid(10000, 5000)));
    EXPECT_TRUE(is_too_large(grid(10000, 5001)));
    EXPECT_TRUE(is_too_large(grid(50000001, 50000001)));
}

TEST(DryRun, Tells_every_value_of_every_animal_and_what_is_known_to_fail) {
    Settings settings = wanted(BandwidthMethod::kManual, ExtentMode::kMinimum, "50");
    settings.Prefix = "K";
    settings.Bandwidths = typed_numbers("100,20");
    AnimalFixes pair = animal(0);
    pair.Id = std::int64_t{3};
    pair.NamingId = "3";
    pair.Fixes = {{0.0, 0.0}, {100.0, 100.0}};
    AnimalFixes lone = animal(1);
    lone.NamingId = "7";
    const auto coming = dry_run(estimate_frame(settings, {}, {}), std::vector<AnimalFixes>{pair, lone});
    ASSERT_EQ(coming.size(), 4U);
    EXPECT_EQ(coming[0].RasterName, "K3_b1");
    EXPECT_EQ(coming[0].SampleSize, 2U);
    EXPECT_EQ(coming[0].Cost.Grid, (RasterGeometry{-400.0, -400.0, 50.0, 18, 18}));
    EXPECT_EQ(coming[0].Failure, "");
    EXPECT_EQ(coming[1].RasterName, "K3_b2");
    EXPECT_EQ(coming[1].Failure, "the bandwidth 20 is smaller than the cell size 50");
    EXPECT_EQ(coming[2].Failure, "");
    EXPECT_EQ(coming[3].RasterName, "K7_b2");
}

}  // namespace
}  // namespace wxl::analysis
