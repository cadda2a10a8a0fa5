#pragma once
#include <cstdint>
#include <deque>
#include <istream>
#include <string>
#include <string_view>
#include <vector>

namespace wxl::files {

/// Records of a text with separated values (RFC 4180, and what programs make of it), one at a time and in little
/// memory.
///
/// Line ends are LF, CRLF or CR, also mixed. Cells in quotes may hold separators, line ends and doubled quotes. The
/// separator is the one among comma, semicolon and tab that the first line has most of, or the one that a line "sep=;"
/// before the header names. A UTF-8 mark at the start and
/// blank lines are skipped. RuntimeError with file and line for a quoted cell that never ends, for UTF-16, and for a
/// source that cannot be read.
class CsvReader {
public:
    /// `source` outlives the reader; `name` stands for it in messages.
    CsvReader(std::istream& source, std::string name);

    /// Moves to the next record; false after the last.
    bool Next();

    /// Cells of the current record, without their quotes, in the bytes of the source; good until Next.
    const std::vector<std::string_view>& Cells() const { return m_cells; }

    /// Line on which the current record starts, the first being 1.
    std::int64_t Line() const { return m_recordLine; }

    char Separator() const { return m_separator; }
    const std::string& Name() const { return m_name; }

    /// Bytes of the records met so far.
    std::uint64_t Position() const { return m_position; }

private:
    enum class Scan { kRecord, kNeedsMore };

    void SkipMark();
    bool TakeSeparatorLine();
    void FindSeparator();
    bool HasBytes();
    void ReadMore();
    void SkipLineFeedOfPair();
    Scan ScanRecord();
    Scan ScanQuoted(std::size_t& at);
    void ScanPlain(std::size_t& at);
    bool IsCellEnd(std::size_t at) const;
    bool IsBlankRecord() const;

    std::istream& m_source;
    std::string m_name;
    char m_separator = ',';
    std::string m_buffer;
    std::size_t m_begin = 0;  ///< first byte of the buffer that belongs to no record yet
    std::size_t m_end = 0;    ///< end of the bytes read into the buffer
    bool m_exhausted = false;
    bool m_afterReturn = false;  ///< the last record ended in CR: a LF that follows belongs to it
    std::int64_t m_line = 1;     ///< line of m_begin
    std::int64_t m_recordLine = 1;
    std::int64_t m_linesInRecord = 0;
    std::uint64_t m_position = 0;
    std::vector<std::string_view> m_cells;
    std::deque<std::string> m_unescaped;  ///< cells that are no plain stretch of the buffer
};

}  // namespace wxl::files
