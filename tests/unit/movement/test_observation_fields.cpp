#include "movement/OVIOBS.h"
#include "tests/unit/movement/movement_desk.h"

#include <limits>

namespace wxl::tests {
namespace {

using movement::OVIOBS;
using namespace platform;

const Field kTime2{.Name = "Time2", .Type = FieldType::kDouble};
const FieldValue kMissing;

constexpr const char* kQuestion =
    "This will add the following fields to the selected layer.\n"
    "\n"
    "T_Obs_Sec = Time since last observation in seconds\n"
    "T_Cumul = Time cumulative in seconds\n"
    "Dist = Distance from last observation in meters\n"
    "Dist_Cumul = Distance cumulative in meters\n"
    "Me_Per_Sec = Meters per second from last obs.\n"
    "Mi_Per_Hr = Miles per hour from last obs.\n";

class ObservationFields : public MovementDesk {
protected:
    ObservationFields() { Tool.OnCreate(Application); }

    void ClickYes() {
        Messages.WillAnswer({Answer::kYes});
        Tool.OnClick();
    }

    double Number(std::int64_t oid, const char* field) { return ValueNumber(Layer->Features().ValueOf(oid, field)); }

    OVIOBS Tool{Services, PleaseWait};
};

TEST_F(ObservationFields, A_track_along_a_line) {
    auto& table = AddLayer({kTime2});
    table.AddPoint(500000, 5000000, {0.0});
    table.AddPoint(500120, 5000000, {60.0});
    table.AddPoint(500300, 5000000, {180.0});
    ClickYes();

    EXPECT_EQ(Number(0, "T_Obs_Sec"), 0.0);
    EXPECT_EQ(Number(0, "T_Cumul"), 0.0);
    for (const char* unwritten : {"Dist", "Dist_Cumul", "Me_Per_Sec", "Mi_Per_Hr"})
        EXPECT_EQ(table.ValueOf(0, unwritten), kMissing) << unwritten;
    EXPECT_EQ(Number(1, "T_Obs_Sec"), 60.0);
    EXPECT_EQ(Number(2, "T_Obs_Sec"), 120.0);
    EXPECT_EQ(Number(1, "T_Cumul"), 60.0);
    EXPECT_EQ(Number(2, "T_Cumul"), 180.0);
    EXPECT_EQ(Number(1, "Dist"), 120.0);
    EXPECT_EQ(Number(2, "Dist"), 180.0);
    EXPECT_EQ(Number(1, "Dist_Cumul"), 120.0);
    EXPECT_EQ(Number(2, "Dist_Cumul"), 300.0);
    EXPECT_EQ(Number(1, "Me_Per_Sec"), 2.0);
    EXPECT_EQ(Number(2, "Me_Per_Sec"), 1.5);
    // 2 x 3.28 x 3600 / 5280 and 1.5 x 3.28 x 3600 / 5280
    EXPECT_EQ(Number(1, "Mi_Per_Hr"), 4.472727);
    EXPECT_EQ(Number(2, "Mi_Per_Hr"), 3.354545);
    EXPECT_EQ(Messages.Texts(), Texts{kQuestion});
    EXPECT_EQ(table.Flushes(), 1);
}

TEST_F(ObservationFields, Animals_whose_rows_alternate_are_tracks_of_their_own) {
    auto& table = AddLayer({kTime2, {.Name = "animal", .Type = FieldType::kText}, {.Name = "Dist"}});
    table.AddPoint(500000, 5000000, {0.0, "a", 7.0});
    table.AddPoint(600000, 5000000, {0.0, "b", 7.0});
    table.AddPoint(900000, 5000000, {5.0, "", 7.0});
    table.AddPoint(500120, 5000000, {60.0, "a", 7.0});
    table.AddPoint(600030, 5000040, {10.0, "b", 7.0});
    Tool.SetAnimalField("ANIMAL");
    ClickYes();
    const std::vector<FieldValue> distances = {kMissing, kMissing, kMissing, 120.0, 50.0};
    const std::vector<FieldValue> times = {0.0, 0.0, kMissing, 60.0, 10.0};
    for (std::int64_t row = 0; row < 5; ++row) {
        EXPECT_EQ(table.ValueOf(row, "Dist"), distances[static_cast<std::size_t>(row)]) << row;
        EXPECT_EQ(table.ValueOf(row, "T_Cumul"), times[static_cast<std::size_t>(row)]) << row;
    }
    EXPECT_EQ(Messages.Texts(), Texts{kQuestion});
}

TEST_F(ObservationFields, Six_double_fields_are_added_in_order_with_the_default_length) {
    auto& table = AddLayer({kTime2});
    table.AddPoint(0, 0, {0.0});
    ClickYes();
    std::vector<std::string> names;
    for (const Field& field : static_cast<IFeatureClass&>(table).Table().Fields()) {
        names.push_back(field.Name);
        EXPECT_EQ(field.Type, FieldType::kDouble);
        EXPECT_EQ(field.Length, 0);
        EXPECT_EQ(field.Precision, 0);
    }
    EXPECT_EQ(names, (Texts{"Time2", "T_Obs_Sec", "T_Cumul", "Dist", "Dist_Cumul", "Me_per_Sec", "Mi_per_hr"}));
}

TEST_F(ObservationFields, The_question_has_its_title_and_buttons) {
    AddLayer({kTime2});
    Messages.WillAnswer({Answer::kNo});
    Tool.OnClick();
    ASSERT_EQ(Messages.Boxes().size(), 1U);
    EXPECT_EQ(Messages.Last().Text, kQuestion);
    EXPECT_EQ(Messages.Last().Title, "Add Time and Distance Fields");
    EXPECT_EQ(Messages.Last().Choice, Buttons::kYesNo);
    EXPECT_EQ(Messages.Last().About, Topic::kAddFields);
}

TEST_F(ObservationFields, No_changes_nothing) {
    auto& table = AddLayer({kTime2});
    table.AddPoint(0, 0, {0.0});
    Messages.WillAnswer({Answer::kNo});
    Tool.OnClick();
    EXPECT_EQ(static_cast<IFeatureClass&>(table).Table().Fields().size(), 1U);
    EXPECT_EQ(PleaseWait.Shown, 0);
}

TEST_F(ObservationFields, No_layer_or_no_feature_layer) {
    Tool.OnClick();
    EXPECT_EQ(Messages.Last().Text, "Please select a points layer");
    EXPECT_EQ(Messages.Last().Title, "Display Tracks");
    platform::Layer raster;
    raster.Class = LayerClass::kRaster;
    Application->Doc().SetSelectedLayer(raster);
    Tool.OnClick();
    EXPECT_EQ(Messages.Texts(), (Texts{"Please select a points layer", "Please select a points layer"}));
}

TEST_F(ObservationFields, A_layer_without_time2_and_a_line_layer_with_it_are_refused) {
    AddLayer({{.Name = "Time1", .Type = FieldType::kDouble}});
    Tool.OnClick();
    AddLayer({kTime2}, utm15(), ShapeType::kPolyline);
    Tool.OnClick();
    AddLayer({kTime2}, utm15(), ShapeType::kPolygon);
    Tool.OnClick();
    const std::string text = "You must select a points layer with a Time2 field";
    EXPECT_EQ(Messages.Texts(), (Texts{text, text, text}));
    EXPECT_EQ(Messages.Last().Title, "");
}

TEST_F(ObservationFields, Time2_is_found_without_regard_to_case) {
    AddLayer({{.Name = "TIME2", .Type = FieldType::kInteger}}).AddPoint(0, 0, {std::int64_t{5}});
    ClickYes();
    EXPECT_EQ(Number(0, "T_Cumul"), 0.0);
}

TEST_F(ObservationFields, A_read_only_layer_is_told_before_anything_is_touched) {
    auto& table = AddLayer({kTime2});
    table.AddPoint(0, 0, {0.0});
    Layer->SetWhyReadOnly("The layer is being edited. Save or discard the edits first.");
    Tool.OnClick();
    EXPECT_EQ(Messages.Texts(), Texts{"The layer is being edited. Save or discard the edits first."});
    EXPECT_EQ(static_cast<IFeatureClass&>(table).Table().Fields().size(), 1U);
}

TEST_F(ObservationFields, One_point_keeps_its_other_fields) {
    auto& table = AddLayer({kTime2, {.Name = "Dist", .Type = FieldType::kDouble}});
    table.AddPoint(0, 0, {10.0, 77.0});
    ClickYes();
    EXPECT_EQ(Number(0, "T_Obs_Sec"), 0.0);
    EXPECT_EQ(Number(0, "T_Cumul"), 0.0);
    EXPECT_EQ(Number(0, "Dist"), 77.0);
    EXPECT_EQ(table.ValueOf(0, "Me_Per_Sec"), kMissing);
}

TEST_F(ObservationFields, An_empty_layer_is_done_at_once) {
    AddLayer({kTime2});
    ClickYes();
    EXPECT_EQ(Messages.Texts(), Texts{kQuestion});
    EXPECT_EQ(PleaseWait.Form, nullptr);
}

TEST_F(ObservationFields, Equal_times_end_the_pass_before_the_row_is_written) {
    auto& table = AddLayer({kTime2});
    table.AddPoint(0, 0, {10.0});
    table.AddPoint(5, 0, {10.0});
    table.AddPoint(9, 0, {20.0});
    ClickYes();
    EXPECT_EQ(Messages.Last().Text,
              "Divide by zero!!  Check your data.  \n"
              "You can not have a value of zero in the time2 field \n"
              "or two observartions that were taken at the same time.");
    EXPECT_EQ(Messages.Last().Title, "");
    EXPECT_EQ(Number(0, "T_Obs_Sec"), 0.0);
    EXPECT_EQ(table.ValueOf(1, "T_Obs_Sec"), kMissing);
    EXPECT_EQ(table.ValueOf(2, "T_Obs_Sec"), kMissing);
    EXPECT_EQ(table.Flushes(), 1);
    EXPECT_EQ(PleaseWait.Form, nullptr);
}

TEST_F(ObservationFields, A_projection_other_than_utm_fails_at_the_second_row) {
    for (const char* name : {"GCS_North_American_1983", "nad_1983_utm_zone_15n", ""}) {
        SpatialReference reference = utm15();
        reference.Name = name;
        auto& table = AddLayer({kTime2}, reference);
        table.AddPoint(0, 0, {10.0});
        table.AddPoint(5, 0, {10.0});
        ClickYes();
        EXPECT_EQ(Messages.Last().Text,
                  "The fields have not been calculated! The data needs to be in and defined with a UTM projection.");
        EXPECT_EQ(Messages.Last().Title, "");
        EXPECT_EQ(Number(0, "T_Obs_Sec"), 0.0);
        EXPECT_EQ(Number(0, "T_Cumul"), 0.0);
        EXPECT_EQ(table.ValueOf(1, "T_Obs_Sec"), kMissing);
    }
}

TEST_F(ObservationFields, A_single_row_needs_no_projection) {
    AddLayer({kTime2}, {}).AddPoint(0, 0, {10.0});
    ClickYes();
    EXPECT_EQ(Messages.Texts(), Texts{kQuestion});
}

TEST_F(ObservationFields, A_step_back_in_time_gives_negative_speeds_and_a_falling_sum) {
    AddLayer({kTime2});
    Layer->Features().AddPoint(0, 0, {100.0});
    Layer->Features().AddPoint(30, 40, {110.0});
    Layer->Features().AddPoint(30, 90, {85.0});
    ClickYes();
    EXPECT_EQ(Number(2, "T_Obs_Sec"), -25.0);
    EXPECT_EQ(Number(2, "T_Cumul"), -15.0);
    EXPECT_EQ(Number(2, "Me_Per_Sec"), -2.0);
    // -2 x 3.28 x 3600 / 5280
    EXPECT_EQ(Number(2, "Mi_Per_Hr"), -4.472727);
}

TEST_F(ObservationFields, Time2_is_rounded_half_to_even) {
    AddLayer({kTime2});
    Layer->Features().AddPoint(0, 0, {0.5});   // 0
    Layer->Features().AddPoint(1, 0, {2.5});   // 2
    Layer->Features().AddPoint(2, 0, {3.5});   // 4
    Layer->Features().AddPoint(3, 0, {4.51});  // 5
    ClickYes();
    EXPECT_EQ(Number(1, "T_Obs_Sec"), 2.0);
    EXPECT_EQ(Number(2, "T_Obs_Sec"), 2.0);
    EXPECT_EQ(Number(3, "T_Obs_Sec"), 1.0);
}

TEST_F(ObservationFields, Stored_values_are_rounded_half_to_even_and_sums_are_not) {
    AddLayer({kTime2});
    Layer->Features().AddPoint(0.0, 0, {0.0});
    Layer->Features().AddPoint(2.5, 0, {80.0});   // 2.5 / 80 = 0.03125
    Layer->Features().AddPoint(5.0, 0, {160.0});  // sum 5, not 4
    Layer->Features().AddPoint(8.5, 0, {240.0});  // 3.5, sum 8.5
    ClickYes();
    EXPECT_EQ(Number(1, "Dist"), 2.0);
    EXPECT_EQ(Number(1, "Me_Per_Sec"), 0.0312);
    EXPECT_EQ(Number(2, "Dist_Cumul"), 5.0);
    EXPECT_EQ(Number(3, "Dist"), 4.0);
    EXPECT_EQ(Number(3, "Dist_Cumul"), 8.0);
}

TEST_F(ObservationFields, A_second_run_keeps_the_fields_and_computes_them_again) {
    auto& table = AddLayer({kTime2});
    table.AddPoint(0, 0, {0.0});
    table.AddPoint(10, 0, {10.0});
    ClickYes();
    const auto fields = static_cast<IFeatureClass&>(table).Table().Fields();
    const auto cursor = table.Find({});
    cursor->NextFeature();
    const auto second = cursor->NextFeature();
    second->SetValue(0, 5.0);
    second->Store();
    ClickYes();
    EXPECT_EQ(static_cast<IFeatureClass&>(table).Table().Fields(), fields);
    EXPECT_EQ(Number(1, "Me_Per_Sec"), 2.0);
}

TEST_F(ObservationFields, A_difference_beyond_32_bits_is_an_overflow_and_earlier_rows_stay) {
    auto& table = AddLayer({kTime2});
    table.AddPoint(0, 0, {-2147483648.0});
    table.AddPoint(1, 0, {-2147483647.0});
    table.AddPoint(2, 0, {2147483647.0});
    ClickYes();
    EXPECT_EQ(Messages.Last().Text, "CalcFeatures sub Error number: 6");
    EXPECT_EQ(Number(1, "T_Obs_Sec"), 1.0);
    EXPECT_EQ(table.ValueOf(2, "T_Obs_Sec"), kMissing);
    EXPECT_EQ(table.Flushes(), 1);
}

TEST_F(ObservationFields, Times_beyond_32_bits_missing_times_and_texts_are_errors) {
    const auto report = [&](const Field& field, const FieldValue& time) {
        AddLayer({field}).AddPoint(0, 0, {time});
        ClickYes();
        return Messages.Last().Text;
    };
    EXPECT_EQ(report(kTime2, 2147483648.0), "CalcFeatures sub Error number: 6");
    EXPECT_EQ(report(kTime2, kMissing), "CalcFeatures sub Error number: 13");
    EXPECT_EQ(report({.Name = "Time2", .Type = FieldType::kText}, "noon"), "CalcFeatures sub Error number: 13");
}

TEST_F(ObservationFields, A_row_without_a_shape_is_an_error) {
    AddLayer({kTime2});
    Layer->Features().AddPoint(0, 0, {0.0});
    Layer->Features().Add(platform::Geometry(), {10.0});
    ClickYes();
    EXPECT_EQ(Messages.Last().Text, "CalcFeatures sub Error number: 91");
}

TEST_F(ObservationFields, A_first_row_without_a_shape_is_an_error_at_the_second) {
    AddLayer({kTime2});
    Layer->Features().Add(platform::Geometry(), {0.0});
    Layer->Features().AddPoint(0, 0, {10.0});
    ClickYes();
    EXPECT_EQ(Messages.Last().Text, "CalcFeatures sub Error number: 91");
    EXPECT_EQ(Number(0, "T_Cumul"), 0.0);
    EXPECT_EQ(Layer->Features().ValueOf(1, "T_Cumul"), kMissing);
}

TEST_F(ObservationFields, More_than_32767_rows_fail_before_the_question) {
    auto& table = AddLayer({kTime2});
    for (int i = 0; i < 32768; ++i) table.AddPoint(i, 0, {static_cast<double>(i)});
    Tool.OnClick();
    EXPECT_EQ(Messages.Texts(), Texts{"calcobsfields sub Error number: 6"});
}

TEST_F(ObservationFields, Exactly_32767_rows_are_filled) {
    auto& table = AddLayer({kTime2});
    for (int i = 0; i < 32767; ++i) table.AddPoint(i, 0, {static_cast<double>(i)});
    ClickYes();
    EXPECT_EQ(Messages.Texts(), Texts{kQuestion});
    EXPECT_EQ(Number(32766, "T_Cumul"), 32766.0);
    EXPECT_EQ(PleaseWait.Form, nullptr);
}

TEST_F(ObservationFields, The_32768th_row_of_a_cursor_overflows_and_the_rows_before_it_stay) {
    auto& table = AddLayer({kTime2});
    for (int i = 0; i < 32769; ++i) table.AddPoint(i, 0, {static_cast<double>(i)});
    Tool.Addfields();
    Tool.CalcFeatures(Tool.getAndSelectAllFromActiveLayer());
    EXPECT_EQ(Messages.Texts(), Texts{"CalcFeatures sub Error number: 6"});
    EXPECT_EQ(Number(32766, "T_Cumul"), 32766.0);
    EXPECT_EQ(table.ValueOf(32767, "T_Cumul"), kMissing);
    EXPECT_NE(PleaseWait.Form, nullptr);  // windows stay after an error
}

TEST_F(ObservationFields, Beyond_the_limits_every_row_is_filled) {
    auto& table = AddLayer({kTime2});
    for (int i = 0; i < 32769; ++i) table.AddPoint(i, 0, {static_cast<double>(i)});
    Tool.SetBeyondLimits(true);
    ClickYes();
    EXPECT_EQ(Messages.Texts(), Texts{kQuestion});
    EXPECT_EQ(Number(32768, "T_Cumul"), 32768.0);
}

TEST_F(ObservationFields, The_progress_bar_runs_over_the_rows_and_the_window_goes) {
    AddLayer({kTime2});
    for (int i = 0; i < 1000; ++i) Layer->Features().AddPoint(i, 0, {static_cast<double>(i)});
    double maximum = 0.0;
    double last = 0.0;
    Host.SetOnYield([&] {
        if (!PleaseWait.Form) return;
        maximum = PleaseWait.Form->PBar.Maximum;
        EXPECT_GE(PleaseWait.Form->PBar.Value, last);
        last = PleaseWait.Form->PBar.Value;
    });
    ClickYes();
    EXPECT_EQ(maximum, 1000.0);
    EXPECT_EQ(PleaseWait.LastValue, 1000.0);
    EXPECT_EQ(PleaseWait.Shown, 1);
    EXPECT_EQ(PleaseWait.Hidden, 1);
    EXPECT_GE(Host.Yields(), 100);
    EXPECT_LE(Host.Yields(), 210);
}

TEST_F(ObservationFields, A_failing_store_is_reported_and_stored_rows_are_flushed) {
    auto& table = AddLayer({kTime2});
    table.AddPoint(0, 0, {0.0});
    table.AddPoint(1, 0, {1.0});
    table.SetBeforeStore([](std::int64_t oid) {
        if (oid == 1) Raise(error_number::kDiskFull);
    });
    ClickYes();
    EXPECT_EQ(Messages.Last().Text, "CalcFeatures sub Error number: 61");
    EXPECT_EQ(Number(0, "T_Obs_Sec"), 0.0);
    EXPECT_EQ(table.Flushes(), 1);
}

TEST_F(ObservationFields, A_pass_over_a_table_without_time2_says_so) {
    AddLayer({{.Name = "X", .Type = FieldType::kDouble}}).AddPoint(0, 0, {1.0});
    Tool.CalcFeatures(Tool.getAndSelectAllFromActiveLayer());
    EXPECT_EQ(Messages.Texts(), Texts{"Can not calculate fields.  There is not a Time2 field in the table"});
    EXPECT_EQ(Messages.Last().Title, "");
    EXPECT_EQ(PleaseWait.Form, nullptr);
}

TEST_F(ObservationFields, DeleteFields_deletes_the_six_and_leaves_the_rest) {
    auto& table = AddLayer({kTime2, {.Name = "Name", .Type = FieldType::kText}});
    table.AddPoint(0, 0, {0.0, "a"});
    ClickYes();
    Tool.DeleteFields();
    const auto fields = static_cast<IFeatureClass&>(table).Table().Fields();
    ASSERT_EQ(fields.size(), 2U);
    EXPECT_EQ(fields[1].Name, "Name");
    Tool.DeleteFields();
    EXPECT_EQ(static_cast<IFeatureClass&>(table).Table().Fields().size(), 2U);
}

TEST_F(ObservationFields, Members_without_a_layer_report_under_their_own_labels) {
    Tool.Addfields();
    Tool.DeleteFields();
    EXPECT_EQ(Tool.getAndSelectAllFromActiveLayer(), nullptr);
    Tool.CalcFeatures(nullptr);
    EXPECT_EQ(Tool.GetSelectionFromActiveLayer(), nullptr);
    platform::Layer raster;
    raster.Name = "dem";
    Application->Doc().Map().AddLayer(raster);
    EXPECT_EQ(Tool.GetSelectionFrom2Layer("dem"), nullptr);
    EXPECT_EQ(Messages.Texts(),
              (Texts{"Addfields sub Error number: 91", "DeleteFields Error number: 91",
                     "Getandselectallformactivelayer sub Error number: 91", "CalcFeatures sub Error number: 91",
                     "getselectionfromactivelayer Error number: 91", "Getselectionfromlayer sub Error number: 13"}));
    for (const MessageBox& box : Messages.Boxes()) {
        EXPECT_EQ(box.Title, "");
        EXPECT_EQ(box.Choice, Buttons::kOk);
    }
}

TEST_F(ObservationFields, Selections_are_found_by_layer_and_by_name) {
    AddLayer({kTime2}).AddPoint(0, 0, {0.0});
    Layer->SelectAll();
    ASSERT_NE(Tool.GetSelectionFromActiveLayer(), nullptr);
    EXPECT_EQ(Tool.GetSelectionFromActiveLayer()->Count(), 1);
    ASSERT_NE(Tool.GetSelectionFrom2Layer("fixes"), nullptr);
    EXPECT_EQ(Tool.GetSelectionFrom2Layer("FIXES"), nullptr);
    EXPECT_TRUE(Messages.Boxes().empty());
}

TEST_F(ObservationFields, Without_an_application_or_a_readable_layer_the_command_reports) {
    SelectUnreadableLayer();
    Tool.OnClick();
    Tool.OnCreate(nullptr);
    Tool.OnClick();
    EXPECT_EQ(Messages.Texts(), (Texts{"calcobsfields sub Error number: 91", "calcobsfields sub Error number: 91"}));
}

TEST_F(ObservationFields, A_document_without_a_map_has_no_layer_by_name) {
    Application->Doc().SetMap(nullptr);
    EXPECT_EQ(Tool.GetSelectionFrom2Layer("fixes"), nullptr);
    EXPECT_EQ(Messages.Texts(), Texts{"Getselectionfromlayer sub Error number: 91"});
}

TEST_F(ObservationFields, A_click_before_OnCreate_is_reported) {
    OVIOBS fresh(Services, PleaseWait);
    fresh.OnClick();
    EXPECT_EQ(Messages.Texts(), Texts{"calcobsfields sub Error number: 91"});
}

}  // namespace
}  // namespace wxl::tests
