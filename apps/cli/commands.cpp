#include "apps/cli/commands.h"

#include "apps/cli/commands/bandwidth.h"
#include "apps/cli/commands/import.h"
#include "apps/cli/commands/info.h"
#include "apps/cli/commands/isopleths.h"
#include "apps/cli/commands/kde.h"
#include "apps/cli/commands/manual.h"
#include "apps/cli/commands/obs_fields.h"
#include "apps/cli/commands/remove_duplicates.h"
#include "apps/cli/commands/stats.h"
#include "apps/cli/commands/track.h"

#include <CLI/CLI.hpp>
#include <memory>
#include <string>

namespace wxl::cli {

namespace {

/// Adds the command `name`: `declare` gives its parser the options, `run` is its work.
template <class Options>
void add(std::vector<Command>& commands, CLI::App& program, const std::string& name, const std::string& summary,
         void (*declare)(CLI::App&, Options&), int (*run)(const Options&, Console&)) {
    CLI::App* parser = program.add_subcommand(name, summary);
    const auto options = std::make_shared<Options>();
    declare(*parser, *options);
    commands.push_back({parser, [options, run](Console& console) { return run(*options, console); }});
}

}  // namespace

std::vector<Command> register_commands(CLI::App& program) {
    std::vector<Command> commands;
    add(commands, program, "import", "Turn a tracking CSV into a point shapefile", register_import, run_import);
    add(commands, program, "info", "Tell what a point layer holds", register_info, run_info);
    add(commands, program, "kde", "Estimate home ranges: density rasters, isopleths and a report", register_kde,
        run_kde);
    add(commands, program, "bandwidth", "Find the bandwidth of every animal", register_bandwidth, run_bandwidth);
    add(commands, program, "stats", "Tell how independent and how spread every animal's fixes are", register_stats,
        run_stats);
    add(commands, program, "isopleths", "Draw isopleths of a density raster", register_isopleths, run_isopleths);
    add(commands, program, "obs-fields", "Add times, distances and speeds between fixes to a layer",
        register_obs_fields, run_obs_fields);
    add(commands, program, "remove-duplicates", "Delete fixes of the same time or place from a layer",
        register_remove_duplicates, run_remove_duplicates);
    add(commands, program, "track", "Write the legs of a track as lines", register_track, run_track);
    add(commands, program, "man", "Print a manual page", register_man, run_man);
    add(commands, program, "completion", "Print a completion script", register_completion, run_completion);
    return commands;
}

}  // namespace wxl::cli
