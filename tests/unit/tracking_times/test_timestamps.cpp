#include "tracking_times/timestamps.h"

#include <gtest/gtest.h>
#include <optional>

namespace wxl::tracking_times {
namespace {

// 2018-05-09 is day 17,660 after 1970-01-01 (48 years of 365 days, 12 leap days, 31 + 28 + 31 + 30 + 8 days);
// 14:59:05 is second 53,945 of the day.
constexpr std::int64_t kDay = 17660LL * 86400;
constexpr std::int64_t kMoment = kDay + 53945;

TEST(Timestamp, Forms_that_data_bases_write) {
    EXPECT_EQ(seconds_from_timestamp("2018-05-09 14:59:05.000"), kMoment);
    EXPECT_EQ(seconds_from_timestamp("2018-05-09T14:59:05Z"), kMoment);
    EXPECT_EQ(seconds_from_timestamp("2018-05-09T14:59:05"), kMoment);
    EXPECT_EQ(seconds_from_timestamp(" 2018-05-09 14:59:05 UTC "), kMoment);
    EXPECT_EQ(seconds_from_timestamp("2018/05/09 14:59:05"), kMoment);
    EXPECT_EQ(seconds_from_timestamp("20180509T145905Z"), kMoment);
    EXPECT_EQ(seconds_from_timestamp("2018-05-09 14:59"), kMoment - 5);
}

TEST(Timestamp, Dates_with_points_have_the_day_first) {
    EXPECT_EQ(seconds_from_timestamp("09.05.2018 14:59:05"), kMoment);
    EXPECT_EQ(seconds_from_timestamp("09.05.2018 14:59"), kMoment - 5);
    EXPECT_EQ(seconds_from_timestamp("09.05.2018"), kDay);
    EXPECT_EQ(seconds_from_timestamp("9.5.2018 9:05"), kDay + 9 * 3600 + 5 * 60);
    // 2024-01-15 is day 19,737: 54 years of 365 days, 13 leap days, 14 days.
    EXPECT_EQ(seconds_from_timestamp("15.01.2024 12:00"), 19737LL * 86400 + 43200);
    EXPECT_EQ(seconds_from_timestamp("15.01.2024 12:00:05"), 19737LL * 86400 + 43205);
}

TEST(Timestamp, Fractions_are_cut_off_towards_the_past) {
    EXPECT_EQ(seconds_from_timestamp("2018-05-09 14:59:05.999"), kMoment);
    EXPECT_EQ(seconds_from_timestamp("2018-05-09T14:59:05,5Z"), kMoment);
    EXPECT_EQ(seconds_from_timestamp("1969-12-31 23:59:59.9"), -1);
}

TEST(Timestamp, Offsets_lead_to_utc) {
    EXPECT_EQ(seconds_from_timestamp("2018-05-09T16:59:05+02:00"), kMoment);
    EXPECT_EQ(seconds_from_timestamp("2018-05-09T16:59:05.25+0200"), kMoment);
    EXPECT_EQ(seconds_from_timestamp("2018-05-09T09:29:05-05:30"), kMoment);
    EXPECT_EQ(seconds_from_timestamp("2018-05-09 16:59:05 +02"), kMoment);
}

TEST(Timestamp, Date_alone_is_its_first_second) {
    EXPECT_EQ(seconds_from_timestamp("2018-05-09"), kDay);
}

TEST(Timestamp, Of_a_range_the_start_counts) {
    EXPECT_EQ(seconds_from_timestamp("2018-05-09/2018-05-11"), kDay);
    EXPECT_EQ(seconds_from_timestamp("2018-05-09T14:59:05Z/15:30:00Z"), kMoment);
    EXPECT_EQ(seconds_from_timestamp("2018-05-09/11"), kDay);
}

TEST(Timestamp, Ends_of_days_and_years) {
    EXPECT_EQ(seconds_from_timestamp("2018-05-08 24:00:00"), kDay);
    EXPECT_EQ(seconds_from_timestamp("2016-12-31T23:59:60Z"), 1483228800);
    EXPECT_EQ(seconds_from_timestamp("2000-02-29"), 951782400);
    EXPECT_EQ(seconds_from_timestamp("1970-01-01T00:00:00Z"), 0);
    EXPECT_EQ(seconds_from_timestamp("2038-01-19T03:14:08Z"), 2147483648LL);
}

TEST(Timestamp, Anything_else_is_no_timestamp) {
    for (const char* text : {"",
                             " ",
                             "yesterday",
                             "09/05/2018 14:59",
                             "05.13.2018 14:59",
                             "29.02.2018",
                             "09.05.18",
                             "9.5.",
                             "109.5.2018",
                             "2018.05.09",
                             "09.05/2018",
                             "2018-13-01",
                             "2018-02-29",
                             "2018-05",
                             "2018-5-9",
                             "2018-05/09",
                             "2018-05-09 25:00",
                             "2018-05-09 24:01",
                             "2018-05-09 14:60",
                             "2018-05-09 14:59:61",
                             "2018-05-09 14:59:05.",
                             "2018-05-09 14:59:05 PM",
                             "2018-05-09 14",
                             "2018-05-09T",
                             "2018-05-09T14:59:05+2",
                             "0000-01-01",
                             "43229.6243",
                             "2018-05-09 14:59:05x"})
        EXPECT_EQ(seconds_from_timestamp(text), std::nullopt) << text;
}

TEST(Timestamp, Texts_of_date_and_time) {
    EXPECT_EQ(date_text(kMoment), "2018-05-09");
    EXPECT_EQ(time_of_day_text(kMoment), "14:59:05");
    EXPECT_EQ(date_text(-1), "1969-12-31");
    EXPECT_EQ(time_of_day_text(-1), "23:59:59");
    EXPECT_EQ(instant_text(kMoment), "2018-05-09T14:59:05Z");
}

}  // namespace
}  // namespace wxl::tracking_times
