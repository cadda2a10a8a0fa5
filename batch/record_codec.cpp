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
    for (const analysis::IsoplethRecord& isopleth : isopleths)
        json.push_back({json_of_double(isopleth.Percent), json_of_double(isopleth.Level),
                        json_of_optional(isopleth.Area), json_of_shape(isopleth.Shape), isopleth.Parts});
    return json;
}

std::vector<analysis::IsoplethRecord> isopleths_of(const Json& json) {
    std::vector<analysis::IsoplethRecord> isopleths;
    for (const Json& one : json)
        isopleths.push_back({double_of(one.at(0)), double_of(one.at(1)), optional_of(one.at(2)), shape_of(one.at(3)),
                             int32_of(one.at(4))});
    return isopleths;
}

Json json_of_profile(const engine::SearchProfile& profile) {
    Json json = Json::array();
    for (const engine::ProfileRow& point : profile) {
        json.push_back(json_of_double(point.Bandwidth));
        json.push_back(json_of_double(point.Score));
    }
    return json;
}

engine::SearchProfile profile_of(const Json& json) {
    engine::SearchProfile profile;
    for (std::size_t i = 0; i < json.size(); i += 2)
        profile.push_back({double_of(json.at(i)), double_of(json.at(i + 1))});
    return profile;
}

Json json_of_adhoc(const comparison::AdHocBandwidth& adhoc) {
    Json trace = Json::array();
    for (const comparison::AdHocStep& step : adhoc.Trace)
        trace.push_back({json_of_double(step.Proportion), step.Range.Parts, step.Range.Holes});
    return {json_of_enumeration(adhoc.Status), json_of_double(adhoc.Href),     json_of_double(adhoc.Proportion),
            json_of_double(adhoc.Bandwidth),   json_of_double(adhoc.CellSize), std::move(trace)};
}

comparison::AdHocBandwidth adhoc_of(const Json& json) {
    comparison::AdHocBandwidth adhoc;
    adhoc.Status = enumeration_of(json.at(0), comparison::AdHocStatus::kNoBandwidth);
    adhoc.Href = double_of(json.at(1));
    adhoc.Proportion = double_of(json.at(2));
    adhoc.Bandwidth = double_of(json.at(3));
    adhoc.CellSize = double_of(json.at(4));
    for (const Json& step : json.at(5))
        adhoc.Trace.push_back({double_of(step.at(0)), {int32_of(step.at(1)), int32_of(step.at(2))}});
    return adhoc;
}

Json json_of_curve(const std::optional<comparison::AreaCurve>& curve) {
    if (!curve) return nullptr;
    Json sizes = Json::array();
    for (const comparison::CurveSize& size : curve->Sizes)
        sizes.push_back({size.N, json_of_optional(size.Area), json_of_optional(size.Low), json_of_optional(size.High)});
    Json levelling = nullptr;
    if (curve->Levelling) levelling = {curve->Levelling->N, curve->Levelling->Reached};
    return {std::move(sizes), std::move(levelling), json_of_double(curve->CellSize)};
}

std::optional<comparison::AreaCurve> curve_of(const Json& json) {
    if (json.is_null()) return std::nullopt;
    const auto count = [](const Json& number) { return static_cast<std::size_t>(whole_of(number, 0, INT64_MAX)); };
    comparison::AreaCurve curve;
    for (const Json& size : json.at(0))
        curve.Sizes.push_back(
            {count(size.at(0)), optional_of(size.at(1)), optional_of(size.at(2)), optional_of(size.at(3))});
    if (!json.at(1).is_null())
        curve.Levelling = comparison::Asymptote{count(json.at(1).at(0)), json.at(1).at(1).get<bool>()};
    curve.CellSize = double_of(json.at(2));
    return curve;
}

Json json_of_polygons(const std::vector<comparison::MinimumConvexPolygon>& polygons) {
    Json json = Json::array();
    for (const comparison::MinimumConvexPolygon& polygon : polygons) {
        Json corners = Json::array();
        for (const platform::Point& corner : polygon.Corners) {
            corners.push_back(json_of_double(corner.X));
            corners.push_back(json_of_double(corner.Y));
        }
        json.push_back({json_of_double(polygon.Percent), json_of_enumeration(polygon.Status),
                        json_of_double(polygon.Area), polygon.Kept, std::move(corners)});
    }
    return json;
}

std::vector<comparison::MinimumConvexPolygon> polygons_of(const Json& json) {
    std::vector<comparison::MinimumConvexPolygon> polygons;
    for (const Json& one : json) {
        comparison::MinimumConvexPolygon& polygon = polygons.emplace_back();
        polygon.Percent = double_of(one.at(0));
        polygon.Status = enumeration_of(one.at(1), comparison::PolygonStatus::kNoArea);
        polygon.Area = double_of(one.at(2));
        polygon.Kept = static_cast<std::size_t>(whole_of(one.at(3), 0, INT64_MAX));
        const Json& corners = one.at(4);
        for (std::size_t i = 0; i < corners.size(); i += 2)
            polygon.Corners.push_back({double_of(corners.at(i)), double_of(corners.at(i + 1))});
    }
    return polygons;
}

Json json_of_box(const platform::MessageBox& box) {
    return {{"text", json_of_text(box.Text)},
            {"title", json_of_text(box.Title)},
            {"icon", json_of_enumeration(box.Sign)},
            {"kind", json_of_enumeration(box.Kind)}};
}

platform::MessageBox box_of(const Json& json) {
    return {.Text = text_of(json.at("text")),
            .Title = text_of(json.at("title")),
            .Sign = enumeration_of(json.at("icon"), platform::Icon::kInformation),
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
    return analysis::PositionError{double_of(json.at(0)), text_of(json.at(1)), json.at(2).get<bool>()};
}

/// Bound by name and number, as the record below.
Json json_of_times(const tracking_times::TimeFacts& facts) {
    const auto& [withTime, withoutTime, first, last, days, daysWithFix, equalTimes, intervals] = facts;
    const auto instant = [](const std::optional<std::int64_t>& seconds) { return seconds ? Json(*seconds) : Json(); };
    Json quartiles;
    if (intervals) quartiles = json_of_doubles({intervals->Lower, intervals->Median, intervals->Upper});
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
    tracking_times::TimeFacts facts{count(0), count(1), instant(2), instant(3), double_of(json.at(4)),
                                    count(5), count(6), {}};
    if (json.at(7).is_null()) return facts;
    const std::vector<double> quartiles = doubles_of(json.at(7));
    facts.Intervals = tracking_times::Quartiles{quartiles.at(0), quartiles.at(1), quartiles.at(2)};
    return facts;
}

/// Bound by name and number: a member that is new in the record does not compile until it is kept here too.
Json json_of_record(const AnimalRecord& record) {
    const auto& [id, namingId, subfolder, sampleSize, coincident, schoener, swihartSlade, method, value, bandwidth,
                 bandwidthMapUnits, href, minimized, profile, adhoc, grid, volume, adaptive, reach, beyondReach,
                 lostAtEdge, rasterName, isopleths, convexPolygons, curve, maxEdgeValue, edgeWarning, cutTo, status,
                 isoplethStatus, warnings, reason, files, times, distorted, error] = record;
    return {{"id", json_of_value(id)},
            {"naming_id", json_of_text(namingId)},
            {"subfolder", json_of_text(subfolder)},
            {"n", sampleSize},
            {"coincident_fixes", coincident.Fixes},
            {"coincident_pairs", coincident.Pairs},
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
            {"origin_x", json_of_double(grid.OriginX)},
            {"origin_y", json_of_double(grid.OriginY)},
            {"cell_size", json_of_double(grid.CellSize)},
            {"columns", grid.Columns},
            {"rows", grid.Rows},
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
            {"distortion", distorted ? json_of_doubles({distorted->Area, distorted->Length}) : Json()},
            {"position_error", json_of_error(error)}};
}

AnimalRecord record_of(const Json& json) {
    AnimalRecord record;
    record.Id = value_of(json.at("id"));
    record.NamingId = text_of(json.at("naming_id"));
    record.Subfolder = text_of(json.at("subfolder"));
    record.SampleSize = int32_of(json.at("n"));
    record.Coincident = {int32_of(json.at("coincident_fixes")), whole_of(json.at("coincident_pairs"), 0, INT64_MAX)};
    record.Schoener = optional_of(json.at("schoener"));
    record.SwihartSlade = optional_of(json.at("swihart_slade"));
    record.Method = method_of_text(json.at("method").get<std::string>());
    record.Value = double_of(json.at("value"));
    record.Bandwidth = double_of(json.at("bandwidth"));
    record.BandwidthMapUnits = double_of(json.at("bandwidth_map_units"));
    record.Href = double_of(json.at("href"));
    record.Minimized = json.at("minimised").get<bool>();
    record.Profile = profile_of(json.at("profile"));
    record.AdHoc = adhoc_of(json.at("adhoc"));
    record.Grid = {double_of(json.at("origin_x")), double_of(json.at("origin_y")), double_of(json.at("cell_size")),
                   int32_of(json.at("columns")), int32_of(json.at("rows"))};
    record.Volume = double_of(json.at("volume"));
    record.Adaptive = json.at("adaptive").get<bool>();
    record.Reach = double_of(json.at("reach"));
    record.BeyondReach = double_of(json.at("beyond_reach"));
    record.LostAtEdge = double_of(json.at("lost_at_edge"));
    record.RasterName = text_of(json.at("raster"));
    record.Isopleths = isopleths_of(json.at("isopleths"));
    record.ConvexPolygons = polygons_of(json.at("convex_polygons"));
    record.Curve = curve_of(json.at("curve"));
    record.MaxEdgeValue = optional_of(json.at("max_edge_value"));
    record.EdgeWarning = json.at("edge_warning").get<bool>();
    record.CutTo = optional_of(json.at("cut_to"));
    record.Status = int32_of(json.at("status"));
    record.IsoplethStatus = int32_of(json.at("isopleth_status"));
    record.Warnings = text_of(json.at("warnings"));
    record.Reason = text_of(json.at("reason"));
    record.Files = texts_of(json.at("files"));
    record.Times = times_of(json.at("times"));
    if (const Json& shares = json.at("distortion"); !shares.is_null())
        record.Distorted = platform::Distortion{double_of(shares.at(0)), double_of(shares.at(1))};
    record.Error = error_of(json.at("position_error"));
    return record;
}

Json json_of_entry(const TaskEntry& entry) {
    Json messages = Json::array();
    for (const platform::MessageBox& box : entry.Messages) messages.push_back(json_of_box(box));
    return {{"distribution", entry.Distribution},
            {"record", json_of_record(entry.Record)},
            {"report", json_of_texts(entry.Report)},
            {"messages", std::move(messages)}};
}

TaskEntry entry_of(const Json& json) {
    TaskEntry entry;
    entry.Distribution = static_cast<std::size_t>(whole_of(json.at("distribution"), 0, INT64_MAX));
    entry.Record = record_of(json.at("record"));
    entry.Report = texts_of(json.at("report"));
    for (const Json& box : json.at("messages")) entry.Messages.push_back(box_of(box));
    return entry;
}

}  // namespace wxl::batch
