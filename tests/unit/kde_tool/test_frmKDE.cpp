#include "form_fixture.h"

#include <gmock/gmock.h>

namespace wxl::kde_tool {
namespace {

using platform::BackColor;
using platform::FieldType;
using platform::Icon;
using testing::ElementsAre;
using testing::IsEmpty;

class TheForm : public FormTest {};

template <class Control>
void expect_enabled(const Control& control, bool enabled, const char* name) {
    EXPECT_EQ(control.Enabled, enabled) << name;
    if constexpr (requires { control.Back; }) {
        EXPECT_EQ(control.Back, enabled ? BackColor::kWindow : BackColor::kButtonFace) << name;
    }
}

#define EXPECT_ON(control) expect_enabled(form.control, true, #control)
#define EXPECT_OFF(control) expect_enabled(form.control, false, #control)

// --- Design ---

TEST_F(TheForm, Has_its_captions) {
    EXPECT_EQ(form.Caption, "Kernel Density Estimation");
    EXPECT_THAT(form.SSTab1.Pages, ElementsAre("Input Data", "Kernel Settings", "Bandwidth", "Output Options"));
    EXPECT_EQ(form.btnExit.Caption, "Exit");
    EXPECT_EQ(form.btnLoadSettings.Caption, "Load Settings");
    EXPECT_EQ(form.btnSaveSettings.Caption, "Save Settings");
    EXPECT_EQ(form.chkSilent.Caption, "Silent mode");
    EXPECT_EQ(form.lblPntL.Caption, "Point layer:");
    EXPECT_EQ(form.chkUseSel.Caption, "Use selected features only");
    EXPECT_EQ(form.lblUIDFLD.Caption, "Unique animal ID field for batch processing:");
    EXPECT_EQ(form.btnCalcIO.Caption, "Calculate");
    EXPECT_EQ(form.btnIOSave.Caption, "Save As...");
    EXPECT_EQ(form.lblIO1.Caption, "Schoener Index: value < 1.6 or > 2.4 indicates significant autocorrelation.");
    EXPECT_EQ(form.lblIO2.Caption, "Swihart and Slade Index: value > 0.6 indicates significant autocorrelation.");
    EXPECT_EQ(form.chkRescale.Caption, "Rescale to unit variance");
    EXPECT_EQ(form.optFixed.Caption, "Fixed kernel");
    EXPECT_EQ(form.optAdaptive.Caption, "Adaptive kernel");
    EXPECT_EQ(form.lblKernelForm.Caption, "Kernel form:");
    EXPECT_EQ(form.optBE_LSCV.Caption, "LSCV (Least Squares Cross Validation)");
    EXPECT_EQ(form.optBE_BCV.Caption, "BCV (Biased Cross Validation)");
    EXPECT_EQ(form.optBE_HREF.Caption, "Reference bandwidth (see table below)");
    EXPECT_EQ(form.optBE_MANUAL.Caption, "User defined (unscaled constant across animals):");
    EXPECT_EQ(form.optPropHref.Caption, "Proportion(s) of reference bandwidth:");
    EXPECT_EQ(form.lblOutFolder.Caption, "Output folder (a new, empty folder is strongly recommended):");
    EXPECT_EQ(form.lblR.Caption, "Raster name prefix:");
    EXPECT_EQ(form.lblCellSize.Caption, "Raster cell size (coordinate system units):");
    EXPECT_EQ(form.lblScaling.Caption, "Scaling factor (multiplier):");
    EXPECT_EQ(form.chkVerbose.Caption, "Write verbose analysis log file");
    EXPECT_EQ(form.chkBnds.Caption, "Isopleths (%):");
    EXPECT_EQ(form.chkLines.Caption, "Lines");
    EXPECT_EQ(form.chkPolys.Caption, "Polygons");
    EXPECT_EQ(form.chkDonuts.Caption, "Donut polygons");
    EXPECT_EQ(form.optFull.Caption,
              "Every UD is calculated at the full extent of the input point layer plus this buffer:");
    EXPECT_EQ(form.optSmall.Caption, "Minimize the extent of each UD");
    EXPECT_EQ(form.optExtRef.Caption, "Every UD is calculated at the same extent as this raster layer:");
}

TEST_F(TheForm, Has_its_defaults) {
    AddPoints("fixes");
    Open();
    EXPECT_EQ(form.cmbPntL.Text(), "fixes");
    EXPECT_EQ(form.cmbUIDFLD.Text(), "");
    EXPECT_EQ(form.cmbKernelForm.Text(), "Gaussian (bivariate normal)");
    EXPECT_TRUE(form.optFixed.Value);
    EXPECT_FALSE(form.optAdaptive.Value);
    EXPECT_TRUE(form.optBE_HREF.Value);
    EXPECT_FALSE(form.optBE_LSCV.Value || form.optBE_BCV.Value || form.optBE_MANUAL.Value || form.optPropHref.Value);
    EXPECT_TRUE(form.optFull.Value);
    EXPECT_FALSE(form.optSmall.Value || form.optExtRef.Value);
    EXPECT_EQ(form.txtBW.Text, "");
    EXPECT_EQ(form.txtPropHref.Text, "0.2, 0.4, 0.6, 0.8, 1.0");
    EXPECT_EQ(form.txtOutFolder.Text, "");
    EXPECT_EQ(form.OutputFolder(), "");
    EXPECT_EQ(form.txtR.Text, "");
    EXPECT_EQ(form.txtCellSize.Text, "");
    EXPECT_EQ(form.txtScaling.Text, "1000000");
    EXPECT_EQ(form.txtBuffer.Text, "2000");
    EXPECT_EQ(form.txtBnds.Text, "95, 90, 50");
    for (const auto* box : {&form.chkUseSel, &form.chkRescale, &form.chkVerbose, &form.chkBnds, &form.chkLines,
                            &form.chkPolys, &form.chkDonuts, &form.chkSilent, &form.chkHtml})
        EXPECT_EQ(box->Value, 0) << box->Caption;
    EXPECT_EQ(form.chkAddToMap.Value, 1);
    EXPECT_EQ(form.LargestReferenceBandwidth(), 0.0);
    EXPECT_EQ(form.SSTab1.Current, 0);
    EXPECT_TRUE(form.btnOK.Enabled);
}

// --- Start-up ---

TEST_F(TheForm, Start_up_without_point_layers_warns_once_and_leaves_the_lists_empty) {
    AddRaster("dem");
    Open();
    ASSERT_EQ(messages.Boxes().size(), 1U);
    EXPECT_EQ(messages.Last().Text, "Warning: no point layers are present in map (nothing to work with).");
    EXPECT_EQ(messages.Last().Title, "Warning");
    EXPECT_EQ(messages.Last().Sign, Icon::kExclamation);
    EXPECT_THAT(form.cmbPntL.Items, IsEmpty());
    EXPECT_EQ(form.cmbPntL.ListIndex, -1);
    EXPECT_OFF(chkUseSel);
    EXPECT_OFF(cmbUIDFLD);
    EXPECT_OFF(btnIOSave);
    EXPECT_OFF(lblIO1);
    EXPECT_OFF(lblIO2);
    EXPECT_ON(optExtRef);
    EXPECT_THAT(form.cmbExtRef.Items, ElementsAre("dem"));
}

TEST_F(TheForm, Start_up_in_an_empty_map_warns_once) {
    Open();
    EXPECT_THAT(messages.Texts(), ElementsAre("Warning: no point layers are present in map (nothing to work with)."));
    EXPECT_OFF(optExtRef);
    EXPECT_OFF(cmbExtRef);
    EXPECT_THAT(form.cmbKernelForm.Items, ElementsAre("Gaussian (bivariate normal)"));
}

TEST_F(TheForm, Start_up_without_raster_layers_leaves_the_reference_extent_unavailable) {
    AddPoints("fixes");
    Open();
    EXPECT_THAT(messages.Texts(), IsEmpty());
    EXPECT_OFF(optExtRef);
    EXPECT_OFF(cmbExtRef);
    EXPECT_ON(txtBuffer);
}

TEST_F(TheForm, Start_up_lists_point_layers_and_raster_layers_in_map_order) {
    AddPoints("b");
    AddRaster("r2");
    AddPoints("a");
    AddRaster("r1");
    Open();
    EXPECT_THAT(form.cmbPntL.Items, ElementsAre("b", "a"));
    EXPECT_THAT(form.cmbExtRef.Items, ElementsAre("r2", "r1"));
    EXPECT_EQ(form.cmbExtRef.Text(), "");
    EXPECT_ON(optExtRef);
    EXPECT_OFF(cmbExtRef);
}

TEST_F(TheForm, Start_up_switches_bandwidth_and_isopleth_boxes_off_and_chooses_the_first_layer) {
    AddPoints("fixes");
    Open();
    EXPECT_OFF(txtBW);
    EXPECT_OFF(txtPropHref);
    EXPECT_OFF(chkLines);
    EXPECT_OFF(chkPolys);
    EXPECT_OFF(chkDonuts);
    EXPECT_OFF(txtBnds);
    EXPECT_OFF(btnIOSave);
    EXPECT_OFF(lblIO1);
    EXPECT_OFF(lblIO2);
    EXPECT_ON(chkUseSel);
    EXPECT_ON(cmbUIDFLD);
    EXPECT_THAT(form.cmbUIDFLD.Items, testing::IsSupersetOf({"Animal", "Age"}));
}

// --- Option changes ---

TEST_F(TheForm, Isopleths_follow_their_check_box) {
    Open();
    form.chkBnds.Value = 1;
    form.chkBnds_Click();
    EXPECT_ON(chkLines);
    EXPECT_ON(chkPolys);
    EXPECT_ON(chkDonuts);
    EXPECT_ON(txtBnds);
    form.chkBnds.Value = 0;
    form.chkBnds_Click();
    EXPECT_OFF(chkLines);
    EXPECT_OFF(chkPolys);
    EXPECT_OFF(chkDonuts);
    EXPECT_OFF(txtBnds);
}

TEST_F(TheForm, Exactly_one_bandwidth_method_is_chosen_and_its_text_box_enabled) {
    Open();
    const auto chosen = [&] {
        std::string text;
        for (const auto* option :
             {&form.optBE_LSCV, &form.optBE_BCV, &form.optBE_HREF, &form.optBE_MANUAL, &form.optPropHref})
            text += option->Value ? '1' : '0';
        return text;
    };
    Choose(form.optBE_MANUAL, &frmKDE::optBE_MANUAL_Click);
    EXPECT_EQ(chosen(), "00010");
    EXPECT_ON(txtBW);
    EXPECT_OFF(txtPropHref);
    Choose(form.optPropHref, &frmKDE::optPropHref_Click);
    EXPECT_EQ(chosen(), "00001");
    EXPECT_OFF(txtBW);
    EXPECT_ON(txtPropHref);
    Choose(form.optBE_LSCV, &frmKDE::optBE_LSCV_Click);
    EXPECT_EQ(chosen(), "10000");
    EXPECT_OFF(txtBW);
    EXPECT_OFF(txtPropHref);
    Choose(form.optPropHref, &frmKDE::optPropHref_Click);
    Choose(form.optBE_BCV, &frmKDE::optBE_BCV_Click);
    EXPECT_EQ(chosen(), "01000");
    EXPECT_OFF(txtPropHref);
    Choose(form.optBE_MANUAL, &frmKDE::optBE_MANUAL_Click);
    Choose(form.optBE_HREF, &frmKDE::optBE_HREF_Click);
    EXPECT_EQ(chosen(), "00100");
    EXPECT_OFF(txtBW);
    EXPECT_OFF(txtPropHref);
}

TEST_F(TheForm, A_click_on_the_user_defined_bandwidth_that_leaves_it_unselected_disables_its_text) {
    Open();
    form.EnableBW();
    form.EnableBW2();
    form.optBE_MANUAL_Click();
    EXPECT_OFF(txtBW);
    EXPECT_OFF(txtPropHref);
    EXPECT_TRUE(form.optBE_HREF.Value);
}

TEST_F(TheForm, Exactly_one_kernel_type_is_chosen) {
    Choose(form.optAdaptive, &frmKDE::optAdaptive_Click);
    EXPECT_FALSE(form.optFixed.Value);
    Choose(form.optFixed, &frmKDE::optFixed_Click);
    EXPECT_FALSE(form.optAdaptive.Value);
}

TEST_F(TheForm, The_extent_options_switch_buffer_and_layer_list) {
    AddRaster("dem");
    Open();
    Choose(form.optExtRef, &frmKDE::optExtRef_Click);
    EXPECT_FALSE(form.optFull.Value || form.optSmall.Value);
    EXPECT_ON(cmbExtRef);
    EXPECT_OFF(txtBuffer);
    Choose(form.optFull, &frmKDE::optFull_Click);
    EXPECT_FALSE(form.optExtRef.Value || form.optSmall.Value);
    EXPECT_OFF(cmbExtRef);
    EXPECT_ON(txtBuffer);
    Choose(form.optExtRef, &frmKDE::optExtRef_Click);
    Choose(form.optSmall, &frmKDE::optSmall_Click);
    EXPECT_FALSE(form.optExtRef.Value || form.optFull.Value);
    EXPECT_OFF(cmbExtRef);
    EXPECT_OFF(txtBuffer);
}

TEST_F(TheForm, The_ten_switch_procedures_set_state_and_colour) {
    form.DisableIso();
    EXPECT_OFF(chkLines);
    EXPECT_OFF(chkPolys);
    EXPECT_OFF(chkDonuts);
    EXPECT_OFF(txtBnds);
    form.EnableIso();
    EXPECT_ON(chkLines);
    EXPECT_ON(chkPolys);
    EXPECT_ON(chkDonuts);
    EXPECT_ON(txtBnds);
    form.DisableBW();
    EXPECT_OFF(txtBW);
    form.EnableBW();
    EXPECT_ON(txtBW);
    form.DisableBW2();
    EXPECT_OFF(txtPropHref);
    form.EnableBW2();
    EXPECT_ON(txtPropHref);
    form.EnableExtRef();
    EXPECT_ON(cmbExtRef);
    EXPECT_OFF(txtBuffer);
    form.EnableBuffer();
    EXPECT_ON(txtBuffer);
    EXPECT_OFF(cmbExtRef);
    form.DisableBuffer();
    EXPECT_OFF(txtBuffer);
    form.EnableExtRef();
    form.DisableExtRef();
    EXPECT_OFF(cmbExtRef);
    EXPECT_OFF(txtBuffer);
}

// --- Layer, prefix, folder ---

TEST_F(TheForm, Choosing_a_layer_lists_its_fields_and_clears_the_independence_and_variance_tables) {
    auto& first = AddPoints("first");
    AddPoints("second");
    for (int i = 0; i < 4; ++i) first.AddPoint(i * 100.0, i * i * 10.0, {std::int64_t{1}});
    Open();
    ChooseField("Animal");
    form.btnCalcIO_Click();
    GoToPage(1);
    ASSERT_FALSE(form.datagridIO.Rows.empty());
    ASSERT_FALSE(form.datagridVar.Rows.empty());
    const double href = form.LargestReferenceBandwidth();
    ASSERT_GT(href, 0.0);

    ChooseLayer("second");
    EXPECT_THAT(form.datagridIO.Columns, IsEmpty());
    EXPECT_THAT(form.datagridIO.Rows, IsEmpty());
    EXPECT_THAT(form.datagridVar.Columns, IsEmpty());
    EXPECT_EQ(form.datagridHref.Rows.size(), 1U);
    EXPECT_EQ(form.LargestReferenceBandwidth(), href);
    EXPECT_THAT(form.IndependenceNumbers(), IsEmpty());
    EXPECT_THAT(form.VarianceNumbers(), IsEmpty());
    EXPECT_EQ(form.cmbUIDFLD.Text(), "");
    EXPECT_ON(cmbUIDFLD);
    EXPECT_ON(chkUseSel);
    EXPECT_THAT(messages.Texts(), IsEmpty());
}

TEST_F(TheForm, Choosing_another_field_or_other_features_clears_no_table) {
    auto& points = AddPoints("fixes");
    points.AddPoint(0, 0, {std::int64_t{1}, 2.0});
    points.AddPoint(3, 4, {std::int64_t{1}, 2.0});
    Open();
    ChooseField("Animal");
    form.btnCalcIO_Click();
    GoToPage(1);
    const double href = form.LargestReferenceBandwidth();
    ASSERT_GT(href, 0.0);
    const auto expect_tables = [&] {
        EXPECT_EQ(form.datagridIO.Columns.front(), "Animal");
        EXPECT_EQ(form.datagridVar.Columns.front(), "Animal");
        EXPECT_EQ(form.datagridHref.Columns.front(), "Animal");
        EXPECT_EQ(form.LargestReferenceBandwidth(), href);
    };
    ChooseField("Age");
    expect_tables();
    form.chkUseSel.Value = 1;
    form.chkUseSel_Click();
    expect_tables();
}

TEST_F(TheForm, Start_up_clears_the_independence_table) {
    auto& points = AddPoints("fixes");
    points.AddPoint(0, 0, {std::int64_t{1}, 2.0});
    points.AddPoint(3, 4, {std::int64_t{1}, 2.0});
    Open();
    ChooseField("Animal");
    form.btnCalcIO_Click();
    ASSERT_FALSE(form.datagridIO.Rows.empty());
    Open();
    EXPECT_THAT(form.datagridIO.Columns, IsEmpty());
    EXPECT_THAT(form.datagridIO.Rows, IsEmpty());
    EXPECT_EQ(form.LargestReferenceBandwidth(), 0.0);
}

TEST_F(TheForm, A_layer_that_has_left_the_map_is_reported_and_its_fields_stay_unavailable) {
    AddPoints("fixes");
    Open();
    Map().RemoveLayers();
    form.cmbPntL_Click();
    ASSERT_EQ(messages.Boxes().size(), 1U);
    EXPECT_EQ(messages.Last().Title, "Error");
    EXPECT_TRUE(messages.Last().Text.starts_with("Error: ")) << messages.Last().Text;
    EXPECT_OFF(cmbUIDFLD);
    EXPECT_OFF(chkUseSel);
    EXPECT_THAT(form.cmbUIDFLD.Items, IsEmpty());
}

TEST_F(TheForm, The_prefix_is_cut_to_six_characters_with_a_warning) {
    form.txtR.Text = "abcdef";
    form.txtR_Change();
    EXPECT_EQ(form.txtR.Text, "abcdef");
    EXPECT_THAT(messages.Texts(), IsEmpty());

    form.txtR.Text = "abcdefg";
    form.txtR_Change();
    EXPECT_EQ(form.txtR.Text, "abcdef");
    ASSERT_EQ(messages.Boxes().size(), 1U);
    EXPECT_EQ(messages.Last().Text,
              "Warning: raster name prefix cannot be longer than 6 characters. This is necessary because of the "
              "automatic naming convention for output rasters.");
    EXPECT_EQ(messages.Last().Title, "Warning");
    EXPECT_EQ(messages.Last().Sign, Icon::kExclamation);
}

TEST_F(TheForm, The_prefix_is_counted_in_characters_not_bytes) {
    form.txtR.Text = "\xC3\x84\xC3\x84\xC3\x84\xC3\x84\xC3\x84\xC3\x84";
    form.txtR_Change();
    EXPECT_THAT(messages.Texts(), IsEmpty());
    form.txtR.Text += "\xC3\x84";
    form.txtR_Change();
    EXPECT_EQ(form.txtR.Text, "\xC3\x84\xC3\x84\xC3\x84\xC3\x84\xC3\x84\xC3\x84");
    EXPECT_EQ(messages.Boxes().size(), 1U);
}

TEST_F(TheForm, The_folder_button_keeps_the_folder_and_shows_it) {
    dialogs.WillChoose("/out");
    form.btnFolder_Click();
    EXPECT_EQ(form.OutputFolder(), "/out");
    EXPECT_EQ(form.txtOutFolder.Text, "/out");
    dialogs.WillChoose(std::nullopt);
    form.btnFolder_Click();
    EXPECT_EQ(form.OutputFolder(), "/out");
}

TEST_F(TheForm, The_output_folder_is_found_whatever_its_letter_case) {
    form.SetOutputFolder("/OUT");
    EXPECT_EQ(form.OutputFolder(), "/OUT");
    EXPECT_EQ(form.OutputFolderPath(), "/out");
    form.SetOutputFolder("/nowhere");
    EXPECT_EQ(form.OutputFolderPath(), "/nowhere");
}

TEST_F(TheForm, Exit_closes_it) {
    EXPECT_TRUE(form.Visible);
    form.btnExit_Click();
    EXPECT_FALSE(form.Visible);
}

}  // namespace
}  // namespace wxl::kde_tool
