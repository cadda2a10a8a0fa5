#include "tracking_times/time_facts.h"
#include "tracking_times/timestamps.h"

#include <gtest/gtest.h>
#include <string>

namespace wxl::tracking_times {
namespace {

std::vector<std::int64_t> times_of(const std::vector<std::string>& texts) {
    std::vector<std::int64_t> times;
    for (const std::string& text : texts) times.push_back(seconds_from_timestamp(text).value());
    return times;
}

// Intervals 6600, 7500, 600, 31500 and 11400 s.
TEST(TimeFacts, Period_and_intervals) {
    const TimeFacts facts = facts_on_times(times_of({"2024-01-01 16:10", "2024-01-01 00:10", "2024-01-01 02:00",
                                                     "2024-01-01 04:05", "2024-01-01 04:15", "2024-01-01 13:00"}),
                                           3);
    EXPECT_EQ(facts.Fixes(), 9U);
    EXPECT_EQ(facts.WithTime, 6U);
    EXPECT_EQ(instant_text(facts.First.value()), "2024-01-01T00:10:00Z");
    EXPECT_EQ(instant_text(facts.Last.value()), "2024-01-01T16:10:00Z");
    EXPECT_DOUBLE_EQ(facts.Days, 2.0 / 3.0);
    EXPECT_EQ(facts.DaysWithFix, 1U);
    EXPECT_EQ(facts.EqualTimes, 0U);
    EXPECT_EQ(facts.Intervals.value().Median, 7500.0);
    EXPECT_EQ(facts.Intervals.value().Lower, 6600.0);
    EXPECT_EQ(facts.Intervals.value().Upper, 11400.0);
    EXPECT_EQ(facts.Intervals.value().Range(), 4800.0);
}

TEST(TimeFacts, Equal_times_are_intervals_of_zero) {
    const TimeFacts facts = facts_on_times({100, 100, 100, 160});
    EXPECT_EQ(facts.EqualTimes, 2U);
    EXPECT_EQ(facts.Intervals.value().Median, 0.0);
    EXPECT_EQ(facts.Intervals.value().Upper, 30.0);
}

TEST(TimeFacts, Days_with_a_fix_are_those_of_utc) {
    EXPECT_EQ(facts_on_times(times_of({"1969-12-31 23:59:59", "1970-01-01 00:00:00", "1970-01-03", "1970-01-03 12:00"}))
                  .DaysWithFix,
              3U);
}

TEST(TimeFacts, One_time_has_no_interval_and_none_has_nothing) {
    const TimeFacts one = facts_on_times({1000});
    EXPECT_EQ(one.First, 1000);
    EXPECT_EQ(one.Days, 0.0);
    EXPECT_EQ(one.DaysWithFix, 1U);
    EXPECT_FALSE(one.Intervals);
    const TimeFacts none = facts_on_times({}, 5);
    EXPECT_EQ(none.Fixes(), 5U);
    EXPECT_FALSE(none.First);
    EXPECT_FALSE(none.Intervals);
}

}  // namespace
}  // namespace wxl::tracking_times
