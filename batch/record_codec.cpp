#include "batch/record_codec.h"

#include "platform/runtime_error.h"

#include <algorithm>
#include <array>
#include <utility>

namespace wxl::batch {
namespace {

using analysis::AnimalRecord;
using analysis::BandwidthMethod;

constexpr std::array<std::pair<const char*, BandwidthMethod>, 6> kMethods = {
    {{"lscv", BandwidthMethod::kLscv},
     {"bcv", BandwidthMethod::kBcv},
     {"href", BandwidthMethod::kHref},
     {"manual", BandwidthMethod::kManual},
     {"proportion", BandwidthMethod::kProportion},
     {"adhoc", BandwidthMethod::kAdHoc}}};

Json json_of_isopleths(const std::vector<analysis::IsoplethRecord>& isopleths) {
    Json json = Json::array();
    for (const auto& [percent, level, area, shape, parts] : isopleths)
        json.push_back(
            {json_of_double(percent), json_of_double(level), json_of_optional(area), json_of_shape(shape), parts});
    return json;
}

std::vector<analysis::IsoplethRecord> isopleths_of(const Json& json) {
    std::vector<analysis::IsoplethRecord> isopleths;
    for (const Json& one : json)
        isopleths.push_back({.Percent = double_of(one.at(0)),
                             .Level = double_of(one.at(1)),
                             .Area = optional_of(one.at(2)),
                             .Shape = shape_of(one.at(3)),
                             .Parts = int32_of(one.at(4))});
    return isopleths;
}

Json json_of_profile(const engine::SearchProfile& profile) {
    Json json = Json::array();
    for (const auto& [bandwidth, score] : profile) {
        json.push_back(json_of_double(bandwidth));
        json.push_back(json_of_double(score));
    }
    return json;
}

engine::SearchProfile profile_of(const Json& json) {
    engine::SearchProfile profile;
    for (std::size_t i = 0; i < json.size(); i += 2)
        profile.push_back({.Bandwidth = double_of(json.at(i)), .Score = double_of(json.at(i + 1))});
    return profile;
}

Json json_of_adhoc(const comparison::AdHocBandwidth& adhoc) {
    const auto& [status, href, proportion, bandwidth, cellSize, steps] = adhoc;
    Json trace = Json::array();
    for (const auto& [share, range] : steps) {
        const auto& [parts, holes] = range;
        trace.push_back({json_of_double(share), parts, holes});
    }
    return {json_of_enumeration(status), json_of_double(href),     json_of_double(proportion),
            json_of_double(bandwidth),   json_of_double(cellSize), std::move(trace)};
}

comparison::AdHocBandwidth adhoc_of(const Json& json) {
    comparison::AdHocBandwidth adhoc{.Status = enumeration_of(json.at(0), comparison::AdHocStatus::kNoBandwidth),
                                     .Href = double_of(json.at(1)),
                                     .Proportion = double_of(json.at(2)),
                                     .Bandwidth = double_of(json.at(3)),
                                     .CellSize = double_of(json.at(4)),
                                     .Trace = {}};
    for (const Json& step : json.at(5))
        adhoc.Trace.push_back({.Proportion = double_of(step.at(0)),
                               .Range = {.Parts = int32_of(step.at(1)), .Holes = int32_of(step.at(2))}});
    return adhoc;
}

Json json_of_curve(const std::optional<comparison::AreaCurve>& curve) {
    if (!curve) return nullptr;
    const auto& [sizes, levelling, cellSize] = *curve;
    Json list = Json::array();
    for (const auto& [n, area, low, high] : sizes)
        list.push_back({n, json_of_optional(area), json_of_optional(low), json_of_optional(high)});
    Json asymptote = nullptr;
    if (levelling) {
        const auto& [n, reached] = *levelling;
        asymptote = {n, reached};
    }
    return {std::move(list), std::move(asymptote), json_of_double(cellSize)};
}

std::optional<comparison::AreaCurve> curve_of(const Json& json) {
    if (json.is_null()) return std::nullopt;
    const auto count = [](const Json& number) { return static_cast<std::size_t>(whole_of(number, 0, INT64_MAX)); };
    comparison::AreaCurve curve;
    for (const Json& size : json.at(0))
        curve.Sizes.push_back({.N = count(size.at(0)),
                               .Area = optional_of(size.at(1)),
                               .Low = optional_of(size.at(2)),
                               .High = optional_of(size.at(3))});
    if (!json.at(1).is_null())
        curve.Levelling = comparison::Asymptote{.N = count(json.at(1).at(0)), .Reached = json.at(1).at(1).get<bool>()};
    curve.CellSize = double_of(json.at(2));
    return curve;
}

Json json_of_polygons(const std::vector<comparison::MinimumConvexPolygon>& polygons) {
    Json json = Json::array();
    for (const auto& [percent, status, area, kept, corners] : polygons) {
        Json points = Json::array();
        for (const platform::Point& corner : corners) {
            points.push_back(json_of_double(corner.X));
            points.push_back(json_of_double(corner.Y));
        }
        json.push_back(
            {json_of_double(percent), json_of_enumeration(status), json_of_double(area), kept, std::move(points)});
    }
    return json;
}

std::vector<comparison::MinimumConvexPolygon> polygons_of(const Json& json) {
    std::vector<comparison::MinimumConvexPolygon> polygons;
    for (const Json& one : json) {
        std::vector<platform::Point> corners;
        const Json& points = one.at(4);
        for (std::size_t i = 0; i < points.size(); i += 2)
            corners.push_back({double_of(points.at(i)), double_of(points.at(i + 1))});
        polygons.push_back({.Percent = double_of(one.at(0)),
                            .Status = enumeration_of(one.at(1), comparison::PolygonStatus::kNoArea),
                            .Area = double_of(one.at(2)),
                            .Kept = static_cast<std::size_t>(whole_of(one.at(3), 0, INT64_MAX)),
                            .Corners = std::move(corners)});
    }
    return polygons;
}

Json json_of_distortion(const std::optional<platform::Distortion>& distortion) {
    if (!distortion) return nullptr;
    const auto& [area, length] = *distortion;
    return json_of_doubles({area, length});
}

std::optional<platform::Distortion> distortion_of(const Json& json) {
    if (json.is_null()) return std::nullopt;
    return platform::Distortion{.Area = double_of(json.at(0)), .Length = double_of(json.at(1))};
}

/// Of boxes that ask nothing: a task has nobody to ask.
Json json_of_box(const platform::MessageBox& box) {
    const auto& [text, title, sign, choice, about, kind, advised] = box;
    return {{"text", json_of_text(text)},
            {"title", json_of_text(title)},
            {"icon", json_of_enumeration(sign)},
            {"about", json_of_enumeration(about)},
            {"kind", json_of_enumeration(kind)}};
}

platform::MessageBox box_of(const Json& json) {
    return {.Text = text_of(json.at("text")),
            .Title = text_of(json.at("title")),
            .Sign = enumeration_of(json.at("icon"), platform::Icon::kInformation),
            .About = enumeration_of(json.at("about"), platform::Topic::kStop),
            .Kind = enumeration_of(json.at("kind"), platform::BoxKind::kQuestion)};
}

}  // namespace

const char* method_text(BandwidthMethod method) {
    const auto found =
        std::find_if(kMethods.begin(), kMethods.end(), [&](const auto& entry) { return entry.second == method; });
    return found->first;
}

BandwidthMethod method_of_text(const std::string& text) {
    const auto found =
        std::find_if(kMethods.begin(), kMethods.end(), [&](const auto& entry) { return entry.first == text; });
    if (found == kMethods.end()) platform::Raise(platform::error_number::kTypeMismatch, "no method: " + text);
    return found->second;
}

Json json_of_error(const std::optional<analysis::PositionError>& error) {
    if (!error) return nullptr;
    const auto& [metres, field, ofArgosClasses] = *error;
    return {json_of_double(metres), json_of_text(field), ofArgosClasses};
}

std::optional<analysis::PositionError> error_of(const Json& json) {
    if (json.is_null()) return std::nullopt;
    return analysis::PositionError{
        .Metres = double_of(json.at(0)), .Field = text_of(json.at(1)), .OfArgosClasses = json.at(2).get<bool>()};
}

/// Bound by name and number, as the record below.
Json json_of_times(const tracking_times::TimeFacts& facts) {
    const auto& [withTime, withoutTime, first, last, days, daysWithFix, equalTimes, intervals] = facts;
    const auto instant = [](const std::optional<std::int64_t>& seconds) { return seconds ? Json(*seconds) : Json(); };
    Json quartiles;
    if (intervals) {
        const auto& [lower, median, upper] = *intervals;
        quartiles = json_of_doubles({lower, median, upper});
    }
    return {withTime,    withoutTime, instant(first), instant(last), json_of_double(days),
            daysWithFix, equalTimes,  quartiles};
}

tracking_times::TimeFacts times_of(const Json& json) {
    const auto count = [&](std::size_t place) {
        return static_cast<std::size_t>(whole_of(json.at(place), 0, INT64_MAX));
    };
    const auto instant = [&](std::size_t place) {
        return json.at(place).is_null() ? std::nullopt : std::optional(whole_of(json.at(place), INT64_MIN, INT64_MAX));
    };
    tracking_times::TimeFacts facts{.WithTime = count(0),
                                    .WithoutTime = count(1),
                                    .First = instant(2),
                                    .Last = instant(3),
                                    .Days = double_of(json.at(4)),
                                    .DaysWithFix = count(5),
                                    .EqualTimes = count(6),
                                    .Intervals = {}};
    if (json.at(7).is_null()) return facts;
    const std::vector<double> quartiles = doubles_of(json.at(7));
    facts.Intervals =
        tracking_times::Quartiles{.Lower = quartiles.at(0), .Median = quartiles.at(1), .Upper = quartiles.at(2)};
    return facts;
}

/// Bound by name and number: a member that is new in the record does not compile until it is kept here too.
Json json_of_record(const AnimalRecord& record) {
    const auto& [id, namingId, subfolder, sampleSize, coincident, schoener, swihartSlade, method, value, bandwidth,
                 bandwidthMapUnits, href, minimized, profile, adhoc, grid, volume, adaptive, reach, beyondReach,
                 lostAtEdge, rasterName, isopleths, convexPolygons, curve, maxEdgeValue, edgeWarning, cutTo, status,
                 isoplethStatus, warnings, reason, files, times, distorted, error] = record;
    const auto& [coincidentFixes, coincidentPairs] = coincident;
    const auto& [originX, originY, cellSize, columns, rows] = grid;
    return {{"id", json_of_value(id)},
            {"naming_id", json_of_text(namingId)},
            {"subfolder", json_of_text(subfolder)},
            {"n", sampleSize},
            {"coincident_fixes", coincidentFixes},
            {"coincident_pairs", coincidentPairs},
            {"schoener", json_of_optional(schoener)},
            {"swihart_slade", json_of_optional(swihartSlade)},
            {"method", method_text(method)},
            {"value", json_of_double(value)},
            {"bandwidth", json_of_double(bandwidth)},
            {"bandwidth_map_units", json_of_double(bandwidthMapUnits)},
            {"href", json_of_double(href)},
            {"minimised", minimized},
            {"profile", json_of_profile(profile)},
            {"adhoc", json_of_adhoc(adhoc)},
            {"origin_x", json_of_double(originX)},
            {"origin_y", json_of_double(originY)},
            {"cell_size", json_of_double(cellSize)},
            {"columns", columns},
            {"rows", rows},
            {"volume", json_of_double(volume)},
            {"adaptive", adaptive},
            {"reach", json_of_double(reach)},
            {"beyond_reach", json_of_double(beyondReach)},
            {"lost_at_edge", json_of_double(lostAtEdge)},
            {"raster", json_of_text(rasterName)},
            {"isopleths", json_of_isopleths(isopleths)},
            {"convex_polygons", json_of_polygons(convexPolygons)},
            {"curve", json_of_curve(curve)},
            {"max_edge_value", json_of_optional(maxEdgeValue)},
            {"edge_warning", edgeWarning},
            {"cut_to", json_of_optional(cutTo)},
            {"status", status},
            {"isopleth_status", isoplethStatus},
            {"warnings", json_of_text(warnings)},
            {"reason", json_of_text(reason)},
            {"files", json_of_texts(files)},
            {"times", json_of_times(times)},
            {"distortion", json_of_distortion(distorted)},
            {"position_error", json_of_error(error)}};
}

AnimalRecord record_of(const Json& json) {
    return {
        .Id = value_of(json.at("id")),
        .NamingId = text_of(json.at("naming_id")),
        .Subfolder = text_of(json.at("subfolder")),
        .SampleSize = int32_of(json.at("n")),
        .Coincident = {.Fixes = int32_of(json.at("coincident_fixes")),
                       .Pairs = whole_of(json.at("coincident_pairs"), 0, INT64_MAX)},
        .Schoener = optional_of(json.at("schoener")),
        .SwihartSlade = optional_of(json.at("swihart_slade")),
        .Method = method_of_text(json.at("method").get<std::string>()),
        .Value = double_of(json.at("value")),
        .Bandwidth = double_of(json.at("bandwidth")),
        .BandwidthMapUnits = double_of(json.at("bandwidth_map_units")),
        .Href = double_of(json.at("href")),
        .Minimized = json.at("minimised").get<bool>(),
        .Profile = profile_of(json.at("profile")),
        .AdHoc = adhoc_of(json.at("adhoc")),
        .Grid = {.OriginX = double_of(json.at("origin_x")),
                 .OriginY = double_of(json.at("origin_y")),
                 .CellSize = double_of(json.at("cell_size")),
                 .Columns = int32_of(json.at("columns")),
                 .Rows = int32_of(json.at("rows"))},
        .Volume = double_of(json.at("volume")),
        .Adaptive = json.at("adaptive").get<bool>(),
        .Reach = double_of(json.at("reach")),
        .BeyondReach = double_of(json.at("beyond_reach")),
        .LostAtEdge = double_of(json.at("lost_at_edge")),
        .RasterName = text_of(json.at("raster")),
        .Isopleths = isopleths_of(json.at("isopleths")),
        .ConvexPolygons = polygons_of(json.at("convex_polygons")),
        .Curve = curve_of(json.at("curve")),
        .MaxEdgeValue = optional_of(json.at("max_edge_value")),
        .EdgeWarning = json.at("edge_warning").get<bool>(),
        .CutTo = optional_of(json.at("cut_to")),
        .Status = int32_of(json.at("status")),
        .IsoplethStatus = int32_of(json.at("isopleth_status")),
        .Warnings = text_of(json.at("warnings")),
        .Reason = text_of(json.at("reason")),
        .Files = texts_of(json.at("files")),
        .Times = times_of(json.at("times")),
        .Distorted = distortion_of(json.at("distortion")),
        .Error = error_of(json.at("position_error")),
    };
}

Json json_of_entry(const TaskEntry& entry) {
    Json messages = Json::array();
    const auto& [distribution, record, report, boxes] = entry;
    for (const platform::MessageBox& box : boxes) messages.push_back(json_of_box(box));
    return {{"distribution", distribution},
            {"record", json_of_record(record)},
            {"report", json_of_texts(report)},
            {"messages", std::move(messages)}};
}

TaskEntry entry_of(const Json& json) {
    TaskEntry entry{.Distribution = static_cast<std::size_t>(whole_of(json.at("distribution"), 0, INT64_MAX)),
                    .Record = record_of(json.at("record")),
                    .Report = texts_of(json.at("report")),
                    .Messages = {}};
    for (const Json& box : json.at("messages")) entry.Messages.push_back(box_of(box));
    return entry;
}

}  // namespace wxl::batch
