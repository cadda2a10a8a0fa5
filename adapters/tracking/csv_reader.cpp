#include "adapters/tracking/csv_reader.h"

#include "platform/runtime_error.h"
#include "platform/text.h"

#include <algorithm>
#include <cstring>
#include <utility>

namespace wxl::tracking {

namespace {

using platform::Raise;
namespace error_number = platform::error_number;

constexpr std::size_t kBlock = std::size_t{1} << 20;
constexpr std::size_t kBlockAfterSeek = std::size_t{4} << 10;
constexpr std::size_t kLongestRecord = std::size_t{16} << 20;

bool is_line_end(char c) {
    return c == '\n' || c == '\r';
}

/// Line ends in `text`, CR LF counted once.
std::int64_t count_line_ends(std::string_view text) {
    std::int64_t count = 0;
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (text[i] == '\r' || (text[i] == '\n' && (i == 0 || text[i - 1] != '\r'))) ++count;
    }
    return count;
}

/// The text between quotes with doubled quotes made single.
std::string without_doubled_quotes(std::string_view quoted) {
    std::string text;
    text.reserve(quoted.size());
    for (std::size_t i = 0; i < quoted.size(); ++i) {
        text += quoted[i];
        if (quoted[i] == '"') ++i;
    }
    return text;
}

}  // namespace

CsvReader::CsvReader(std::istream& source, std::string name)
    : m_source(source), m_name(std::move(name)), m_block(kBlock) {
    ReadMore();
    Start(find_dialect(std::string_view(m_buffer.data(), m_end)));
}

CsvReader::CsvReader(std::istream& source, std::string name, const Dialect& dialect)
    : m_source(source), m_name(std::move(name)), m_block(kBlock) {
    ReadMore();
    Start(dialect);
}

void CsvReader::Start(const Dialect& dialect) {
    m_dialect = dialect;
    m_begin = m_dialect.Start;
    m_position = m_begin;
    m_line = m_dialect.Line;
    m_endsCell.fill(false);
    const char other = m_dialect.Separator == ' ' ? '\t' : m_dialect.Separator;
    for (const char end : {m_dialect.Separator, other, '\n', '\r'}) m_endsCell[static_cast<unsigned char>(end)] = true;
}

void CsvReader::Seek(std::uint64_t offset, std::int64_t line) {
    m_afterReturn = false;
    m_line = line;
    if (offset >= m_bufferOffset && offset <= m_bufferOffset + m_end) {
        m_begin = static_cast<std::size_t>(offset - m_bufferOffset);
        return;
    }
    m_source.clear();
    m_source.seekg(static_cast<std::streamoff>(offset));
    m_bufferOffset = offset;
    m_begin = 0;
    m_end = 0;
    m_exhausted = false;
    m_block = kBlockAfterSeek;
}

bool CsvReader::Next() {
    do {
        m_cells.clear();
        m_unescaped.clear();
        SkipLineFeedOfPair();
        if (!HasBytes()) return false;
        m_recordOffset = m_bufferOffset + m_begin;
        while (ScanRecord() == Scan::kNeedsMore) ReadMore();
    } while (IsBlankRecord());
    return true;
}

bool CsvReader::HasBytes() {
    if (m_begin == m_end && !m_exhausted) ReadMore();
    return m_begin < m_end;
}

/// Moves the unread bytes to the front and fills the rest of the buffer, which grows when a record needs it.
void CsvReader::ReadMore() {
    const std::size_t kept = m_end - m_begin;
    if (kept > kLongestRecord)
        Raise(error_number::kTypeMismatch,
              m_name + ", line " + std::to_string(m_line) + ": a record of more than 16 MB; is a quote never closed?");
    std::memmove(m_buffer.data(), m_buffer.data() + m_begin, kept);
    m_bufferOffset += m_begin;
    m_begin = 0;
    m_end = kept;
    const std::size_t wanted = kept + m_block;
    m_block = std::min(2 * m_block, std::max(kBlock, kept));
    if (m_buffer.size() < wanted) m_buffer.resize(wanted);
    m_source.read(m_buffer.data() + m_end, static_cast<std::streamsize>(wanted - kept));
    m_end += static_cast<std::size_t>(m_source.gcount());
    if (m_source.bad()) Raise(error_number::kDeviceIo, m_name + " could not be read to its end");
    m_exhausted = m_source.eof();
}

void CsvReader::SkipLineFeedOfPair() {
    if (!std::exchange(m_afterReturn, false)) return;
    if (HasBytes() && m_buffer[m_begin] == '\n') ++m_begin;
}

CsvReader::Scan CsvReader::ScanRecord() {
    m_cells.clear();
    m_unescaped.clear();
    m_linesInRecord = 1;
    std::size_t at = m_begin;
    SkipBlanks(at);
    for (;;) {
        if (at < m_end && m_buffer[at] == '"') {
            if (ScanQuoted(at) == Scan::kNeedsMore) return Scan::kNeedsMore;
        } else {
            ScanPlain(at);
        }
        SkipBlanks(at);
        if (at == m_end && !m_exhausted) return Scan::kNeedsMore;
        if (at == m_end || is_line_end(m_buffer[at])) break;
        if (m_dialect.Separator != ' ') ++at;
    }
    m_afterReturn = at < m_end && m_buffer[at] == '\r';
    if (at < m_end) ++at;
    m_position += at - m_begin;
    m_begin = at;
    m_recordLine = m_line;
    m_line += m_linesInRecord;
    return Scan::kRecord;
}

/// Takes the cell whose opening quote stands at `at`, and leaves `at` at its separator or line end. Text between the
/// closing quote and the separator is kept as part of the cell.
CsvReader::Scan CsvReader::ScanQuoted(std::size_t& at) {
    const std::size_t open = at + 1;
    bool doubled = false;
    std::size_t close = open;
    for (;; close += 2, doubled = true) {
        const void* quote = std::memchr(m_buffer.data() + close, '"', m_end - close);
        if (quote == nullptr && !m_exhausted) return Scan::kNeedsMore;
        if (quote == nullptr)
            Raise(error_number::kTypeMismatch,
                  m_name + ", line " + std::to_string(m_line) + ": a quote is opened and never closed");
        close = static_cast<std::size_t>(static_cast<const char*>(quote) - m_buffer.data());
        if (close + 1 == m_end && !m_exhausted) return Scan::kNeedsMore;
        if (close + 1 == m_end || m_buffer[close + 1] != '"') break;
    }
    const std::string_view quoted(m_buffer.data() + open, close - open);
    m_linesInRecord += count_line_ends(quoted);
    at = close + 1;
    at = CellEnd(at);
    if (!doubled && at == close + 1) {
        m_cells.push_back(quoted);
    } else {
        const std::string_view rest(m_buffer.data() + close + 1, at - close - 1);
        m_cells.emplace_back(m_unescaped.emplace_back(without_doubled_quotes(quoted) + std::string(rest)));
    }
    return Scan::kRecord;
}

void CsvReader::ScanPlain(std::size_t& at) {
    const std::size_t start = at;
    at = CellEnd(at);
    m_cells.emplace_back(m_buffer.data() + start, at - start);
}

std::size_t CsvReader::CellEnd(std::size_t at) const {
    const std::string_view bytes(m_buffer.data(), m_end);
    while (at < m_end && !m_endsCell[static_cast<unsigned char>(bytes[at])]) ++at;
    return at;
}

/// Where blanks part the cells, a run of them is one separator, and none at the ends of a line.
void CsvReader::SkipBlanks(std::size_t& at) const {
    if (m_dialect.Separator != ' ') return;
    while (at < m_end && (m_buffer[at] == ' ' || m_buffer[at] == '\t')) ++at;
}

bool CsvReader::IsBlankRecord() const {
    return m_cells.size() == 1 && m_cells[0].find_first_not_of(" \t") == std::string_view::npos;
}

}  // namespace wxl::tracking
