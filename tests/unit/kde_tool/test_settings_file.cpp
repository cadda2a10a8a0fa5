#include "form_fixture.h"
#include "kde_tool/form_settings.h"
#include "kde_tool/settings_file.h"
#include "platform/text.h"

#include <gmock/gmock.h>

namespace wxl::kde_tool {
namespace {

using platform::Icon;
using testing::ElementsAre;
using testing::IsEmpty;

/// Lines joined with CRLF, each ended.
std::string lines(const std::vector<std::string>& all) {
    std::string text;
    for (const std::string& line : all) text += line + "\r\n";
    return text;
}

class SettingsFile : public FormTest {
protected:
    /// Loads the lines followed by one that is no key, so that the last key is reached.
    void LoadLines(std::vector<std::string> all) {
        all.emplace_back("end");
        Load(lines(all));
    }

    std::string Bandwidth() const {
        if (form.optBE_LSCV.Value) return "LSCV";
        if (form.optBE_BCV.Value) return "BCV";
        if (form.optBE_HREF.Value) return "HREF";
        if (form.optBE_MANUAL.Value) return "MANUAL";
        return form.optPropHref.Value ? "PROP" : "";
    }
};

// --- Writing ---

TEST_F(SettingsFile, The_defaults_byte_for_byte) {
    Open();
    EXPECT_EQ(Save(),
              "[RESCALE]\r\n0\r\n[KERNEL]\r\nTrue\r\n[FORM]\r\nGaussian (bivariate normal)\r\n[HREF]\r\nTRUE\r\n"
              "[SCALING]\r\n1000000\r\n[VERBOSE]\r\n0\r\n[EXTENT]\r\nFULL\r\n2000\r\n[ISO]\r\n0\r\n"
              "[SILENT]\r\nFALSE\r\n");
    EXPECT_EQ(form.txtStatus.Text, "Settings saved");
}

TEST_F(SettingsFile, Every_setting_byte_for_byte) {
    AddRaster("Dem10");
    Open();
    form.chkRescale.Value = 1;
    Choose(form.optAdaptive, &frmKDE::optAdaptive_Click);
    Choose(form.optBE_MANUAL, &frmKDE::optBE_MANUAL_Click);
    form.txtBW.Text = "150, 200";
    form.SetOutputFolder("/home/M\xC3\xBCller/out");
    form.txtR.Text = "Elk_";
    form.txtCellSize.Text = "30.5";
    form.txtScaling.Text = "1e6";
    form.chkVerbose.Value = 1;
    Choose(form.optExtRef, &frmKDE::optExtRef_Click);
    form.cmbExtRef.Select("Dem10");
    form.chkBnds.Value = 1;
    form.txtBnds.Text = "95, 50";
    form.chkLines.Value = 1;
    form.chkDonuts.Value = 1;
    form.chkSilent.Value = 1;
    EXPECT_EQ(Save(),
              "[RESCALE]\r\n1\r\n[KERNEL]\r\nFalse\r\n[FORM]\r\nGaussian (bivariate normal)\r\n"
              "[MANUAL]\r\n150, 200\r\n[OUTFOLDER]\r\n/home/M\xFCller/out\r\n[PREFIX]\r\nElk_\r\n"
              "[CELLSIZE]\r\n30.5\r\n[SCALING]\r\n1e6\r\n[VERBOSE]\r\n1\r\n[EXTENT]\r\nREF\r\nDem10\r\n"
              "[ISO]\r\n1\r\n95, 50\r\n1\r\n0\r\n1\r\n[SILENT]\r\nTRUE\r\n");
}

TEST_F(SettingsFile, The_other_bandwidth_methods_and_the_smallest_extent) {
    Open();
    form.txtScaling.Text = "";
    Choose(form.optSmall, &frmKDE::optSmall_Click);
    const std::string before = "[RESCALE]\r\n0\r\n[KERNEL]\r\nTrue\r\n[FORM]\r\nGaussian (bivariate normal)\r\n";
    const std::string after = "[VERBOSE]\r\n0\r\n[EXTENT]\r\nMIN\r\n[ISO]\r\n0\r\n[SILENT]\r\nFALSE\r\n";
    Choose(form.optBE_LSCV, &frmKDE::optBE_LSCV_Click);
    EXPECT_EQ(Save(), before + "[LSCV]\r\nTRUE\r\n" + after);
    Choose(form.optBE_BCV, &frmKDE::optBE_BCV_Click);
    EXPECT_EQ(Save(), before + "[BCV]\r\nTRUE\r\n" + after);
    Choose(form.optBE_MANUAL, &frmKDE::optBE_MANUAL_Click);
    EXPECT_EQ(Save(), before + "[MANUAL]\r\n\r\n" + after);
    Choose(form.optPropHref, &frmKDE::optPropHref_Click);
    EXPECT_EQ(Save(), before + after);
}

TEST_F(SettingsFile, Characters_outside_the_single_byte_text_are_question_marks) {
    Open();
    form.txtR.Text = "\xE7\x86\x8A\xE2\x82\xAC";
    EXPECT_THAT(Save(), testing::HasSubstr("[PREFIX]\r\n?\x80\r\n"));
}

TEST_F(SettingsFile, The_save_dialog_and_no_file_chosen) {
    Open();
    messages.Clear();
    form.btnSaveSettings_Click();
    ASSERT_EQ(dialogs.Shown().size(), 1U);
    EXPECT_EQ(dialogs.Shown()[0].Title, "Save Settings File");
    EXPECT_EQ(dialogs.Shown()[0].Filter, "Text files (*.txt)|*.txt");
    EXPECT_TRUE(dialogs.Shown()[0].AskBeforeOverwriting);
    EXPECT_THAT(messages.Texts(), ElementsAre("Warning: no file specified therefore settings not saved."));
    EXPECT_EQ(messages.Last().Title, "Warning");
    EXPECT_EQ(messages.Last().Sign, Icon::kExclamation);
    dialogs.WillChoose("");
    form.btnSaveSettings_Click();
    EXPECT_EQ(messages.Boxes().size(), 2U);
    EXPECT_EQ(form.txtStatus.Text, "");
}

TEST_F(SettingsFile, A_save_that_fails_keeps_the_older_file_and_says_why) {
    Open();
    messages.Clear();
    Disk().AddFile("/out/saved.txt", "older");
    Disk().Fail(memory::DiskStep::kClose, 1, 61);
    EXPECT_EQ(Save(), "older");
    EXPECT_EQ(messages.Last().Title, "Error");
    EXPECT_TRUE(messages.Last().Text.starts_with("Error: ")) << messages.Last().Text;
    EXPECT_EQ(form.txtStatus.Text, "");
    EXPECT_THAT(files.List("/out"), ElementsAre("saved.txt"));
}

// --- Reading: each key ---

TEST_F(SettingsFile, The_open_dialog_and_a_cancel_that_changes_nothing) {
    Open();
    messages.Clear();
    form.txtStatus.Text = "before";
    form.btnLoadSettings_Click();
    ASSERT_EQ(dialogs.Shown().size(), 1U);
    EXPECT_EQ(dialogs.Shown()[0].Title, "Open Settings File");
    EXPECT_EQ(dialogs.Shown()[0].Filter, "Text files (*.txt)|*.txt");
    EXPECT_EQ(form.txtStatus.Text, "before");
    EXPECT_THAT(messages.Texts(), IsEmpty());
}

TEST_F(SettingsFile, A_file_that_cannot_be_read_changes_nothing_and_says_nothing) {
    Open();
    messages.Clear();
    dialogs.WillChoose("/out/missing.txt");
    form.btnLoadSettings_Click();
    Disk().AddFile("/out/settings.txt", lines({"[SILENT]", "TRUE", "end"}));
    Disk().Fail(memory::DiskStep::kRead, 1, 57);
    dialogs.WillChoose("/out/settings.txt");
    form.btnLoadSettings_Click();
    EXPECT_EQ(form.chkSilent.Value, 0);
    EXPECT_EQ(form.txtStatus.Text, "");
    EXPECT_THAT(messages.Texts(), IsEmpty());
}

TEST_F(SettingsFile, A_load_says_so_in_the_status_box) {
    Open();
    Load("");
    EXPECT_EQ(form.txtStatus.Text, "Settings loaded");
}

TEST_F(SettingsFile, Check_boxes_take_0_and_1) {
    LoadLines({"[RESCALE]", "1", "[VERBOSE]", "1"});
    EXPECT_EQ(form.chkRescale.Value, 1);
    EXPECT_EQ(form.chkVerbose.Value, 1);
    LoadLines({"[RESCALE]", "2", "[VERBOSE]", "-1"});
    LoadLines({"[RESCALE]", "", "[VERBOSE]", "off"});
    LoadLines({"[RESCALE]", "1E999", "[VERBOSE]", "NAN"});
    EXPECT_EQ(form.chkRescale.Value, 1);
    EXPECT_EQ(form.chkVerbose.Value, 1);
    LoadLines({"[RESCALE]", " 0 ", "[VERBOSE]", "0.0"});
    EXPECT_EQ(form.chkRescale.Value, 0);
    EXPECT_EQ(form.chkVerbose.Value, 0);
}

TEST_F(SettingsFile, The_kernel_type_takes_true_and_false_in_any_case) {
    LoadLines({"[KERNEL]", "False"});
    EXPECT_TRUE(form.optAdaptive.Value);
    EXPECT_FALSE(form.optFixed.Value);
    LoadLines({"[KERNEL]", "0"});
    EXPECT_TRUE(form.optAdaptive.Value);
    LoadLines({"[KERNEL]", "true"});
    EXPECT_TRUE(form.optFixed.Value);
    EXPECT_FALSE(form.optAdaptive.Value);
}

TEST_F(SettingsFile, The_kernel_form_never_loads) {
    Open();
    form.cmbKernelForm.ListIndex = -1;
    LoadLines({"[FORM]", "Gaussian (bivariate normal)"});
    EXPECT_EQ(form.cmbKernelForm.ListIndex, -1);
}

TEST_F(SettingsFile, The_bandwidth_methods_load_by_the_word_true) {
    Open();
    LoadLines({"[LSCV]", "TRUE"});
    EXPECT_EQ(Bandwidth(), "LSCV");
    LoadLines({"[BCV]", "true"});
    EXPECT_EQ(Bandwidth(), "BCV");
    LoadLines({"[HREF]", "True"});
    EXPECT_EQ(Bandwidth(), "HREF");
    LoadLines({"[LSCV]", "FALSE"});
    LoadLines({"[BCV]", " TRUE"});
    EXPECT_EQ(Bandwidth(), "HREF");
}

TEST_F(SettingsFile, A_user_defined_bandwidth_loads_only_as_the_word_true) {
    Open();
    form.txtBW.Text = "12";
    LoadLines({"[MANUAL]", "150"});
    EXPECT_EQ(Bandwidth(), "HREF");
    EXPECT_EQ(form.txtBW.Text, "12");
    EXPECT_FALSE(form.txtBW.Enabled);
    LoadLines({"[MANUAL]", "true"});
    EXPECT_EQ(Bandwidth(), "MANUAL");
    EXPECT_EQ(form.txtBW.Text, "TRUE");
    EXPECT_TRUE(form.txtBW.Enabled);
}

TEST_F(SettingsFile, An_existing_output_folder_loads_in_capitals) {
    Disk().AddFolder("/data/Elk");
    LoadLines({"[OUTFOLDER]", "/data/Elk"});
    EXPECT_EQ(form.OutputFolder(), "/DATA/ELK");
    EXPECT_EQ(form.txtOutFolder.Text, "/DATA/ELK");
    EXPECT_EQ(form.OutputFolderPath(), "/data/Elk");
    EXPECT_EQ(form.LoadNote(), "");
}

TEST_F(SettingsFile, A_missing_output_folder_is_noted_and_not_told) {
    Open();
    messages.Clear();
    form.SetOutputFolder("/out");
    LoadLines({"[OUTFOLDER]", "/gone", "[OUTFOLDER]", ""});
    EXPECT_EQ(form.OutputFolder(), "/out");
    EXPECT_EQ(form.txtOutFolder.Text, "/out");
    EXPECT_EQ(form.LoadNote(), "Output folder does not exist, therefore setting not changed.\r");
    EXPECT_THAT(messages.Texts(), IsEmpty());
}

TEST_F(SettingsFile, A_prefix_loads_in_capitals_and_is_cut_with_the_warning) {
    Open();
    messages.Clear();
    LoadLines({"[PREFIX]", "abcdefgh"});
    EXPECT_EQ(form.txtR.Text, "ABCDEF");
    EXPECT_THAT(messages.Texts(),
                ElementsAre("Warning: raster name prefix cannot be longer than 6 characters. This is necessary because "
                            "of the automatic naming convention for output rasters."));
    LoadLines({"[PREFIX]", ""});
    EXPECT_EQ(form.txtR.Text, "ABCDEF");
    LoadLines({"[PREFIX]", "\xE4lg"});
    EXPECT_EQ(form.txtR.Text, "\xC3\x84LG");
}

TEST_F(SettingsFile, A_file_full_of_long_prefixes_warns_once) {
    Open();
    messages.Clear();
    std::vector<std::string> all;
    for (int i = 0; i < 1000; ++i) all.insert(all.end(), {"[PREFIX]", "prefix" + std::to_string(i)});
    LoadLines(all);
    EXPECT_EQ(messages.Boxes().size(), 1U);
    EXPECT_EQ(form.txtR.Text, "PREFIX");
}

TEST_F(SettingsFile, Numbers_load_as_they_are_written_but_in_capitals) {
    LoadLines({"[CELLSIZE]", "30.5", "[SCALING]", "1e6"});
    EXPECT_EQ(form.txtCellSize.Text, "30.5");
    EXPECT_EQ(form.txtScaling.Text, "1E6");
    LoadLines({"[CELLSIZE]", "wide", "[SCALING]", ""});
    EXPECT_EQ(form.txtCellSize.Text, "30.5");
    EXPECT_EQ(form.txtScaling.Text, "1E6");
}

TEST_F(SettingsFile, Cells_of_the_bandwidths_are_saved_and_loaded) {
    LoadLines({"[CELLSIZE]", "auto", "[SCALING]", ""});
    EXPECT_EQ(form.txtCellSize.Text, "auto");
    EXPECT_NE(SettingsFileBytes(settings_of(form)).find("[CELLSIZE]\r\nauto\r\n"), std::string::npos);
}

TEST_F(SettingsFile, The_full_extent_loads_with_its_buffer) {
    Open();
    Choose(form.optSmall, &frmKDE::optSmall_Click);
    LoadLines({"[EXTENT]", "Full", "750"});
    EXPECT_TRUE(form.optFull.Value);
    EXPECT_FALSE(form.optSmall.Value);
    EXPECT_EQ(form.txtBuffer.Text, "750");
    EXPECT_TRUE(form.txtBuffer.Enabled);
    LoadLines({"[EXTENT]", "FULL", "much"});
    EXPECT_EQ(form.txtBuffer.Text, "750");
}

TEST_F(SettingsFile, The_full_extent_at_the_end_of_the_file_keeps_the_buffer) {
    Open();
    Choose(form.optSmall, &frmKDE::optSmall_Click);
    Load("[EXTENT]\r\nFULL");
    EXPECT_TRUE(form.optFull.Value);
    EXPECT_EQ(form.txtBuffer.Text, "2000");
}

TEST_F(SettingsFile, The_smallest_extent_loads) {
    Open();
    Load(lines({"[EXTENT]", "min"}));
    EXPECT_TRUE(form.optSmall.Value);
    EXPECT_FALSE(form.optFull.Value);
    EXPECT_FALSE(form.txtBuffer.Enabled);
    EXPECT_FALSE(form.cmbExtRef.Enabled);
    LoadLines({"[EXTENT]", "MIDDLE"});
    EXPECT_TRUE(form.optSmall.Value);
}

TEST_F(SettingsFile, A_reference_layer_in_capitals_loads) {
    AddRaster("lower");
    AddRaster("DEM");
    Open();
    LoadLines({"[EXTENT]", "REF", "dem"});
    EXPECT_TRUE(form.optExtRef.Value);
    EXPECT_EQ(form.cmbExtRef.Text(), "DEM");
    EXPECT_TRUE(form.cmbExtRef.Enabled);
    EXPECT_FALSE(form.txtBuffer.Enabled);
}

TEST_F(SettingsFile, A_reference_layer_that_is_not_found_still_selects_the_mode) {
    AddPoints("POINTS");
    AddRaster("lower");
    AddRaster("DEM");
    Open();
    form.cmbExtRef.Select("DEM");
    for (const char* layer : {"lower", "GONE", "POINTS", ""}) {
        Choose(form.optFull, &frmKDE::optFull_Click);
        LoadLines({"[EXTENT]", "REF", layer});
        EXPECT_TRUE(form.optExtRef.Value) << layer;
        EXPECT_EQ(form.cmbExtRef.Text(), "DEM") << layer;
    }
    Choose(form.optFull, &frmKDE::optFull_Click);
    Load("[EXTENT]\r\nREF\r\n");
    EXPECT_TRUE(form.optExtRef.Value);
}

TEST_F(SettingsFile, Isopleth_outputs_other_than_0_or_1_stay_as_they_were) {
    Open();
    form.chkLines.Value = 1;
    Load(lines({"[ISO]", "1", "90", "2", "x", "1"}));
    EXPECT_EQ(form.chkBnds.Value, 1);
    EXPECT_EQ(form.txtBnds.Text, "90");
    EXPECT_EQ(form.chkLines.Value, 1);
    EXPECT_EQ(form.chkPolys.Value, 0);
    EXPECT_EQ(form.chkDonuts.Value, 1);
}

TEST_F(SettingsFile, Isopleths_of_2_leave_the_box_as_it_was) {
    Open();
    form.chkBnds.Value = 1;
    form.chkBnds_Click();
    LoadLines({"[ISO]", "2", "90", "1", "1", "1"});
    EXPECT_EQ(form.chkBnds.Value, 1);
    EXPECT_EQ(form.txtBnds.Text, "95, 90, 50");
    EXPECT_EQ(form.chkLines.Value + form.chkPolys.Value + form.chkDonuts.Value, 0);
}

TEST_F(SettingsFile, The_note_about_folders_grows_with_each_of_them) {
    Open();
    messages.Clear();
    form.SetOutputFolder("/kept");
    LoadLines({"[OUTFOLDER]", "/gone", "[OUTFOLDER]", "/lost"});
    EXPECT_EQ(form.LoadNote(),
              "Output folder does not exist, therefore setting not changed.\r"
              "Output folder does not exist, therefore setting not changed.\r");
    EXPECT_EQ(form.LoadNote().size(), 122U);
    EXPECT_EQ(form.OutputFolder(), "/kept");
    EXPECT_THAT(messages.Texts(), IsEmpty());
}

TEST_F(SettingsFile, Isopleths_load_with_their_four_lines) {
    Open();
    Load(lines({"[ISO]", "1", "99, 95", "1", "0", "1"}));
    EXPECT_EQ(form.chkBnds.Value, 1);
    EXPECT_EQ(form.txtBnds.Text, "99, 95");
    EXPECT_EQ(form.chkLines.Value, 1);
    EXPECT_EQ(form.chkPolys.Value, 0);
    EXPECT_EQ(form.chkDonuts.Value, 1);
    EXPECT_TRUE(form.txtBnds.Enabled);
    EXPECT_TRUE(form.chkPolys.Enabled);
}

TEST_F(SettingsFile, Isopleths_switched_off_leave_list_and_outputs_alone) {
    Open();
    form.chkBnds.Value = 1;
    form.chkBnds_Click();
    form.chkPolys.Value = 1;
    LoadLines({"[ISO]", "0"});
    EXPECT_EQ(form.chkBnds.Value, 0);
    EXPECT_EQ(form.txtBnds.Text, "95, 90, 50");
    EXPECT_EQ(form.chkPolys.Value, 1);
    EXPECT_FALSE(form.chkPolys.Enabled);
}

TEST_F(SettingsFile, Isopleths_2_changes_nothing_and_reads_no_further_lines) {
    Open();
    LoadLines({"[ISO]", "2", "[SILENT]", "TRUE"});
    EXPECT_EQ(form.chkBnds.Value, 0);
    EXPECT_EQ(form.txtBnds.Text, "95, 90, 50");
    EXPECT_EQ(form.chkSilent.Value, 1);
}

TEST_F(SettingsFile, Isopleths_cut_off_by_the_end_of_the_file_load_what_is_there) {
    Open();
    Load(lines({"[ISO]", "1"}));
    EXPECT_EQ(form.chkBnds.Value, 1);
    EXPECT_EQ(form.txtBnds.Text, "95, 90, 50");
    Load(lines({"[ISO]", "1", "80", "1"}));
    EXPECT_EQ(form.txtBnds.Text, "80");
    EXPECT_EQ(form.chkLines.Value, 1);
    EXPECT_EQ(form.chkPolys.Value, 0);
}

TEST_F(SettingsFile, Silent_is_cleared_by_anything_but_true) {
    LoadLines({"[SILENT]", "True"});
    EXPECT_EQ(form.chkSilent.Value, 1);
    LoadLines({"[SILENT]", "1"});
    EXPECT_EQ(form.chkSilent.Value, 0);
}

// --- Reading: the walk over the lines ---

TEST_F(SettingsFile, A_value_line_becomes_the_current_line_and_is_itself_compared) {
    Open();
    LoadLines({"[KERNEL]", "[SILENT]", "TRUE"});
    EXPECT_EQ(form.chkSilent.Value, 1);
    EXPECT_TRUE(form.optFixed.Value);
}

TEST_F(SettingsFile, The_last_line_is_never_a_key_and_the_end_is_asked_before_comparing) {
    form.chkSilent.Value = 1;
    Load("[SILENT]");
    EXPECT_EQ(form.chkSilent.Value, 1);
    Load("[SILENT]\r\n");
    EXPECT_EQ(form.chkSilent.Value, 1);
    Load("[RESCALE]\r\n1\r\n[SILENT]\r\n");
    EXPECT_EQ(form.chkSilent.Value, 1);
    EXPECT_EQ(form.chkRescale.Value, 1);
    Load("[SILENT]\r\nFALSE");
    EXPECT_EQ(form.chkSilent.Value, 0);
}

TEST_F(SettingsFile, A_blank_line_where_a_value_stands_is_that_value) {
    form.chkSilent.Value = 1;
    LoadLines({"[SILENT]", "", "TRUE"});
    EXPECT_EQ(form.chkSilent.Value, 0);
}

TEST_F(SettingsFile, Order_unknown_keys_blank_lines_and_letter_case_do_not_matter) {
    Open();
    LoadLines(
        {"", "[silent]", "true", "", "[COLOUR]", "red", "[Prefix]", "elk", "", "", "[lscv]", "TRUE", "[rescale]", "1"});
    EXPECT_EQ(form.chkSilent.Value, 1);
    EXPECT_EQ(form.txtR.Text, "ELK");
    EXPECT_EQ(Bandwidth(), "LSCV");
    EXPECT_EQ(form.chkRescale.Value, 1);
}

TEST_F(SettingsFile, Keys_with_blanks_around_them_are_no_keys) {
    LoadLines({" [SILENT]", "TRUE", "[SILENT] ", "TRUE"});
    EXPECT_EQ(form.chkSilent.Value, 0);
}

TEST_F(SettingsFile, Lines_end_at_crlf_lf_or_cr) {
    Load("[SILENT]\nTRUE\n[RESCALE]\r1\r[VERBOSE]\r\n1");
    EXPECT_EQ(form.chkSilent.Value, 1);
    EXPECT_EQ(form.chkRescale.Value, 1);
    EXPECT_EQ(form.chkVerbose.Value, 1);
}

// --- Round trips ---

TEST_F(SettingsFile, What_was_saved_loads_into_a_new_form) {
    AddRaster("DEM");
    Open();
    form.chkRescale.Value = 1;
    Choose(form.optAdaptive, &frmKDE::optAdaptive_Click);
    Choose(form.optBE_BCV, &frmKDE::optBE_BCV_Click);
    form.SetOutputFolder("/out");
    form.txtR.Text = "ELK";
    form.txtCellSize.Text = "30";
    form.chkVerbose.Value = 1;
    Choose(form.optExtRef, &frmKDE::optExtRef_Click);
    form.cmbExtRef.Select("DEM");
    form.chkBnds.Value = 1;
    form.txtBnds.Text = "95, 50";
    form.chkPolys.Value = 1;
    form.chkSilent.Value = 1;
    const std::string saved = Save();

    frmKDE other(Services(), geodata);
    other.Form_Load();
    EXPECT_EQ(ReadSettings(saved, other).Note, "");
    EXPECT_EQ(other.OutputFolder(), "/OUT");
    other.SetOutputFolder("/out");
    EXPECT_EQ(SettingsFileBytes(settings_of(other)), saved);
}

TEST_F(SettingsFile, Proportions_are_not_saved_and_loading_leaves_the_method_alone) {
    Open();
    Choose(form.optPropHref, &frmKDE::optPropHref_Click);
    const std::string saved = Save();
    EXPECT_THAT(saved, testing::Not(testing::HasSubstr("HREF")));
    Choose(form.optBE_LSCV, &frmKDE::optBE_LSCV_Click);
    Load(saved);
    EXPECT_EQ(Bandwidth(), "LSCV");
}

TEST_F(SettingsFile, A_saved_user_defined_bandwidth_does_not_load) {
    Open();
    Choose(form.optBE_MANUAL, &frmKDE::optBE_MANUAL_Click);
    form.txtBW.Text = "150";
    const std::string saved = Save();
    EXPECT_THAT(saved, testing::HasSubstr("[MANUAL]\r\n150\r\n"));
    form.txtBW.Text = "80";
    Choose(form.optBE_LSCV, &frmKDE::optBE_LSCV_Click);
    Load(saved);
    EXPECT_EQ(Bandwidth(), "LSCV");
    EXPECT_EQ(form.txtBW.Text, "80");
}

TEST_F(SettingsFile, Loading_twice_is_loading_once) {
    Open();
    const std::string file = lines({"[KERNEL]", "FALSE", "[LSCV]", "TRUE", "[CELLSIZE]", "5", "[EXTENT]", "MIN",
                                    "[ISO]", "1", "90", "1", "1", "0", "[SILENT]", "TRUE"});
    Load(file);
    const std::string once = SettingsFileBytes(settings_of(form));
    Load(file);
    EXPECT_EQ(SettingsFileBytes(settings_of(form)), once);
}

// --- Hostile files ---

TEST_F(SettingsFile, One_mebibyte_of_brackets_is_read_and_changes_nothing) {
    Open();
    const std::string before = SettingsFileBytes(settings_of(form));
    Load(std::string(1024 * 1024, '['));
    EXPECT_EQ(form.txtStatus.Text, "Settings loaded");
    EXPECT_EQ(SettingsFileBytes(settings_of(form)), before);
}

TEST_F(SettingsFile, A_file_above_one_mebibyte_is_not_read) {
    Open();
    messages.Clear();
    Load(lines({"[SILENT]", "TRUE"}) + std::string(1024 * 1024, '\n'));
    EXPECT_EQ(form.chkSilent.Value, 0);
    EXPECT_EQ(form.txtStatus.Text, "");
    EXPECT_THAT(messages.Texts(), IsEmpty());
}

TEST_F(SettingsFile, Nul_bytes_and_bytes_that_mean_nothing_are_text_like_any_other) {
    using namespace std::string_literals;
    Open();
    Load("\0[SILENT]\r\nTRUE\r\n[PREFIX]\r\na\0\x81\xFF\r\n[CELLSIZE]\r\n3\0\r\n[RESCALE]\r\n1\0\r\n\0"s);
    EXPECT_EQ(form.chkSilent.Value, 0);
    EXPECT_EQ(form.txtR.Text.substr(0, 2), "A\0"s);
    EXPECT_TRUE(platform::IsUtf8(form.txtR.Text));
    EXPECT_EQ(form.txtCellSize.Text, "");
    EXPECT_EQ(form.chkRescale.Value, 0);
}

}  // namespace
}  // namespace wxl::kde_tool
