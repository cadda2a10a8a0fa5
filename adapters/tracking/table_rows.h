#pragma once
#include "adapters/tracking/column_profile.h"
#include "adapters/tracking/csv_reader.h"
#include "adapters/tracking/dialect.h"

#include <cstddef>
#include <cstdint>
#include <istream>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace wxl::tracking {

/// The header of one table and the rows below it, one at a time; blank rows are skipped.
class TableRows {
public:
    static constexpr std::size_t kSampleRows = 1000;

    /// `source` must be able to seek, and stays open; `name` stands for it in messages. `dialect`: where it is known.
    TableRows(std::unique_ptr<std::istream> source, const std::string& name, const std::optional<Dialect>& dialect);

    /// Reads the header, or names the columns where there is none. RuntimeError 13 for a table without rows, of one
    /// column or of too many.
    void ReadHeader();

    /// Finds what the columns hold in the first rows.
    void TakeSample();

    /// RuntimeError 13 where the rows have a cell more than the header, and it is no name of the row.
    void CheckRowNames() const;

    const std::vector<std::string>& Header() const { return m_header; }  ///< UTF-8, trimmed
    std::int64_t HeaderLine() const { return m_headerLine; }
    bool HeaderIsMissing() const { return m_headerIsMissing; }  ///< Header holds "column 1", "column 2", ...
    const std::vector<ColumnProfile>& Profiles() const { return m_profiles; }  ///< of each column, by the sample

    /// At most so many rows are to be expected by the sample and the size of the source; 0: unknown.
    std::size_t MostRows();

    /// Lets Next read the first row, or the one at `offset` on that line.
    void Restart();
    void Seek(std::uint64_t offset, std::int64_t line) { m_reader.Seek(offset, line); }

    /// Moves to the next row; false after the last.
    bool Next();

    const std::vector<std::string_view>& Cells() const { return m_reader.Cells(); }  ///< of the row, not trimmed
    std::string_view Cell(std::size_t column) const;  ///< of the row, trimmed; empty beyond its end
    std::string Place() const;                        ///< of the row: "f.csv, line 7"
    std::int64_t Line() const { return m_reader.Line(); }
    std::uint64_t Offset() const { return m_reader.Offset(); }
    std::uint64_t Position() const { return m_reader.Position(); }  ///< bytes read so far
    const std::string& Name() const { return m_reader.Name(); }
    char Separator() const { return m_reader.Separator(); }

    /// RuntimeError 13 that names the row.
    [[noreturn]] void Refuse(const std::string& what) const;

private:
    struct DataStart {
        std::uint64_t Offset = 0;
        std::int64_t Line = 1;
    };

    void NameColumns();
    bool IsBlankRow() const;

    std::unique_ptr<std::istream> m_source;
    CsvReader m_reader;
    std::vector<std::string> m_header;
    std::vector<ColumnProfile> m_profiles;
    bool m_headerIsMissing = false;
    bool m_hasRowNames = false;  ///< a first column without a heading
    DataStart m_dataStart;
    std::int64_t m_headerLine = 1;
    std::uint64_t m_sampleEnd = 0;  ///< start of the last row of the sample
    std::size_t m_sampleRows = 0;   ///< before that row
};

}  // namespace wxl::tracking
