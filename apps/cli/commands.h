#pragma once
#include "adapters/disk/write_fence.h"
#include "apps/cli/console.h"

#include <functional>
#include <optional>
#include <vector>

namespace CLI {
class App;
}

namespace wxl::cli {

/// A command of the program: its part of the command line and its work.
struct Command {
    CLI::App* Parser;  ///< owned by the program's parser
    std::function<int(Console&)>
        Run;  ///< the work, after parsing; returns the exit code, may throw RuntimeError, WrongCall

    /// Where the work may write; nothing where it cannot be bound.
    std::function<std::optional<files::WritablePlaces>()> Fence;
};

/// Makes every command known to the program's parser, in the order of the help.
std::vector<Command> register_commands(CLI::App& program);

}  // namespace wxl::cli
