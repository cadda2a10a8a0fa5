#include "adapters/tracking/time_numbers.h"

#include <gtest/gtest.h>
#include <optional>
#include <vector>

namespace wxl::tracking {
namespace {

// 2018-05-09 is day 17,660 after 1970-01-01 and 43,229 after 1899-12-30; 14:59:05 is second 53,945 of the day.
constexpr std::int64_t kMoment = 17660LL * 86400 + 53945;

std::optional<TimeKind> kind_of(const std::vector<double>& numbers) {
    TimeNumberCounts counts;
    for (const double number : numbers) counts.Take(number);
    return counts.KindOf(numbers.size());
}

TEST(TimeNumbers, Limits_of_each_kind_belong_to_it) {
    const auto is_within = [](TimeKind kind, double least, double most) {
        return is_time_number(kind, least) && is_time_number(kind, most) && !is_time_number(kind, least - 1.0) &&
               !is_time_number(kind, most * 1.01);
    };
    EXPECT_TRUE(is_within(TimeKind::kSheetDays, 20000.0, 80000.0));
    EXPECT_TRUE(is_within(TimeKind::kEpochSeconds, 1e8, 4.2e9));
    EXPECT_TRUE(is_within(TimeKind::kEpochMillis, 1e11, 4.2e12));
    EXPECT_TRUE(is_within(TimeKind::kEpochMicros, 9e14, 4.2e15));
    EXPECT_FALSE(is_time_number(TimeKind::kEpochNanos, 131703587450000000.0)) << "hundred nanoseconds since 1601";
    EXPECT_FALSE(is_time_number(TimeKind::kEpochNanos, 636614675450000000.0)) << "and since year 1";
    EXPECT_TRUE(is_time_number(TimeKind::kEpochNanos, 9e17));
    EXPECT_FALSE(is_time_number(TimeKind::kCalendar, 43229.0));
}

TEST(TimeNumbers, Kind_is_that_of_four_fifths) {
    EXPECT_EQ(kind_of({43229.0, 43230.0, 43231.0, 43232.0, 0.0}), TimeKind::kSheetDays);
    EXPECT_EQ(kind_of({43229.0, 43230.0, 43231.0, 0.0}), std::nullopt);
    EXPECT_EQ(kind_of({1.5e9, 1.5e9, 1.5e9, 1.5e9, 1.5e12}), TimeKind::kEpochSeconds);
    EXPECT_EQ(kind_of({1.5e12, 1.5e12, 1.5e12, 1.5e12, 0.0}), TimeKind::kEpochMillis);
    EXPECT_EQ(kind_of({1.5e9, 1.5e9, 43229.0, 43229.0}), std::nullopt);
    EXPECT_EQ(kind_of({}), std::nullopt);
    std::vector<double> hours;
    for (int hour = 0; hour < 60; ++hour) hours.push_back(3600.0 * hour);
    EXPECT_EQ(kind_of(hours), std::nullopt);
}

TEST(TimeNumbers, Number_becomes_a_moment) {
    EXPECT_EQ(time_from_number("1525877945.9", TimeKind::kEpochSeconds), (TimeText{kMoment, true, true, false}));
    EXPECT_EQ(time_from_number("43229,6243634259", TimeKind::kSheetDays), (TimeText{kMoment, false, true, false}));
    for (const char* text : {"0", "-999", "1525877945999", "", "soon"})
        EXPECT_EQ(time_from_number(text, TimeKind::kEpochSeconds), std::nullopt) << text;
}

}  // namespace
}  // namespace wxl::tracking
