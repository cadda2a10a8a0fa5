#pragma once
#include "apps/cli/input_layer.h"

namespace wxl::cli {

/// wxl stats: serial independence, dispersion and reference bandwidth of every animal.
struct StatsOptions {
    InputOptions Points;
    std::string IdField;
    std::string Csv;  ///< file to write; empty: none
    bool Overwrite = false;
    bool Json = false;
};

void register_stats(CLI::App& command, StatsOptions& options);

/// Presses the analysis form as a user does, so that the numbers are those of its tables.
int run_stats(const StatsOptions& options, Console& console);

}  // namespace wxl::cli
