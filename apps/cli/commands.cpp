#include "apps/cli/commands.h"

#include "apps/cli/writable_places.h"

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
    commands.push_back({parser, [options, run](Console& console) { return run(*options, console); },
                        [options] { return fence_of(*options); }});
}

void add_batch(std::vector<Command>& commands, CLI::App& program) {
    CLI::App& batch = *program.add_subcommand("batch", "Estimate home ranges in many processes, here or on a cluster");
    batch.require_subcommand(1);
    batch.footer(
        "The work of wxl kde cut into tasks that run side by side: plan, run every task, merge. The\n"
        "results are those of wxl kde, whatever the tasks. wxl kde --jobs N does all three at once.\n"
        "plan-akde plans the work of wxl akde.\n"
        "\n"
        "Example:\n"
        "\n"
        "  wxl batch plan wolves.shp --id-field animal --out study --cell-size 100\n"
        "  wxl batch submit study --dry-run\n"
        "  wxl batch status study");
    add(commands, batch, "plan", "Read the layer and cut the work into tasks", register_batch_plan, run_batch_plan);
    add(commands, batch, "plan-akde", "Do so for ranges of fixes that depend on each other", register_batch_plan_akde,
        run_batch_plan_akde);
    add(commands, batch, "run", "Compute one task", register_batch_run, run_batch_run);
    add(commands, batch, "merge", "Write the report when all tasks are done", register_batch_merge, run_batch_merge);
    add(commands, batch, "status", "List the tasks and how they stand", register_batch_status, run_batch_status);
    add(commands, batch, "submit", "Send the tasks to Slurm, or compute them here", register_batch_submit,
        run_batch_submit);
    add(commands, batch, "overlap", "Compare the ranges of a folder of rasters in tasks", register_batch_overlap,
        run_batch_overlap);
}

}  // namespace

std::vector<Command> register_commands(CLI::App& program) {
    std::vector<Command> commands;
    add(commands, program, "import", "Turn tracking files into a layer of points", register_import, run_import);
    add(commands, program, "info", "Tell what a point layer holds", register_info, run_info);
    add(commands, program, "kde", "Estimate home ranges: density rasters, isopleths and a report", register_kde,
        run_kde);
    add_batch(commands, program);
    add(commands, program, "bandwidth", "Find the bandwidth of every animal", register_bandwidth, run_bandwidth);
    add(commands, program, "stats", "Tell how independent and how spread every animal's fixes are", register_stats,
        run_stats);
    add(commands, program, "akde", "Estimate home ranges of fixes that depend on each other, with limits",
        register_akde, run_akde);
    add(commands, program, "models", "Tell how fixes depend on each other: movement models and effective sample size",
        register_models, run_models);
    add(commands, program, "overlap", "Compare home ranges: indices of overlap for all pairs", register_overlap,
        run_overlap);
    add(commands, program, "mcp", "Draw minimum convex polygons", register_mcp, run_mcp);
    add(commands, program, "curve", "Tell how areas grow with the number of fixes", register_curve, run_curve);
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
