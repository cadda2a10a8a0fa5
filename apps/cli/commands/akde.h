#pragma once
#include "apps/cli/console.h"
#include "apps/cli/movement_fit_options.h"
#include "apps/cli/timed_fixes.h"

#include <cstddef>
#include <optional>
#include <string>

namespace wxl::cli {

/// wxl akde: home ranges of autocorrelated fixes.
struct AkdeOptions {
    TimedInputOptions Input;
    FitOptions Fit;
    std::string Out;
    std::string Prefix;
    std::optional<double> CellSize;  ///< map units; nothing: each animal's own
    double Scaling = 1e6;
    std::string Extent = "min";  ///< "min", "full", "full:BUFFER", "ref:RASTER"
    std::string RasterFormat = "GRID";
    std::string Isopleths = "95,50";
    std::string Weights = "uniform";  ///< "uniform", "optimal"
    bool Lines = false;
    bool Html = false;
    bool GeoPackage = false;
    std::size_t GroupBy = 0;
    std::size_t Jobs = 1;
    bool DryRun = false;
    bool Overwrite = false;
    bool Json = false;
};

/// What describes a run: input, output, model, isopleths.
void add_akde_options(CLI::App& command, AkdeOptions& options);

void register_akde(CLI::App& command, AkdeOptions& options);
int run_akde(const AkdeOptions& options, Console& console);

}  // namespace wxl::cli
