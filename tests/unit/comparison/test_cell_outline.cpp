#include "comparison/cell_outline.h"
#include "comparison/overlap.h"
#include "tests/unit/comparison/density_scenes.h"

#include <cmath>
#include <cstdint>
#include <gtest/gtest.h>
#include <random>
#include <set>
#include <string>
#include <utility>
#include <vector>

namespace wxl::comparison {
namespace {

using platform::Geometry;
using platform::Point;

/// A window of cells drawn with '#', the first line northernmost.
CellWindow drawn(const std::vector<std::string>& lines) {
    CellWindow window;
    window.Rows = static_cast<std::int32_t>(lines.size());
    window.Columns = static_cast<std::int32_t>(lines.front().size());
    for (const std::string& line : lines)
        for (const char c : line) {
            window.Inside.push_back(c == '#' ? 1 : 0);
            window.Cells += c == '#' ? 1 : 0;
        }
    return window;
}

platform::RasterGeometry grid_of(const CellWindow& window) {
    return {100.0, 200.0, 10.0, window.Columns, window.Rows};
}

/// Square map units, holes taken off; outer rings turn like the hands of a clock.
double area_of(const std::vector<Point>& ring) {
    double sum = 0.0;
    for (std::size_t i = 1; i < ring.size(); ++i)
        sum += (ring[i].X - ring[0].X) * (ring[i - 1].Y - ring[0].Y) -
               (ring[i - 1].X - ring[0].X) * (ring[i].Y - ring[0].Y);
    return sum / 2.0;
}

double area_of(const Geometry& shape) {
    double sum = 0.0;
    for (const auto& ring : shape.Parts) sum += area_of(ring);
    return sum;
}

TEST(CellOutline, A_rectangle_has_four_corners) {
    const CellWindow cells = drawn({"....", ".##.", "...."});
    const Geometry shape = cell_outline(grid_of(cells), cells);
    ASSERT_EQ(shape.Parts.size(), 1U);
    EXPECT_EQ(shape.Type, platform::ShapeType::kPolygon);
    EXPECT_EQ(shape.Parts[0], (std::vector<Point>{{130, 220}, {130, 210}, {110, 210}, {110, 220}, {130, 220}}));
}

TEST(CellOutline, No_cell_is_no_shape) {
    const CellWindow cells = drawn({"...", "..."});
    EXPECT_TRUE(cell_outline(grid_of(cells), cells).IsNull());
    EXPECT_TRUE(cell_outline({0.0, 0.0, 1.0, 5, 5}, {}).IsNull());
}

TEST(CellOutline, Holes_follow_their_outer_ring) {
    const CellWindow cells = drawn({"###..", "#.#..", "###.#"});
    const Geometry shape = cell_outline(grid_of(cells), cells);
    ASSERT_EQ(shape.Parts.size(), 3U);
    EXPECT_EQ(area_of(shape.Parts[0]), 900.0);
    EXPECT_EQ(area_of(shape.Parts[1]), -100.0);
    EXPECT_EQ(area_of(shape.Parts[2]), 100.0);
}

TEST(CellOutline, Cells_that_touch_in_a_corner_are_two_parts) {
    const CellWindow cells = drawn({"#.", ".#"});
    const Geometry shape = cell_outline(grid_of(cells), cells);
    ASSERT_EQ(shape.Parts.size(), 2U);
    EXPECT_EQ(area_of(shape.Parts[0]), 100.0);
    EXPECT_EQ(area_of(shape.Parts[1]), 100.0);
}

TEST(CellOutline, A_ring_that_meets_itself_encloses_a_hole) {
    const CellWindow cells = drawn({"###", "#.#", "##."});
    const Geometry shape = cell_outline(grid_of(cells), cells);
    ASSERT_EQ(shape.Parts.size(), 2U);
    EXPECT_EQ(area_of(shape.Parts[0]), 800.0);
    EXPECT_EQ(area_of(shape.Parts[1]), -100.0);
}

TEST(CellOutline, Holes_that_touch_in_a_corner_are_two) {
    const CellWindow cells = drawn({"####", "#.##", "##.#", "####"});
    const Geometry shape = cell_outline(grid_of(cells), cells);
    ASSERT_EQ(shape.Parts.size(), 3U);
    EXPECT_EQ(area_of(shape.Parts[0]), 1600.0);
    EXPECT_EQ(area_of(shape.Parts[1]), -100.0);
    EXPECT_EQ(area_of(shape.Parts[2]), -100.0);
}

TEST(CellOutline, Random_cells_keep_their_area_and_no_ring_meets_a_corner_twice) {
    for (std::uint64_t seed = 1; seed <= 200; ++seed) {
        std::mt19937_64 random(seed);
        CellWindow cells;
        cells.Rows = 12;
        cells.Columns = 9;
        const std::uint64_t of = 2 + random() % 3;
        for (int cell = 0; cell < 108; ++cell) cells.Inside.push_back(random() % of != 0 ? 1 : 0);
        for (const char inside : cells.Inside) cells.Cells += inside;
        const Geometry shape = cell_outline(grid_of(cells), cells);
        EXPECT_EQ(area_of(shape), 100.0 * static_cast<double>(cells.Cells)) << seed;
        for (const auto& ring : shape.Parts) {
            std::set<std::pair<double, double>> met;
            for (std::size_t i = 1; i < ring.size(); ++i) EXPECT_TRUE(met.emplace(ring[i].X, ring[i].Y).second) << seed;
            EXPECT_GE(ring.size(), 5U) << seed;
        }
    }
}

TEST(CellOutline, Of_two_ranges_is_as_large_as_their_overlap_counts) {
    const platform::RasterGeometry grid = square_grid(120, 5.0);
    const DensitySet set = set_of(
        grid, {gaussian(grid, 250.0, 300.0, 60.0), gaussian(grid, 340.0, 310.0, 50.0), gaussian(grid, 20.0, 20.0, 5.0)},
        {95.0, 50.0});
    const std::vector<PairOverlap> pairs = overlaps(set, {.AllPairs = true});
    for (std::size_t percent = 0; percent < 2; ++percent) {
        const CellWindow common = common_cells(set, 0, 1, percent);
        const OverlapIndices indices = find(pairs, 0, 1, set.Percents[percent]).Indices.value();
        const auto cells = static_cast<double>(set.Animals[0].Ranges()[percent].Cells);
        EXPECT_NEAR(static_cast<double>(common.Cells), indices.HrIj * cells, 1e-9 * cells);
        EXPECT_GT(common.Cells, 0);
        EXPECT_EQ(area_of(cell_outline(grid, common)), 25.0 * static_cast<double>(common.Cells));
        EXPECT_EQ(range_cells(set, 0, percent).Cells, set.Animals[0].Ranges()[percent].Cells);
        EXPECT_EQ(common_cells(set, 0, 2, percent).Cells, 0);
    }
}

}  // namespace
}  // namespace wxl::comparison
