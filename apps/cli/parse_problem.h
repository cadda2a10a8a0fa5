#pragma once
#include <CLI/CLI.hpp>
#include <string>

namespace wxl::cli {

/// Why a command line was refused, in one line with the help to look into. A misspelled option or command is told with
/// the name that comes nearest to it.
std::string parse_problem(const CLI::App& program, const CLI::ParseError& refusal);

}  // namespace wxl::cli
