#include "apps/cli/commands/kde_form.h"

#include "apps/cli/density_options.h"
#include "apps/cli/input_layer.h"
#include "kde_tool/form_settings.h"
#include "platform/file_system.h"
#include "platform/runtime_error.h"
#include "platform/text.h"

#include <filesystem>
#include <fmt/format.h>

namespace wxl::cli {

namespace {

namespace fs = std::filesystem;
using analysis::BandwidthMethod;
using analysis::ExtentMode;
using analysis::Settings;
using kde_tool::frmKDE;

void check_positive(const std::string& option, const analysis::TypedNumbers& list, const std::string& what) {
    if (const auto piece = analysis::not_positive(list))
        throw WrongCall(fmt::format("{}: \"{}\" is not {}", option, *piece, what));
}

analysis::BandwidthChoice given_bandwidth(const std::string& text) {
    analysis::BandwidthChoice choice = analysis::bandwidth_of(text);
    if (is_list(choice.Method))
        check_positive("--bandwidth", choice.Values,
                       choice.Method == BandwidthMethod::kProportion
                           ? "a proportion above 0"
                           : "href, lscv, bcv, adhoc[:PARTS], prop:P[,P...], or a number of map units above 0");
    if (choice.Method == BandwidthMethod::kAdHoc && !choice.Parts)
        choice.Parts = adhoc_parts_of(text.substr(text.find(':') + 1));
    return choice;
}

analysis::ExtentChoice given_extent(const std::string& text) {
    const auto choice = analysis::extent_of(text);
    if (!choice) throw WrongCall(fmt::format("--extent: \"{}\" is not full, full:BUFFER, min or ref:RASTER", text));
    if (choice->Buffer && !choice->Buffer->Value)
        throw WrongCall(fmt::format("--extent: the buffer \"{}\" is not a number", choice->Buffer->Text));
    return *choice;
}

analysis::TypedNumbers given_percentages(const std::string& option, const std::string& text) {
    analysis::TypedNumbers percentages = analysis::typed_numbers(text);
    check_positive(option, percentages, "a percentage above 0");
    if (const auto percent = analysis::above_hundred(percentages))
        throw WrongCall(fmt::format("{}: {} is above 100 %", option, platform::NumberText(*percent)));
    return percentages;
}

analysis::CellSize given_cell_size(const std::string& text) {
    analysis::CellSize cells = analysis::cell_size_of(text);
    if (!cells.OfBandwidths && !(cells.Side >= 1.0))
        throw WrongCall(fmt::format(
            "--cell-size: \"{}\" is not a number above 0.5 (it is used as a whole number of map units), and not auto",
            text));
    return cells;
}

analysis::TypedNumber given_scaling(const std::string& text) {
    if (!analysis::is_positive_number(text))
        throw WrongCall(fmt::format("--scaling: \"{}\" is not a number above 0", text));
    return analysis::typed_number(text);
}

analysis::Reach given_reach(const std::string& text) {
    const auto reach = analysis::reach_of(text);
    if (!reach) throw WrongCall(fmt::format("--reach: \"{}\" is not a number of bandwidths above 0, or whole", text));
    return *reach;
}

/// An imported layer has one field of animals, whatever the file calls it.
std::string id_field_of(const KdeOptions& options, files::FilesFeatureLayer& layer) {
    platform::ITable& table = layer.FeatureClass()->Table();
    if (!options.IdField.empty()) return find_id_field(table, options.IdField, options.Points.Input);
    return guess_id_field(table.Fields());
}

void choose_id_field(const std::string& field, frmKDE& form) {
    form.cmbUIDFLD.Select(field);
    form.cmbUIDFLD_Click();
}

void load_settings(const KdeOptions& options, frmKDE& form) {
    if (options.Settings.empty()) return;
    if (!form.LoadSettings(options.Settings))
        platform::Raise(platform::error_number::kFileNotFound,
                        options.Settings + ": these settings cannot be read; is it a settings file?");
    form.txtStatus.Text.clear();
}

void take_kernel(const KdeOptions& options, const GivenSettings& given, Settings& settings) {
    if (options.Adaptive) settings.FixedKernel = false;
    if (options.Rescale) settings.Rescale = true;
    settings.KernelReach = given.KernelReach;
    if (!given.Bandwidth) return;
    settings.Method = given.Bandwidth->Method;
    if (settings.Method == BandwidthMethod::kManual) settings.Bandwidths = given.Bandwidth->Values;
    settings.AdHocParts = given.Bandwidth->Parts.value_or(1);
    if (settings.Method == BandwidthMethod::kAdHoc) check_adhoc(!settings.FixedKernel, settings.Rescale);
    if (settings.Method == BandwidthMethod::kProportion) settings.Proportions = given.Bandwidth->Values;
}

void take_output(const KdeOptions& options, const GivenSettings& given, Settings& settings) {
    if (options.Out) settings.OutputFolder = fs::absolute(*options.Out).lexically_normal().string();
    if (settings.OutputFolder.empty()) throw WrongCall("give the output folder by --out DIR");
    if (options.Prefix) settings.Prefix = *options.Prefix;
    if (given.Cells) settings.Cells = *given.Cells;
    if (given.ScalingFactor) settings.ScalingFactor = *given.ScalingFactor;
    if (options.VerboseLog) settings.Verbose = true;
    if (options.Html) settings.Html = true;
    settings.GeoPackage = options.GeoPackage.value_or(false);
    settings.RasterFormat = options.RasterFormat;
    settings.AnimalsPerSubfolder = options.GroupBy;
    settings.AsksSearchesOnly = true;
}

void take_isopleths(const KdeOptions& options, const GivenSettings& given, Settings& settings) {
    if (given.Percentages || options.Lines || options.Polygons || options.Donuts) settings.Isopleths = true;
    if (given.Percentages) settings.Percentages = *given.Percentages;
    if (options.Lines) settings.Lines = true;
    if (options.Polygons) settings.Polygons = true;
    if (options.Donuts) settings.Donuts = true;
    settings.ConvexPercentages = given.ConvexPercentages;
    const bool files = settings.Lines || settings.Polygons || settings.Donuts;
    if (settings.Isopleths && !files && !settings.GeoPackage)
        throw WrongCall("isopleths are to be drawn, but as what? Add --lines, --polygons, --donuts or --gpkg");
}

void take_extent(const GivenSettings& given, Settings& settings) {
    if (!given.Extent) return;
    settings.Mode = given.Extent->Mode;
    if (settings.Mode == ExtentMode::kReference) settings.ReferenceName = given.Extent->ReferenceName;
}

/// Before anything runs: a run that finds out would delete the report of earlier ones.
void check_prefix(const frmKDE& form) {
    try {
        platform::CheckDatasetName(form.txtR.Text + "0");
    } catch (const platform::RuntimeError& error) {
        throw WrongCall("--prefix: " + error.Description);
    }
}

void choose_fixes(const KdeOptions& options, files::FilesFeatureLayer& layer, frmKDE& form) {
    if (options.Where.empty()) return;
    layer.SelectWhere(options.Where);
    if (layer.Selection()->Count() == 0)
        platform::Raise(platform::error_number::kInvalidCall, "no fix meets --where " + options.Where);
    form.Where = options.Where;
    form.chkUseSel.Value = 1;
    form.chkUseSel_Click();
}

/// The buffer that was asked for, by an option or a settings file; nothing where one is to be suggested.
std::optional<analysis::TypedNumber> given_buffer(const KdeOptions& options, const GivenSettings& given,
                                                  const Settings& settings) {
    if (given.Extent) return given.Extent->Buffer;
    if (!options.Settings.empty() && settings.Mode == ExtentMode::kFull) return settings.Buffer;
    return std::nullopt;
}

void save_settings(const KdeOptions& options, const frmKDE& form) {
    if (options.SaveSettings.empty() || options.DryRun) return;
    if (!options.Overwrite && form.Services().Files->FileExists(options.SaveSettings))
        platform::Raise(platform::error_number::kFileExists,
                        options.SaveSettings + " is there already: give --overwrite, or another name");
    form.SaveSettings(options.SaveSettings);
}

}  // namespace

GivenSettings given_settings(const KdeOptions& options) {
    GivenSettings given;
    if (options.Bandwidth) given.Bandwidth = given_bandwidth(*options.Bandwidth);
    if (options.Extent) given.Extent = given_extent(*options.Extent);
    if (options.Isopleths) given.Percentages = given_percentages("--isopleths", *options.Isopleths);
    if (options.ConvexPolygons) given.ConvexPercentages = given_percentages("--mcp", *options.ConvexPolygons);
    if (options.CellSize) given.Cells = given_cell_size(*options.CellSize);
    if (options.Scaling) given.ScalingFactor = given_scaling(*options.Scaling);
    given.KernelReach = given_reach(options.Reach);
    return given;
}

void fill_form(const KdeOptions& options, const GivenSettings& given, files::FilesFeatureLayer& layer, frmKDE& form) {
    form.Form_Load();
    choose_id_field(id_field_of(options, layer), form);
    load_settings(options, form);
    Settings settings = kde_tool::settings_of(form);
    take_output(options, given, settings);
    take_kernel(options, given, settings);
    take_isopleths(options, given, settings);
    take_extent(given, settings);
    kde_tool::fill(form, settings);
    check_prefix(form);
    choose_fixes(options, layer, form);
    kde_tool::turn_pages(form, options.Independence, given_buffer(options, given, settings));
    save_settings(options, form);
}

}  // namespace wxl::cli
