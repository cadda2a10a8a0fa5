#include "adapters/gdal/gdal_support.h"
#include "adapters/gdal/projection.h"

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

double area_factor(const std::string& crs, const Point& where) {
    const auto stretch = mercator_stretch(ReferenceFromText(crs), where);
    return stretch ? stretch->AreaFactor : 0.0;
}

// Places at 12.5 degrees east and 60 degrees north, where the cosine of the latitude is one half. On the sphere they
// lie R x ln(tan 75 degrees) = 8399737.89 m north of the equator, on the ellipsoid 8362698.55 m.
TEST(Projection, Mercator_projections_of_the_world_stretch_areas) {
    for (const char* crs : {"EPSG:3857", "EPSG:900913", "ESRI:102100", "ESRI:102113"})
        EXPECT_NEAR(area_factor(crs, {1391493.63, 8399737.89}), 4.0, 0.05) << crs;
    EXPECT_NEAR(area_factor("EPSG:3395", {1391493.63, 8362698.55}), 4.0, 0.05);
    EXPECT_NEAR(area_factor("EPSG:3857", {0.0, 0.0}), 1.0, 1e-9);
    const auto stretch = mercator_stretch(ReferenceFromText("EPSG:3857"), {1391493.63, -8399737.89});
    ASSERT_TRUE(stretch);
    EXPECT_NEAR(stretch->Degrees.X, 12.5, 1e-6);
    EXPECT_NEAR(stretch->Degrees.Y, -60.0, 1e-6);
}

// With the standard parallel 60 all is a half as long: true at 60 degrees, areas a quarter at the equator.
TEST(Projection, Mercator_is_true_at_its_standard_parallel) {
    const std::string crs = "+proj=merc +lat_ts=60 +R=6378137 +units=m";
    EXPECT_NEAR(area_factor(crs, {0.0, 8399737.89 / 2.0}), 1.0, 1e-6);
    EXPECT_NEAR(area_factor(crs, {0.0, 0.0}), 0.25, 1e-9);
}

TEST(Projection, Other_projections_are_no_mercator_of_the_world) {
    for (const char* crs : {"EPSG:32633", "EPSG:3035", "EPSG:4326", "EPSG:3168", "EPSG:2056", "EPSG:28992"})
        EXPECT_FALSE(mercator_stretch(ReferenceFromText(crs), {12.0, 50.0})) << crs;
    EXPECT_FALSE(mercator_stretch({}, {12.0, 50.0}));
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
