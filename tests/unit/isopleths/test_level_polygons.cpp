// Level polygons from real contours, compared with the step-by-step rules and with the contourer's own polygons.

#include "adapters/geos/geos_operators.h"
#include "adapters/memory/memory_rasters.h"
#include "adapters/raster/contour_operation.h"
#include "isopleths/edge_closing.h"
#include "isopleths/level_polygons.h"
#include "platform/contour_step.h"
#include "tests/support/step_by_step.h"
#include "tests/unit/isopleths/polygonized.h"
#include "tests/unit/isopleths/surfaces.h"

#include <gtest/gtest.h>

namespace wxl::isopleths {
namespace {

using platform::Geometry;
using platform::IGeometryOperators;
using platform::RasterGeometry;
using tests::step_by_step;
using tests::Surface;

const RasterGeometry kPlace{500000, 4000000, 30, 70, 50};

std::vector<Ring> contours_of(const Surface& surface, double level) {
    files::ContourOperation operation;
    const auto raster = memory::MakeRaster("ud", surface.Geometry, surface.Cells);
    const std::vector<double> levels = {level};
    return closed_contours(operation.Contours(*raster, levels), level - platform::ContourStep(levels),
                           OuterEdge(surface.Geometry, surface.Edge()));
}

double symmetric_difference(const Geometry& a, const Geometry& b, IGeometryOperators& operators) {
    return operators.Area(operators.Difference(a, b)) + operators.Area(operators.Difference(b, a));
}

void expect_equal_polygons(const Geometry& found, const Geometry& expected, const std::string& where) {
    files::GeosOperators operators;
    const double area = operators.Area(expected);
    EXPECT_LE(symmetric_difference(found, expected, operators), 1e-9 * area) << where << ", area " << area;
    EXPECT_TRUE(tests::is_valid(found)) << where;
}

void compare_at_levels(const Surface& surface, const std::string& name) {
    files::GeosOperators operators;
    const double low = surface.Minimum();
    const double range = surface.Maximum() - low;
    for (const double share : {0.03, 0.2, 0.5, 0.77, 0.95}) {
        const double level = low + share * range;
        const std::string where = name + " at " + std::to_string(share);
        const std::vector<Ring> contours = contours_of(surface, level);
        const Geometry found = level_polygon(contours, operators);
        expect_equal_polygons(found, step_by_step(contours, operators), where + " (rules)");
        expect_equal_polygons(found, tests::polygonized_above(surface, level), where + " (polygonized)");
    }
}

TEST(LevelPolygons, Equal_the_rules_and_the_polygonized_contours_on_smooth_surfaces) {
    for (std::uint64_t seed = 1; seed <= 12; ++seed)
        compare_at_levels(tests::random_bumps(kPlace, 6, 4, 15, 0.0, seed), "smooth " + std::to_string(seed));
}

TEST(LevelPolygons, Equal_the_rules_and_the_polygonized_contours_on_hills_and_lakes) {
    for (std::uint64_t seed = 1; seed <= 12; ++seed)
        compare_at_levels(tests::random_bumps(kPlace, 60, 1, 6, 0.5, seed), "hills " + std::to_string(seed));
}

TEST(LevelPolygons, Equal_the_rules_and_the_polygonized_contours_on_islands_in_lakes_in_islands) {
    compare_at_levels(tests::waves(kPlace, 7.3), "waves");
    compare_at_levels(tests::waves({0, 0, 1, 41, 41}, 4.1), "short waves");
}

TEST(LevelPolygons, Equal_the_rules_and_the_polygonized_contours_on_a_high_border) {
    const Surface bowl = tests::surface_of(kPlace, [](double column, double row) {
        return 1.0 - std::exp(-((column - 33) * (column - 33) + (row - 22) * (row - 22)) / 60.0);
    });
    compare_at_levels(bowl, "bowl");
}

TEST(LevelPolygons, Equal_the_rules_and_the_polygonized_contours_on_bands) {
    const Surface bands = tests::surface_of(
        kPlace, [](double column, double row) { return std::sin((column + 0.4 * row) / 5.0) + 0.01 * row; });
    compare_at_levels(bands, "bands");
}

TEST(LevelPolygons, Equal_the_rules_and_the_polygonized_contours_on_noise) {
    for (std::uint64_t seed = 1; seed <= 4; ++seed) {
        tests::Dice dice(seed);
        const Surface noise = tests::surface_of({0, 0, 10, 30, 20}, [&](double, double) { return dice.Uniform(); });
        compare_at_levels(noise, "noise " + std::to_string(seed));
    }
}

TEST(LevelPolygons, Equal_the_rules_and_the_polygonized_contours_on_very_small_rasters) {
    for (std::uint64_t seed = 1; seed <= 40; ++seed) {
        const RasterGeometry geometry{0, 0, 5, 1 + static_cast<std::int32_t>(seed % 4),
                                      1 + static_cast<std::int32_t>(seed / 4 % 3)};
        if (geometry.Columns * geometry.Rows < 2) continue;
        tests::Dice dice(seed);
        const Surface surface = tests::surface_of(geometry, [&](double, double) { return dice.Uniform(); });
        compare_at_levels(surface, "small " + std::to_string(seed));
    }
}

// Cells that equal the level make contours that touch each other and themselves. The polygonized contours of such a
// surface are not valid, so that only the rules serve as a yardstick.
TEST(LevelPolygons, Equal_the_rules_where_contours_touch) {
    files::GeosOperators operators;
    for (std::uint64_t seed = 1; seed <= 25; ++seed) {
        const Surface surface = tests::random_steps({1000, 2000, 10, 12, 9}, 4, seed);
        for (const double level : {1.0, 2.0, 3.0}) {
            const std::string where = "steps " + std::to_string(seed) + " at " + std::to_string(level);
            const std::vector<Ring> contours = contours_of(surface, level);
            const Geometry found = level_polygon(contours, operators);
            const Geometry expected = step_by_step(contours, operators);
            EXPECT_LE(symmetric_difference(found, expected, operators), 1e-9 * operators.Area(expected)) << where;
            EXPECT_TRUE(tests::is_valid(found)) << where;
        }
    }
}

TEST(LevelPolygons, A_depression_is_a_hole) {
    const Surface crater = tests::surface_of({0, 0, 1, 41, 41}, [](double column, double row) {
        const double d = std::hypot(column - 20, row - 20);
        return std::exp(-(d - 8) * (d - 8) / 10);
    });
    files::GeosOperators operators;
    const Geometry polygon = level_polygon(contours_of(crater, 0.5), operators);
    ASSERT_EQ(polygon.Parts.size(), 2U);
    EXPECT_GT(clockwise_area(polygon.Parts[0]), 0);
    EXPECT_LT(clockwise_area(polygon.Parts[1]), 0);
}

TEST(LevelPolygons, No_contour_gives_no_shape) {
    files::GeosOperators operators;
    EXPECT_TRUE(level_polygon({}, operators).IsNull());
}

TEST(RingBetween, Takes_the_inner_polygon_out_of_the_outer) {
    files::GeosOperators operators;
    const Geometry inner{platform::ShapeType::kPolygon, {}, {{{2, 2}, {2, 4}, {4, 4}, {4, 2}, {2, 2}}}};
    const Geometry outer{platform::ShapeType::kPolygon, {}, {{{0, 0}, {0, 9}, {9, 9}, {9, 0}, {0, 0}}}};
    EXPECT_EQ(operators.Area(ring_between(inner, outer, operators)), 77);
    EXPECT_EQ(operators.Area(ring_between({}, outer, operators)), 81);
    EXPECT_TRUE(ring_between(outer, inner, operators).IsNull());
    EXPECT_TRUE(ring_between(inner, {}, operators).IsNull());
}

TEST(RingBetween, Rings_of_falling_levels_are_disjoint_and_add_up_to_the_last_polygon) {
    files::GeosOperators operators;
    for (std::uint64_t seed = 1; seed <= 6; ++seed) {
        const Surface surface = tests::random_bumps(kPlace, 30, 2, 9, 0.3, seed);
        Geometry before;
        Geometry all;
        double sum = 0.0;
        for (const double share : {0.9, 0.6, 0.45, 0.3}) {
            const double level = surface.Minimum() + share * (surface.Maximum() - surface.Minimum());
            const Geometry polygon = level_polygon(contours_of(surface, level), operators);
            const Geometry ring = ring_between(before, polygon, operators);
            EXPECT_TRUE(tests::is_valid(ring));
            sum += operators.Area(ring);
            all = all.IsNull() ? ring : tests::united(all, ring);
            before = polygon;
        }
        EXPECT_NEAR(sum / operators.Area(before), 1.0, 1e-9);
        EXPECT_LE(symmetric_difference(all, before, operators), 1e-9 * sum);
    }
}

TEST(NestedRing, Equals_the_difference_of_polygons_that_stay_clear_of_the_edge) {
    files::GeosOperators operators;
    int compared = 0;
    const auto compare = [&](const Surface& surface, const std::vector<double>& levels, const std::string& name) {
        Geometry inner;
        for (const double level : levels) {
            const Geometry outer = level_polygon(contours_of(surface, level), operators);
            if (!outer.IsNull() && !reaches_border(inner, surface.Geometry.Bounds())) {
                const Geometry found = nested_ring(inner, outer, operators);
                const Geometry expected = ring_between(inner, outer, operators);
                EXPECT_LE(symmetric_difference(found, expected, operators), 1e-9 * operators.Area(outer)) << name;
                EXPECT_TRUE(tests::is_valid(found)) << name;
                if (!inner.IsNull()) ++compared;
            }
            inner = outer;
        }
    };
    for (std::uint64_t seed = 1; seed <= 10; ++seed) {
        const Surface hills = tests::random_bumps(kPlace, 60, 1, 5, 0.4, seed);
        const double top = hills.Maximum();
        compare(hills, {0.9 * top, 0.7 * top, 0.5 * top, 0.499999 * top, 0.3 * top}, "hills " + std::to_string(seed));
        Surface steps = tests::random_steps({1000, 2000, 10, 14, 11}, 4, seed);
        for (std::int32_t c = 0; c < 14; ++c) {
            for (std::int32_t r = 0; r < 11; ++r) {
                if (c == 0 || r == 0 || c == 13 || r == 10) steps.Cells[static_cast<std::size_t>(r * 14 + c)] = 0.0F;
            }
        }
        compare(steps, {3, 2.5, 2, 1, 0.5}, "steps " + std::to_string(seed));
    }
    EXPECT_GT(compared, 40);
}

TEST(ReachesBorder, Tells_shapes_on_the_edge_from_those_inside) {
    const platform::Extent bounds{0, 0, 10, 10};
    const auto shape = [](double x) {
        return Geometry{platform::ShapeType::kPolygon, {}, {{{x, 2}, {x, 4}, {x + 2, 4}, {x, 2}}}};
    };
    EXPECT_FALSE(reaches_border(shape(3), bounds));
    EXPECT_TRUE(reaches_border(shape(0), bounds));
    EXPECT_TRUE(reaches_border(shape(8), bounds));
    EXPECT_FALSE(reaches_border({}, bounds));
}

}  // namespace
}  // namespace wxl::isopleths
