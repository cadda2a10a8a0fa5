#pragma once
#include "apps/cli/console_messages.h"
#include "apps/cli/input_layer.h"

namespace wxl::cli {

/// wxl remove-duplicates: fixes of the same time or place are deleted from the layer, all but one.
struct RemoveDuplicatesOptions {
    InputOptions Points;
    std::string By;       ///< time2 or xy
    std::string Where;    ///< SQL condition of the fixes that are compared; empty: all
    std::string IdField;  ///< names the animal; empty: all fixes are compared with each other
    Answers Questions;
    bool Large = false;
};

void register_remove_duplicates(CLI::App& command, RemoveDuplicatesOptions& options);

/// Clicks the command "Remove Time2 Field Duplicates" or "Remove X/Y Duplicates".
int run_remove_duplicates(const RemoveDuplicatesOptions& options, Console& console);

}  // namespace wxl::cli
