#pragma once
#include "apps/cli/console_messages.h"
#include "apps/cli/input_layer.h"

namespace wxl::cli {

/// wxl obs-fields: times, distances and speeds between observations as fields of the layer.
struct ObsFieldsOptions {
    InputOptions Points;
    bool Yes = false;
    std::string IdField;  ///< names the animal; empty: all rows are one track
    Answers Questions;
    bool Large = false;
};

void register_obs_fields(CLI::App& command, ObsFieldsOptions& options);

/// Clicks the command "Calculate Travel Times and Distances". Fails when it says anything but its question.
int run_obs_fields(const ObsFieldsOptions& options, Console& console);

}  // namespace wxl::cli
