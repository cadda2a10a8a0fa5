#include "apps/cli/import_remarks.h"

#include "adapters/gdal/projection.h"
#include "adapters/tracking/odd_times.h"
#include "adapters/tracking/point_layer.h"
#include "adapters/tracking/time_numbers.h"
#include "platform/runtime_error.h"
#include "tracking_times/timestamps.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <fmt/format.h>
#include <fmt/ranges.h>
#include <map>
#include <utility>

namespace wxl::cli {

namespace {

namespace error_number = platform::error_number;
using platform::Raise;
using tracking::FileFacts;
using tracking::NamedSystem;
using tracking::Reason;
using tracking::Tracking;
using tracking::TrackingFix;

std::string counted(std::int64_t count, const std::string& noun) {
    const char* plural = noun.ends_with('x') ? "es" : "s";
    return fmt::format("{} {}{}", count, noun, count == 1 ? "" : plural);
}

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

}  // namespace

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

}  // namespace wxl::cli
