#include "adapters/tracking/time_text.h"
#include "tracking_times/timestamps.h"

#include <cstdint>
#include <gtest/gtest.h>
#include <string>
#include <string_view>

namespace wxl::tracking {
namespace {

constexpr TimeFormat kDmy{TimeKind::kCalendar, DateOrder::kDayMonthYear};
constexpr TimeFormat kMdy{TimeKind::kCalendar, DateOrder::kMonthDayYear};
constexpr TimeFormat kYmd{TimeKind::kCalendar, DateOrder::kYearMonthDay};

// 2018-05-09 is day 17,660 after 1970-01-01; 14:59:05 is second 53,945 of the day.
constexpr std::int64_t kDay = 17660LL * 86400;
constexpr std::int64_t kMinute = kDay + 53940;
constexpr std::int64_t kMoment = kDay + 53945;

std::int64_t seconds(std::string_view text, const TimeFormat& format = kDmy) {
    return time_from_text(text, format).value_or(TimeText{-1}).Seconds;
}

TEST(TimeText, Dates_with_the_year_first_need_no_order) {
    for (const TimeFormat& format : {kDmy, kMdy, kYmd})
        for (const char* text :
             {"2018-05-09 14:59:05", "2018/5/9 14:59:05", "2018.05.09 14:59:05", "2018-05-09T14:59:05.999Z",
              "20180509145905", "20180509 145905", "20180509T145905Z", "2018-129 14:59:05", "2018129 145905",
              "2018-May-09 14:59:05", " 2018-05-09 14:59:05 UTC "})
            EXPECT_EQ(seconds(text, format), kMoment) << text;
}

TEST(TimeText, Three_numbers_follow_the_order_but_points_have_the_day_first) {
    EXPECT_EQ(seconds("9/5/2018 14:59", kDmy), kMinute);
    EXPECT_EQ(seconds("5/9/2018 14:59", kMdy), kMinute);
    EXPECT_EQ(seconds("05-09-18 14:59", kMdy), kMinute);
    EXPECT_EQ(seconds("18-05-09 14:59", kYmd), kMinute);
    EXPECT_EQ(seconds("180509", kYmd), kDay);
    EXPECT_EQ(seconds("090518", kDmy), kDay);
    EXPECT_EQ(seconds("9.5.2018 14:59", kMdy), kMinute);
    EXPECT_EQ(seconds("09.05.18 14.59", kYmd), kMinute);
}

TEST(TimeText, Months_by_name) {
    for (const char* text : {"9-May-2018 14:59", "09 May 2018, 14:59", "May 9, 2018 14:59", "Wed May 9 2018 14:59",
                             "9. Mai 2018 14:59", "9-mai-18 14:59", "Wednesday, 9 May 2018 14:59"})
        EXPECT_EQ(seconds(text), kMinute) << text;
    EXPECT_EQ(seconds("9-M\xC3\xA4r-2018"), tracking_times::seconds_from_timestamp("2018-03-09"));
    EXPECT_EQ(seconds("9 ao\xC3\xBBt 2018"), tracking_times::seconds_from_timestamp("2018-08-09"));
    EXPECT_EQ(seconds("9-dic-2018"), tracking_times::seconds_from_timestamp("2018-12-09"));
}

TEST(TimeText, Time_stands_within_the_date_or_before_it) {
    for (const char* text :
         {"Wed May  9 14:59:05 2018", "Wed May  9 14:59:05 UTC 2018", "May 9 14:59:05 2018", "14:59:05 09-May-2018",
          "14:59:05 9/5/2018", "2:59:05 PM, 9 May 2018", "Wed, 09 May 2018 14:59:05 +0000", "2018/05/09-14:59:05",
          "2018-05-09-14:59:05", "09MAY2018:14:59:05", "2018:05:09 14:59:05"})
        EXPECT_EQ(seconds(text), kMoment) << text;
    EXPECT_EQ(seconds("14:59:05 5/9/2018", kMdy), kMoment);
    EXPECT_EQ(possible_orders("14:59:05 13/5/2018"), 1U << static_cast<unsigned>(DateOrder::kDayMonthYear));
}

TEST(TimeText, Months_in_other_alphabets) {
    // 9 мая 2018, 9 МАЯ 2018, 9 травня 2018
    for (const char* text : {"9 \xD0\xBC\xD0\xB0\xD1\x8F 2018", "9 \xD0\x9C\xD0\x90\xD0\xAF 2018",
                             "9 \xD1\x82\xD1\x80\xD0\xB0\xD0\xB2\xD0\xBD\xD1\x8F 2018"})
        EXPECT_EQ(seconds(text), kDay) << text;
}

TEST(TimeText, Marks_behind_the_numbers_of_a_date) {
    // 2018年5月9日14时59分05秒, 2018年05月09日 14:59:05, 2018년 5월 9일 14시 59분 5초
    for (const char* text :
         {"2018\xE5\xB9\xB4"
          "5\xE6\x9C\x88"
          "9\xE6\x97\xA5"
          "14\xE6\x97\xB6"
          "59\xE5\x88\x86"
          "05\xE7\xA7\x92",
          "2018\xE5\xB9\xB4"
          "05\xE6\x9C\x88"
          "09\xE6\x97\xA5 14:59:05",
          "2018\xEB\x85\x84 5\xEC\x9B\x94 9\xEC\x9D\xBC 14\xEC\x8B\x9C 59\xEB\xB6\x84 5\xEC\xB4\x88"})
        EXPECT_EQ(seconds(text), kMoment) << text;
}

// "marraskuuta" is no March, "srpna" August in Czech and "srpnja" July in Croatian.
TEST(TimeText, Months_of_many_languages) {
    struct Month {
        const char* Text;
        const char* Day;
    };
    for (const auto& [text, day] :
         {Month{"9 marraskuuta 2018", "2018-11-09"}, Month{"9 maaliskuuta 2018", "2018-03-09"},
          Month{"9 kes\xC3\xA4kuuta 2018", "2018-06-09"},
          Month{"9. \xC4\x8D"
                "ervna 2018",
                "2018-06-09"},
          Month{"9. \xC4\x8D"
                "ervence 2018",
                "2018-07-09"},
          Month{"9. \xC5\x99\xC3\xADjna 2018", "2018-10-09"}, Month{"9. srpna 2018", "2018-08-09"},
          Month{"9. srpnja 2018", "2018-07-09"}, Month{"9. lipnja 2018", "2018-06-09"},
          Month{"9 lipca 2018", "2018-07-09"}, Month{"9 \xC5\x9Eubat 2018", "2018-02-09"},
          Month{"9 A\xC4\x9Fustos 2018", "2018-08-09"}, Month{"2018. m\xC3\xA1jus 9.", "2018-05-09"},
          Month{"9-szept-2018", "2018-09-09"}, Month{"9-ian-2018", "2018-01-09"}, Month{"9 M\xC4r 2018", "2018-03-09"},
          Month{"9 AO\xDBT 2018", "2018-08-09"}})
        EXPECT_EQ(seconds(text), tracking_times::seconds_from_timestamp(day)) << text;
}

TEST(TimeText, Words_around_dates_and_times_are_passed_over) {
    for (const char* text : {"2018-05-09 at 14:59",
                             "9/5/2018 at 14:59",
                             "9 May 2018 at 2:59 pm",
                             "9.5.2018 um 14:59 Uhr",
                             "9.5.2018 klo 14.59",
                             "9 de mayo de 2018 14:59",
                             "9 de mayo de 2018 a las 14:59",
                             "9 de maio de 2018, 14:59",
                             "9 mai 2018 \xC3\xA0 14h59",
                             "14:59 on 9 May 2018",
                             "9th May 2018 14:59",
                             "May 9th, 2018 14:59",
                             "9th of May 2018, 1459 h",
                             "2018.05.09. 14:59",
                             "9.5.2018. 14:59",
                             "9. 5. 2018 14:59",
                             "2018. 5. 9. \xEC\x98\xA4\xED\x9B\x84 2:59",
                             "2018/5/9 \xE4\xB8\x8B\xE5\x8D\x88 02:59",
                             "9/5/2018 2:59 \xCE\xBC\xCE\xBC",
                             "2018-05-09 14:59 hrs"})
        EXPECT_EQ(seconds(text), kMinute) << text;
    // 0:59 in the night
    for (const char* text : {"2018/5/9 \xE4\xB8\x8A\xE5\x8D\x88 12:59", "9/5/2018 12:59 \xCF\x80.\xCE\xBC."})
        EXPECT_EQ(seconds(text), kDay + 59 * 60) << text;
    std::string many;
    for (int i = 0; i < 1'000'000; ++i) many += "\xE4\xB8\x8B\xE5\x8D\x88";
    EXPECT_FALSE(time_of_day_from_text(many));
    EXPECT_EQ(time_of_day_from_text("14:59 Uhr"), 53940);
    EXPECT_EQ(possible_orders("14:59 on 13/5/2018"), 1U << static_cast<unsigned>(DateOrder::kDayMonthYear));
    for (const char* text :
         {"2018/5/9 \xE4\xB8\x8B\xE5\x8D\x88 14:59", "9 of 2018", "9/5/2018 2:59 at", "9/5/2018 Uhr"})
        EXPECT_FALSE(time_from_text(text, kDmy)) << text;
}

TEST(TimeText, Days_of_the_week_are_passed_over) {
    for (const char* text :
         {"Mi, 09.05.2018 14:59:05", "mercredi 9 mai 2018 14:59:05", "mi\xC3\xA9rcoles, 9 de mayo de 2018 14:59:05",
          "mer. 09/05/2018 14:59:05", "2018-05-09 14:59:05:123", "2018-05-09 14:59:05 (UTC)"})
        EXPECT_EQ(seconds(text), kMoment) << text;
    EXPECT_EQ(seconds("martes 08/05/2018"), kDay - 86400);
    EXPECT_FALSE(time_from_text("mar. 08/05/2018", kDmy)) << "a Tuesday, or March";
    EXPECT_EQ(seconds("Mar 8, 2018"), tracking_times::seconds_from_timestamp("2018-03-08"));
}

TEST(TimeText, Digits_alone_are_dates_of_years_from_1800_to_2100) {
    EXPECT_EQ(seconds("18000101"), tracking_times::seconds_from_timestamp("1800-01-01"));
    EXPECT_EQ(seconds("2100365"), tracking_times::seconds_from_timestamp("2100-12-31"));
    for (const char* text : {"17991231", "21010101", "99990101", "9052018", "0905201", "1799365", "2101001"})
        EXPECT_FALSE(time_from_text(text, kDmy)) << text;
}

TEST(TimeText, Abbreviations_of_zones_are_told_and_not_heeded) {
    for (const char* text : {"2018-05-09 14:59:05 CEST", "5/9/2018 14:59:05 EST", "Wed May  9 14:59:05 CST 2018"}) {
        const auto time = time_from_text(text, kMdy);
        ASSERT_TRUE(time) << text;
        EXPECT_EQ(*time, (TimeText{kMoment, false, true, true})) << text;
    }
    EXPECT_EQ(time_from_text("2018-05-09T16:59:05+02:00[Europe/Paris]", kDmy), (TimeText{kMoment, true, true, false}));
    EXPECT_EQ(time_from_text("Wed May 09 2018 16:59:05 GMT+0200 (CEST)", kDmy), (TimeText{kMoment, true, true, false}));
}

TEST(TimeText, Times_of_day) {
    EXPECT_EQ(time_of_day_from_text("14:59:05"), 53945);
    EXPECT_EQ(time_of_day_from_text("14:59:05.9"), 53945);
    EXPECT_EQ(time_of_day_from_text("2:59:05 PM"), 53945);
    EXPECT_EQ(time_of_day_from_text("2:59:05 p.m."), 53945);
    EXPECT_EQ(time_of_day_from_text("12:45 am"), 2700);
    EXPECT_EQ(time_of_day_from_text("12:45 PM"), 45900);
    EXPECT_EQ(time_of_day_from_text("08h00"), 28800);
    EXPECT_EQ(time_of_day_from_text("8h"), 28800);
    EXPECT_EQ(time_of_day_from_text("8h30m15s"), 30615);
    EXPECT_EQ(time_of_day_from_text("8h30min15s"), 30615);
    EXPECT_EQ(time_of_day_from_text("13h05min"), 47100);
    EXPECT_EQ(time_of_day_from_text("14.59.05"), 53945);
    EXPECT_EQ(time_of_day_from_text("14:59:05,250"), 53945);
    EXPECT_EQ(time_of_day_from_text("2:59:05 p. m."), 53945);
    EXPECT_EQ(time_of_day_from_text("1459"), 53940);
    EXPECT_EQ(time_of_day_from_text("905"), 32700);
    EXPECT_EQ(time_of_day_from_text("145905"), 53945);
    EXPECT_EQ(time_of_day_from_text("24:00"), 86400);
    for (const char* text : {"", "5", "25:00", "14:60", "13:00 PM", "0:30 AM", "14:59:61", "noon", "24:01", "1:2:3:4"})
        EXPECT_EQ(time_of_day_from_text(text), std::nullopt) << text;
}

TEST(TimeText, Offsets_lead_to_utc) {
    for (const char* text : {"2018-05-09T16:59:05+02:00", "2018-05-09 16:59:05 +0200", "2018-05-09 16:59:05+02",
                             "2018-05-09 16:59:05 UTC+2", "2018-05-09 11:59:05 GMT-03:00", "2018-05-09 14:59:05 GMT"}) {
        EXPECT_EQ(seconds(text), kMoment) << text;
        EXPECT_TRUE(time_from_text(text, kDmy)->IsUtc) << text;
    }
    EXPECT_FALSE(time_from_text("2018-05-09 14:59:05", kDmy)->IsUtc);
    EXPECT_FALSE(time_from_text("2018-05-09", kDmy)->HasTimeOfDay);
}

TEST(TimeText, Numbers_of_seconds_and_days) {
    EXPECT_EQ(seconds("1525877945.9", {TimeKind::kEpochSeconds, {}}), kMoment);
    EXPECT_EQ(seconds("1525877945999", {TimeKind::kEpochMillis, {}}), kMoment);
    EXPECT_EQ(seconds("1525877945999999", {TimeKind::kEpochMicros, {}}), kMoment);
    EXPECT_EQ(seconds("43229.6243634259", {TimeKind::kSheetDays, {}}), kMoment);
    EXPECT_EQ(seconds("43229,75", {TimeKind::kSheetDays, {}}), kDay + 64800);
}

TEST(TimeText, Years_of_two_digits_are_1970_to_2069) {
    EXPECT_EQ(seconds("1/1/70"), 0);
    EXPECT_EQ(seconds("1/1/69"), tracking_times::seconds_from_timestamp("2069-01-01"));
    EXPECT_EQ(seconds("930701", kYmd), tracking_times::seconds_from_timestamp("1993-07-01"));
}

TEST(TimeText, Anything_else_is_none) {
    for (const char* text :
         {"", "week 20", "2018-05", "2018-02-30", "31/4/2018", "13/13/2018", "2018-05-09 25:00", "2018-366",
          "2018-05-09x", "2018-05-09-05:00", "2018-05-09 14:59 Cest", "14:59 2018", "Wed May 9 14:59:05",
          "2018\xE5\xB9\xB4"
          "5",
          "12345", "9-Foo-2018", "1/2/345", "2018-05-09 14:59 +25:00"})
        EXPECT_FALSE(time_from_text(text, kDmy)) << text;
}

TEST(TimeText, Possible_orders_of_dates) {
    const auto bit = [](DateOrder order) { return 1U << static_cast<unsigned>(order); };
    const unsigned dmy = bit(DateOrder::kDayMonthYear);
    const unsigned mdy = bit(DateOrder::kMonthDayYear);
    const unsigned ymd = bit(DateOrder::kYearMonthDay);
    EXPECT_EQ(possible_orders("03/04/2020 12:00"), dmy | mdy);
    EXPECT_EQ(possible_orders("13/04/2020"), dmy);
    EXPECT_EQ(possible_orders("04-13-2020"), mdy);
    EXPECT_EQ(possible_orders("13/13/2020"), 0U);
    EXPECT_EQ(possible_orders("930701"), ymd);
    EXPECT_EQ(possible_orders("09-05-30"), dmy | mdy | ymd);
    EXPECT_EQ(possible_orders("09-05-00"), dmy | mdy);
    for (const char* plain : {"2020-03-04", "03.04.2020", "3-Apr-2020", "20200304", "week 20", ""})
        EXPECT_EQ(possible_orders(plain), 7U) << plain;
}

/// Every text that the strict reader of data bases takes means the same here.
TEST(TimeText, Agrees_with_timestamps_of_data_bases) {
    for (const char* text :
         {"2018-05-09", "2018-05-09 14:59", "2018-05-09T14:59:05.000Z", "1969-12-31 23:59:59", "2018-05-09/2018-05-11",
          "2016-02-29 24:00", "0001-01-01", "9999-12-31", "2018-05-09T23:59:60Z"})
        EXPECT_EQ(seconds(text), tracking_times::seconds_from_timestamp(text)) << text;
}

}  // namespace
}  // namespace wxl::tracking
