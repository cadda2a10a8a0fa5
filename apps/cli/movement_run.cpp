#include "apps/cli/movement_run.h"

#include "apps/cli/input_layer.h"
#include "kde_tool/animal_fixes.h"

#include <algorithm>
#include <CLI/CLI.hpp>
#include <fmt/format.h>
#include <limits>
#include <utility>
#include <vector>

namespace wxl::cli {

namespace {

/// The text between two marks, with those inside it doubled.
std::string quoted(const std::string& text, char mark) {
    std::string result(1, mark);
    for (const char c : text) result += c == mark ? std::string(2, mark) : std::string(1, c);
    return result + mark;
}

bool is_plain_name(const std::string& name) {
    return !name.empty() && (name.front() < '0' || name.front() > '9') &&
           name.find_first_not_of("ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789_") ==
               std::string::npos;
}

/// An argument as typed into a shell.
std::string in_double_quotes(const std::string& argument) {
    std::string result = "\"";
    for (const char c : argument) {
        if (c == '"' || c == '\\' || c == '$' || c == '`') result += '\\';
        result += c;
    }
    return result + "\"";
}

std::string condition_of(const std::string& field, const platform::FieldValue& value) {
    const std::string text = platform::ValueText(value);
    const bool isText = std::holds_alternative<std::string>(value);
    return (is_plain_name(field) ? field : quoted(field, '"')) + " = " + (isText ? quoted(text, '\'') : text);
}

}  // namespace

void add_large_option(CLI::App& command, bool& large) {
    command.add_flag("--large", large, "Lift the limit of 32767 rows");
}

std::string large_advice(files::FilesFeatureLayer& layer, bool large) {
    const std::vector<std::int64_t> oids = layer.Features().OIDs();
    const bool tooLarge = !oids.empty() && oids.back() >= std::numeric_limits<std::int16_t>::max();
    return tooLarge && !large ? "; --large lifts the limit of 32767 rows" : "";
}

void tell_mixed_animals(files::FilesFeatureLayer& layer, std::string_view remedy, Console& console) {
    const std::string field = guess_id_field(layer.FeatureClass()->Table().Fields());
    if (field.empty()) return;
    const auto animals = kde_tool::GroupFixes(layer, field, true).Animals;
    const bool areTracks =
        std::any_of(animals.begin(), animals.end(), [](const auto& animal) { return animal.Fixes.size() > 1; });
    if (animals.size() < 2 || !areTracks) return;
    const std::string condition = in_double_quotes(condition_of(field, animals.front().Id));
    console.Problem(fmt::format("the fixes of {} animals (field {}) are taken as one track; {}", animals.size(), field,
                                fmt::format(fmt::runtime(remedy), condition)));
}

PleaseWaitBar::PleaseWaitBar(platform::IHost& host, Console& console, std::string what)
    : m_host(host), m_console(console), m_what(std::move(what)) {}

void PleaseWaitBar::ShowPleaseWait(movement::FrmPW& form) {
    m_form = &form;
    m_wasShown = true;
}

void PleaseWaitBar::HidePleaseWait(movement::FrmPW&) {
    m_form = nullptr;
    m_console.EndProgress();
}

void PleaseWaitBar::Yield() {
    m_host.Yield();
    if (!m_form) return;
    const platform::ProgressBar& bar = m_form->PBar;
    m_console.Progress((bar.Value - bar.Minimum) / (bar.Maximum - bar.Minimum), m_what);
}

}  // namespace wxl::cli
