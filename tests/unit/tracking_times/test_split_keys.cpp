#include "tracking_times/split_keys.h"
#include "tracking_times/timestamps.h"

#include <gtest/gtest.h>

namespace wxl::tracking_times {
namespace {

std::string key_text(const SplitRule& rule, std::string_view time, double longitude = 0.0, double latitude = 0.0) {
    return split_key_text(rule, split_key(rule, seconds_from_timestamp(time).value(), longitude, latitude));
}

TEST(SplitKeys, Calendar) {
    EXPECT_EQ(key_text({SplitBy::kYear}, "2024-01-31 23:59:59"), "2024");
    EXPECT_EQ(key_text({SplitBy::kMonth}, "2024-01-31"), "01");
    EXPECT_EQ(key_text({SplitBy::kMonth}, "2024-12-31"), "12");
    EXPECT_EQ(key_text({SplitBy::kYearMonth}, "2024-01-31"), "2024-01");
    EXPECT_EQ(key_text({SplitBy::kYearMonth}, "2024-12-31"), "2024-12");
}

TEST(SplitKeys, Seasons_begin_in_december_march_june_and_september) {
    for (const char* time : {"2023-12-01", "2024-01-15", "2024-02-29"})
        EXPECT_EQ(key_text({SplitBy::kSeason}, time), "winter");
    for (const char* time : {"2024-03-01", "2024-05-31 23:59:59"})
        EXPECT_EQ(key_text({SplitBy::kSeason}, time), "spring");
    for (const char* time : {"2024-06-01", "2024-08-31"}) EXPECT_EQ(key_text({SplitBy::kSeason}, time), "summer");
    for (const char* time : {"2024-09-01", "2024-11-30"}) EXPECT_EQ(key_text({SplitBy::kSeason}, time), "autumn");
}

TEST(SplitKeys, December_counts_to_the_winter_of_the_next_year) {
    EXPECT_EQ(key_text({SplitBy::kYearSeason}, "2023-12-05"), "2024-winter");
    EXPECT_EQ(key_text({SplitBy::kYearSeason}, "2024-01-05"), "2024-winter");
    EXPECT_EQ(key_text({SplitBy::kYearSeason}, "2024-11-30"), "2024-autumn");
}

TEST(SplitKeys, Southern_seasons) {
    const SplitRule south{SplitBy::kYearSeason, 0, true};
    EXPECT_EQ(key_text(south, "2023-12-05"), "2024-summer");
    EXPECT_EQ(key_text(south, "2024-03-05"), "2024-autumn");
    EXPECT_EQ(key_text(south, "2024-06-05"), "2024-winter");
    EXPECT_EQ(key_text(south, "2024-09-05"), "2024-spring");
}

TEST(SplitKeys, Calendar_follows_the_offset) {
    EXPECT_EQ(key_text({SplitBy::kYear, 3600}, "2023-12-31 23:30"), "2024");
    EXPECT_EQ(key_text({SplitBy::kYear, -3600}, "2024-01-01 00:30"), "2023");
}

TEST(SplitKeys, Keys_ascend_as_they_are_listed) {
    const SplitRule months{SplitBy::kYearMonth};
    const SplitRule seasons{SplitBy::kYearSeason};
    const auto key = [](const SplitRule& rule, std::string_view time) {
        return split_key(rule, seconds_from_timestamp(time).value(), 0, 0);
    };
    EXPECT_EQ(key(months, "2024-01-01"), key(months, "2023-12-01") + 1);
    EXPECT_EQ(key(seasons, "2024-03-01"), key(seasons, "2023-12-01") + 1);
    EXPECT_EQ(key({SplitBy::kSeason}, "2024-12-01"), 0);
}

// Elevations -4.7508 and -7.5431 degrees.
TEST(SplitKeys, Day_ends_with_civil_twilight_at_the_place_of_the_fix) {
    EXPECT_EQ(key_text({SplitBy::kDayNight}, "2024-12-21 15:50", 10, 50), "day");
    EXPECT_EQ(key_text({SplitBy::kDayNight}, "2024-12-21 16:10", 10, 50), "night");
    EXPECT_EQ(key_text({SplitBy::kDayNight, 0, false, -0.833}, "2024-12-21 15:50", 10, 50), "night");
    EXPECT_EQ(key_text({SplitBy::kDayNight}, "2024-12-21 16:10", -80, 50), "day");
    EXPECT_EQ(split_key({SplitBy::kDayNight}, 1703001600, -80, 50), 0);
}

TEST(SplitKeys, Names_of_rules) {
    EXPECT_EQ(split_by_from("Year-Season"), SplitBy::kYearSeason);
    EXPECT_EQ(split_by_from("day-night"), SplitBy::kDayNight);
    EXPECT_EQ(split_by_from("sex"), std::nullopt);
}

}  // namespace
}  // namespace wxl::tracking_times
