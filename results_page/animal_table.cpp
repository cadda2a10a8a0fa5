#include "results_page/animal_table.h"

#include "analysis/diagnosis.h"
#include "analysis/fix_times.h"
#include "analysis/summary_rows.h"
#include "pictures/axis.h"
#include "pictures/xml_text.h"
#include "platform/text.h"
#include "results_page/result_table.h"

#include <algorithm>
#include <cmath>
#include <functional>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace wxl::results_page {
namespace {

using analysis::AnimalRecord;
using pictures::XmlText;
using platform::NumberText;

constexpr int kDigits = 5;
constexpr int kShortDigits = 4;

using Cell = TableCell;

struct Column {
    TableColumn Head;
    std::function<Cell(const AnimalRecord&)> Show;
};

Cell number_cell(std::optional<double> value) {
    if (!value || !std::isfinite(*value)) return {"", std::nullopt};
    return {pictures::ShortNumber(*value, kDigits), value};
}

Cell remark(const AnimalRecord& record) {
    return {XmlText(record.Reason)};
}

Cell search_cell(const AnimalRecord& record) {
    if (record.Status != 0) return {"<strong class=\"bad\">failed</strong>"};
    const std::string text = search_text(record);
    return {text == "not minimised" ? "<strong class=\"warn\">not minimised</strong>" : text};
}

Cell edge_cell(const AnimalRecord& record) {
    if (record.Status != 0) return {""};
    switch (analysis::edge_verdict(record)) {
        case analysis::EdgeVerdict::kCut:
            return {"<strong class=\"warn\">cut</strong>"};
        case analysis::EdgeVerdict::kBeyondReach:
            return {"<strong class=\"warn\">kernels cut</strong>"};
        case analysis::EdgeVerdict::kClear:
            break;
    }
    return {"clear"};
}

bool is_lossy(const AnimalRecord& record) {
    return analysis::edge_verdict(record) != analysis::EdgeVerdict::kClear;
}

Column number_column(const std::string& title, std::function<Cell(const AnimalRecord&)> show) {
    return {{title, ColumnLook::kNumber}, std::move(show)};
}

Column text_column(const std::string& title, std::function<Cell(const AnimalRecord&)> show) {
    return {{title, ColumnLook::kText}, std::move(show)};
}

std::optional<double> positive(double value) {
    return value > 0.0 ? std::optional(value) : std::nullopt;
}

Cell period_cell(const AnimalRecord& record) {
    const std::string text = analysis::period_text(record.Times);
    return {text.empty() ? text : "<span class=\"period\">" + text + "</span>"};
}

/// When the fixes were taken, where that is known of any animal.
void add_times(const PageRun& run, std::vector<Column>& columns) {
    if (!has_times(run)) return;
    columns.push_back(text_column("Period", [](const AnimalRecord& r) { return period_cell(r); }));
    columns.push_back(number_column("Days", [](const AnimalRecord& r) {
        return r.Times.First ? Cell{pictures::ShortNumber(r.Times.Days, kShortDigits), r.Times.Days} : Cell();
    }));
    columns.push_back(number_column("Median interval", [](const AnimalRecord& r) {
        const auto& intervals = r.Times.Intervals;
        return intervals ? Cell{interval_text(intervals->Median), intervals->Median} : Cell();
    }));
}

void add_bandwidths(const PageRun& run, std::vector<Column>& columns) {
    const std::string length = length_unit(run);
    columns.push_back(text_column("Method", [](const AnimalRecord& r) { return Cell{method_text(r.Method)}; }));
    columns.push_back(number_column("Bandwidth (" + length + ")",
                                    [](const AnimalRecord& r) { return number_cell(positive(r.BandwidthMapUnits)); }));
    columns.push_back(number_column("HREF (" + length + ")",
                                    [](const AnimalRecord& r) { return number_cell(analysis::href_in_map_units(r)); }));
    if (std::ranges::any_of(run.Records, [](const auto& r) { return r.Status != 0 || analysis::is_search(r.Method); }))
        columns.push_back(text_column("Search", search_cell));
}

Cell area_cell(const PageRun& run, std::optional<double> area) {
    std::string html = area_text(run, area);
    if (const std::string hectares = hectares_text(run, area); !hectares.empty())
        html += "<br><span class=\"quiet\">" + hectares + " ha</span>";
    return {html, area};
}

/// The area of the polygon of the run's percentage at `index`.
Cell polygon_cell(const PageRun& run, const AnimalRecord& record, std::size_t index) {
    if (index >= record.ConvexPolygons.size()) return {""};
    const auto area = comparison::area_of(record.ConvexPolygons[index]);
    return area_cell(run, area);
}

void add_areas(const PageRun& run, std::vector<Column>& columns) {
    for (const double percent : falling_percentages(run))
        columns.push_back(
            number_column(NumberText(percent) + " % area (" + area_unit(run) + ")",
                          [&run, percent](const auto& r) { return area_cell(run, area_at(r, percent)); }));
    for (std::size_t i = 0; i < run.Wanted.ConvexPercentages.Values.size(); ++i)
        columns.push_back(
            number_column("MCP " + NumberText(run.Wanted.ConvexPercentages.Values[i]) + " % (" + area_unit(run) + ")",
                          [&run, i](const AnimalRecord& r) { return polygon_cell(run, r, i); }));
}

std::vector<Column> columns_of(const PageRun& run) {
    std::vector<Column> columns = {number_column("Fixes", [](const AnimalRecord& r) {
        return Cell{std::to_string(r.SampleSize), r.SampleSize};
    })};
    add_areas(run, columns);
    add_bandwidths(run, columns);
    add_times(run, columns);
    columns.push_back(number_column("Volume captured", [&run](const AnimalRecord& r) {
        const std::string text = volume_text(run, r);
        return Cell{text, text.empty() ? std::nullopt : std::optional(r.Volume)};
    }));
    if (run.Wanted.Isopleths || std::any_of(run.Records.begin(), run.Records.end(), is_lossy))
        columns.push_back(text_column("Edge", edge_cell));
    // First, where it is seen in a narrow window too.
    if (std::any_of(run.Records.begin(), run.Records.end(), [](const auto& r) { return !r.Reason.empty(); }))
        columns.insert(columns.begin(), Column{{"Remarks", ColumnLook::kRemark}, remark});
    return columns;
}

}  // namespace

std::vector<double> falling_percentages(const PageRun& run) {
    std::vector<double> percentages = run.Wanted.Isopleths ? run.Wanted.Percentages.Values : std::vector<double>();
    std::sort(percentages.begin(), percentages.end(), std::greater<>());
    percentages.erase(std::unique(percentages.begin(), percentages.end()), percentages.end());
    return percentages;
}

std::optional<double> area_at(const AnimalRecord& record, double percent) {
    for (const analysis::IsoplethRecord& isopleth : record.Isopleths)
        if (isopleth.Percent == percent) return isopleth.Area;
    return std::nullopt;
}

std::string animal_table(const PageRun& run) {
    const std::vector<Column> columns = columns_of(run);
    std::vector<TableColumn> heads;
    for (const Column& column : columns) heads.push_back(column.Head);
    std::vector<TableRow> rows;
    for (const AnimalRecord& record : run.Records) {
        rows.push_back({record_name(run, record), {}});
        for (const Column& column : columns) rows.back().Cells.push_back(column.Show(record));
    }
    return result_table(heads, rows);
}

}  // namespace wxl::results_page
