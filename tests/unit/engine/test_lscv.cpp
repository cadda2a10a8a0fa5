#include "adapters/memory/memory_services.h"
#include "engine/clsLSCV.h"
#include "engine/work_clock.h"
#include "platform/runtime_error.h"
#include "tests/support/samples.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <gtest/gtest.h>
#include <limits>

namespace wxl::engine {
namespace {

SearchProfile rows_of(const clsLSCV& search) {
    return search.GetLSCVProfile().value_or(SearchProfile());
}

class Lscv : public testing::Test {
protected:
    memory::MemoryMessages messages;
    clsLSCV search{messages};
};

const PointSample kThree = {{0.0, 0.0}, {3.0, 4.0}, {0.0, 8.0}};  // distances 5, 5 and 8
constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();

TEST_F(Lscv, Has_no_results_before_a_search) {
    EXPECT_EQ(search.GetBandwidth(), -1.0);
    EXPECT_EQ(search.GetHREF(), -1.0);
    EXPECT_FALSE(search.GetLSCVProfile().has_value());
    EXPECT_FALSE(search.bMinimized);
    EXPECT_EQ(search.lErrorStatus, 0);
}

// With d = 5, 5, 8, h = 4, n = 3: both formulas worked out once by hand.
TEST_F(Lscv, Scores_of_three_fixes) {
    search.SetSearchRange(4.0, 8.0);
    search.SetStepValue(4.0);
    search.SetInputCoords(kThree);
    search.CalculateLSCV();
    EXPECT_NEAR(search.GetLSCVProfile()->front().Score, -0.0010862997888336891, 1e-16);
    search.CalculateBCV2();
    EXPECT_NEAR(search.GetLSCVProfile()->front().Score, -0.004893189033170363, 1e-16);
}

// d = 5, h = 2, n = 2.
TEST_F(Lscv, Score_of_two_fixes) {
    search.SetSearchRange(2.0, 4.0);
    search.SetInputCoords(PointSample{{0.0, 0.0}, {3.0, 4.0}});
    search.CalculateLSCV();
    EXPECT_NEAR(search.GetLSCVProfile()->front().Score, 0.010284031925217409, 1e-16);
}

TEST_F(Lscv, The_range_is_taken_as_absolute_values_in_any_order) {
    search.SetSearchRange(-1.0, -5.0);
    search.SetStepValue(-1.0);
    search.SetInputCoords(kThree);
    search.CalculateLSCV();
    const auto profile = *search.GetLSCVProfile();
    // K = Int(4 / 1) + 2: 7 rows, of which the largest bandwidth fills two and the last is not reached.
    ASSERT_EQ(profile.size(), 7U);
    for (std::size_t row = 0; row < 5; ++row) EXPECT_EQ(profile[row].Bandwidth, 1.0 + static_cast<double>(row));
    EXPECT_EQ(profile[5], profile[4]);
    EXPECT_EQ(profile[6], ProfileRow{});

    clsLSCV swapped(messages);
    swapped.SetSearchRange(5.0, 1.0);
    swapped.SetStepValue(1.0);
    swapped.SetInputCoords(kThree);
    swapped.CalculateLSCV();
    EXPECT_EQ(*swapped.GetLSCVProfile(), profile);
}

TEST_F(Lscv, Bandwidths_are_accumulated) {
    search.SetSearchRange(0.1, 1.1);
    search.SetStepValue(0.1);
    search.SetInputCoords(kThree);
    search.CalculateLSCV();
    const auto profile = *search.GetLSCVProfile();
    double h = 0.1;
    for (std::size_t row = 0; row < 10; ++row) {
        EXPECT_EQ(profile[row].Bandwidth, h);
        h += 0.1;
    }
}

TEST_F(Lscv, The_default_range_is_005_to_2_href_and_for_bcv_to_3_href) {
    search.SetInputCoords(kThree);
    search.CalculateLSCV();
    EXPECT_DOUBLE_EQ(search.GetLSCVProfile()->front().Bandwidth, 0.05 * search.GetHREF());
    clsLSCV biased(messages);
    biased.SetInputCoords(kThree);
    biased.CalculateBCV2();
    double largest = 0.0;
    for (const ProfileRow& row : rows_of(biased)) largest = std::max(largest, row.Bandwidth);
    EXPECT_DOUBLE_EQ(largest, 3.0 * biased.GetHREF());
}

TEST_F(Lscv, The_range_and_step_of_the_first_search_stay) {
    search.SetInputCoords(kThree);
    search.CalculateLSCV();
    const double largest = 2.0 * search.GetHREF();
    const double step = rows_of(search)[1].Bandwidth - rows_of(search)[0].Bandwidth;
    search.CalculateBCV2();
    for (const ProfileRow& row : rows_of(search)) EXPECT_LE(row.Bandwidth, largest);
    search.SetSearchRange(4.0, 8.0);
    search.CalculateBCV2();
    EXPECT_DOUBLE_EQ(rows_of(search)[1].Bandwidth, 4.0 + step);
}

// K = Int(50 / 0.25) + 2; every bandwidth is exact in binary.
TEST_F(Lscv, Without_a_step_the_range_is_cut_into_200) {
    search.SetSearchRange(0.5, 50.5);
    search.SetInputCoords(kThree);
    search.CalculateLSCV();
    const SearchProfile profile = rows_of(search);
    ASSERT_EQ(profile.size(), 203U);
    EXPECT_EQ(profile[1].Bandwidth, 0.75);
    EXPECT_EQ(profile[200].Bandwidth, 50.5);
    EXPECT_EQ(profile[201], profile[200]);
    EXPECT_EQ(profile[202], ProfileRow{});
}

// All fixes are far apart, so that the score is 1 / (8 pi h^2). Ten steps of 0.1 end at 0.99999999999999989, and the
// row of the largest bandwidth, 1, has no smaller score.
TEST_F(Lscv, A_minimum_at_an_end_of_the_range_but_for_rounding_is_none) {
    search.SetSearchRange(0.1, 1.0);
    search.SetStepValue(0.1);
    search.SetInputCoords(PointSample{{0.0, 0.0}, {300.0, 400.0}});
    search.CalculateLSCV();
    EXPECT_NEAR(search.GetBandwidth(), 1.0, 1e-12);
    EXPECT_FALSE(search.bMinimized);
}

TEST_F(Lscv, A_search_that_faults_takes_an_earlier_minimum_back) {
    search.SetSearchRange(1.0, 9.0);
    search.SetStepValue(1.0);
    search.SetInputCoords(kThree);
    search.CalculateBCV2();
    EXPECT_EQ(search.GetBandwidth(), 3.0);
    EXPECT_TRUE(search.bMinimized);
    search.SetSearchRange(3.0, 3.0);
    search.SetStepValue(0.0);
    search.CalculateLSCV();
    EXPECT_EQ(search.lErrorStatus, 961);
    EXPECT_FALSE(search.bMinimized);
}

TEST_F(Lscv, Href_is_computed_in_a_search_for_its_range_alone) {
    search.SetSearchRange(4.0, 8.0);
    search.SetInputCoords(kThree);
    search.CalculateLSCV();
    EXPECT_EQ(search.GetHREF(), -1.0);
}

TEST_F(Lscv, One_object_serves_one_sample) {
    search.SetInputCoords(PointSample{{0.0, 0.0}, {2.0, 0.0}, {0.0, 2.0}, {2.0, 2.0}});
    search.CalculateHREF();
    search.SetInputCoords(PointSample{{0.0, 0.0}, {4.0, 0.0}, {0.0, 8.0}, {4.0, 8.0}});
    search.CalculateHREF();
    EXPECT_DOUBLE_EQ(search.GetHREF(), 0.916486424665735);

    clsLSCV refused(messages);
    refused.SetInputCoords(PointSample{{1.0, 1.0}});
    refused.SetInputCoords(kThree);
    EXPECT_EQ(refused.lErrorStatus, 970);
    refused.CalculateLSCV();
    EXPECT_EQ(refused.GetBandwidth(), -1.0);
}

// Every BCV score of two fixes faults: (n - 2)(n - 1) is 0. Of equal scores the first, smallest bandwidth wins.
TEST_F(Lscv, Bcv_of_two_fixes_has_scores_of_0_and_takes_the_first_of_equals) {
    search.SetSearchRange(1.0, 2.0);
    search.SetInputCoords(PointSample{{0.0, 0.0}, {3.0, 4.0}});
    search.CalculateBCV2();
    EXPECT_EQ(search.lErrorStatus, 0);
    EXPECT_FALSE(search.bMinimized);
    EXPECT_EQ(search.GetBandwidth(), 1.0);
    for (const ProfileRow& row : rows_of(search)) EXPECT_EQ(row.Score, 0.0);
}

// (n - 2)(n - 1) leaves 32 bits at 46,343 fixes.
TEST_F(Lscv, Bcv_of_too_many_fixes_for_its_product_has_scores_of_0) {
    search.SetSearchRange(0.5, 1.0);
    search.SetStepValue(0.25);
    search.SetInputCoords(tests::normal_sample(46343, 1.0, {0.0, 0.0}, 111));
    search.CalculateBCV2();
    EXPECT_EQ(search.lErrorStatus, 0);
    EXPECT_FALSE(search.bMinimized);
    EXPECT_EQ(search.GetLSCVProfile()->front(), (ProfileRow{0.5, 0.0}));
}

// At h = 0 the score divides by zero and counts as 0.
TEST_F(Lscv, A_bandwidth_of_0_has_a_score_of_0) {
    search.SetSearchRange(0.0, 10.0);
    search.SetStepValue(1.0);
    search.SetInputCoords(kThree);
    search.CalculateLSCV();
    EXPECT_EQ(search.lErrorStatus, 0);
    EXPECT_EQ(search.GetLSCVProfile()->front(), ProfileRow{});
    for (const ProfileRow& row : rows_of(search)) EXPECT_TRUE(std::isfinite(row.Score));
}

TEST_F(Lscv, A_score_that_keeps_falling_is_not_minimised) {
    search.SetSearchRange(0.01, 1.0);
    search.SetInputCoords(PointSample{{0.0, 0.0}, {30.0, 40.0}, {0.0, 80.0}});
    search.CalculateLSCV();
    EXPECT_FALSE(search.bMinimized);
    EXPECT_NEAR(search.GetBandwidth(), 1.0, 1e-12);
}

TEST_F(Lscv, A_single_bandwidth_without_a_step_faults) {
    search.SetSearchRange(3.0, 3.0);
    search.SetInputCoords(kThree);
    search.CalculateLSCV();
    EXPECT_EQ(search.lErrorStatus, 961);
    EXPECT_EQ(messages.Last().Text, "LSCV: 961, 3, 3");
    EXPECT_EQ(search.GetBandwidth(), -1.0);

    clsLSCV biased(messages);
    biased.SetSearchRange(3.0, 3.0);
    biased.SetInputCoords(kThree);
    biased.CalculateBCV2();
    EXPECT_EQ(biased.lErrorStatus, 1961);
    EXPECT_EQ(messages.Last().Text, "BCV2: 1961, 3, 3");
}

TEST_F(Lscv, A_search_that_cannot_be_laid_out_faults) {
    const double infinity = std::numeric_limits<double>::infinity();
    struct Case {
        double Min, Max, Step;
    };
    for (const Case& c : {Case{1.0, 2.0, 1e-300}, Case{1.0, 2.0, 1e-9}, Case{kNaN, 2.0, 0.1}, Case{1.0, infinity, 0.1},
                          Case{1.0, 2.0, kNaN}}) {
        clsLSCV each(messages);
        each.SetSearchRange(c.Min, c.Max);
        each.SetStepValue(c.Step);
        each.SetInputCoords(kThree);
        each.CalculateLSCV();
        EXPECT_EQ(each.lErrorStatus, 961) << c.Min << " " << c.Max << " " << c.Step;
        EXPECT_FALSE(each.GetLSCVProfile().has_value());
    }
}

// The step vanishes beside the bandwidth: h never grows, and the rows run out.
TEST_F(Lscv, A_step_that_does_not_move_the_bandwidth_ends_with_the_profile) {
    search.SetSearchRange(1e18, 1e18 + 4096.0);
    search.SetStepValue(10.0);
    search.SetInputCoords(kThree);
    search.CalculateLSCV();
    EXPECT_EQ(search.lErrorStatus, 962);

    clsLSCV biased(messages);
    biased.SetSearchRange(1e18, 1e18 + 4096.0);
    biased.SetStepValue(10.0);
    biased.SetInputCoords(kThree);
    biased.CalculateBCV2();
    EXPECT_EQ(biased.lErrorStatus, 1962);
    EXPECT_TRUE(messages.Last().Text.starts_with("BCV2: 1962, ")) << messages.Last().Text;
}

// From 2^53 on doubles are 2 apart, so that a step of 2.9 goes 2 far: 6 bandwidths up to max, where K = Int(10 / 2.9) +
// 2 = 5 makes 6 rows. All are taken when the last one, at max, is to be written.
TEST_F(Lscv, A_profile_that_is_full_before_its_last_row_ends_there) {
    const double min = 9007199254740992.0;
    search.SetSearchRange(min, min + 10.0);
    search.SetStepValue(2.9);
    search.SetInputCoords(kThree);
    search.CalculateLSCV();
    EXPECT_EQ(search.lErrorStatus, 963);
    clsLSCV biased(messages);
    biased.SetSearchRange(min, min + 10.0);
    biased.SetStepValue(2.9);
    biased.SetInputCoords(kThree);
    biased.CalculateBCV2();
    EXPECT_EQ(biased.lErrorStatus, 1963);
}

TEST_F(Lscv, Samples_without_pair_distances_set_970_and_nothing_is_computed) {
    for (const PointSample& sample : {PointSample{}, PointSample{{1.0, 1.0}}, PointSample{{1.0, 1.0}, {kNaN, 1.0}},
                                      PointSample{{1.0, 1.0}, {1.0, std::numeric_limits<double>::infinity()}},
                                      PointSample{{1e200, 0.0}, {0.0, 0.0}}}) {
        clsLSCV each(messages);
        each.SetInputCoords(sample);
        EXPECT_EQ(each.lErrorStatus, 970);
        each.CalculateHREF();
        each.CalculateLSCV();
        each.CalculateBCV2();
        EXPECT_EQ(each.lErrorStatus, 970);
        EXPECT_EQ(each.GetHREF(), -1.0);
        EXPECT_EQ(each.GetBandwidth(), -1.0);
    }
    EXPECT_TRUE(messages.Boxes().empty());
}

TEST_F(Lscv, Href_beyond_the_range_of_numbers_sets_950) {
    // The largest distance is a number, the sum of the squares is not.
    search.SetInputCoords(PointSample{{0.0, 0.0},
                                      {1.3e154, 0.0},
                                      {0.0, 0.0},
                                      {1.3e154, 0.0},
                                      {0.0, 0.0},
                                      {1.3e154, 0.0},
                                      {0.0, 0.0},
                                      {1.3e154, 0.0},
                                      {0.0, 0.0},
                                      {1.3e154, 0.0}});
    search.CalculateHREF();
    EXPECT_EQ(search.lErrorStatus, 950);
    EXPECT_EQ(search.GetHREF(), -1.0);
    EXPECT_TRUE(messages.Boxes().empty());
}

TEST_F(Lscv, Equal_fixes_far_from_the_origin_give_finite_scores) {
    for (const double place : {0.0, 5.8e6, 1e300}) {
        for (const auto count : {3U, 800U}) {
            clsLSCV each(messages);
            each.SetSearchRange(1e-100, 1.0);
            each.SetStepValue(0.01);
            each.SetInputCoords(PointSample(count, {place, place}));
            each.CalculateLSCV();
            ASSERT_EQ(each.lErrorStatus, 0);
            for (const ProfileRow& row : rows_of(each)) ASSERT_TRUE(std::isfinite(row.Score));
            each.CalculateBCV2();
            for (const ProfileRow& row : rows_of(each)) ASSERT_TRUE(std::isfinite(row.Score));
        }
    }
}

TEST(WorkClock, Gives_the_host_a_turn_when_50_ms_have_passed) {
    int turns = 0;
    std::chrono::steady_clock::time_point now;
    WorkClock clock({.Yield = [&] { ++turns; }, .Now = [&] { return now; }});
    now += std::chrono::milliseconds(49);
    clock.Tick();
    EXPECT_EQ(turns, 0);
    now += std::chrono::milliseconds(1);
    clock.Tick();
    EXPECT_EQ(turns, 1);
    clock.Tick();
    EXPECT_EQ(turns, 1);
    now += std::chrono::milliseconds(50);
    clock.Tick();
    EXPECT_EQ(turns, 2);
}

TEST_F(Lscv, A_host_that_stops_the_work_leaves_the_number_of_the_step) {
    std::chrono::steady_clock::time_point now;
    search.SetTurns({.Yield = [] { platform::Raise(platform::error_number::kInvalidCall); },
                     .Now = [&now] { return now += std::chrono::milliseconds(50); }});
    search.SetSearchRange(0.5, 1.0);
    search.SetStepValue(0.01);
    search.SetInputCoords(tests::normal_sample(4000, 1.0, {0.0, 0.0}, 112));
    search.CalculateLSCV();
    // The first turn comes with the scores, in the loop over the bandwidths.
    EXPECT_EQ(search.lErrorStatus, 962);
    EXPECT_EQ(messages.Last().Text, "LSCV: 962, 0.5, 1");
}

}  // namespace
}  // namespace wxl::engine
