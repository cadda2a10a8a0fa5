#include "pictures/area_curve_picture.h"

#include <gtest/gtest.h>

namespace wxl::pictures {
namespace {

AreaCurvePicture level_curve() {
    AreaCurvePicture picture;
    picture.Title = "a & b";
    picture.Of = "Minimum convex polygon, 100 %";
    picture.Points = {{5, 50.0, 40.0, 60.0}, {10, 100.0, 90.0, 110.0}, {20, 100.0, 100.0, 100.0}};
    picture.LevelsAt = 10;
    picture.Reached = true;
    return picture;
}

bool holds(const std::string& svg, const std::string& part) {
    return svg.find(part) != std::string::npos;
}

// The plot is 526 wide from x = 92 and 250 high down to y = 306; its scales end at 20 fixes and 116.6 square units.
TEST(AreaCurveSvg, Draws_curve_band_and_asymptote) {
    const std::string svg = AreaCurveSvg(level_curve());
    EXPECT_TRUE(holds(svg, "a &amp; b: area against fixes"));
    EXPECT_TRUE(holds(svg, "M223.5 198.8L355 91.59L618 91.59"));  // 50, 100, 100
    EXPECT_TRUE(holds(svg, "M223.5 177.36L355 70.15L618 91.59L618 91.59L355 113.03L223.5 220.24Z"));
    EXPECT_TRUE(holds(svg, "M355 56V306"));  // 10 fixes
    EXPECT_TRUE(holds(svg, "From 10 fixes on, every area lies within 5 % of the last."));
}

TEST(AreaCurveSvg, Says_when_there_is_no_asymptote) {
    AreaCurvePicture picture = level_curve();
    picture.Reached = false;
    EXPECT_FALSE(holds(AreaCurveSvg(picture), "M355 56V306"));
    EXPECT_EQ(AsymptoteText(picture), "No asymptote: the area still changes by more than 5 % near the end.");
}

TEST(AreaCurveSvg, A_missing_area_interrupts_the_curve) {
    AreaCurvePicture picture = level_curve();
    picture.Points[1] = {10, std::nullopt, std::nullopt, std::nullopt};
    EXPECT_TRUE(holds(AreaCurveSvg(picture), "M618"));
}

TEST(AreaCurveSvg, Without_an_area_it_says_so) {
    EXPECT_TRUE(holds(AreaCurveSvg({}), "There is no area to show."));
    AreaCurvePicture flat = level_curve();
    for (AreaCurvePoint& point : flat.Points) point = {point.Fixes, 0.0, std::nullopt, std::nullopt};
    flat.LevelsAt.reset();
    EXPECT_TRUE(holds(AreaCurveSvg(flat), "There is no area to show."));
    EXPECT_TRUE(holds(AreaCurveSvg(flat), "There is no area to level off at."));
}

}  // namespace
}  // namespace wxl::pictures
