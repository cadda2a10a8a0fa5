#include "adapters/files/gdal_support.h"
#include "adapters/files/projection.h"

#include <gtest/gtest.h>
#include <limits>
#include <vector>

namespace wxl::files {
namespace {

using platform::Point;

std::string zone_code(double longitude, double latitude) {
    const auto zone = utm_zone_of({longitude, latitude});
    return zone ? zone->Code() : "none";
}

TEST(Projection, Utm_zone_of_a_position) {
    EXPECT_EQ(zone_code(6.58, 53.0), "EPSG:32632");
    EXPECT_EQ(zone_code(12.5, 55.6), "EPSG:32633");
    EXPECT_EQ(zone_code(-112.0, 38.3), "EPSG:32612");
    EXPECT_EQ(zone_code(149.1, -35.3), "EPSG:32755");
    EXPECT_EQ(zone_code(0.0, 0.0), "EPSG:32631");
    EXPECT_EQ(zone_code(-180.0, 10.0), "EPSG:32601");
    EXPECT_EQ(zone_code(180.0, 10.0), "EPSG:32601");
    EXPECT_EQ(zone_code(179.999, 10.0), "EPSG:32660");
    EXPECT_EQ(zone_code(359.0, 10.0), "EPSG:32630");
}

TEST(Projection, There_are_no_zones_near_the_poles_or_nowhere) {
    EXPECT_EQ(zone_code(10.0, 84.0), "EPSG:32632");
    EXPECT_EQ(zone_code(10.0, 84.01), "none");
    EXPECT_EQ(zone_code(10.0, -80.01), "none");
    EXPECT_EQ(zone_code(std::numeric_limits<double>::quiet_NaN(), 10.0), "none");
    EXPECT_EQ(zone_code(10.0, std::numeric_limits<double>::quiet_NaN()), "none");
}

TEST(Projection, Name_and_middle_of_a_zone) {
    EXPECT_EQ((UtmZone{32, false}.Name()), "32N");
    EXPECT_EQ((UtmZone{55, true}.Name()), "55S");
    EXPECT_EQ((UtmZone{32, false}.MiddleDegrees()), 9.0);
    EXPECT_EQ((UtmZone{1, false}.MiddleDegrees()), -177.0);
}

TEST(Projection, Median_position_is_no_mean) {
    const std::vector<Point> odd{{10, 50}, {11, 52}, {90, 10}};
    EXPECT_EQ(median_position(odd), (Point{11, 50}));
    const std::vector<Point> even{{10, 50}, {11, 52}, {12, 53}, {90, 10}};
    EXPECT_EQ(median_position(even), (Point{11.5, 51}));
}

TEST(Projection, Median_position_of_fixes_around_the_180th_meridian) {
    const std::vector<Point> fixes{{179, 0}, {-179, 0}, {178, 0}, {-178.5, 0}, {-179.5, 0}};
    EXPECT_EQ(median_position(fixes), (Point{-179.5, 0}));
}

// The central meridian of zone 33 lies at x = 500000 exactly; on the equator 1 degree of latitude further north is
// 110,574.4 m x 0.9996 of meridian.
TEST(Projection, Points_are_projected_x_before_y) {
    std::vector<Point> points(10000, Point{15.0, 0.0});
    points[9999] = {15.0, 1.0};
    ASSERT_FALSE(project(points, ReferenceFromText("EPSG:4326"), ReferenceFromText("EPSG:32633")));
    EXPECT_NEAR(points[0].X, 500000.0, 1e-6);
    EXPECT_NEAR(points[0].Y, 0.0, 1e-6);
    EXPECT_NEAR(points[9999].X, 500000.0, 1e-6);
    EXPECT_NEAR(points[9999].Y, 110574.4 * 0.9996, 0.5);
}

TEST(Projection, First_point_that_cannot_be_projected_is_told) {
    std::vector<Point> points{{15.0, 0.0}, {15.0, 1.0}, {std::numeric_limits<double>::infinity(), 0.0}};
    EXPECT_EQ(project(points, ReferenceFromText("EPSG:4326"), ReferenceFromText("EPSG:32633")), 2U);
}

}  // namespace
}  // namespace wxl::files
