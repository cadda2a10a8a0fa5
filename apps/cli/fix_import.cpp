#include "apps/cli/fix_import.h"

#include "adapters/gdal/gdal_support.h"
#include "adapters/gdal/projection.h"
#include "adapters/gdal/source_rules.h"
#include "adapters/tracking/cell_text.h"
#include "adapters/tracking/odd_times.h"
#include "adapters/tracking/point_layer.h"
#include "adapters/tracking/text_file.h"
#include "adapters/tracking/time_numbers.h"
#include "apps/cli/input_layer.h"
#include "platform/runtime_error.h"
#include "platform/text.h"
#include "tracking_times/timestamps.h"

#include <algorithm>
#include <array>
#include <CLI/CLI.hpp>
#include <cmath>
#include <filesystem>
#include <fmt/format.h>
#include <fmt/ranges.h>
#include <map>
#include <utility>

namespace wxl::cli {

namespace {

namespace fs = std::filesystem;
namespace error_number = platform::error_number;
using platform::Raise;
using platform::SpatialReference;
using tracking::FileFacts;
using tracking::NamedSystem;
using tracking::Reason;
using tracking::Tracking;
using tracking::TrackingFix;

std::string counted(std::int64_t count, const std::string& noun) {
    const char* plural = noun.ends_with('x') ? "es" : "s";
    return fmt::format("{} {}{}", count, noun, count == 1 ? "" : plural);
}

/// A code, well-known text or PROJ text; an empty text when it may be one, else what is wrong, as CLI11 wants it. Names
/// of files, which GDAL would take, are none.
std::string check_crs(const std::string& text) {
    const auto colon = text.find(':');
    const bool code = colon != std::string::npos && colon > 2 && colon < 8 && text.size() > colon + 1 &&
                      text.find_first_not_of("0123456789", colon + 1) == std::string::npos;
    const bool proj = text.starts_with("+proj=");
    const bool wkt = text.find('[') != std::string::npos && text.find('/') != 0;
    return code || proj || wkt ? "" : fmt::format("\"{}\" is no code like EPSG:32633, WKT or PROJ text", text);
}

std::string check_target_crs(const std::string& text) {
    return text == "auto" || text == "equal-area" ? "" : check_crs(text);
}

/// The coordinate system of an option, whose code may exist in form only.
SpatialReference reference_of(const std::string& text, const std::string& option) {
    SpatialReference reference;
    try {
        reference = files::ReferenceFromText(text);
    } catch (const platform::RuntimeError& fault) {
        if (fault.Number != platform::error_number::kInvalidCall) throw;
        throw WrongCall(fmt::format("{} {}: there is no such coordinate system", option, text));
    }
    if (!files::has_places(reference))
        throw WrongCall(fmt::format("{} {}: x and y of {} are no places on a map", option, text, reference.Name));
    return reference;
}

/// Refuses pipes, devices, archives and addresses; workbooks are archives that are read as they are.
void check_plain_file(const std::string& input) {
    std::error_code ignored;
    const bool isThere = fs::exists(input, ignored);
    if (isThere && fs::is_regular_file(input, ignored) && files::has_ending_of_workbook(input)) return;
    try {
        if (isThere) files::CheckPlainFile(input);
    } catch (const files::IndirectSource& refused) {
        raise_with_option(refused);
    }
}

void check_input(const std::string& input, bool allowIndirect) {
    std::error_code ignored;
    if (!allowIndirect) check_plain_file(input);
    const bool isLayer = tracking::is_layer_file(input);
    if (!isLayer && !fs::exists(input, ignored)) Raise(error_number::kFileNotFound, input + ": there is no such file");
    if (!isLayer && fs::is_directory(input, ignored))
        Raise(error_number::kFileNotFound, input + " is a folder: name the CSV file in it");
}

tracking::ReadOptions read_options(const FixOptions& options) {
    tracking::ReadOptions read;
    read.Columns.Id = options.Id;
    read.Columns.X = options.X;
    read.Columns.Y = options.Y;
    read.Columns.Time = options.Time;
    read.Columns.NoTime = options.NoTime;
    read.Columns.MaxDop = options.MaxDop.has_value();
    read.Columns.ArgosClass = !options.ArgosClasses.empty();
    read.Animal = options.Animal;
    if (!options.DateOrder.empty()) read.Order = tracking::date_order_from(options.DateOrder);
    if (!options.TimeZone.empty()) {
        try {
            read.Zone = std::make_shared<tracking::TimeZone>(options.TimeZone);
        } catch (const platform::RuntimeError& error) {
            throw WrongCall("--time-zone: " + error.Description);
        }
    }
    read.MaxDop = options.MaxDop;
    for (const std::string& name : platform::Split(options.ArgosClasses, ','))
        if (!platform::Trim(name).empty()) read.ArgosClasses.insert(platform::UpperCase(platform::Trim(name)));
    return read;
}

/// The files of a call, opened as texts, with what GDAL knows of them.
class Inputs {
public:
    Inputs(const FixOptions& options, Console& console) : m_options(options), m_console(console) {}

    Tracking Read(const tracking::RejectedRows::Listener& rejected) {
        tracking::ReadOptions read = read_options(m_options);
        std::optional<SpatialReference> from;
        if (!m_options.FromCrs.empty()) from = reference_of(m_options.FromCrs, "--from-crs");
        std::vector<tracking::LayerAsText> layers = OpenLayers();
        if (!from) from = SystemOf(layers);
        if (from) {
            System = {*from, m_options.FromCrs};
            read.Unit = from->IsGeographic ? tracking::PositionUnit::kDegrees : tracking::PositionUnit::kLengths;
            read.Columns.InMetres = !from->IsGeographic;
        }
        const tracking::WantedColumns given = read.Columns;
        Tracking data(read);
        data.Rejected.SetListener(rejected);
        for (std::size_t i = 0; i < m_options.Inputs.size(); ++i) Add(data, m_options.Inputs[i], layers[i], given);
        if (!from) TakeSystemOfPositions(data);
        data.Sort();
        return data;
    }

    NamedSystem System{files::ReferenceFromText("EPSG:4326"), "EPSG:4326"};

private:
    std::vector<tracking::LayerAsText> OpenLayers() const {
        std::vector<tracking::LayerAsText> layers(m_options.Inputs.size());
        for (std::size_t i = 0; i < layers.size(); ++i) {
            check_input(m_options.Inputs[i], m_options.AllowIndirect);
            if (tracking::is_layer_file(m_options.Inputs[i]))
                layers[i] = tracking::read_layer(m_options.Inputs[i], layers.size() > 1);
            if (m_options.FromCrs.empty() && !files::has_places(layers[i].Reference))
                Raise(error_number::kInvalidCall,
                      fmt::format("{} is in a coordinate system whose x and y are no places on a map ({}): project it "
                                  "first",
                                  m_options.Inputs[i], layers[i].Reference.Name));
        }
        return layers;
    }

    /// The system that positions like "SRID=32633;POINT(...)" name themselves.
    void TakeSystemOfPositions(const Tracking& data) {
        const auto code_of = [](const FileFacts& facts) { return fmt::format("EPSG:{}", facts.Srid.value_or(4326)); };
        const std::string code = code_of(data.Files.front());
        for (const FileFacts& facts : data.Files)
            if (code_of(facts) != code)
                Raise(error_number::kTypeMismatch,
                      fmt::format("the positions of {} are in {}, those of {} in {}: import each on its own",
                                  data.Files.front().Name, code, facts.Name, code_of(facts)));
        System = {files::ReferenceFromText(code), code};
    }

    /// The system of the layers where they have one.
    static std::optional<SpatialReference> SystemOf(const std::vector<tracking::LayerAsText>& layers) {
        for (const tracking::LayerAsText& layer : layers)
            if (layer.HasPoints && !layer.Reference.Wkt.empty()) return layer.Reference;
        return std::nullopt;
    }

    void Add(Tracking& data, const std::string& input, tracking::LayerAsText& layer,
             const tracking::WantedColumns& given) const {
        const std::string animal = fs::path(input).stem().string();
        std::error_code ignored;
        const auto size = fs::file_size(input, ignored);
        const double bytes = ignored ? 0.0 : static_cast<double>(size);
        const auto progress = [&](std::uint64_t position) {
            if (bytes > 0.0) m_console.Progress(static_cast<double>(position) / bytes, "reading " + input);
        };
        tracking::WantedColumns wanted = given;
        if (layer.HasPoints && wanted.X.empty()) {
            wanted.X = tracking::kLayerX;
            wanted.Y = tracking::kLayerY;
        }
        data.SetWanted(wanted);
        if (layer.Text) {
            data.Add(std::move(layer.Text), input, animal, progress, tracking::Dialect{});
        } else {
            data.Add(tracking::open_text(input), input, animal, progress);
        }
        m_console.EndProgress();
    }

    const FixOptions& m_options;
    Console& m_console;
};

std::string quoted(const std::vector<std::string>& names) {
    std::vector<std::string> texts;
    for (const std::string& name : names) texts.push_back(fmt::format("\"{}\"", name));
    return fmt::format("{}", fmt::join(texts, " and "));
}

bool is_layer_position(const FileFacts& facts) {
    return facts.X == tracking::kLayerX && facts.Y == tracking::kLayerY;
}

std::string columns_text(const FileFacts& facts) {
    const std::string id = facts.Id.empty() ? "no animal" : fmt::format("animal \"{}\"", facts.Id);
    const std::string position =
        is_layer_position(facts) ? "points" : fmt::format("x \"{}\", y \"{}\"", facts.X, facts.Y);
    const std::string zone = facts.Zone.empty() ? "" : fmt::format(", UTM zone \"{}\"", facts.Zone);
    const std::string time = facts.Time.empty() ? "no time" : "time " + quoted(facts.Time);
    return fmt::format("columns: {}, {}{}, {}", id, position, zone, time);
}

const char* order_text(tracking::DateOrder order) {
    switch (order) {
        case tracking::DateOrder::kDayMonthYear:
            return "day, month, year";
        case tracking::DateOrder::kMonthDayYear:
            return "month, day, year";
        default:
            return "year, month, day";
    }
}

/// What a user may have to correct in what was found.
std::vector<std::string> remarks_on(const FileFacts& facts, const FixOptions& options) {
    std::vector<std::string> remarks;
    if (facts.HeaderMissing)
        remarks.emplace_back("the first row holds no names of columns: they are column 1, column 2, ...");
    if (facts.PositionByContent)
        remarks.emplace_back("the columns of the position were found by what they hold; others: --x COLUMN --y COLUMN");
    if (facts.PerDegree != 1.0)
        remarks.push_back(fmt::format("positions are divided by {:.0f}, as the {}", facts.PerDegree,
                                      facts.PartsByContent ? "size of the numbers says" : "column's name says"));
    if (!facts.MinutesOfX.empty())
        remarks.push_back(fmt::format("minutes are added to the degrees from the columns \"{}\" and \"{}\"",
                                      facts.MinutesOfX, facts.MinutesOfY));
    if (facts.Srid) remarks.push_back(fmt::format("positions are in EPSG:{}, as their SRID says", *facts.Srid));
    if (facts.IsOfReceiver) remarks.emplace_back("positions are read as degrees and minutes (ddmm.mmmm)");
    if (!facts.OtherId.empty())
        remarks.push_back(
            fmt::format("animals are told apart by the column \"{}\", not by \"{}\"; if several have the same name, "
                        "give --id \"{}\"",
                        facts.Id, facts.OtherId, facts.OtherId));
    if (facts.TimeByContent)
        remarks.emplace_back("the column of the time was found by what it holds; another: --time COLUMN");
    if (facts.Order)
        remarks.push_back(fmt::format("dates are read as {}, as the column decides", order_text(*facts.Order)));
    if (facts.DecimalsOfDays > 0)
        remarks.push_back(
            fmt::format("the day numbers have {} decimals, so times may be wrong by {:.0f} s: save the table "
                        "with more of them",
                        facts.DecimalsOfDays, 43200.0 / std::pow(10.0, facts.DecimalsOfDays)));
    if (!facts.UnusedClock.empty())
        remarks.push_back(fmt::format(
            "the times are days alone: the column \"{}\" holds no time of day that can be read", facts.UnusedClock));
    if (!facts.ZoneOfClock.empty() && options.TimeZone.empty())
        remarks.push_back(
            fmt::format("the column \"{}\" names the zones of clocks, and the times are taken as UTC; if they are not, "
                        "give --time-zone NAME",
                        facts.ZoneOfClock));
    if (facts.TimeIsLocal && options.TimeZone.empty())
        remarks.emplace_back("the times are local by their column's name, and are taken as UTC; give --time-zone NAME");
    if (facts.TimeIsUtc && !options.TimeZone.empty())
        remarks.emplace_back("the times are UTC by their column's name: --time-zone does not change them");
    if (facts.MadeNegative) remarks.emplace_back("by the column's name, its positive degrees are west or south");
    if (facts.Over180 > 0)
        remarks.push_back(fmt::format("{} above 180 degrees became west", counted(facts.Over180, "longitude")));
    if (facts.ClockTwice > 0)
        remarks.push_back(fmt::format("{} stood on the clock twice, when it was set back: the first is taken",
                                      counted(facts.ClockTwice, "time")));
    if (facts.ClockNever > 0)
        remarks.push_back(
            fmt::format("{} never stood on the clock, which was set forward: the offset of before is taken",
                        counted(facts.ClockNever, "time")));
    if (facts.WithoutDop > 0) remarks.push_back(fmt::format("{} without a DOP kept", counted(facts.WithoutDop, "fix")));
    if (facts.Time.empty() && !options.NoTime)
        remarks.emplace_back("no time column found; give it by --time COLUMN (the movement tools need it)");
    return remarks;
}

std::string one_animal_text(const Tracking& data, const FixOptions& options, bool several) {
    if (!options.Animal.empty()) return fmt::format("all fixes are those of \"{}\"", options.Animal);
    const std::string who = several ? "each file is one animal, named after the file"
                                    : fmt::format("all fixes are those of \"{}\", as the file is called",
                                                  data.Animals.empty() ? "" : data.Animals.front());
    return fmt::format("no column names the animal: {}; name the column by --id COLUMN, or the animal by --animal NAME",
                       who);
}

/// Tells what the numbers of times were taken for, and the days that makes them in all files.
void report_numbers(const Tracking& data, Console& console) {
    std::map<tracking::TimeKind, std::pair<std::int64_t, std::int64_t>> ranges;
    for (const FileFacts& facts : data.Files) {
        if (!facts.FirstTime || !facts.LastTime) continue;
        auto& range = ranges.try_emplace(facts.Numbers, *facts.FirstTime, *facts.LastTime).first->second;
        range = {std::min(range.first, *facts.FirstTime), std::max(range.second, *facts.LastTime)};
    }
    for (const auto& [kind, range] : ranges)
        console.Note(fmt::format("the numbers of the time are read as {}: {} to {}", tracking::unit_of_numbers(kind),
                                 tracking_times::date_text(range.first), tracking_times::date_text(range.second)));
}

/// Tells what was found in each file; what is the same as in the one before is not repeated.
void report_files(const Tracking& data, const FixOptions& options, Console& console) {
    const bool several = data.Files.size() > 1;
    std::vector<std::string> before;
    for (const FileFacts& facts : data.Files) {
        std::vector<std::string> lines{columns_text(facts)};
        if (facts.Id.empty()) lines.push_back(one_animal_text(data, options, several));
        for (std::string& remark : remarks_on(facts, options)) lines.push_back(std::move(remark));
        if (lines == before) continue;
        for (const std::string& line : lines) console.Note(several ? facts.Name + ": " + line : line);
        before = std::move(lines);
    }
}

void report_left_out(const Tracking& data, Console& console) {
    const auto& rejected = data.Rejected;
    std::string text = "rows left out:";
    for (const Reason why : {Reason::kNotVisible, Reason::kOutlier, Reason::kNoPosition, Reason::kNoAnimal})
        text += fmt::format("{} {} {}", why == Reason::kNotVisible ? "" : ",", rejected.Of(why), reason_text(why));
    for (const Reason why : {Reason::kCells, Reason::kPosition, Reason::kTime, Reason::kDop, Reason::kArgosClass,
                             Reason::kNoKey, Reason::kThinned})
        if (rejected.Of(why) > 0) text += fmt::format(", {} {}", rejected.Of(why), reason_text(why));
    console.Note(text);
    std::int64_t withoutTime = 0;
    for (const FileFacts& facts : data.Files) withoutTime += facts.Time.empty() ? 0 : facts.WithoutTime;
    if (withoutTime > 0)
        console.Note(fmt::format("{} without a time kept, after the others of the animal; Time2 is empty there",
                                 counted(withoutTime, "fix")));
}

/// Says when fixes lie at 0, 0, where few animals go.
void note_zero_positions(const Tracking& data, Console& console) {
    std::int64_t count = 0;
    const TrackingFix* first = nullptr;
    for (const TrackingFix& fix : data.Fixes) {
        if (fix.X != 0.0 || fix.Y != 0.0) continue;
        ++count;
        if (first == nullptr || fix.Place < first->Place) first = &fix;
    }
    if (count == 0) return;
    console.Note(
        fmt::format("{} {} the position 0, 0 ({}line {}, animal \"{}\"), which often stands for a missing one; if so, "
                    "empty these cells",
                    counted(count, "fix"), count == 1 ? "has" : "have", count == 1 ? "" : "the first: ", first->Line,
                    data.Animals[first->Animal]));
}

/// Where a fix stands: its file only where there are several.
std::string place_of(const Tracking& data, const TrackingFix& fix) {
    return data.Files.size() > 1 ? data.PlaceOf(fix) : fmt::format("line {}", fix.Line);
}

struct OddText {
    const char* One;
    const char* Several;
    const char* Behind;
};
constexpr std::array<OddText, tracking::kOddTimes> kOddTexts = {
    {{"1 fix stands where clocks start, far from the other times",
      "{} fixes stand where clocks start, far from the other times",
      ", as if the clock had not been set; correct the times, or empty their cells to keep the fixes without a time"},
     {"1 fix is 1024 weeks from the other times of its animal",
      "{} fixes are 1024 weeks from the other times of their animals",
      ", as where a receiver's count of weeks starts anew; move such times by 7168 days in the table, or empty their "
      "cells to keep the fixes without a time"},
     {"1 fix is over 20 years from the other times of its animal",
      "{} fixes are over 20 years from the other times of their animals",
      "; if that is wrong, correct the times, or empty their cells to keep the fixes without a time"}}};

/// Says when times may be none, as of clocks that were not set.
void note_odd_times(Tracking& data, Console& console) {
    std::int64_t midnights = 0;
    for (const FileFacts& facts : data.Files) midnights += facts.Midnights;
    const bool haveClock = midnights * 2 < static_cast<std::int64_t>(data.Fixes.size());
    const auto odd = tracking::find_odd_times(data.Fixes, haveClock);
    for (std::size_t i = 0; i < odd.size(); ++i) {
        if (odd[i].Count == 0) continue;
        const TrackingFix& first = data.Fixes[odd[i].First];
        const bool one = odd[i].Count == 1;
        const std::string count =
            one ? kOddTexts[i].One : fmt::format(fmt::runtime(kOddTexts[i].Several), odd[i].Count);
        console.Note(fmt::format("{} ({}{}, animal \"{}\": {}){}", count,
                                 one ? "" : "the first: ", place_of(data, first), data.Animals[first.Animal],
                                 data.ReadTime(first), kOddTexts[i].Behind));
    }
}

/// Removes what is not kept, in all parallel to the fixes.
template <class Keep>
void keep_fixes(Tracking& data, Keep keep) {
    std::size_t next = 0;
    for (std::size_t i = 0; i < data.Fixes.size(); ++i)
        if (keep(i)) data.Fixes[next++] = data.Fixes[i];
    data.Fixes.resize(next);
}

std::int64_t duration_of(const std::string& text, const std::string& option) {
    const auto seconds = tracking_times::seconds_from_duration(text);
    if (!seconds) throw WrongCall(fmt::format("{}: \"{}\" is no duration like 4h, 30min or 1d", option, text));
    return *seconds;
}

std::string time_column(const FileFacts& facts) {
    return facts.Time.empty() ? "" : facts.Time.front();
}

void thin(const FixOptions& options, Tracking& data) {
    if (options.Every.empty()) return;
    tracking_times::Thinning rule{duration_of(options.Every, "--every"), 0};
    if (!options.EveryTolerance.empty()) rule.Tolerance = duration_of(options.EveryTolerance, "--every-tolerance");
    std::optional<tracking_times::Thinner> thinner;
    std::uint32_t animal = 0;
    keep_fixes(data, [&](std::size_t i) {
        const TrackingFix& fix = data.Fixes[i];
        if (!thinner || fix.Animal != animal) thinner.emplace(rule);
        animal = fix.Animal;
        const bool kept = fix.HasTime() && thinner->Keeps(fix.Seconds);
        if (!kept)
            data.Reject(fix, fix.HasTime() ? Reason::kThinned : Reason::kNoKey, time_column(data.Files[fix.File()]),
                        "");
        return kept;
    });
    if (data.Fixes.empty()) Raise(error_number::kTypeMismatch, "no fix has a time, which --every needs");
}

/// What fixes are split by: a calendar, the sun, or the cells of a column.
class Splitter {
public:
    /// `degrees`: places of the fixes.
    Splitter(const FixOptions& options, Tracking& data, const std::vector<TrackingFix>& degrees)
        : m_data(data), m_degrees(degrees) {
        if (const auto by = tracking_times::split_by_from(options.SplitBy)) {
            m_rule = tracking_times::SplitRule{*by};
            m_rule->South = tracking::median_of(degrees).Y < 0.0;
            return;
        }
        for (std::size_t i = 0; i < data.Others.size(); ++i)
            if (platform::EqualNoCase(data.Others[i].Name, options.SplitBy)) m_column = i;
        if (!m_column)
            throw WrongCall(fmt::format(
                "--split-by: \"{}\" is neither season, month, year, year-month, year-season, day-night nor a column",
                options.SplitBy));
    }

    /// The key of a fix in the order of keys, and its text; nothing when it has none.
    std::optional<std::pair<std::int32_t, std::string>> KeyOf(std::size_t i) {
        const TrackingFix& fix = m_data.Fixes[i];
        if (m_column) {
            const std::string cell = m_data.ReadCell(fix, *m_column);
            if (tracking::is_missing(cell)) return std::nullopt;
            return std::pair{0, cell};
        }
        if (!fix.HasTime()) return std::nullopt;
        const std::int32_t key = tracking_times::split_key(*m_rule, fix.Seconds, m_degrees[i].X, m_degrees[i].Y);
        return std::pair{key, tracking_times::split_key_text(*m_rule, key)};
    }

    std::string ColumnName() const { return m_column ? m_data.Others[*m_column].Name : ""; }

private:
    Tracking& m_data;
    const std::vector<TrackingFix>& m_degrees;
    std::optional<tracking_times::SplitRule> m_rule;
    std::optional<std::size_t> m_column;
};

/// Projects the positions of fixes of `data` in place.
void project_fixes(std::vector<TrackingFix>& fixes, const SpatialReference& from, const SpatialReference& to,
                   const Tracking& data) {
    const auto failed = tracking::project_fixes(fixes, from, to);
    if (!failed) return;
    const TrackingFix& fix = fixes[*failed];
    Raise(error_number::kTypeMismatch,
          fmt::format("{}: the position {}, {} cannot be projected to {}; correct it, or choose another projection by "
                      "--to-crs",
                      data.PlaceOf(fix), fix.X, fix.Y, to.Name));
}

/// The fixes with their places in degrees of WGS 84.
std::vector<TrackingFix> degrees_of(const Tracking& data, const NamedSystem& from) {
    std::vector<TrackingFix> degrees = data.Fixes;
    if (!from.Reference.IsGeographic)
        project_fixes(degrees, from.Reference, files::ReferenceFromText("EPSG:4326"), data);
    return degrees;
}

/// Splits the fixes of each animal; those without a key are left out.
void split(const FixOptions& options, const NamedSystem& system, ImportedFixes& fixes) {
    if (options.SplitBy.empty()) return;
    const std::vector<TrackingFix> degrees = degrees_of(fixes.Data, system);
    Tracking& data = fixes.Data;
    Splitter splitter(options, data, degrees);
    std::map<std::tuple<std::uint32_t, std::int32_t, std::string>, std::uint32_t> groups;
    std::vector<const std::tuple<std::uint32_t, std::int32_t, std::string>*> keys(data.Fixes.size(), nullptr);
    for (std::size_t i = 0; i < data.Fixes.size(); ++i) {
        const auto key = splitter.KeyOf(i);
        if (key) keys[i] = &groups.try_emplace({data.Fixes[i].Animal, key->first, key->second}, 0).first->first;
    }
    for (auto& [key, index] : groups) {
        index = static_cast<std::uint32_t>(fixes.Groups.size());
        fixes.Individual.push_back(data.Animals[std::get<0>(key)]);
        fixes.Key.push_back(std::get<2>(key));
        fixes.Groups.push_back(fixes.Individual.back() + " " + fixes.Key.back());
    }
    std::size_t next = 0;
    for (std::size_t i = 0; i < data.Fixes.size(); ++i) {
        if (keys[i] == nullptr) {
            data.Reject(data.Fixes[i], Reason::kNoKey, splitter.ColumnName(), "");
            continue;
        }
        fixes.GroupOf.push_back(groups[*keys[i]]);
        data.Fixes[next++] = data.Fixes[i];
    }
    data.Fixes.resize(next);
}

/// Brings a split layer in the order of its groups.
void sort_by_group(ImportedFixes& fixes) {
    if (fixes.Groups.empty()) return;
    std::vector<std::size_t> order(fixes.Data.Fixes.size());
    for (std::size_t i = 0; i < order.size(); ++i) order[i] = i;
    std::stable_sort(order.begin(), order.end(),
                     [&](std::size_t a, std::size_t b) { return fixes.GroupOf[a] < fixes.GroupOf[b]; });
    const auto rows = fixes.Data.Fixes;
    const auto groups = fixes.GroupOf;
    for (std::size_t i = 0; i < order.size(); ++i) {
        fixes.Data.Fixes[i] = rows[order[i]];
        fixes.GroupOf[i] = groups[order[i]];
    }
}

NamedSystem choose_target(const FixOptions& options, const NamedSystem& from, const Tracking& data) {
    if (options.ToCrs == "equal-area") return tracking::equal_area_of(degrees_of(data, from));
    if (options.ToCrs != "auto") return {reference_of(options.ToCrs, "--to-crs"), options.ToCrs};
    return from.Reference.IsGeographic ? tracking::best_projection(data.Fixes) : from;
}

/// Says why no UTM zone was taken, when that is for a few fixes that may be wrong.
void note_far_fixes(const FixOptions& options, const NamedSystem& from, const NamedSystem& to, const Tracking& data,
                    Console& console) {
    if (options.ToCrs != "auto" || to.Code != "equal-area" || !from.Reference.IsGeographic) return;
    const auto zone = files::utm_zone_of(tracking::median_of(data.Fixes));
    if (!zone) return;
    std::int64_t count = 0;
    const TrackingFix* first = nullptr;
    for (const TrackingFix& fix : data.Fixes) {
        if (std::abs(std::remainder(fix.X - zone->MiddleDegrees(), 360.0)) <= tracking::kZoneAndAHalf) continue;
        ++count;
        if (first == nullptr || fix.Place < first->Place) first = &fix;
    }
    if (count == 0 || static_cast<double>(count) > 0.5 * static_cast<double>(data.Fixes.size())) return;
    console.Note(fmt::format(
        "{} {} more than 4.5 degrees from the middle of UTM zone {} ({}line {}, animal \"{}\"), so an equal-area "
        "projection is taken; correct what is wrong, or give --to-crs {}",
        counted(count, "fix"), count == 1 ? "lies" : "lie", zone->Name(), count == 1 ? "" : "the first: ", first->Line,
        data.Animals[first->Animal], zone->Code()));
}

void report_distortion(const ImportedFixes& fixes, Console& console) {
    if (!fixes.Wrong) return;
    constexpr double kMuch = 0.02;
    const std::string advice = fixes.Wrong->Area > kMuch     ? "; --to-crs equal-area has true areas"
                               : fixes.Wrong->Length > kMuch ? "; no projection of so wide a range keeps distances"
                                                             : "";
    const std::string text =
        fmt::format("in {}, {}{}", fixes.System.Reference.Name, distortion_text(*fixes.Wrong), advice);
    // Mercator projections of the world are told with advice of their own, where the layer's name is known.
    const auto& first = fixes.Data.Fixes.front();
    const bool mercator = files::mercator_stretch(fixes.System.Reference, {first.X, first.Y}).has_value();
    if (fixes.Wrong->Area > kMuch && !mercator) {
        console.Problem(text);
    } else {
        console.Note(text);
    }
}

void refuse_without_fixes(const FixOptions& options, const Tracking& data) {
    const auto& out = data.Rejected;
    const std::string inputs = data.Files.size() == 1 ? data.Files.front().Name
                                                      : counted(static_cast<std::int64_t>(data.Files.size()), "file");
    if (data.Rows == 0) Raise(error_number::kTypeMismatch, inputs + " holds no fix: it has a header and no rows");
    std::string others;
    for (const Reason why :
         {Reason::kCells, Reason::kPosition, Reason::kTime, Reason::kDop, Reason::kArgosClass, Reason::kNoKey})
        if (out.Of(why) > 0) others += fmt::format(", {} {}", out.Of(why), reason_text(why));
    const std::string id = options.Id.empty() && !data.Files.front().Id.empty() ? data.Files.front().Id : options.Id;
    Raise(
        error_number::kTypeMismatch,
        fmt::format("{} holds no fix: of {} rows, {} are not visible, {} are outliers, {} have no position, {} have no "
                    "animal in column \"{}\" (another column: --id){}",
                    inputs, data.Rows, out.Of(Reason::kNotVisible), out.Of(Reason::kOutlier),
                    out.Of(Reason::kNoPosition), out.Of(Reason::kNoAnimal), id, others));
}

}  // namespace

bool ImportedFixes::HasTimes() const {
    return std::any_of(Data.Files.begin(), Data.Files.end(),
                       [](const FileFacts& facts) { return !facts.Time.empty(); });
}

void add_fix_options(CLI::App& command, FixOptions& options) {
    command.add_option("--id", options.Id, "Column that names the animal")->type_name("COLUMN");
    command.add_option("--animal", options.Animal, "Name of the one animal whose fixes these are")->type_name("NAME");
    CLI::Option* x = command.add_option("--x", options.X, "Column of longitudes or eastings")->type_name("COLUMN");
    CLI::Option* y = command.add_option("--y", options.Y, "Column of latitudes or northings")->type_name("COLUMN");
    x->needs(y);
    y->needs(x);
    CLI::Option* time = command
                            .add_option("--time", options.Time,
                                        "Column of the time of the fix, or several of date and time, parted by commas")
                            ->type_name("COLUMN[,COLUMN]");
    command.add_flag("--no-time", options.NoTime, "Import without times")->excludes(time);
    command
        .add_option("--date-order", options.DateOrder,
                    "Order of day, month and year in dates like 03/04/2020 (default: decided by the whole column)")
        ->type_name("dmy|mdy|ymd")
        ->check([](const std::string& text) {
            return tracking::date_order_from(text) ? std::string() : fmt::format("\"{}\" is not dmy, mdy or ymd", text);
        });
    command
        .add_option("--time-zone", options.TimeZone,
                    "Time zone of times that tell none, such as Europe/Berlin or UTC+2 (default: UTC)")
        ->type_name("NAME");
    command
        .add_option("--from-crs", options.FromCrs,
                    "Coordinate system of the file (default: degrees of WGS 84, or what the layer says)")
        ->type_name("EPSG:n|WKT|PROJ")
        ->check(check_crs);
    command
        .add_option(
            "--to-crs", options.ToCrs,
            "Coordinate system of the result; auto: for degrees the UTM zone where all fixes lie within it and a "
            "half, else an equal-area projection of their own; else that of the file")
        ->type_name("auto|equal-area|EPSG:n|WKT|PROJ")
        ->check(check_target_crs)
        ->capture_default_str();
    command.add_option("--max-dop", options.MaxDop, "Leave out fixes with a greater dilution of precision")
        ->type_name("X");
    command.add_option("--argos-class", options.ArgosClasses, "Leave out fixes of other Argos location classes")
        ->type_name("3,2,1");
    CLI::Option* every =
        command.add_option("--every", options.Every, "Keep the first fix of each interval, such as 4h, 30min, 1d")
            ->type_name("DURATION");
    command
        .add_option("--every-tolerance", options.EveryTolerance,
                    "Let a fix that comes earlier by so much count for the next interval")
        ->type_name("DURATION")
        ->needs(every);
    command
        .add_option(
            "--split-by", options.SplitBy,
            "Make an animal of each season, month, year, year-month, year-season, day-night, or value of a column")
        ->type_name("KEY|COLUMN");
}

std::vector<std::string> words_of(const FixOptions& options) {
    std::vector<std::string> words;
    const auto add = [&](const char* option, const std::string& value) {
        if (value.empty()) return;
        words.emplace_back(option);
        words.push_back(value);
    };
    add("--id", options.Id);
    add("--animal", options.Animal);
    add("--x", options.X);
    add("--y", options.Y);
    add("--time", options.Time);
    if (options.NoTime) words.emplace_back("--no-time");
    add("--date-order", options.DateOrder);
    add("--time-zone", options.TimeZone);
    add("--from-crs", options.FromCrs);
    if (options.ToCrs != "auto") add("--to-crs", options.ToCrs);
    if (options.MaxDop) add("--max-dop", platform::NumberText(*options.MaxDop));
    add("--argos-class", options.ArgosClasses);
    add("--every", options.Every);
    add("--every-tolerance", options.EveryTolerance);
    add("--split-by", options.SplitBy);
    return words;
}

ImportedFixes import_fixes(const FixOptions& options, const tracking::RejectedRows::Listener& rejected,
                           Console& console) {
    if (!options.Every.empty()) duration_of(options.Every, "--every");
    if (options.ToCrs != "auto" && options.ToCrs != "equal-area") reference_of(options.ToCrs, "--to-crs");
    Inputs inputs(options, console);
    ImportedFixes fixes{inputs.Read(rejected), {}, {}, {}, {}, {}, {}};
    Tracking& data = fixes.Data;
    report_files(data, options, console);
    report_numbers(data, console);
    if (data.Fixes.empty()) refuse_without_fixes(options, data);
    note_odd_times(data, console);
    thin(options, data);
    split(options, inputs.System, fixes);
    report_left_out(data, console);
    if (data.Fixes.empty()) refuse_without_fixes(options, data);
    note_zero_positions(data, console);
    fixes.System = choose_target(options, inputs.System, data);
    note_far_fixes(options, inputs.System, fixes.System, data, console);
    project_fixes(data.Fixes, inputs.System.Reference, fixes.System.Reference, data);
    fixes.Wrong = tracking::largest_distortion(data.Fixes, fixes.System.Reference);
    report_distortion(fixes, console);
    sort_by_group(fixes);
    return fixes;
}

}  // namespace wxl::cli
