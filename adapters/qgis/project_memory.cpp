#include "adapters/qgis/project_memory.h"

#include "adapters/qgis/layer_names.h"
#include "adapters/qgis/qt_text.h"
#include "adapters/tracking/column_roles.h"
#include "analysis/animal_run.h"
#include "analysis/settings_text.h"

#include <QFileInfo>
#include <qgsproject.h>

namespace wxl::qgis {
namespace {

using analysis::Settings;

const QString kScope = QStringLiteral("WXLTools");
const QString kFolder = QStringLiteral("/lastRun/");

/// Entries of the project, which has them as texts.
class Entries {
public:
    static void Write(const char* key, const std::string& text) {
        QgsProject::instance()->writeEntry(kScope, kFolder + QLatin1String(key), ToQString(text));
    }
    static void Write(const char* key, bool value) { Write(key, std::string(value ? "1" : "0")); }

    static std::string Text(const char* key) {
        return FromQString(QgsProject::instance()->readEntry(kScope, kFolder + QLatin1String(key)));
    }
    static bool Flag(const char* key) { return Text(key) == "1"; }
};

void write_layer(const Settings& settings) {
    const QgsMapLayer* layer = LayerNames().Find(settings.LayerName);
    Entries::Write("layerId", layer ? FromQString(layer->id()) : std::string());
    Entries::Write("layer", settings.LayerName);
    Entries::Write("idField", settings.IdField);
    Entries::Write("selectedOnly", settings.SelectedOnly);
}

void write_kernel(const Settings& settings) {
    Entries::Write("bandwidth", analysis::bandwidth_text(settings));
    Entries::Write("bandwidths", settings.Bandwidths.Text);
    Entries::Write("proportions", settings.Proportions.Text);
    Entries::Write("adaptive", !settings.FixedKernel);
    Entries::Write("rescale", settings.Rescale);
}

void write_output(const Settings& settings) {
    Entries::Write("folder", settings.OutputFolder);
    Entries::Write("prefix", settings.Prefix);
    Entries::Write("cellSize", settings.Cells.Text);
    Entries::Write("scaling", settings.ScalingFactor.Text);
    Entries::Write("verbose", settings.Verbose);
    Entries::Write("silent", settings.Silent);
    Entries::Write("html", settings.Html);
    Entries::Write("extent", analysis::extent_text(settings));
    Entries::Write("buffer", settings.Buffer.Text);
    Entries::Write("reference", settings.ReferenceName);
    Entries::Write("isopleths", settings.Isopleths);
    Entries::Write("percentages", settings.Percentages.Text);
    Entries::Write("lines", settings.Lines);
    Entries::Write("polygons", settings.Polygons);
    Entries::Write("donuts", settings.Donuts);
}

void read_layer(Settings& settings) {
    const QgsMapLayer* layer = QgsProject::instance()->mapLayer(ToQString(Entries::Text("layerId")));
    settings.LayerName = layer ? LayerNames().NameOf(*layer) : Entries::Text("layer");
    settings.IdField = Entries::Text("idField");
    settings.SelectedOnly = Entries::Flag("selectedOnly");
}

void read_kernel(Settings& settings) {
    settings.Method = analysis::bandwidth_of(Entries::Text("bandwidth")).Method;
    settings.Bandwidths = analysis::typed_numbers(Entries::Text("bandwidths"));
    settings.Proportions = analysis::typed_numbers(Entries::Text("proportions"));
    settings.FixedKernel = !Entries::Flag("adaptive");
    settings.Rescale = Entries::Flag("rescale");
}

void read_output(Settings& settings) {
    settings.OutputFolder = Entries::Text("folder");
    settings.Prefix = Entries::Text("prefix");
    settings.Cells = analysis::cell_size_of(Entries::Text("cellSize"));
    settings.ScalingFactor = analysis::typed_number(Entries::Text("scaling"));
    settings.Verbose = Entries::Flag("verbose");
    settings.Silent = Entries::Flag("silent");
    settings.Html = Entries::Flag("html");
    settings.Mode = analysis::extent_of(Entries::Text("extent")).value_or(analysis::ExtentChoice{}).Mode;
    settings.Buffer = analysis::typed_number(Entries::Text("buffer"));
    settings.ReferenceName = Entries::Text("reference");
    settings.Isopleths = Entries::Flag("isopleths");
    settings.Percentages = analysis::typed_numbers(Entries::Text("percentages"));
    settings.Lines = Entries::Flag("lines");
    settings.Polygons = Entries::Flag("polygons");
    settings.Donuts = Entries::Flag("donuts");
}

}  // namespace

std::optional<std::size_t> ProjectMemory::AnimalField(const std::vector<std::string>& fields) const {
    return tracking::find_animal_column(fields);
}

bool ProjectMemory::CanWrite(const std::filesystem::path& folder) const {
    return QFileInfo(ToQString(folder.string())).isWritable();
}

std::optional<Settings> ProjectMemory::LastSettings() const {
    if (Entries::Text("bandwidth").empty()) return std::nullopt;
    Settings settings;
    read_layer(settings);
    read_kernel(settings);
    read_output(settings);
    return settings;
}

void ProjectMemory::RunBegins(const analysis::RunFrame& frame, const analysis::GroupedFixes&) {
    write_layer(frame.Wanted);
    write_kernel(frame.Wanted);
    write_output(frame.Wanted);
}

}  // namespace wxl::qgis
