#include "platform/clock.h"

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

}  // namespace wxl::platform
