#include "isopleths/rings.h"
#include "tests/support/samples.h"

#include <algorithm>
#include <gtest/gtest.h>

namespace wxl::isopleths {
namespace {

using platform::Point;

Ring square(double x, double y, double side) {
    return {{x, y}, {x, y + side}, {x + side, y + side}, {x + side, y}, {x, y}};
}

std::vector<Ring> sorted(std::vector<Ring> rings) {
    sort_by_area(rings);
    return rings;
}

/// Whether a point lies in a ring, by counting crossings of all its segments.
bool plainly_inside(const Ring& ring, const Point& point) {
    bool inside = false;
    for (std::size_t i = 0; i + 1 < ring.size(); ++i) {
        const Point& a = ring[i];
        const Point& b = ring[i + 1];
        if ((a.Y > point.Y) == (b.Y > point.Y)) continue;
        if (point.X > a.X + (point.Y - a.Y) / (b.Y - a.Y) * (b.X - a.X)) inside = !inside;
    }
    return inside;
}

TEST(Rings, Area_is_positive_clockwise) {
    EXPECT_EQ(clockwise_area(square(3, 4, 5)), 25);
    Ring other = square(3, 4, 5);
    std::reverse(other.begin(), other.end());
    EXPECT_EQ(clockwise_area(other), -25);
}

// 100 x 100 with lakes of 40 x 40 and 20 x 20, an islet of 10 x 10 in the first, and an island of 30 x 30.
TEST(Rings, Enclosed_area_leaves_lakes_out_and_counts_their_islets) {
    const std::vector<Ring> rings =
        sorted({square(0, 0, 100), square(10, 10, 40), square(20, 20, 10), square(60, 60, 20), square(200, 0, 30)});
    EXPECT_DOUBLE_EQ(area_of(collected(polygons_of(rings))), 10000.0 - 1600 + 100 - 400 + 900);
    EXPECT_EQ(area_of({}), 0.0);
}

// Two squares of 4 and 9 that meet in one corner, drawn in one stroke, with a spur from there to nowhere and back.
TEST(Rings, A_line_that_comes_back_to_a_vertex_is_cut_apart_there) {
    const std::vector<Ring> rings =
        simple_rings({{{0, 0}, {2, 0}, {2, 2}, {2, 1}, {2, 2}, {5, 2}, {5, 5}, {2, 5}, {2, 2}, {0, 2}, {0, 0}}});
    ASSERT_EQ(rings.size(), 2U);
    EXPECT_EQ(rings[0], (Ring{{2, 2}, {5, 2}, {5, 5}, {2, 5}, {2, 2}}));
    EXPECT_EQ(rings[1], (Ring{{0, 0}, {2, 0}, {2, 2}, {0, 2}, {0, 0}}));
}

TEST(Rings, A_simple_line_stays_as_it_is_but_for_repeated_vertices) {
    EXPECT_EQ(simple_rings({{{0, 0}, {0, 0}, {2, 0}, {2, 2}, {2, 2}, {0, 0}}}),
              (std::vector<Ring>{{{0, 0}, {2, 0}, {2, 2}, {0, 0}}}));
    EXPECT_TRUE(simple_rings({{{0, 0}, {1, 1}, {0, 0}}}).empty());
}

TEST(Rings, Nesting_of_islands_in_lakes) {
    // An island with two lakes, one of them with an islet, beside an island of its own.
    const std::vector<Ring> rings =
        sorted({square(0, 0, 100), square(10, 10, 40), square(20, 20, 10), square(60, 60, 20), square(200, 0, 30)});
    const std::vector<Nesting> nesting = nesting_of(rings);
    ASSERT_EQ(nesting.size(), 5U);
    EXPECT_EQ(nesting[0].Depth, 0U);  // 100
    EXPECT_EQ(nesting[1].Depth, 1U);  // 40
    EXPECT_EQ(nesting[1].Parent, 0U);
    EXPECT_EQ(nesting[2].Depth, 0U);  // 30, apart
    EXPECT_EQ(nesting[3].Depth, 1U);  // 20
    EXPECT_EQ(nesting[3].Parent, 0U);
    EXPECT_EQ(nesting[4].Depth, 2U);  // 10, in the lake
    EXPECT_EQ(nesting[4].Parent, 1U);
}

TEST(Rings, Rings_that_touch_at_a_vertex_or_along_a_side_are_told_apart) {
    const Ring outer = {{0, 0}, {0, 10}, {5, 10}, {10, 10}, {10, 0}, {0, 0}};
    const Ring insideAtVertex = {{5, 10}, {6, 5}, {4, 5}, {5, 10}};
    const Ring outsideAtVertex = {{5, 10}, {4, 12}, {6, 12}, {5, 10}};
    const Ring outsideAlongSide = {{10, 2}, {10, 4}, {12, 4}, {12, 2}, {10, 2}};
    const Ring insideAtCorner = {{0, 0}, {1, 3}, {3, 1}, {0, 0}};
    std::vector<Ring> rings = sorted({outer, insideAtVertex, outsideAtVertex, outsideAlongSide, insideAtCorner});
    const std::vector<Nesting> nesting = nesting_of(rings);
    for (std::size_t i = 1; i < rings.size(); ++i) {
        const bool inside = rings[i] == insideAtVertex || rings[i] == insideAtCorner;
        EXPECT_EQ(nesting[i].Depth, inside ? 1U : 0U) << i;
    }
}

TEST(Rings, A_polygon_has_its_outer_ring_clockwise_and_first_and_its_holes_the_other_way) {
    Ring outer = square(0, 0, 10);
    std::reverse(outer.begin(), outer.end());
    const auto polygons = polygons_of(sorted({outer, square(2, 2, 3), square(20, 20, 4)}));
    ASSERT_EQ(polygons.size(), 2U);
    ASSERT_EQ(polygons[0].Parts.size(), 2U);
    EXPECT_EQ(clockwise_area(polygons[0].Parts[0]), 100);
    EXPECT_EQ(clockwise_area(polygons[0].Parts[1]), -9);
    ASSERT_EQ(polygons[1].Parts.size(), 1U);
    EXPECT_EQ(clockwise_area(polygons[1].Parts[0]), 16);
}

TEST(Rings, Outer_rings_are_counted_without_holes) {
    // Two islands, one of them with a lake and an islet in it.
    EXPECT_EQ(outer_rings_of(collected(polygons_of(
                  sorted({square(0, 0, 100), square(10, 10, 40), square(20, 20, 10), square(200, 0, 30)})))),
              3);
    EXPECT_EQ(outer_rings_of({}), 0);
}

TEST(Rings, Nothing_gives_nothing) {
    EXPECT_TRUE(polygons_of({}).empty());
    EXPECT_TRUE(collected({}).IsNull());
    EXPECT_TRUE(nesting_of({}).empty());
}

// Random squares within squares: children lie in disjoint quarters of their parents.
void add_nested(const Point& corner, double side, int depth, tests::Dice& dice, std::vector<Ring>& rings) {
    const double margin = side * (0.02 + 0.05 * dice.Uniform());
    rings.push_back(square(corner.X + margin, corner.Y + margin, side - 2 * margin));
    if (depth == 0) return;
    const double half = (side - 2 * margin) / 2;
    for (const auto& [column, row] : {std::pair{0, 0}, std::pair{1, 0}, std::pair{0, 1}, std::pair{1, 1}}) {
        if (dice.Uniform() < 0.3) continue;
        add_nested({corner.X + margin + column * half, corner.Y + margin + row * half}, half, depth - 1, dice, rings);
    }
}

TEST(Rings, Nesting_equals_testing_every_ring_against_every_other) {
    tests::Dice dice(7);
    for (int round = 0; round < 20; ++round) {
        std::vector<Ring> rings;
        for (int i = 0; i < 5; ++i) add_nested({i * 1000.0 + 4e6, 5e6 * (round % 2)}, 1000, 4, dice, rings);
        sort_by_area(rings);
        const std::vector<Nesting> nesting = nesting_of(rings);
        for (std::size_t i = 0; i < rings.size(); ++i) {
            std::size_t depth = 0;
            std::size_t parent = Nesting::kNone;
            for (std::size_t j = 0; j < i; ++j) {
                if (!plainly_inside(rings[j], rings[i].front())) continue;
                ++depth;
                parent = j;
            }
            ASSERT_EQ(nesting[i].Depth, depth) << round << ' ' << i;
            ASSERT_EQ(nesting[i].Parent, parent) << round << ' ' << i;
        }
    }
}

}  // namespace
}  // namespace wxl::isopleths
