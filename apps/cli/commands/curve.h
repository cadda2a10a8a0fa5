#pragma once
#include "apps/cli/animal_tracks.h"

#include <cstddef>
#include <cstdint>
#include <string>

namespace wxl::cli {

/// wxl curve: the area of home ranges against the number of fixes.
struct CurveOptions {
    AnimalFixOptions Tracks;
    std::string Of = "mcp:100";
    std::string Order = "time";
    std::size_t Replicates = 100;
    std::uint64_t Seed = 1;
    std::size_t First = 5;
    std::size_t Step = 0;
    double Tolerance = 5.0;  ///< percent
    std::string Bandwidth = "href";
    std::string CellSize;
    std::string Csv;
    std::string Plot;
    bool Json = false;
    bool Overwrite = false;
};

void register_curve(CLI::App& command, CurveOptions& options);
int run_curve(const CurveOptions& options, Console& console);

}  // namespace wxl::cli
