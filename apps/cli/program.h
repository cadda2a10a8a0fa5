#pragma once
#include "apps/cli/console.h"

#include <string>
#include <vector>

namespace wxl::cli {

/// Whether the process is bound to the places that the command's options name (files::raise_fence), until it ends: for
/// a process that does nothing else.
enum class Fencing { kNone, kFenced };

/// Runs the command named by `arguments` (UTF-8, without the program's own name) and returns the exit code. Never
/// throws.
int run_program(std::vector<std::string> arguments, Console& console, Fencing fencing = Fencing::kNone) noexcept;

}  // namespace wxl::cli
