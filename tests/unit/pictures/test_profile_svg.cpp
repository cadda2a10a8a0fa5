#include "pictures/profile_picture.h"

#include <cmath>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <limits>

namespace wxl::pictures {
namespace {

using testing::HasSubstr;
using testing::Not;

constexpr double kInfinity = std::numeric_limits<double>::infinity();

/// A search over h = 0 to 10 whose scores 100, 0, 10, 20 ... begin far above the rest.
ProfilePicture steep_picture() {
    ProfilePicture picture;
    picture.Title = "Alfa";
    picture.Method = "LSCV";
    picture.Units = "metre";
    picture.Minimised = true;
    picture.Href = 5.0;
    picture.Bandwidth = 2.5;
    SetCurve(picture, {{0.0, 100.0}, {2.5, 0.0}, {5.0, 5.0}, {7.5, 8.0}, {10.0, 10.0}, {0.0, 0.0}, {0.0, 0.0}});
    return picture;
}

ProfilePicture flat_picture() {
    ProfilePicture picture = steep_picture();
    picture.Minimised = false;
    SetCurve(picture, {{1.0, 0.0}, {2.0, 0.0}, {3.0, 0.0}});
    return picture;
}

std::string path_of_the_curve(const std::string& svg) {
    const std::size_t curve = svg.find("class=\"curve\"");
    const std::size_t path = svg.find(" d=\"", curve) + 4;
    return svg.substr(path, svg.find('"', path) - path);
}

TEST(ProfilePicture, Rows_not_reached_are_left_out) {
    const ProfilePicture picture = steep_picture();
    EXPECT_EQ(picture.Curve.size(), 5U);
    EXPECT_EQ(picture.Minimum, (engine::ProfileRow{2.5, 0.0}));
}

TEST(ProfilePicture, First_of_equal_scores_is_the_minimum) {
    EXPECT_EQ(flat_picture().Minimum, (engine::ProfileRow{1.0, 0.0}));
}

TEST(ProfilePicture, Scores_that_are_no_numbers_are_no_minimum) {
    ProfilePicture picture;
    SetCurve(picture, {{1.0, -kInfinity}, {2.0, std::nan("")}, {3.0, 7.0}, {4.0, kInfinity}});
    EXPECT_EQ(picture.Minimum, (engine::ProfileRow{3.0, 7.0}));
    EXPECT_EQ(ShownScores(picture), (ScoreRange{7.0, 7.0, false}));
    SetCurve(picture, {{1.0, kInfinity}});
    EXPECT_EQ(picture.Minimum, std::nullopt);
    EXPECT_EQ(ShownScores(picture), std::nullopt);
}

TEST(ProfilePicture, High_first_scores_leave_the_picture_of_a_minimised_search) {
    // Three times the last score's height of 10 above the minimum 0.
    EXPECT_EQ(ShownScores(steep_picture()), (ScoreRange{0.0, 30.0, true}));
    ProfilePicture notMinimised = steep_picture();
    notMinimised.Minimised = false;
    EXPECT_EQ(ShownScores(notMinimised), (ScoreRange{0.0, 100.0, false}));
    ProfilePicture low = steep_picture();
    SetCurve(low, {{0.0, 29.0}, {2.5, 0.0}, {10.0, 10.0}});
    EXPECT_EQ(ShownScores(low), (ScoreRange{0.0, 29.0, false}));
}

TEST(ProfileSvg, Speaks_to_screen_readers) {
    const std::string svg = ProfileSvg(steep_picture(), {.IdPrefix = "a1"});
    EXPECT_THAT(svg, HasSubstr("role=\"img\" aria-labelledby=\"a1-title a1-desc\""));
    EXPECT_THAT(svg, HasSubstr("<title id=\"a1-title\">Alfa: LSCV profile</title>"));
    EXPECT_THAT(svg,
                HasSubstr("<desc id=\"a1-desc\">LSCV scores of 5 bandwidths from 0 metre to 10 metre. The smallest "
                          "score is at 2.5 metre. HREF is 5 metre. The bandwidth in use is 2.5 metre.</desc>"));
}

TEST(ProfileSvg, Search_without_a_minimum_says_so) {
    EXPECT_THAT(ProfileSvg(flat_picture()),
                HasSubstr("The smallest score is at 1 metre; the search ended without a minimum inside its range."));
    EXPECT_THAT(ProfileSvg(flat_picture()), HasSubstr(">The search ended without a minimum inside its range.</text>"));
}

// 640 wide: the plot is 534 wide from x = 84 and 250 high down to y = 328. Bandwidths -0.2 to 10.2 (2 % more at both
// ends) and scores -1.5 (5 % more below) to 30, where the picture is cut; 100 lies 3.222 plot heights up.
TEST(ProfileSvg, Curve_is_drawn_to_scale) {
    EXPECT_EQ(path_of_the_curve(ProfileSvg(steep_picture())),
              "M94.27 -477.56L222.63 316.1L351 276.41L479.37 252.6L607.73 236.73");
    EXPECT_THAT(ProfileSvg(steep_picture()), HasSubstr("cx=\"222.63\" cy=\"316.1\" r=\"5\""));
    EXPECT_THAT(ProfileSvg(steep_picture()), HasSubstr("Scores above 30 lie outside the picture."));
}

TEST(ProfileSvg, Marks_are_named_with_their_bandwidths) {
    const std::string svg = ProfileSvg(steep_picture());
    EXPECT_THAT(svg, HasSubstr(">Minimum 2.5</text>"));
    EXPECT_THAT(svg, HasSubstr(">HREF 5</text>"));
    EXPECT_THAT(svg, HasSubstr(">In use 2.5</text>"));
    EXPECT_THAT(svg, HasSubstr(">Bandwidth h (metre)</text>"));
    EXPECT_THAT(svg, HasSubstr(">LSCV score</text>"));
    ProfilePicture bare = steep_picture();
    bare.Href.reset();
    bare.Bandwidth.reset();
    bare.Units.clear();
    EXPECT_THAT(ProfileSvg(bare), Not(HasSubstr("HREF")));
    EXPECT_THAT(ProfileSvg(bare), Not(HasSubstr("In use")));
    EXPECT_THAT(ProfileSvg(bare), HasSubstr(">Bandwidth h</text>"));
}

TEST(ProfileSvg, Bandwidth_in_use_beyond_the_search_widens_the_scale) {
    ProfilePicture picture = steep_picture();
    picture.Bandwidth = 20.0;
    // -0.4 to 20.4: 20 lies at 84 + 534 x 20.4 / 20.8.
    EXPECT_THAT(ProfileSvg(picture),
                HasSubstr("class=\"used\" stroke=\"#b3261e\" stroke-width=\"4\" d=\"M607.73 78V328\""));
}

TEST(ProfileSvg, Small_scores_share_a_power_of_ten) {
    ProfilePicture picture = steep_picture();
    picture.Minimised = false;
    SetCurve(picture, {{1.0, -4e-6}, {2.0, -1e-6}});
    EXPECT_THAT(ProfileSvg(picture), HasSubstr(">LSCV score (× 10⁻⁶)</text>"));
}

TEST(ProfileSvg, Hostile_texts_stay_text) {
    ProfilePicture picture = steep_picture();
    picture.Title = "</title><script>alert(1)</script>\x01\xFF";
    picture.Units = "\"><b>";
    const std::string svg = ProfileSvg(picture, {.IdPrefix = "x\" onload=\"alert(1)"});
    EXPECT_THAT(svg, Not(HasSubstr("<script")));
    EXPECT_THAT(svg, Not(HasSubstr("<b>")));
    EXPECT_THAT(svg,
                HasSubstr("&lt;/title&gt;&lt;script&gt;alert(1)&lt;/script&gt;\uFFFD\uFFFD: LSCV profile</title>"));
    EXPECT_THAT(svg, HasSubstr("aria-labelledby=\"xonloadalert1-title xonloadalert1-desc\""));
}

TEST(ProfileSvg, Long_title_is_shortened_on_the_picture_only) {
    ProfilePicture picture = steep_picture();
    picture.Title = std::string(100, 'w');
    const std::string svg = ProfileSvg(picture);
    EXPECT_THAT(svg, HasSubstr(">" + std::string(100, 'w') + ": LSCV profile</title>"));
    EXPECT_THAT(svg, HasSubstr(">" + std::string(55, 'w') + "…</text>"));
}

TEST(ProfileSvg, Picture_without_scores_says_so) {
    ProfilePicture picture;
    picture.Method = "BCV";
    for (const engine::SearchProfile& profile :
         {engine::SearchProfile{}, engine::SearchProfile{{0.0, 0.0}}, engine::SearchProfile{{1.0, kInfinity}}}) {
        SetCurve(picture, profile);
        const std::string svg = ProfileSvg(picture);
        EXPECT_THAT(svg, HasSubstr(">There are no scores to show.</text>"));
        EXPECT_THAT(svg, HasSubstr(">BCV profile</title>"));
        EXPECT_THAT(svg, Not(HasSubstr("class=\"curve\"")));
    }
}

TEST(ProfileSvg, Single_score_is_a_dot) {
    ProfilePicture picture;
    picture.Method = "LSCV";
    SetCurve(picture, {{5.0, -2.0}});
    // Both ranges are widened around their value, which lies in the middle.
    EXPECT_EQ(path_of_the_curve(ProfileSvg(picture)), "M351 203");
}

TEST(ProfileSvg, Score_that_is_no_number_interrupts_the_curve) {
    ProfilePicture picture;
    picture.Method = "LSCV";
    SetCurve(picture, {{0.0, 1.0}, {1.0, kInfinity}, {2.0, 1.0}, {3.0, 1.0}});
    EXPECT_EQ(path_of_the_curve(ProfileSvg(picture)), "M94.27 203M436.58 203L607.73 203");
}

TEST(ProfileSvg, Extreme_scores_give_finite_coordinates) {
    const double huge = std::numeric_limits<double>::max();
    ProfilePicture picture = steep_picture();
    SetCurve(picture, {{1e-300, huge}, {1.0, -huge}, {huge, 0.0}});
    const std::string svg = ProfileSvg(picture);
    EXPECT_THAT(svg, Not(HasSubstr("nan")));
    EXPECT_THAT(svg, Not(HasSubstr("inf")));
}

TEST(ProfileSvg, Follows_the_colours_of_a_page) {
    const std::string svg = ProfileSvg(steep_picture());
    for (const char* variable : {"--wxl-paper", "--wxl-ink", "--wxl-faint", "--wxl-curve", "--wxl-href", "--wxl-used"})
        EXPECT_THAT(svg, HasSubstr(std::string("var(") + variable + ",#"));
    EXPECT_THAT(svg, HasSubstr("@media (prefers-color-scheme:dark)"));
}

}  // namespace
}  // namespace wxl::pictures
