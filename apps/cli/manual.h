#pragma once
#include <string>
#include <vector>

namespace CLI {
class App;
}

namespace wxl::cli {

/// The commands that help shows, each followed by the commands below it ("batch", "batch run", ...).
std::vector<const CLI::App*> all_commands(const CLI::App& program);

/// The command as it is typed after the program's name, words joined by `separator`: "import", "batch run"; empty for
/// the program itself.
std::string command_path(const CLI::App& command, char separator = ' ');

/// The manual page (man(7) macros) of a command, or of the program itself, written from the same declarations as its
/// --help: summary, synopsis, footer as description (indented lines are shown as they stand), options.
std::string manual_page(const CLI::App& program, const CLI::App& command);

/// File name of the page: "wxl.1", "wxl-import.1", "wxl-batch-run.1".
std::string manual_file_name(const CLI::App& program, const CLI::App& command);

/// All commands and options as one page of Markdown, from the same declarations.
std::string options_reference(const CLI::App& program);

/// A bash completion script for the program: commands, their long options, else file names.
std::string bash_completion(const CLI::App& program);

}  // namespace wxl::cli
