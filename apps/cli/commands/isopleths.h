#pragma once
#include "apps/cli/console.h"

#include <string>

namespace CLI {
class App;
}

namespace wxl::cli {

/// wxl isopleths: isopleths of a density raster as shapefiles.
struct IsoplethOptions {
    std::string Raster;
    bool AllowIndirect = false;
    std::string Levels;  ///< percentages of the volume, separated by commas
    std::string Out;     ///< folder; made when it is not there
    std::string Name;    ///< what the names of the shapefiles begin with
    bool Lines = false;  ///< none of the three: polygons
    bool Polygons = false;
    bool Donuts = false;
    bool Json = false;
    bool Overwrite = false;
};

void register_isopleths(CLI::App& command, IsoplethOptions& options);

/// Percentages go to the isopleth object in ascending order, each once, so that donuts are rings; what is printed
/// follows the order in which they were given. Fails with the object's status.
int run_isopleths(const IsoplethOptions& options, Console& console);

}  // namespace wxl::cli
