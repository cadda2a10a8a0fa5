#include "platform/clock.h"

#include <ctime>
#include <gtest/gtest.h>

namespace wxl::platform {

TEST(DateTimeText, Has_month_first_and_a_clock_of_twelve_hours) {
    EXPECT_EQ(DateTimeText({2026, 11, 20, 15, 4, 5}), "11/20/2026 3:04:05 PM");
    EXPECT_EQ(DateTimeText({2026, 1, 2, 9, 0, 59}), "1/2/2026 9:00:59 AM");
}

TEST(DateTimeText, Midnight_and_noon_are_twelve) {
    EXPECT_EQ(DateTimeText({2026, 11, 20, 0, 0, 0}), "11/20/2026 12:00:00 AM");
    EXPECT_EQ(DateTimeText({2026, 11, 20, 0, 59, 59}), "11/20/2026 12:59:59 AM");
    EXPECT_EQ(DateTimeText({2026, 11, 20, 12, 0, 0}), "11/20/2026 12:00:00 PM");
    EXPECT_EQ(DateTimeText({2026, 11, 20, 11, 59, 59}), "11/20/2026 11:59:59 AM");
    EXPECT_EQ(DateTimeText({2026, 11, 20, 13, 0, 0}), "11/20/2026 1:00:00 PM");
    EXPECT_EQ(DateTimeText({2026, 12, 31, 23, 59, 59}), "12/31/2026 11:59:59 PM");
}

TEST(DateTimeText, Years_have_four_digits) {
    EXPECT_EQ(DateTimeText({987, 1, 1, 1, 1, 1}), "1/1/0987 1:01:01 AM");
}

TEST(SystemClock, Tells_the_local_time_of_the_machine) {
    const std::time_t before = std::time(nullptr);
    const DateTime now = SystemClock().Now();
    std::tm parts{};
    parts.tm_year = now.Year - 1900;
    parts.tm_mon = now.Month - 1;
    parts.tm_mday = now.Day;
    parts.tm_hour = now.Hour;
    parts.tm_min = now.Minute;
    parts.tm_sec = now.Second;
    parts.tm_isdst = -1;
    const std::time_t told = std::mktime(&parts);
    EXPECT_GE(told, before);
    EXPECT_LE(told, std::time(nullptr));
}

TEST(SystemClock, Seconds_since_midnight_agree_with_the_time_of_day) {
    const SystemClock clock;
    // Around a change of second or midnight the two may be read on different sides: one of three tries is clean.
    for (int attempt = 0; attempt < 3; ++attempt) {
        const DateTime now = clock.Now();
        const float seconds = clock.SecondsSinceMidnight();
        const float whole = static_cast<float>(now.Hour * 3600 + now.Minute * 60 + now.Second);
        if (seconds >= whole && seconds <= whole + 1.01F) return;
    }
    FAIL() << "the two clocks disagree";
}

}  // namespace wxl::platform
