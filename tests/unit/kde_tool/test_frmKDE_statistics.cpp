#include "form_fixture.h"

#include <gmock/gmock.h>

namespace wxl::kde_tool {
namespace {

using platform::FieldType;
using platform::Icon;
using testing::ElementsAre;
using testing::IsEmpty;

class TheTables : public FormTest {
protected:
    /// Animal 12 walks along a line of four fixes 1000 apart, animal 3 has one fix.
    void OpenWithTwoAnimals() {
        auto& points = AddPoints("fixes");
        points.AddPoint(0, 0, {std::int64_t{12}, 1.0});
        points.AddPoint(1000, 1000, {std::int64_t{12}, 1.0});
        points.AddPoint(5, 5, {std::int64_t{3}, 1.0});
        points.AddPoint(2000, 2000, {std::int64_t{12}, 1.0});
        points.AddPoint(3000, 3000, {std::int64_t{12}, 1.0});
        Open();
    }

    void SaveTable(const std::string& file) {
        dialogs.WillChoose(file);
        form.btnIOSave_Click();
    }
};

// HREF of animal 12: sqrt(5/3) x 1000 x 4^(-1/6) = 1024.662973...; 3.5 x that + 0.5 = 3586.82...
constexpr double kHref = 1024.6629730041619;

TEST_F(TheTables, Calculate_without_layer_or_field_says_what_is_missing) {
    const std::string text =
        "Warning: a point feature layer and a unique ID field must be identified prior to calculating the "
        "independence of observation indices.";
    Open();
    messages.Clear();
    form.btnCalcIO_Click();
    EXPECT_THAT(messages.Texts(), ElementsAre(text));
    EXPECT_EQ(messages.Last().Title, "Cannot calculate");

    OpenWithTwoAnimals();
    messages.Clear();
    form.btnCalcIO_Click();
    EXPECT_THAT(messages.Texts(), ElementsAre(text));
    EXPECT_THAT(form.datagridIO.Columns, IsEmpty());
    EXPECT_FALSE(form.btnIOSave.Enabled);
}

TEST_F(TheTables, Calculate_fills_the_independence_table_and_enables_saving) {
    OpenWithTwoAnimals();
    ChooseField("Animal");
    form.btnCalcIO_Click();
    EXPECT_THAT(form.datagridIO.Columns, ElementsAre("Animal", "Count", "Schoener", "Swihart_Slade"));
    EXPECT_THAT(form.datagridIO.Rows,
                ElementsAre(ElementsAre("3", "1", "N/A", "N/A"), ElementsAre("12", "4", "0.6", "4")));
    EXPECT_TRUE(form.datagridIO.Visible);
    EXPECT_TRUE(form.btnIOSave.Enabled);
    EXPECT_TRUE(form.lblIO1.Enabled);
    EXPECT_TRUE(form.lblIO2.Enabled);
    EXPECT_THAT(messages.Texts(), IsEmpty());
    EXPECT_EQ(form.LargestReferenceBandwidth(), 0.0);
    EXPECT_EQ(form.txtBuffer.Text, "2000");
}

TEST_F(TheTables, Selected_features_only_are_counted_when_asked) {
    OpenWithTwoAnimals();
    ChooseField("Animal");
    layers[0]->Select({0, 1});
    form.chkUseSel.Value = 1;
    form.chkUseSel_Click();
    form.btnCalcIO_Click();
    EXPECT_THAT(form.datagridIO.Rows, ElementsAre(ElementsAre("12", "2", "2", "N/A")));
}

TEST_F(TheTables, Text_ids_are_shown_with_their_naming_ids) {
    auto& points = AddPoints("fixes", FieldType::kText);
    points.AddPoint(0, 0, {"wolf"});
    points.AddPoint(0, 0, {"bear"});
    Open();
    ChooseField("Animal");
    form.btnCalcIO_Click();
    EXPECT_THAT(form.datagridIO.Columns, ElementsAre("Animal", "Naming_ID", "Count", "Schoener", "Swihart_Slade"));
    EXPECT_THAT(form.datagridIO.Rows,
                ElementsAre(ElementsAre("bear", "1", "1", "N/A", "N/A"), ElementsAre("wolf", "2", "1", "N/A", "N/A")));
}

TEST_F(TheTables, Another_page_fills_the_variance_and_reference_bandwidth_tables) {
    OpenWithTwoAnimals();
    ChooseField("Animal");
    GoToPage(1);
    EXPECT_THAT(form.datagridVar.Columns, ElementsAre("Animal", "Count", "StdDev(x)", "StdDev(y)", "Ratio(x:y)"));
    EXPECT_THAT(form.datagridVar.Rows,
                ElementsAre(ElementsAre("3", "1", "N/A", "N/A", "N/A"),
                            ElementsAre("12", "4", "1290.99444873581", "1290.99444873581", "1")));
    EXPECT_THAT(form.datagridHref.Columns, ElementsAre("Animal", "Count", "href", "href (scaled)"));
    EXPECT_THAT(form.datagridHref.Rows, ElementsAre(ElementsAre("3", "1", "N/A", "N/A"),
                                                    ElementsAre("12", "4", "1024.66297300416", "0.7937005259841")));
    EXPECT_NEAR(form.LargestReferenceBandwidth(), kHref, 1e-9);
    EXPECT_EQ(form.txtBuffer.Text, "3586");
    EXPECT_THAT(form.datagridIO.Columns, IsEmpty());
    EXPECT_EQ(form.VarianceNumbers().size(), 2U);
    EXPECT_EQ(form.HrefNumbers().size(), 2U);
}

// 0.4 x 1024.66... x 3.5 + 0.5 = 1435.02...
TEST_F(TheTables, The_suggested_buffer_counts_the_largest_proportion) {
    OpenWithTwoAnimals();
    ChooseField("Animal");
    form.txtPropHref.Text = "0.2, 0.4 ,0.3";
    GoToPage(1);
    EXPECT_EQ(form.txtBuffer.Text, "3586");
    Choose(form.optPropHref, &frmKDE::optPropHref_Click);
    GoToPage(2);
    EXPECT_EQ(form.txtBuffer.Text, "1435");
    EXPECT_NEAR(form.LargestReferenceBandwidth(), kHref, 1e-9);
}

TEST_F(TheTables, Proportions_that_cannot_be_read_are_an_error_and_leave_the_buffer) {
    OpenWithTwoAnimals();
    ChooseField("Animal");
    Choose(form.optPropHref, &frmKDE::optPropHref_Click);
    for (const char* list : {"", "0.2, x", "0.5,,1"}) {
        messages.Clear();
        form.txtPropHref.Text = list;
        GoToPage(form.SSTab1.Current == 1 ? 2 : 1);
        EXPECT_EQ(form.txtBuffer.Text, "2000") << list;
        EXPECT_THAT(messages.Texts(), ElementsAre("Error: Type mismatch")) << list;
        EXPECT_EQ(messages.Last().Title, "Error");
        EXPECT_EQ(form.datagridHref.Rows.size(), 2U) << list;
    }
}

// Int(3.5 x 1024.66... x -1 + 0.5) = Int(-3585.82...), and Int(0.5).
TEST_F(TheTables, The_suggested_buffer_is_written_for_proportions_of_0_and_below_too) {
    OpenWithTwoAnimals();
    ChooseField("Animal");
    Choose(form.optPropHref, &frmKDE::optPropHref_Click);
    form.txtPropHref.Text = "-1";
    GoToPage(1);
    EXPECT_EQ(form.txtBuffer.Text, "-3586");
    form.txtPropHref.Text = "0";
    GoToPage(2);
    EXPECT_EQ(form.txtBuffer.Text, "0");
    EXPECT_THAT(messages.Texts(), IsEmpty());
}

TEST_F(TheTables, The_suggested_buffer_is_0_where_no_animal_has_a_reference_bandwidth) {
    AddPoints("fixes").AddPoint(1, 1, {std::int64_t{1}});
    Open();
    ChooseField("Animal");
    GoToPage(1);
    EXPECT_EQ(form.txtBuffer.Text, "0");
    EXPECT_EQ(form.LargestReferenceBandwidth(), 0.0);
    EXPECT_EQ(form.datagridHref.Rows.size(), 1U);
}

TEST_F(TheTables, Nothing_is_filled_while_layer_or_field_is_missing_or_the_page_stays_the_same) {
    OpenWithTwoAnimals();
    GoToPage(1);
    EXPECT_THAT(form.datagridVar.Columns, IsEmpty());
    ChooseField("Animal");
    form.SSTab1_Click(1);
    EXPECT_THAT(form.datagridVar.Columns, IsEmpty());
    EXPECT_THAT(messages.Texts(), IsEmpty());
}

TEST_F(TheTables, Tables_follow_the_layer_when_its_points_have_changed) {
    OpenWithTwoAnimals();
    ChooseField("Animal");
    GoToPage(1);
    layers[0]->Features().AddPoint(6, 6, {std::int64_t{3}});
    GoToPage(2);
    EXPECT_EQ(form.datagridVar.Rows[0][1], "2");
}

TEST_F(TheTables, A_form_that_keeps_its_fixes_reads_the_layer_once_for_a_choice) {
    OpenWithTwoAnimals();
    form.KeepsFixes = true;
    ChooseField("Animal");
    GoToPage(1);
    const std::size_t before = form.ReadFixes().Animals.size();
    layers[0]->Features().AddPoint(6, 6, {std::int64_t{33}});
    EXPECT_EQ(form.ReadFixes().Animals.size(), before);
    EXPECT_EQ(form.TakeFixes().Animals.size(), before);
    EXPECT_EQ(form.TakeFixes().Animals.size(), before + 1);
}

TEST_F(TheTables, Kept_fixes_are_dropped_when_layer_field_or_selection_change) {
    OpenWithTwoAnimals();
    form.KeepsFixes = true;
    ChooseField("Animal");
    GoToPage(1);
    const std::size_t before = form.ReadFixes().Animals.size();
    layers[0]->Features().AddPoint(6, 6, {std::int64_t{33}});
    form.chkUseSel.Value = 1;
    EXPECT_EQ(form.ReadFixes().Animals.size(), 0U);
    form.chkUseSel.Value = 0;
    EXPECT_EQ(form.ReadFixes().Animals.size(), before);
    form.chkUseSel_Click();
    EXPECT_EQ(form.ReadFixes().Animals.size(), before + 1);
    GoToPage(2);
    layers[0]->Features().AddPoint(6, 6, {std::int64_t{44}});
    ChooseField("Animal");
    EXPECT_EQ(form.ReadFixes().Animals.size(), before + 2);
}

TEST_F(TheTables, A_fault_while_filling_shows_its_description) {
    OpenWithTwoAnimals();
    ChooseField("Animal");
    Map().RemoveLayers();
    GoToPage(1);
    ASSERT_EQ(messages.Boxes().size(), 1U);
    EXPECT_EQ(messages.Last().Title, "Error");
    EXPECT_TRUE(messages.Last().Text.starts_with("Error: ")) << messages.Last().Text;
    EXPECT_THAT(form.datagridVar.Columns, IsEmpty());
}

TEST_F(TheTables, Save_as_without_a_file_says_so) {
    OpenWithTwoAnimals();
    ChooseField("Animal");
    form.btnCalcIO_Click();
    form.btnIOSave_Click();
    ASSERT_EQ(dialogs.Shown().size(), 1U);
    EXPECT_EQ(dialogs.Shown()[0].Title, "Save Data As...");
    EXPECT_EQ(dialogs.Shown()[0].Filter, "Comma delimited text files (*.csv)|*.csv");
    EXPECT_EQ(messages.Last().Text, "Warning: no file specified therefore data not saved.");
    EXPECT_EQ(messages.Last().Title, "Warning");
    EXPECT_EQ(messages.Last().Sign, Icon::kExclamation);
    messages.Clear();
    SaveTable("");
    EXPECT_THAT(messages.Texts(), ElementsAre("Warning: no file specified therefore data not saved."));
}

TEST_F(TheTables, Save_as_before_calculating_is_an_error_and_writes_nothing) {
    OpenWithTwoAnimals();
    SaveTable("/out/table.csv");
    EXPECT_EQ(messages.Last().Text, "The independence of observation data has not yet been calculated.");
    EXPECT_EQ(messages.Last().Title, "Error");
    EXPECT_FALSE(files.FileExists("/out/table.csv"));
}

TEST_F(TheTables, Save_as_writes_the_table_in_single_byte_text) {
    auto& points = AddPoints("fixes", FieldType::kText);
    points.AddPoint(0, 0, {"B\xC3\xA4r"});
    points.AddPoint(2, 2, {"B\xC3\xA4r"});
    points.AddPoint(0, 0, {"\xE7\x86\x8A"});
    Open();
    ChooseField("Animal");
    form.btnCalcIO_Click();
    SaveTable("/out/table.csv");
    EXPECT_EQ(Disk().Bytes("/out/table.csv"),
              "Animal,Count,Schoener,Swihart_Slade\r\nB\xE4r,1,2,2,N/A\r\n?,2,1,N/A,N/A\r\n");
    EXPECT_THAT(messages.Texts(), IsEmpty());
    EXPECT_THAT(files.List("/out"), ElementsAre("table.csv"));
}

TEST_F(TheTables, A_save_that_fails_is_reported_and_leaves_nothing_behind) {
    OpenWithTwoAnimals();
    ChooseField("Animal");
    form.btnCalcIO_Click();
    Disk().Fail(memory::DiskStep::kWrite, 1, 61);
    SaveTable("/out/table.csv");
    ASSERT_EQ(messages.Boxes().size(), 1U);
    EXPECT_EQ(messages.Last().Title, "Error");
    EXPECT_TRUE(messages.Last().Text.starts_with("Error: ")) << messages.Last().Text;
    EXPECT_THAT(files.List("/out"), IsEmpty());
}

}  // namespace
}  // namespace wxl::kde_tool
