#include "apps/cli/movement_run.h"

#include "analysis/animal_fixes.h"
#include "apps/cli/input_layer.h"
#include "platform/runtime_error.h"
#include "platform/text.h"

#include <algorithm>
#include <CLI/CLI.hpp>
#include <fmt/format.h>
#include <limits>
#include <optional>
#include <set>
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

/// Fixes of several animals that a tool would take as one track.
struct MixedAnimals {
    std::string Field;
    std::size_t Count = 0;
    platform::FieldValue First;
};

/// Nothing where the chosen fixes are of one animal, or where no two of them share a name.
std::optional<MixedAnimals> mixed_animals(files::FilesFeatureLayer& layer) {
    const std::string field = guess_id_field(layer.FeatureClass()->Table().Fields());
    if (field.empty()) return std::nullopt;
    const auto animals = analysis::GroupFixes(layer, field, true).Animals;
    const bool areTracks =
        std::any_of(animals.begin(), animals.end(), [](const auto& animal) { return animal.Fixes.size() > 1; });
    if (animals.size() < 2 || !areTracks) return std::nullopt;
    return MixedAnimals{field, animals.size(), animals.front().Id};
}

std::string told(const MixedAnimals& mixed) {
    return fmt::format("the fixes of {} animals (field {}) are taken as one track", mixed.Count, mixed.Field);
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

void refuse_repeated_numbers(files::FilesFeatureLayer& layer, const std::string& input) {
    if (!layer.Features().NumbersRepeat()) return;
    platform::Raise(platform::error_number::kInvalidCall,
                    input +
                        ": several rows have one row number, so that the order of the fixes is not known; number "
                        "the rows anew (ogr2ogr -unsetFid OUT.gpkg INPUT)");
}

void add_animal_option(CLI::App& command, std::string& field) {
    command
        .add_option("--id-field", field,
                    "Field that names the animal: the fixes of each are a track of their own, all in one pass")
        ->type_name("FIELD");
}

void report_mixed_animals(files::FilesFeatureLayer& layer, std::string_view remedy, Console& console) {
    const auto mixed = mixed_animals(layer);
    if (!mixed) return;
    const std::string condition = in_double_quotes(condition_of(mixed->Field, mixed->First));
    console.Problem(told(*mixed) + "; " + fmt::format(fmt::runtime(remedy), condition));
}

bool may_mix_animals(files::FilesFeatureLayer& layer, ConsoleMessages& messages) {
    const auto mixed = mixed_animals(layer);
    if (!mixed) return true;
    const std::string text = fmt::format("{}; --id-field {} takes each animal by itself", told(*mixed), mixed->Field);
    try {
        return messages.Show({.Text = text,
                              .Choice = platform::Buttons::kYesNo,
                              .About = platform::Topic::kAnimals,
                              .Kind = platform::BoxKind::kQuestion}) == platform::Answer::kYes;
    } catch (const QuestionUnanswered&) {
        return false;
    }
}

void report_other_names(files::FilesFeatureLayer& layer, Console& console) {
    if (!platform::EqualNoCase(layer.Features().Path().extension().string(), ".shp")) return;
    std::set<std::filesystem::path> told;
    for (const std::filesystem::path& file : layer.Features().Files()) {
        std::error_code unknown;
        const std::uintmax_t names = std::filesystem::hard_link_count(file, unknown);
        if (!unknown && names > 1 && told.insert(file).second)
            console.Problem(
                fmt::format("{} has {} names (hard links): under the others it stays as it was", file.string(), names));
    }
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
