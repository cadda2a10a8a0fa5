// What the form's options switch on and off.

#include "kde_tool/control_states.h"
#include "kde_tool/frmKDE.h"

#include <initializer_list>

namespace wxl::kde_tool {

namespace {

/// One of a group is chosen at a time: a chosen button clears its siblings.
void clear_siblings(const platform::OptionButton& chosen, std::initializer_list<platform::OptionButton*> group) {
    if (!chosen.Value) return;
    for (platform::OptionButton* button : group)
        if (button != &chosen) button->Value = false;
}

}  // namespace

// --- Kernel and bandwidth ---

void frmKDE::optFixed_Click() {
    clear_siblings(optFixed, {&optFixed, &optAdaptive});
}

void frmKDE::optAdaptive_Click() {
    clear_siblings(optAdaptive, {&optFixed, &optAdaptive});
}

void frmKDE::ChooseBandwidth(const platform::OptionButton& chosen) {
    clear_siblings(chosen, {&optBE_LSCV, &optBE_BCV, &optBE_HREF, &optBE_MANUAL, &optPropHref});
    ShowProfile(nullptr);
}

void frmKDE::optBE_LSCV_Click() {
    ChooseBandwidth(optBE_LSCV);
    DisableBW();
    DisableBW2();
}

void frmKDE::optBE_BCV_Click() {
    ChooseBandwidth(optBE_BCV);
    DisableBW();
    DisableBW2();
}

void frmKDE::optBE_HREF_Click() {
    ChooseBandwidth(optBE_HREF);
    DisableBW();
    DisableBW2();
}

void frmKDE::optBE_MANUAL_Click() {
    ChooseBandwidth(optBE_MANUAL);
    if (optBE_MANUAL.Value)
        EnableBW();
    else
        DisableBW();
    DisableBW2();
}

void frmKDE::optPropHref_Click() {
    ChooseBandwidth(optPropHref);
    DisableBW();
    EnableBW2();
}

// --- Output options ---

void frmKDE::chkBnds_Click() {
    if (chkBnds.Value != 0)
        EnableIso();
    else
        DisableIso();
}

void frmKDE::ChooseExtent(const platform::OptionButton& chosen) {
    clear_siblings(chosen, {&optFull, &optSmall, &optExtRef});
}

void frmKDE::optFull_Click() {
    ChooseExtent(optFull);
    DisableExtRef();
    EnableBuffer();
}

void frmKDE::optSmall_Click() {
    ChooseExtent(optSmall);
    DisableBuffer();
    DisableExtRef();
}

void frmKDE::optExtRef_Click() {
    ChooseExtent(optExtRef);
    EnableExtRef();
}

void frmKDE::RefreshEnabledStates() {
    chkBnds_Click();
    if (optBE_MANUAL.Value)
        optBE_MANUAL_Click();
    else if (optPropHref.Value)
        optPropHref_Click();
    else
        optBE_HREF_Click();
    if (optExtRef.Value)
        optExtRef_Click();
    else if (optSmall.Value)
        optSmall_Click();
    else
        optFull_Click();
}

// --- Groups of controls on and off ---

void frmKDE::DisableIso() {
    SwitchIso(false);
}

void frmKDE::EnableIso() {
    SwitchIso(true);
}

void frmKDE::SwitchIso(bool on) {
    enable(chkLines, on);
    enable(chkPolys, on);
    enable(chkDonuts, on);
    enable(txtBnds, on);
}

void frmKDE::DisableBW() {
    enable(txtBW, false);
}

void frmKDE::EnableBW() {
    enable(txtBW, true);
}

void frmKDE::EnableBW2() {
    enable(txtPropHref, true);
}

void frmKDE::DisableBW2() {
    enable(txtPropHref, false);
}

void frmKDE::DisableBuffer() {
    enable(txtBuffer, false);
}

void frmKDE::EnableBuffer() {
    enable(txtBuffer, true);
    DisableExtRef();
}

void frmKDE::DisableExtRef() {
    enable(cmbExtRef, false);
}

void frmKDE::EnableExtRef() {
    enable(cmbExtRef, true);
    DisableBuffer();
}

}  // namespace wxl::kde_tool
