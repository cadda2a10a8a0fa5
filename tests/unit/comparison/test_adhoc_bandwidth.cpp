#include "comparison/adhoc_bandwidth.h"
#include "comparison/kernel_sum.h"
#include "tests/support/samples.h"

#include <algorithm>
#include <gtest/gtest.h>

namespace wxl::comparison {
namespace {

RangeParts parts_at_level_1(const std::vector<double>& cells, std::int32_t columns) {
    return range_parts(cells, columns, {.Percent = 50.0, .Level = 1.0, .Cells = 0});
}

TEST(RangeParts, Cells_that_share_an_edge_are_one_part) {
    EXPECT_EQ(parts_at_level_1({1, 1, 0,  //
                                0, 1, 0,  //
                                1, 0, 2},
                               3)
                  .Parts,
              3);
    EXPECT_EQ(parts_at_level_1({0, 0}, 2).Parts, 0);
}

TEST(RangeParts, Corners_join_where_the_mean_is_at_the_level) {
    EXPECT_EQ(parts_at_level_1({3, 0, 0, 1}, 2).Parts, 1);    // mean 1
    EXPECT_EQ(parts_at_level_1({2.9, 0, 0, 1}, 2).Parts, 2);  // below
    EXPECT_EQ(parts_at_level_1({0, 3, 1, 0}, 2).Parts, 1);
    EXPECT_EQ(parts_at_level_1({0, 2.9, 1, 0}, 2).Parts, 2);
}

TEST(RangeParts, Holes_are_outside_cells_shut_in) {
    const RangeParts ring = parts_at_level_1({1, 1, 1,  //
                                              1, 0, 1,  //
                                              1, 1, 1},
                                             3);
    EXPECT_EQ(ring.Parts, 1);
    EXPECT_EQ(ring.Holes, 1);
    const RangeParts open = parts_at_level_1({1, 0, 1,  //
                                              1, 0, 1,  //
                                              1, 1, 1},
                                             3);
    EXPECT_EQ(open.Holes, 0);
    // The way out leads over a corner whose mean is below the level.
    const RangeParts leaking = parts_at_level_1({0, 1, 1,  //
                                                 1, 0, 1,  //
                                                 1, 1, 1},
                                                3);
    EXPECT_EQ(leaking.Holes, 0);
}

/// Parts as a function of the proportion that breaks below `at`.
std::function<RangeParts(double)> breaking_below(double at) {
    return [at](double proportion) { return RangeParts{proportion < at ? 3 : 1, 0}; };
}

TEST(AdHocBandwidth, Ends_at_the_whole_side_of_the_first_break) {
    const AdHocBandwidth found = search_proportion({}, 0.0, breaking_below(0.6234));
    EXPECT_EQ(found.Status, AdHocStatus::kFound);
    EXPECT_GE(found.Proportion, 0.6234);
    EXPECT_LE(found.Proportion, 0.6234 + 0.001);
    // 1, .95, .90, .85, .80, .75, .70, .65, .60, then six halvings of .05 to .00078.
    ASSERT_EQ(found.Trace.size(), 15U);
    EXPECT_EQ(found.Trace[7].Proportion, 0.65);
    EXPECT_EQ(found.Trace[8].Proportion, 0.6);
    EXPECT_EQ(found.Trace[9].Proportion, 0.625);
}

TEST(AdHocBandwidth, Stops_at_the_first_break_from_above) {
    const auto uneven = [](double proportion) { return RangeParts{proportion < 0.8 && proportion > 0.7 ? 2 : 1, 0}; };
    const AdHocBandwidth found = search_proportion({}, 0.0, uneven);
    EXPECT_NEAR(found.Proportion, 0.8, 0.001);
}

TEST(AdHocBandwidth, In_parts_already_at_the_reference) {
    const AdHocBandwidth found = search_proportion({}, 0.0, breaking_below(2.0));
    EXPECT_EQ(found.Status, AdHocStatus::kInPartsAtReference);
    EXPECT_EQ(found.Proportion, 1.0);
    EXPECT_EQ(found.Trace.size(), 1U);
}

TEST(AdHocBandwidth, Whole_down_to_the_cell_size) {
    const AdHocBandwidth found = search_proportion({}, 0.32, breaking_below(0.1));
    EXPECT_EQ(found.Status, AdHocStatus::kWholeToCellSize);
    EXPECT_EQ(found.Proportion, 0.35);
}

TEST(AdHocBandwidth, More_parts_may_count_as_whole) {
    AdHocSettings settings;
    settings.Parts = 3;
    EXPECT_EQ(search_proportion(settings, 0.5, breaking_below(0.7)).Status, AdHocStatus::kWholeToCellSize);
}

// Two equal round clusters: below half their distance in standard deviations of the density there are two peaks, and
// the 95 % range parts somewhat below. Both ends of the result are looked at again on the grid.
TEST(AdHocBandwidth, Of_two_clusters_is_where_they_part) {
    std::vector<platform::Point> fixes = tests::normal_sample(6, 30.0, {0.0, 0.0}, 5);
    for (const platform::Point& fix : tests::normal_sample(6, 30.0, {600.0, 0.0}, 6)) fixes.push_back(fix);
    AdHocSettings settings;
    settings.CellSize = 5.0;
    const AdHocBandwidth found = adhoc_bandwidth(fixes, settings);
    ASSERT_EQ(found.Status, AdHocStatus::kFound);
    EXPECT_DOUBLE_EQ(found.Bandwidth, found.Proportion * found.Href);
    EXPECT_EQ(found.Trace.front().Range.Parts, 1);
    double broken = 0.0;
    for (const AdHocStep& step : found.Trace)
        if (step.Proportion < found.Proportion && step.Range.Parts > 1) broken = std::max(broken, step.Proportion);
    EXPECT_LE(found.Proportion - broken, 0.001);
}

TEST(AdHocBandwidth, Without_a_reference_bandwidth) {
    for (const auto& fixes : {std::vector<platform::Point>{}, std::vector<platform::Point>{{1, 1}},
                              std::vector<platform::Point>(9, {5e5, 5e6})}) {
        const AdHocBandwidth found = adhoc_bandwidth(fixes, {});
        EXPECT_EQ(found.Status, AdHocStatus::kNoBandwidth);
        EXPECT_EQ(found.Proportion, 0.0);
        EXPECT_TRUE(found.Trace.empty());
    }
    AdHocSettings coarse;
    coarse.CellSize = 1000.0;
    EXPECT_EQ(adhoc_bandwidth(tests::normal_sample(50, 30.0, {0.0, 0.0}, 5), coarse).Status, AdHocStatus::kNoBandwidth);
}

TEST(KernelSum, Usual_cells_are_round_and_the_grid_not_too_large) {
    const platform::Extent extent{0.0, 0.0, 1000.0, 1000.0};
    EXPECT_EQ(usual_cell_size(100.0, extent, 0.0), 20.0);
    EXPECT_EQ(usual_cell_size(99.0, extent, 0.0), 10.0);
    EXPECT_EQ(usual_cell_size(2600.0, extent, 0.0), 500.0);
    EXPECT_EQ(usual_cell_size(3.0, extent, 0.0), 1.0);
    EXPECT_EQ(usual_cell_size(50.0, {0.0, 0.0, 3e4, 3e4}, 0.0), 50.0);  // 900 million cells of 10; 360,000 of 50
    EXPECT_EQ(usual_cell_size(50.0, {0.0, 0.0, 3e4, 1e4}, 0.0), 20.0);  // 750,000
    EXPECT_EQ(usual_cell_size(10.0, {0.0, 0.0, 3e4, 3e4}, 0.0), 10.0);  // 9 million
    EXPECT_EQ(usual_cell_size(3.0, {0.0, 0.0, 1e6, 1e6}, 0.0), 200.0);  // 25 million
    EXPECT_EQ(usual_cell_size(0.0, extent, 1e9), 500000.0);             // 4001 x 4001, 16 million
}

}  // namespace
}  // namespace wxl::comparison
