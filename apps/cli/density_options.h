#pragma once
#include "apps/cli/console.h"
#include "comparison/animal_density.h"

#include <string>

namespace CLI {
class App;
}

namespace wxl::cli {

/// How the densities of animals that are compared come about.
struct DensityOptions {
    std::string Bandwidth = "href";
    bool Adaptive = false;
    bool Rescale = false;
    std::string CellSize;
};

/// Gives `command` --bandwidth, --adaptive, --rescale and --cell-size.
void add_density_options(CLI::App& command, DensityOptions& options);

/// WrongCall for values that make no sense.
comparison::DensitySettings density_settings(const DensityOptions& options);

/// The parts of "adhoc:PARTS"; WrongCall for what is no number of them.
std::int32_t adhoc_parts_of(const std::string& text);

/// WrongCall where the ad hoc rule is asked for kernels that it does not know.
void check_adhoc(bool adaptive, bool rescale);

/// The cell size in map units, a whole number; 0 where none was given. WrongCall for a value that is none.
double cell_size_of(const std::string& text);

}  // namespace wxl::cli
