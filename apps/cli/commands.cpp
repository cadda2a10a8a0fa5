#include "apps/cli/commands.h"

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

std::vector<Command> register_commands([[maybe_unused]] CLI::App& program) {
    std::vector<Command> commands;
    return commands;
}

}  // namespace wxl::cli
