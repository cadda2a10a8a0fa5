#include "apps/cli/manual.h"

#include <cctype>
#include <CLI/CLI.hpp>
#include <fmt/format.h>
#include <fmt/ranges.h>
#include <sstream>
#include <utility>
#include <vector>

namespace wxl::cli {

namespace {

/// Commands and options of the empty group are not for users.
std::vector<const CLI::App*> commands_of(const CLI::App& program) {
    return program.get_subcommands([](const CLI::App* command) { return !command->get_group().empty(); });
}

std::vector<const CLI::Option*> options_of(const CLI::App& command, bool positional) {
    return command.get_options([positional](const CLI::Option* option) {
        return option->get_positional() == positional && !option->get_group().empty();
    });
}

std::string page_name(const CLI::App& program, const CLI::App& command) {
    return &program == &command ? program.get_name() : program.get_name() + "-" + command.get_name();
}

std::string spoken_name(const CLI::App& program, const CLI::App& command) {
    return &program == &command ? program.get_name() : program.get_name() + " " + command.get_name();
}

/// Text in which nothing is taken for a macro or an escape.
std::string roff(std::string_view text) {
    std::string escaped;
    for (const char c : text) {
        if (c == '\\') {
            escaped += "\\e";
        } else if (c == '-') {
            escaped += "\\-";
        } else {
            escaped += c;
        }
    }
    if (!escaped.empty() && (escaped[0] == '.' || escaped[0] == '\'')) escaped.insert(0, "\\&");
    return escaped;
}

/// Text line by line: indented lines as they stand, blank lines between paragraphs.
std::string roff_paragraphs(const std::string& text) {
    std::string page;
    bool literal = false;
    bool paragraphEnds = false;
    std::istringstream lines(text);
    for (std::string line; std::getline(lines, line);) {
        if (line.empty()) {
            paragraphEnds = true;
            continue;
        }
        const bool indented = line.rfind("  ", 0) == 0;
        if (literal && !indented) page += ".fi\n";
        if (std::exchange(paragraphEnds, false)) page += ".PP\n";
        if (indented && !literal) page += ".nf\n";
        literal = indented;
        page += roff(line) + "\n";
    }
    return page + (literal ? ".fi\n" : "");
}

std::string value_of(const CLI::Option& option) {
    return option.get_expected_max() == 0 ? "" : option.get_type_name();
}

std::string synopsis(const CLI::App& program, const CLI::App& command) {
    std::string line = ".B " + roff(spoken_name(program, command)) + "\n";
    if (&program == &command) return line + ".I COMMAND\n[\\fIOPTION\\fR]...\n";
    for (const CLI::Option* option : options_of(command, true)) line += ".I " + roff(option->get_name(true)) + "\n";
    return line + "[\\fIOPTION\\fR]...\n";
}

std::string option_entries(const std::vector<const CLI::Option*>& options) {
    std::string entries;
    for (const CLI::Option* option : options) {
        const std::string value = option->get_positional() ? "" : value_of(*option);
        entries += ".TP\n.B " + roff(option->get_name(option->get_positional(), !option->get_positional()));
        entries += value.empty() ? "\n" : " " + roff(value) + "\n";
        entries += roff(option->get_description());
        if (!option->get_default_str().empty()) entries += roff(" (default: " + option->get_default_str() + ")");
        entries += "\n";
    }
    return entries;
}

std::string command_entries(const CLI::App& program) {
    std::string entries;
    for (const CLI::App* command : commands_of(program))
        entries += ".TP\n.B " + roff(page_name(program, *command)) + "(1)\n" + roff(command->get_description()) + "\n";
    return entries;
}

std::string see_also(const CLI::App& program, const CLI::App& command) {
    std::vector<std::string> pages;
    if (&program != &command) pages.push_back(".BR " + roff(program.get_name()) + " (1)");
    for (const CLI::App* other : commands_of(program))
        if (other != &command) pages.push_back(".BR " + roff(page_name(program, *other)) + " (1)");
    return fmt::format("{}\n", fmt::join(pages, "\n"));
}

constexpr const char* kExitStatus =
    ".TP\n.B 0\nThe work was done, warnings included.\n"
    ".TP\n.B 1\nThe work failed; standard error says why.\n"
    ".TP\n.B 2\nThe command line makes no sense.\n";

}  // namespace

std::string manual_file_name(const CLI::App& program, const CLI::App& command) {
    return page_name(program, command) + ".1";
}

std::string manual_page(const CLI::App& program, const CLI::App& command) {
    std::string title = page_name(program, command);
    for (char& c : title) c = static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
    std::string page = fmt::format(".TH {} 1 \"\" \"{}\" \"User Commands\"\n", title, program.version());
    page += ".SH NAME\n" + roff(page_name(program, command)) + " \\- " + roff(command.get_description()) + "\n";
    page += ".SH SYNOPSIS\n" + synopsis(program, command);
    if (!command.get_footer().empty()) page += ".SH DESCRIPTION\n" + roff_paragraphs(command.get_footer());
    if (&program == &command) page += ".SH COMMANDS\n" + command_entries(program);
    page += ".SH OPTIONS\n";
    if (&program != &command) page += option_entries(options_of(command, true));
    page += option_entries(options_of(command, false));
    if (&program != &command) page += option_entries({program.get_option("--quiet")});
    page += std::string(".SH EXIT STATUS\n") + kExitStatus;
    return page + ".SH SEE ALSO\n" + see_also(program, command);
}

std::string bash_completion(const CLI::App& program) {
    const auto long_options = [](const CLI::App& command) {
        std::vector<std::string> names;
        for (const CLI::Option* option : options_of(command, false))
            for (const std::string& name : option->get_lnames()) names.push_back("--" + name);
        return fmt::format("{}", fmt::join(names, " "));
    };
    std::vector<std::string> commands;
    std::string cases;
    for (const CLI::App* command : commands_of(program)) {
        commands.push_back(command->get_name());
        cases += fmt::format("        {}) words=\"{} --quiet\" ;;\n", command->get_name(), long_options(*command));
    }
    return fmt::format(
        "# bash completion for wxl\n"
        "_wxl() {{\n"
        "    local word=${{COMP_WORDS[COMP_CWORD]}} words command i\n"
        "    for ((i = 1; i < COMP_CWORD; i++)); do\n"
        "        if [[ ${{COMP_WORDS[i]}} != -* ]]; then command=${{COMP_WORDS[i]}}; break; fi\n"
        "    done\n"
        "    case $command in\n"
        "        \"\") words=\"{0} {1}\" ;;\n"
        "{2}"
        "    esac\n"
        "    COMPREPLY=()\n"
        "    if [[ -z $command || $word == -* ]]; then COMPREPLY=($(compgen -W \"$words\" -- \"$word\")); fi\n"
        "}}\n"
        "complete -o default -F _wxl wxl\n",
        fmt::join(commands, " "), long_options(program), cases);
}

}  // namespace wxl::cli
