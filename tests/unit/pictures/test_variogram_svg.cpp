#include "pictures/variogram_picture.h"

#include <gtest/gtest.h>

namespace wxl::pictures {
namespace {

VariogramPicture picture() {
    return {
        "wolf <7>", "OU isotropic", "days", "km²", {{1, 1, 2, 4}, {10, 2, 3, 50}}, {{0, 0, 0, 0}, {10, 2.5, 3, 3.5}}};
}

TEST(VariogramSvg, Shows_fixes_and_model) {
    const std::string svg = VariogramSvg(picture());
    EXPECT_NE(svg.find("<title id=\"variogram-title\">wolf &lt;7&gt;: variogram</title>"), std::string::npos);
    EXPECT_NE(svg.find("Time between fixes (days)"), std::string::npos);
    EXPECT_NE(svg.find("Semivariance (km²)"), std::string::npos);
    EXPECT_NE(svg.find("OU isotropic, with its 95 % limits"), std::string::npos);
    // The last lag is the right end of the scale; 3 of 3.9 up the plot.
    EXPECT_NE(svg.find("L698 146.62\"/>"), std::string::npos) << svg;
}

TEST(VariogramSvg, Says_that_there_is_nothing_to_show) {
    EXPECT_NE(VariogramSvg({}).find("There are no pairs of fixes to show."), std::string::npos);
}

TEST(VariogramSvg, Without_a_model_there_is_no_line_of_one) {
    VariogramPicture alone = picture();
    alone.Model.clear();
    alone.Curve.clear();
    EXPECT_EQ(VariogramSvg(alone).find("limits</text></g>"), VariogramSvg(alone).rfind("limits</text></g>"));
    EXPECT_EQ(VariogramSvg(alone).find("OU"), std::string::npos);
}

}  // namespace
}  // namespace wxl::pictures
