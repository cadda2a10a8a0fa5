#include "comparison/convex_hull.h"
#include "comparison/exact_turn.h"
#include "comparison/minimum_convex_polygon.h"
#include "tests/support/samples.h"

#include <cmath>
#include <gtest/gtest.h>
#include <limits>

namespace wxl::comparison {
namespace {

using platform::Point;

const std::vector<Point> kEight = {{0, 0}, {6, 0}, {6, 4}, {0, 4}, {3, 2}, {3, 0}, {12, 2}, {3, 2}};

TEST(MinimumConvexPolygon, Of_all_fixes) {
    const MinimumConvexPolygon polygon = minimum_convex_polygon(kEight, 100.0);
    EXPECT_EQ(polygon.Status, PolygonStatus::kGood);
    EXPECT_EQ(polygon.Corners, (std::vector<Point>{{0, 0}, {6, 0}, {12, 2}, {6, 4}, {0, 4}}));
    EXPECT_EQ(polygon.Area, 36.0);
    EXPECT_EQ(polygon.Kept, 8U);
}

// Centre (4.125, 1.75); the quantile at 80 % is 4.611587, and (0, 4) at 4.699 goes with (12, 2).
TEST(MinimumConvexPolygon, Of_the_nearest_four_fifths) {
    const MinimumConvexPolygon polygon = minimum_convex_polygon(kEight, 80.0);
    EXPECT_EQ(polygon.Corners, (std::vector<Point>{{0, 0}, {6, 0}, {6, 4}}));
    EXPECT_EQ(polygon.Area, 12.0);
    EXPECT_EQ(polygon.Kept, 6U);
}

TEST(MinimumConvexPolygon, Equal_distances_are_kept_together) {
    const std::vector<Point> square = {{0, 0}, {0.1, 0}, {0.1, 0.1}, {0, 0.1}};
    for (const double percent : {1.0, 50.0, 99.0}) EXPECT_EQ(minimum_convex_polygon(square, percent).Kept, 4U);
}

TEST(MinimumConvexPolygon, Without_a_fix) {
    constexpr double kNan = std::numeric_limits<double>::quiet_NaN();
    for (const auto& fixes : {std::vector<Point>{}, std::vector<Point>{{kNan, 1.0}, {1.0, HUGE_VAL}}}) {
        const MinimumConvexPolygon polygon = minimum_convex_polygon(fixes, 95.0);
        EXPECT_EQ(polygon.Status, PolygonStatus::kNoFix);
        EXPECT_TRUE(polygon.Corners.empty());
    }
}

TEST(MinimumConvexPolygon, Fixes_without_coordinates_do_not_count) {
    std::vector<Point> fixes = kEight;
    fixes.insert(fixes.begin() + 2, {std::numeric_limits<double>::quiet_NaN(), 0.0});
    EXPECT_EQ(minimum_convex_polygon(fixes, 80.0).Area, 12.0);
}

TEST(MinimumConvexPolygon, Without_an_area) {
    const MinimumConvexPolygon one = minimum_convex_polygon(std::vector<Point>{{3, 4}, {3, 4}}, 100.0);
    EXPECT_EQ(one.Status, PolygonStatus::kNoArea);
    EXPECT_EQ(one.Corners, (std::vector<Point>{{3, 4}}));
    const MinimumConvexPolygon line =
        minimum_convex_polygon(std::vector<Point>{{1, 1}, {3, 3}, {2, 2}, {-1, -1}}, 100.0);
    EXPECT_EQ(line.Status, PolygonStatus::kNoArea);
    EXPECT_EQ(line.Corners, (std::vector<Point>{{-1, -1}, {3, 3}}));
    EXPECT_EQ(line.Area, 0.0);
}

// On a line of slope 1/3 far out, in coordinates that no double holds exactly: rounding would find corners.
TEST(MinimumConvexPolygon, Turns_are_decided_exactly) {
    const Point a{0.5, 0.5};
    const Point b{12.0, 12.0};
    for (int i = 0; i < 256; ++i) {
        const double x = 24.0 + std::ldexp(i % 16, -48);
        const double y = 24.0 + std::ldexp(i / 16, -48);
        EXPECT_EQ(turn(a, b, {x, y}), y > x ? 1 : y < x ? -1 : 0) << i;
    }
    const Point east{1e15 + 2.0, 1.0};
    EXPECT_EQ(turn({1e15, 0.0}, east, {1e15 + 4.0, 2.0}), 0);
    EXPECT_EQ(turn({1e15, 0.0}, east, {1e15 + 4.0, 2.0 + 4e-16 * 2}), 1);
}

// Moved to UTM coordinates by whole numbers, the area keeps every digit.
TEST(MinimumConvexPolygon, Large_coordinates_cost_no_digits) {
    std::vector<Point> moved = kEight;
    for (Point& fix : moved) fix = {fix.X + 4e8, fix.Y + 5e9};
    EXPECT_EQ(minimum_convex_polygon(moved, 100.0).Area, 36.0);
    EXPECT_EQ(minimum_convex_polygon(moved, 80.0).Area, 12.0);
}

/// A corner is a point that some line through it leaves alone on one side: by comparing with every pair.
bool is_inside_or_on(const Point& point, const std::vector<Point>& corners) {
    for (std::size_t i = 0; i < corners.size(); ++i)
        if (turn(corners[i], corners[(i + 1) % corners.size()], point) < 0) return false;
    return true;
}

TEST(MinimumConvexPolygon, Holds_every_fix_with_strict_corners) {
    for (const tests::NamedSample& sample : tests::hostile_samples(300)) {
        SCOPED_TRACE(sample.Name);
        const MinimumConvexPolygon polygon = minimum_convex_polygon(sample.Points, 100.0);
        if (polygon.Status == PolygonStatus::kNoArea) continue;
        const std::size_t count = polygon.Corners.size();
        for (std::size_t i = 0; i < count; ++i)
            EXPECT_EQ(turn(polygon.Corners[i], polygon.Corners[(i + 1) % count], polygon.Corners[(i + 2) % count]), 1);
        for (const Point& fix : sample.Points) EXPECT_TRUE(is_inside_or_on(fix, polygon.Corners));
    }
}

TEST(MinimumConvexPolygon, A_growing_hull_is_the_hull_of_the_fixes_so_far) {
    for (const tests::NamedSample& sample : tests::hostile_samples(60)) {
        SCOPED_TRACE(sample.Name);
        GrowingHull growing;
        std::vector<Point> soFar;
        for (const Point& fix : sample.Points) {
            growing.Add(fix);
            soFar.push_back(fix);
            ASSERT_EQ(growing.Corners(), convex_hull(soFar));
        }
    }
}

}  // namespace
}  // namespace wxl::comparison
