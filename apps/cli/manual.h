#pragma once
#include <string>

namespace CLI {
class App;
}

namespace wxl::cli {

/// The manual page (man(7) macros) of a command, or of the program itself, written from the same declarations as its
/// --help: summary, synopsis, footer as description (indented lines are shown as they stand), options.
std::string manual_page(const CLI::App& program, const CLI::App& command);

/// File name of the page: "wxl.1", "wxl-import.1".
std::string manual_file_name(const CLI::App& program, const CLI::App& command);

/// A bash completion script for the program: commands, their long options, else file names.
std::string bash_completion(const CLI::App& program);

}  // namespace wxl::cli
