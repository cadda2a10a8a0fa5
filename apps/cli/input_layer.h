#pragma once
#include "adapters/ogr/files_map.h"
#include "apps/cli/console.h"
#include "apps/cli/read_files.h"

#include <memory>
#include <string>
#include <vector>

namespace CLI {
class App;
}

namespace wxl::cli {

/// The point layer that a command reads.
struct InputOptions {
    std::string Input;           ///< PATH or PATH:LAYER
    bool AllowIndirect = false;  ///< sources that lead elsewhere may be read
    bool Degrees = false;        ///< a layer in degrees is taken as it is
};

/// Gives `command` the flag --allow-indirect.
void add_indirect_option(CLI::App& command, bool& allowed);

/// What a command may open, by its flag --allow-indirect.
files::Sources sources_of(bool allowIndirect);

/// RuntimeError that adds to a refusal what to do, and the option that lifts it.
[[noreturn]] void raise_with_option(const files::IndirectSource& refused);

/// Lifts what keeps the libraries beneath from reading elsewhere, from then on.
void allow_indirect_reading();

/// What `open` makes of the sources that the flag --allow-indirect allows. Downloads by the libraries beneath are
/// allowed with it, and from then on.
template <class Open>
auto opened(bool allowIndirect, Open&& open) {
    if (allowIndirect) allow_indirect_reading();
    try {
        return open(sources_of(allowIndirect));
    } catch (const files::IndirectSource& refused) {
        raise_with_option(refused);
    }
}

/// Gives `command` the argument INPUT and --allow-indirect.
void add_input_options(CLI::App& command, InputOptions& options);

/// The same and --degrees, for commands that measure distances.
void add_measured_input_options(CLI::App& command, InputOptions& options);

/// Opens the point layer. RuntimeError with advice: no such file or layer, several layers, no points, and, unless
/// allowed, a source that leads elsewhere.
std::shared_ptr<files::FilesFeatureLayer> open_point_layer(const InputOptions& options);

/// The files that the layer is read from.
ReadFiles files_read(files::FilesFeatureLayer& layer);

/// As open_point_layer for a layer that the command changes: a change of it that was cut short is finished first.
std::shared_ptr<files::FilesFeatureLayer> open_point_layer_to_change(const InputOptions& options);

/// As open_point_layer, and RuntimeError 5 for a layer in degrees unless --degrees was given; the description names the
/// UTM zone of the layer and how to come to it.
///
/// Tells when the layer is in a Mercator projection that makes areas wrong (report_mercator), and notes where
/// one without a coordinate system seems to be in degrees.
std::shared_ptr<files::FilesFeatureLayer> open_measured_point_layer(const InputOptions& options, Console& console);

/// Says that `what` is in a Mercator projection of the world, such as Web Mercator, where areas in the middle of its
/// extent are 5 % too large or more, or as much too small, and names the UTM zone to use instead.
void report_mercator(const std::string& what, const platform::SpatialReference& reference,
                     const platform::Extent& extent, Console& console);

/// Name of the field whose name is one that people give to the animal's; empty when there is none.
std::string guess_id_field(const std::vector<platform::Field>& fields);

/// Name of the field of `table` found without regard to case. RuntimeError 9 that lists the fields when there is none.
std::string find_id_field(platform::ITable& table, const std::string& wanted, const std::string& input);

}  // namespace wxl::cli
