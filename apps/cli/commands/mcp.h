#pragma once
#include "apps/cli/animal_tracks.h"

#include <string>

namespace wxl::cli {

/// wxl mcp: minimum convex polygons of every animal.
struct McpOptions {
    AnimalFixOptions Tracks;
    std::string Percent = "100,95,50";
    std::string Csv;
    std::string Out;
    bool Json = false;
    bool Overwrite = false;
};

void register_mcp(CLI::App& command, McpOptions& options);
int run_mcp(const McpOptions& options, Console& console);

}  // namespace wxl::cli
