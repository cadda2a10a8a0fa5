#include "analysis/animal_fixes.h"

#include "analysis/fix_times.h"
#include "analysis/naming_ids.h"
#include "platform/runtime_error.h"
#include "utilities/animal_names.h"

#include <algorithm>
#include <cmath>
#include <functional>
#include <optional>
#include <unordered_map>
#include <utility>

namespace wxl::analysis {

using platform::FieldValue;

namespace {

/// Numbers beyond it are no seconds: 30 million years.
constexpr double kFarthestTime = 1e15;

/// 7 and 7.0 are one animal, so that both hash as a number.
struct IdHash {
    std::size_t operator()(const FieldValue& id) const {
        if (const auto* text = std::get_if<std::string>(&id)) return std::hash<std::string>{}(*text);
        return platform::IsMissing(id) ? 0 : std::hash<double>{}(platform::ValueNumber(id));
    }
};

struct IdEqual {
    bool operator()(const FieldValue& a, const FieldValue& b) const {
        return !platform::ValueLess(a, b) && !platform::ValueLess(b, a);
    }
};

bool has_location(const platform::Geometry& shape) {
    return shape.Type == platform::ShapeType::kPoint && std::isfinite(shape.Location.X) &&
           std::isfinite(shape.Location.Y);
}

/// Collects fixes under their animal's ID.
class Groups {
public:
    AnimalFixes& Of(FieldValue id) {
        if (!m_animals.empty() && IdEqual{}(m_animals[m_last].Id, id)) return m_animals[m_last];
        const auto [entry, isNew] = m_places.try_emplace(std::move(id), m_animals.size());
        if (isNew) m_animals.push_back({.Id = entry->first, .NamingId = {}, .Fixes = {}});
        m_last = entry->second;
        return m_animals[m_last];
    }

    /// Whole seconds of the fixes of the animal that Of gave.
    std::vector<std::int64_t>& Times() {
        m_seconds.resize(m_animals.size());
        return m_seconds[m_last];
    }

    /// Time of the last fix of the animal that Of gave, to be replaced by that of the next.
    std::optional<double>& LastTime() {
        m_times.resize(m_animals.size());
        return m_times[m_last];
    }

    /// Errors of the positions of the animal that Of gave.
    PositionErrors& Errors() {
        m_errors.resize(m_animals.size());
        return m_errors[m_last];
    }

    std::vector<AnimalFixes> Sorted(const PositionErrorFields& errors) && {
        m_seconds.resize(m_animals.size());
        m_errors.resize(m_animals.size());
        for (std::size_t i = 0; i < m_animals.size(); ++i) {
            const std::size_t without = m_animals[i].Fixes.size() - m_seconds[i].size();
            m_animals[i].Times = tracking_times::facts_on_times(std::move(m_seconds[i]), without);
            m_animals[i].Error = errors.Median(std::move(m_errors[i]), m_animals[i].Fixes.size());
        }
        std::sort(m_animals.begin(), m_animals.end(),
                  [](const AnimalFixes& a, const AnimalFixes& b) { return platform::ValueLess(a.Id, b.Id); });
        return std::move(m_animals);
    }

private:
    std::vector<AnimalFixes> m_animals;
    std::vector<std::optional<double>> m_times;
    std::vector<std::vector<std::int64_t>> m_seconds;
    std::vector<PositionErrors> m_errors;
    std::unordered_map<FieldValue, std::size_t, IdHash, IdEqual> m_places;
    std::size_t m_last = 0;  ///< rows of one animal mostly follow one another
};

std::unique_ptr<platform::IFeatureCursor> points_of(platform::IFeatureLayer& layer, platform::IFeatureClass& points,
                                                    std::vector<std::string> fields, bool selectedOnly) {
    platform::Search search;
    search.Fields = std::move(fields);
    if (!selectedOnly) return points.Find(search);
    const auto selection = layer.Selection();
    if (!selection) platform::Raise(platform::error_number::kObjectNotSet);
    return selection->Find(search);
}

std::vector<std::string> fields_read(std::string_view idField, const FixTimes& times,
                                     const PositionErrorFields& errors) {
    std::vector<std::string> fields = errors.Names();
    fields.emplace(fields.begin(), idField);
    if (!times.Field().empty()) fields.push_back(times.Field());
    return fields;
}

void name_animals(GroupedFixes& groups) {
    std::vector<FieldValue> ids;
    for (const AnimalFixes& animal : groups.Animals) ids.push_back(animal.Id);
    const std::vector<std::string> names = naming_ids(ids, groups.TextIds);
    for (std::size_t i = 0; i < names.size(); ++i) groups.Animals[i].NamingId = names[i];
}

}  // namespace

bool IsTextId(platform::FieldType type) {
    return type == platform::FieldType::kText || type == platform::FieldType::kDate;
}

GroupedFixes GroupFixes(platform::IFeatureLayer& layer, std::string_view idField, bool selectedOnly) {
    const auto points = layer.FeatureClass();
    if (!points) platform::Raise(platform::error_number::kObjectNotSet);
    const int field = points->Table().FindField(idField);
    if (field < 0)
        platform::Raise(platform::error_number::kSubscript,
                        "The layer " + layer.Name() + " has no field " + std::string(idField) + ".");

    GroupedFixes result;
    const auto fields = points->Table().Fields();
    result.TextIds = IsTextId(fields.at(static_cast<std::size_t>(field)).Type);
    Groups groups;
    const FixTimes times(fields);
    const PositionErrorFields errors(fields);
    const auto cursor = points_of(layer, *points, fields_read(idField, times, errors), selectedOnly);
    while (const auto feature = cursor->NextFeature()) {
        const platform::Geometry shape = feature->Shape();
        const bool located = has_location(shape);
        if (!located) result.NullGeometry = true;
        FieldValue id = feature->Value(field);
        if (!utilities::names_an_animal(id)) {
            ++result.WithoutId;
            continue;
        }
        AnimalFixes& animal = groups.Of(std::move(id));
        if (!located) continue;
        animal.Fixes.push_back(shape.Location);
        errors.Take(*feature, groups.Errors());
        const std::optional<double> time = times.Of(*feature);
        if (!time) continue;
        std::vector<std::int64_t>& seconds = groups.Times();
        std::optional<double>& last = groups.LastTime();
        if (last && *time < *last) ++animal.StepsBack;
        last = time;
        if (std::abs(*time) < kFarthestTime) seconds.push_back(static_cast<std::int64_t>(std::floor(*time)));
    }
    result.Animals = std::move(groups).Sorted(errors);
    name_animals(result);
    return result;
}

}  // namespace wxl::analysis
