#include "results_page/animal_table.h"

#include "analysis/diagnosis.h"
#include "analysis/summary_rows.h"
#include "pictures/axis.h"
#include "pictures/xml_text.h"
#include "platform/text.h"

#include <algorithm>
#include <cmath>
#include <functional>

namespace wxl::results_page {
namespace {

using analysis::AnimalRecord;
using pictures::XmlText;
using platform::NumberText;

constexpr int kDigits = 5;

/// A cell: what it shows (HTML), and the number that it is sorted by where it is one.
struct Cell {
    std::string Html;
    std::optional<double> Number = {};
};

struct Column {
    std::string Title;
    bool Numeric = false;
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

/// The area of the polygon of the run's percentage at `index`.
Cell polygon_cell(const PageRun& run, const AnimalRecord& record, std::size_t index) {
    if (index >= record.ConvexPolygons.size()) return {""};
    const auto area = comparison::area_of(record.ConvexPolygons[index]);
    return {area_text(run, area), area};
}

bool is_lossy(const AnimalRecord& record) {
    return analysis::edge_verdict(record) != analysis::EdgeVerdict::kClear;
}

std::vector<Column> columns_of(const PageRun& run) {
    const std::string length = length_unit(run);
    std::vector<Column> columns = {
        {"Fixes", true,
         [](const AnimalRecord& r) {
             return Cell{std::to_string(r.SampleSize), r.SampleSize};
         }},
        {"Method", false, [](const AnimalRecord& r) { return Cell{method_text(r.Method)}; }},
        {"Bandwidth (" + length + ")", true,
         [](const AnimalRecord& r) {
             return number_cell(r.BandwidthMapUnits > 0.0 ? std::optional(r.BandwidthMapUnits) : std::nullopt);
         }},
        {"HREF (" + length + ")", true,
         [](const AnimalRecord& r) { return number_cell(analysis::href_in_map_units(r)); }},
        {"Search", false, search_cell}};
    for (const double percent : falling_percentages(run))
        columns.push_back(
            {NumberText(percent) + " % area (" + area_unit(run) + ")", true, [&run, percent](const AnimalRecord& r) {
                 const auto area = area_at(r, percent);
                 return Cell{area_text(run, area), area};
             }});
    for (std::size_t i = 0; i < run.Wanted.ConvexPercentages.Values.size(); ++i)
        columns.push_back({"MCP " + NumberText(run.Wanted.ConvexPercentages.Values[i]) + " % (" + area_unit(run) + ")",
                           true, [&run, i](const AnimalRecord& r) { return polygon_cell(run, r, i); }});
    columns.push_back({"Volume captured", true, [&run](const AnimalRecord& r) {
                           const std::string text = volume_text(run, r);
                           return Cell{text, text.empty() ? std::nullopt : std::optional(r.Volume)};
                       }});
    if (run.Wanted.Isopleths || std::any_of(run.Records.begin(), run.Records.end(), is_lossy))
        columns.push_back({"Edge", false, edge_cell});
    // First, where it is seen in a narrow window too.
    if (std::any_of(run.Records.begin(), run.Records.end(), [](const auto& r) { return !r.Reason.empty(); }))
        columns.insert(columns.begin(), Column{"Remarks", false, remark});
    return columns;
}

std::string head_cell(const std::string& title, bool numeric) {
    return std::string("<th scope=\"col\"") + (numeric ? " class=\"num\"" : "") +
           " aria-sort=\"none\"><button type=\"button\">" + XmlText(title) + "</button></th>";
}

std::string body_cell(const Cell& cell, const Column& column) {
    const bool remarks = column.Title == "Remarks";
    return std::string("<td") +
           (column.Numeric ? " class=\"num\""
            : remarks      ? " class=\"remark\""
                           : "") +
           (cell.Number ? " data-value=\"" + NumberText(*cell.Number) + "\"" : "") + ">" +
           (cell.Html.empty() ? "<span class=\"none\">–</span>" : cell.Html) + "</td>";
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
    std::string html =
        "<div class=\"scroll\" role=\"region\" aria-label=\"Table of results\" tabindex=\"0\">\n"
        "<table id=\"results-table\"><thead><tr>" +
        head_cell("Animal", false);
    for (const Column& column : columns) html += head_cell(column.Title, column.Numeric);
    html += "</tr></thead>\n<tbody>\n";
    for (std::size_t i = 0; i < run.Records.size(); ++i) {
        html += "<tr><th scope=\"row\"><a href=\"#" + section_id(i + 1) + "\"><bdi>" +
                XmlText(record_name(run, run.Records[i])) + "</bdi></a></th>";
        for (const Column& column : columns) html += body_cell(column.Show(run.Records[i]), column);
        html += "</tr>\n";
    }
    return html + "</tbody></table></div>\n<p id=\"sorted\" class=\"hidden\" role=\"status\"></p>\n";
}

}  // namespace wxl::results_page
