#include "isopleths/edge_closing.h"
#include "tests/unit/isopleths/surfaces.h"

#include <gtest/gtest.h>

namespace wxl::isopleths {
namespace {

using platform::ContourLine;
using platform::Point;
using platform::RasterGeometry;
using tests::Surface;
using tests::surface_of;

/// 4 x 3 cells of 10, lower left at (100, 200): the edge is 40 wide and 30 high.
const RasterGeometry kSmall{100, 200, 10, 4, 3};

OuterEdge edge_of(const Surface& surface) {
    return OuterEdge(surface.Geometry, surface.Edge());
}

OuterEdge flat_edge(double value) {
    return edge_of(surface_of(kSmall, [=](double, double) { return value; }));
}

TEST(OuterEdge, Positions_run_clockwise_from_the_north_west_corner) {
    const OuterEdge edge = flat_edge(0);
    EXPECT_EQ(edge.Length(), 140);
    EXPECT_EQ(edge.PositionOf({100, 230}), 0);
    EXPECT_EQ(edge.PositionOf({115, 230}), 15);
    EXPECT_EQ(edge.PositionOf({140, 230}), 40);
    EXPECT_EQ(edge.PositionOf({140, 225}), 45);
    EXPECT_EQ(edge.PositionOf({140, 200}), 70);
    EXPECT_EQ(edge.PositionOf({130, 200}), 80);
    EXPECT_EQ(edge.PositionOf({100, 200}), 110);
    EXPECT_EQ(edge.PositionOf({100, 220}), 130);
    EXPECT_EQ(edge.PositionOf({115, 215}), std::nullopt);
}

TEST(OuterEdge, Values_are_linear_between_centres_and_constant_at_corners) {
    // Cell value = column + 10 x row.
    const OuterEdge edge = edge_of(surface_of(kSmall, [](double column, double row) { return column + 10 * row; }));
    EXPECT_DOUBLE_EQ(edge.ValueAt(0), 0);
    EXPECT_DOUBLE_EQ(edge.ValueAt(4), 0);
    EXPECT_DOUBLE_EQ(edge.ValueAt(10), 0.5);
    EXPECT_DOUBLE_EQ(edge.ValueAt(38), 3);
    EXPECT_DOUBLE_EQ(edge.ValueAt(42), 3);
    EXPECT_DOUBLE_EQ(edge.ValueAt(55), 13);
    EXPECT_DOUBLE_EQ(edge.ValueAt(71), 23);
    EXPECT_DOUBLE_EQ(edge.ValueAt(100), 20.5);
    EXPECT_DOUBLE_EQ(edge.ValueAt(130), 5);
}

TEST(OuterEdge, Corners_between_two_positions_come_in_clockwise_order) {
    const OuterEdge edge = flat_edge(0);
    std::vector<Point> corners;
    edge.AppendCorners(15, 35, corners);
    EXPECT_TRUE(corners.empty());
    edge.AppendCorners(15, 75, corners);
    EXPECT_EQ(corners, (std::vector<Point>{{140, 230}, {140, 200}}));
    corners.clear();
    edge.AppendCorners(115, 140 + 45, corners);
    EXPECT_EQ(corners, (std::vector<Point>{{100, 230}, {140, 230}}));
    corners.clear();
    edge.AppendCorners(40, 70, corners);  // the ends themselves are no corners between
    EXPECT_TRUE(corners.empty());
}

// West half high: the line from the north to the south side is closed around the two western corners.
TEST(ClosedContours, A_line_across_is_closed_on_its_high_side) {
    const OuterEdge west = edge_of(surface_of(kSmall, [](double column, double) { return column < 2 ? 1.0 : 0.0; }));
    const std::vector<ContourLine> line = {{0.5, {{120, 230}, {121, 215}, {120, 200}}}};
    const std::vector<Ring> rings = closed_contours(line, 0.5, west);
    ASSERT_EQ(rings.size(), 1U);
    EXPECT_EQ(rings[0], (Ring{{120, 230}, {121, 215}, {120, 200}, {100, 200}, {100, 230}, {120, 230}}));

    const OuterEdge east = edge_of(surface_of(kSmall, [](double column, double) { return column < 2 ? 0.0 : 1.0; }));
    const std::vector<Ring> other = closed_contours(line, 0.5, east);
    ASSERT_EQ(other.size(), 1U);
    EXPECT_EQ(other[0], (Ring{{120, 230}, {121, 215}, {120, 200}, {140, 200}, {140, 230}, {120, 230}}));
}

TEST(ClosedContours, A_band_across_the_raster_is_one_ring_of_two_lines) {
    const OuterEdge edge =
        edge_of(surface_of(kSmall, [](double column, double) { return column == 1 || column == 2 ? 1.0 : 0.0; }));
    const std::vector<Ring> rings =
        closed_contours({{0.5, {{110, 230}, {110, 200}}}, {0.5, {{130, 230}, {130, 200}}}}, 0.5, edge);
    ASSERT_EQ(rings.size(), 1U);
    EXPECT_DOUBLE_EQ(std::abs(clockwise_area(rings[0])), 20 * 30);
}

TEST(ClosedContours, A_low_band_leaves_two_rings) {
    const OuterEdge edge =
        edge_of(surface_of(kSmall, [](double column, double) { return column == 1 || column == 2 ? 0.0 : 1.0; }));
    const std::vector<Ring> rings =
        closed_contours({{0.5, {{110, 230}, {110, 200}}}, {0.5, {{130, 200}, {130, 230}}}}, 0.5, edge);
    ASSERT_EQ(rings.size(), 2U);
    EXPECT_DOUBLE_EQ(std::abs(clockwise_area(rings[0])), 10 * 30);
    EXPECT_DOUBLE_EQ(std::abs(clockwise_area(rings[1])), 10 * 30);
}

TEST(ClosedContours, A_high_edge_without_lines_is_a_ring_itself) {
    const std::vector<ContourLine> hole = {{0.5, {{115, 215}, {120, 220}, {125, 215}, {115, 215}}}};
    const std::vector<Ring> rings = closed_contours(hole, 0.5, flat_edge(1));
    ASSERT_EQ(rings.size(), 2U);
    EXPECT_EQ(rings[0], flat_edge(1).WholeEdge());
    EXPECT_EQ(rings[1], hole[0].Vertices);
    EXPECT_EQ(closed_contours(hole, 0.5, flat_edge(0)).size(), 1U);
}

TEST(ClosedContours, An_edge_at_the_level_counts_as_high) {
    EXPECT_EQ(closed_contours({}, 0.5, flat_edge(0.5)).size(), 1U);
    EXPECT_TRUE(closed_contours({}, 0.5, flat_edge(0.4999)).empty());
}

TEST(ClosedContours, Ends_at_the_same_place_do_not_swap_high_and_low) {
    // Two high corners whose lines meet in the middle of the north side.
    const OuterEdge edge = edge_of(surface_of(
        kSmall, [](double column, double row) { return row == 0 && (column == 0 || column == 3) ? 1.0 : 0.0; }));
    const std::vector<Ring> rings =
        closed_contours({{0.5, {{120, 230}, {100, 220}}}, {0.5, {{140, 220}, {120, 230}}}}, 0.5, edge);
    ASSERT_EQ(rings.size(), 2U);
    EXPECT_DOUBLE_EQ(std::abs(clockwise_area(rings[0])), 100);
    EXPECT_DOUBLE_EQ(std::abs(clockwise_area(rings[1])), 100);
}

TEST(ClosedContours, Lines_may_end_in_corners) {
    const OuterEdge edge =
        edge_of(surface_of(kSmall, [](double column, double row) { return column + row < 2.5 ? 1.0 : 0.0; }));
    const std::vector<Ring> rings = closed_contours({{0.5, {{140, 230}, {100, 200}}}}, 0.5, edge);
    ASSERT_EQ(rings.size(), 1U);
    EXPECT_EQ(rings[0], (Ring{{140, 230}, {100, 200}, {100, 230}, {140, 230}}));
}

TEST(ClosedContours, A_line_that_ends_inside_is_closed_by_a_straight_side) {
    const std::vector<Ring> rings = closed_contours({{0.5, {{110, 210}, {120, 220}, {130, 210}}}}, 0.5, flat_edge(0));
    ASSERT_EQ(rings.size(), 1U);
    EXPECT_EQ(rings[0], (Ring{{110, 210}, {120, 220}, {130, 210}, {110, 210}}));
}

TEST(ClosedContours, What_encloses_nothing_is_left_out) {
    EXPECT_TRUE(closed_contours({{0.5, {{110, 210}, {120, 220}, {110, 210}}},
                                 {0.5, {{110, 210}, {110, 210}, {110, 210}, {110, 210}}},
                                 {0.5, {{110, 210}}},
                                 {0.5, {}}},
                                0.5, flat_edge(0))
                    .empty());
}

// Cells of 10: a billionth of a cell's width all around a square of side s holds 4e-8 x s.
TEST(ClosedContours, Less_than_a_billionth_of_a_cell_is_nothing) {
    const auto square = [](double side) {
        return ContourLine{0.5, {{0, 0}, {side, 0}, {side, side}, {0, side}, {0, 0}}};
    };
    EXPECT_TRUE(closed_contours({square(3.9e-8)}, 0.5, flat_edge(0)).empty());
    EXPECT_EQ(closed_contours({square(4.1e-8)}, 0.5, flat_edge(0)).size(), 1U);
}

// A strip as long as 3 cells of 10 has sides of 60: a billionth of a cell's width all around them holds 6e-7.
TEST(ClosedContours, A_strip_less_than_a_billionth_of_a_cell_wide_is_nothing) {
    const auto strip = [](double width) {
        return ContourLine{0.5, {{0, 0}, {30, 0}, {30, width}, {0, width}, {0, 0}}};
    };
    EXPECT_TRUE(closed_contours({strip(1.9e-8)}, 0.5, flat_edge(0)).empty());
    EXPECT_EQ(closed_contours({strip(2.1e-8)}, 0.5, flat_edge(0)).size(), 1U);
}

TEST(ClosedContours, Come_by_descending_area_then_from_west_to_east) {
    const auto square = [](double x, double y, double side) {
        return ContourLine{0.5, {{x, y}, {x + side, y}, {x + side, y + side}, {x, y + side}, {x, y}}};
    };
    const std::vector<Ring> rings =
        closed_contours({square(125, 205, 5), square(105, 205, 5), square(112, 205, 8)}, 0.5, flat_edge(0));
    ASSERT_EQ(rings.size(), 3U);
    EXPECT_EQ(rings[0].front().X, 112);
    EXPECT_EQ(rings[1].front().X, 105);
    EXPECT_EQ(rings[2].front().X, 125);
}

}  // namespace
}  // namespace wxl::isopleths
