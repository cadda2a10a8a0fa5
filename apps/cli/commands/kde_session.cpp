#include "apps/cli/commands/kde_session.h"

#include "adapters/ogr/files_map.h"
#include "adapters/raster/raster_dataset.h"
#include "adapters/shapefile/shapefile_parts.h"
#include "apps/cli/commands/kde_dry_run.h"
#include "apps/cli/commands/kde_form.h"
#include "apps/cli/output_folder.h"
#include "apps/cli/stop_signals.h"
#include "batch/planner.h"
#include "batch/task_state.h"
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

std::shared_ptr<files::FilesFeatureLayer> open_checked(const KdeOptions& options, const GivenSettings& given,
                                                       Console& console) {
    if (given.Percentages && are_fractions(*given.Percentages))
        console.Note("wxl: --isopleths takes percentages: 95 means 95 %, and 0.95 less than 1 %");
    return open_measured_point_layer(options.Points, console);
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

KdeSession::KdeSession(const KdeOptions& options, Console& console)
    : m_given(given_settings(options)),
      m_layer(open_checked(options, m_given, console)),
      m_read(files_read(*m_layer)),
      m_session(console, options.Questions),
      m_host(*m_session.Services().Host, console),
      m_services(m_session.Services()) {
    m_session.AddInput(m_layer);
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
    if (!options.Overwrite && batch::has_open_batch(*form.Services().Files, folder))
        platform::Raise(platform::error_number::kPermissionDenied,
                        folder.string() +
                            " holds a planned batch that is not merged yet: finish it (wxl batch status tells how it "
                            "stands), choose another folder, or give --overwrite");
    if (!options.Overwrite) return;
    delete_outputs(form);
    batch::remove_batch(form.Services(), folder);
}

}  // namespace wxl::cli
