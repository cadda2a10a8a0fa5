#include "apps/cli/parse_problem.h"

#include "apps/cli/manual.h"

#include <algorithm>
#include <fmt/format.h>
#include <fmt/ranges.h>
#include <numeric>
#include <optional>
#include <string_view>
#include <vector>

namespace wxl::cli {

namespace {

using Names = std::vector<std::string>;

/// How many letters must be put in, taken out or exchanged to make one text of the other (Levenshtein 1966).
std::size_t edit_distance(std::string_view a, std::string_view b) {
    std::vector<std::size_t> row(b.size() + 1);
    std::iota(row.begin(), row.end(), std::size_t{0});
    for (std::size_t i = 0; i < a.size(); ++i) {
        std::size_t diagonal = row[0]++;
        for (std::size_t j = 0; j < b.size(); ++j) {
            const std::size_t exchanged = diagonal + (a[i] == b[j] ? 0 : 1);
            diagonal = row[j + 1];
            row[j + 1] = std::min({exchanged, row[j] + 1, diagonal + 1});
        }
    }
    return row.back();
}

/// The name that `given` is a misspelling of: at most one letter in three is wrong, or the end is missing.
std::optional<std::string> nearest(const Names& names, std::string_view given) {
    std::optional<std::string> best;
    std::size_t least = given.size() == 1 ? 1 : std::max<std::size_t>(given.size() / 3 + 1, 2);
    for (const std::string& name : names) {
        const bool isCut = given.size() >= 3 && name.starts_with(given);
        const std::size_t distance = isCut ? 1 : edit_distance(name, given);
        if (distance >= least) continue;
        best = name;
        least = distance;
    }
    return best;
}

/// The last command of the line, or the program itself.
const CLI::App& command_of(const CLI::App& program) {
    const CLI::App* command = &program;
    while (!command->get_subcommands().empty()) command = command->get_subcommands().front();
    return *command;
}

Names options_of(const CLI::App& command) {
    Names names;
    for (const CLI::App* app = &command; app != nullptr; app = app->get_parent())
        for (const CLI::Option* option : app->get_options())
            for (const std::string& name : option->get_lnames()) names.push_back(name);
    return names;
}

Names commands_of(const CLI::App& command) {
    Names names;
    for (const CLI::App* below : command.get_subcommands([](const CLI::App*) { return true; }))
        names.push_back(below->get_name());
    return names;
}

std::string spoken_name(const CLI::App& command) {
    const std::string path = command_path(command);
    return path.empty() ? "wxl" : "wxl " + path;
}

/// "--cellsize" of "--cellsize=100"; "" for what is no option.
std::string option_name(const std::string& argument) {
    return argument.size() > 1 && argument.front() == '-' ? argument.substr(0, argument.find('=')) : "";
}

std::string no_option(const CLI::App& command, const std::string& given) {
    const std::string bare = given.substr(std::min(given.find_first_not_of('-'), given.size()));
    const Names names = options_of(command);
    if (given.starts_with("--") && std::find(names.begin(), names.end(), bare) != names.end())
        return fmt::format("{} stands before the command it belongs to; give it after {}", given, spoken_name(command));
    const auto name = nearest(names, bare);
    return fmt::format("there is no option {}{}", given, name ? fmt::format("; is it --{}?", *name) : "");
}

std::string no_command(const CLI::App& command, const std::string& given) {
    const auto name = nearest(commands_of(command), given);
    return fmt::format("there is no command \"{}\"{}", given, name ? fmt::format("; is it {}?", *name) : "");
}

/// The parser's words for a value that is none of its option's, and for one that is not there, as a sentence.
std::string plain_refusal(const CLI::App& command, const CLI::ParseError& refusal) {
    std::string words = refusal.what();
    const std::size_t name = words.find(": ") + 2;
    const std::size_t equals = words.find(" = ");
    if (dynamic_cast<const CLI::ConversionError*>(&refusal) != nullptr && equals != std::string::npos &&
        name < equals) {
        const std::string given = words.substr(name, equals - name);
        const CLI::Option* option = command.get_option_no_throw(given);
        if (option != nullptr && option->get_items_expected_max() == 0) return given + " takes no value";
        return fmt::format("{}: \"{}\" is no number", given, words.substr(equals + 3));
    }
    const std::size_t colon = words.find(": 1 required ");
    constexpr std::string_view kMissing = " missing";
    if (colon == std::string::npos || !words.ends_with(kMissing)) return words;
    const std::size_t kind = colon + std::string_view(": 1 required ").size();
    return fmt::format("{} needs a value: {}", words.substr(0, colon),
                       words.substr(kind, words.size() - kMissing.size() - kind));
}

std::string problem_of(const CLI::App& program, const CLI::App& command, const CLI::ParseError& refusal) {
    const Names unknown = program.remaining(true);
    const bool hasCommands = !commands_of(command).empty();
    if (hasCommands && !unknown.empty() && option_name(unknown.front()).empty())
        return no_command(command, unknown.front());
    for (const std::string& argument : unknown)
        if (const std::string option = option_name(argument); !option.empty()) return no_option(command, option);
    if (!unknown.empty()) return fmt::format("\"{}\" is one argument too many", unknown.front());
    if (hasCommands) return fmt::format("name a command of it: {}", fmt::join(commands_of(command), ", "));
    return plain_refusal(command, refusal);
}

}  // namespace

std::string parse_problem(const CLI::App& program, const CLI::ParseError& refusal) {
    const CLI::App& command = command_of(program);
    const std::string problem = problem_of(program, command, refusal);
    return fmt::format("{}{} {} --help tells more", problem, problem.ends_with('?') ? "" : ";", spoken_name(command));
}

}  // namespace wxl::cli
