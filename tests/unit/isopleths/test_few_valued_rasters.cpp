// Isopleths of rasters with few different values: contours run through cell centres, touch each other and themselves,
// and meet the raster's edge in single cells.

#include "isopleths/rings.h"
#include "tests/unit/isopleths/isopleth_rig.h"
#include "tests/unit/isopleths/polygonized.h"

#include <array>
#include <gtest/gtest.h>
#include <map>

namespace wxl::isopleths {
namespace {

using platform::Geometry;
using platform::Point;
using platform::RasterGeometry;
using tests::IsoplethRig;
using tests::Surface;

Surface drawn(const std::vector<std::vector<float>>& rows) {
    const RasterGeometry geometry{500000, 4000000, 25, static_cast<std::int32_t>(rows.at(0).size()),
                                  static_cast<std::int32_t>(rows.size())};
    Surface surface{geometry, {}};
    for (const auto& row : rows) surface.Cells.insert(surface.Cells.end(), row.begin(), row.end());
    return surface;
}

/// One run's outcome by percentage.
struct Outcome {
    std::vector<double> Levels;
    std::vector<std::optional<double>> Told;
    std::vector<Geometry> Polygons;  ///< null where there is none
    std::vector<Geometry> Donuts;
};

std::map<double, Geometry> shapes_by(const memory::MemoryFeatureClass& features, const std::string& field) {
    std::map<double, Geometry> shapes;
    const auto cursor = const_cast<memory::MemoryFeatureClass&>(features).Find({});
    for (const double percent : IsoplethRig::Column(features, field)) shapes[percent] = cursor->NextFeature()->Shape();
    return shapes;
}

Outcome isopleths_of(const Surface& surface, const std::vector<double>& percentages) {
    IsoplethRig rig;
    clsHISO hiso = rig.Object(surface, percentages);
    hiso.CreateIsopleths();
    EXPECT_TRUE(hiso.GetErrorStatus() == 0 || hiso.GetErrorStatus() == 3000) << hiso.GetErrorStatus();
    Outcome outcome{hiso.GetLevels(), hiso.GetAreas(), {}, {}};
    outcome.Polygons.resize(percentages.size());
    outcome.Donuts.resize(percentages.size());
    if (hiso.GetErrorStatus() != 0) return outcome;
    auto polygons = shapes_by(*rig.Output("_poly"), "PERCENT");
    auto donuts = shapes_by(*rig.Output("_donut"), "PERCENT2");
    for (std::size_t i = 0; i < percentages.size(); ++i) {
        // A level that repeats an earlier one has its features there.
        const auto first = std::ranges::find(outcome.Levels, outcome.Levels[i]) - outcome.Levels.begin();
        outcome.Polygons[i] = polygons[percentages[static_cast<std::size_t>(first)]];
        outcome.Donuts[i] = donuts[percentages[i]];
    }
    return outcome;
}

/// Whether a point lies within an odd number of rings; points on a ring may count either way.
bool lies_in(const Geometry& polygon, const Point& point) {
    bool inside = false;
    for (const Ring& ring : polygon.Parts) {
        for (std::size_t i = 1; i < ring.size(); ++i) {
            const Point& a = ring[i - 1];
            const Point& b = ring[i];
            if ((a.Y > point.Y) == (b.Y > point.Y)) continue;
            if (a.X + (point.Y - a.Y) / (b.Y - a.Y) * (b.X - a.X) > point.X) inside = !inside;
        }
    }
    return inside;
}

Point centre_of(const RasterGeometry& place, std::int32_t column, std::int32_t row) {
    return {place.OriginX + (column + 0.5) * place.CellSize, place.Bounds().YMax - (row + 0.5) * place.CellSize};
}

template <class Action>
void for_each_cell(const Surface& surface, Action&& action) {
    for (std::int32_t row = 0; row < surface.Geometry.Rows; ++row) {
        for (std::int32_t column = 0; column < surface.Geometry.Columns; ++column)
            action(centre_of(surface.Geometry, column, row), static_cast<double>(surface.Cell(column, row)));
    }
}

/// A level is a sum of a few roundings: cells this close to it stand on either side.
constexpr double kRounding = 1e-9;

/// One square between four cell centres, or the part of one between outer centres and the raster's edge, on which the
/// values go on as they are.
struct Square {
    std::array<double, 4> Values;  ///< clockwise
    double Width, Height;
};

/// The area at or above a level within a square, where each side is crossed by linear interpolation. Of two
/// opposite high corners the contourer always joins north-west to south-east and keeps the others apart, so that
/// contours of several levels cannot cross.
double area_above(const Square& square, double level) {
    const std::array<Point, 4> corners = {Point{0, 0}, Point{square.Width, 0}, Point{square.Width, -square.Height},
                                          Point{0, -square.Height}};
    const auto isHigh = [&](std::size_t i) { return square.Values[i % 4] >= level - kRounding; };
    const auto crossing = [&](std::size_t i, std::size_t j) {
        const double share = (level - square.Values[i % 4]) / (square.Values[j % 4] - square.Values[i % 4]);
        const Point& a = corners[i % 4];
        const Point& b = corners[j % 4];
        return Point{a.X + share * (b.X - a.X), a.Y + share * (b.Y - a.Y)};
    };
    const auto closed = [](Ring ring) {
        if (!ring.empty()) ring.push_back(ring.front());
        return clockwise_area(ring);
    };
    const bool isApart = isHigh(1) && isHigh(3) && !isHigh(0) && !isHigh(2);
    double area = 0.0;
    Ring one;
    for (std::size_t i = 0; i < 4; ++i) {
        if (isApart && isHigh(i)) area += closed({crossing(i, i + 3), corners[i], crossing(i, i + 1)});
        if (isHigh(i)) one.push_back(corners[i]);
        if (isHigh(i) != isHigh(i + 1)) one.push_back(crossing(i, i + 1));
    }
    return isApart ? area : closed(std::move(one));
}

/// The same for a whole raster, square by square.
double area_above(const Surface& surface, double level) {
    const RasterGeometry& place = surface.Geometry;
    const auto value = [&](std::int32_t column, std::int32_t row) {
        return static_cast<double>(
            surface.Cell(std::clamp(column, 0, place.Columns - 1), std::clamp(row, 0, place.Rows - 1)));
    };
    const auto side = [](std::int32_t i, std::int32_t count) { return i == 0 || i == count ? 0.5 : 1.0; };
    double area = 0.0;
    for (std::int32_t row = 0; row <= place.Rows; ++row) {
        for (std::int32_t column = 0; column <= place.Columns; ++column)
            area += area_above(
                {{value(column - 1, row - 1), value(column, row - 1), value(column, row), value(column - 1, row)},
                 side(column, place.Columns),
                 side(row, place.Rows)},
                level);
    }
    return area * place.CellSize * place.CellSize;
}

void expect_true_of_cells(const Surface& surface, const Outcome& outcome, std::size_t i) {
    const double level = outcome.Levels[i];
    for_each_cell(surface, [&](const Point& centre, double value) {
        if (std::abs(value - level) <= kRounding) return;
        EXPECT_EQ(lies_in(outcome.Polygons[i], centre), value > level) << value << " against level " << level;
        const bool inInner = i > 0 && value > outcome.Levels[i - 1];
        if (i > 0 && std::abs(value - outcome.Levels[i - 1]) <= kRounding) return;
        EXPECT_EQ(lies_in(outcome.Donuts[i], centre), value > level && !inInner) << "donut, " << value;
    });
}

/// What holds of every raster: areas grow with the percentage, what is told is what is drawn, rings are disjoint and
/// add up, and every cell lies where its value says.
void expect_sound(const Surface& surface, const std::vector<double>& percentages) {
    const Outcome outcome = isopleths_of(surface, percentages);
    const double whole = surface.Geometry.Bounds().Width() * surface.Geometry.Bounds().Height();
    const double rounding = 1e-7 * whole;
    files::GeosOperators operators;
    double last = 0.0;
    double donuts = 0.0;
    for (std::size_t i = 0; i < percentages.size(); ++i) {
        SCOPED_TRACE(percentages[i]);
        const double area = area_of(outcome.Polygons[i]);
        EXPECT_NEAR(outcome.Told[i].value_or(0.0), area, rounding);
        EXPECT_NEAR(area, area_above(surface, outcome.Levels[i]), rounding);
        EXPECT_GE(area, last - rounding);
        EXPECT_LE(area, whole + rounding);
        EXPECT_TRUE(tests::is_valid(outcome.Polygons[i]));
        EXPECT_TRUE(tests::is_valid(outcome.Donuts[i]));
        donuts += area_of(outcome.Donuts[i]);
        EXPECT_NEAR(donuts, area, rounding);
        if (i > 0 && !outcome.Donuts[i].IsNull() && !outcome.Polygons[i - 1].IsNull()) {
            const double outside = operators.Area(operators.Difference(outcome.Donuts[i], outcome.Polygons[i - 1]));
            EXPECT_NEAR(outside, area_of(outcome.Donuts[i]), rounding) << "a ring reaches into the one before it";
        }
        expect_true_of_cells(surface, outcome, i);
        last = area;
    }
}

Surface random_few(std::uint64_t seed) {
    tests::Dice dice(seed);
    const RasterGeometry geometry{500000, 4000000, 25, 2 + static_cast<std::int32_t>(dice.Uniform() * 8),
                                  2 + static_cast<std::int32_t>(dice.Uniform() * 6)};
    const double values = 2 + std::floor(dice.Uniform() * 3);
    const double shareOfZero = dice.Uniform() * 0.8;
    return tests::surface_of(geometry, [&](double, double) {
        return dice.Uniform() < shareOfZero ? 0.0 : std::floor(dice.Uniform() * values);
    });
}

std::string text_of(const Surface& surface) {
    std::string text;
    for (std::size_t i = 0; i < surface.Cells.size(); ++i) {
        text += std::to_string(static_cast<int>(surface.Cells[i]));
        text += (i + 1) % static_cast<std::size_t>(surface.Geometry.Columns) == 0 ? '\n' : ' ';
    }
    return text;
}

// 50 % is reached by the cells at 1. Three in a row have their polygon between the outer centres: two cells wide, and
// from the raster's edge to the centres half a cell high.
TEST(FewValuedRasters, A_single_cell_in_the_middle_of_a_low_edge_does_not_turn_the_sides_round) {
    const Outcome outcome = isopleths_of(
        drawn({{0, 1, 1, 1, 0, 0}, {0, 0, 0, 0, 0, 0}, {0, 0, 0, 0, 0, 0}, {0, 0, 0, 0, 0, 0}, {0, 0, 0, 1, 0, 0}}),
        {50});
    EXPECT_EQ(outcome.Levels, std::vector<double>{1});
    ASSERT_TRUE(outcome.Told.at(0).has_value());
    EXPECT_NEAR(*outcome.Told[0], 625, 1e-3);
    EXPECT_NEAR(area_of(outcome.Polygons.at(0)), 625, 1e-3);
}

// A ring around a plateau that comes back to a cell on its way: drawn along, it runs around hole and plateau in one
// direction, and its signed area has the hole twice too much.
TEST(FewValuedRasters, The_area_told_is_the_area_drawn_where_a_hole_touches_its_shell) {
    const Surface surface = drawn({{1, 0, 0, 0, 0, 1, 1, 1},
                                   {1, 0, 1, 1, 0, 0, 1, 0},
                                   {1, 0, 1, 0, 1, 1, 0, 0},
                                   {0, 1, 1, 1, 1, 0, 0, 0},
                                   {1, 0, 1, 0, 1, 0, 0, 1}});
    const Outcome outcome = isopleths_of(surface, {50});
    EXPECT_NEAR(outcome.Told.at(0).value_or(0.0), 5000, 1e-3);
    EXPECT_NEAR(area_of(outcome.Polygons.at(0)), 5000, 1e-3);
    EXPECT_TRUE(tests::is_valid(outcome.Polygons.at(0)));
}

TEST(FewValuedRasters, Areas_rings_and_cells_agree_on_5000_random_rasters) {
    for (std::uint64_t seed = 1; seed <= 5000; ++seed) {
        const Surface surface = random_few(seed);
        if (surface.Minimum() == surface.Maximum()) continue;
        SCOPED_TRACE("seed " + std::to_string(seed) + "\n" + text_of(surface));
        expect_sound(surface, {20, 50, 80, 100});
    }
}

}  // namespace
}  // namespace wxl::isopleths
