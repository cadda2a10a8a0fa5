#include "platform/contour_step.h"
#include "platform/controls.h"
#include "platform/rasters.h"
#include "platform/values.h"
#include "tests/contract/stage.h"

#include <algorithm>
#include <cmath>
#include <gmock/gmock.h>
#include <limits>

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

namespace wxl::platform {
namespace {

using tests::error_of;
using tests::text_of_error;

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
constexpr double kInfinity = std::numeric_limits<double>::infinity();

FieldValue whole(std::int64_t value) {
    return value;
}

RasterDefinition at(const RasterGeometry& geometry) {
    return {"K3", "GRID", geometry, {}};
}

}  // namespace

TEST(Extent, Grows_around_points) {
    Extent extent;
    EXPECT_TRUE(extent.IsEmpty());
    extent.Include({3.0, 4.0});
    EXPECT_FALSE(extent.IsEmpty());
    EXPECT_EQ(extent.Width(), 0.0);
    extent.Include({-1.0, 10.0});
    EXPECT_EQ(extent, (Extent{-1.0, 4.0, 3.0, 10.0}));
    EXPECT_EQ(extent.Width(), 4.0);
    EXPECT_EQ(extent.Height(), 6.0);
}

TEST(Geometry, Is_null_until_it_is_something) {
    EXPECT_TRUE(Geometry().IsNull());
    EXPECT_FALSE(Geometry::OfPoint({1.0, 2.0}).IsNull());
    EXPECT_EQ(Geometry::OfPoint({1.0, 2.0}).Location, (Point{1.0, 2.0}));
    EXPECT_EQ(Geometry::OfPoint({1.0, 2.0}).Type, ShapeType::kPoint);
}

TEST(RasterGeometry, Bounds_are_the_outer_edges) {
    EXPECT_EQ((RasterGeometry{100.0, 200.0, 10.0, 3, 2}.Bounds()), (Extent{100.0, 200.0, 130.0, 220.0}));
}

TEST(FieldValue, Has_a_text) {
    EXPECT_EQ(ValueText({}), "");
    EXPECT_EQ(ValueText(whole(-7)), "-7");
    EXPECT_EQ(ValueText(whole(std::numeric_limits<std::int64_t>::min())), "-9223372036854775808");
    EXPECT_EQ(ValueText(7.0), "7");
    EXPECT_EQ(ValueText(0.00001), "1E-05");
    EXPECT_EQ(ValueText(std::string("O'Malley")), "O'Malley");
}

TEST(FieldValue, Has_a_number_unless_it_is_missing_or_a_word) {
    EXPECT_EQ(ValueNumber(whole(-7)), -7.0);
    EXPECT_EQ(ValueNumber(2.5), 2.5);
    EXPECT_EQ(ValueNumber(std::string(" 12.5 ")), 12.5);
    EXPECT_EQ(error_of([] { ValueNumber(std::string("seven")); }), 13);
    EXPECT_EQ(error_of([] { ValueNumber(std::string()); }), 13);
    EXPECT_EQ(error_of([] { ValueNumber({}); }), 13);
    EXPECT_TRUE(IsMissing({}));
    EXPECT_FALSE(IsMissing(std::string()));
    EXPECT_FALSE(IsMissing(0.0));
}

TEST(FieldValue, Is_ordered_missing_numbers_texts) {
    std::vector<FieldValue> values = {std::string("b"), whole(10),        {}, 2.5, std::string("B"),
                                      whole(-3),        std::string("10")};
    std::sort(values.begin(), values.end(), ValueLess);
    EXPECT_THAT(values, ElementsAre(FieldValue(), whole(-3), FieldValue(2.5), whole(10), FieldValue(std::string("10")),
                                    FieldValue(std::string("B")), FieldValue(std::string("b"))));
}

TEST(FieldValue, Large_whole_numbers_keep_their_order_beside_doubles) {
    const std::int64_t big = 9007199254740992;  // 2^53: the next one is no double
    EXPECT_TRUE(ValueLess(whole(big), whole(big + 1)));
    EXPECT_TRUE(ValueLess(static_cast<double>(big), whole(big + 1)));
    EXPECT_FALSE(ValueLess(whole(big + 1), static_cast<double>(big)));
    EXPECT_FALSE(ValueLess(whole(big), static_cast<double>(big)));
}

TEST(FieldValue, NaN_stands_before_all_numbers_and_is_equal_to_itself) {
    EXPECT_TRUE(ValueLess(kNaN, -kInfinity));
    EXPECT_TRUE(ValueLess(kNaN, whole(0)));
    EXPECT_FALSE(ValueLess(-kInfinity, kNaN));
    EXPECT_FALSE(ValueLess(kNaN, kNaN));
    EXPECT_TRUE(ValueLess({}, kNaN));
    EXPECT_FALSE(ValueLess({}, {}));
}

TEST(ComboBox, Gives_the_chosen_item) {
    ComboBox box{{"one", "two", "two"}, -1, true, BackColor::kWindow};
    EXPECT_EQ(box.Text(), "");
    EXPECT_TRUE(box.Select("two"));
    EXPECT_EQ(box.ListIndex, 1);
    EXPECT_EQ(box.Text(), "two");
    EXPECT_FALSE(box.Select("Two"));
    EXPECT_EQ(box.ListIndex, 1);
    box.ListIndex = 3;
    EXPECT_EQ(box.Text(), "");
}

TEST(DataGrid, Clear_takes_columns_and_rows) {
    DataGrid grid{{"a"}, {{"1"}}, false};
    grid.Clear();
    EXPECT_THAT(grid.Columns, IsEmpty());
    EXPECT_THAT(grid.Rows, IsEmpty());
    EXPECT_FALSE(grid.Visible);
}

TEST(CheckRasterDefinition, Takes_what_a_raster_can_be) {
    EXPECT_EQ(error_of([] { CheckRasterDefinition(at({500000.0, 4649000.0, 30.0, 7000, 7000})); }), 0);
    EXPECT_EQ(error_of([] { CheckRasterDefinition(at({-0.1, 0.1, 1e-7, 50000000, 1})); }), 0);
    EXPECT_EQ(error_of([] { CheckRasterDefinition(at({-1e9, 1e9, 1.0, 1, 50000000})); }), 0);
}

TEST(CheckRasterDefinition, Refuses_the_rest_with_its_name) {
    for (const RasterGeometry& geometry :
         {RasterGeometry{0.0, 0.0, 1.0, 0, 1}, RasterGeometry{0.0, 0.0, 1.0, 1, -1},
          RasterGeometry{0.0, 0.0, 0.0, 1, 1}, RasterGeometry{0.0, 0.0, kNaN, 1, 1},
          RasterGeometry{0.0, 0.0, kInfinity, 1, 1}, RasterGeometry{kNaN, 0.0, 1.0, 1, 1},
          RasterGeometry{0.0, -kInfinity, 1.0, 1, 1}, RasterGeometry{1e17, 0.0, 1.0, 2, 2},
          RasterGeometry{0.0, 0.0, 1e308, 10, 10}}) {
        EXPECT_EQ(error_of([&] { CheckRasterDefinition(at(geometry)); }), 5);
        EXPECT_THAT(text_of_error([&] { CheckRasterDefinition(at(geometry)); }), HasSubstr("The raster \"K3\""));
    }
    EXPECT_EQ(error_of([] { CheckRasterDefinition({"../K3", "GRID", {0.0, 0.0, 1.0, 1, 1}, {}}); }), 5);
}

TEST(CheckCells, Takes_every_finite_value_but_the_lowest) {
    using Limits = std::numeric_limits<float>;
    const std::vector<float> good = {
        0.0F, -0.0F, 1.0F, Limits::max(), Limits::denorm_min(), std::nextafter(Limits::lowest(), 0.0F)};
    EXPECT_EQ(error_of([&] { CheckCells(good, "K3"); }), 0);
    EXPECT_EQ(error_of([&] { CheckCells({}, "K3"); }), 0);
    const auto text_for = [](float bad) {
        return text_of_error([&] { CheckCells(std::vector<float>{1.0F, bad}, "K3"); });
    };
    EXPECT_EQ(text_for(Limits::quiet_NaN()), "The raster \"K3\" would hold a cell that is not a number.");
    EXPECT_EQ(text_for(Limits::infinity()), "The raster \"K3\" would hold a cell that is infinite.");
    EXPECT_EQ(text_for(-Limits::infinity()), "The raster \"K3\" would hold a cell that is infinite.");
    EXPECT_EQ(text_for(Limits::lowest()), "The raster \"K3\" would hold a cell that is too low to be stored.");
}

// 1 lies at 2^0 and is scaled by 2^29; 3 and -3 lie between 2^1 and 2^2.
TEST(ContourStep, Is_a_millionth_at_the_scale_of_the_largest_level) {
    EXPECT_EQ(ContourStep(std::vector{1.0}), 1e-6 / 536870912.0);
    EXPECT_EQ(ContourStep(std::vector{0.5, 3.0, 1.0}), 1e-6 / 268435456.0);
    EXPECT_EQ(ContourStep(std::vector{-3.0, 1.0}), 1e-6 / 268435456.0);
    EXPECT_EQ(ContourStep(std::vector{0.0}), 0.0);
    EXPECT_EQ(ContourStep({}), 0.0);
}

TEST(StatisticsByRows, Passes_over_cells_that_are_no_numbers) {
    class Band final : public IRasterBand {
    public:
        explicit Band(std::vector<float> cells) : m_cells(std::move(cells)) {}
        RasterGeometry Geometry() const override {
            return {0.0, 0.0, 1.0, 1, static_cast<std::int32_t>(m_cells.size())};
        }
        SpatialReference Reference() const override { return {}; }
        void ReadRow(std::int32_t row, std::span<float> cells) override {
            cells[0] = m_cells[static_cast<std::size_t>(row)];
        }
        RasterStatistics ComputeStatistics() override { return StatisticsByRows(*this); }

    private:
        std::vector<float> m_cells;
    };
    const float nan = std::numeric_limits<float>::quiet_NaN();
    Band mixed({nan, 3.0F, nan, -2.5F, 7.0F});
    EXPECT_EQ(mixed.ComputeStatistics().Minimum, -2.5);
    EXPECT_EQ(mixed.ComputeStatistics().Maximum, 7.0);
    Band empty({nan, nan});
    EXPECT_TRUE(std::isnan(empty.ComputeStatistics().Minimum));
    EXPECT_TRUE(std::isnan(empty.ComputeStatistics().Maximum));
}

}  // namespace wxl::platform
