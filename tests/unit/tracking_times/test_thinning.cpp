#include "tracking_times/thinning.h"
#include "tracking_times/timestamps.h"

#include <gtest/gtest.h>
#include <string>

namespace wxl::tracking_times {
namespace {

using Indices = std::vector<std::size_t>;

/// Indices of the fixes that stay.
Indices thinned(const std::vector<std::int64_t>& times, const Thinning& rule) {
    Thinner thinner(rule);
    Indices kept;
    for (std::size_t i = 0; i < times.size(); ++i)
        if (thinner.Keeps(times[i])) kept.push_back(i);
    return kept;
}

std::vector<std::int64_t> times_of(const std::vector<std::string>& texts) {
    std::vector<std::int64_t> times;
    for (const std::string& text : texts) times.push_back(seconds_from_timestamp("2024-01-01 " + text).value());
    return times;
}

// From 00:10 on, intervals of 4 h begin at 04:10, 08:10, 12:10 and 16:10.
TEST(Thinning, First_fix_of_each_interval_stays) {
    const auto times = times_of({"00:10", "02:00", "04:05", "04:15", "13:00", "16:10"});
    EXPECT_EQ(thinned(times, {4 * 3600, 0}), (Indices{0, 3, 4, 5}));
}

TEST(Thinning, Tolerance_lets_an_early_fix_count_for_the_next_interval) {
    const auto times = times_of({"00:10", "02:00", "04:05", "04:15", "13:00", "16:10"});
    EXPECT_EQ(thinned(times, {4 * 3600, 600}), (Indices{0, 2, 4, 5}));
}

TEST(Thinning, Of_equal_times_the_first_row_stays) {
    EXPECT_EQ(thinned(std::vector<std::int64_t>{5, 5, 5, 15, 15}, {10, 0}), (Indices{0, 3}));
}

TEST(Thinning, Times_before_1970_count_from_the_first_fix) {
    EXPECT_EQ(thinned(std::vector<std::int64_t>{-25, -16, -15, -1, 4, 5}, {10, 0}), (Indices{0, 2, 3, 5}));
}

TEST(Thinning, Tolerance_longer_than_an_interval_is_no_gap) {
    EXPECT_EQ(thinned(std::vector<std::int64_t>{0, 1, 9, 12}, {10, 25}), (Indices{0, 2}));
}

TEST(Thinning, No_fix_and_one_fix) {
    EXPECT_EQ(thinned({}, {10, 0}), Indices{});
    EXPECT_EQ(thinned(std::vector<std::int64_t>{7}, {10, 0}), Indices{0});
}

TEST(Durations, Numbers_with_units) {
    EXPECT_EQ(seconds_from_duration("4h"), 14400);
    EXPECT_EQ(seconds_from_duration("30min"), 1800);
    EXPECT_EQ(seconds_from_duration(" 90 s "), 90);
    EXPECT_EQ(seconds_from_duration("1d12h"), 129600);
    EXPECT_EQ(seconds_from_duration("1 D 12 Hours"), 129600);
    EXPECT_EQ(seconds_from_duration("2 weeks"), 1209600);
}

TEST(Durations, Anything_else_is_none) {
    for (const char* text : {"", "4", "h", "0h", "-1h", "1.5h", "4 fortnights", "4h30", "99999999999s", "200000d"})
        EXPECT_EQ(seconds_from_duration(text), std::nullopt) << text;
}

}  // namespace
}  // namespace wxl::tracking_times
