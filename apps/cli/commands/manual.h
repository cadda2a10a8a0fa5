#pragma once
#include "apps/cli/console.h"

#include <string>

namespace CLI {
class App;
}

namespace wxl::cli {

/// wxl man: prints the manual page of the program or of one command, writes all pages into a folder, or prints
/// the reference of all options. Not shown in
/// the help: it serves those who package the program.
struct ManOptions {
    const CLI::App* Program = nullptr;
    std::string Command;
    std::string Folder;
    bool Markdown = false;
};

void register_man(CLI::App& command, ManOptions& options);
int run_man(const ManOptions& options, Console& console);

/// wxl completion bash: prints a completion script. Not shown in the help.
struct CompletionOptions {
    const CLI::App* Program = nullptr;
    std::string Shell;
};

void register_completion(CLI::App& command, CompletionOptions& options);
int run_completion(const CompletionOptions& options, Console& console);

}  // namespace wxl::cli
