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
    return &program == &command ? program.get_name() : program.get_name() + "-" + command_path(command, '-');
}

std::string spoken_name(const CLI::App& program, const CLI::App& command) {
    return &program == &command ? program.get_name() : program.get_name() + " " + command_path(command);
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

/// Text for a cell of a Markdown table.
std::string markdown_cell(std::string_view text) {
    std::string escaped;
    for (const char c : text) {
        if (c == '|') escaped += '\\';
        escaped += c == '\n' ? ' ' : c;
    }
    return escaped;
}

/// Text with its indented lines as Markdown shows them as they stand.
std::string markdown_paragraphs(const std::string& text) {
    std::string page;
    std::istringstream lines(text);
    for (std::string line; std::getline(lines, line);) page += (line.rfind("  ", 0) == 0 ? "  " + line : line) + "\n";
    return page;
}

std::string value_of(const CLI::Option& option) {
    return option.get_expected_max() == 0 ? "" : option.get_type_name();
}

std::string synopsis(const CLI::App& program, const CLI::App& command) {
    std::string line = ".B " + roff(spoken_name(program, command)) + "\n";
    if (!commands_of(command).empty()) return line + ".I COMMAND\n[\\fIOPTION\\fR]...\n";
    for (const CLI::Option* option : options_of(command, true))
        line += ".I " + roff(option->get_name(true) + (option->get_expected_max() > 1 ? "..." : "")) + "\n";
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

std::string option_rows(const std::vector<const CLI::Option*>& options) {
    std::string rows;
    for (const CLI::Option* option : options) {
        const std::string value = option->get_positional() ? "" : value_of(*option);
        const std::string usual = option->get_default_str();
        rows += fmt::format("| `{}{}` | {}{} |\n",
                            markdown_cell(option->get_name(option->get_positional(), !option->get_positional())),
                            value.empty() ? "" : " " + markdown_cell(value), markdown_cell(option->get_description()),
                            usual.empty() ? "" : fmt::format(" (default: {})", markdown_cell(usual)));
    }
    return rows;
}

std::string options_table(const CLI::App& command) {
    return "| option | what it does |\n|---|---|\n" + option_rows(options_of(command, true)) +
           option_rows(options_of(command, false));
}

std::string command_entries(const CLI::App& program, const CLI::App& above) {
    std::string entries;
    for (const CLI::App* command : commands_of(above))
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

void append_commands(const CLI::App& above, std::vector<const CLI::App*>& commands) {
    for (const CLI::App* command : commands_of(above)) {
        commands.push_back(command);
        append_commands(*command, commands);
    }
}

}  // namespace

std::vector<const CLI::App*> all_commands(const CLI::App& program) {
    std::vector<const CLI::App*> commands;
    append_commands(program, commands);
    return commands;
}

std::string command_path(const CLI::App& command, char separator) {
    const CLI::App* parent = command.get_parent();
    if (parent == nullptr) return "";
    const std::string above = command_path(*parent, separator);
    return above.empty() ? command.get_name() : above + separator + command.get_name();
}

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
    if (!commands_of(command).empty()) page += ".SH COMMANDS\n" + command_entries(program, command);
    page += ".SH OPTIONS\n";
    if (&program != &command) page += option_entries(options_of(command, true));
    page += option_entries(options_of(command, false));
    if (&program != &command) page += option_entries({program.get_option("--quiet")});
    page += std::string(".SH EXIT STATUS\n") + kExitStatus;
    return page + ".SH SEE ALSO\n" + see_also(program, command);
}

std::string options_reference(const CLI::App& program) {
    std::string page = fmt::format(
        "# Commands and options\n\nEvery command of `{0}` with every option, as `{0} COMMAND --help` prints them. "
        "Options "
        "of all commands:\n\n{1}",
        program.get_name(), options_table(program));
    for (const CLI::App* command : all_commands(program)) {
        page += fmt::format("\n## {}\n\n{}.\n", spoken_name(program, *command), command->get_description());
        if (!command->get_footer().empty()) page += "\n" + markdown_paragraphs(command->get_footer());
        page += "\n" + options_table(*command);
    }
    return page;
}

std::string bash_completion(const CLI::App& program) {
    const auto words_of = [](const CLI::App& command) {
        std::vector<std::string> words;
        for (const CLI::App* below : commands_of(command)) words.push_back(below->get_name());
        for (const CLI::Option* option : options_of(command, false))
            for (const std::string& name : option->get_lnames()) words.push_back("--" + name);
        return fmt::format("{}", fmt::join(words, " "));
    };
    std::vector<std::string> known;
    std::string cases;
    for (const CLI::App* command : all_commands(program)) {
        known.push_back('"' + command_path(*command) + '"');
        cases += fmt::format("        \"{}\") words=\"{} --quiet\"{} ;;\n", command_path(*command), words_of(*command),
                             commands_of(*command).empty() ? "" : " first=yes");
    }
    return fmt::format(
        "# bash completion for wxl\n"
        "_wxl() {{\n"
        "    local word=${{COMP_WORDS[COMP_CWORD]}} words=\"\" command=\"\" first=\"\" next i\n"
        "    for ((i = 1; i < COMP_CWORD; i++)); do\n"
        "        next=\"${{command:+$command }}${{COMP_WORDS[i]}}\"\n"
        "        case $next in\n"
        "            {0}) command=$next ;;\n"
        "        esac\n"
        "    done\n"
        "    case $command in\n"
        "        \"\") words=\"{1}\" first=yes ;;\n"
        "{2}"
        "    esac\n"
        "    COMPREPLY=()\n"
        "    if [[ -n $first || $word == -* ]]; then COMPREPLY=($(compgen -W \"$words\" -- \"$word\")); fi\n"
        "}}\n"
        "complete -o default -F _wxl wxl\n",
        fmt::join(known, "|"), words_of(program), cases);
}

}  // namespace wxl::cli
