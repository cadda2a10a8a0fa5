#pragma once
#include "apps/cli/input_layer.h"

namespace wxl::cli {

/// wxl info: what a point layer holds.
struct InfoOptions {
    InputOptions Points;
    std::string IdField;
    std::string Time;  ///< empty: found by the names that such fields usually have
    bool Json = false;
};

void register_info(CLI::App& command, InfoOptions& options);

/// Tells the layer's points, extent, coordinate system, fields, and its animals with the counts of their fixes.
int run_info(const InfoOptions& options, Console& console);

}  // namespace wxl::cli
