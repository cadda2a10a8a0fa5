#include "apps/cli/input_layer.h"

#include "adapters/gdal/gdal_support.h"
#include "adapters/gdal/grid_fence.h"
#include "adapters/gdal/projection.h"
#include "adapters/tracking/column_roles.h"
#include "platform/runtime_error.h"
#include "platform/text.h"

#include <algorithm>
#include <CLI/CLI.hpp>
#include <fmt/format.h>
#include <fmt/ranges.h>

namespace wxl::cli {

namespace {

namespace error_number = platform::error_number;
using platform::Raise;

platform::Point middle_of(const platform::Extent& extent) {
    return {(extent.XMin + extent.XMax) / 2.0, (extent.YMin + extent.YMax) / 2.0};
}

std::string degrees_advice(platform::IFeatureClass& points) {
    const platform::Extent extent = points.Bounds();
    const auto zone = extent.IsEmpty() ? std::nullopt : files::utm_zone_of(middle_of(extent));
    if (!zone) return "wxl import projects a tracking table (--to-crs EPSG:n)";
    return fmt::format("wxl import projects a tracking table to UTM zone {} ({})", zone->Name(), zone->Code());
}

/// Whether all values could be longitudes and latitudes.
bool look_like_degrees(const platform::Extent& extent) {
    return !extent.IsEmpty() && extent.XMin >= -180.0 && extent.XMax <= 180.0 && extent.YMin >= -90.0 &&
           extent.YMax <= 90.0;
}

}  // namespace

void add_indirect_option(CLI::App& command, bool& allowed) {
    command.add_flag("--allow-indirect", allowed,
                     "Read also what is no file of the data themselves: archives, addresses, databases, virtual "
                     "datasets, pipes");
}

files::Sources sources_of(bool allowIndirect) {
    return allowIndirect ? files::Sources::kAny : files::Sources::kPlain;
}

void allow_indirect_reading() {
    files::SetDownloadsAllowed(true);
    files::SetGridsElsewhereAllowed(true);
}

void raise_with_option(const files::IndirectSource& refused) {
    Raise(refused.Number, fmt::format("{}: {}, or give --allow-indirect", refused.Description, refused.Advice));
}

void add_input_options(CLI::App& command, InputOptions& options) {
    command.add_option("INPUT", options.Input, "Point layer: FILE, or FILE:LAYER where the file holds several")
        ->required();
    add_indirect_option(command, options.AllowIndirect);
}

void add_measured_input_options(CLI::App& command, InputOptions& options) {
    add_input_options(command, options);
    command.add_flag("--degrees", options.Degrees, "Take a layer in degrees as it is: distances are then in degrees");
}

std::shared_ptr<files::FilesFeatureLayer> open_point_layer(const InputOptions& options) {
    auto layer = opened(options.AllowIndirect,
                        [&](files::Sources sources) { return files::OpenFeatureLayer(options.Input, sources); });
    if (layer->FeatureClass()->Shape() != platform::ShapeType::kPoint)
        Raise(error_number::kInvalidCall,
              options.Input + " holds no points: name a point layer; a tracking table becomes one by wxl import");
    return layer;
}

ReadFiles files_read(files::FilesFeatureLayer& layer) {
    ReadFiles read;
    read.Add(layer.Features().Files());
    return read;
}

std::shared_ptr<files::FilesFeatureLayer> open_point_layer_to_change(const InputOptions& options) {
    opened(options.AllowIndirect,
           [&](files::Sources sources) { files::OgrFeatureClass::FinishInterrupted(options.Input, sources); });
    return open_point_layer(options);
}

std::shared_ptr<files::FilesFeatureLayer> open_measured_point_layer(const InputOptions& options, Console& console) {
    auto layer = open_point_layer(options);
    platform::IFeatureClass& points = *layer->FeatureClass();
    const platform::SpatialReference reference = points.Reference();
    if (!files::has_places(reference))
        Raise(error_number::kInvalidCall,
              fmt::format("{} is in a coordinate system whose x and y are no places on a map ({}): project it first",
                          options.Input, reference.Name));
    if (reference.IsGeographic && !options.Degrees)
        Raise(
            error_number::kInvalidCall,
            fmt::format("{} is in degrees ({}), in which distances cannot be measured: project it first ({}), or give "
                        "--degrees",
                        options.Input, reference.Name, degrees_advice(points)));
    // The bounds of many points take a while.
    if (!reference.IsGeographic && files::is_mercator(reference))
        report_mercator(options.Input, reference, points.Bounds(), console);
    if (!options.Degrees && reference.Name.empty() && reference.Wkt.empty() && look_like_degrees(points.Bounds()))
        console.Note(
            fmt::format("wxl: {} has no coordinate system, and its values look like degrees: if they are, "
                        "distances, cells and bandwidths are in degrees too; {}",
                        options.Input, degrees_advice(points)));
    return layer;
}

void report_mercator(const std::string& what, const platform::SpatialReference& reference,
                     const platform::Extent& extent, Console& console) {
    if (extent.IsEmpty()) return;
    const auto stretch = files::mercator_stretch(reference, middle_of(extent));
    if (!stretch) return;
    constexpr double kTold = 1.05;
    const bool tooLarge = stretch->AreaFactor >= kTold;
    if (!tooLarge && stretch->AreaFactor > 1.0 / kTold) return;
    const auto zone = files::utm_zone_of(stretch->Degrees);
    console.Problem(fmt::format(
        "{} is in a Mercator projection ({}), in which areas here are about {:.1f} times too {}: reproject to {}", what,
        reference.Name, tooLarge ? stretch->AreaFactor : 1.0 / stretch->AreaFactor, tooLarge ? "large" : "small",
        zone ? fmt::format("UTM zone {} ({})", zone->Name(), zone->Code()) : "an equal-area projection of the region"));
}

std::string guess_id_field(const std::vector<platform::Field>& fields) {
    std::vector<std::string> names;
    for (const platform::Field& field : fields) names.push_back(field.Name);
    const auto found = tracking::find_animal_column(names);
    return found ? names[*found] : "";
}

std::string find_id_field(platform::ITable& table, const std::string& wanted, const std::string& input) {
    const std::vector<platform::Field> fields = table.Fields();
    const auto named = std::count_if(fields.begin(), fields.end(),
                                     [&](const auto& field) { return platform::EqualNoCase(field.Name, wanted); });
    if (named > 1)
        Raise(error_number::kSubscript,
              fmt::format("{} has {} fields of the name \"{}\": rename all but one", input, named, wanted));
    const int found = table.FindField(wanted);
    if (found >= 0) return fields[static_cast<std::size_t>(found)].Name;
    std::vector<std::string> names;
    for (const platform::Field& field : fields) names.push_back(field.Name);
    Raise(error_number::kSubscript,
          fmt::format("{} has no field \"{}\"; its fields are: {}", input, wanted, fmt::join(names, ", ")));
}

}  // namespace wxl::cli
