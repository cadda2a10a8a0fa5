#include "apps/cli/commands/akde_session.h"

#include "adapters/ogr/ogr_source.h"
#include "adapters/raster/raster_dataset.h"
#include "akde/animal_models.h"
#include "akde/range_run.h"
#include "analysis/output_names.h"
#include "analysis/package_draft.h"
#include "apps/cli/batch_session.h"
#include "apps/cli/output_folder.h"
#include "apps/cli/percentages.h"
#include "platform/file_system.h"
#include "platform/runtime_error.h"
#include "platform/text.h"
#include "results_page/range_page.h"

#include <fmt/format.h>
#include <string>

namespace wxl::cli {

namespace {

namespace fs = std::filesystem;
using akde::RangeExtent;
using akde::RangeSettings;

double buffer_of(const std::string& text) {
    const double buffer = platform::IsNumeric(text) ? platform::NumberFromText(text) : -1.0;
    if (!(buffer >= 0.0)) throw WrongCall(fmt::format("--extent: the buffer \"{}\" is no number from 0 on", text));
    return buffer;
}

void take_extent(const AkdeOptions& options, RangeSettings& settings) {
    const std::string& text = options.Extent;
    if (text == "min") return;
    if (text == "full" || text.starts_with("full:")) {
        settings.Extent = RangeExtent::kFull;
        if (text != "full") settings.Buffer = buffer_of(text.substr(5));
        return;
    }
    if (!text.starts_with("ref:"))
        throw WrongCall(fmt::format("--extent: \"{}\" is not full, full:BUFFER, min or ref:RASTER", text));
    settings.Extent = RangeExtent::kReference;
    settings.ReferenceName = text.substr(4);
    const auto raster = opened(options.Input.Points.AllowIndirect, [&](files::Sources sources) {
        return files::OpenRaster(settings.ReferenceName, sources);
    });
    settings.Reference = raster->Band()->Geometry();
}

void check_prefix(const std::string& prefix) {
    try {
        platform::CheckDatasetName(prefix + "0");
    } catch (const platform::RuntimeError& error) {
        throw WrongCall("--prefix: " + error.Description);
    }
}

RangeSettings settings_of(const AkdeOptions& options) {
    RangeSettings settings;
    settings.Fields = options.Input.Fields;
    settings.Fit = fit_settings(options.Fit);
    settings.Folder = options.Out;
    settings.Prefix = options.Prefix;
    check_prefix(settings.Prefix);
    settings.CellSize = options.CellSize;
    if (settings.CellSize && !(*settings.CellSize > 0.0)) throw WrongCall("--cell-size must be above 0");
    settings.Scaling = options.Scaling;
    if (!(settings.Scaling > 0.0)) throw WrongCall("--scaling must be above 0");
    settings.RasterFormat = options.RasterFormat;
    settings.Percentages = percentages_of("--isopleths", options.Isopleths, Hundred::kRefused);
    settings.Optimal = options.Weights == "optimal";
    settings.Lines = options.Lines;
    settings.GeoPackage = options.GeoPackage;
    settings.Html = options.Html;
    settings.AnimalsPerSubfolder = options.GroupBy;
    settings.Overwrite = options.Overwrite;
    settings.Where = options.Input.Where;
    take_extent(options, settings);
    return settings;
}

/// Is told how the work goes, and keeps what it hears to itself: the tasks will tell it.
class ProgressOnly final : public akde::IListener {
public:
    explicit ProgressOnly(Console& console) : m_console(console) {}
    void Progress(double share, std::string_view what) override { m_console.Progress(share, what); }
    void EndProgress() override { m_console.EndProgress(); }
    void Note(std::string_view /*line*/) override {}
    void Problem(std::string_view /*line*/) override {}
    bool IsStopped() const override { return false; }

private:
    Console& m_console;
};

}  // namespace

AkdeSession::AkdeSession(const AkdeOptions& options, Console& console)
    : m_options(options),
      m_console(console),
      m_settings(settings_of(options)),
      m_layer(read_timed_layer(options.Input, console)),
      m_services(m_disk.Complete({})) {
    akde::spread_over_subfolders(m_layer.Animals, m_settings.AnimalsPerSubfolder);
    m_settings.LayerName = m_layer.Name;
    m_settings.Fields = m_layer.Fields;
    m_settings.Source = m_layer.Source;
    m_settings.SourceOptions = m_layer.SourceOptions;
}

std::vector<fs::path> AkdeSession::Taken() const {
    const auto standing = akde::standing_outputs(m_settings, m_layer.Animals, m_services);
    m_layer.Read.Refuse(standing);
    m_layer.Read.Refuse(m_settings.Folder / akde::kRangeSummary);
    if (m_settings.Html) m_layer.Read.Refuse(m_settings.Folder / results_page::kRangePageFile);
    if (m_settings.GeoPackage)
        m_layer.Read.Refuse(analysis::file_in_folder(m_settings.Folder, analysis::kRangePackage));
    return m_settings.Overwrite ? std::vector<fs::path>() : standing;
}

void AkdeSession::PrepareOutput() const {
    const std::vector<fs::path> taken = Taken();
    make_output_folder(m_settings.Folder);
    if (!taken.empty())
        platform::Raise(platform::error_number::kFileExists,
                        taken.front().string() + " exists: choose another folder or prefix, or give --overwrite");
    if (m_settings.Overwrite)
        batch::remove_batch(m_services, m_settings.Folder);
    else
        refuse_open_batch(*m_services.Files, m_settings.Folder);
}

batch::RangePlan AkdeSession::Plan(std::size_t tasks) const {
    ConsoleListener told(m_console);
    akde::report_without_id(m_layer.Animals, m_settings.Fields.Id, told);
    RangeSettings settings = m_settings;
    if (settings.Extent == RangeExtent::kFull) {
        ProgressOnly listener(m_console);
        settings.Reference = akde::RangeRun(m_settings, m_services, listener).CommonGrid(m_layer.Animals);
    }
    const InputOptions& input = m_options.Input.Points;
    return batch::plan_ranges(m_services, settings, m_layer.Animals,
                              {.Program = "wxl " WXL_VERSION,
                               .Input = files::split_input(input.Input, sources_of(input.AllowIndirect)).first,
                               .Tasks = tasks});
}

}  // namespace wxl::cli
