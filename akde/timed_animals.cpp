#include "akde/timed_animals.h"

#include "analysis/animal_fixes.h"
#include "analysis/naming_ids.h"
#include "analysis/subfolders.h"
#include "platform/runtime_error.h"
#include "platform/text.h"
#include "tracking_times/timestamps.h"
#include "utilities/animal_names.h"

#include <algorithm>
#include <cmath>
#include <map>

namespace wxl::akde {

namespace {

using platform::FieldValue;

struct IdLess {
    bool operator()(const FieldValue& a, const FieldValue& b) const { return platform::ValueLess(a, b); }
};

/// What stands behind the seconds of a timestamp: "14:59:05.250" has 0.25.
double fraction_of(const std::string& text) {
    const std::size_t colon = text.find(':');
    if (colon == std::string::npos) return 0.0;
    const std::size_t point = text.find_first_of(".,", colon);
    if (point == std::string::npos) return 0.0;
    double fraction = 0.0;
    double place = 0.1;
    for (std::size_t k = point + 1; k < text.size() && text[k] >= '0' && text[k] <= '9'; ++k, place *= 0.1)
        fraction += place * (text[k] - '0');
    return fraction;
}

Moment of_number(double seconds) {
    const double whole = std::floor(seconds);
    return {static_cast<std::int64_t>(whole), seconds - whole};
}

bool has_place(const platform::Geometry& shape) {
    return shape.Type == platform::ShapeType::kPoint && std::isfinite(shape.Location.X) &&
           std::isfinite(shape.Location.Y);
}

int field_of(platform::ITable& table, const std::string& wanted, const std::string& source, const char* purpose) {
    const int field = table.FindField(platform::Trim(wanted));
    if (field >= 0) return field;
    std::string names;
    for (const platform::Field& each : table.Fields()) names += (names.empty() ? "" : ", ") + each.Name;
    platform::Raise(platform::error_number::kSubscript,
                    source + " has no field \"" + wanted + "\" for " + purpose + "; its fields are: " + names);
}

std::vector<std::string> names_of(const std::string& timeField) {
    const std::size_t comma = timeField.find(',');
    if (comma == std::string::npos) return {timeField};
    return {timeField.substr(0, comma), timeField.substr(comma + 1)};
}

/// The cells of one or two fields as one.
FieldValue time_cell(const platform::IFeature& feature, const std::vector<int>& fields) {
    if (fields.size() == 1) return feature.Value(fields[0]);
    FieldValue date = feature.Value(fields[0]);
    if (platform::IsMissing(date)) return date;
    return platform::ValueText(date) + " " + platform::ValueText(feature.Value(fields[1]));
}

void add_fix(TimedAnimal& animal, const platform::Point& place, const FieldValue& cell) {
    if (const auto moment = moment_of(cell)) {
        animal.Fixes.push_back(place);
        animal.Times.push_back(*moment);
        return;
    }
    ++animal.WithoutTime;
    if (animal.FirstUnreadable.empty()) animal.FirstUnreadable = platform::ValueText(cell);
}

void name_animals(TimedAnimals& animals, bool textIds) {
    std::vector<FieldValue> ids;
    for (const TimedAnimal& animal : animals.Animals) ids.push_back(animal.Id);
    const std::vector<std::string> names = analysis::naming_ids(ids, textIds);
    for (std::size_t i = 0; i < names.size(); ++i) animals.Animals[i].NamingId = names[i];
}

}  // namespace

std::optional<Moment> moment_of(const FieldValue& cell) {
    if (const auto* whole = std::get_if<std::int64_t>(&cell)) return Moment{*whole, 0.0};
    if (const auto* number = std::get_if<double>(&cell))
        return std::abs(*number) < 1e15 ? std::optional(of_number(*number)) : std::nullopt;
    const auto* text = std::get_if<std::string>(&cell);
    if (text == nullptr) return std::nullopt;
    const auto seconds = tracking_times::seconds_from_timestamp(*text);
    if (!seconds) return std::nullopt;
    return Moment{*seconds, fraction_of(*text)};
}

std::string moment_text(const Moment& moment, bool number) {
    if (number) return platform::NumberText(static_cast<double>(moment.Seconds) + moment.Fraction);
    return tracking_times::instant_text(moment.Seconds);
}

std::vector<double> TimedAnimal::Seconds() const {
    std::vector<double> seconds;
    if (Times.empty()) return seconds;
    const std::int64_t first = std::min_element(Times.begin(), Times.end(), [](const Moment& a, const Moment& b) {
                                   return a.Seconds < b.Seconds;
                               })->Seconds;
    for (const Moment& moment : Times) seconds.push_back(static_cast<double>(moment.Seconds - first) + moment.Fraction);
    return seconds;
}

void spread_over_subfolders(TimedAnimals& animals, std::size_t every) {
    const std::vector<std::string> names = analysis::subfolder_names(animals.Animals.size(), every);
    for (std::size_t i = 0; i < names.size(); ++i) animals.Animals[i].Subfolder = names[i];
}

std::vector<std::string> subfolders_of(const TimedAnimals& animals) {
    std::vector<std::string> folders;
    for (const TimedAnimal& animal : animals.Animals)
        if (!animal.Subfolder.empty() && (folders.empty() || folders.back() != animal.Subfolder))
            folders.push_back(animal.Subfolder);
    return folders;
}

TimedAnimals read_timed_animals(platform::IFeatureLayer& layer, const TimedFields& fields, bool selectedOnly,
                                const std::string& source) {
    const auto points = layer.FeatureClass();
    if (!points) platform::Raise(platform::error_number::kObjectNotSet);
    platform::ITable& table = points->Table();
    const auto columns = table.Fields();
    const auto column = [&](int field) -> const platform::Field& {
        return columns.at(static_cast<std::size_t>(field));
    };
    const int id = field_of(table, fields.Id, source, "the animal");
    std::vector<int> times;
    platform::Search search;
    search.Fields = {column(id).Name};
    for (const std::string& name : names_of(fields.Time)) {
        times.push_back(field_of(table, name, source, "the time of its fixes"));
        search.Fields.push_back(column(times.back()).Name);
    }

    TimedAnimals result;
    result.Reference = points->Reference();
    const platform::FieldType timeType = column(times.front()).Type;
    result.NumberTimes = timeType == platform::FieldType::kInteger || timeType == platform::FieldType::kDouble;
    std::map<FieldValue, TimedAnimal, IdLess> animals;
    const auto selection = selectedOnly ? layer.Selection() : nullptr;
    if (selectedOnly && !selection) platform::Raise(platform::error_number::kObjectNotSet);
    const auto cursor = selection ? selection->Find(search) : points->Find(search);
    while (const auto feature = cursor->NextFeature()) {
        const platform::Geometry shape = feature->Shape();
        FieldValue name = feature->Value(id);
        if (!utilities::names_an_animal(name)) {
            ++result.WithoutId;
            continue;
        }
        TimedAnimal& animal = animals[name];
        animal.Id = std::move(name);
        if (has_place(shape)) add_fix(animal, shape.Location, time_cell(*feature, times));
    }
    for (auto& [name, animal] : animals) result.Animals.push_back(std::move(animal));
    name_animals(result, analysis::IsTextId(column(id).Type));
    return result;
}

}  // namespace wxl::akde
