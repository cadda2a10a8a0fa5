#include "kde_tool/frmKDE.h"

#include "analysis/output_names.h"
#include "analysis/questions.h"
#include "analysis/settings_text.h"
#include "kde_tool/control_states.h"
#include "kde_tool/form_settings.h"
#include "kde_tool/settings_file.h"
#include "platform/boxes.h"
#include "platform/runtime_error.h"
#include "platform/text.h"
#include "utilities/Utilities.h"

#include <algorithm>
#include <utility>

namespace wxl::kde_tool {

namespace {

constexpr int kPointLayers = 3;  ///< kinds of utilities::Utilities::ListLayers
constexpr int kRasterLayers = 2;
constexpr std::size_t kPrefixLength = 6;

void clear(platform::ComboBox& list) {
    list.Items.clear();
    list.ListIndex = -1;
}

/// Bytes of the first `count` characters of a UTF-8 text.
std::size_t prefix_bytes(const std::string& text, std::size_t count) {
    const auto starts_character = [](char byte) { return (static_cast<unsigned char>(byte) & 0xC0U) != 0x80U; };
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (!starts_character(text[i])) continue;
        if (count == 0) return i;
        --count;
    }
    return text.size();
}

std::string degrees_notice(const std::optional<platform::UtmTarget>& target) {
    const std::string degrees =
        "This layer is in degrees. Cell size, bandwidths and areas need metres or another unit of length. ";
    if (!target)
        return degrees +
               "It has no UTM zone (no points, or too close to a pole): please reproject it to a coordinate "
               "system of your choice.";
    std::string notice = degrees + "Its UTM zone is " + target->Name() + " (" + target->Code() + ").";
    if (target->SpansZones())
        notice += " Its points reach from zone " + std::to_string(target->WesternZone) + " to zone " +
                  std::to_string(target->EasternZone) + ": far from zone " + std::to_string(target->Zone) +
                  " distances are distorted.";
    return notice;
}

}  // namespace

frmKDE::frmKDE(const platform::Services& services, utilities::Utilities& geodata)
    : m_services(services), m_geodata(geodata) {}

/// The form's handlers report a fault with its description, which names the layer, field or file.
void frmKDE::Shielded(const std::function<void()>& procedure) {
    try {
        procedure();
    } catch (...) {
        platform::ShowError(*m_services.Messages, "Error: " + platform::CurrentError().Description);
    }
}

// --- Start-up ---

void frmKDE::Form_Load() {
    Shielded([&] {
        enable(chkUseSel, false);
        enable(cmbUIDFLD, false);
        enable(btnIOSave, false);
        enable(lblIO1, false);
        enable(lblIO2, false);
        ClearIndependenceTable();
        ClearVarianceTable();
        ClearHrefTable();
        DisableBW();
        DisableBW2();
        DisableIso();
        FillPointLayers();
        FillReferenceLayers();
        cmbKernelForm.Items = {kGaussianForm};
        cmbKernelForm.ListIndex = 0;
        DisableExtRef();
        enable(btnLastSettings, Advice != nullptr && Advice->LastSettings());
    });
}

void frmKDE::FillPointLayers() {
    clear(cmbPntL);
    m_geodata.ListLayers(kPointLayers, cmbPntL);
    if (cmbPntL.Items.empty())
        return platform::ShowWarning(*m_services.Messages,
                                     "Warning: no point layers are present in map (nothing to work with).");
    cmbPntL.ListIndex = 0;
    cmbPntL_Click();
}

void frmKDE::FillReferenceLayers() {
    clear(cmbExtRef);
    m_geodata.ListLayers(kRasterLayers, cmbExtRef);
    if (!cmbExtRef.Items.empty()) return;
    enable(optExtRef, false);
    enable(cmbExtRef, false);
}

// --- Input data ---

void frmKDE::cmbPntL_Click() {
    Shielded([&] {
        enable(cmbUIDFLD, false);
        clear(cmbUIDFLD);
        enable(chkUseSel, false);
        ClearIndependenceTable();
        ClearVarianceTable();
        ForgetFixes();
        lblDegrees.Caption.clear();
        enable(btnReproject, false);
        if (cmbPntL.Text().empty()) return;
        FillIdFields();
        NoticeDegrees(PointLayer());
    });
}

void frmKDE::FillIdFields() {
    const platform::Layer layer = PointLayer();
    enable(chkUseSel, true);
    m_geodata.FillFieldList(layer, cmbUIDFLD);
    enable(cmbUIDFLD, true);
    ForgetSuggestions();
}

// --- Layers in degrees ---

void frmKDE::NoticeDegrees(const platform::Layer& layer) {
    if (m_services.Reprojection == nullptr || !layer.Feature->FeatureClass()->Reference().IsGeographic) return;
    m_utm = m_services.Reprojection->Target(layer);
    enable(btnReproject, m_utm.has_value());
    lblDegrees.Caption = degrees_notice(m_utm);
}

void frmKDE::btnReproject_Click() {
    if (m_running || !btnReproject.Enabled || !m_utm) return;
    Shielded([&] {
        const std::string field = cmbUIDFLD.Text();
        const int selectedOnly = chkUseSel.Value;
        const std::string copy = m_services.Reprojection->AddUtmCopy(PointLayer(), *m_utm);
        clear(cmbPntL);
        m_geodata.ListLayers(kPointLayers, cmbPntL);
        cmbPntL.Select(copy);
        cmbPntL_Click();
        cmbUIDFLD.Select(field);
        chkUseSel.Value = selectedOnly;
        txtStatus.Text = "Reprojected to UTM zone " + m_utm->Name();
    });
}

void frmKDE::cmbUIDFLD_Click() {
    ForgetFixes();
    ForgetSuggestions();
}

void frmKDE::chkUseSel_Click() {
    ForgetFixes();
    ForgetSuggestions();
}

platform::Layer frmKDE::PointLayer() const {
    return analysis::point_layer(m_geodata, cmbPntL.Text());
}

analysis::GroupedFixes frmKDE::ReadFixes() const {
    if (m_kept && m_kept->Choice == ChosenFixes()) return m_kept->Fixes;
    const platform::Layer layer = PointLayer();
    if (cmbUIDFLD.Text().empty())
        platform::Raise(platform::error_number::kObjectNotSet, "No unique animal ID field is chosen.");
    return analysis::GroupFixes(*layer.Feature, cmbUIDFLD.Text(), chkUseSel.Value != 0);
}

analysis::GroupedFixes frmKDE::TakeFixes() {
    if (!m_kept || m_kept->Choice != ChosenFixes()) return ReadFixes();
    analysis::GroupedFixes fixes = std::move(m_kept->Fixes);
    m_kept.reset();
    return fixes;
}

frmKDE::FixesChoice frmKDE::ChosenFixes() const {
    return {cmbPntL.Text(), cmbUIDFLD.Text(), chkUseSel.Value != 0};
}

bool frmKDE::LayerInMap(const std::string& name) const {
    return m_geodata.LayerExists(name);
}

// --- Statistics ---

void frmKDE::ClearIndependenceTable() {
    datagridIO.Clear();
    m_independence.clear();
}

void frmKDE::ClearVarianceTable() {
    datagridVar.Clear();
    m_variances.clear();
}

void frmKDE::ClearHrefTable() {
    datagridHref.Clear();
    m_hrefs.clear();
    m_largestHref = 0.0;
    ForgetFixes();
}

/// Fixes that were kept, and the plot, belong to the choice of layer, field and features; the next page reads anew.
void frmKDE::ForgetFixes() {
    m_plotted.reset();
    m_kept.reset();
    ShowProfile(nullptr);
}

void frmKDE::SSTab1_Click(int previousTab) {
    if (m_running) return;  // the run has taken what it needs
    if (previousTab == SSTab1.Current || cmbPntL.Text().empty() || cmbUIDFLD.Text().empty()) return;
    Shielded([&] {
        analysis::GroupedFixes fixes = TakeFixes();
        ShowStatistics(fixes);
        if (KeepsFixes) m_kept = KeptFixes{ChosenFixes(), std::move(fixes)};
    });
}

void frmKDE::ShowStatistics(const analysis::GroupedFixes& fixes) {
    ShowVariances(analysis::variance_rows(fixes.Animals));
    FillHrefTable(fixes);
    SuggestCells(fixes);
    m_plotted.reset();
    ShowProfile(&fixes);
}

void frmKDE::FillIndependenceTable(const analysis::GroupedFixes& fixes) {
    m_independence = analysis::independence_rows(fixes.Animals);
    datagridIO = IndependenceTable(m_independence, cmbUIDFLD.Text(), fixes.TextIds);
}

void frmKDE::ShowVariances(std::vector<analysis::VarianceRow> rows) {
    m_variances = std::move(rows);
    datagridVar = VarianceTable(m_variances, cmbUIDFLD.Text());
}

void frmKDE::FillHrefTable(const analysis::GroupedFixes& fixes) {
    m_hrefs = analysis::href_rows(fixes.Animals);
    m_hrefChoice = ChosenFixes();
    const int chosenRow = std::max(0, datagridHref.CurrentRow);
    datagridHref = HrefTable(m_hrefs, cmbUIDFLD.Text());
    datagridHref.CurrentRow = std::min(chosenRow, static_cast<int>(m_hrefs.size()) - 1);
    m_largestHref = analysis::largest_href(m_hrefs);
    SuggestBuffer();
}

/// A list of proportions that cannot be read is RuntimeError 13.
void frmKDE::SuggestBuffer() {
    double widest = m_largestHref;
    if (optPropHref.Value) {
        const auto proportions = analysis::typed_numbers(txtPropHref.Text);
        if (proportions.NoNumber) platform::NumberFromText(*proportions.NoNumber);  // raises
        widest *= *std::ranges::max_element(proportions.Values);
    }
    txtBuffer.Text = analysis::typed_number(analysis::suggested_buffer(widest)).Text;
}

void frmKDE::btnCalcIO_Click() {
    if (cmbPntL.Text().empty() || cmbUIDFLD.Text().empty()) {
        m_services.Messages->Show({.Text = "Warning: a point feature layer and a unique ID field must be identified "
                                           "prior to calculating the independence of observation indices.",
                                   .Title = "Cannot calculate",
                                   .Kind = platform::BoxKind::kRefusal});
        return;
    }
    Shielded([&] {
        FillIndependenceTable(ReadFixes());
        datagridIO.Visible = true;
        enable(btnIOSave, true);
        enable(lblIO1, true);
        enable(lblIO2, true);
    });
}

void frmKDE::btnIOSave_Click() {
    Shielded([&] {
        const auto file = m_services.Dialogs->SaveFile({.Title = "Save Data As...",
                                                        .Filter = "Comma delimited text files (*.csv)|*.csv",
                                                        .AskBeforeOverwriting = true});
        if (!file || file->empty())
            return platform::ShowWarning(*m_services.Messages, "Warning: no file specified therefore data not saved.");
        if (datagridIO.Columns.empty())
            return platform::ShowError(*m_services.Messages,
                                       "The independence of observation data has not yet been calculated.");
        platform::PublishFile(*m_services.Files, *file, platform::ToWindows1252(IndependenceCsv(datagridIO)));
    });
}

// --- Prefix and output folder ---

void frmKDE::txtR_Change() {
    const std::size_t kept = prefix_bytes(txtR.Text, kPrefixLength);
    if (kept == txtR.Text.size()) return;
    txtR.Text.resize(kept);
    platform::ShowWarning(
        *m_services.Messages,
        "Warning: raster name prefix cannot be longer than 6 characters. This is necessary because of the "
        "automatic naming convention for output rasters.");
}

void frmKDE::btnFolder_Click() {
    Shielded([&] {
        const auto folder = m_services.Dialogs->ChooseFolder("Output folder");
        if (folder && !folder->empty()) SetOutputFolder(folder->string());
    });
}

void frmKDE::SetOutputFolder(const std::string& folder) {
    m_outFolder = folder;
    txtOutFolder.Text = folder;
}

std::filesystem::path frmKDE::OutputFolderPath() const {
    return analysis::output_folder(*m_services.Folders, settings_of(*this));
}

bool frmKDE::FolderExists(const std::string& folder) const {
    return !m_services.Folders->FindIgnoringCase(folder).empty();
}

// --- Settings files and leaving ---

void frmKDE::btnSaveSettings_Click() {
    Shielded([&] {
        const auto file = m_services.Dialogs->SaveFile(
            {.Title = "Save Settings File", .Filter = "Text files (*.txt)|*.txt", .AskBeforeOverwriting = true});
        if (!file || file->empty())
            return platform::ShowWarning(*m_services.Messages,
                                         "Warning: no file specified therefore settings not saved.");
        SaveSettings(*file);
        txtStatus.Text = "Settings saved";
    });
}

void frmKDE::SaveSettings(const std::filesystem::path& file) const {
    platform::PublishFile(*m_services.Files, file, SettingsFileBytes(settings_of(*this)));
}

/// Errors while loading are passed over, as every failing step of the reader is.
void frmKDE::btnLoadSettings_Click() {
    if (m_running) return;
    try {
        const auto file =
            m_services.Dialogs->OpenFile({.Title = "Open Settings File", .Filter = "Text files (*.txt)|*.txt"});
        if (file && !file->empty()) LoadSettings(*file);
    } catch (const std::exception&) {
        return;
    }
}

bool frmKDE::LoadSettings(const std::filesystem::path& file) {
    if (m_running) return false;
    try {
        const SettingsRead read = ReadSettings(m_services.Files->ReadFile(file, kSettingsFileLimit), *this);
        m_loadNote = read.Note;
        Panel = {};
        if (read.Settings == 0) Panel.Headline = file.filename().string() + " holds no settings: nothing was changed.";
    } catch (const std::exception&) {
        return false;
    }
    txtStatus.Text = "Settings loaded";
    return true;
}

void frmKDE::btnExit_Click() {
    if (!m_running) {
        Visible = false;
        return;
    }
    if (m_stopRequested || m_asksToStop) return;
    m_asksToStop = true;
    const auto answer = m_services.Messages->Show(
        {.Text = "The analysis is running. Do you want to stop it after the present animal? What "
                 "was done until then is kept.",
         .Title = Caption,
         .Sign = platform::Icon::kQuestion,
         .Choice = platform::Buttons::kYesNo,
         .About = platform::Topic::kStop,
         .Kind = platform::BoxKind::kQuestion});
    m_asksToStop = false;
    m_stopRequested = answer == platform::Answer::kYes;
}

}  // namespace wxl::kde_tool
