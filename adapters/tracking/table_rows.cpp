#include "adapters/tracking/table_rows.h"

#include "adapters/tracking/cell_text.h"
#include "adapters/tracking/number_text.h"
#include "adapters/tracking/time_text.h"
#include "platform/runtime_error.h"
#include "platform/text.h"

#include <algorithm>
#include <fmt/format.h>
#include <utility>

namespace wxl::tracking {

namespace {

using platform::Trim;

constexpr std::size_t kMostColumns = 32767;

bool is_number_cell(std::string_view cell) {
    return number_from_text(Trim(cell)).has_value();
}

/// Whether a row holds numbers or times where a header would hold names.
bool looks_like_data(const std::vector<std::string_view>& cells) {
    const auto tells = [](std::string_view cell) {
        const std::string_view text = Trim(cell);
        const auto time = time_from_text(text, {});
        return is_number_cell(text) || (time && time->HasTimeOfDay);
    };
    return std::count_if(cells.begin(), cells.end(), tells) >= 2;
}

}  // namespace

TableRows::TableRows(std::unique_ptr<std::istream> source, const std::string& name,
                     const std::optional<Dialect>& dialect)
    : m_source(std::move(source)),
      m_reader(dialect ? CsvReader(*m_source, name, *dialect) : CsvReader(*m_source, name)) {}

void TableRows::ReadHeader() {
    if (!m_reader.Next())
        platform::Raise(platform::error_number::kTypeMismatch,
                        m_reader.Name() + " is empty: it needs a header row and one row per fix");
    const auto& cells = m_reader.Cells();
    if (cells.size() == 1)
        Refuse(fmt::format("the header is in one piece: \"{}\"; separate the columns by commas, semicolons or tabs",
                           shown(cells[0])));
    if (cells.size() > kMostColumns)
        Refuse(fmt::format("the header has {} columns, and at most {} are read: keep those that matter", cells.size(),
                           kMostColumns));
    for (const std::string_view cell : cells) m_header.push_back(to_utf8(Trim(cell)));
    m_dataStart = {m_reader.Offset(), m_reader.Line()};
    m_headerLine = m_reader.Line();
    if (looks_like_data(cells)) {
        NameColumns();
        return;
    }
    if (!m_reader.Next()) {
        // Nothing follows the header.
        m_dataStart = {m_reader.Position(), m_reader.Line()};
        return;
    }
    m_dataStart = {m_reader.Offset(), m_reader.Line()};
    const auto& first = m_reader.Cells();
    // Names of rows stand before the columns and have no heading of their own; a last cell that is always empty has
    // none either.
    if (first.size() != m_header.size() + 1) return;
    const bool atEnd = Trim(first.back()).empty();
    m_hasRowNames = !atEnd;
    m_header.insert(atEnd ? m_header.end() : m_header.begin(), "");
}

/// Names for the columns of a table that has none.
void TableRows::NameColumns() {
    m_headerIsMissing = true;
    for (std::size_t i = 0; i < m_header.size(); ++i) m_header[i] = fmt::format("column {}", i + 1);
}

void TableRows::TakeSample() {
    m_profiles.resize(m_header.size());
    Restart();
    for (std::size_t row = 0; row < kSampleRows && Next(); ++row) {
        if (m_reader.Cells().size() != m_header.size()) continue;
        for (std::size_t i = 0; i < m_header.size(); ++i) m_profiles[i].Take(Cell(i));
        m_sampleEnd = m_reader.Offset();
        m_sampleRows = row;
    }
}

/// Names of rows differ from one another; a first column that repeats itself is one of the header's, and some cell
/// holds the separator.
void TableRows::CheckRowNames() const {
    if (!m_hasRowNames || m_profiles.front().IsEmpty()) return;
    const auto is_srid = [](const ColumnProfile& profile) {
        return std::ranges::any_of(profile.Values(), [](const std::string& cell) { return cell.starts_with("SRID="); });
    };
    if (m_profiles.front().AllDistinct() && std::ranges::none_of(m_profiles, is_srid)) return;
    platform::Raise(
        platform::error_number::kTypeMismatch,
        fmt::format("{}, line {}: the header has {} cells, and the rows have {}; name each column, and put cells "
                    "that hold the separator in quotes",
                    m_reader.Name(), m_headerLine, m_header.size() - 1, m_header.size()));
}

std::size_t TableRows::MostRows() {
    m_source->clear();
    const auto here = m_source->tellg();
    m_source->seekg(0, std::ios::end);
    const auto end = m_source->tellg();
    m_source->seekg(here);
    if (end <= 0 || m_sampleRows == 0 || m_sampleEnd <= m_dataStart.Offset) return 0;
    const double perRow = static_cast<double>(m_sampleEnd - m_dataStart.Offset) / static_cast<double>(m_sampleRows);
    const double rows = static_cast<double>(end) / perRow * 1.05;
    return static_cast<std::size_t>(rows) + 1;
}

void TableRows::Restart() {
    Seek(m_dataStart.Offset, m_dataStart.Line);
}

bool TableRows::Next() {
    while (m_reader.Next())
        if (!IsBlankRow()) return true;
    return false;
}

/// Rows of nothing, or of dashes, as reports have them between groups and at their ends.
bool TableRows::IsBlankRow() const {
    return std::ranges::all_of(m_reader.Cells(), [](std::string_view cell) {
        return cell.find_first_not_of(" -=\t\"") == std::string_view::npos;
    });
}

std::string_view TableRows::Cell(std::size_t column) const {
    const auto& cells = m_reader.Cells();
    return column < cells.size() ? Trim(cells[column]) : std::string_view();
}

std::string TableRows::Place() const {
    return fmt::format("{}, line {}", m_reader.Name(), m_reader.Line());
}

void TableRows::Refuse(const std::string& what) const {
    platform::Raise(platform::error_number::kTypeMismatch, Place() + ": " + what);
}

}  // namespace wxl::tracking
