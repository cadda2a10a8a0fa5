#include "apps/cli/commands/kde_output.h"

#include "kde_tool/analysis_run.h"
#include "platform/text.h"

#include <cmath>
#include <fmt/format.h>
#include <utility>

namespace wxl::cli {

namespace {

using kde_tool::AnimalRecord;
using kde_tool::BandwidthMethod;
using platform::NumberText;

/// JSON without line breaks, one record to a line.
std::string one_line(const Json& value) {
    return value.dump(-1, ' ', false, Json::error_handler_t::replace);
}

Json minimised(const AnimalRecord& record) {
    const bool search = record.Method == BandwidthMethod::kLscv || record.Method == BandwidthMethod::kBcv;
    return search ? Json(record.Minimized) : Json();
}

/// The calculator ends each of its warnings with a carriage return.
Json warnings_of(const AnimalRecord& record) {
    Json warnings = Json::array();
    for (const std::string& line : platform::Split(record.Warnings, '\r'))
        if (!line.empty()) warnings.push_back(line);
    return warnings;
}

Json levels_of(const AnimalRecord& record) {
    Json levels = Json::array();
    for (const kde_tool::IsoplethRecord& isopleth : record.Isopleths)
        levels.push_back({{"percent", isopleth.Percent},
                          {"level", json_number(isopleth.Level)},
                          {"area", json_number(isopleth.Area)}});
    return levels;
}

std::string areas_text(const AnimalRecord& record) {
    std::string text;
    for (const kde_tool::IsoplethRecord& isopleth : record.Isopleths)
        if (isopleth.Area) text += fmt::format(", {} %: {:.6g}", NumberText(isopleth.Percent), *isopleth.Area);
    return text.empty() ? text : text + " square map units";
}

std::string outcome_text(const AnimalRecord& record) {
    if (record.Status != 0) return fmt::format("failed (code {})", record.Status);
    return record.Files.front() + areas_text(record);
}

}  // namespace

const char* method_name(BandwidthMethod method) {
    switch (method) {
        case BandwidthMethod::kLscv:
            return "lscv";
        case BandwidthMethod::kBcv:
            return "bcv";
        case BandwidthMethod::kManual:
            return "manual";
        case BandwidthMethod::kProportion:
            return "proportion";
        case BandwidthMethod::kHref:
            break;
    }
    return "href";
}

Json json_of(const AnimalRecord& record) {
    return {{"id", json_value(record.Id)},
            {"naming_id", record.NamingId},
            {"n", record.SampleSize},
            {"method", method_name(record.Method)},
            {"bandwidth", json_number(record.Bandwidth)},
            {"bandwidth_map_units", json_number(record.BandwidthMapUnits)},
            {"href", json_number(record.Href)},
            {"minimised", minimised(record)},
            {"columns", record.Grid.Columns},
            {"rows", record.Grid.Rows},
            {"cell_size", record.Grid.CellSize},
            {"origin", {json_number(record.Grid.OriginX), json_number(record.Grid.OriginY)}},
            {"volume", record.Status == 0 ? json_number(record.Volume) : Json()},
            {"raster", record.RasterName},
            {"levels", levels_of(record)},
            {"max_edge_value", json_number(record.MaxEdgeValue)},
            {"edge_warning", record.EdgeWarning},
            {"status", record.Status},
            {"isopleth_status", record.IsoplethStatus},
            {"warnings", warnings_of(record)},
            {"files", record.Files}};
}

KdeOutput::KdeOutput(Console& console, std::filesystem::path folder, bool json)
    : m_console(console),
      m_report(kde_tool::file_in_folder(folder, kde_tool::kReportFile)),
      m_settings(kde_tool::file_in_folder(folder, kde_tool::kSettingsRecordFile)),
      m_json(json) {}

std::string KdeOutput::Head() const {
    return fmt::format("{{\"report\":{},\"settings\":{},\"animals\":[", one_line(m_report.string()),
                       one_line(m_settings.string()));
}

void KdeOutput::AnimalDone(const AnimalRecord& record) {
    ++m_done;
    if (record.Status != 0) ++m_failed;
    Print(record);
}

void KdeOutput::Print(const AnimalRecord& record) {
    if (!m_json)
        return m_console.Result(fmt::format(
            "{}: {} fixes, bandwidth {}, {} x {} cells: {}", platform::ValueText(record.Id), record.SampleSize,
            NumberText(record.BandwidthMapUnits), record.Grid.Columns, record.Grid.Rows, outcome_text(record)));
    m_console.Result(m_done == 1 ? Head() : m_pending + ",");
    m_pending = one_line(json_of(record));
}

void KdeOutput::Finish(kde_tool::RunOutcome outcome) {
    const bool kept = outcome == kde_tool::RunOutcome::kComplete || outcome == kde_tool::RunOutcome::kStopped;
    if (!m_json && kept) m_console.Result("report: " + m_report.string());
    if (!m_json || m_done == 0) return;
    m_console.Result(m_pending);
    m_console.Result("]}");
}

}  // namespace wxl::cli
