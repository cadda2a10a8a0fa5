#include "analysis/summary_rows.h"

#include "analysis/diagnosis.h"
#include "platform/text.h"
#include "tracking_times/timestamps.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <iterator>
#include <utility>
#include <vector>

namespace wxl::analysis {
namespace {

using platform::NumberText;

constexpr double kHectaresPerSquareKilometre = 100.0;

std::string number(std::optional<double> value) {
    return value && std::isfinite(*value) ? NumberText(*value) : std::string();
}

}  // namespace

std::string raster_place(const AnimalRecord& record) {
    return (record.Subfolder.empty() ? "" : record.Subfolder + "/") + record.RasterName;
}

std::string plain_raster_place(const AnimalRecord& record, const std::string& prefix) {
    return (record.Subfolder.empty() ? "" : record.Subfolder + "/") + prefix + record.NamingId;
}

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
        case BandwidthMethod::kAdHoc:
            return "adhoc";
        case BandwidthMethod::kHref:
            break;
    }
    return "href";
}

std::optional<double> href_in_map_units(const AnimalRecord& record) {
    if (!(record.Href > 0.0) || !(record.Bandwidth > 0.0)) return std::nullopt;
    if (record.Bandwidth == record.BandwidthMapUnits) return record.Href;
    return record.Href * (record.BandwidthMapUnits / record.Bandwidth);
}

std::optional<double> square_kilometres(std::optional<double> area, const platform::SpatialReference& reference) {
    const double metres = reference.MetersPerUnit;
    if (!area || reference.IsGeographic || !(metres > 0.0)) return std::nullopt;
    return *area * metres * metres / 1e6;
}

namespace {

std::string instant(const std::optional<std::int64_t>& seconds) {
    return seconds ? tracking_times::instant_text(*seconds) : std::string();
}

/// The last columns of a row, from that of the area in hectares.
std::vector<std::string> closing_cells(const AnimalRecord& record, std::optional<double> squareKilometres) {
    const tracking_times::TimeFacts& times = record.Times;
    const auto& distorted = record.Distorted;
    return {number(squareKilometres ? std::optional(*squareKilometres * kHectaresPerSquareKilometre) : std::nullopt),
            instant(times.First),
            instant(times.Last),
            number(times.First ? std::optional(times.Days) : std::nullopt),
            number(times.Intervals ? std::optional(times.Intervals->Median) : std::nullopt),
            number(distorted ? std::optional(distorted->Area) : std::nullopt),
            number(distorted ? std::optional(distorted->Length) : std::nullopt)};
}

std::string row_of(std::vector<std::string> cells, const AnimalRecord& record, std::optional<double> squareKilometres) {
    std::ranges::move(closing_cells(record, squareKilometres), std::back_inserter(cells));
    return summary_line(cells);
}

}  // namespace

std::string summary_rows(const AnimalRecord& record, const platform::SpatialReference& reference) {
    const bool done = record.Status == 0;
    const auto row = [&](const IsoplethRecord* isopleth) {
        const std::optional<double> area = isopleth ? isopleth->Area : std::nullopt;
        const std::optional<double> squareKilometres = square_kilometres(area, reference);
        return row_of(
            {platform::ValueText(record.Id), record.NamingId, std::to_string(record.SampleSize),
             method_name(record.Method), record.BandwidthMapUnits > 0.0 ? number(record.BandwidthMapUnits) : "",
             number(href_in_map_units(record)),
             !is_search(record.Method) ? ""
             : record.Minimized        ? "yes"
                                       : "no",
             record.Reason, isopleth ? number(isopleth->Percent) : "", isopleth ? number(isopleth->Level) : "",
             number(area), number(squareKilometres), done ? number(record.Volume) : "",
             !record.MaxEdgeValue ? ""
             : record.EdgeWarning ? "yes"
                                  : "no",
             raster_place(record), std::to_string(record.Status)},
            record, squareKilometres);
    };
    if (record.Isopleths.empty()) return row(nullptr);
    std::string rows;
    for (const IsoplethRecord& isopleth : record.Isopleths) rows += row(&isopleth);
    return rows;
}

std::string polygon_rows(const AnimalRecord& record, const platform::SpatialReference& reference) {
    std::string rows;
    for (const comparison::MinimumConvexPolygon& polygon : record.ConvexPolygons) {
        const auto area = comparison::area_of(polygon);
        const bool good = polygon.Status == comparison::PolygonStatus::kGood;
        const auto squareKilometres = square_kilometres(area, reference);
        rows += row_of({platform::ValueText(record.Id), record.NamingId, std::to_string(record.SampleSize), "mcp", "",
                        "", "", good ? "" : std::string(status_name(polygon.Status)), number(polygon.Percent), "",
                        number(area), number(squareKilometres), "", "", raster_place(record), "0"},
                       record, squareKilometres);
    }
    return rows;
}

}  // namespace wxl::analysis
