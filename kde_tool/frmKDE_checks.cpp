// What the form says beside its fields before a run is asked for.

#include "analysis/dry_run.h"
#include "analysis/questions.h"
#include "analysis/setting_problems.h"
#include "kde_tool/form_settings.h"
#include "kde_tool/frmKDE.h"
#include "platform/runtime_error.h"
#include "platform/text.h"

#include <algorithm>
#include <array>
#include <string_view>

namespace wxl::kde_tool {
namespace {

constexpr int kInputPage = 0;
constexpr int kBandwidthPage = 2;
constexpr int kOutputPage = 3;

int page_of(std::string_view control) {
    if (control == "cmbPntL" || control == "cmbUIDFLD") return kInputPage;
    return control == "txtBW" || control == "txtPropHref" ? kBandwidthPage : kOutputPage;
}

std::string buffer_text(const analysis::Settings& settings, double largestHref) {
    if (settings.Mode != analysis::ExtentMode::kFull || !settings.Buffer.Value) return {};
    std::string used = settings.Buffer.Text + " on every side";
    if (list_of(settings).NoNumber) return used;
    const double advised = analysis::recommended_buffer(settings, largestHref).Shown;
    if (!(advised > *settings.Buffer.Value)) return used;
    return used + "; OK asks whether to use " + platform::NumberText(advised) +
           " instead, 3.5 times the widest bandwidth";
}

}  // namespace

/// Bandwidths are known for what the pages show.
analysis::KnownFixes frmKDE::FixesKnown() const {
    analysis::KnownFixes known;
    try {
        known.InDegrees = !cmbPntL.Text().empty() && IsInDegrees();
    } catch (const platform::RuntimeError&) {
        // A layer that cannot be read is told when it is needed.
    }
    if (m_hrefChoice != ChosenFixes() || m_variances.size() != m_hrefs.size()) return known;
    for (std::size_t i = 0; i < m_hrefs.size(); ++i) {
        const double href = analysis::applied_href(m_hrefs[i], m_variances[i], chkRescale.Value != 0);
        if (href > 0.0) known.SmallestHref = std::min(known.SmallestHref.value_or(href), href);
    }
    return known;
}

std::string frmKDE::FolderProblem() const {
    if (m_outFolder.empty()) return {};
    const std::filesystem::path folder = OutputFolderPath();
    if (!m_services.Files->FolderExists(folder)) return "This folder does not exist.";
    if (Advice && !Advice->CanWrite(folder)) return "You cannot write into this folder. Choose another one.";
    return {};
}

void frmKDE::CheckFields() {
    if (m_running) return;
    const analysis::Settings settings = settings_of(*this);
    const analysis::KnownFixes fixes = FixesKnown();
    Problems.clear();
    const auto tell = [this](const char* control, const std::string& problem) {
        if (!problem.empty()) Problems.push_back({control, problem});
    };
    const auto missing = [&](const char* control, bool isMissing, const char* sentence) {
        if (m_okPressed && isMissing) tell(control, sentence);
    };
    using analysis::BandwidthMethod;
    using analysis::ExtentMode;
    missing("cmbPntL", settings.LayerName.empty(), "Choose a point layer.");
    tell("cmbPntL", layer_problem(fixes));
    missing("cmbUIDFLD", settings.IdField.empty(), "Choose the field that names the animals.");
    missing("txtBW", settings.Method == BandwidthMethod::kManual && txtBW.Text.empty(),
            "Type a bandwidth, or several separated by commas.");
    missing("txtPropHref", settings.Method == BandwidthMethod::kProportion && txtPropHref.Text.empty(),
            "Type proportions separated by commas, such as 0.5, 1.");
    tell(settings.Method == BandwidthMethod::kManual ? "txtBW" : "txtPropHref", list_problem(settings));
    missing("txtOutFolder", m_outFolder.empty(), "Choose an output folder.");
    tell("txtOutFolder", FolderProblem());
    tell("txtR", prefix_problem(settings));
    missing("txtCellSize", settings.Mode != ExtentMode::kReference && txtCellSize.Text.empty(),
            "Type a cell size in map units.");
    tell("txtCellSize", cell_problem(settings, fixes));
    missing("txtScaling", txtScaling.Text.empty(), "Type a number above 0, such as 1000000.");
    tell("txtScaling", scaling_problem(settings));
    missing("txtBnds", settings.Isopleths && txtBnds.Text.empty(), "Type percentages separated by commas.");
    tell("txtBnds", percentages_problem(settings));
    missing("txtBuffer", settings.Mode == ExtentMode::kFull && txtBuffer.Text.empty(), "Type a buffer in map units.");
    tell("txtBuffer", buffer_problem(settings));
    missing("cmbExtRef", settings.Mode == ExtentMode::kReference && settings.ReferenceName.empty(),
            "Choose a raster layer.");
    lblBuffer.Caption = buffer_text(settings, m_largestHref);
}

std::string frmKDE::ProblemOf(std::string_view control) const {
    const auto found = std::ranges::find(Problems, control, &FieldProblem::Control);
    return found == Problems.end() ? std::string() : found->Text;
}

void frmKDE::FocusOnFirstProblem() {
    if (m_running) return;
    m_okPressed = true;
    CheckFields();
    if (Problems.empty()) return;
    FocusOn = Problems.front().Control;
    SSTab1.Current = page_of(FocusOn);
}

}  // namespace wxl::kde_tool
