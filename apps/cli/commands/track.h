#pragma once
#include "apps/cli/console_messages.h"
#include "apps/cli/input_layer.h"

namespace wxl::cli {

/// wxl track: the legs between successive fixes as a line shapefile.
struct TrackOptions {
    InputOptions Points;
    std::string Output;
    std::string Where;  ///< SQL condition of the track's fixes; empty: all
    bool Overwrite = false;
    bool Large = false;
    Answers Questions;
};

void register_track(CLI::App& command, TrackOptions& options);

/// Clicks the command "Display Travel", steps through the player to its end, and saves the path. Nothing is saved when
/// a step reports a fault.
int run_track(const TrackOptions& options, Console& console);

}  // namespace wxl::cli
