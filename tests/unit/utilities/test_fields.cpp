#include "platform/runtime_error.h"
#include "tests/unit/utilities/utilities_rig.h"

namespace wxl::utilities {
namespace {

using platform::Field;
using platform::FieldType;
using platform::FieldValue;
using platform::Geometry;
using platform::ShapeType;
using tests::UtilitiesRig;

memory::MemoryFeatureClass table_of(std::vector<Field> fields) {
    return {ShapeType::kPolygon, std::move(fields)};
}

Geometry shape_of(std::size_t vertices) {
    return {ShapeType::kPolygon, {}, {std::vector<platform::Point>(vertices)}};
}

TEST(AddNewField, Returns_the_index_of_the_new_field) {
    UtilitiesRig rig;
    auto features = table_of({{"ID", FieldType::kInteger}});
    EXPECT_EQ(rig.Module->AddNewField("ISOPLETH", features.Table(), FieldType::kDouble), 1);
    EXPECT_EQ(rig.Module->AddNewField("NAME", features.Table(), FieldType::kText, 20), 2);
    EXPECT_EQ(rig.Module->AddNewField("X", features.Table(), FieldType::kDouble, 18, 6), 3);
    const auto fields = features.Table().Fields();
    EXPECT_EQ(fields[1], (Field{"ISOPLETH", FieldType::kDouble, 0, 0}));
    EXPECT_EQ(fields[2], (Field{"NAME", FieldType::kText, 20, 0}));
    EXPECT_EQ(fields[3], (Field{"X", FieldType::kDouble, 18, 6}));
}

TEST(AddNewField, Reports_name_and_type_and_returns_minus_1) {
    UtilitiesRig rig;
    auto features = table_of({{"area", FieldType::kDouble}});
    EXPECT_EQ(rig.Module->AddNewField("AREA", features.Table(), FieldType::kDouble), -1);
    tests::expect_error_box(rig, "AddNewField: 5\r");
    EXPECT_TRUE(rig.Messages.Last().Text.ends_with("\rName: AREA, Type: 3"));
    EXPECT_EQ(rig.Module->AddNewField("", features.Table(), FieldType::kText), -1);
    EXPECT_TRUE(rig.Messages.Last().Text.ends_with("\rName: , Type: 4"));
    EXPECT_EQ(features.Table().Fields().size(), 1U);
}

TEST(GetUniqueValues, Are_ascending_by_size_for_numbers) {
    UtilitiesRig rig;
    auto features = table_of({{"ID", FieldType::kInteger}});
    for (const std::int64_t id : {10, 9, 100, 9, -1, 10}) features.Add({}, {id});
    const auto values = rig.Module->GetUniqueValues(features, "id");
    EXPECT_EQ(values,
              (std::vector<FieldValue>{std::int64_t{-1}, std::int64_t{9}, std::int64_t{10}, std::int64_t{100}}));
    EXPECT_EQ(features.Finds(), 1);
}

TEST(GetUniqueValues, Are_ascending_by_bytes_for_texts) {
    UtilitiesRig rig;
    auto features = table_of({{"ID", FieldType::kText}});
    for (const char* id : {"b", "A", "\xC3\xA4", "B", "a10", "a9", "b", ""}) features.Add({}, {std::string(id)});
    const auto values = rig.Module->GetUniqueValues(features, "ID");
    const std::vector<std::string> expected = {"", "A", "B", "a10", "a9", "b", "\xC3\xA4"};
    ASSERT_EQ(values.size(), expected.size());
    for (std::size_t i = 0; i < expected.size(); ++i) EXPECT_EQ(std::get<std::string>(values[i]), expected[i]);
}

TEST(GetUniqueValues, Rows_without_a_value_do_not_count) {
    UtilitiesRig rig;
    auto features = table_of({{"ID", FieldType::kDouble}});
    features.Add({}, {2.5});
    features.Add({}, {FieldValue()});
    EXPECT_EQ(rig.Module->GetUniqueValues(features, "ID"), (std::vector<FieldValue>{2.5}));
}

TEST(GetUniqueValues, A_missing_field_is_reported) {
    UtilitiesRig rig;
    auto features = table_of({{"ID", FieldType::kInteger}});
    EXPECT_TRUE(rig.Module->GetUniqueValues(features, "ANIMAL").empty());
    tests::expect_error_box(rig, "GetUniqueValues: 5\r");
}

TEST(TableAddLength, An_empty_name_becomes_LENGTH_and_a_factor_of_0_becomes_1) {
    UtilitiesRig rig;
    auto features = table_of({});
    features.Add(shape_of(4), {});
    features.Add(shape_of(7), {});
    std::string field;
    double factor = 0.0;
    EXPECT_TRUE(rig.Module->TableAddLength(features, field, factor, false));
    EXPECT_EQ(field, "LENGTH");
    EXPECT_EQ(factor, 1.0);
    EXPECT_EQ(features.ValueOf(0, "LENGTH"), FieldValue(4.0));
    EXPECT_EQ(features.ValueOf(1, "LENGTH"), FieldValue(7.0));
    EXPECT_EQ(rig.Host.LastStatus(), "Calculating length field...");
}

TEST(TableAddArea, Measures_areas_times_the_factor) {
    UtilitiesRig rig;
    auto features = table_of({});
    features.Add(shape_of(4), {});
    std::string field = "HECTARES";
    double factor = 0.5;
    EXPECT_TRUE(rig.Module->TableAddArea(features, field, factor, false));
    EXPECT_EQ(features.ValueOf(0, "HECTARES"), FieldValue(200.0));
    EXPECT_EQ(factor, 0.5);
    EXPECT_EQ(rig.Host.LastStatus(), "Calculating areas...");
}

TEST(TableAddPerim, Measures_lengths_of_boundaries) {
    UtilitiesRig rig;
    auto features = table_of({});
    features.Add(shape_of(5), {});
    std::string field = "PERIMETER";
    double factor = 2.0;
    EXPECT_TRUE(rig.Module->TableAddPerim(features, field, factor, true));
    EXPECT_EQ(features.ValueOf(0, "PERIMETER"), FieldValue(10.0));
    EXPECT_EQ(rig.Host.LastStatus(), "Calculating perimeters...");
}

TEST(TableAdd, The_switch_gives_the_host_a_turn_per_feature) {
    for (const bool yields : {false, true}) {
        UtilitiesRig rig;
        auto features = table_of({});
        for (int i = 0; i < 3; ++i) features.Add(shape_of(4), {});
        std::string field = "AREA";
        double factor = 1.0;
        EXPECT_TRUE(rig.Module->TableAddArea(features, field, factor, yields));
        EXPECT_EQ(rig.Host.Yields(), yields ? 3 : 0);
        EXPECT_EQ(features.ValueOf(2, "AREA"), FieldValue(400.0));
    }
}

TEST(TableAdd, A_second_call_uses_the_field_again) {
    UtilitiesRig rig;
    auto features = table_of({{"ID", FieldType::kInteger}});
    features.Add(shape_of(4), {std::int64_t{1}});
    std::string field = "AREA";
    double factor = 1.0;
    rig.Module->TableAddArea(features, field, factor, false);
    factor = 3.0;
    EXPECT_TRUE(rig.Module->TableAddArea(features, field, factor, false));
    EXPECT_EQ(features.Table().Fields().size(), 2U);
    EXPECT_EQ(features.ValueOf(0, "AREA"), FieldValue(1200.0));
}

TEST(TableAdd, A_field_of_another_type_is_made_anew_without_losing_others) {
    UtilitiesRig rig;
    auto features = table_of({{"ID", FieldType::kInteger}, {"area", FieldType::kText}, {"NAME", FieldType::kText}});
    features.Add(shape_of(4), {std::int64_t{5}, std::string("big"), std::string("x")});
    std::string field = "AREA";
    double factor = 1.0;
    EXPECT_TRUE(rig.Module->TableAddArea(features, field, factor, false));
    const auto fields = features.Table().Fields();
    ASSERT_EQ(fields.size(), 3U);
    EXPECT_EQ(fields[2].Name, "AREA");
    EXPECT_EQ(fields[2].Type, FieldType::kDouble);
    EXPECT_EQ(features.ValueOf(0, "AREA"), FieldValue(400.0));
    EXPECT_EQ(features.ValueOf(0, "ID"), FieldValue(std::int64_t{5}));
    EXPECT_EQ(features.ValueOf(0, "NAME"), FieldValue(std::string("x")));
}

TEST(TableAdd, A_class_without_features_gets_the_field) {
    UtilitiesRig rig;
    auto features = table_of({});
    std::string field = "AREA";
    double factor = 1.0;
    EXPECT_TRUE(rig.Module->TableAddArea(features, field, factor, false));
    EXPECT_EQ(features.Table().FindField("AREA"), 0);
}

TEST(TableAdd, A_feature_without_a_shape_measures_0) {
    UtilitiesRig rig;
    auto features = table_of({});
    features.Add({}, {});
    std::string field = "AREA";
    double factor = 1.0;
    EXPECT_TRUE(rig.Module->TableAddArea(features, field, factor, false));
    EXPECT_EQ(features.ValueOf(0, "AREA"), FieldValue(0.0));
}

TEST(TableAdd, A_field_that_cannot_be_added_is_told_and_stops) {
    UtilitiesRig rig;
    auto features = table_of({});
    features.Add(shape_of(4), {});
    std::string field;
    double factor = 1.0;
    EXPECT_FALSE(rig.Module->TableAddArea(features, field, factor, false));
    ASSERT_EQ(rig.Messages.Boxes().size(), 2U);
    EXPECT_TRUE(rig.Messages.Boxes()[0].Text.starts_with("AddNewField: "));
    EXPECT_EQ(rig.Messages.Last().Text,
              "Error: unable to add new length field to table. Please check you have supplied a valid field name and "
              "you have write access to the attribute table.");
    EXPECT_EQ(rig.Messages.Last().Title, "Error");
    EXPECT_EQ(rig.Messages.Last().Sign, platform::Icon::kExclamation);
    EXPECT_TRUE(rig.Host.Statuses().empty());
}

TEST(TableAdd, Rows_before_a_fault_keep_their_values) {
    UtilitiesRig rig;
    auto features = table_of({});
    for (int i = 0; i < 3; ++i) features.Add(shape_of(4), {});
    features.SetBeforeStore([](std::int64_t oid) {
        if (oid == 1) platform::Raise(platform::error_number::kDiskFull);
    });
    std::string field = "AREA";
    double factor = 1.0;
    EXPECT_FALSE(rig.Module->TableAddArea(features, field, factor, false));
    tests::expect_error_box(rig, "TableAddArea: 61\rDisk full");
    EXPECT_EQ(features.ValueOf(0, "AREA"), FieldValue(400.0));
    EXPECT_TRUE(platform::IsMissing(features.ValueOf(2, "AREA")));
}

}  // namespace
}  // namespace wxl::utilities
