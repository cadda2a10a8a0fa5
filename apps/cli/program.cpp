#include "apps/cli/program.h"

#include "adapters/gdal/grid_fence.h"
#include "adapters/gdal/source_rules.h"
#include "adapters/gdal/sqlite_fence.h"
#include "apps/cli/commands.h"
#include "apps/cli/option_checks.h"
#include "apps/cli/parse_problem.h"
#include "platform/runtime_error.h"

#include <algorithm>
#include <CLI/CLI.hpp>
#include <sstream>

namespace wxl::cli {

namespace {

constexpr const char* kFooter =
    "A tracking table becomes a point shapefile in metres by wxl import. Every other\n"
    "command reads any point layer in projected coordinates, given as FILE, or as\n"
    "FILE:LAYER where a file holds several layers.\n"
    "\n"
    "Results go to standard output, progress and messages to standard error. Nothing\n"
    "is overwritten unless --overwrite is given.\n"
    "\n"
    "Examples:\n"
    "\n"
    "  wxl import wolves.csv wolves.shp\n"
    "  wxl info wolves.shp";

void print_lines(const std::string& text, Console& console) {
    std::istringstream lines(text);
    for (std::string line; std::getline(lines, line);) console.Result(line);
}

/// What a parse that ends the program says: help and version are results, anything else is a wrong call.
int report_parse_end(const CLI::App& program, const CLI::ParseError& end, Console& console) {
    std::ostringstream out;
    std::ostringstream err;
    const int code = program.exit(end, out, err);
    if (code != 0) throw WrongCall(parse_problem(program, end));
    print_lines(out.str(), console);
    return exit_code::kDone;
}

int run_parsed(const std::vector<Command>& commands, Console& console, Fencing fencing) {
    const auto chosen =
        std::find_if(commands.begin(), commands.end(), [](const Command& command) { return command.Parser->parsed(); });
    if (chosen == commands.end()) throw WrongCall("name a command; wxl --help lists them");
    if (fencing == Fencing::kFenced)
        if (const auto places = chosen->Fence()) files::raise_fence(*places);
    return chosen->Run(console);
}

int run_guarded(std::vector<std::string> arguments, Console& console, Fencing fencing) {
    CLI::App program("Home ranges from animal tracking data: density rasters, isopleths, statistics", "wxl");
    bool quiet = false;
    program.set_version_flag("--version", "wxl " WXL_VERSION, "Print the program's version and exit");
    program.add_flag("-q,--quiet", quiet, "No progress and no notes on standard error; problems are still told");
    program.require_subcommand(0, 1);
    program.fallthrough();
    const std::vector<Command> commands = register_commands(program);
    program.footer(kFooter);  // after the commands, which would inherit it
    try {
        std::reverse(arguments.begin(), arguments.end());
        program.parse(std::move(arguments));
    } catch (const CLI::ParseError& end) {
        return report_parse_end(program, end, console);
    }
    console.SetQuiet(quiet);
    refuse_empty_paths(program);
    return run_parsed(commands, console, fencing);
}

}  // namespace

int run_program(std::vector<std::string> arguments, Console& console, Fencing fencing) noexcept {
    int code = exit_code::kFailed;
    try {
        const files::SqliteFence fence;
        files::SetDownloadsAllowed(false);
        files::SetGridsElsewhereAllowed(false);
        code = run_guarded(std::move(arguments), console, fencing);
    } catch (const WrongCall& wrong) {
        console.Fail(wrong.what());
        code = exit_code::kWrongCall;
    } catch (...) {
        console.Fail(platform::CurrentError().Description);
    }
    if (!console.Finish() && code == exit_code::kDone)
        code = console.Fail("the result could not be written to standard output");
    return code;
}

}  // namespace wxl::cli
