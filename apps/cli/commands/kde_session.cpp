#include "apps/cli/commands/kde_session.h"

#include "adapters/ogr/files_map.h"
#include "adapters/ogr/ogr_source.h"
#include "adapters/raster/raster_dataset.h"
#include "adapters/shapefile/shapefile_parts.h"
#include "apps/cli/batch_session.h"
#include "apps/cli/commands/kde_dry_run.h"
#include "apps/cli/commands/kde_form.h"
#include "apps/cli/output_folder.h"
#include "apps/cli/stop_signals.h"
#include "batch/planner.h"
#include "platform/runtime_error.h"
#include "platform/text.h"

#include <algorithm>
#include <filesystem>
#include <system_error>

namespace wxl::cli {

namespace {

/// Whether a list of percentages seems to hold shares of 1.
bool are_fractions(const analysis::TypedNumbers& percentages) {
    return std::ranges::all_of(percentages.Values, [](double percent) { return percent <= 1.0; });
}

/// Whether the fixes come from a tracking file that has to be imported: by what it is, by options that say how, or for
/// want of a field that names the animal.
bool is_tracking_file(const KdeOptions& options) {
    FixOptions none;
    none.AllowIndirect = options.Fixes.AllowIndirect;
    if (options.Fixes != none || needs_import(options.Points)) return true;
    if (!options.IdField.empty() || !options.Settings.empty()) return false;
    return guess_id_field(open_point_layer(options.Points)->FeatureClass()->Table().Fields()).empty();
}

/// How the file is read: a name of the field that imported layers have is none of a column.
FixOptions fix_options_of(const KdeOptions& options) {
    FixOptions fixes = options.Fixes;
    fixes.Inputs = {options.Points.Input};
    fixes.AllowIndirect = options.Points.AllowIndirect;
    if (fixes.Id.empty() && !platform::EqualNoCase(options.IdField, kAnimalField)) fixes.Id = options.IdField;
    return fixes;
}

std::unique_ptr<ImportedLayer> import_where_needed(const KdeOptions& options, Console& console) {
    if (!is_tracking_file(options)) return nullptr;
    const auto columns = options.Where.empty() ? FixRows::Columns::kErrors : FixRows::Columns::kAll;
    auto imported = std::make_unique<ImportedLayer>(fix_options_of(options), columns, console);
    platform::IFeatureClass& points = *imported->Layer()->FeatureClass();
    report_mercator(options.Points.Input, points.Reference(), points.Bounds(), console);
    return imported;
}

void note_fractions(const GivenSettings& given, Console& console) {
    if (given.Percentages && are_fractions(*given.Percentages))
        console.Note("wxl: --isopleths takes percentages: 95 means 95 %, and 0.95 less than 1 %");
}

ReadFiles read_files_of(const KdeOptions& options, const ImportedLayer* imported, files::FilesFeatureLayer& layer) {
    if (imported == nullptr) return files_read(layer);
    ReadFiles read;
    read.Add(files::split_input(options.Points.Input, sources_of(options.Points.AllowIndirect)).first);
    return read;
}

/// What repeats the import: the file as it lies on disk, and the options that say how to read it.
platform::Layer map_layer_of(const KdeOptions& options, const ImportedLayer* imported,
                             const std::shared_ptr<files::FilesFeatureLayer>& layer) {
    platform::Layer entry = files::layer_of(layer);
    if (imported == nullptr) return entry;
    entry.Source = std::filesystem::absolute(options.Points.Input).lexically_normal().string();
    entry.SourceOptions = words_of(fix_options_of(options));
    return entry;
}

/// A file by its whole path, which means the same from any folder; anything else that can be opened as it is written.
std::string full_name(const std::string& raster) {
    std::error_code unknown;
    return std::filesystem::exists(raster, unknown) ? std::filesystem::absolute(raster).lexically_normal().string()
                                                    : raster;
}

/// The raster of --extent ref:RASTER, empty for any other extent.
std::string reference_of(const GivenSettings& given) {
    return given.Extent ? given.Extent->ReferenceName : std::string();
}

/// Adds the raster of --extent ref:RASTER to the map, under a name that no other layer has, and calls it by that.
void add_reference(bool allowIndirect, ToolSession& session, GivenSettings& given) {
    const std::string raster = reference_of(given);
    if (raster.empty()) return;
    platform::Layer layer = files::layer_of(opened(allowIndirect, [&](files::Sources sources) {
        return std::make_shared<files::FilesRasterLayer>(raster, sources);
    }));
    layer.Name = full_name(raster);
    while (session.Geodata().LayerExists(layer.Name)) layer.Name += " (raster)";
    given.Extent->ReferenceName = layer.Name;
    session.Document().Map().AddLayer(std::move(layer));
}

}  // namespace

void ProgressHost::Yield() {
    m_host.Yield();
    if (!m_form || !m_form->Running()) return;
    if (StopSignals::Came() && !m_form->StopRequested()) {
        m_console.EndProgress();
        m_console.Problem("wxl: stopping after the present animal; a second Ctrl-C stops at once");
        m_form->RequestStop();
    }
    const platform::ProgressBar& bar = m_form->PBar;
    m_console.Progress((bar.Value - bar.Minimum) / (bar.Maximum - bar.Minimum), m_form->txtStatus.Text);
}

KdeSession::KdeSession(const KdeOptions& given, Console& console)
    : m_given(given_settings(given)),
      m_imported(import_where_needed(given, console)),
      m_layer(m_imported ? m_imported->Layer() : open_measured_point_layer(given.Points, console)),
      m_read(read_files_of(given, m_imported.get(), *m_layer)),
      m_session(console, given.Questions),
      m_host(*m_session.Services().Host, console),
      m_services(m_session.Services()) {
    note_fractions(m_given, console);
    KdeOptions options = given;
    if (m_imported) options.IdField = kAnimalField;
    m_session.AddInput(map_layer_of(given, m_imported.get(), m_layer));
    AddOtherFiles(options);
    add_reference(options.Points.AllowIndirect, m_session, m_given);
    m_services.Host = &m_host;
    m_form.emplace(m_services, m_session.Geodata());
    m_form->KeepsFixes = true;
    m_host.Watch(*m_form);
    fill_form(options, m_given, *m_layer, *m_form);
}

/// A run rewrites the record in its folder whether it started from it or not: only settings that are to be saved may
/// not replace those that were read.
void KdeSession::AddOtherFiles(const KdeOptions& options) {
    if (const std::string raster = reference_of(m_given); !raster.empty())
        m_read.Add(opened(options.Points.AllowIndirect,
                          [&](files::Sources sources) { return files::RasterFiles(raster, sources); }));
    if (options.SaveSettings.empty()) return;
    ReadFiles read = m_read;
    if (!options.Settings.empty()) read.Add(options.Settings);
    read.Refuse(options.SaveSettings);
    files::CheckReplaceable(options.SaveSettings);
}

void prepare_output(const KdeOptions& options, kde_tool::frmKDE& form) {
    const std::filesystem::path folder = form.OutputFolderPath();
    if (!std::filesystem::is_directory(folder)) make_output_folder(folder);
    if (files::is_protected(folder))
        platform::Raise(platform::error_number::kPermissionDenied, "The folder " + folder.string() + " is read-only.");
    if (!options.Overwrite) refuse_open_batch(*form.Services().Files, folder);
    if (!options.Overwrite) return;
    delete_outputs(form);
    batch::remove_batch(form.Services(), folder);
}

}  // namespace wxl::cli
