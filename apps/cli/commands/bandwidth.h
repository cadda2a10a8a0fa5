#pragma once
#include "apps/cli/input_layer.h"

namespace wxl::cli {

/// wxl bandwidth: the bandwidth of every animal, without a density.
struct BandwidthOptions {
    InputOptions Points;
    std::string IdField;
    std::string Method;  ///< href, lscv or bcv
    bool Rescale = false;
    std::string Profile;  ///< CSV of the scores to write; empty: none
    std::string Plot;     ///< SVG picture of the scores to write; empty: none
    bool Overwrite = false;
    bool Json = false;
};

void register_bandwidth(CLI::App& command, BandwidthOptions& options);

/// Fails only when no animal has a bandwidth; one without is told on standard error.
int run_bandwidth(const BandwidthOptions& options, Console& console);

}  // namespace wxl::cli
