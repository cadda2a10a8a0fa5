#include "results_page/animal_section.h"

#include "analysis/advice.h"
#include "analysis/diagnosis.h"
#include "analysis/fix_times.h"
#include "analysis/summary_rows.h"
#include "pictures/area_curve_picture.h"
#include "pictures/axis.h"
#include "pictures/profile_picture.h"
#include "pictures/xml_text.h"
#include "platform/runtime_error.h"
#include "platform/text.h"
#include "results_page/animal_map.h"
#include "results_page/animal_table.h"
#include "results_page/map_svg.h"

#include <optional>

namespace wxl::results_page {
namespace {

using analysis::AnimalRecord;
using pictures::XmlText;

constexpr int kDigits = 5;
constexpr int kShortDigits = 4;
constexpr int kProfileWidth = 560;  ///< narrow, so that its text is readable on a telephone too

std::string fact(const std::string& name, const std::string& html) {
    return html.empty() ? std::string() : "<div><dt>" + name + "</dt><dd>" + html + "</dd></div>";
}

std::string with_unit(std::optional<double> value, const std::string& unit) {
    return value ? pictures::ShortNumber(*value, kDigits) + " " + XmlText(unit) : std::string();
}

std::string reading(std::optional<double> index, bool correlated) {
    if (!index) return "not defined";
    return pictures::ShortNumber(*index, 4) +
           (correlated ? " <a class=\"warn\" href=\"#autocorrelation\"><strong>significant autocorrelation</strong></a>"
                       : " <span class=\"quiet\">no significant autocorrelation</span>");
}

std::string schoener(const AnimalRecord& record) {
    return reading(record.Schoener, record.Schoener && (*record.Schoener < 1.6 || *record.Schoener > 2.4));
}

std::string swihart_slade(const AnimalRecord& record) {
    return reading(record.SwihartSlade, record.SwihartSlade && *record.SwihartSlade > 0.6);
}

std::string bandwidth_text(const PageRun& run, const AnimalRecord& record) {
    if (!(record.BandwidthMapUnits > 0.0)) return {};
    std::string text = with_unit(record.BandwidthMapUnits, length_unit(run)) + " (" + method_text(record.Method);
    if (const std::string search = search_text(record); !search.empty()) text += ", " + search;
    return text + ")";
}

std::string edge_text(const AnimalRecord& record) {
    if (record.CutTo)
        return "<strong class=\"warn\">cut</strong>: " + analysis::share_left_text(*record.CutTo) +
               " of the distribution lies on the raster";
    if (record.Status != 0) return {};
    switch (analysis::edge_verdict(record)) {
        case analysis::EdgeVerdict::kCut:
            return "<strong class=\"warn\">cuts off</strong> " + analysis::share_text(record.LostAtEdge) +
                   " of the distribution";
        case analysis::EdgeVerdict::kBeyondReach:
            return "clear of the kernels, which end <strong class=\"warn\">before they are whole</strong>: " +
                   analysis::share_text(record.BeyondReach) + " of the distribution lies beyond their reach";
        case analysis::EdgeVerdict::kClear:
            break;
    }
    return "clear of the distribution";
}

/// Which method the fixes allow, for those who do not know.
std::string advice(const PageRun& run, const AnimalRecord& record) {
    const bool searchBelowCell =
        analysis::is_search(record.Method) && analysis::failure_of(record) == analysis::Failure::kBelowCell;
    if (record.Status != 0 && !searchBelowCell) return {};
    const std::string text = analysis::advice_clause(analysis::advice_facts(record, run.Reference));
    return text.empty() ? text
                        : "<p class=\"advice\">If you do not know which method to take: " + XmlText(text) + ".</p>\n";
}

std::string times(const tracking_times::TimeFacts& times) {
    if (!times.First) return {};
    const std::string days = pictures::ShortNumber(times.Days, kShortDigits) + " <span class=\"quiet\">(a fix on " +
                             std::to_string(times.DaysWithFix) + ")</span>";
    const std::string interval = times.Intervals ? interval_text(times.Intervals->Median) : std::string();
    return fact("Period", analysis::period_text(times)) + fact("Days", days) + fact("Median interval", interval) +
           fact("Fixes without a time", times.WithoutTime > 0 ? std::to_string(times.WithoutTime) : "");
}

std::string facts(const PageRun& run, const AnimalRecord& record) {
    const std::string grid = std::to_string(record.Grid.Columns) + " × " + std::to_string(record.Grid.Rows) + " of " +
                             platform::NumberText(record.Grid.CellSize) + " " + XmlText(length_unit(run));
    return "<dl class=\"facts\">" + fact("Fixes", std::to_string(record.SampleSize)) + times(record.Times) +
           fact("Bandwidth", bandwidth_text(run, record)) +
           fact("HREF", with_unit(analysis::href_in_map_units(record), length_unit(run))) +
           fact("Volume captured", volume_text(run, record)) + fact("Raster edge", edge_text(record)) +
           fact("Schoener index", schoener(record)) + fact("Swihart and Slade index", swihart_slade(record)) +
           fact("Raster", "<code>" + XmlText(analysis::raster_place(record)) + "</code>") + fact("Cells", grid) +
           "</dl>\n";
}

/// Heads of the columns of an area: in square kilometres and in hectares, where its unit is known.
std::string area_heads(const PageRun& run) {
    return "<th scope=\"col\" class=\"num\">Area (" + XmlText(area_unit(run)) + ")</th>" +
           (has_kilometres(run) ? "<th scope=\"col\" class=\"num\">Area (ha)</th>" : "");
}

std::string area_cells(const PageRun& run, std::optional<double> area) {
    const auto cell = [](const std::string& text) {
        return "<td class=\"num\">" + (text.empty() ? "–" : text) + "</td>";
    };
    return cell(area_text(run, area)) + (has_kilometres(run) ? cell(hectares_text(run, area)) : "");
}

std::string areas(const PageRun& run, const AnimalRecord& record) {
    const std::vector<double> percentages = falling_percentages(run);
    if (percentages.empty() || record.Isopleths.empty()) return {};
    std::string html = "<table class=\"areas\"><caption>Isopleths</caption><thead><tr><th scope=\"col\">Percent</th>" +
                       area_heads(run) + "</tr></thead><tbody>";
    for (std::size_t i = 0; i < percentages.size(); ++i)
        html += "<tr><th scope=\"row\">" + line_sample(look_of(i)) + platform::NumberText(percentages[i]) + " %</th>" +
                area_cells(run, area_at(record, percentages[i])) + "</tr>";
    return html + "</tbody></table>\n";
}

std::string convex_polygons(const PageRun& run, const AnimalRecord& record) {
    if (record.ConvexPolygons.empty()) return {};
    std::string html =
        "<table class=\"areas\"><caption>Minimum convex polygons</caption><thead><tr><th scope=\"col\">Percent of the "
        "fixes</th><th scope=\"col\" class=\"num\">Fixes</th>" +
        area_heads(run) + "</tr></thead><tbody>";
    for (const comparison::MinimumConvexPolygon& polygon : record.ConvexPolygons)
        html += "<tr><th scope=\"row\">" + line_sample(kPolygonLook) + platform::NumberText(polygon.Percent) +
                " %</th><td class=\"num\">" + std::to_string(polygon.Kept) + "</td>" +
                area_cells(run, comparison::area_of(polygon)) + "</tr>";
    return html + "</tbody></table>\n";
}

std::string map_figure(const PageRun& run, std::size_t number, const PictureSize& size,
                       const platform::Services& services) {
    const AnimalRecord& record = run.Records[number];
    if (record.Status != 0) return "<p class=\"missing\">No distribution was computed, so there is no map.</p>\n";
    try {
        const std::string map = animal_map(run, number, size, services);
        if (map.empty()) return "<p class=\"missing\">The raster is not in the folder, so there is no map.</p>\n";
        return "<figure class=\"mapped\">" + map + "</figure>\n";
    } catch (...) {
        return "<p class=\"missing\">There is no map: " + XmlText(platform::CurrentError().Description) + "</p>\n";
    }
}

std::string minima_caption(const AnimalRecord& record, const std::string& units) {
    const engine::SearchProfile minima = engine::LocalMinima(engine::ReachedRows(record.Profile));
    if (minima.empty()) return "<figcaption>The score has no local minimum inside the range.</figcaption>";
    std::string html = minima.size() == 1 ? "<figcaption>Local minimum inside the range: bandwidth "
                                          : "<figcaption>Local minima inside the range: bandwidth ";
    for (std::size_t i = 0; i < minima.size(); ++i)
        html += (i == 0 ? "" : "; ") + with_unit(minima[i].Bandwidth, units) + " (score " +
                pictures::ShortNumber(minima[i].Score, kDigits) + ")";
    return html + "</figcaption>";
}

std::string profile_figure(const PageRun& run, std::size_t number) {
    const AnimalRecord& record = run.Records[number];
    if (!analysis::is_search(record.Method) || record.Profile.empty()) return {};
    pictures::ProfilePicture picture;
    picture.Title = record_name(run, record);
    picture.Method = method_text(record.Method);
    picture.Units = run.Wanted.Rescale ? "standard deviations" : length_unit(run);
    pictures::SetCurve(picture, record.Profile);
    picture.Minimised = record.Minimized;
    if (record.Href > 0.0) picture.Href = record.Href;
    if (record.Bandwidth > 0.0) picture.Bandwidth = record.Bandwidth;
    return "<figure class=\"profile\">" +
           pictures::ProfileSvg(picture,
                                {.IdPrefix = "profile-" + std::to_string(number + 1), .Width = kProfileWidth}) +
           minima_caption(record, picture.Units) + "</figure>\n";
}

std::string curve_figure(const PageRun& run, std::size_t number) {
    const AnimalRecord& record = run.Records[number];
    if (!record.Curve || record.Curve->Sizes.size() < 2) return {};
    pictures::AreaCurvePicture picture;
    picture.Title = record_name(run, record);
    picture.Of = "Minimum convex polygon of the first fixes";
    picture.Units = area_unit(run);
    const double unit = analysis::square_kilometres(1.0, run.Reference).value_or(1.0);
    for (const comparison::CurveSize& size : record.Curve->Sizes)
        picture.Points.push_back(
            {size.N, size.Area ? std::optional(*size.Area * unit) : std::nullopt, std::nullopt, std::nullopt});
    if (const auto& levelling = record.Curve->Levelling) {
        picture.LevelsAt = levelling->N;
        picture.Reached = levelling->Reached;
    }
    return "<figure class=\"profile\">" +
           pictures::AreaCurveSvg(picture, "curve-" + std::to_string(number + 1), kProfileWidth) + "<figcaption>" +
           XmlText(pictures::AsymptoteText(picture)) +
           " Fixes that follow each other are seldom independent: a curve that is level by their number may still grow "
           "with time.</figcaption></figure>\n";
}

/// The proportions that the ad hoc search tried, as a table to open.
std::string adhoc_trace(const PageRun& run, const AnimalRecord& record) {
    if (record.AdHoc.Trace.empty()) return {};
    std::string html =
        "<details class=\"trace\"><summary>Ad hoc bandwidth: " +
        pictures::ShortNumber(record.AdHoc.Proportion, kDigits) + " × HREF, " +
        std::to_string(record.AdHoc.Trace.size()) +
        " proportions tried</summary>\n<table class=\"areas\"><thead><tr><th scope=\"col\">Proportion of HREF</th>"
        "<th scope=\"col\" class=\"num\">Bandwidth (" +
        XmlText(length_unit(run)) +
        ")</th><th scope=\"col\" class=\"num\">Parts of the 95 % range</th><th scope=\"col\" class=\"num\">Holes</th>"
        "</tr></thead><tbody>";
    for (const comparison::AdHocStep& step : record.AdHoc.Trace)
        html += "<tr><th scope=\"row\">" + pictures::ShortNumber(step.Proportion, kDigits) + "</th><td class=\"num\">" +
                pictures::ShortNumber(step.Proportion * record.AdHoc.Href, kDigits) + "</td><td class=\"num\">" +
                std::to_string(step.Range.Parts) + "</td><td class=\"num\">" + std::to_string(step.Range.Holes) +
                "</td></tr>";
    return html + "</tbody></table></details>\n";
}

}  // namespace

std::string animal_section(const PageRun& run, std::size_t number, const PictureSize& size,
                           const platform::Services& services) {
    const AnimalRecord& record = run.Records[number];
    const std::string id = section_id(number + 1);
    std::string html = "<article class=\"animal\" id=\"" + id + "\" aria-labelledby=\"" + id + "-name\">\n<h3 id=\"" +
                       id + "-name\"><bdi>" + XmlText(record_name(run, record)) + "</bdi></h3>\n";
    if (!record.Reason.empty()) html += "<p class=\"reason\">" + XmlText(record.Reason) + ".</p>\n";
    html += "<div class=\"columns\"><div>\n" + map_figure(run, number, size, services) + "</div><div>\n" +
            areas(run, record) + convex_polygons(run, record) + facts(run, record) + advice(run, record) +
            "</div></div>\n" + profile_figure(run, number) + adhoc_trace(run, record) + curve_figure(run, number);
    return html + "<p class=\"back\"><a href=\"#results\">Back to the table<span class=\"hidden\"> from " +
           XmlText(record_name(run, record)) + "</span></a></p>\n</article>\n";
}

}  // namespace wxl::results_page
