#include "analysis/summary_rows.h"

#include "analysis/diagnosis.h"
#include "platform/foreign_cell.h"
#include "platform/text.h"
#include "tracking_times/timestamps.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <iterator>

namespace wxl::analysis {
namespace {

using platform::NumberText;

constexpr std::size_t kRasterColumn = 14;
constexpr double kHectaresPerSquareKilometre = 100.0;
/// The header of before, and what its rows lack of the present one.
constexpr std::string_view kShortHeader = kSummaryHeader.substr(0, kSummaryHeader.find(",area_ha"));
constexpr auto kColumnsSince = std::ranges::count(kSummaryHeader.substr(kShortHeader.size()), ',');

constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";

std::string number(std::optional<double> value) {
    return value && std::isfinite(*value) ? NumberText(*value) : std::string();
}

std::string utf8(const std::string& text) {
    return platform::IsUtf8(text) ? text : platform::FromWindows1252(text);
}

std::string line_of(const std::vector<std::string>& cells) {
    std::string line;
    for (std::size_t i = 0; i < cells.size(); ++i) line += (i == 0 ? "" : ",") + platform::ForeignCell(utf8(cells[i]));
    return line + "\r\n";
}

/// One row of comma-separated text as it stands there, and its cells.
struct Row {
    std::string_view Text;  ///< without the line end
    std::vector<std::string> Cells;
};

/// Takes rows off the front of a text.
class RowReader {
public:
    explicit RowReader(std::string_view text) : m_text(text) {}
    bool AtEnd() const { return m_text.empty(); }

    /// The next row; nothing when it ends within quotes.
    std::optional<Row> Next() {
        Row row;
        row.Cells.emplace_back();
        bool quoted = false;
        std::size_t at = 0;
        for (; at < m_text.size() && (quoted || (m_text[at] != '\n' && m_text[at] != '\r')); ++at) {
            const char c = m_text[at];
            const bool doubled = quoted && c == '"' && at + 1 < m_text.size() && m_text[at + 1] == '"';
            if (c == ',' && !quoted)
                row.Cells.emplace_back();
            else if (c != '"')
                row.Cells.back() += c;
            else if (doubled)
                row.Cells.back() += m_text[++at];
            else
                quoted = !quoted;
        }
        if (quoted) return std::nullopt;
        row.Text = m_text.substr(0, at);
        m_text.remove_prefix(at);
        SkipLineEnd();
        return row;
    }

private:
    void SkipLineEnd() {
        if (m_text.starts_with('\r')) m_text.remove_prefix(1);
        if (m_text.starts_with('\n')) m_text.remove_prefix(1);
    }

    std::string_view m_text;
};

bool is_replaced(const Row& row, const std::set<std::string>& replaced) {
    if (row.Cells.size() <= kRasterColumn) return false;
    const std::string& raster = row.Cells[kRasterColumn];
    return replaced.contains(raster) || (raster.starts_with('\'') && replaced.contains(raster.substr(1)));
}

}  // namespace

std::string raster_place(const AnimalRecord& record) {
    return (record.Subfolder.empty() ? "" : record.Subfolder + "/") + record.RasterName;
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
    return line_of(cells);
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

std::optional<std::string> kept_summary(std::string_view earlier, const std::set<std::string>& replaced) {
    std::string text = std::string(kSummaryHeader) + "\r\n";
    if (earlier.starts_with(kByteOrderMark)) earlier.remove_prefix(kByteOrderMark.size());
    RowReader reader(earlier);
    if (reader.AtEnd()) return text;
    const auto header = reader.Next();
    const bool isShort = header && line_of(header->Cells) == std::string(kShortHeader) + "\r\n";
    if (!header || (!isShort && line_of(header->Cells) != text)) return std::nullopt;
    const std::string since(isShort ? kColumnsSince : 0, ',');
    while (!reader.AtEnd()) {
        const auto row = reader.Next();
        if (!row) return std::nullopt;
        if (!row->Text.empty() && !is_replaced(*row, replaced)) text += std::string(row->Text) + since + "\r\n";
    }
    return text;
}

}  // namespace wxl::analysis
