#include "adapters/disk/system_clock.h"

#include <ctime>
#include <gtest/gtest.h>

namespace wxl::files {

TEST(SystemClock, Tells_the_local_time_of_the_machine) {
    const std::time_t before = std::time(nullptr);
    const platform::DateTime now = SystemClock().Now();
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
        const platform::DateTime now = clock.Now();
        const float seconds = clock.SecondsSinceMidnight();
        const float whole = static_cast<float>(now.Hour * 3600 + now.Minute * 60 + now.Second);
        if (seconds >= whole && seconds <= whole + 1.01F) return;
    }
    FAIL() << "the two clocks disagree";
}

TEST(SystemClock, A_wait_lasts_as_long_as_was_asked_for) {
    const SystemClock clock;
    const auto before = clock.Steady();
    clock.Wait(std::chrono::milliseconds(3));
    EXPECT_GE(clock.Steady() - before, std::chrono::milliseconds(3));
}

}  // namespace wxl::files
