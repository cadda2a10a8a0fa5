#pragma once
#include "apps/cli/console.h"

#include <string>
#include <vector>

namespace wxl::cli {

/// Runs the command named by `arguments` (UTF-8, without the program's own name) and returns the exit code. Never
/// throws.
int run_program(std::vector<std::string> arguments, Console& console) noexcept;

}  // namespace wxl::cli
