#pragma once
#include "apps/cli/fix_import.h"

namespace wxl::cli {

/// wxl import: tracking files become one layer of points.
struct ImportOptions {
    std::vector<std::string> Files;  ///< inputs, and the output last
    FixOptions Fixes;
    std::string Rejected;  ///< CSV of the rows that are left out; empty: none
    bool Overwrite = false;
};

void register_import(CLI::App& command, ImportOptions& options);

/// Reads the files, projects their fixes and publishes the layer with the fields animal, Time2, Date, Time1 and all
/// other columns.
int run_import(const ImportOptions& options, Console& console);

}  // namespace wxl::cli
