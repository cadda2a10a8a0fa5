#include "kde_tool/form_settings.h"

#include "analysis/questions.h"
#include "analysis/settings_text.h"
#include "kde_tool/frmKDE.h"

namespace wxl::kde_tool {
namespace {

using analysis::BandwidthMethod;
using analysis::ExtentMode;
using analysis::Settings;

BandwidthMethod method_of(const frmKDE& form) {
    if (form.AdHocParts) return BandwidthMethod::kAdHoc;
    if (form.optBE_LSCV.Value) return BandwidthMethod::kLscv;
    if (form.optBE_BCV.Value) return BandwidthMethod::kBcv;
    if (form.optBE_MANUAL.Value) return BandwidthMethod::kManual;
    if (form.optPropHref.Value) return BandwidthMethod::kProportion;
    return BandwidthMethod::kHref;
}

ExtentMode mode_of(const frmKDE& form) {
    if (form.optSmall.Value) return ExtentMode::kMinimum;
    if (form.optExtRef.Value) return ExtentMode::kReference;
    return ExtentMode::kFull;
}

void choose(frmKDE& form, platform::OptionButton& button, void (frmKDE::*click)()) {
    button.Value = true;
    (form.*click)();
}

void fill_method(frmKDE& form, BandwidthMethod method) {
    switch (method) {
        case BandwidthMethod::kLscv:
            return choose(form, form.optBE_LSCV, &frmKDE::optBE_LSCV_Click);
        case BandwidthMethod::kBcv:
            return choose(form, form.optBE_BCV, &frmKDE::optBE_BCV_Click);
        case BandwidthMethod::kManual:
            return choose(form, form.optBE_MANUAL, &frmKDE::optBE_MANUAL_Click);
        case BandwidthMethod::kProportion:
            return choose(form, form.optPropHref, &frmKDE::optPropHref_Click);
        case BandwidthMethod::kHref:
        case BandwidthMethod::kAdHoc:
            return choose(form, form.optBE_HREF, &frmKDE::optBE_HREF_Click);
    }
}

void fill_kernel(frmKDE& form, const Settings& settings) {
    if (settings.FixedKernel)
        choose(form, form.optFixed, &frmKDE::optFixed_Click);
    else
        choose(form, form.optAdaptive, &frmKDE::optAdaptive_Click);
    form.chkRescale.Value = settings.Rescale ? 1 : 0;
    form.Reach = settings.KernelReach.Text;
    fill_method(form, settings.Method);
    form.AdHocParts = settings.Method == BandwidthMethod::kAdHoc ? std::optional(settings.AdHocParts) : std::nullopt;
    form.txtBW.Text = settings.Bandwidths.Text;
    form.txtPropHref.Text = settings.Proportions.Text;
}

void fill_output(frmKDE& form, const Settings& settings) {
    form.SetOutputFolder(settings.OutputFolder);
    form.txtR.Text = settings.Prefix;
    form.txtR_Change();
    form.txtCellSize.Text = settings.Cells.Text;
    form.txtScaling.Text = settings.ScalingFactor.Text;
    form.chkVerbose.Value = settings.Verbose ? 1 : 0;
    form.chkSilent.Value = settings.Silent ? 1 : 0;
    form.chkHtml.Value = settings.Html ? 1 : 0;
    form.chkGpkg.Value = settings.GeoPackage ? 1 : 0;
    form.ConvexPercentages = settings.ConvexPercentages;
    form.RasterFormat = settings.RasterFormat;
    form.AnimalsPerSubfolder = settings.AnimalsPerSubfolder;
    form.AsksSearchesOnly = settings.AsksSearchesOnly;
}

void fill_isopleths(frmKDE& form, const Settings& settings) {
    form.chkBnds.Value = settings.Isopleths ? 1 : 0;
    form.chkBnds_Click();
    form.txtBnds.Text = settings.Percentages.Text;
    form.chkLines.Value = settings.Lines ? 1 : 0;
    form.chkPolys.Value = settings.Polygons ? 1 : 0;
    form.chkDonuts.Value = settings.Donuts ? 1 : 0;
}

void fill_extent(frmKDE& form, const Settings& settings) {
    form.txtBuffer.Text = settings.Buffer.Text;
    switch (settings.Mode) {
        case ExtentMode::kFull:
            return choose(form, form.optFull, &frmKDE::optFull_Click);
        case ExtentMode::kMinimum:
            return choose(form, form.optSmall, &frmKDE::optSmall_Click);
        case ExtentMode::kReference:
            choose(form, form.optExtRef, &frmKDE::optExtRef_Click);
            form.cmbExtRef.Select(settings.ReferenceName);
    }
}

/// The form suggests a buffer from the reference bandwidths; a wider bandwidth of the user's needs more.
void suggest_buffer(frmKDE& form) {
    const Settings settings = settings_of(form);
    if (list_of(settings).NoNumber) return;  // refused when the run is to start
    const auto advice = recommended_buffer(settings, form.LargestReferenceBandwidth());
    if (!settings.Buffer.Value || advice.Shown > *settings.Buffer.Value)
        form.txtBuffer.Text = analysis::typed_number(advice.Shown).Text;
}

}  // namespace

Settings settings_of(const frmKDE& form) {
    Settings settings;
    settings.LayerName = form.cmbPntL.Text();
    settings.Where = form.Where;
    settings.IdField = form.cmbUIDFLD.Text();
    settings.SelectedOnly = form.chkUseSel.Value != 0;
    settings.Rescale = form.chkRescale.Value != 0;
    settings.FixedKernel = !form.optAdaptive.Value;
    settings.Method = method_of(form);
    settings.Bandwidths = analysis::typed_numbers(form.txtBW.Text);
    settings.Proportions = analysis::typed_numbers(form.txtPropHref.Text);
    settings.AdHocParts = form.AdHocParts.value_or(1);
    settings.KernelReach = analysis::reach_of(form.Reach).value_or(analysis::Reach{});
    settings.OutputFolder = form.OutputFolder();
    settings.Prefix = form.txtR.Text;
    settings.Cells = analysis::cell_size_of(form.txtCellSize.Text);
    settings.ScalingFactor = analysis::typed_number(form.txtScaling.Text);
    settings.Verbose = form.chkVerbose.Value != 0;
    settings.Mode = mode_of(form);
    settings.Buffer = analysis::typed_number(form.txtBuffer.Text);
    settings.ReferenceName = form.cmbExtRef.Text();
    settings.Isopleths = form.chkBnds.Value != 0;
    settings.Percentages = analysis::typed_numbers(form.txtBnds.Text);
    settings.Lines = form.chkLines.Value != 0;
    settings.Polygons = form.chkPolys.Value != 0;
    settings.Donuts = form.chkDonuts.Value != 0;
    settings.Silent = form.chkSilent.Value != 0;
    settings.Html = form.chkHtml.Value != 0;
    settings.GeoPackage = form.chkGpkg.Value != 0;
    settings.ConvexPercentages = form.ConvexPercentages;
    settings.RasterFormat = form.RasterFormat;
    settings.AnimalsPerSubfolder = form.AnimalsPerSubfolder;
    settings.AsksSearchesOnly = form.AsksSearchesOnly;
    return settings;
}

void fill(frmKDE& form, const Settings& settings) {
    fill_kernel(form, settings);
    fill_output(form, settings);
    fill_isopleths(form, settings);
    fill_extent(form, settings);
    form.Where = settings.Where;
}

void turn_pages(frmKDE& form, bool independence, const std::optional<analysis::TypedNumber>& buffer) {
    form.SSTab1.Current = 1;
    form.SSTab1_Click(0);
    if (independence) form.btnCalcIO_Click();
    if (buffer)
        form.txtBuffer.Text = buffer->Text;
    else
        suggest_buffer(form);
}

}  // namespace wxl::kde_tool
