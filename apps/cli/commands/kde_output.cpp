#include "apps/cli/commands/kde_output.h"

#include "analysis/animal_run.h"
#include "analysis/diagnosis.h"
#include "analysis/output_names.h"
#include "analysis/summary_rows.h"
#include "apps/cli/polygon_layer.h"
#include "apps/cli/size_text.h"
#include "isopleths/clsHISO.h"
#include "platform/text.h"
#include "tracking_times/timestamps.h"

#include <cmath>
#include <cstdint>
#include <fmt/format.h>
#include <optional>
#include <string>
#include <utility>

namespace wxl::cli {

namespace {

using analysis::AnimalRecord;
using platform::NumberText;

/// From this many animals on, most of them with fewer fixes than that, the ID field is in doubt.
constexpr std::size_t kManyAnimals = 10;
constexpr std::int32_t kFewFixes = 5;

/// JSON without line breaks, one record to a line.
std::string one_line(const Json& value) {
    return value.dump(-1, ' ', false, Json::error_handler_t::replace);
}

Json minimised(const AnimalRecord& record) {
    return is_search(record.Method) ? Json(record.Minimized) : Json();
}

/// Bandwidths are above 0: 0 stands for one that was not computed.
Json computed(double bandwidth) {
    return bandwidth > 0.0 ? json_number(bandwidth) : Json();
}

/// The calculator ends each of its warnings with a carriage return.
Json warnings_of(const AnimalRecord& record) {
    Json warnings = Json::array();
    for (const std::string& line : platform::Split(record.Warnings, '\r'))
        if (!line.empty()) warnings.push_back(line);
    return warnings;
}

/// The local minima of the search, null where nothing was searched.
Json minima_of(const AnimalRecord& record) {
    return is_search(record.Method) ? json_minima(engine::ReachedRows(record.Profile)) : Json();
}

/// The search for the ad hoc bandwidth, null for other methods.
Json adhoc_of(const AnimalRecord& record) {
    if (record.Method != analysis::BandwidthMethod::kAdHoc) return {};
    Json trace = Json::array();
    for (const comparison::AdHocStep& step : record.AdHoc.Trace)
        trace.push_back({{"proportion", step.Proportion}, {"parts", step.Range.Parts}, {"holes", step.Range.Holes}});
    return {{"status", status_name(record.AdHoc.Status)},
            {"proportion", computed(record.AdHoc.Proportion)},
            {"cell_size", computed(record.AdHoc.CellSize)},
            {"trace", std::move(trace)}};
}

/// Whether the area levels off with the number of fixes; null where that cannot be told.
Json asymptote_of(const AnimalRecord& record) {
    if (!record.Curve || !record.Curve->Levelling) return {};
    return {{"n", record.Curve->Levelling->N}, {"reached", record.Curve->Levelling->Reached}};
}

Json levels_of(const AnimalRecord& record) {
    Json levels = Json::array();
    for (const analysis::IsoplethRecord& isopleth : record.Isopleths)
        levels.push_back({{"percent", isopleth.Percent},
                          {"level", json_number(isopleth.Level)},
                          {"area", json_number(isopleth.Area)}});
    return levels;
}

Json instant(const std::optional<std::int64_t>& seconds) {
    return seconds ? Json(tracking_times::instant_text(*seconds)) : Json();
}

Json distortion_of(const AnimalRecord& record) {
    if (!record.Distorted) return {};
    return {{"area", json_number(record.Distorted->Area)}, {"length", json_number(record.Distorted->Length)}};
}

std::optional<double> median_interval(const AnimalRecord& record) {
    return record.Times.Intervals ? std::optional(record.Times.Intervals->Median) : std::nullopt;
}

}  // namespace

Json json_of(const AnimalRecord& record) {
    return {{"id", json_value(record.Id)},
            {"naming_id", record.NamingId},
            {"n", record.SampleSize},
            {"method", analysis::method_name(record.Method)},
            {"bandwidth", computed(record.Bandwidth)},
            {"bandwidth_map_units", computed(record.BandwidthMapUnits)},
            {"href", computed(record.Href)},
            {"minimised", minimised(record)},
            {"local_minima", minima_of(record)},
            {"adhoc", adhoc_of(record)},
            {"reason", record.Reason.empty() ? Json() : Json(record.Reason)},
            {"columns", record.Grid.Columns},
            {"rows", record.Grid.Rows},
            {"cell_size", record.Grid.CellSize},
            {"origin", {json_number(record.Grid.OriginX), json_number(record.Grid.OriginY)}},
            {"volume", record.Status == 0 ? json_number(record.Volume) : Json()},
            {"reach", computed(record.Reach)},
            {"beyond_reach", record.Status == 0 ? json_number(record.BeyondReach) : Json()},
            {"lost_at_edge", record.Status == 0 ? json_number(record.LostAtEdge) : Json()},
            {"raster", analysis::raster_place(record)},
            {"levels", levels_of(record)},
            {"mcp", json_of(record.ConvexPolygons)},
            {"asymptote", asymptote_of(record)},
            {"max_edge_value", json_number(record.MaxEdgeValue)},
            {"edge_warning", record.EdgeWarning},
            {"status", record.Status},
            {"isopleth_status", record.IsoplethStatus},
            {"warnings", warnings_of(record)},
            {"files", record.Files},
            {"first", instant(record.Times.First)},
            {"last", instant(record.Times.Last)},
            {"days", record.Times.First ? json_number(record.Times.Days) : Json()},
            {"median_interval_s", json_number(median_interval(record))},
            {"distortion", distortion_of(record)}};
}

KdeOutput::KdeOutput(Console& console, const std::filesystem::path& folder, bool json,
                     platform::SpatialReference reference)
    : m_console(console),
      m_report(analysis::file_in_folder(folder, analysis::kReportFile)),
      m_settings(analysis::file_in_folder(folder, analysis::kSettingsRecordFile)),
      m_json(json),
      m_reference(std::move(reference)) {}

std::string KdeOutput::Head() const {
    return fmt::format("{{\"report\":{},\"settings\":{},\"animals\":[", one_line(m_report.string()),
                       one_line(m_settings.string()));
}

void KdeOutput::RunBegins(const analysis::RunFrame& frame, const analysis::GroupedFixes& animals) {
    m_methods = analysis::MethodsParagraph(frame, animals, "WXL Tools " WXL_VERSION);
    m_idField = frame.Wanted.IdField;
}

void KdeOutput::AnimalDone(const AnimalRecord& record) {
    Count(record);
    m_methods.Add(record);
    TellReason(record);
    Print(record);
}

void KdeOutput::Count(const AnimalRecord& record) {
    ++m_done;
    if (record.Status != 0) ++m_failed;
    if (record.IsoplethStatus == isopleths::isopleth_status::kFailed) ++m_withoutIsopleths;
    if (analysis::lacks_memory(record)) ++m_withoutMemory;
    if (m_animals > 0 && record.NamingId == m_animal) return;
    m_animal = record.NamingId;
    ++m_animals;
    if (record.SampleSize < kFewFixes) ++m_sparse;
    if (!record.ConvexPolygons.empty())
        report_few_fixes(platform::ValueText(record.Id), static_cast<std::size_t>(record.SampleSize), m_console);
}

/// The line of the result says already why a distribution failed.
void KdeOutput::TellReason(const AnimalRecord& record) const {
    const bool told = !m_json && record.Reason == analysis::failure_reason(record);
    if (!told && !record.Reason.empty())
        m_console.Problem(fmt::format("{}: {}", platform::ValueText(record.Id), record.Reason));
}

void KdeOutput::DoubtIdField() const {
    if (m_animals < kManyAnimals || 2 * m_sparse <= m_animals || m_idField.empty()) return;
    m_console.Problem(
        fmt::format("wxl: {} of {} animals have fewer than {} fixes: is {} the field that names the animal?", m_sparse,
                    m_animals, kFewFixes, m_idField));
}

std::string KdeOutput::AreasText(const AnimalRecord& record) const {
    std::string text;
    for (const analysis::IsoplethRecord& isopleth : record.Isopleths) {
        if (!isopleth.Area) continue;
        text += fmt::format(", {} %: {}", NumberText(isopleth.Percent), AreaText(*isopleth.Area));
    }
    for (const comparison::MinimumConvexPolygon& polygon : record.ConvexPolygons)
        text += fmt::format(", MCP {} %: {}", NumberText(polygon.Percent), AreaText(polygon.Area));
    return text;
}

std::string KdeOutput::AreaText(double area) const {
    return fmt::format("{}{}", kilometres_text(area, m_reference, 6), kilometres_unit(m_reference));
}

/// "oyster 7: 2914 fixes, 61.9 days, bandwidth 123.4 m, cells of 10 m, 95 %: 12.34 km2, 50 %: 85.2 ha"
std::string KdeOutput::WholeText(const AnimalRecord& record) const {
    std::string text = fmt::format("{}: {}", platform::ValueText(record.Id), analysis::fixes_text(record.SampleSize));
    if (record.Times.First)
        text += fmt::format(", {} day{}", short_number(record.Times.Days), record.Times.Days == 1.0 ? "" : "s");
    if (record.Status != 0)
        return text + fmt::format(": failed (code {}: {})", record.Status, analysis::failure_reason(record));
    const std::string unit = unit_text(*m_whole);
    text += fmt::format(", bandwidth {} {}, cells of {} {}", short_number(record.BandwidthMapUnits), unit,
                        NumberText(record.Grid.CellSize), unit);
    for (const analysis::IsoplethRecord& isopleth : record.Isopleths)
        if (isopleth.Area)
            text += fmt::format(", {} %: {}", NumberText(isopleth.Percent), area_text(*isopleth.Area, *m_whole));
    for (const comparison::MinimumConvexPolygon& polygon : record.ConvexPolygons)
        text += fmt::format(", MCP {} %: {}", NumberText(polygon.Percent), area_text(polygon.Area, *m_whole));
    return text;
}

void KdeOutput::Print(const AnimalRecord& record) {
    if (m_whole && !m_json) return m_console.Result(WholeText(record));
    if (m_json) {
        m_console.Result(m_done == 1 ? Head() : m_pending + ",");
        m_pending = one_line(json_of(record));
        return;
    }
    const std::string bandwidth =
        record.BandwidthMapUnits > 0.0 ? fmt::format("{:.6g}", record.BandwidthMapUnits) : "not computed";
    const std::string outcome =
        record.Status == 0 ? record.Files.front() + AreasText(record)
                           : fmt::format("failed (code {}: {})", record.Status, analysis::failure_reason(record));
    m_console.Result(fmt::format("{}: {}, bandwidth {}, {} x {} cells: {}", platform::ValueText(record.Id),
                                 analysis::fixes_text(record.SampleSize), bandwidth, record.Grid.Columns,
                                 record.Grid.Rows, outcome));
}

void KdeOutput::Finish(analysis::RunOutcome outcome) {
    DoubtIdField();
    const bool kept = outcome == analysis::RunOutcome::kComplete || outcome == analysis::RunOutcome::kStopped;
    if (!m_json && kept) m_console.Result("report: " + m_report.string());
    if (!m_json || m_done == 0) return;
    m_console.Result(m_pending);
    m_console.Result("],\"methods\":" + one_line({{"text", m_methods.Text()}, {"references", m_methods.References()}}) +
                     "}");
}

}  // namespace wxl::cli
