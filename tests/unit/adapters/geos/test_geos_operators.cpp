#include "adapters/geos/geos_operators.h"
#include "platform/runtime_error.h"

#include <cmath>
#include <gtest/gtest.h>
#include <limits>

namespace wxl::files {
namespace {

using platform::Geometry;
using platform::Point;
using platform::RuntimeError;
using platform::ShapeType;
using Ring = std::vector<Point>;

Ring clockwise_square(double x, double y, double side) {
    return {{x, y}, {x, y + side}, {x + side, y + side}, {x + side, y}, {x, y}};
}

Ring counter_clockwise_square(double x, double y, double side) {
    return {{x, y}, {x + side, y}, {x + side, y + side}, {x, y + side}, {x, y}};
}

Geometry polygon(std::vector<Ring> rings) {
    return {ShapeType::kPolygon, {}, std::move(rings)};
}

Geometry square(double x, double y, double side) {
    return polygon({clockwise_square(x, y, side)});
}

/// Positive for a clockwise ring (shoelace formula).
double signed_area(const Ring& ring) {
    double sum = 0.0;
    for (std::size_t i = 1; i < ring.size(); ++i) sum += ring[i].X * ring[i - 1].Y - ring[i - 1].X * ring[i].Y;
    return sum / 2.0;
}

// 10 x 10 and 10 x 10 shifted by (5, 5) share 5 x 5: of the first 75 are left, and its boundary keeps its length.
TEST(GeosOperators, Overlapping_squares) {
    GeosOperators geos;
    const Geometry left = geos.Difference(square(0, 0, 10), square(5, 5, 10));
    EXPECT_EQ(left.Parts.size(), 1U);
    EXPECT_DOUBLE_EQ(geos.Area(left), 75.0);
    EXPECT_DOUBLE_EQ(geos.Length(left), 40.0);
}

TEST(GeosOperators, A_square_cut_in_two_has_two_outer_rings) {
    GeosOperators geos;
    const Geometry strip = polygon({{{4, -1}, {4, 11}, {5, 11}, {5, -1}, {4, -1}}});
    const Geometry two = geos.Difference(square(0, 0, 10), strip);
    ASSERT_EQ(two.Parts.size(), 2U);
    EXPECT_GT(signed_area(two.Parts[0]), 0.0);
    EXPECT_GT(signed_area(two.Parts[1]), 0.0);
    EXPECT_DOUBLE_EQ(geos.Area(two), 90.0);
}

TEST(GeosOperators, A_difference_with_an_inner_square_leaves_a_hole_that_runs_counter_clockwise) {
    GeosOperators geos;
    const Geometry ring = geos.Difference(square(0, 0, 10), square(4, 4, 2));
    ASSERT_EQ(ring.Parts.size(), 2U);
    EXPECT_DOUBLE_EQ(signed_area(ring.Parts[0]), 100.0);
    EXPECT_DOUBLE_EQ(signed_area(ring.Parts[1]), -4.0);
    EXPECT_EQ(ring.Parts[0].front(), ring.Parts[0].back());
    EXPECT_DOUBLE_EQ(geos.Area(ring), 96.0);
    EXPECT_DOUBLE_EQ(geos.Length(ring), 48.0);
}

TEST(GeosOperators, A_shape_without_itself_is_null) {
    GeosOperators geos;
    EXPECT_TRUE(geos.Difference(square(0, 0, 10), square(0, 0, 10)).IsNull());
    EXPECT_TRUE(geos.Difference(Geometry(), square(0, 0, 10)).IsNull());
    EXPECT_DOUBLE_EQ(geos.Area(geos.Difference(square(0, 0, 10), Geometry())), 100.0);
}

// The ring 0,0 - 2,2 - 2,0 - 0,2 crosses itself at 1,1: two triangles of area 1.
TEST(GeosOperators, A_bow_tie_becomes_two_triangles) {
    GeosOperators geos;
    const Geometry clean = geos.CleanUp(polygon({{{0, 0}, {2, 2}, {2, 0}, {0, 2}, {0, 0}}}));
    ASSERT_EQ(clean.Parts.size(), 2U);
    EXPECT_DOUBLE_EQ(signed_area(clean.Parts[0]), 1.0);
    EXPECT_DOUBLE_EQ(signed_area(clean.Parts[1]), 1.0);
}

TEST(GeosOperators, Clean_up_closes_and_turns_rings) {
    GeosOperators geos;
    const Geometry clean = geos.CleanUp(polygon({{{0, 0}, {3, 0}, {3, 3}, {0, 3}}}));
    ASSERT_EQ(clean.Parts.size(), 1U);
    EXPECT_EQ(clean.Parts[0].size(), 5U);
    EXPECT_EQ(clean.Parts[0].front(), clean.Parts[0].back());
    EXPECT_DOUBLE_EQ(signed_area(clean.Parts[0]), 9.0);
}

// An island in a lake in an island, all counter-clockwise and out of order: 100 - 36 + 4.
TEST(GeosOperators, Clean_up_nests_rings_whatever_their_order) {
    GeosOperators geos;
    const Geometry clean = geos.CleanUp(polygon(
        {counter_clockwise_square(4, 4, 2), counter_clockwise_square(0, 0, 10), counter_clockwise_square(2, 2, 6)}));
    EXPECT_DOUBLE_EQ(geos.Area(clean), 68.0);
    ASSERT_EQ(clean.Parts.size(), 3U);
    double sum = 0.0;
    for (const Ring& ring : clean.Parts) sum += signed_area(ring);
    EXPECT_DOUBLE_EQ(sum, 68.0);
}

// The hole stands behind the wrong outer ring: it is still the hole of the first.
TEST(GeosOperators, A_hole_behind_another_ring_stays_a_hole) {
    GeosOperators geos;
    EXPECT_DOUBLE_EQ(
        geos.Area(polygon({clockwise_square(0, 0, 10), clockwise_square(20, 0, 5), counter_clockwise_square(4, 4, 2)})),
        121.0);
}

TEST(GeosOperators, Rings_that_enclose_nothing_vanish) {
    GeosOperators geos;
    EXPECT_TRUE(geos.CleanUp(polygon({{{0, 0}, {5, 5}, {0, 0}}})).IsNull());
    EXPECT_TRUE(geos.CleanUp(polygon({{{0, 0}, {1, 1}, {2, 2}, {0, 0}}})).IsNull());
    EXPECT_TRUE(geos.CleanUp(polygon({})).IsNull());
    EXPECT_EQ(geos.Area(Geometry()), 0.0);
}

TEST(GeosOperators, Length_of_a_line_of_two_parts) {
    GeosOperators geos;
    const Geometry line{ShapeType::kPolyline, {}, {{{0, 0}, {3, 4}}, {{10, 0}, {10, 5}, {15, 5}}}};
    EXPECT_DOUBLE_EQ(geos.Length(line), 15.0);
    EXPECT_EQ(geos.Length(Geometry()), 0.0);
}

TEST(GeosOperators, Distance_is_planar) {
    GeosOperators geos;
    EXPECT_DOUBLE_EQ(geos.Distance({500000, 4000000}, {500300, 4000400}), 500.0);
}

TEST(GeosOperators, Coordinates_that_are_not_finite_are_refused) {
    GeosOperators geos;
    const double nan = std::numeric_limits<double>::quiet_NaN();
    const double inf = std::numeric_limits<double>::infinity();
    const auto number_of = [](auto&& call) {
        try {
            call();
        } catch (const RuntimeError& error) {
            return error.Number;
        }
        return 0;
    };
    Geometry broken = square(0, 0, 10);
    broken.Parts[0][2].X = nan;
    EXPECT_EQ(number_of([&] { geos.Area(broken); }), 5);
    EXPECT_EQ(number_of([&] { geos.CleanUp(broken); }), 5);
    EXPECT_EQ(number_of([&] { geos.Difference(square(0, 0, 1), broken); }), 5);
    EXPECT_EQ(number_of([&] { geos.Length(broken); }), 5);
    EXPECT_EQ(number_of([&] { geos.Distance({inf, 0}, {0, 0}); }), 5);
}

}  // namespace
}  // namespace wxl::files
