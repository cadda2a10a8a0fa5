#include "tests/contract/contour_contract.h"

#include "tests/contract/raster_contract.h"

#include <algorithm>
#include <cmath>
#include <gmock/gmock.h>
#include <limits>
#include <numbers>
#include <set>

using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;
using wxl::platform::ContourLine;
using wxl::platform::Point;
using wxl::platform::RasterGeometry;

namespace wxl::tests {
namespace {

bool is_closed(const ContourLine& line) {
    return line.Vertices.front() == line.Vertices.back();
}

bool lies_on_edge(const Point& point, const RasterGeometry& geometry) {
    const auto bounds = geometry.Bounds();
    return point.X == bounds.XMin || point.X == bounds.XMax || point.Y == bounds.YMin || point.Y == bounds.YMax;
}

double area_of(const ContourLine& line) {
    double twice = 0.0;
    for (std::size_t i = 1; i < line.Vertices.size(); ++i)
        twice += line.Vertices[i - 1].X * line.Vertices[i].Y - line.Vertices[i].X * line.Vertices[i - 1].Y;
    return std::abs(twice) / 2.0;
}

std::vector<double> values_of(const std::vector<ContourLine>& lines) {
    std::vector<double> values;
    for (const auto& line : lines) values.push_back(line.Value);
    std::sort(values.begin(), values.end());
    return values;
}

/// A cone of the given height at (x, y) that falls to 0 at `radius`, sampled at the cell centres.
std::vector<float> cone(const RasterGeometry& geometry, double x, double y, double radius, double height) {
    std::vector<float> cells;
    for (int row = 0; row < geometry.Rows; ++row) {
        for (int column = 0; column < geometry.Columns; ++column) {
            const double dx = geometry.OriginX + (column + 0.5) * geometry.CellSize - x;
            const double dy = geometry.OriginY + (geometry.Rows - row - 0.5) * geometry.CellSize - y;
            cells.push_back(static_cast<float>(std::max(0.0, height * (1.0 - std::hypot(dx, dy) / radius))));
        }
    }
    return cells;
}

}  // namespace

GTEST_ALLOW_UNINSTANTIATED_PARAMETERIZED_TEST(ContourContract);

std::vector<ContourLine> ContourContract::Contours(const RasterGeometry& geometry, std::span<const float> cells,
                                                   const std::vector<double>& levels) {
    const platform::RasterDefinition definition{"K3", GetParam().Where.RasterFormat, geometry, {}};
    if (m_stage->Rasters().Exists(m_stage->Folder(), "K3")) m_stage->Rasters().Delete(m_stage->Folder(), "K3");
    const auto writer = m_stage->Rasters().Create(m_stage->Folder(), definition);
    write_rows(*writer, definition, cells);
    const auto raster = writer->Publish();
    return m_operation->Contours(*raster, levels);
}

// One cell of 4 in a field of zeros: the level 1 is crossed 3/4 of a cell away from its centre in each direction.
TEST_P(ContourContract, A_single_peak_is_a_diamond) {
    const RasterGeometry geometry{100.0, 200.0, 10.0, 3, 3};
    const auto lines = Contours(geometry, std::vector<float>{0, 0, 0, 0, 4, 0, 0, 0, 0}, {1.0});
    ASSERT_THAT(lines, SizeIs(1));
    EXPECT_EQ(lines[0].Value, 1.0);
    EXPECT_TRUE(is_closed(lines[0]));
    EXPECT_NEAR(area_of(lines[0]), 2.0 * 7.5 * 7.5, 1e-9);
    for (const Point& vertex : lines[0].Vertices)
        EXPECT_NEAR(std::abs(vertex.X - 115.0) + std::abs(vertex.Y - 215.0), 7.5, 1e-9);
}

// Columns 0 and 10: the line runs straight through, from the raster's upper edge to its lower edge.
TEST_P(ContourContract, A_line_that_leaves_the_raster_ends_on_its_outer_edge) {
    const RasterGeometry geometry{0.5, 0.25, 3.0, 2, 2};
    const auto lines = Contours(geometry, std::vector<float>{0, 10, 0, 10}, {5.0});
    ASSERT_THAT(lines, SizeIs(1));
    const auto& vertices = lines[0].Vertices;
    EXPECT_FALSE(is_closed(lines[0]));
    EXPECT_TRUE(lies_on_edge(vertices.front(), geometry));
    EXPECT_TRUE(lies_on_edge(vertices.back(), geometry));
    for (const Point& vertex : vertices) EXPECT_NEAR(vertex.X, 3.5, 1e-12);
    EXPECT_EQ(std::max(vertices.front().Y, vertices.back().Y), 6.25);
    EXPECT_EQ(std::min(vertices.front().Y, vertices.back().Y), 0.25);
}

TEST_P(ContourContract, Every_open_end_lies_exactly_on_the_edge) {
    // A cell size and origin that doubles cannot hold exactly.
    const RasterGeometry geometry{0.1, 4649000.7, 0.3, 61, 47};
    const auto lines = Contours(geometry, checked_cells(61, 47), {-100.0, 0.0, 3000.0});
    int open = 0;
    for (const auto& line : lines) {
        if (is_closed(line)) continue;
        ++open;
        EXPECT_TRUE(lies_on_edge(line.Vertices.front(), geometry));
        EXPECT_TRUE(lies_on_edge(line.Vertices.back(), geometry));
    }
    EXPECT_GT(open, 10);
}

TEST_P(ContourContract, Levels_in_any_order_and_repeated_give_each_line_once) {
    const RasterGeometry geometry{0.0, 0.0, 1.0, 41, 41};
    const auto cells = cone(geometry, 20.5, 20.5, 15.0, 1.0);
    const std::vector<double> levels = {0.7, 0.2, 0.5, 0.2, 0.7};
    EXPECT_THAT(values_of(Contours(geometry, cells, levels)), ElementsAre(0.2, 0.5, 0.7));
}

TEST_P(ContourContract, Values_come_back_exactly_as_asked_for) {
    const RasterGeometry geometry{0.0, 0.0, 1.0, 41, 41};
    const auto cells = cone(geometry, 20.5, 20.5, 15.0, 1.0);
    const double third = 1.0 / 3.0;
    const double next = std::nextafter(third, 1.0);
    EXPECT_THAT(values_of(Contours(geometry, cells, {next, 0.1, third})), ElementsAre(0.1, third, next));
}

TEST_P(ContourContract, A_cone_gives_circles) {
    const RasterGeometry geometry{500000.0, 4649000.0, 10.0, 101, 101};
    const auto lines = Contours(geometry, cone(geometry, 500505.0, 4649505.0, 400.0, 1000.0), {250.0});
    ASSERT_THAT(lines, SizeIs(1));
    // 250 of 1000 is met at three quarters of the radius. Chords of a cell's length cut the circle by under 0.1 %.
    EXPECT_NEAR(area_of(lines[0]) / (std::numbers::pi * 300.0 * 300.0), 1.0, 1e-3);
}

// Densities are often far below 1e-6; their contours have the same shape as those of large values.
TEST_P(ContourContract, Tiny_and_huge_values_are_contoured_alike) {
    const RasterGeometry geometry{0.0, 0.0, 1.0, 61, 61};
    const auto lines = Contours(geometry, cone(geometry, 31.3, 29.9, 22.0, 1.0), {0.3});
    ASSERT_THAT(lines, SizeIs(1));
    for (const double size : {std::ldexp(1.0, -100), std::ldexp(1.0, -30), std::ldexp(1.0, 90)}) {
        const auto other = Contours(geometry, cone(geometry, 31.3, 29.9, 22.0, size), {0.3 * size});
        ASSERT_THAT(other, SizeIs(1)) << size;
        EXPECT_EQ(other[0].Vertices, lines[0].Vertices) << size;
    }
}

TEST_P(ContourContract, Levels_above_all_cells_and_below_give_nothing) {
    const RasterGeometry geometry{0.0, 0.0, 1.0, 3, 3};
    const std::vector<float> cells = {0, 0, 0, 0, 4, 0, 0, 0, 0};
    EXPECT_THAT(Contours(geometry, cells, {5.0, -1.0}), IsEmpty());
    EXPECT_THAT(Contours(geometry, cells, {}), IsEmpty());
}

TEST_P(ContourContract, A_flat_raster_has_no_lines) {
    const RasterGeometry geometry{0.0, 0.0, 1.0, 5, 5};
    EXPECT_THAT(Contours(geometry, std::vector<float>(25, 2.0F), {1.0, 2.0, 3.0}), IsEmpty());
    EXPECT_THAT(Contours(geometry, std::vector<float>(25, 0.0F), {0.0}), IsEmpty());
}

TEST_P(ContourContract, One_cell_has_no_lines) {
    EXPECT_THAT(Contours({0.0, 0.0, 1.0, 1, 1}, std::vector<float>{3.0F}, {1.0, 3.0, 4.0}), IsEmpty());
}

TEST_P(ContourContract, A_cell_equal_to_a_level_gives_well_formed_lines) {
    const RasterGeometry geometry{0.0, 0.0, 1.0, 4, 3};
    const auto lines = Contours(geometry, std::vector<float>{0, 0, 0, 0, 0, 2, 2, 0, 0, 0, 0, 0}, {2.0, 1.0});
    ASSERT_GE(lines.size(), 1U);
    for (const auto& line : lines) {
        EXPECT_TRUE(is_closed(line));
        EXPECT_GE(line.Vertices.size(), 2U);
    }
}

// From the lowest values a format can hold up to 4 the level 1 is met, for a double, at the very centre of the high
// cell: the line runs through the centres of the high cells, and around a single one it is no line.
TEST_P(ContourContract, Very_low_cells_are_values_like_any_other) {
    const RasterGeometry geometry{0.0, 0.0, 1.0, 5, 5};
    std::vector<float> cells(25, -3.4e38F);
    cells[12] = 4.0F;
    EXPECT_THAT(Contours(geometry, cells, {1.0}), IsEmpty());
    for (const std::size_t cell : {6U, 7U, 8U, 11U, 13U, 16U, 17U, 18U}) cells[cell] = 4.0F;
    const auto lines = Contours(geometry, cells, {1.0});
    ASSERT_THAT(lines, SizeIs(1));
    EXPECT_TRUE(is_closed(lines[0]));
    EXPECT_NEAR(area_of(lines[0]), 4.0, 1e-9);
}

TEST_P(ContourContract, Levels_that_are_no_numbers_are_5) {
    const std::vector<float> cells(4, 1.0F);
    constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
    constexpr double kInfinity = std::numeric_limits<double>::infinity();
    EXPECT_EQ(error_of([&] { Contours({0.0, 0.0, 1.0, 2, 2}, cells, {1.0, kNaN}); }), 5);
    EXPECT_EQ(error_of([&] { Contours({0.0, 0.0, 1.0, 2, 2}, cells, {kInfinity}); }), 5);
}

// The literal twin: a vertex stands wherever the level lies between two neighbouring cell centres, and on the outer
// edge opposite such a place between two outer cells; nowhere else.
TEST_P(ContourContract, Vertices_stand_at_every_crossing_and_nowhere_else) {
    const RasterGeometry geometry{0.0, 0.0, 1.0, 23, 19};
    const auto cells = checked_cells(23, 19);
    const double level = 123.456;
    const auto at = [&](int column, int row) {
        return static_cast<double>(cells[static_cast<std::size_t>(row * 23 + column)]);
    };
    // Rounded to 1e-6 of a cell, so that the order of the arithmetic does not matter.
    using Place = std::pair<long, long>;
    const auto place = [](double x, double y) { return Place{std::lround(x * 1e6), std::lround(y * 1e6)}; };
    std::set<Place> expected;
    for (int row = 0; row < 19; ++row) {
        for (int column = 0; column < 23; ++column) {
            const double here = at(column, row);
            const double x = column + 0.5;
            const double y = 18.5 - row;
            if (column < 22 && (here < level) != (at(column + 1, row) < level)) {
                const double crossing = x + (level - here) / (at(column + 1, row) - here);
                expected.insert(place(crossing, y));
                if (row == 0) expected.insert(place(crossing, 19.0));
                if (row == 18) expected.insert(place(crossing, 0.0));
            }
            if (row < 18 && (here < level) != (at(column, row + 1) < level)) {
                const double crossing = y - (level - here) / (at(column, row + 1) - here);
                expected.insert(place(x, crossing));
                if (column == 0) expected.insert(place(0.0, crossing));
                if (column == 22) expected.insert(place(23.0, crossing));
            }
        }
    }
    std::set<Place> met;
    for (const auto& line : Contours(geometry, cells, {level}))
        for (const Point& vertex : line.Vertices) met.insert(place(vertex.X, vertex.Y));
    EXPECT_GT(expected.size(), 300U);
    EXPECT_EQ(met, expected);
}

}  // namespace wxl::tests
