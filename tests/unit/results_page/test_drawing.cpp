// What the maps of a page are made of.

#include "adapters/memory/memory_rasters.h"
#include "adapters/raster/png_encoder.h"
#include "platform/runtime_error.h"
#include "results_page/colour_ramp.h"
#include "results_page/density_picture.h"
#include "results_page/fix_dots.h"
#include "results_page/isopleth_paths.h"
#include "results_page/map_svg.h"
#include "results_page/raster_window.h"

#include <algorithm>
#include <gtest/gtest.h>
#include <vector>

namespace wxl::results_page {
namespace {

using platform::Point;

std::shared_ptr<platform::IRasterDataset> raster(std::int32_t columns, std::int32_t rows,
                                                 const std::vector<float>& cells) {
    return memory::MakeRaster("r", {100, 200, 10, columns, rows}, cells);
}

double luminance(const platform::Colour& colour) {
    return 0.2126 * colour.Red + 0.7152 * colour.Green + 0.0722 * colour.Blue;
}

TEST(ColourRamp, Known_colours_of_oklch) {
    EXPECT_EQ(from_oklch(1.0, 0.0, 0.0), (platform::Colour{255, 255, 255, 255}));
    EXPECT_EQ(from_oklch(0.0, 0.0, 0.0), (platform::Colour{0, 0, 0, 255}));
    // Pure red, as Ottosson gives it: L 0.627955, C 0.257683, h 29.2339.
    EXPECT_EQ(from_oklch(0.627955, 0.257683, 29.2339), (platform::Colour{255, 0, 0, 255}));
}

TEST(ColourRamp, Runs_from_clear_to_dark_and_opaque) {
    const auto ramp = density_ramp(48);
    ASSERT_EQ(ramp.size(), 48U);
    EXPECT_EQ(ramp.front().Opacity, 0);
    EXPECT_EQ(ramp.back().Opacity, 255);
    for (std::size_t i = 2; i < ramp.size(); ++i) {
        EXPECT_LT(luminance(ramp[i]), luminance(ramp[i - 1])) << i;
        EXPECT_GE(ramp[i].Opacity, ramp[i - 1].Opacity) << i;
    }
}

TEST(RasterWindow, Holds_what_is_above_zero_with_a_rim) {
    // 6 x 5 cells with density in columns 2 to 3 of row 1 and in column 3 of row 2.
    std::vector<float> cells(30, 0.0F);
    cells[8] = 0.5F;
    cells[9] = 2.0F;
    cells[15] = 1.0F;
    const auto whole = raster(6, 5, cells);
    double maximum = -1.0;
    const Window window = occupied_window(*whole->Band(), maximum);
    EXPECT_EQ(window, (Window{1, 0, 4, 4}));
    EXPECT_EQ(maximum, 2.0);
    const auto part = windowed(whole, window);
    // Origin 200, 5 rows of 10: the window's south edge lies one row above it.
    EXPECT_EQ(part->Band()->Geometry(), (platform::RasterGeometry{110, 210, 10, 4, 4}));
    std::vector<float> row(4);
    part->Band()->ReadRow(1, row);
    EXPECT_EQ(row, (std::vector<float>{0.0F, 0.5F, 2.0F, 0.0F}));
}

TEST(RasterWindow, Has_the_rasters_reference_in_its_band_too) {
    const platform::SpatialReference reference{"NAD83 / UTM zone 15N", "PROJCS[]", "metre", 1.0, false};
    const auto whole = memory::MakeRaster("r", {100, 200, 10, 2, 1}, {1.0F, 2.0F}, reference);
    const auto part = windowed(whole, {0, 0, 1, 1});
    EXPECT_EQ(part->Reference(), reference);
    EXPECT_EQ(part->Band()->Reference(), reference);
}

TEST(RasterWindow, Is_the_whole_raster_where_nothing_is) {
    const auto empty = raster(3, 2, std::vector<float>(6, 0.0F));
    double maximum = -1.0;
    EXPECT_EQ(occupied_window(*empty->Band(), maximum), (Window{0, 0, 3, 2}));
    EXPECT_EQ(maximum, 0.0);
}

TEST(DensityPicture, Takes_means_of_blocks_and_reaches_over_the_edge) {
    // 3 x 2 cells in blocks of 2: means (1 + 1 + 1 + 1) / 4 = 1 and (4 + 4) / 2 = 4.
    const auto cells = raster(3, 2, {1, 1, 4, 1, 1, 4});
    const DensityPicture drawn = density_picture(*cells->Band(), 4.0, 2);
    EXPECT_EQ(drawn.Picture.Width, 2);
    EXPECT_EQ(drawn.Picture.Height, 1);
    // Colours 1 to 47 by the square root: sqrt(1/4) of 46 steps is 23.
    EXPECT_EQ(drawn.Picture.Cells, (std::vector<std::uint8_t>{24, 47}));
    EXPECT_EQ(drawn.Bounds, (platform::Extent{100, 200, 140, 220}));
}

TEST(DensityPicture, Zero_is_clear_and_pictures_are_bounded) {
    const DensityPicture empty = density_picture(*raster(2, 1, {0, 0})->Band(), 0.0, 300);
    EXPECT_EQ(empty.Picture.Cells, (std::vector<std::uint8_t>{0, 0}));
    const DensityPicture wide = density_picture(*raster(1000, 10, std::vector<float>(10000, 1.0F))->Band(), 1.0, 300);
    EXPECT_EQ(wide.Picture.Width, 250) << "blocks of 4";
    EXPECT_EQ(wide.Picture.Height, 3);
}

TEST(PngEncoder, Writes_a_png_of_the_size_asked_for) {
    files::PngEncoder encoder;
    const std::string png = encoder.Png({3, 2, {0, 1, 0, 1, 0, 1}, {{0, 0, 0, 0}, {255, 0, 0, 255}}});
    ASSERT_GT(png.size(), 33U);
    EXPECT_EQ(png.substr(0, 8), "\x89PNG\r\n\x1A\n");
    EXPECT_EQ(png.substr(12, 4), "IHDR");
    EXPECT_EQ(png.substr(16, 10), std::string("\0\0\0\3\0\0\0\2\x8\3", 10)) << "3 x 2, 8 bits, palette";
    EXPECT_NE(png.find("tRNS"), std::string::npos) << "colours are clear";
}

TEST(PngEncoder, Refuses_cells_that_do_not_fit) {
    files::PngEncoder encoder;
    EXPECT_THROW(encoder.Png({}), platform::RuntimeError);
    EXPECT_THROW(encoder.Png({2, 2, {0, 0, 0}, {{}}}), platform::RuntimeError);
    EXPECT_THROW(encoder.Png({1, 1, {1}, {{}}}), platform::RuntimeError);
}

TEST(IsoplethPaths, Vertices_within_the_tolerance_are_left_out) {
    const std::vector<Point> line = {{0, 0}, {5, 0.2}, {10, 0}, {10, 5}, {10, 10}};
    EXPECT_EQ(simplified(line, 0.5), (std::vector<Point>{{0, 0}, {10, 0}, {10, 10}}));
    EXPECT_EQ(simplified(line, 0.1).size(), 4U) << "only the vertex on the straight stretch goes";
    EXPECT_EQ(simplified(std::vector<Point>{{1, 1}}, 1).size(), 1U);
}

TEST(IsoplethPaths, A_closed_line_keeps_its_shape) {
    const std::vector<Point> square = {{0, 0}, {0, 5}, {0, 10}, {10, 10}, {10, 0}, {0, 0}};
    EXPECT_EQ(simplified(square, 0.5), (std::vector<Point>{{0, 0}, {0, 10}, {10, 10}, {10, 0}, {0, 0}}));
}

TEST(IsoplethPaths, Paths_are_relative_in_tenths) {
    const std::vector<platform::ContourLine> lines = {{1.0, {{100, 200}, {110, 200}, {110, 195.5}, {100, 200}}},
                                                      {1.0, {{150, 100}, {150.5, 100}}}};
    // Two picture units per map unit, from (10, 20) at x 100, y 200 downward; the second line is smaller than 2 units.
    EXPECT_EQ(svg_path(lines, {10, 20, 100, 200, 2}, 2.0, 1000), "M10 20l20 0 0 9-20-9z");
    EXPECT_EQ(tenth(-0.04), "0");
    EXPECT_EQ(tenth(0.5), ".5");
    EXPECT_EQ(tenth(-12.34), "-12.3");
}

TEST(IsoplethPaths, Too_many_points_are_thinned_out) {
    platform::ContourLine zigzag{1.0, {}};
    for (int i = 0; i < 5000; ++i) zigzag.Vertices.push_back({i * 0.1, i % 2 == 0 ? 0.0 : 1.0});
    const std::string path = svg_path(std::vector{zigzag}, {0, 0, 0, 0, 1}, 0.35, 200);
    EXPECT_LT(path.size(), 2000U);
    EXPECT_TRUE(path.starts_with("M0 0l"));
}

// 0 to 100 on both axes; the plot of 440 x 440 has its origin at 26, 8, and a margin of 3 % around: 106 units wide.
// (50, 50) lies in the middle, at 246 x 228 picture units, 492 x 456 dot units.
TEST(FixDots, One_dot_for_each_place_that_the_map_tells_apart) {
    const MapLayout layout = layout_of({0.0, 0.0, 100.0, 100.0});
    const std::vector<Point> fixes = {{50.0, 50.0}, {50.01, 50.0}, {500.0, 50.0}, {50.0, 50.0}};
    const FixDots dots = fix_dots(fixes, layout, 1500);
    EXPECT_EQ(dots.Path, "M492 456h0");
    EXPECT_EQ(dots.Fixes, 3U) << "one lies beside the map";
    EXPECT_EQ(dots.Places, 1U);
    EXPECT_EQ(dots_text(dots), "Dots: its 3 fixes");
    EXPECT_EQ(fix_dots({}, layout, 10).Path, "");
}

TEST(FixDots, Many_places_are_thinned_at_equal_steps) {
    const MapLayout layout = layout_of({0.0, 0.0, 100.0, 100.0});
    std::vector<Point> fixes;
    for (int i = 0; i < 10; ++i) fixes.push_back({10.0 * i, 50.0});
    const FixDots dots = fix_dots(fixes, layout, 4);
    EXPECT_EQ(dots.Every, 3U);
    EXPECT_EQ(std::ranges::count(dots.Path, 'M'), 4) << "the first, fourth, seventh and tenth";
    EXPECT_EQ(dots_text(dots), "Dots: one of 3 of the 10 places of its 10 fixes");
}

TEST(MapSvg, Scale_bars_are_round) {
    const platform::SpatialReference metres{.Name = "", .Wkt = "", .UnitName = "metre", .MetersPerUnit = 1.0};
    EXPECT_EQ(scale_bar(30000, metres).Length, 5000.0);
    EXPECT_EQ(scale_bar(30000, metres).Text, "5 km");
    EXPECT_EQ(scale_bar(900, metres).Text, "200 m");
    platform::SpatialReference feet = metres;
    feet.MetersPerUnit = 0.3048;
    EXPECT_EQ(scale_bar(10000, feet).Text, "500 m");
    EXPECT_NEAR(scale_bar(10000, feet).Length, 500 / 0.3048, 1e-9);
    const platform::SpatialReference degrees{
        .Name = "", .Wkt = "", .UnitName = "degree", .MetersPerUnit = 0.0, .IsGeographic = true};
    EXPECT_EQ(scale_bar(1.0, degrees).Text, "0.2 degree");
    EXPECT_EQ(scale_bar(1.0, {}).Text, "0.2 units");
}

TEST(MapSvg, Strips_are_widened) {
    const MapLayout layout = layout_of({0, 0, 1000, 10});
    EXPECT_NEAR(layout.Shown.Width(), 1060, 1e-9);
    EXPECT_NEAR(layout.Shown.Height(), 660, 1e-9) << "0.6 of the longer side and 0.03 at both ends";
    EXPECT_NEAR(layout.PlotWidth, 440, 1e-9);
}

TEST(MapSvg, A_coordinate_that_would_be_moved_onto_another_is_left_out) {
    MapPicture map;
    // Shown are northings 6159500 to 6179300 at 440 / 31800 pixels: 6160000 lies 7 pixels above the lower end.
    map.Bounds = {0, 6164450, 30000, 6174350};
    const std::string svg = map_svg(map, layout_of(map.Bounds));
    EXPECT_NE(svg.find(">6165000</text>"), std::string::npos);
    EXPECT_EQ(svg.find(">6160000</text>"), std::string::npos);
}

TEST(MapSvg, Texts_are_escaped) {
    MapPicture map;
    map.Id = "map-1";
    map.Title = "<script>&\"";
    map.Bounds = {0, 0, 100, 100};
    const std::string svg = map_svg(map, layout_of(map.Bounds));
    EXPECT_EQ(svg.find("<script>"), std::string::npos);
    EXPECT_NE(svg.find("&lt;script&gt;&amp;&quot;</title>"), std::string::npos);
}

// The vectors of RFC 4648, section 10.
TEST(Base64, Vectors_of_the_standard) {
    EXPECT_EQ(base64(""), "");
    EXPECT_EQ(base64("f"), "Zg==");
    EXPECT_EQ(base64("fo"), "Zm8=");
    EXPECT_EQ(base64("foo"), "Zm9v");
    EXPECT_EQ(base64("foob"), "Zm9vYg==");
    EXPECT_EQ(base64("fooba"), "Zm9vYmE=");
    EXPECT_EQ(base64("foobar"), "Zm9vYmFy");
}

}  // namespace
}  // namespace wxl::results_page
