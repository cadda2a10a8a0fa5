#include "adapters/gdal/gdal_support.h"
#include "adapters/tracking/target_projection.h"

#include <gtest/gtest.h>

namespace wxl::tracking {
namespace {

std::vector<TrackingFix> fixes_at(const std::vector<platform::Point>& places) {
    std::vector<TrackingFix> fixes;
    for (const platform::Point& place : places) {
        fixes.emplace_back();
        fixes.back().X = place.X;
        fixes.back().Y = place.Y;
    }
    return fixes;
}

std::string best(const std::vector<platform::Point>& places) {
    return best_projection(fixes_at(places)).Code;
}

// The middle of zone 32 is 9 E: fixes to 13.5 E are within a zone and a half.
TEST(TargetProjection, Utm_zone_holds_fixes_within_a_zone_and_a_half) {
    EXPECT_EQ(best({{9, 50}, {9, 50}, {13.5, 50}}), "EPSG:32632");
    EXPECT_EQ(best({{9, 50}, {9, 50}, {13.6, 50}}), "equal-area");
    EXPECT_EQ(best({{179.9, -40}, {179.9, -40}, {-178.6, -40}}), "EPSG:32760");
    EXPECT_EQ(best({{20, 85}}), "equal-area");
    EXPECT_EQ(best({{9, 83.9}, {9, 83.9}, {9, 84.1}}), "equal-area");
}

TEST(TargetProjection, Equal_area_is_centred_on_the_fixes_also_over_180_degrees_and_the_pole) {
    EXPECT_EQ(equal_area_of(fixes_at({{170, 10}, {-170, 10}})).Reference.Name,
              "Lambert azimuthal equal-area, centre 10.2 N 180.0 E");
    EXPECT_EQ(equal_area_of(fixes_at({{0, 80}, {90, 80}, {180, 80}, {-90, 80}})).Reference.Name.substr(0, 43),
              "Lambert azimuthal equal-area, centre 90.0 N");
}

TEST(TargetProjection, Nothing_tears_at_180_degrees) {
    auto fixes = fixes_at({{179.9, 52}, {-179.9, 52}});
    const auto system = equal_area_of(fixes);
    ASSERT_FALSE(project_fixes(fixes, files::ReferenceFromText("EPSG:4326"), system.Reference));
    // 0.2 degrees of longitude at 52 N: 111,320 m x cos 52 x 0.2.
    EXPECT_NEAR(std::abs(fixes[0].X - fixes[1].X), 13728.0, 50.0);
}

// 4.5 degrees beside the middle of a zone on the equator: 0.9996 x (1 + a^2/2) along the meridian, a = 4.5 degrees in
// radians (Snyder 1987, eq. 8-11), that is 1.0027.
TEST(TargetProjection, Distortion_of_utm) {
    const auto utm = files::ReferenceFromText("EPSG:32632");
    auto fixes = fixes_at({{9, 0}, {13.5, 0}});
    project_fixes(fixes, files::ReferenceFromText("EPSG:4326"), utm);
    EXPECT_NEAR(largest_distortion(fixes, utm)->Length, 0.0027, 0.0001);
}

TEST(TargetProjection, Equal_area_keeps_areas_and_bends_distances) {
    auto fixes = fixes_at({{-30, 50}, {30, 50}, {0, 20}, {0, 70}});
    const auto system = equal_area_of(fixes);
    project_fixes(fixes, files::ReferenceFromText("EPSG:4326"), system.Reference);
    const platform::Distortion wrong = largest_distortion(fixes, system.Reference).value();
    EXPECT_LT(wrong.Area, 1e-5);
    EXPECT_GT(wrong.Length, 0.01);
}

}  // namespace
}  // namespace wxl::tracking
