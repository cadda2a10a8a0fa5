#include "apps/cli/commands/kde_defaults.h"

#include "adapters/ogr/ogr_source.h"
#include "analysis/settings_text.h"

namespace wxl::cli {

namespace {

bool has_reference(const KdeOptions& options) {
    return options.Extent && options.Extent->starts_with("ref:");
}

std::string folder_for(const InputOptions& points) {
    return files::split_input(points.Input, sources_of(points.AllowIndirect)).first.stem().string() + "_ranges";
}

}  // namespace

bool leaves_choices(const KdeOptions& options) {
    if (!options.Settings.empty()) return false;
    return options.IdField.empty() || !options.Out || (!options.CellSize && !has_reference(options));
}

KdeOptions completed(const KdeOptions& given) {
    KdeOptions options = given;
    if (!leaves_choices(given)) return options;
    options.ReadyMade = true;
    if (!options.Out) options.Out = folder_for(options.Points);
    if (!options.CellSize && !has_reference(options)) options.CellSize = analysis::kFittingCells;
    if (!options.Extent) options.Extent = "min";
    if (!options.Isopleths) options.Isopleths = "95,50";
    if (!options.GeoPackage) options.GeoPackage = true;
    if (!*options.GeoPackage && !options.Lines && !options.Donuts) options.Polygons = true;
    options.Html = true;
    return options;
}

}  // namespace wxl::cli
