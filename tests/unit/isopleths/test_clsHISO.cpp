#include "isopleths/clsHISO.h"
#include "platform/runtime_error.h"
#include "tests/unit/isopleths/isopleth_rig.h"

#include <gtest/gtest.h>
#include <numbers>

namespace wxl::isopleths {
namespace {

using platform::RasterGeometry;
using tests::IsoplethRig;
using tests::Surface;

using Names = std::vector<std::string>;
using Numbers = std::vector<double>;

/// A gaussian bump of standard deviation 12 cells of 10 units in the middle of 101 x 101 cells.
Surface bump() {
    return tests::surface_of({1000, 2000, 10, 101, 101}, [](double column, double row) {
        const double x = column - 50;
        const double y = row - 50;
        return 1000.0 * std::exp(-0.5 * (x * x + y * y) / 144.0);
    });
}

/// 20 x 20 cells, zero but for a plateau of 6 x 6 with heights 1 and, in its middle, 2 x 2 of height 2.
Surface terraces() {
    return tests::surface_of({0, 0, 1, 20, 20}, [](double column, double row) {
        const double d = std::max(std::abs(column - 9.5), std::abs(row - 9.5));
        return d < 1 ? 2.0 : d < 3 ? 1.0 : 0.0;
    });
}

TEST(clsHISO, Starts_without_error_and_results) {
    IsoplethRig rig;
    const clsHISO hiso(rig.Services, rig.Utilities());
    EXPECT_EQ(hiso.GetErrorStatus(), 0);
    EXPECT_EQ(hiso.GetMaxEdgeValue(), 0.0);
    EXPECT_EQ(hiso.GetLinesFeatureClass(), nullptr);
    EXPECT_EQ(hiso.GetPolysFeatureClass(), nullptr);
    EXPECT_EQ(hiso.GetDonutsFeatureClass(), nullptr);
}

TEST(clsHISO, Setters_refuse_nothing_with_their_codes) {
    IsoplethRig rig;
    clsHISO dataset(rig.Services, rig.Utilities());
    dataset.SetRasterDataset(nullptr);
    EXPECT_EQ(dataset.GetErrorStatus(), 1001);
    clsHISO band(rig.Services, rig.Utilities());
    band.SetRasterBand(nullptr);
    EXPECT_EQ(band.GetErrorStatus(), 1002);
    clsHISO folder(rig.Services, rig.Utilities());
    folder.SetOutputFolder("");
    EXPECT_EQ(folder.GetErrorStatus(), 1004);
    clsHISO name(rig.Services, rig.Utilities());
    name.SetOutputName("");
    EXPECT_EQ(name.GetErrorStatus(), 1004);
    EXPECT_TRUE(rig.Messages.Boxes().empty());
}

TEST(clsHISO, Preconditions_are_checked_in_order_and_silently) {
    IsoplethRig rig;
    const Surface surface = bump();
    clsHISO hiso(rig.Services, rig.Utilities());
    hiso.CreateIsopleths();
    EXPECT_EQ(hiso.GetErrorStatus(), 2001);
    hiso.SetRasterBand(memory::MakeRaster("r", surface.Geometry, surface.Cells)->Band());
    hiso.CreateIsopleths();
    EXPECT_EQ(hiso.GetErrorStatus(), 2002);
    hiso.SetCalculateDonuts(true);
    hiso.CreateIsopleths();
    EXPECT_EQ(hiso.GetErrorStatus(), 2006);
    hiso.SetOutputFolder("/out");
    hiso.CreateIsopleths();
    EXPECT_EQ(hiso.GetErrorStatus(), 2006);
    EXPECT_TRUE(rig.Messages.Boxes().empty());
    EXPECT_TRUE(rig.Shapefiles.Published().empty());
}

TEST(clsHISO, A_good_call_never_clears_an_earlier_code) {
    IsoplethRig rig;
    clsHISO hiso = rig.Object(bump(), {50, 95});
    hiso.SetRasterDataset(nullptr);  // the dataset set before stays
    hiso.CreateIsopleths();
    EXPECT_EQ(hiso.GetErrorStatus(), 1001);
    EXPECT_NE(rig.Output("_poly"), nullptr);
    EXPECT_TRUE(rig.Messages.Boxes().empty());
}

TEST(clsHISO, Setting_no_band_leaves_the_band_set_before_in_place) {
    IsoplethRig rig;
    const Surface surface = bump();
    clsHISO hiso(rig.Services, rig.Utilities());
    hiso.SetRasterBand(memory::MakeRaster("r", surface.Geometry, surface.Cells)->Band());
    hiso.SetRasterBand(nullptr);
    hiso.SetCalculatePolys(true);
    hiso.SetIsoplethBoundaries({50});
    hiso.SetOutputFolder("/out");
    hiso.SetOutputName("ELK12_iso");
    hiso.CreateIsopleths();
    EXPECT_EQ(hiso.GetErrorStatus(), 1002);
    EXPECT_NE(rig.Output("_poly"), nullptr);
    EXPECT_TRUE(rig.Messages.Boxes().empty());
}

TEST(clsHISO, An_empty_name_leaves_the_earlier_one_in_place) {
    IsoplethRig rig;
    clsHISO hiso = rig.Object(bump(), {50});
    hiso.SetOutputName("");
    hiso.SetOutputFolder("");
    hiso.CreateIsopleths();
    EXPECT_EQ(hiso.GetErrorStatus(), 1004);
    EXPECT_NE(rig.Output("_line"), nullptr);
}

TEST(clsHISO, Outputs_have_their_names_shapes_fields_and_reference) {
    IsoplethRig rig;
    clsHISO hiso = rig.Object(bump(), {50, 95});
    hiso.CreateIsopleths();
    EXPECT_EQ(hiso.GetErrorStatus(), 0);
    EXPECT_TRUE(rig.Messages.Boxes().empty());
    const auto lines = rig.Output("_line");
    const auto polys = rig.Output("_poly");
    const auto donuts = rig.Output("_donut");
    ASSERT_TRUE(lines && polys && donuts);
    EXPECT_EQ(lines->Shape(), platform::ShapeType::kPolyline);
    EXPECT_EQ(polys->Shape(), platform::ShapeType::kPolygon);
    EXPECT_EQ(donuts->Shape(), platform::ShapeType::kPolygon);
    EXPECT_EQ(rig.FieldNames(*lines), (Names{"ISOPLETH", "PERCENT", "LENGTH"}));
    EXPECT_EQ(rig.FieldNames(*polys), (Names{"ISOPLETH", "PERCENT", "AREA", "PERIMETER"}));
    EXPECT_EQ(rig.FieldNames(*donuts), (Names{"ISOPLETH1", "ISOPLETH2", "PERCENT1", "PERCENT2", "AREA", "PERIMETER"}));
    for (const auto& output : {lines, polys, donuts}) {
        for (const platform::Field& field : output->Table().Fields())
            EXPECT_EQ(field.Type, platform::FieldType::kDouble) << field.Name;
        EXPECT_EQ(output->Reference(), rig.Reference);
    }
    EXPECT_EQ(hiso.GetLinesFeatureClass(), lines);
    EXPECT_EQ(hiso.GetPolysFeatureClass(), polys);
    EXPECT_EQ(hiso.GetDonutsFeatureClass(), donuts);
}

TEST(clsHISO, Areas_are_known_without_polygons) {
    IsoplethRig rig;
    const std::vector<double> percentages = {50, 95, 50, 0};
    clsHISO polygons = rig.Object(bump(), percentages);
    polygons.CreateIsopleths();
    Numbers measured = rig.Column(*rig.Output("_poly"), "AREA");  // from the last percentage to the first

    IsoplethRig other;
    clsHISO lines = other.Object(bump(), percentages);
    lines.SetCalculatePolys(false);
    lines.SetCalculateDonuts(false);
    lines.CreateIsopleths();
    ASSERT_EQ(lines.GetAreas().size(), 4U);
    ASSERT_EQ(measured.size(), 2U);
    EXPECT_NEAR(lines.GetAreas()[0].value(), measured[1], 1e-6 * measured[1]);
    EXPECT_NEAR(lines.GetAreas()[1].value(), measured[0], 1e-6 * measured[0]);
    EXPECT_EQ(lines.GetAreas()[2], lines.GetAreas()[0]) << "a repeated level has the area of its first place";
    EXPECT_EQ(lines.GetAreas()[3], std::nullopt) << "the level of 0 % lies above every cell";
    EXPECT_EQ(lines.GetAreas(), polygons.GetAreas());
    EXPECT_EQ(lines.GetParts(), (std::vector<std::int32_t>{1, 1, 1, 0}));
}

TEST(clsHISO, Lines_follow_the_percentages_and_polygons_run_from_the_last_to_the_first) {
    IsoplethRig rig;
    clsHISO hiso = rig.Object(bump(), {50, 95, 75});
    hiso.CreateIsopleths();
    const auto& levels = hiso.GetLevels();
    ASSERT_EQ(levels.size(), 3U);
    EXPECT_EQ(rig.Column(*rig.Output("_line"), "PERCENT"), (Numbers{50, 95, 75}));
    EXPECT_EQ(rig.Column(*rig.Output("_line"), "ISOPLETH"), levels);
    EXPECT_EQ(rig.Column(*rig.Output("_poly"), "PERCENT"), (Numbers{75, 95, 50}));
    EXPECT_EQ(rig.Column(*rig.Output("_poly"), "ISOPLETH"), (Numbers{levels[2], levels[1], levels[0]}));
}

TEST(clsHISO, Donuts_lie_between_consecutive_percentages) {
    IsoplethRig rig;
    clsHISO hiso = rig.Object(bump(), {50, 75, 95});
    hiso.CreateIsopleths();
    const auto donuts = rig.Output("_donut");
    const auto& levels = hiso.GetLevels();
    EXPECT_EQ(rig.Column(*donuts, "ISOPLETH1"), (Numbers{1000, levels[0], levels[1]}));
    EXPECT_EQ(rig.Column(*donuts, "ISOPLETH2"), levels);
    EXPECT_EQ(rig.Column(*donuts, "PERCENT1"), (Numbers{0, 50, 75}));
    EXPECT_EQ(rig.Column(*donuts, "PERCENT2"), (Numbers{50, 75, 95}));
    const Numbers rings = rig.Column(*donuts, "AREA");
    const Numbers polygons = rig.Column(*rig.Output("_poly"), "AREA");
    EXPECT_NEAR(rings[0], polygons[2], 1e-9 * polygons[2]);
    EXPECT_NEAR(rings[0] + rings[1] + rings[2], polygons[0], 1e-9 * polygons[0]);
}

// The volume above level L of a gaussian bump of peak M falls with the area A as M exp(-A / (2 pi s^2)): the share p
// lies within the area 2 pi s^2 ln(1 / (1 - p)).
TEST(clsHISO, Areas_of_a_gaussian_bump_equal_the_closed_form) {
    IsoplethRig rig;
    const Surface surface = tests::surface_of({0, 0, 10, 301, 301}, [](double column, double row) {
        const double x = column - 150.37;
        const double y = row - 149.81;
        return 100.0 * std::exp(-0.5 * (x * x + y * y) / (25.0 * 25.0));
    });
    const Numbers percentages = {10, 25, 50, 75, 90, 95};
    clsHISO hiso = rig.Object(surface, percentages);
    hiso.CreateIsopleths();
    ASSERT_EQ(hiso.GetErrorStatus(), 0);
    Numbers areas = rig.Column(*rig.Output("_poly"), "AREA");
    std::reverse(areas.begin(), areas.end());
    ASSERT_EQ(areas.size(), percentages.size());
    for (std::size_t i = 0; i < areas.size(); ++i) {
        const double expected = 2.0 * std::numbers::pi * 250.0 * 250.0 * std::log(1.0 / (1.0 - percentages[i] / 100.0));
        // Within four cells of 100: a level stands at a cell of the histogram (1 cell), cells weigh a whole number of
        // bins (0.4), and straight lines between centres lower a summit by up to 1 / (4 s^2) of its height (1.6).
        EXPECT_NEAR(areas[i], expected, 400.0) << percentages[i];
    }
}

// A circle's length and area fit each other: the level 50 % line of the bump has radius s sqrt(2 ln 2).
TEST(clsHISO, Length_and_perimeter_of_a_bump) {
    IsoplethRig rig;
    clsHISO hiso = rig.Object(bump(), {50});
    hiso.CreateIsopleths();
    const double expected = 2.0 * std::numbers::pi * 120.0 * std::sqrt(2.0 * std::numbers::ln2);
    const double length = rig.Column(*rig.Output("_line"), "LENGTH").at(0);
    EXPECT_NEAR(length / expected, 1.0, 0.01);
    EXPECT_DOUBLE_EQ(rig.Column(*rig.Output("_poly"), "PERIMETER").at(0), length);
    EXPECT_DOUBLE_EQ(rig.Column(*rig.Output("_donut"), "PERIMETER").at(0), length);
}

// Cells whose height lies within the polygon hold that share of the volume, on surfaces of any shape.
TEST(clsHISO, Polygons_enclose_their_share_of_the_volume) {
    for (std::uint64_t seed = 1; seed <= 4; ++seed) {
        IsoplethRig rig;
        const Surface surface = tests::random_bumps({0, 0, 1, 160, 120}, 8, 6, 14, 0.0, seed);
        clsHISO hiso = rig.Object(surface, {95, 50});
        hiso.CreateIsopleths();
        ASSERT_EQ(hiso.GetErrorStatus(), 0);
        const double minimum = surface.Minimum();
        for (std::size_t i = 0; i < 2; ++i) {
            double all = 0.0;
            double within = 0.0;
            for (const float cell : surface.Cells) {
                const double height = static_cast<double>(cell) - minimum;
                all += height;
                if (static_cast<double>(cell) >= hiso.GetLevels()[i]) within += height;
            }
            EXPECT_NEAR(within / all, i == 0 ? 0.95 : 0.50, 0.01) << seed;
        }
    }
}

TEST(clsHISO, A_bump_cut_by_the_edge_keeps_the_edge_line_on_the_outer_edge) {
    IsoplethRig rig;
    // The bump's centre lies on the raster's west edge.
    const Surface surface = tests::surface_of({300, 700, 10, 60, 81}, [](double column, double row) {
        const double x = column + 0.5;
        const double y = row - 40;
        return 50.0 * std::exp(-0.5 * (x * x + y * y) / 100.0);
    });
    clsHISO hiso = rig.Object(surface, {50});
    hiso.CreateIsopleths();
    ASSERT_EQ(hiso.GetErrorStatus(), 0);
    EXPECT_GT(hiso.GetMaxEdgeValue(), 49.0);
    for (const char* suffix : {"_line", "_poly", "_donut"}) {
        const auto output = rig.Output(suffix);
        ASSERT_EQ(output->FeatureCount(), 1) << suffix;
        EXPECT_EQ(output->Bounds().XMin, 300) << suffix;
        const auto ring = output->Find({})->NextFeature()->Shape().Parts.at(0);
        EXPECT_EQ(ring.front(), ring.back()) << suffix;
        EXPECT_GE(std::ranges::count_if(ring, [](const auto& p) { return p.X == 300; }), 2) << suffix;
    }
    // Half of the closed form.
    const double expected = std::numbers::pi * 100.0 * 100.0 * std::numbers::ln2;
    EXPECT_NEAR(rig.Column(*rig.Output("_poly"), "AREA").at(0) / expected, 1.0, 0.02);
}

/// Cells of 10: zero but for a peak of height 4, its 8 neighbours of height 2 and the 16 cells around them of height 1.
/// The volume is 100000 + 8 x 50000 + 16 x 25000 bin units, of which the peak holds 11 %.
Surface peak(double originX, double originY) {
    return tests::surface_of({originX, originY, 10, 9, 9}, [](double column, double row) {
        const double d = std::max(std::abs(column - 4), std::abs(row - 4));
        return d < 1 ? 4.0 : d < 2 ? 2.0 : d < 3 ? 1.0 : 0.0;
    });
}

TEST(clsHISO, A_level_equal_to_one_highest_cell_gives_no_feature_wherever_the_raster_lies) {
    for (const auto& [x, y] : {std::pair{0.0, 0.0}, {500003.0, 4649003.0}, {-1234567.1, 8765432.3}}) {
        IsoplethRig rig;
        clsHISO hiso = rig.Object(peak(x, y), {2, 50});
        hiso.CreateIsopleths();
        EXPECT_EQ(hiso.GetErrorStatus(), 0) << x;
        EXPECT_EQ(hiso.GetLevels(), (Numbers{4, 2}));
        EXPECT_EQ(rig.Column(*rig.Output("_line"), "PERCENT"), (Numbers{50})) << x;
        EXPECT_EQ(rig.Column(*rig.Output("_poly"), "PERCENT"), (Numbers{50})) << x;
        EXPECT_EQ(rig.Column(*rig.Output("_donut"), "PERCENT2"), (Numbers{50})) << x;
        EXPECT_EQ(hiso.GetAreas().at(0), std::nullopt) << x;

        IsoplethRig alone;
        clsHISO only = alone.Object(peak(x, y), {2});
        only.CreateIsopleths();
        EXPECT_EQ(only.GetErrorStatus(), 3000) << x;
        EXPECT_TRUE(alone.Shapefiles.Published().empty()) << x;
    }
}

TEST(clsHISO, A_level_equal_to_a_ridge_one_cell_wide_gives_no_feature_wherever_the_raster_lies) {
    for (const auto& [x, y] : {std::pair{0.0, 0.0}, {500003.0, 4649003.0}}) {
        IsoplethRig rig;
        const Surface ridge = tests::surface_of({x, y, 10, 200, 9}, [](double column, double row) {
            return row == 4 && column > 3 && column < 190 ? 4.0 : 0.3;
        });
        clsHISO hiso = rig.Object(ridge, {50});
        hiso.CreateIsopleths();
        EXPECT_EQ(hiso.GetErrorStatus(), 3000) << x;
    }
}

TEST(clsHISO, Only_what_was_asked_for_is_created) {
    for (const int wanted : {0, 1, 2}) {
        IsoplethRig rig;
        clsHISO hiso = rig.Object(bump(), {50, 95});
        hiso.SetCalculateLines(wanted == 0);
        hiso.SetCalculatePolys(wanted == 1);
        hiso.SetCalculateDonuts(wanted == 2);
        hiso.CreateIsopleths();
        EXPECT_EQ(hiso.GetErrorStatus(), 0);
        EXPECT_EQ(rig.Output("_line") != nullptr, wanted == 0);
        EXPECT_EQ(rig.Output("_poly") != nullptr, wanted == 1);
        EXPECT_EQ(rig.Output("_donut") != nullptr, wanted == 2);
        EXPECT_EQ(rig.Shapefiles.Published().size(), 1U);
    }
}

TEST(clsHISO, A_level_above_every_cell_alone_gives_status_3000_and_nothing_else) {
    IsoplethRig rig;
    clsHISO hiso = rig.Object(bump(), {0});
    hiso.CreateIsopleths();
    EXPECT_EQ(hiso.GetErrorStatus(), 3000);
    EXPECT_TRUE(rig.Messages.Boxes().empty());
    EXPECT_TRUE(rig.Shapefiles.Published().empty());
    EXPECT_EQ(hiso.GetLevels().size(), 1U);
}

TEST(clsHISO, A_level_above_every_cell_among_others_gives_no_feature) {
    IsoplethRig rig;
    clsHISO hiso = rig.Object(bump(), {0, 50, 95});
    hiso.CreateIsopleths();
    EXPECT_EQ(hiso.GetErrorStatus(), 0);
    EXPECT_EQ(rig.Column(*rig.Output("_line"), "PERCENT"), (Numbers{50, 95}));
    EXPECT_EQ(rig.Column(*rig.Output("_poly"), "PERCENT"), (Numbers{95, 50}));
    // The 50 % ring has no inner polygon: it is the whole polygon.
    EXPECT_EQ(rig.Column(*rig.Output("_donut"), "PERCENT1"), (Numbers{0, 50}));
    EXPECT_EQ(rig.Column(*rig.Output("_donut"), "PERCENT2"), (Numbers{50, 95}));
    EXPECT_EQ(rig.Column(*rig.Output("_donut"), "AREA").at(0), rig.Column(*rig.Output("_poly"), "AREA").at(1));
}

TEST(clsHISO, A_repeated_percentage_has_its_contours_at_its_first_place) {
    IsoplethRig rig;
    clsHISO hiso = rig.Object(bump(), {50, 95, 50});
    hiso.CreateIsopleths();
    EXPECT_EQ(hiso.GetErrorStatus(), 0);
    EXPECT_EQ(rig.Column(*rig.Output("_line"), "PERCENT"), (Numbers{50, 95}));
    EXPECT_EQ(rig.Column(*rig.Output("_poly"), "PERCENT"), (Numbers{95, 50}));
    EXPECT_EQ(rig.Column(*rig.Output("_donut"), "PERCENT2"), (Numbers{50, 95}));
}

TEST(clsHISO, Decreasing_percentages_give_reversed_polygons_and_empty_rings) {
    IsoplethRig rig;
    clsHISO hiso = rig.Object(bump(), {95, 50});
    hiso.CreateIsopleths();
    EXPECT_EQ(hiso.GetErrorStatus(), 0);
    EXPECT_EQ(rig.Column(*rig.Output("_poly"), "PERCENT"), (Numbers{50, 95}));
    const auto donuts = rig.Output("_donut");
    EXPECT_EQ(rig.Column(*donuts, "PERCENT1"), (Numbers{0, 95}));
    EXPECT_EQ(rig.Column(*donuts, "PERCENT2"), (Numbers{95, 50}));
    EXPECT_EQ(rig.Column(*donuts, "AREA").at(1), 0.0);
    EXPECT_EQ(rig.Column(*donuts, "PERIMETER").at(1), 0.0);
    EXPECT_TRUE(donuts->Find({})->NextFeature()->Shape().Type == platform::ShapeType::kPolygon);
}

// 10 and 20 % share the level 2, whose contour runs through the centres of 2 x 2 cells; that of 95 % runs through the
// centres of 6 x 6 cells.
TEST(clsHISO, A_donut_after_a_percentage_that_shares_its_level_leaves_out_the_polygon_of_that_level) {
    IsoplethRig rig;
    clsHISO hiso = rig.Object(terraces(), {10, 20, 95});
    hiso.CreateIsopleths();
    EXPECT_EQ(hiso.GetErrorStatus(), 0);
    EXPECT_EQ(hiso.GetLevels(), (Numbers{2, 2, 1}));
    const auto donuts = rig.Output("_donut");
    EXPECT_EQ(rig.Column(*donuts, "PERCENT1"), (Numbers{0, 20}));
    EXPECT_EQ(rig.Column(*donuts, "PERCENT2"), (Numbers{10, 95}));
    const Numbers areas = rig.Column(*donuts, "AREA");
    ASSERT_EQ(areas.size(), 2U);
    EXPECT_NEAR(areas[0], 1.0, 1e-6);
    EXPECT_NEAR(areas[1], 5.0 * 5.0 - 1.0, 1e-6);
}

// 32 cells in bin 50000 and 4 in bin 100000: total 2,000,000, of which the top bin holds 20 %.
TEST(clsHISO, Levels_of_terraces) {
    IsoplethRig rig;
    clsHISO hiso = rig.Object(terraces(), {20, 21, 100});
    hiso.CreateIsopleths();
    EXPECT_EQ(hiso.GetLevels(), (Numbers{2, 1, 1}));
    EXPECT_EQ(hiso.GetStatistics().Minimum, 0.0);
    EXPECT_EQ(hiso.GetStatistics().Maximum, 2.0);
    EXPECT_EQ(hiso.GetMaxEdgeValue(), 0.0);
}

TEST(clsHISO, A_band_alone_serves_and_gives_the_outputs_its_rasters_reference) {
    IsoplethRig rig;
    const Surface surface = bump();
    clsHISO hiso(rig.Services, rig.Utilities());
    hiso.SetRasterBand(memory::MakeRaster("r", surface.Geometry, surface.Cells, rig.Reference)->Band());
    hiso.SetCalculatePolys(true);
    hiso.SetIsoplethBoundaries({50});
    hiso.SetOutputName("ELK12_iso");
    hiso.SetOutputFolder("/out");
    hiso.CreateIsopleths();
    EXPECT_EQ(hiso.GetErrorStatus(), 0);
    ASSERT_NE(rig.Output("_poly"), nullptr);
    EXPECT_EQ(rig.Output("_poly")->Reference(), rig.Reference);
}

TEST(clsHISO, A_dataset_has_precedence_over_a_band) {
    IsoplethRig rig;
    const Surface other = terraces();
    clsHISO hiso = rig.Object(bump(), {50});
    hiso.SetRasterBand(memory::MakeRaster("r", other.Geometry, other.Cells)->Band());
    hiso.CreateIsopleths();
    EXPECT_EQ(hiso.GetStatistics().Maximum, 1000.0);
}

TEST(clsHISO, A_border_of_high_cells_raises_the_edge_value_and_closes_along_the_edge) {
    IsoplethRig rig;
    const Surface frame = tests::surface_of({0, 0, 1, 12, 9}, [](double column, double row) {
        return column == 0 || row == 0 || column == 11 || row == 8 ? 5.0 : 0.0;
    });
    clsHISO hiso = rig.Object(frame, {100});
    hiso.CreateIsopleths();
    EXPECT_EQ(hiso.GetMaxEdgeValue(), 5.0);
    EXPECT_EQ(rig.Output("_line")->FeatureCount(), 2);
    EXPECT_EQ(rig.Output("_poly")->Bounds(), (platform::Extent{0, 0, 12, 9}));
    EXPECT_EQ(rig.Output("_poly")->Find({})->NextFeature()->Shape().Parts.size(), 2U);
}

/// Contours that are told instead of drawn.
class ToldContours final : public platform::IContourOperation {
public:
    explicit ToldContours(std::vector<platform::ContourLine> lines) : m_lines(std::move(lines)) {}
    std::vector<platform::ContourLine> Contours(platform::IRasterDataset& /*raster*/,
                                                std::span<const double> /*levels*/) override {
        return m_lines;
    }

private:
    std::vector<platform::ContourLine> m_lines;
};

// Unit squares of the values 1.5, 1.6 and 1.4 between the levels 2 and 1.
TEST(clsHISO, A_contour_belongs_to_the_nearest_level_and_in_a_tie_to_the_first) {
    IsoplethRig rig;
    const auto square = [](double value, double x) {
        return platform::ContourLine{value, {{x, 5}, {x, 6}, {x + 1, 6}, {x + 1, 5}, {x, 5}}};
    };
    ToldContours contours({square(1.5, 3), square(1.6, 6), square(1.4, 9)});
    rig.Services.Contours = &contours;
    clsHISO hiso = rig.Object(terraces(), {20, 21});
    hiso.CreateIsopleths();
    EXPECT_EQ(hiso.GetErrorStatus(), 0);
    EXPECT_EQ(hiso.GetLevels(), (Numbers{2, 1}));
    const auto lines = rig.Output("_line");
    EXPECT_EQ(rig.Column(*lines, "PERCENT"), (Numbers{20, 20, 21}));
    Numbers west;
    const auto cursor = lines->Find({});
    while (const auto line = cursor->NextFeature()) west.push_back(line->Shape().Parts.at(0).at(0).X);
    EXPECT_EQ(west, (Numbers{3, 6, 9}));
    EXPECT_EQ(rig.Column(*rig.Output("_poly"), "PERCENT"), (Numbers{21, 20}));
    const Numbers areas = rig.Column(*rig.Output("_poly"), "AREA");
    ASSERT_EQ(areas.size(), 2U);
    EXPECT_DOUBLE_EQ(areas[0], 1.0);
    EXPECT_DOUBLE_EQ(areas[1], 2.0);
}

/// The level of the top bin of these two heights comes out one rounding above the upper one.
constexpr double kUpper = 0.0940261259675026;
constexpr double kLower = 9.237274833928666e-10;

TEST(clsHISO, A_frame_one_rounding_below_its_level_is_the_polygon) {
    IsoplethRig rig;
    const Surface frame = tests::surface_of({0, 0, 10, 12, 9}, [](double column, double row) {
        return column == 0 || row == 0 || column == 11 || row == 8 ? kUpper : kLower;
    });
    clsHISO hiso = rig.Object(frame, {50});
    hiso.CreateIsopleths();
    ASSERT_EQ(hiso.GetErrorStatus(), 0);
    ASSERT_EQ(hiso.GetLevels().at(0), std::nextafter(frame.Maximum(), 1.0));
    const auto polys = rig.Output("_poly");
    EXPECT_EQ(polys->Bounds(), (platform::Extent{0, 0, 120, 90}));
    EXPECT_EQ(polys->Find({})->NextFeature()->Shape().Parts.size(), 2U);
    // The hole runs through the centres of the frame's cells and cuts off half a cell in each corner.
    const double expected = 120 * 90 - (110 * 80 - 4 * 50);
    EXPECT_NEAR(rig.Column(*polys, "AREA").at(0), expected, 1e-6);
    EXPECT_NEAR(hiso.GetAreas().at(0).value(), expected, 1e-6);
}

TEST(clsHISO, A_plateau_at_the_edge_one_rounding_below_its_level_is_the_polygon) {
    IsoplethRig rig;
    const Surface plateau =
        tests::surface_of({0, 0, 10, 12, 9}, [](double column, double) { return column < 9 ? kUpper : kLower; });
    clsHISO hiso = rig.Object(plateau, {50});
    hiso.CreateIsopleths();
    ASSERT_EQ(hiso.GetErrorStatus(), 0);
    ASSERT_EQ(hiso.GetLevels().at(0), std::nextafter(plateau.Maximum(), 1.0));
    // Up to the centres of the ninth column.
    EXPECT_NEAR(rig.Column(*rig.Output("_poly"), "AREA").at(0), 85 * 90, 1e-6);
}

TEST(clsHISO, Running_again_measures_anew_and_meets_its_own_outputs) {
    IsoplethRig rig;
    clsHISO hiso = rig.Object(bump(), {50});
    hiso.CreateIsopleths();
    const auto first = hiso.GetPolysFeatureClass();
    hiso.SetOutputName("again");
    hiso.CreateIsopleths();
    EXPECT_EQ(hiso.GetErrorStatus(), 0);
    EXPECT_NE(hiso.GetPolysFeatureClass(), first);
    hiso.CreateIsopleths();
    EXPECT_EQ(hiso.GetErrorStatus(), 3001);
    ASSERT_EQ(rig.Messages.Boxes().size(), 2U);
    EXPECT_EQ(rig.Messages.Boxes()[0].Title, "File Error");
}

}  // namespace
}  // namespace wxl::isopleths
