#include "apps/cli/commands/kde_form.h"

#include "kde_tool/analysis_run.h"
#include "kde_tool/kernel_radius.h"
#include "kde_tool/run_plan.h"
#include "platform/file_system.h"
#include "platform/runtime_error.h"
#include "platform/text.h"

#include <algorithm>
#include <filesystem>
#include <fmt/format.h>
#include <vector>

namespace wxl::cli {

namespace {

namespace fs = std::filesystem;
using kde_tool::frmKDE;
using platform::IsNumeric;
using platform::NumberFromText;

void check_positive_list(const std::string& option, const std::string& text, const std::string& what) {
    for (const std::string& piece : platform::Split(text, ','))
        if (!kde_tool::IsPositiveNumber(piece))
            throw WrongCall(fmt::format("{}: \"{}\" is not {}", option, piece, what));
}

void check_bandwidth(const std::string& text) {
    if (text == "href" || text == "lscv" || text == "bcv") return;
    const bool proportions = text.starts_with("prop:");
    check_positive_list(
        "--bandwidth", proportions ? text.substr(5) : text,
        proportions ? "a proportion above 0" : "href, lscv, bcv, prop:P[,P...], or a number of map units above 0");
}

void check_extent(const std::string& text) {
    if (text == "full" || text == "min") return;
    if (text.starts_with("full:")) {
        if (!IsNumeric(text.substr(5)))
            throw WrongCall(fmt::format("--extent: the buffer \"{}\" is not a number", text.substr(5)));
        return;
    }
    if (text.starts_with("ref:") && text.size() > 4) return;
    throw WrongCall(fmt::format("--extent: \"{}\" is not full, full:BUFFER, min or ref:RASTER", text));
}

void check_isopleths(const std::string& text) {
    check_positive_list("--isopleths", text, "a percentage above 0");
    for (const double percent : platform::NumbersFromText(text))
        if (percent > 100.0)
            throw WrongCall(fmt::format("--isopleths: {} is above 100 %", platform::NumberText(percent)));
}

void choose_id_field(const KdeOptions& options, files::FilesFeatureLayer& layer, frmKDE& form) {
    form.cmbUIDFLD.Select(find_id_field(layer.FeatureClass()->Table(), options.IdField, options.Points.Input));
    form.cmbUIDFLD_Click();
}

void load_settings(const KdeOptions& options, OptionDialogs& dialogs, frmKDE& form) {
    if (options.Settings.empty()) return;
    dialogs.FileToOpen = options.Settings;
    form.btnLoadSettings_Click();
    if (form.txtStatus.Text != "Settings loaded")
        platform::Raise(platform::error_number::kFileNotFound,
                        options.Settings + ": these settings cannot be read; is it a settings file?");
    form.txtStatus.Text.clear();
}

void set_folder(const KdeOptions& options, frmKDE& form) {
    if (options.Out) form.SetOutputFolder(fs::absolute(*options.Out).lexically_normal().string());
    if (form.OutputFolder().empty()) throw WrongCall("give the output folder by --out DIR");
    form.AnimalsPerSubfolder = options.GroupBy;
}

void check_isopleth_kinds(const frmKDE& form) {
    if (form.chkBnds.Value != 0 && form.chkLines.Value + form.chkPolys.Value + form.chkDonuts.Value == 0)
        throw WrongCall("isopleths are to be drawn, but as what? Add --lines, --polygons or --donuts");
}

/// Before anything runs: a run that finds out would delete the report of earlier ones.
void check_prefix(const frmKDE& form) {
    try {
        platform::CheckDatasetName(form.txtR.Text + "0");
    } catch (const platform::RuntimeError& error) {
        throw WrongCall("--prefix: " + error.Description);
    }
}

bool is_reference(const std::optional<std::string>& extent) {
    return extent && extent->starts_with("ref:");
}

/// The buffer that was asked for, by an option or a settings file; nothing where one is to be suggested.
std::optional<std::string> given_buffer(const KdeOptions& options, const frmKDE& form) {
    if (const auto given = kde_tool::GivenBuffer(options.Extent)) return given;
    if (!options.Extent && !options.Settings.empty() && form.optFull.Value) return form.txtBuffer.Text;
    return std::nullopt;
}

void save_settings(const KdeOptions& options, OptionDialogs& dialogs, frmKDE& form) {
    if (options.SaveSettings.empty() || options.DryRun) return;
    if (!options.Overwrite && form.Services().Files->FileExists(options.SaveSettings))
        platform::Raise(platform::error_number::kFileExists,
                        options.SaveSettings + " is there already: give --overwrite, or another name");
    dialogs.FileToSave = options.SaveSettings;
    form.txtStatus.Text.clear();
    form.btnSaveSettings_Click();
    if (form.txtStatus.Text != "Settings saved")
        platform::Raise(platform::error_number::kDeviceIo, options.SaveSettings + ": the settings could not be saved");
    form.txtStatus.Text.clear();
}

}  // namespace

void check_options(const KdeOptions& options) {
    if (options.Bandwidth) check_bandwidth(*options.Bandwidth);
    if (options.Extent) check_extent(*options.Extent);
    if (options.Isopleths) check_isopleths(*options.Isopleths);
    if (options.CellSize && !(IsNumeric(*options.CellSize) && NumberFromText(*options.CellSize) > 0.5))
        throw WrongCall(
            fmt::format("--cell-size: \"{}\" is not a number above 0.5; it is used as a whole number of map units",
                        *options.CellSize));
    if (options.Scaling && !kde_tool::IsPositiveNumber(*options.Scaling))
        throw WrongCall(fmt::format("--scaling: \"{}\" is not a number above 0", *options.Scaling));
    if (!kde_tool::is_reach(options.Reach))
        throw WrongCall(fmt::format("--reach: \"{}\" is not a number of bandwidths above 0, or whole", options.Reach));
    if (options.Settings.empty() && !options.Out) throw WrongCall("give the output folder by --out DIR");
    if (options.Settings.empty() && !options.CellSize && !is_reference(options.Extent))
        throw WrongCall("give the cell size in map units by --cell-size C");
}

void fill_form(const KdeOptions& options, files::FilesFeatureLayer& layer, OptionDialogs& dialogs, frmKDE& form) {
    form.Form_Load();
    choose_id_field(options, layer, form);
    load_settings(options, dialogs, form);
    set_folder(options, form);
    kde_tool::Choose(options, form);
    check_prefix(form);
    check_isopleth_kinds(form);
    if (!options.Where.empty()) {
        layer.SelectWhere(options.Where);
        if (layer.Selection()->Count() == 0)
            platform::Raise(platform::error_number::kInvalidCall, "no fix meets --where " + options.Where);
        form.Where = options.Where;
        form.chkUseSel.Value = 1;
        form.chkUseSel_Click();
    }
    kde_tool::TurnPages(options, given_buffer(options, form), form);
    save_settings(options, dialogs, form);
}

}  // namespace wxl::cli
