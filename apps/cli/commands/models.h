#pragma once
#include "apps/cli/console.h"
#include "apps/cli/movement_fit_options.h"
#include "apps/cli/timed_fixes.h"

namespace wxl::cli {

/// wxl models: the movement models of every animal, its effective sample size and a verdict.
struct ModelsOptions {
    TimedInputOptions Input;
    FitOptions Fit;
    std::string Csv;   ///< file to write; empty: none
    std::string Plot;  ///< folder to write variograms into; empty: none
    bool Overwrite = false;
    bool Json = false;
};

void register_models(CLI::App& command, ModelsOptions& options);
int run_models(const ModelsOptions& options, Console& console);

}  // namespace wxl::cli
