#include "vector_contract.h"

#include "platform/runtime_error.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace wxl::contract {

using namespace wxl::platform;

namespace {

constexpr const char* kUtm15 =
    R"(PROJCS["NAD83 / UTM zone 15N",GEOGCS["NAD83",DATUM["North_American_Datum_1983",SPHEROID["GRS 1980",6378137,298.257222101]],)"
    R"(PRIMEM["Greenwich",0],UNIT["degree",0.0174532925199433]],PROJECTION["Transverse_Mercator"],)"
    R"(PARAMETER["latitude_of_origin",0],PARAMETER["central_meridian",-93],PARAMETER["scale_factor",0.9996],)"
    R"(PARAMETER["false_easting",500000],PARAMETER["false_northing",0],UNIT["metre",1],AUTHORITY["EPSG","26915"]])";

FeatureClassDefinition fixes_definition() {
    return {
        "fixes",
        ShapeType::kPoint,
        {{"ID", FieldType::kText, 40, 0}, {"Time2", FieldType::kInteger, 0, 0}, {"Speed", FieldType::kDouble, 0, 0}},
        {"NAD83 / UTM zone 15N", kUtm15, "metre", 1.0, false}};
}

std::vector<Row> five_fixes() {
    return {{Geometry::OfPoint({500000, 4500000}), {"wolf", std::int64_t{60}, 0.25}},
            {Geometry::OfPoint({500010, 4500020}), {"wolf", std::int64_t{120}, -1.5}},
            {Geometry(), {"O'Malley", std::int64_t{-180}, 1e-12}},
            {Geometry::OfPoint({500030.5, 4500060.25}), {"Bär", FieldValue(), FieldValue()}},
            {Geometry::OfPoint({499990, 4500080}), {FieldValue(), std::int64_t{123456789012345678}, 1e13}}};
}

std::vector<std::int64_t> oids_of(IFeatureCursor& cursor) {
    std::vector<std::int64_t> oids;
    while (const auto feature = cursor.NextFeature()) oids.push_back(feature->OID());
    return oids;
}

std::vector<std::int64_t> oids_of(IFeatureClass& features) {
    return oids_of(*features.Find({}));
}

std::vector<FieldValue> column_of(IFeatureClass& features, std::string_view field) {
    std::vector<FieldValue> values;
    const int index = features.Table().FindField(field);
    const auto cursor = features.Find({});
    while (const auto feature = cursor->NextFeature()) values.push_back(feature->Value(index));
    return values;
}

Search where(const std::string& field, const FieldValue& value) {
    Search search;
    search.Where = AttributeQuery{field + " = " + ValueText(value), field, value};
    return search;
}

template <class Call>
std::int32_t number_of(Call&& call) {
    try {
        call();
    } catch (const RuntimeError& error) {
        EXPECT_FALSE(error.Description.empty());
        return error.Number;
    }
    return 0;
}

/// The feature at that place of the class's order.
std::unique_ptr<IFeature> feature_at(IFeatureClass& features, std::size_t place) {
    const auto cursor = features.Find({});
    for (std::size_t i = 0; i < place; ++i) cursor->NextFeature();
    return cursor->NextFeature();
}

}  // namespace

GTEST_ALLOW_UNINSTANTIATED_PARAMETERIZED_TEST(VectorContract);

TEST_P(VectorContract, Rows_come_in_ascending_order_of_object_id) {
    const auto layer = host->MakeLayer(fixes_definition(), five_fixes());
    const auto oids = oids_of(*layer->FeatureClass());
    ASSERT_EQ(oids.size(), 5U);
    EXPECT_TRUE(std::is_sorted(oids.begin(), oids.end()));
    EXPECT_EQ(layer->FeatureClass()->FeatureCount(), 5);
    const auto ids = column_of(*layer->FeatureClass(), "ID");
    EXPECT_EQ(ids[0], FieldValue("wolf"));
    EXPECT_EQ(ids[2], FieldValue("O'Malley"));
}

TEST_P(VectorContract, A_class_knows_its_shape_type_and_bounds) {
    const auto layer = host->MakeLayer(fixes_definition(), five_fixes());
    EXPECT_EQ(layer->FeatureClass()->Shape(), ShapeType::kPoint);
    EXPECT_EQ(layer->FeatureClass()->Bounds(), (Extent{499990, 4500000, 500030.5, 4500080}));
}

TEST_P(VectorContract, The_name_of_a_utm_coordinate_system_contains_utm) {
    const auto layer = host->MakeLayer(fixes_definition(), five_fixes());
    const SpatialReference reference = layer->FeatureClass()->Reference();
    EXPECT_NE(reference.Name.find("UTM"), std::string::npos) << reference.Name;
    EXPECT_DOUBLE_EQ(reference.MetersPerUnit, 1.0);
    EXPECT_FALSE(reference.IsGeographic);
}

TEST_P(VectorContract, Shapes_come_back_and_a_missing_shape_is_null) {
    const auto layer = host->MakeLayer(fixes_definition(), five_fixes());
    const auto cursor = layer->FeatureClass()->Find({});
    for (const Row& row : five_fixes()) {
        const auto feature = cursor->NextFeature();
        ASSERT_TRUE(feature);
        EXPECT_EQ(feature->Shape(), row.Shape);
    }
    EXPECT_FALSE(cursor->NextFeature());
}

TEST_P(VectorContract, Values_come_back_with_their_types) {
    const auto layer = host->MakeLayer(fixes_definition(), five_fixes());
    const auto cursor = layer->FeatureClass()->Find({.Where = {}, .WithShape = false});
    for (const Row& row : five_fixes()) {
        const auto feature = cursor->NextFeature();
        ASSERT_TRUE(feature);
        for (int field = 0; field < 3; ++field)
            EXPECT_EQ(feature->Value(field), row.Values[static_cast<std::size_t>(field)]) << "field " << field;
    }
}

TEST_P(VectorContract, Cells_of_the_fields_asked_for_are_there_and_the_next_scan_has_all) {
    const auto layer = host->MakeLayer(fixes_definition(), five_fixes());
    const auto features = layer->FeatureClass();
    platform::Search search;
    search.Fields = {"TIME2"};
    {
        const auto cursor = features->Find(search);
        const auto first = cursor->NextFeature();
        EXPECT_EQ(first->Value(1), FieldValue(std::int64_t{60}));
        EXPECT_EQ(first->Shape(), five_fixes()[0].Shape);
    }
    search.Where = where("Speed", -1.5).Where;
    {
        const auto cursor = features->Find(search);
        const auto second = cursor->NextFeature();
        EXPECT_EQ(second->Value(1), FieldValue(std::int64_t{120})) << "a query may ask for another field";
        EXPECT_EQ(cursor->NextFeature(), nullptr);
    }
    EXPECT_EQ(feature_at(*features, 0)->Value(0), five_fixes()[0].Values[0]);
}

TEST_P(VectorContract, Fields_are_found_without_regard_to_case) {
    const auto layer = host->MakeLayer(fixes_definition(), five_fixes());
    ITable& table = layer->FeatureClass()->Table();
    EXPECT_EQ(table.FindField("TIME2"), 1);
    EXPECT_EQ(table.FindField("time2"), 1);
    EXPECT_EQ(table.FindField("Time"), -1);
    EXPECT_EQ(table.FindField(""), -1);
    const auto fields = table.Fields();
    ASSERT_EQ(fields.size(), 3U);
    EXPECT_EQ(fields[0].Name, "ID");
    EXPECT_EQ(fields[0].Type, FieldType::kText);
    EXPECT_EQ(fields[1].Type, FieldType::kInteger);
    EXPECT_EQ(fields[2].Type, FieldType::kDouble);
}

TEST_P(VectorContract, A_cell_outside_the_table_is_error_9) {
    const auto layer = host->MakeLayer(fixes_definition(), five_fixes());
    const auto feature = feature_at(*layer->FeatureClass(), 0);
    EXPECT_EQ(number_of([&] { feature->Value(-1); }), 9);
    EXPECT_EQ(number_of([&] { feature->Value(3); }), 9);
    EXPECT_EQ(number_of([&] { feature->SetValue(3, 1.0); }), 9);
}

TEST_P(VectorContract, An_added_field_is_missing_everywhere_and_can_be_filled) {
    const auto layer = host->MakeLayer(fixes_definition(), five_fixes());
    const auto features = layer->FeatureClass();
    EXPECT_EQ(features->Table().AddField({"Me_per_Sec", FieldType::kDouble, 0, 0}), 3);
    EXPECT_EQ(features->Table().FindField("Me_Per_Sec"), 3);
    for (const FieldValue& value : column_of(*features, "Me_Per_Sec")) EXPECT_TRUE(IsMissing(value));
    {
        const auto cursor = features->Find({});
        double value = 0.5;
        while (const auto feature = cursor->NextFeature()) {
            feature->SetValue(3, value);
            feature->Store();
            value *= -2.0;
        }
        cursor->Flush();
    }
    const std::vector<FieldValue> expected = {0.5, -1.0, 2.0, -4.0, 8.0};
    EXPECT_EQ(column_of(*features, "me_per_sec"), expected);
    EXPECT_EQ(column_of(*host->Reopen(*layer), "me_per_sec"), expected);
    EXPECT_EQ(column_of(*features, "ID")[2], FieldValue("O'Malley"));
}

TEST_P(VectorContract, A_field_name_that_is_taken_is_refused_whatever_its_case) {
    const auto layer = host->MakeLayer(fixes_definition(), five_fixes());
    EXPECT_NE(number_of([&] { layer->FeatureClass()->Table().AddField({"SPEED", FieldType::kDouble, 0, 0}); }), 0);
    EXPECT_NE(number_of([&] { layer->FeatureClass()->Table().AddField({"", FieldType::kDouble, 0, 0}); }), 0);
    EXPECT_EQ(layer->FeatureClass()->Table().Fields().size(), 3U);
}

TEST_P(VectorContract, A_deleted_field_takes_no_other_with_it) {
    const auto layer = host->MakeLayer(fixes_definition(), five_fixes());
    const auto features = layer->FeatureClass();
    features->Table().DeleteField(1);
    EXPECT_EQ(features->Table().FindField("Time2"), -1);
    EXPECT_EQ(features->Table().FindField("Speed"), 1);
    const std::vector<FieldValue> speeds = {0.25, -1.5, 1e-12, FieldValue(), 1e13};
    EXPECT_EQ(column_of(*features, "Speed"), speeds);
    EXPECT_EQ(column_of(*host->Reopen(*layer), "Speed"), speeds);
    EXPECT_EQ(number_of([&] { features->Table().DeleteField(2); }), 9);
}

TEST_P(VectorContract, Stored_values_are_there_after_flush_and_others_stay) {
    const auto layer = host->MakeLayer(fixes_definition(), five_fixes());
    const auto features = layer->FeatureClass();
    {
        const auto cursor = features->Find({});
        cursor->NextFeature();
        const auto second = cursor->NextFeature();
        second->SetValue(0, std::string("Jörg's"));
        second->SetValue(1, std::int64_t{-2147483649});
        second->SetValue(2, FieldValue());
        second->Store();
        const auto third = cursor->NextFeature();
        third->SetValue(2, 77.0);  // never stored
        cursor->Flush();
    }
    const auto again = host->Reopen(*layer);
    EXPECT_EQ(column_of(*again, "ID")[1], FieldValue("Jörg's"));
    EXPECT_EQ(column_of(*again, "Time2")[1], FieldValue(std::int64_t{-2147483649}));
    EXPECT_TRUE(IsMissing(column_of(*again, "Speed")[1]));
    EXPECT_EQ(column_of(*again, "Speed")[2], FieldValue(1e-12));
    EXPECT_EQ(feature_at(*again, 1)->Shape(), five_fixes()[1].Shape);
}

TEST_P(VectorContract, Stored_values_are_there_when_the_cursor_is_gone_without_a_flush) {
    const auto layer = host->MakeLayer(fixes_definition(), five_fixes());
    {
        const auto cursor = layer->FeatureClass()->Find({});
        const auto feature = cursor->NextFeature();
        feature->SetValue(1, std::int64_t{999});
        feature->Store();
    }
    EXPECT_EQ(column_of(*host->Reopen(*layer), "Time2")[0], FieldValue(std::int64_t{999}));
}

TEST_P(VectorContract, Numbers_take_the_type_of_their_column) {
    const auto layer = host->MakeLayer(fixes_definition(), five_fixes());
    const auto features = layer->FeatureClass();
    {
        const auto cursor = features->Find({});
        const auto feature = cursor->NextFeature();
        feature->SetValue(1, 2.5);
        feature->SetValue(2, std::int64_t{7});
        EXPECT_NE(number_of([&] { feature->SetValue(2, std::string("x")); }), 0);
        EXPECT_NE(number_of([&] { feature->SetValue(2, std::numeric_limits<double>::quiet_NaN()); }), 0);
        feature->Store();
        cursor->Flush();
    }
    EXPECT_EQ(column_of(*features, "Time2")[0], FieldValue(std::int64_t{2}));
    EXPECT_EQ(column_of(*features, "Speed")[0], FieldValue(7.0));
}

TEST_P(VectorContract, Big_and_tiny_numbers_come_back_bit_for_bit) {
    const std::vector<double> numbers = {0.1,
                                         1.0 / 3.0,
                                         123456789012.345,
                                         9.87654321098765e12,
                                         1e-12,
                                         -1e300,
                                         1.23456789012345e-9,
                                         -0.0001234567890123456789,
                                         4.9e-324,
                                         1.7976931348623157e308};
    std::vector<Row> rows;
    for (const double number : numbers) rows.push_back({Geometry::OfPoint({0, 0}), {"a", std::int64_t{1}, number}});
    const auto layer = host->MakeLayer(fixes_definition(), rows);
    const auto values = column_of(*layer->FeatureClass(), "Speed");
    for (std::size_t i = 0; i < numbers.size(); ++i) EXPECT_EQ(values[i], FieldValue(numbers[i]));
}

TEST_P(VectorContract, A_long_text_comes_back_whole) {
    FeatureClassDefinition definition = fixes_definition();
    definition.Fields[0].Length = 254;
    const std::string text(253, 'x');
    const auto layer = host->MakeLayer(definition, {{Geometry::OfPoint({0, 0}), {text, std::int64_t{1}, 1.0}}});
    EXPECT_EQ(column_of(*layer->FeatureClass(), "ID")[0], FieldValue(text));
}

TEST_P(VectorContract, Deleting_renumbers_nothing_while_the_pass_goes_on) {
    const auto layer = host->MakeLayer(fixes_definition(), five_fixes());
    const auto features = layer->FeatureClass();
    const auto oids = oids_of(*features);
    {
        const auto outer = features->Find({});
        const auto first = outer->NextFeature();
        {
            const auto inner = features->Find({});
            inner->NextFeature();
            inner->NextFeature()->Delete();
            EXPECT_EQ(inner->NextFeature()->OID(), oids[2]);
            inner->NextFeature()->Delete();
            inner->Flush();
        }
        EXPECT_EQ(oids_of(*features), (std::vector{oids[0], oids[2], oids[4]}));
        EXPECT_EQ(features->FeatureCount(), 3);
        EXPECT_EQ(ValueText(feature_at(*features, 2)->Value(1)), "123456789012345678");
        EXPECT_EQ(oids_of(*features->Find(where("FID", oids[4]))), std::vector{oids[4]});
        EXPECT_EQ(first->OID(), oids[0]);
    }
    EXPECT_EQ(features->FeatureCount(), 3);
    EXPECT_EQ(column_of(*features, "Time2"),
              (std::vector<FieldValue>{std::int64_t{60}, std::int64_t{-180}, std::int64_t{123456789012345678}}));
    const auto again = host->Reopen(*layer);
    EXPECT_EQ(again->FeatureCount(), 3);
    EXPECT_EQ(feature_at(*again, 0)->Shape(), five_fixes()[0].Shape);
    EXPECT_TRUE(feature_at(*again, 1)->Shape().IsNull());
    EXPECT_EQ(feature_at(*again, 2)->Shape(), five_fixes()[4].Shape);
}

TEST_P(VectorContract, A_deleted_row_cannot_be_deleted_or_stored_again) {
    const auto layer = host->MakeLayer(fixes_definition(), five_fixes());
    const auto cursor = layer->FeatureClass()->Find({});
    const auto feature = cursor->NextFeature();
    feature->Delete();
    EXPECT_EQ(number_of([&] { feature->Delete(); }), 5);
    feature->SetValue(1, std::int64_t{5});
    EXPECT_EQ(number_of([&] { feature->Store(); }), 5);
}

TEST_P(VectorContract, Deleting_every_row_leaves_an_empty_class_that_still_works) {
    const auto layer = host->MakeLayer(fixes_definition(), five_fixes());
    const auto features = layer->FeatureClass();
    {
        const auto cursor = features->Find({});
        while (const auto feature = cursor->NextFeature()) feature->Delete();
        cursor->Flush();
    }
    EXPECT_EQ(features->FeatureCount(), 0);
    EXPECT_TRUE(features->Bounds().IsEmpty());
    EXPECT_EQ(host->Reopen(*layer)->FeatureCount(), 0);
    EXPECT_EQ(features->Table().AddField({"X", FieldType::kDouble, 0, 0}), 3);
}

TEST_P(VectorContract, An_empty_class_has_no_rows_and_no_bounds) {
    const auto layer = host->MakeLayer(fixes_definition(), {});
    EXPECT_EQ(layer->FeatureClass()->FeatureCount(), 0);
    EXPECT_FALSE(layer->FeatureClass()->Find({})->NextFeature());
    EXPECT_TRUE(layer->FeatureClass()->Bounds().IsEmpty());
    EXPECT_EQ(layer->FeatureClass()->Table().Fields().size(), 3U);
    EXPECT_EQ(layer->Selection()->Count(), 0);
}

TEST_P(VectorContract, Rows_without_any_shape_have_no_bounds) {
    const auto layer = host->MakeLayer(fixes_definition(), {{Geometry(), {"a", std::int64_t{1}, 1.0}}});
    EXPECT_TRUE(layer->FeatureClass()->Bounds().IsEmpty());
    EXPECT_EQ(layer->FeatureClass()->FeatureCount(), 1);
}

TEST_P(VectorContract, Queries_go_by_the_typed_value) {
    const auto layer = host->MakeLayer(fixes_definition(), five_fixes());
    const auto features = layer->FeatureClass();
    const auto oids = oids_of(*features);
    EXPECT_EQ(oids_of(*features->Find(where("ID", "O'Malley"))), std::vector{oids[2]});
    EXPECT_EQ(oids_of(*features->Find(where("id", "wolf"))), (std::vector{oids[0], oids[1]}));
    EXPECT_EQ(oids_of(*features->Find(where("Speed", 0.25))), std::vector{oids[0]});
    EXPECT_EQ(oids_of(*features->Find(where("Speed", 1e13))), std::vector{oids[4]});
    EXPECT_EQ(oids_of(*features->Find(where("Time2", 120.0))), std::vector{oids[1]});
    EXPECT_EQ(oids_of(*features->Find(where("Time2", std::int64_t{123456789012345678}))), std::vector{oids[4]});
    EXPECT_EQ(oids_of(*features->Find(where("FID", oids[3]))), std::vector{oids[3]});
    EXPECT_TRUE(oids_of(*features->Find(where("FID", oids[4] + 1000))).empty());
    EXPECT_TRUE(oids_of(*features->Find(where("ID", "' OR '1'='1"))).empty());
    EXPECT_TRUE(oids_of(*features->Find(where("ID", "WOLF"))).empty());
    EXPECT_EQ(number_of([&] { features->Find(where("Nothing", 1.0)); }), 5);
}

TEST_P(VectorContract, A_selection_holds_only_its_rows_in_ascending_order) {
    const auto layer = host->MakeLayer(fixes_definition(), five_fixes());
    const auto oids = oids_of(*layer->FeatureClass());
    EXPECT_EQ(layer->Selection()->Count(), 0);
    host->Select(*layer, {oids[4], oids[0], oids[2]});
    const auto selection = layer->Selection();
    EXPECT_EQ(selection->Count(), 3);
    EXPECT_EQ(oids_of(*selection->Find({})), (std::vector{oids[0], oids[2], oids[4]}));
    EXPECT_EQ(oids_of(*selection->Find(where("ID", "wolf"))), std::vector{oids[0]});
    EXPECT_TRUE(oids_of(*selection->Find(where("FID", oids[1]))).empty());
    EXPECT_EQ(oids_of(*selection->Find(where("FID", oids[2]))), std::vector{oids[2]});
    EXPECT_EQ(selection->Find({})->NextFeature()->Shape(), five_fixes()[0].Shape);
}

TEST_P(VectorContract, Rows_deleted_through_a_selection_leave_it) {
    const auto layer = host->MakeLayer(fixes_definition(), five_fixes());
    const auto oids = oids_of(*layer->FeatureClass());
    host->Select(*layer, {oids[1], oids[3], oids[4]});
    {
        const auto cursor = layer->Selection()->Find({});
        cursor->NextFeature();
        cursor->NextFeature()->Delete();
        EXPECT_EQ(layer->Selection()->Count(), 2);
        EXPECT_EQ(cursor->NextFeature()->OID(), oids[4]);
        cursor->Flush();
    }
    EXPECT_EQ(layer->FeatureClass()->FeatureCount(), 4);
    EXPECT_EQ(oids_of(*layer->FeatureClass()).size(), 4U);
}

TEST_P(VectorContract, A_layer_that_can_be_changed_has_no_reason_against_it) {
    const auto layer = host->MakeLayer(fixes_definition(), five_fixes());
    EXPECT_EQ(layer->WhyReadOnly(), "");
}

TEST_P(VectorContract, Inserted_rows_are_there_after_flush) {
    const auto layer = host->MakeLayer(fixes_definition(), five_fixes());
    const auto features = layer->FeatureClass();
    {
        const auto cursor = features->Insert();
        const std::vector<FieldValue> values = {"new", std::int64_t{1}};
        cursor->Insert(Geometry::OfPoint({1, 2}), values);
        cursor->Flush();
    }
    EXPECT_EQ(features->FeatureCount(), 6);
    const auto again = host->Reopen(*layer);
    EXPECT_EQ(column_of(*again, "ID")[5], FieldValue("new"));
    EXPECT_TRUE(IsMissing(column_of(*again, "Speed")[5]));
    EXPECT_EQ(feature_at(*again, 5)->Shape(), Geometry::OfPoint({1, 2}));
    EXPECT_EQ(column_of(*again, "Time2")[4], FieldValue(std::int64_t{123456789012345678}));
}

TEST_P(VectorContract, A_shape_of_another_type_is_refused) {
    const auto layer = host->MakeLayer(fixes_definition(), five_fixes());
    const auto cursor = layer->FeatureClass()->Insert();
    const Geometry line{ShapeType::kPolyline, {}, {{{0, 0}, {1, 1}}}};
    EXPECT_EQ(number_of([&] { cursor->Insert(line, {}); }), 5);
}

TEST_P(VectorContract, Polygons_with_holes_and_lines_of_parts_come_back) {
    const std::vector<Point> outer = {{0, 0}, {0, 10}, {10, 10}, {10, 0}, {0, 0}};
    const std::vector<Point> hole = {{4, 4}, {6, 4}, {6, 6}, {4, 6}, {4, 4}};
    const std::vector<Point> island = {{20, 0}, {20, 5}, {25, 5}, {25, 0}, {20, 0}};
    const Geometry polygon{ShapeType::kPolygon, {}, {outer, hole, island}};
    const auto polygons =
        host->MakeLayer({"p", ShapeType::kPolygon, {{"A", FieldType::kDouble, 0, 0}}, {}}, {{polygon, {1.0}}});
    EXPECT_EQ(polygons->FeatureClass()->Shape(), ShapeType::kPolygon);
    EXPECT_EQ(feature_at(*polygons->FeatureClass(), 0)->Shape(), polygon);

    const Geometry line{ShapeType::kPolyline, {}, {{{0, 0}, {3, 4}}, {{10, 0}, {10, 5}, {15, 5}}}};
    const auto lines =
        host->MakeLayer({"l", ShapeType::kPolyline, {{"A", FieldType::kDouble, 0, 0}}, {}}, {{line, {1.0}}});
    EXPECT_EQ(lines->FeatureClass()->Shape(), ShapeType::kPolyline);
    EXPECT_EQ(feature_at(*lines->FeatureClass(), 0)->Shape(), line);
}

TEST_P(VectorContract, A_created_shapefile_is_found_only_once_published) {
    IShapefileWorkspace* shapefiles = host->Shapefiles();
    if (!shapefiles) return;
    const auto created = shapefiles->Create(host->Folder(), fixes_definition());
    {
        const auto cursor = created->Insert();
        for (const Row& row : five_fixes()) cursor->Insert(row.Shape, row.Values);
        cursor->Flush();
    }
    EXPECT_FALSE(shapefiles->Open(host->Folder(), "fixes"));
    EXPECT_EQ(created->Table().AddField({"LENGTH", FieldType::kDouble, 0, 0}), 3);
    {
        const auto cursor = created->Find({});
        while (const auto feature = cursor->NextFeature()) {
            feature->SetValue(3, 2.5);
            feature->Store();
        }
    }
    shapefiles->Publish(created);
    const auto found = shapefiles->Open(host->Folder(), "fixes");
    ASSERT_TRUE(found);
    EXPECT_EQ(found->FeatureCount(), 5);
    EXPECT_EQ(column_of(*found, "LENGTH"), std::vector<FieldValue>(5, 2.5));
    EXPECT_EQ(column_of(*found, "ID")[3], FieldValue("Bär"));
    EXPECT_EQ(created->FeatureCount(), 5);
    EXPECT_EQ(column_of(*created, "ID")[2], FieldValue("O'Malley"));
    EXPECT_EQ(number_of([&] { shapefiles->Publish(created); }), 5);
}

TEST_P(VectorContract, A_shapefile_name_that_is_taken_is_error_58) {
    IShapefileWorkspace* shapefiles = host->Shapefiles();
    if (!shapefiles) return;
    const auto one = shapefiles->Create(host->Folder(), fixes_definition());
    const auto two = shapefiles->Create(host->Folder(), fixes_definition());
    shapefiles->Publish(one);
    EXPECT_EQ(number_of([&] { shapefiles->Create(host->Folder(), fixes_definition()); }), 58);
    EXPECT_EQ(number_of([&] { shapefiles->Publish(two); }), 58);
}

TEST_P(VectorContract, A_shapefile_name_that_leaves_its_folder_is_error_5) {
    IShapefileWorkspace* shapefiles = host->Shapefiles();
    if (!shapefiles) return;
    for (const char* name : {"../out", "a*", "", "a/b"}) {
        FeatureClassDefinition definition = fixes_definition();
        definition.Name = name;
        EXPECT_EQ(number_of([&] { shapefiles->Create(host->Folder(), definition); }), 5) << name;
    }
}

TEST_P(VectorContract, A_deleted_shapefile_is_gone) {
    IShapefileWorkspace* shapefiles = host->Shapefiles();
    if (!shapefiles) return;
    shapefiles->Publish(shapefiles->Create(host->Folder(), fixes_definition()));
    shapefiles->Delete(host->Folder(), "fixes");
    EXPECT_FALSE(shapefiles->Open(host->Folder(), "fixes"));
    EXPECT_EQ(number_of([&] { shapefiles->Delete(host->Folder(), "fixes"); }), 53);
}

}  // namespace wxl::contract
