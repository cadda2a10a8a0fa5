#pragma once
#include "apps/cli/animal_tracks.h"
#include "apps/cli/density_options.h"

#include <string>

namespace wxl::cli {

/// wxl overlap: how far home ranges overlap.
struct OverlapOptions {
    AnimalFixOptions Tracks;
    DensityOptions Densities;
    std::string Percent = "95";
    std::string Index = "ba,vi,udoi,phr,hr,hd";
    std::string Scaling;
    std::string Csv;
    std::string Out;
    bool Conditional = false;
    bool Normalise = false;
    bool All = false;
    bool Json = false;
    bool Overwrite = false;
};

void register_overlap(CLI::App& command, OverlapOptions& options);
int run_overlap(const OverlapOptions& options, Console& console);

}  // namespace wxl::cli
