#include "tracking_times/sun.h"
#include "tracking_times/timestamps.h"

#include <gtest/gtest.h>
#include <string_view>

namespace wxl::tracking_times {
namespace {

double elevation_at(double longitude, double latitude, std::string_view time) {
    return sun_elevation(longitude, latitude, seconds_from_timestamp(time).value());
}

// By an independent computation of the same equations.
TEST(Sun, Elevation_at_10_east_50_north) {
    EXPECT_NEAR(elevation_at(10, 50, "2024-06-21 12:00"), 62.4150, 0.00006);
    EXPECT_NEAR(elevation_at(10, 50, "2024-12-21 15:50"), -4.7508, 0.00006);
    EXPECT_NEAR(elevation_at(10, 50, "2024-12-21 16:10"), -7.5431, 0.00006);
}

// At the equinox the sun stands over the equator: at noon (its own, some 7 minutes after that of the clock on
// 2024-03-20) it is at 90 degrees less the latitude, half a day later as far below.
TEST(Sun, Equinox) {
    EXPECT_NEAR(elevation_at(0, 0, "2024-03-20 12:07:25"), 90.0, 0.4);
    EXPECT_NEAR(elevation_at(0, 60, "2024-03-20 12:07:25"), 30.0, 0.4);
    EXPECT_NEAR(elevation_at(0, 60, "2024-03-20 00:07:25"), -30.0, 0.4);
}

TEST(Sun, Polar_day_and_night) {
    for (const char* time : {"2024-06-21 00:00", "2024-06-21 06:00", "2024-06-21 12:00", "2024-06-21 18:00"}) {
        EXPECT_NEAR(elevation_at(20, 90, time), 23.44, 0.01) << time;
        EXPECT_NEAR(elevation_at(20, -90, time), -23.44, 0.01) << time;
    }
}

TEST(Sun, Longitudes_are_equal_around_the_globe_and_times_may_lie_before_1970) {
    EXPECT_NEAR(elevation_at(190, 50, "2024-06-21 22:00"), elevation_at(-170, 50, "2024-06-21 22:00"), 1e-9);
    EXPECT_GT(elevation_at(0, 50, "1950-06-21 12:00"), 60.0);
    EXPECT_LT(elevation_at(0, 50, "1950-06-21 00:00"), -15.0);
}

}  // namespace
}  // namespace wxl::tracking_times
