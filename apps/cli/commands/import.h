#pragma once
#include "apps/cli/console.h"

#include <string>

namespace CLI {
class App;
}

namespace wxl::cli {

/// wxl import: a tracking CSV becomes a point shapefile.
struct ImportOptions {
    std::string Input;
    bool AllowIndirect = false;  ///< the file may be a pipe
    std::string Output;
    std::string Id;  ///< column names; empty: found by their usual names
    std::string X;
    std::string Y;
    std::string Time;
    std::string FromCrs = "EPSG:4326";
    std::string ToCrs = "auto";
    bool Overwrite = false;
};

void register_import(CLI::App& command, ImportOptions& options);

/// Reads the file, projects its fixes and publishes the shapefile with the fields animal, Time2, Date and Time1.
int run_import(const ImportOptions& options, Console& console);

}  // namespace wxl::cli
