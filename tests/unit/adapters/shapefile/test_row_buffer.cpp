#include "adapters/shapefile/row_buffer.h"
#include "platform/runtime_error.h"

#include <array>
#include <functional>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace wxl::files {
namespace {

using platform::FieldType;
using platform::FieldValue;
using platform::Geometry;
using testing::ElementsAre;

std::int32_t number_of(const std::function<void()>& work) {
    try {
        work();
    } catch (const platform::RuntimeError& fault) {
        return fault.Number;
    }
    return 0;
}

struct RowBufferTest : testing::Test {
    RowBuffer Buffer{platform::ShapeType::kPoint,
                     {{.Name = "ID", .Type = FieldType::kText}, {.Name = "N", .Type = FieldType::kInteger}},
                     {"UTM", "", "metre", 1.0, false}};

    RowBufferTest() {
        const auto cursor = Buffer.Insert();
        cursor->Insert(Geometry::OfPoint({1.0, 2.0}), std::array<FieldValue, 2>{std::string("a"), std::int64_t{7}});
        cursor->Insert(Geometry::OfPoint({3.0, -4.0}), std::array<FieldValue, 1>{std::string("b")});
        cursor->Insert(Geometry::OfPoint({5.0, 6.0}), std::array<FieldValue, 2>{std::string("a"), 8.0});
    }

    std::vector<std::int64_t> Found(const platform::Search& search) {
        std::vector<std::int64_t> oids;
        const auto cursor = Buffer.Find(search);
        while (const auto feature = cursor->NextFeature()) oids.push_back(feature->OID());
        return oids;
    }

    std::vector<FieldValue> Column(int field) {
        std::vector<FieldValue> values;
        const auto cursor = Buffer.Find({});
        while (const auto feature = cursor->NextFeature()) values.push_back(feature->Value(field));
        return values;
    }
};

TEST_F(RowBufferTest, Rows_come_back_in_their_order_with_the_types_of_their_columns) {
    EXPECT_EQ(Buffer.FeatureCount(), 3);
    EXPECT_EQ(Buffer.Reference().Name, "UTM");
    EXPECT_THAT(Found({}), ElementsAre(0, 1, 2));
    EXPECT_THAT(Column(0), ElementsAre(FieldValue("a"), FieldValue("b"), FieldValue("a")));
    EXPECT_THAT(Column(1), ElementsAre(FieldValue(std::int64_t{7}), FieldValue(), FieldValue(std::int64_t{8})));
    EXPECT_EQ(Buffer.Find({})->NextFeature()->Shape(), Geometry::OfPoint({1.0, 2.0}));
}

TEST_F(RowBufferTest, Bounds_are_those_of_the_rows_that_stand) {
    EXPECT_EQ(Buffer.Bounds(), (platform::Extent{1.0, -4.0, 5.0, 6.0}));
    const auto cursor = Buffer.Find({});
    cursor->NextFeature();
    cursor->NextFeature()->Delete();
    EXPECT_EQ(Buffer.Bounds(), (platform::Extent{1.0, 2.0, 5.0, 6.0}));
    EXPECT_EQ(Buffer.FeatureCount(), 2);
    EXPECT_THAT(Found({}), ElementsAre(0, 2));
}

TEST_F(RowBufferTest, Rows_are_found_by_a_cell_or_their_number) {
    EXPECT_THAT(Found({.Where = platform::AttributeQuery{"", "id", std::string("a")}}), ElementsAre(0, 2));
    EXPECT_THAT(Found({.Where = platform::AttributeQuery{"", "FID", std::int64_t{1}}}), ElementsAre(1));
    EXPECT_EQ(number_of([&] { Buffer.Find({.Where = platform::AttributeQuery{"", "X", std::int64_t{1}}}); }), 5);
}

TEST_F(RowBufferTest, A_set_value_is_kept_when_it_is_stored) {
    {
        const auto feature = Buffer.Find({})->NextFeature();
        feature->SetValue(1, 9.0);
        EXPECT_EQ(feature->Value(1), FieldValue(std::int64_t{9}));
        EXPECT_EQ(Column(1)[0], FieldValue(std::int64_t{7}));
        feature->Store();
    }
    EXPECT_EQ(Column(1)[0], FieldValue(std::int64_t{9}));
}

TEST_F(RowBufferTest, A_deleted_row_can_neither_be_stored_nor_deleted_again) {
    const auto feature = Buffer.Find({})->NextFeature();
    Buffer.Find({})->NextFeature()->Delete();
    EXPECT_EQ(number_of([&] { feature->Store(); }), 5);
    EXPECT_EQ(number_of([&] { feature->Delete(); }), 5);
}

TEST_F(RowBufferTest, Columns_come_and_go_with_their_cells) {
    platform::ITable& table = Buffer.Table();
    EXPECT_EQ(table.AddField({.Name = "LENGTH", .Type = FieldType::kDouble}), 2);
    EXPECT_EQ(number_of([&] { table.AddField({.Name = "length", .Type = FieldType::kDouble}); }), 5);
    EXPECT_EQ(number_of([&] { table.AddField({}); }), 5);
    EXPECT_THAT(Column(2), ElementsAre(FieldValue(), FieldValue(), FieldValue()));
    table.DeleteField(0);
    EXPECT_EQ(table.FindField("n"), 0);
    EXPECT_EQ(table.FindField("ID"), -1);
    EXPECT_THAT(Column(0), ElementsAre(FieldValue(std::int64_t{7}), FieldValue(), FieldValue(std::int64_t{8})));
    EXPECT_EQ(number_of([&] { table.DeleteField(2); }), 9);
}

TEST_F(RowBufferTest, A_shape_or_a_value_too_much_is_refused) {
    const auto cursor = Buffer.Insert();
    const Geometry line{platform::ShapeType::kPolyline, {}, {{{0.0, 0.0}, {1.0, 1.0}}}};
    EXPECT_EQ(number_of([&] { cursor->Insert(line, {}); }), 5);
    EXPECT_EQ(number_of([&] { cursor->Insert({}, std::vector<FieldValue>(3)); }), 9);
    EXPECT_EQ(Buffer.FeatureCount(), 3);
}

TEST_F(RowBufferTest, A_cursor_meets_the_rows_that_stood_when_it_was_opened) {
    const auto cursor = Buffer.Find({});
    Buffer.Insert()->Insert(Geometry::OfPoint({0.0, 0.0}), {});
    int met = 0;
    while (cursor->NextFeature()) ++met;
    EXPECT_EQ(met, 3);
    EXPECT_EQ(Buffer.FeatureCount(), 4);
}

}  // namespace
}  // namespace wxl::files
