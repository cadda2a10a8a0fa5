#include "apps/cli/option_checks.h"

#include "apps/cli/console.h"
#include "platform/text.h"

#include <algorithm>
#include <fmt/format.h>
#include <optional>

namespace wxl::cli {

namespace {

/// The name among `names` that is `text` but for the case, or nothing.
const std::string* find_any_case(const std::vector<std::string>& names, std::string_view text) {
    const auto found = std::find_if(names.begin(), names.end(),
                                    [&](const std::string& name) { return platform::EqualNoCase(name, text); });
    return found == names.end() ? nullptr : &*found;
}

/// "href, lscv or bcv"
std::string enumeration(const std::vector<std::string>& names) {
    std::string text;
    for (std::size_t i = 0; i < names.size(); ++i)
        text += (i == 0 ? "" : i + 1 == names.size() ? " or " : ", ") + names[i];
    return text;
}

/// Up to nine digits.
std::optional<int> whole_number(const std::string& text) {
    constexpr std::size_t kMostDigits = 9;
    const bool digits = !text.empty() && text.find_first_not_of("0123456789") == std::string::npos;
    return digits && text.size() <= kMostDigits ? std::optional(std::stoi(text)) : std::nullopt;
}

bool names_path(const CLI::Option& option) {
    const std::string type = option.get_type_name();
    return option.get_positional() || type == "DIR" || type == "FILE" || type.starts_with("OUT");
}

}  // namespace

CLI::Validator one_of(std::vector<std::string> names) {
    return {[names = std::move(names)](std::string& text) {
                const std::string* name = find_any_case(names, text);
                if (!name) return fmt::format("\"{}\" is not {}", text, enumeration(names));
                text = *name;
                return std::string();
            },
            ""};
}

CLI::Validator any_case(std::vector<std::string> keywords) {
    return {[keywords = std::move(keywords)](std::string& text) {
                const std::string given = text.substr(0, text.find(':'));
                if (const std::string* keyword = find_any_case(keywords, given))
                    text.replace(0, given.size(), *keyword);
                return std::string();
            },
            ""};
}

CLI::Validator whole_number_above_zero() {
    return {[](std::string& text) {
                return whole_number(text).value_or(0) > 0 ? std::string()
                                                          : fmt::format("\"{}\" is not a whole number above 0", text);
            },
            ""};
}

CLI::Validator whole_number_between(int low, int high) {
    return {[low, high](std::string& text) {
                const auto number = whole_number(text);
                return number && *number >= low && *number <= high
                           ? std::string()
                           : fmt::format("\"{}\" is not a whole number from {} to {}", text, low, high);
            },
            ""};
}

CLI::Validator number_between(double low, double high) {
    return {[low, high](std::string& text) {
                const bool good = platform::IsNumeric(text) && platform::NumberFromText(text) >= low &&
                                  platform::NumberFromText(text) <= high;
                return good ? std::string() : fmt::format("\"{}\" is not a number from {} to {}", text, low, high);
            },
            ""};
}

void refuse_empty_paths(const CLI::App& program) {
    for (const CLI::Option* option : program.get_options())
        for (const std::string& value : option->results())
            if (value.empty() && names_path(*option)) throw WrongCall(option->get_name() + " is empty");
    for (const CLI::App* command : program.get_subcommands()) refuse_empty_paths(*command);
}

}  // namespace wxl::cli
