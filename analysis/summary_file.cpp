#include "analysis/summary_file.h"

#include "platform/file_system.h"
#include "platform/foreign_cell.h"
#include "platform/text.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <utility>

namespace wxl::analysis {
namespace {

constexpr std::uint64_t kLargestSummary = 256ULL << 20U;
constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";
constexpr std::string_view kLineEnd = "\r\n";

std::string utf8(const std::string& text) {
    return platform::IsUtf8(text) ? text : platform::FromWindows1252(text);
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

std::size_t raster_column(std::string_view header) {
    const std::vector<std::string> names = platform::Split(header, ',');
    return static_cast<std::size_t>(std::ranges::find(names, "raster") - names.begin());
}

bool is_replaced(const Row& row, std::size_t column, const std::set<std::string>& replaced) {
    if (row.Cells.size() <= column) return false;
    const std::string& raster = row.Cells[column];
    return replaced.contains(raster) || (raster.starts_with('\'') && replaced.contains(raster.substr(1)));
}

bool is_header(const Row& row, std::string_view header) {
    return !header.empty() && summary_line(row.Cells) == std::string(header) + std::string(kLineEnd);
}

/// What rows below the header lack of the present columns; nothing for the header of something else.
std::optional<std::string> columns_since(const SummaryColumns& columns, const Row& header) {
    if (is_header(header, columns.Header)) return std::string();
    if (!is_header(header, columns.EarlierHeader)) return std::nullopt;
    const std::string_view since = columns.Header.substr(columns.EarlierHeader.size());
    return std::string(static_cast<std::size_t>(std::ranges::count(since, ',')), ',');
}

}  // namespace

std::string summary_line(const std::vector<std::string>& cells) {
    std::string line;
    for (std::size_t i = 0; i < cells.size(); ++i) line += (i == 0 ? "" : ",") + platform::ForeignCell(utf8(cells[i]));
    return line.append(kLineEnd);
}

std::optional<std::string> kept_summary(const SummaryColumns& columns, std::string_view earlier,
                                        const std::set<std::string>& replaced) {
    std::string text(columns.Header);
    text += kLineEnd;
    if (earlier.starts_with(kByteOrderMark)) earlier.remove_prefix(kByteOrderMark.size());
    RowReader reader(earlier);
    if (reader.AtEnd()) return text;
    const auto header = reader.Next();
    const auto since = header ? columns_since(columns, *header) : std::nullopt;
    if (!since) return std::nullopt;
    const std::size_t raster = raster_column(columns.Header);
    while (!reader.AtEnd()) {
        const auto row = reader.Next();
        if (!row) return std::nullopt;
        if (!row->Text.empty() && !is_replaced(*row, raster, replaced))
            text.append(row->Text).append(*since).append(kLineEnd);
    }
    return text;
}

void SummaryFile::Begin(std::filesystem::path file) {
    m_file = std::move(file);
    m_rows.clear();
    m_rasters.clear();
}

void SummaryFile::Add(const std::string& rows, const std::string& raster) {
    m_rows += rows;
    m_rasters.insert(raster);
}

bool SummaryFile::Publish() {
    const auto kept = kept_summary(m_columns, Earlier(), m_rasters);
    if (kept) platform::PublishFile(*m_services.Files, m_file, *kept + m_rows);
    return kept.has_value();
}

std::string SummaryFile::ForeignText() const {
    return "Warning: " + m_file.string() +
           " is not a summary of this tool and was left as it is; no summary was written.";
}

std::string SummaryFile::Earlier() const {
    return m_services.Files->FileExists(m_file) ? m_services.Files->ReadFile(m_file, kLargestSummary) : std::string();
}

}  // namespace wxl::analysis
