#pragma once
#include "apps/cli/animal_tracks.h"
#include "apps/cli/commands/overlap_output.h"
#include "apps/cli/density_options.h"

#include <functional>
#include <string>
#include <vector>

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

/// What a folder of rasters is compared by: percentages, scaling factor, outputs.
void add_overlap_result_options(CLI::App& command, OverlapOptions& options);

/// The options that differ from the usual ones, as words of a command line.
std::vector<std::string> overlap_option_words(const OverlapOptions& options);

/// RuntimeError where what the options ask for cannot be written, or stands already and may not be replaced.
void check_overlap_outputs(const OverlapOptions& options);

/// The percentages, each once. WrongCall for what is none.
std::vector<double> overlap_percents(const OverlapOptions& options);

/// The scaling factor of the folder's rasters. WrongCall for what is none.
double overlap_scaling(const OverlapOptions& options);

/// The distributions of a folder of rasters; no pairs yet.
OverlapResult ranges_of_folder(const OverlapOptions& options, const std::vector<double>& percents, Console& console);

/// Makes the pairs of distributions.
using PairMaker = std::function<std::vector<comparison::PairOverlap>(const comparison::ComparedRanges& ranges,
                                                                     const comparison::OverlapSettings& settings)>;

/// Compares, writes and tells; the pairs are those of `pairs`.
int tell_overlap(const OverlapOptions& options, const PairMaker& pairs, Console& console);

void register_overlap(CLI::App& command, OverlapOptions& options);
int run_overlap(const OverlapOptions& options, Console& console);

}  // namespace wxl::cli
