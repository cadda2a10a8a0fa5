#include "pictures/heat_map_picture.h"

#include <gtest/gtest.h>

namespace wxl::pictures {
namespace {

bool holds(const std::string& svg, const std::string& part) {
    return svg.find(part) != std::string::npos;
}

TEST(HeatMapSvg, The_greater_a_value_the_darker_its_cell) {
    const std::string svg = HeatMapSvg({"BA", {"a<", "b"}, {1.0, 0.25, std::nullopt, 3.0}, 1.0});
    EXPECT_TRUE(holds(svg, "fill-opacity=\"0.25\""));
    EXPECT_TRUE(holds(svg, "<title>a&lt;, b: 0.25</title>"));
    EXPECT_TRUE(holds(svg, "<title>b, b: 3</title>"));
    EXPECT_TRUE(holds(svg, "<path class=\"none\""));  // the pair without a value
    EXPECT_TRUE(holds(svg, ">a&lt;</text>"));
    EXPECT_FALSE(holds(svg, "fill-opacity=\"3\""));
}

TEST(HeatMapSvg, Of_many_animals_has_neither_values_nor_names) {
    HeatMapPicture picture{"BA", {}, {}, 1.0};
    picture.Names.assign(61, "wolf");
    picture.Values.assign(61 * 61, 0.5);
    const std::string svg = HeatMapSvg(picture);
    EXPECT_FALSE(holds(svg, ">wolf</text>"));
    EXPECT_FALSE(holds(svg, ">0.5</text>"));
    EXPECT_TRUE(holds(svg, "<title>wolf, wolf: 0.5</title>"));
}

TEST(HeatMapSvg, Of_nobody_is_a_picture) {
    EXPECT_TRUE(holds(HeatMapSvg({"BA", {}, {}, 1.0}), "</svg>"));
}

}  // namespace
}  // namespace wxl::pictures
