#include "kde_tool/form_choices.h"

#include "kde_tool/frmKDE.h"
#include "kde_tool/run_plan.h"
#include "kde_tool/run_preparation.h"
#include "platform/text.h"

namespace wxl::kde_tool {

namespace {

using platform::IsNumeric;
using platform::NumberFromText;

void choose(frmKDE& form, platform::OptionButton& button, void (frmKDE::*click)()) {
    button.Value = true;
    (form.*click)();
}

void set_kernel(const FormChoices& choices, frmKDE& form) {
    if (choices.Adaptive) choose(form, form.optAdaptive, &frmKDE::optAdaptive_Click);
    if (choices.Rescale) form.chkRescale.Value = 1;
    if (choices.VerboseLog) form.chkVerbose.Value = 1;
    form.RasterFormat = choices.RasterFormat;
    form.Reach = choices.Reach;
}

void set_bandwidth(const FormChoices& choices, frmKDE& form) {
    if (!choices.Bandwidth) return;
    const std::string& text = *choices.Bandwidth;
    if (text == "href") return choose(form, form.optBE_HREF, &frmKDE::optBE_HREF_Click);
    if (text == "lscv") return choose(form, form.optBE_LSCV, &frmKDE::optBE_LSCV_Click);
    if (text == "bcv") return choose(form, form.optBE_BCV, &frmKDE::optBE_BCV_Click);
    if (text.starts_with("prop:")) {
        choose(form, form.optPropHref, &frmKDE::optPropHref_Click);
        form.txtPropHref.Text = text.substr(5);
        return;
    }
    choose(form, form.optBE_MANUAL, &frmKDE::optBE_MANUAL_Click);
    form.txtBW.Text = text;
}

void set_output(const FormChoices& choices, frmKDE& form) {
    if (choices.Prefix) {
        form.txtR.Text = *choices.Prefix;
        form.txtR_Change();
    }
    if (choices.CellSize) form.txtCellSize.Text = *choices.CellSize;
    if (choices.Scaling) form.txtScaling.Text = *choices.Scaling;
    if (choices.Html) form.chkHtml.Value = 1;
}

void set_isopleths(const FormChoices& choices, frmKDE& form) {
    if (choices.Isopleths || choices.Lines || choices.Polygons || choices.Donuts) {
        form.chkBnds.Value = 1;
        form.chkBnds_Click();
    }
    if (choices.Isopleths) form.txtBnds.Text = *choices.Isopleths;
    if (choices.Lines) form.chkLines.Value = 1;
    if (choices.Polygons) form.chkPolys.Value = 1;
    if (choices.Donuts) form.chkDonuts.Value = 1;
}

void set_extent(const FormChoices& choices, frmKDE& form) {
    if (!choices.Extent) return;
    if (*choices.Extent == "min") return choose(form, form.optSmall, &frmKDE::optSmall_Click);
    if (!choices.Extent->starts_with("ref:")) return choose(form, form.optFull, &frmKDE::optFull_Click);
    choose(form, form.optExtRef, &frmKDE::optExtRef_Click);
    form.cmbExtRef.Select(choices.Extent->substr(4));
}

/// The form suggests a buffer from the reference bandwidths; a wider bandwidth of the user's needs more.
void suggest_buffer(frmKDE& form) {
    const RunInputs inputs = inputs_of(form);
    if (malformed_list(inputs)) return;  // refused when the run is to start
    const double largest = largest_value(inputs, bandwidth_values(inputs));
    const auto advice = recommended_buffer(inputs.Method, largest, form.LargestReferenceBandwidth());
    if (!IsNumeric(inputs.BufferText) || advice.Shown > NumberFromText(inputs.BufferText))
        form.txtBuffer.Text = platform::NumberText(advice.Shown);
}

}  // namespace

bool IsPositiveNumber(const std::string& text) {
    return IsNumeric(text) && NumberFromText(text) > 0.0;
}

void Choose(const FormChoices& choices, frmKDE& form) {
    set_kernel(choices, form);
    set_bandwidth(choices, form);
    set_output(choices, form);
    set_isopleths(choices, form);
    set_extent(choices, form);
}

void TurnPages(const FormChoices& choices, const std::optional<std::string>& buffer, frmKDE& form) {
    form.SSTab1.Current = 1;
    form.SSTab1_Click(0);
    if (choices.Independence) form.btnCalcIO_Click();
    if (buffer)
        form.txtBuffer.Text = *buffer;
    else
        suggest_buffer(form);
}

std::optional<std::string> GivenBuffer(const std::optional<std::string>& extent) {
    return extent && extent->starts_with("full:") ? std::optional(extent->substr(5)) : std::nullopt;
}

}  // namespace wxl::kde_tool
