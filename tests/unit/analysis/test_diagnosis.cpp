#include "adapters/memory/memory_services.h"
#include "analysis/diagnosis.h"
#include "analysis/report_lines.h"
#include "engine/clsKernelCalculator.h"
#include "engine/status.h"

#include <cstdint>
#include <gtest/gtest.h>
#include <random>
#include <vector>

namespace wxl::analysis {
namespace {

using platform::Point;

/// A searched sample with the record's fields that the doctor looks at.
AnimalRecord searched(const std::vector<Point>& fixes, BandwidthMethod method) {
    memory::MemoryMessages messages;
    engine::clsKernelCalculator calculator(messages);
    calculator.SetInputCoords(fixes);
    if (method == BandwidthMethod::kLscv)
        calculator.CalculateLSCV();
    else
        calculator.CalculateBCV();
    AnimalRecord record;
    record.Method = method;
    record.SampleSize = static_cast<std::int32_t>(fixes.size());
    record.Coincident = coincidence_of(fixes);
    record.Minimized = calculator.LSCVMinimized;
    if (const auto profile = calculator.GetLSCVProfile()) record.Profile = *profile;
    return record;
}

std::string reason_of(const AnimalRecord& record) {
    return search_reason(search_facts(record));
}

SearchFault fault_of(const AnimalRecord& record) {
    return search_fault(search_facts(record));
}

/// Two round clusters of normal scatter: an ordinary animal.
std::vector<Point> two_clusters(std::size_t count) {
    std::mt19937 random(7);
    std::normal_distribution<double> scatter(0.0, 100.0);
    std::vector<Point> fixes;
    for (std::size_t i = 0; i < count; ++i)
        fixes.push_back({(i % 2 == 0 ? 0.0 : 2000.0) + scatter(random), scatter(random)});
    return fixes;
}

/// Made-up profile of the given scores at bandwidths 10, 20, 30 ...
AnimalRecord with_scores(const std::vector<double>& scores, std::int32_t count) {
    AnimalRecord record;
    record.Method = BandwidthMethod::kLscv;
    record.SampleSize = count;
    for (std::size_t i = 0; i < scores.size(); ++i)
        record.Profile.push_back({10.0 * static_cast<double>(i + 1), scores[i]});
    return record;
}

TEST(Coincidence, Counts_fixes_that_share_a_place_and_their_pairs) {
    const std::vector<Point> fixes = {{1, 1}, {2, 2}, {1, 1}, {1, 1}, {1, 2}, {2, 2}};
    EXPECT_EQ(coincidence_of(fixes), (Coincidence{.Fixes = 5, .Pairs = 4}));
    EXPECT_EQ(coincidence_of({}), Coincidence{});
    EXPECT_EQ(coincidence_of(two_clusters(50)), Coincidence{});
}

TEST(BandwidthDoctor, Says_nothing_of_a_minimised_search) {
    const AnimalRecord record = searched(two_clusters(200), BandwidthMethod::kLscv);
    ASSERT_TRUE(record.Minimized);
    EXPECT_EQ(fault_of(record), SearchFault::kNone);
    EXPECT_EQ(diagnosis(record), "");
}

TEST(BandwidthDoctor, Says_nothing_of_methods_that_do_not_search) {
    AnimalRecord record = with_scores({}, 5);
    record.Method = BandwidthMethod::kHref;
    EXPECT_EQ(fault_of(record), SearchFault::kNone);
}

// 60 fixes, each of the first 22 twice more or less: 22 pairs are more than 60 / 6.
TEST(BandwidthDoctor, Coincident_fixes_pull_the_search_to_zero) {
    std::vector<Point> fixes = two_clusters(60);
    for (std::size_t i = 0; i < 22; ++i) fixes[59 - i] = fixes[i];
    const AnimalRecord record = searched(fixes, BandwidthMethod::kLscv);
    ASSERT_FALSE(record.Minimized);
    EXPECT_EQ(fault_of(record), SearchFault::kCoincident);
    EXPECT_EQ(diagnosis(record),
              "44 of 60 fixes share their place with another fix, so that the score falls without limit toward "
              "bandwidth 0");
}

// The score of n fixes with p coincident pairs goes as (1 - 6 p / n) / (4 pi n h^2): at p = n / 6 it does not fall yet.
TEST(BandwidthDoctor, Coincident_pairs_decide_from_a_sixth_of_the_fixes_on) {
    AnimalRecord record = with_scores({-3, -2, -1, 0}, 60);
    record.Coincident = {.Fixes = 20, .Pairs = 10};
    EXPECT_EQ(fault_of(record), SearchFault::kLowerEnd);
    EXPECT_EQ(reason_of(record),
              "the smallest score is at the lower end of the range (bandwidth 10, 0.05 HREF): fixes are clustered "
              "closely, and 20 "
              "of 60 fixes share their place with another fix");
    record.Coincident = {.Fixes = 22, .Pairs = 11};
    EXPECT_EQ(fault_of(record), SearchFault::kCoincident);
}

TEST(BandwidthDoctor, Coincident_fixes_do_not_explain_the_upper_end) {
    AnimalRecord record = with_scores({3, 2, 1, 0.5}, 60);
    record.Coincident = {.Fixes = 40, .Pairs = 20};
    EXPECT_EQ(fault_of(record), SearchFault::kUpperEnd);
}

// Tight knots of fixes far apart, none at one place: the best bandwidth is that of a knot, below 0.05 HREF.
TEST(BandwidthDoctor, Tight_clusters_put_the_minimum_at_the_lower_end) {
    std::mt19937 random(3);
    std::normal_distribution<double> scatter(0.0, 0.5);
    std::vector<Point> fixes;
    for (int i = 0; i < 60; ++i) fixes.push_back({(i % 3) * 5000.0 + scatter(random), scatter(random)});
    const AnimalRecord record = searched(fixes, BandwidthMethod::kLscv);
    ASSERT_FALSE(record.Minimized);
    EXPECT_EQ(fault_of(record), SearchFault::kLowerEnd);
    EXPECT_TRUE(reason_of(record).starts_with("the smallest score is at the lower end of the range (bandwidth "));
    EXPECT_TRUE(reason_of(record).ends_with(": fixes are clustered closely"));
}

TEST(BandwidthDoctor, A_score_that_falls_all_the_way_ends_at_the_upper_end) {
    const AnimalRecord record = with_scores({3, 2, 1, 0.25}, 30);
    EXPECT_EQ(fault_of(record), SearchFault::kUpperEnd);
    EXPECT_EQ(reason_of(record),
              "the smallest score is at the upper end of the range (bandwidth 40, 2 HREF): the score falls all the way "
              "to wide bandwidths");
}

TEST(BandwidthDoctor, A_search_that_passes_over_a_local_minimum_tells_it) {
    AnimalRecord record = with_scores({5, 2, 3, 4, 2.5, 4, 1}, 30);
    record.Method = BandwidthMethod::kBcv;
    EXPECT_EQ(fault_of(record), SearchFault::kUpperEnd);
    EXPECT_EQ(
        reason_of(record),
        "the smallest score is at the upper end of the range (bandwidth 70, 3 HREF); inside it the score has local "
        "minima at 20, 50");
    record = with_scores({0, 2, 1, 4}, 30);
    EXPECT_EQ(
        reason_of(record),
        "the smallest score is at the lower end of the range (bandwidth 10, 0.05 HREF); inside it the score has a "
        "local minimum at 30: fixes are clustered closely");
}

TEST(BandwidthDoctor, Local_minima_are_dips_deeper_than_rounding) {
    using engine::LocalMinima;
    using engine::ProfileRow;
    const auto rows = [](const std::vector<double>& scores) { return with_scores(scores, 30).Profile; };
    EXPECT_EQ(LocalMinima(rows({3, 1, 2})), (engine::SearchProfile{{20, 1}}));
    EXPECT_EQ(LocalMinima(rows({3, 1, 1, 2, 0})), (engine::SearchProfile{{20, 1}}));
    EXPECT_TRUE(LocalMinima(rows({3, 2, 2, 1})).empty());
    EXPECT_TRUE(LocalMinima(rows({3, 2, 2 + 1e-9, 1})).empty());
    EXPECT_TRUE(LocalMinima(rows({1, 2})).empty());
    EXPECT_TRUE(LocalMinima({}).empty());
}

// 4 bandwidths leave out 0.013 % of a kernel, and a raster that holds the rest is clear whatever its edge value.
TEST(BandwidthDoctor, The_edge_is_judged_by_what_is_lost_and_where) {
    AnimalRecord record;
    record.SampleSize = 40;
    record.Reach = 4.0;
    record.EdgeWarning = true;
    record.MaxEdgeValue = 0.02;
    record.BeyondReach = 1.3e-4;
    record.LostAtEdge = 1e-4;
    EXPECT_EQ(edge_verdict(record), EdgeVerdict::kClear);
    EXPECT_EQ(diagnosis(record), "");

    record.BeyondReach = 0.02;
    EXPECT_EQ(edge_verdict(record), EdgeVerdict::kBeyondReach);
    EXPECT_EQ(diagnosis(record),
              "2 % of the distribution lies beyond the kernels' reach of 4 bandwidths: outer isopleths are too small; "
              "--reach whole computes the full kernels");
    record.Adaptive = true;
    EXPECT_EQ(diagnosis(record),
              "2 % of the distribution lies beyond the kernels' reach of 4 bandwidths, because an adaptive kernel is "
              "wider where fixes are sparse: outer isopleths are too small; --reach whole computes the full kernels");

    record.LostAtEdge = 0.002;
    record.BeyondReach = 0.0;
    EXPECT_EQ(edge_verdict(record), EdgeVerdict::kCut);
    EXPECT_EQ(diagnosis(record), "the raster may cut the distribution: its edge reaches 0.02");
}

TEST(BandwidthDoctor, Scores_that_differ_by_rounding_only_are_flat) {
    EXPECT_EQ(fault_of(with_scores({0, 0, 0}, 50)), SearchFault::kFlat);
    EXPECT_EQ(fault_of(with_scores({-1.0, -1.0000005, -1.000001}, 50)), SearchFault::kFlat);
    EXPECT_EQ(fault_of(with_scores({-1.0, -1.000001, -1.00001}, 50)), SearchFault::kUpperEnd);
    EXPECT_EQ(reason_of(with_scores({2, 2}, 50)), "the score is flat: it is the same at every bandwidth of the range");
}

// Two fixes: the second term's (n - 2)(n - 1) is 0 and no score can be computed.
TEST(BandwidthDoctor, Two_fixes_give_biased_cross_validation_a_flat_score) {
    const AnimalRecord record = searched({{0, 0}, {100, 50}}, BandwidthMethod::kBcv);
    EXPECT_EQ(fault_of(record), SearchFault::kFlat);
}

TEST(BandwidthDoctor, Below_thirty_fixes_the_number_is_the_reason) {
    EXPECT_EQ(reason_of(with_scores({3, 2, 1}, 29)),
              "29 fixes are too few for a search (30 or more are advised); the smallest score is at the upper end of "
              "the range (bandwidth 30, 2 HREF)");
    EXPECT_EQ(fault_of(with_scores({3, 2, 1}, 30)), SearchFault::kUpperEnd);
}

TEST(BandwidthDoctor, One_fix_has_no_bandwidth) {
    const AnimalRecord record = searched({{5, 5}}, BandwidthMethod::kLscv);
    EXPECT_EQ(fault_of(record), SearchFault::kTooFew);
    EXPECT_EQ(reason_of(record), "1 fix is too few for a bandwidth");
}

TEST(BandwidthDoctor, Fixes_at_one_place_have_no_bandwidth) {
    const AnimalRecord record = searched(std::vector<Point>(12, Point{5, 5}), BandwidthMethod::kLscv);
    EXPECT_EQ(fault_of(record), SearchFault::kOnePlace);
    EXPECT_EQ(reason_of(record), "all 12 fixes lie at one place");
}

TEST(BandwidthDoctor, Rows_that_were_not_reached_are_not_scores) {
    AnimalRecord record = with_scores({3, 2, 1}, 40);
    record.Profile.push_back({0, 0});
    record.Profile.push_back({0, 0});
    EXPECT_EQ(fault_of(record), SearchFault::kUpperEnd);
}

TEST(BandwidthDoctor, Explains_the_calculators_status) {
    namespace kernel_status = engine::kernel_status;
    AnimalRecord record;
    record.SampleSize = 40;
    record.BandwidthMapUnits = 12.34567;
    record.Grid.CellSize = 50;
    EXPECT_EQ(failure_reason(record), "");
    record.Status = kernel_status::kGridTooLarge;
    EXPECT_EQ(failure_reason(record), "the raster would have more than 50 million cells");
    record.Status = kernel_status::kNothingToCompute;
    EXPECT_EQ(failure_reason(record), "the raster has no cells: the cell size 50 is larger than the extent");
    record.Grid.Columns = 3;
    EXPECT_EQ(failure_reason(record), "the raster has no cells: the cell size 50 is larger than the extent");
    record.Grid.Rows = 2;
    EXPECT_EQ(failure_reason(record), "the bandwidth is 0");
    record.Status = kernel_status::kBandwidthBelowCell;
    EXPECT_EQ(failure_reason(record), "the bandwidth 12.35 is smaller than the cell size 50");
    EXPECT_EQ(failure_remedy(record), "Choose cells of at most 12, or a wider bandwidth.");
    record.Status = kernel_status::kAccumulation;
    EXPECT_EQ(failure_reason(record), "the calculation failed (code 1008)");
    EXPECT_EQ(failure_remedy(record), "The report tells how far it came.");
}

TEST(BandwidthDoctor, Fixes_that_cannot_be_rescaled_have_a_reason_of_their_own) {
    namespace kernel_status = engine::kernel_status;
    AnimalRecord record;
    record.SampleSize = 40;
    for (const std::int32_t status :
         {kernel_status::kRescaling, kernel_status::kHrefRescaling, kernel_status::kLscvRescaling,
          kernel_status::kLscvUnits, kernel_status::kBcvRescaling, kernel_status::kBcvUnits}) {
        record.Status = status;
        EXPECT_EQ(failure_reason(record),
                  "x or y of its fixes has no spread, so that they cannot be rescaled to unit variance");
        EXPECT_EQ(failure_remedy(record), "Leave out the rescaling, or this animal.");
    }
}

TEST(BandwidthDoctor, Tells_of_one_cause_once_and_of_several_in_one_line) {
    AnimalRecord alone;
    alone.Method = BandwidthMethod::kLscv;
    alone.SampleSize = 1;
    alone.Status = engine::kernel_status::kNothingToCompute;
    EXPECT_EQ(diagnosis(alone), "1 fix is too few for a bandwidth");

    AnimalRecord cut = with_scores({3, 2, 1}, 40);
    cut.EdgeWarning = true;
    cut.LostAtEdge = 0.005;
    cut.MaxEdgeValue = 0.0234567;
    EXPECT_EQ(diagnosis(cut),
              "the smallest score is at the upper end of the range (bandwidth 30, 2 HREF): the score falls all the way "
              "to wide bandwidths; the raster may cut the distribution: its edge reaches 0.02346");
}

TEST(BandwidthDoctor, Lack_of_memory_and_percentages_without_a_polygon_have_reasons_of_their_own) {
    AnimalRecord record;
    record.SampleSize = 40;
    record.Grid = {0, 0, 2, 40000, 1200};
    record.Reach = 4;
    record.BandwidthMapUnits = 100;
    record.Status = engine::kernel_status::kDimensions;
    EXPECT_TRUE(lacks_memory(record));
    EXPECT_EQ(diagnosis(record), "there is not enough memory for its raster of 40000 x 1200 cells (384 MB)");
    record.Reach = 1e10;
    EXPECT_FALSE(lacks_memory(record));
    EXPECT_EQ(diagnosis(record), "the calculation failed (code 1000)");

    record.Status = 0;
    record.Isopleths = {{0.001, 3.0, std::nullopt}, {0.01, 3.0, std::nullopt}, {50.0, 2.0, 1000.0}};
    EXPECT_EQ(diagnosis(record),
              "no isopleth at 0.001 %, 0.01 %: the percentage is too small, no area lies above its level");
}

TEST(BandwidthDoctor, Tells_what_a_raster_leaves_of_the_distribution) {
    AnimalRecord record;
    record.SampleSize = 300;
    record.CutTo = 0.0167139;
    EXPECT_EQ(diagnosis(record), "only 1.67 % of the distribution lies on its raster: choose a larger extent");
    record.CutTo = 0.0000063;
    EXPECT_EQ(diagnosis(record), "less than 0.01 % of the distribution lies on its raster: choose a larger extent");
    record.CutTo = 0.0;
    EXPECT_EQ(diagnosis(record), "all cells of its raster are 0 (its fixes lie outside the extent)");
    record.IsoplethStatus = 3001;
    EXPECT_EQ(diagnosis(record),
              "no isopleths, because all cells of its raster are 0 (its fixes lie outside the extent)");
}

TEST(BandwidthDoctor, Stands_in_the_report_only_beside_a_page) {
    const AnimalRecord record = with_scores({3, 2, 1}, 40);
    Settings inputs;
    inputs.Method = BandwidthMethod::kLscv;
    const Lines plain = animal_lines(record, inputs, false);
    inputs.Html = true;
    Lines told = animal_lines(record, inputs, false);
    ASSERT_EQ(told.size(), plain.size() + 1);
    EXPECT_EQ(told[4], "LSCV function could not be minimized. HREF bandwidth used.");
    EXPECT_EQ(told[5],
              "Reason: the smallest score is at the upper end of the range (bandwidth 30, 2 HREF): the score falls all "
              "the way to wide bandwidths");
    told.erase(told.begin() + 5);
    EXPECT_EQ(told, plain);
}

TEST(Diagnosis, Edge_thresholds_follow_the_method) {
    EXPECT_DOUBLE_EQ(edge_threshold(BandwidthMethod::kLscv, 1e6), 0.01);
    EXPECT_DOUBLE_EQ(edge_threshold(BandwidthMethod::kBcv, 1e6), 0.01);
    EXPECT_DOUBLE_EQ(edge_threshold(BandwidthMethod::kHref, 1e6), 0.01);
    EXPECT_DOUBLE_EQ(edge_threshold(BandwidthMethod::kProportion, 1e6), 0.0005);
    EXPECT_DOUBLE_EQ(edge_threshold(BandwidthMethod::kManual, 1e6), 0.0005);
}

}  // namespace
}  // namespace wxl::analysis
