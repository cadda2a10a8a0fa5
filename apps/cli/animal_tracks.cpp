#include "apps/cli/animal_tracks.h"

#include "adapters/gdal/gdal_support.h"
#include "adapters/gdal/projection.h"
#include "analysis/animal_fixes.h"
#include "apps/cli/option_checks.h"
#include "platform/runtime_error.h"
#include "platform/text.h"
#include "tracking_times/split_keys.h"
#include "tracking_times/thinning.h"
#include "tracking_times/timestamps.h"

#include <algorithm>
#include <array>
#include <CLI/CLI.hpp>
#include <cmath>
#include <fmt/format.h>
#include <map>
#include <optional>
#include <utility>

namespace wxl::cli {

namespace {

namespace error_number = platform::error_number;
using platform::Point;

/// One row of the layer.
struct TimedFix {
    Point Place;
    std::optional<std::int64_t> Seconds;
    std::string Column;    ///< the cell of the column to split by
    std::int32_t Key = 0;  ///< of the calendar
};

struct TimedAnimal {
    platform::FieldValue Id;
    std::vector<TimedFix> Fixes;
};

/// What the options come to.
struct Choice {
    std::string IdField;
    std::string TimeField;    ///< empty: times are not read
    std::string SplitColumn;  ///< empty: not by a column
    std::optional<tracking_times::SplitRule> Calendar;
    std::optional<tracking_times::Thinning> Thinning;
};

/// Left out, by reason.
struct LeftOut {
    std::int64_t WithoutId = 0;
    std::int64_t WithoutPlace = 0;
    std::int64_t WithoutTime = 0;
    std::int64_t WithoutKey = 0;
};

std::string points_text(std::int64_t count) {
    return count == 1 ? "1 point" : fmt::format("{} points", count);
}

/// Names that people give to the time of a fix; the first is that of wxl import.
constexpr std::array<const char*, 8> kTimeFields = {"Time2",     "timestamp", "time",     "datetime",
                                                    "date_time", "date time", "gmt_time", "utc_time"};

bool needs_times(const AnimalFixOptions& options) {
    return !options.Every.empty() || tracking_times::split_by_from(options.SplitBy).has_value();
}

std::string time_field_of(const AnimalFixOptions& options, platform::ITable& table, Times times) {
    if (!options.Time.empty()) return find_id_field(table, options.Time, options.Points.Input);
    if (times == Times::kNone && !needs_times(options)) return "";
    std::string found = guess_time_field(table);
    if (found.empty() && (times == Times::kRequired || needs_times(options)))
        platform::Raise(error_number::kSubscript, options.Points.Input +
                                                      " has no field of the time that is known by its name: give it "
                                                      "by --time-field FIELD");
    return found;
}

std::int64_t duration_of(const std::string& option, const std::string& text) {
    const auto seconds = tracking_times::seconds_from_duration(text);
    if (!seconds) throw WrongCall(fmt::format("{}: \"{}\" is no time span like 4h, 30min or 1d12h", option, text));
    return *seconds;
}

std::optional<tracking_times::Thinning> thinning_of(const AnimalFixOptions& options) {
    if (options.Every.empty()) {
        if (!options.EveryTolerance.empty()) throw WrongCall("--every-tolerance needs --every");
        return std::nullopt;
    }
    tracking_times::Thinning rule{.Every = duration_of("--every", options.Every)};
    if (!options.EveryTolerance.empty()) rule.Tolerance = duration_of("--every-tolerance", options.EveryTolerance);
    if (rule.Tolerance >= rule.Every) throw WrongCall("--every-tolerance must be shorter than --every");
    return rule;
}

Choice choice_of(const AnimalFixOptions& options, files::FilesFeatureLayer& layer, Times times) {
    platform::ITable& table = layer.FeatureClass()->Table();
    Choice choice;
    choice.Thinning = thinning_of(options);
    choice.IdField = find_id_field(table, options.IdField, options.Points.Input);
    choice.TimeField = time_field_of(options, table, times);
    if (options.SplitBy.empty()) return choice;
    if (const auto by = tracking_times::split_by_from(options.SplitBy)) {
        choice.Calendar = {.By = *by,
                           .OffsetSeconds = static_cast<std::int64_t>(std::llround(options.UtcOffset * 3600.0)),
                           .South = options.Hemisphere == "south"};
    } else {
        choice.SplitColumn = find_id_field(table, options.SplitBy, options.Points.Input);
    }
    return choice;
}

std::optional<std::int64_t> seconds_of(const platform::FieldValue& cell) {
    if (const auto* whole = std::get_if<std::int64_t>(&cell)) return *whole;
    if (const auto* number = std::get_if<double>(&cell))
        return std::abs(*number) < 1e15 ? std::optional(static_cast<std::int64_t>(std::floor(*number))) : std::nullopt;
    if (const auto* text = std::get_if<std::string>(&cell)) return tracking_times::seconds_from_timestamp(*text);
    return std::nullopt;
}

bool names_an_animal(const platform::FieldValue& id) {
    if (const auto* text = std::get_if<std::string>(&id)) return !text->empty();
    if (const auto* number = std::get_if<double>(&id)) return !std::isnan(*number);
    return !platform::IsMissing(id);
}

/// Ascending IDs; 7 and 7.0 are one animal.
struct IdLess {
    bool operator()(const platform::FieldValue& a, const platform::FieldValue& b) const {
        return platform::ValueLess(a, b);
    }
};

/// Reads the rows of a layer into animals.
class RowReader {
public:
    RowReader(files::FilesFeatureLayer& layer, const Choice& choice) : m_layer(layer) {
        platform::ITable& table = layer.FeatureClass()->Table();
        m_id = table.FindField(choice.IdField);
        m_time = choice.TimeField.empty() ? -1 : table.FindField(choice.TimeField);
        m_column = choice.SplitColumn.empty() ? -1 : table.FindField(choice.SplitColumn);
        for (const std::string& name : {choice.IdField, choice.TimeField, choice.SplitColumn})
            if (!name.empty()) m_search.Fields.push_back(name);
    }

    std::vector<TimedAnimal> Read(LeftOut& left) {
        const auto cursor = m_layer.Selection()->Find(m_search);
        while (const auto feature = cursor->NextFeature()) Add(*feature, left);
        std::vector<TimedAnimal> animals;
        for (auto& [id, fixes] : m_animals) animals.push_back({id, std::move(fixes)});
        return animals;
    }

private:
    void Add(const platform::IFeature& row, LeftOut& left) {
        platform::FieldValue id = row.Value(m_id);
        if (!names_an_animal(id)) {
            ++left.WithoutId;
            return;
        }
        std::vector<TimedFix>& fixes = m_animals[std::move(id)];
        const platform::Geometry shape = row.Shape();
        if (shape.IsNull() || !std::isfinite(shape.Location.X) || !std::isfinite(shape.Location.Y)) {
            ++left.WithoutPlace;
            return;
        }
        TimedFix fix{shape.Location, std::nullopt, {}, 0};
        if (m_time >= 0) fix.Seconds = seconds_of(row.Value(m_time));
        if (m_column >= 0) fix.Column = platform::ValueText(row.Value(m_column));
        fixes.push_back(std::move(fix));
    }

    files::FilesFeatureLayer& m_layer;
    platform::Search m_search;
    int m_id;
    int m_time;
    int m_column;
    std::map<platform::FieldValue, std::vector<TimedFix>, IdLess> m_animals;
};

void order_by_time(std::vector<TimedFix>& fixes) {
    std::stable_sort(fixes.begin(), fixes.end(), [](const TimedFix& a, const TimedFix& b) {
        if (a.Seconds.has_value() != b.Seconds.has_value()) return a.Seconds.has_value();
        return a.Seconds < b.Seconds;
    });
}

template <class Wanted>
std::int64_t keep_only(std::vector<TimedFix>& fixes, Wanted wanted) {
    return static_cast<std::int64_t>(std::erase_if(fixes, [&](const TimedFix& fix) { return !wanted(fix); }));
}

void thin(std::vector<TimedFix>& fixes, const tracking_times::Thinning& rule) {
    tracking_times::Thinner thinner(rule);
    keep_only(fixes, [&](const TimedFix& fix) { return thinner.Keeps(*fix.Seconds); });
}

/// Longitudes and latitudes of the fixes.
std::vector<Point> degrees_of(const std::vector<TimedFix>& fixes, const platform::SpatialReference& reference) {
    std::vector<Point> places;
    for (const TimedFix& fix : fixes) places.push_back(fix.Place);
    if (reference.IsGeographic) return places;
    if (files::project(places, reference, files::ReferenceFromText("EPSG:4326")))
        platform::Raise(error_number::kInvalidCall,
                        "--split-by day-night: a fix has no longitude and latitude in the layer's coordinate system");
    return places;
}

void set_keys(std::vector<TimedFix>& fixes, const tracking_times::SplitRule& rule,
              const platform::SpatialReference& reference) {
    const bool bySun = rule.By == tracking_times::SplitBy::kDayNight;
    const std::vector<Point> degrees = bySun ? degrees_of(fixes, reference) : std::vector<Point>(fixes.size());
    for (std::size_t i = 0; i < fixes.size(); ++i)
        fixes[i].Key = tracking_times::split_key(rule, *fixes[i].Seconds, degrees[i].X, degrees[i].Y);
}

AnimalTrack track_of(const platform::FieldValue& id, std::string key, const std::vector<const TimedFix*>& fixes) {
    AnimalTrack track{id, std::move(key), {}, 0};
    std::vector<std::int64_t> times;
    for (const TimedFix* fix : fixes) {
        track.Fixes.push_back(fix->Place);
        if (fix->Seconds) times.push_back(*fix->Seconds);
    }
    track.Timed = times.size();
    track.Times = tracking_times::facts_on_times(std::move(times), fixes.size() - track.Timed);
    return track;
}

/// Cuts animals into groups.
class Splitter {
public:
    Splitter(const Choice& choice, const platform::SpatialReference& reference)
        : m_choice(choice), m_reference(reference) {}

    void Split(TimedAnimal& animal, LeftOut& left, std::vector<AnimalTrack>& tracks) const {
        if (!m_choice.TimeField.empty()) order_by_time(animal.Fixes);
        if (m_choice.Thinning || m_choice.Calendar)
            left.WithoutTime += keep_only(animal.Fixes, [](const TimedFix& fix) { return fix.Seconds.has_value(); });
        if (!m_choice.SplitColumn.empty())
            left.WithoutKey += keep_only(animal.Fixes, [](const TimedFix& fix) { return !fix.Column.empty(); });
        if (m_choice.Thinning) thin(animal.Fixes, *m_choice.Thinning);
        if (m_choice.Calendar) set_keys(animal.Fixes, *m_choice.Calendar, m_reference);
        std::map<std::pair<std::int32_t, std::string>, std::vector<const TimedFix*>> groups;
        if (!m_choice.Calendar && m_choice.SplitColumn.empty()) groups[{0, ""}];
        for (const TimedFix& fix : animal.Fixes) groups[{fix.Key, fix.Column}].push_back(&fix);
        for (const auto& [key, fixes] : groups)
            tracks.push_back(track_of(
                animal.Id,
                m_choice.Calendar ? tracking_times::split_key_text(*m_choice.Calendar, key.first) : key.second, fixes));
    }

private:
    const Choice& m_choice;
    const platform::SpatialReference& m_reference;
};

void tell(const LeftOut& left, const Choice& choice, Console& console) {
    if (left.WithoutId > 0)
        console.Problem(fmt::format("{} left out: no animal in {}", points_text(left.WithoutId), choice.IdField));
    if (left.WithoutPlace > 0) console.Problem(points_text(left.WithoutPlace) + " left out: no location");
    if (left.WithoutTime > 0)
        console.Problem(fmt::format("{} left out: no time in {}", points_text(left.WithoutTime), choice.TimeField));
    if (left.WithoutKey > 0)
        console.Problem(fmt::format("{} left out: nothing in {}", points_text(left.WithoutKey), choice.SplitColumn));
}

/// Whether most animals were first seen south of the equator; false where the coordinate system tells no latitudes.
bool are_mostly_south(const std::vector<TimedAnimal>& animals, const platform::SpatialReference& reference) {
    std::vector<Point> places;
    for (const TimedAnimal& animal : animals)
        if (!animal.Fixes.empty()) places.push_back(animal.Fixes.front().Place);
    try {
        if (!reference.IsGeographic && files::project(places, reference, files::ReferenceFromText("EPSG:4326")))
            return false;
    } catch (const platform::RuntimeError&) {
        return false;
    }
    const auto south = std::count_if(places.begin(), places.end(), [](const Point& place) { return place.Y < 0.0; });
    return 2 * static_cast<std::size_t>(south) > places.size();
}

/// A summer that is called winter is easily overlooked.
void tell_hemisphere(const std::vector<TimedAnimal>& animals, const Choice& choice,
                     const platform::SpatialReference& reference, Console& console) {
    using tracking_times::SplitBy;
    if (!choice.Calendar || choice.Calendar->South) return;
    if (choice.Calendar->By != SplitBy::kSeason && choice.Calendar->By != SplitBy::kYearSeason) return;
    if (are_mostly_south(animals, reference))
        console.Problem(
            "the animals live south of the equator, and their seasons are named as in the north: --hemisphere south "
            "names them as there");
}

}  // namespace

std::string guess_time_field(platform::ITable& table) {
    for (const char* name : kTimeFields)
        if (const int found = table.FindField(name); found >= 0)
            return table.Fields()[static_cast<std::size_t>(found)].Name;
    return "";
}

std::vector<tracking_times::TimeFacts> time_facts_of(files::FilesFeatureLayer& layer, const std::string& idField,
                                                     const std::string& timeField) {
    platform::ITable& table = layer.FeatureClass()->Table();
    Choice choice;
    choice.IdField = find_id_field(table, idField, layer.Name());
    choice.TimeField = find_id_field(table, timeField, layer.Name());
    LeftOut left;
    std::vector<tracking_times::TimeFacts> facts;
    for (const TimedAnimal& animal : RowReader(layer, choice).Read(left)) {
        std::vector<std::int64_t> times;
        for (const TimedFix& fix : animal.Fixes)
            if (fix.Seconds) times.push_back(*fix.Seconds);
        const std::size_t without = animal.Fixes.size() - times.size();
        facts.push_back(tracking_times::facts_on_times(std::move(times), without));
    }
    return facts;
}

Json json_of(const tracking_times::TimeFacts& facts) {
    const auto instant = [](const std::optional<std::int64_t>& seconds) {
        return seconds ? Json(tracking_times::instant_text(*seconds)) : Json(nullptr);
    };
    const auto quartile = [&](double value) { return facts.Intervals ? json_number(value) : Json(nullptr); };
    const tracking_times::Quartiles intervals = facts.Intervals.value_or(tracking_times::Quartiles{});
    return {{"first", instant(facts.First)},
            {"last", instant(facts.Last)},
            {"days", facts.First ? json_number(facts.Days) : Json(nullptr)},
            {"distinct_days", facts.DaysWithFix},
            {"median_s", quartile(intervals.Median)},
            {"q1_s", quartile(intervals.Lower)},
            {"q3_s", quartile(intervals.Upper)},
            {"iqr_s", quartile(intervals.Range())},
            {"equal_times", facts.EqualTimes}};
}

void add_times(Json& json, const AnimalTracks& tracks, const AnimalTrack& track) {
    if (!tracks.TimeField.empty()) json.update(json_of(track.Times));
}

std::string AnimalTrack::Name() const {
    return Key.empty() ? platform::ValueText(Id) : platform::ValueText(Id) + " " + Key;
}

Json AnimalTrack::IdJson() const {
    return Key.empty() ? json_value(Id) : Json(Name());
}

void add_fix_options(CLI::App& command, AnimalFixOptions& options, bool idRequired) {
    add_measured_input_options(command, options.Points);
    CLI::Option* id =
        command.add_option("--id-field", options.IdField, "Field that names the animal")->type_name("FIELD");
    if (idRequired) id->required();
    command.add_option("--where", options.Where, "Use only the fixes that meet this condition")->type_name("SQL");
    command
        .add_option("--time-field", options.Time,
                    "Field of the time: seconds since 1970-01-01 UTC, or text; Time2 and usual names are found")
        ->type_name("FIELD");
    command
        .add_option("--every", options.Every,
                    "Use one fix per animal and interval: the first of each 4h, 30min, 1d ...")
        ->type_name("SPAN");
    command
        .add_option("--every-tolerance", options.EveryTolerance,
                    "Time by which a fix may come too early and still count for the next interval")
        ->type_name("SPAN");
    command
        .add_option("--split-by", options.SplitBy,
                    "Compare parts of animals: year, month, year-month, season, year-season, day-night, or a field")
        ->type_name("KEY");
    command.add_option("--utc-offset", options.UtcOffset, "Hours that the calendar's clock is ahead of UTC")
        ->type_name("H")
        ->check(number_between(-14.0, 14.0));
    command.add_option("--hemisphere", options.Hemisphere, "Whose seasons: north or south")
        ->type_name("north|south")
        ->transform(one_of({"north", "south"}))
        ->capture_default_str();
}

AnimalTracks read_tracks(const AnimalFixOptions& options, Times times, Console& console) {
    const auto layer = open_measured_point_layer(options.Points, console);
    if (!options.Where.empty()) layer->SelectWhere(options.Where);
    const Choice choice = choice_of(options, *layer, times);
    AnimalTracks tracks{{}, layer->FeatureClass()->Reference(), choice.TimeField, files_read(*layer)};
    LeftOut left;
    std::vector<TimedAnimal> animals = RowReader(*layer, choice).Read(left);
    tell_hemisphere(animals, choice, tracks.Reference, console);
    const Splitter splitter(choice, tracks.Reference);
    for (TimedAnimal& animal : animals) splitter.Split(animal, left, tracks.Animals);
    tell(left, choice, console);
    if (tracks.Animals.empty())
        platform::Raise(error_number::kInvalidCall,
                        options.Points.Input + ": there is no animal among the fixes that were chosen");
    return tracks;
}

}  // namespace wxl::cli
