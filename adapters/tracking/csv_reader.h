#pragma once
#include "adapters/tracking/dialect.h"

#include <array>
#include <cstdint>
#include <deque>
#include <istream>
#include <string>
#include <string_view>
#include <vector>

namespace wxl::tracking {

/// Records of a text with separated values (RFC 4180, and what programs make of it), one at a time and in little
/// memory. The first one is the header, wherever the text has it (find_dialect).
///
/// Line ends are LF, CRLF or CR, also mixed. Cells in quotes may hold separators, line ends and doubled quotes. Blank
/// lines are skipped. RuntimeError with file and line for a quoted cell that never ends, and for a source that cannot
/// be read.
class CsvReader {
public:
    /// `source` outlives the reader; `name` stands for it in messages.
    CsvReader(std::istream& source, std::string name);

    /// For a text whose dialect is known.
    CsvReader(std::istream& source, std::string name, const Dialect& dialect);

    /// Moves to the next record; false after the last.
    bool Next();

    /// Cells of the current record, without their quotes, in the bytes of the source; good until Next.
    const std::vector<std::string_view>& Cells() const { return m_cells; }

    /// Byte at which the current record starts; Seek brings it back.
    std::uint64_t Offset() const { return m_recordOffset; }

    /// Lets Next read the record that starts at `offset`, which is one that Offset told, on that line. Cheap where
    /// records follow one another, or nearly so. The source must be able to seek.
    void Seek(std::uint64_t offset, std::int64_t line);

    /// Line on which the current record starts, the first being 1.
    std::int64_t Line() const { return m_recordLine; }

    char Separator() const { return m_dialect.Separator; }
    const std::string& Name() const { return m_name; }

    /// Bytes of the records met so far.
    std::uint64_t Position() const { return m_position; }

private:
    enum class Scan { kRecord, kNeedsMore };

    void Start(const Dialect& dialect);
    bool HasBytes();
    void ReadMore();
    void SkipLineFeedOfPair();
    Scan ScanRecord();
    Scan ScanQuoted(std::size_t& at);
    void ScanPlain(std::size_t& at);
    void SkipBlanks(std::size_t& at) const;
    std::size_t CellEnd(std::size_t at) const;
    bool IsBlankRecord() const;

    std::istream& m_source;
    std::string m_name;
    Dialect m_dialect;
    std::array<bool, 256> m_endsCell{};  ///< bytes that end a cell outside quotes
    std::string m_buffer;
    std::uint64_t m_bufferOffset = 0;  ///< of the buffer's first byte in the source
    std::size_t m_block;               ///< bytes to read next time
    std::size_t m_begin = 0;           ///< first byte of the buffer that belongs to no record yet
    std::size_t m_end = 0;             ///< end of the bytes read into the buffer
    bool m_exhausted = false;
    bool m_afterReturn = false;  ///< the last record ended in CR: a LF that follows belongs to it
    std::int64_t m_line = 1;     ///< line of m_begin
    std::int64_t m_recordLine = 1;
    std::uint64_t m_recordOffset = 0;
    std::int64_t m_linesInRecord = 0;
    std::uint64_t m_position = 0;
    std::vector<std::string_view> m_cells;
    std::deque<std::string> m_unescaped;  ///< cells that are no plain stretch of the buffer
};

}  // namespace wxl::tracking
