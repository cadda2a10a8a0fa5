#include "adapters/gdal/distortions.h"
#include "adapters/gdal/gdal_support.h"

#include <algorithm>
#include <gtest/gtest.h>
#include <optional>
#include <span>
#include <vector>

namespace wxl::files {
namespace {

using platform::Distortion;
using platform::Point;

// UTM on its middle: the scale is 0.9996 in all directions.
TEST(Distortions, Utm_on_its_middle) {
    const std::vector<Point> fixes = {{500000.0, 5500000.0}};
    const auto wrong = Distortions().Largest(fixes, ReferenceFromText("EPSG:32632"));
    ASSERT_TRUE(wrong);
    EXPECT_NEAR(wrong->Length, 0.0004, 1e-6);
    EXPECT_NEAR(wrong->Area, 0.0008, 2e-6);
}

// Web Mercator at 60 degrees: lengths by 1 / cos 60 = 2.
TEST(Distortions, Web_mercator_and_another_system_after_it) {
    Distortions distortions;
    const auto wrong = distortions.Largest(std::vector<Point>{{0.0, 8399737.89}}, ReferenceFromText("EPSG:3857"));
    ASSERT_TRUE(wrong);
    EXPECT_NEAR(wrong->Length, 1.0, 0.01);
    EXPECT_NEAR(wrong->Area, 3.0, 0.03);
    const auto utm = distortions.Largest(std::vector<Point>{{500000.0, 5500000.0}}, ReferenceFromText("EPSG:32632"));
    EXPECT_NEAR(utm.value().Length, 0.0004, 1e-6);
}

TEST(Distortions, Nothing_is_told_of_degrees_unknown_systems_and_no_fixes) {
    const std::vector<Point> fixes = {{10.0, 50.0}};
    EXPECT_EQ(Distortions().Largest(fixes, ReferenceFromText("EPSG:4326")), std::nullopt);
    EXPECT_EQ(Distortions().Largest(fixes, {}), std::nullopt);
    EXPECT_EQ(Distortions().Largest({}, ReferenceFromText("EPSG:32632")), std::nullopt);
}

TEST(Distortions, The_outermost_of_many_places_are_told) {
    std::vector<Point> places(1000, Point{0.0, 0.0});
    places[777] = {5.0, 0.0};
    places[778] = {0.0, -5.0};
    const std::vector<Point> told = told_places(std::span<const Point>(places));
    EXPECT_EQ(told.size(), 16U + 20U);
    EXPECT_TRUE(std::ranges::count(told, places[777]) > 0 && std::ranges::count(told, places[778]) > 0);
}

}  // namespace
}  // namespace wxl::files
