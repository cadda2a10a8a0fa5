#include "apps/cli/commands/manual.h"

#include "adapters/disk/disk_file_system.h"
#include "apps/cli/manual.h"
#include "apps/cli/option_checks.h"
#include "platform/file_system.h"

#include <CLI/CLI.hpp>
#include <filesystem>

namespace wxl::cli {

namespace {

void print(std::string text, Console& console) {
    if (text.ends_with('\n')) text.pop_back();
    console.Text(text);
}

/// A command by its name, with blanks or hyphens between its words; the program itself for none.
const CLI::App& find_command(const CLI::App& program, const std::string& name) {
    if (name.empty()) return program;
    for (const CLI::App* command : all_commands(program))
        if (command_path(*command) == name || command_path(*command, '-') == name) return *command;
    throw WrongCall("man: there is no command \"" + name + "\"");
}

void write_all(const CLI::App& program, const std::filesystem::path& folder) {
    files::DiskFileSystem disk;
    const auto write = [&](const CLI::App& command) {
        platform::PublishFile(disk, folder / manual_file_name(program, command), manual_page(program, command));
    };
    write(program);
    for (const CLI::App* command : all_commands(program)) write(*command);
}

}  // namespace

void register_man(CLI::App& command, ManOptions& options) {
    options.Program = command.get_parent();
    command.group("");
    command.add_option("COMMAND", options.Command, "Command whose page is printed; none: the program's page");
    command.add_option("--all", options.Folder, "Write the pages of all commands into this folder")
        ->type_name("FOLDER");
    command.add_flag("--markdown", options.Markdown, "All commands and options as one page of Markdown");
}

int run_man(const ManOptions& options, Console& console) {
    if (!options.Folder.empty()) {
        write_all(*options.Program, options.Folder);
    } else if (options.Markdown) {
        print(options_reference(*options.Program), console);
    } else {
        print(manual_page(*options.Program, find_command(*options.Program, options.Command)), console);
    }
    return exit_code::kDone;
}

void register_completion(CLI::App& command, CompletionOptions& options) {
    options.Program = command.get_parent();
    command.group("");
    command.add_option("SHELL", options.Shell, "bash")->required()->transform(one_of({"bash"}));
}

int run_completion(const CompletionOptions& options, Console& console) {
    print(bash_completion(*options.Program), console);
    return exit_code::kDone;
}

}  // namespace wxl::cli
