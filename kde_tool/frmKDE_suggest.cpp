// What the form proposes: the button "Suggest", hints in empty boxes, and the settings of the last run.

#include "analysis/settings_text.h"
#include "analysis/suggestions.h"
#include "kde_tool/control_states.h"
#include "kde_tool/form_settings.h"
#include "kde_tool/frmKDE.h"
#include "utilities/Utilities.h"

namespace wxl::kde_tool {
namespace {

constexpr const char* kSuggestedPercentages = "95, 50";

std::string hint_of(const std::string& suggestion) {
    return suggestion.empty() ? std::string() : "suggested: " + suggestion;
}

void check(platform::CheckBox& box) {
    box.Value = 1;
}

}  // namespace

std::string frmKDE::AnimalField() const {
    const auto place = Advice ? Advice->AnimalField(cmbUIDFLD.Items) : std::nullopt;
    return place ? cmbUIDFLD.Items.at(*place) : std::string();
}

bool frmKDE::IsInDegrees() const {
    return PointLayer().Feature->FeatureClass()->Reference().IsGeographic;
}

/// Distances in degrees suggest nothing.
void frmKDE::SuggestCells(const analysis::GroupedFixes& fixes) {
    const auto cells =
        IsInDegrees() ? std::nullopt : analysis::suggested_cell_size(fixes.Animals, analysis::href_rows(fixes.Animals));
    m_suggestedCells = cells ? analysis::typed_number(*cells).Text : std::string();
    txtCellSize.Hint = hint_of(m_suggestedCells);
}

void frmKDE::ForgetSuggestions() {
    m_suggestedCells.clear();
    txtCellSize.Hint.clear();
    cmbUIDFLD.Hint = hint_of(AnimalField());
}

void frmKDE::ChooseHighlightedLayer() {
    const auto& document = m_geodata.Document();
    const auto highlighted = document ? document->SelectedLayer() : std::nullopt;
    if (highlighted && highlighted->Name != cmbPntL.Text() && cmbPntL.Select(highlighted->Name)) cmbPntL_Click();
}

/// A field that was chosen stays where none is found.
void frmKDE::ChooseAnimalField() {
    const std::string field = AnimalField();
    if (!field.empty() && field != cmbUIDFLD.Text() && cmbUIDFLD.Select(field)) cmbUIDFLD_Click();
}

void frmKDE::SuggestOutput() {
    check(chkBnds);
    check(chkPolys);
    chkBnds_Click();
    txtBnds.Text = kSuggestedPercentages;
    optSmall.Value = true;
    optSmall_Click();
}

void frmKDE::btnSuggest_Click() {
    if (m_running || cmbPntL.Items.empty()) return;
    Shielded([&] {
        ChooseHighlightedLayer();
        ChooseAnimalField();
        SuggestOutput();
        if (cmbPntL.Text().empty() || cmbUIDFLD.Text().empty()) {
            txtStatus.Text = "Suggested, but please choose the field that names the animals";
            return;
        }
        const analysis::GroupedFixes fixes = ReadFixes();
        ShowStatistics(fixes);
        if (!m_suggestedCells.empty()) txtCellSize.Text = m_suggestedCells;
        txtStatus.Text = m_suggestedCells.empty() ? "Suggested, but no cell size: the layer has no reference bandwidth "
                                                    "in a unit of length"
                                                  : "Suggested for " + cmbPntL.Text() + ", animals by " +
                                                        cmbUIDFLD.Text() + ": cell size " + m_suggestedCells;
    });
}

void frmKDE::btnLastSettings_Click() {
    const auto last = Advice && !m_running ? Advice->LastSettings() : std::nullopt;
    if (!last) return;
    Shielded([&] {
        const bool isThere = cmbPntL.Select(last->LayerName);
        if (isThere) {
            cmbPntL_Click();
            if (cmbUIDFLD.Select(last->IdField)) cmbUIDFLD_Click();
            chkUseSel.Value = last->SelectedOnly ? 1 : 0;
            chkUseSel_Click();
        }
        fill(*this, *last);
        txtStatus.Text = isThere ? "Settings of the last run"
                                 : "Settings of the last run; its layer " + last->LayerName + " is not in the map";
    });
}

}  // namespace wxl::kde_tool
