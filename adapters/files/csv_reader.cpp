#include "adapters/files/csv_reader.h"

#include "platform/runtime_error.h"
#include "platform/text.h"

#include <algorithm>
#include <cstring>
#include <utility>

namespace wxl::files {

namespace {

using platform::Raise;
namespace error_number = platform::error_number;

constexpr std::string_view kSeparators = ",;\t";
constexpr std::size_t kBlock = std::size_t{1} << 20;
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

CsvReader::CsvReader(std::istream& source, std::string name) : m_source(source), m_name(std::move(name)) {
    ReadMore();
    SkipMark();
    if (!TakeSeparatorLine()) FindSeparator();
}

bool CsvReader::Next() {
    do {
        m_cells.clear();
        m_unescaped.clear();
        SkipLineFeedOfPair();
        if (!HasBytes()) return false;
        while (ScanRecord() == Scan::kNeedsMore) ReadMore();
    } while (IsBlankRecord());
    return true;
}

void CsvReader::SkipMark() {
    const std::string_view start(m_buffer.data(), std::min<std::size_t>(m_end, 3));
    if (start.substr(0, 2) == "\xFF\xFE" || start.substr(0, 2) == "\xFE\xFF")
        Raise(error_number::kTypeMismatch, m_name + " is UTF-16 text: save it as CSV in UTF-8");
    if (start == "\xEF\xBB\xBF") m_begin = 3;
}

/// Takes the line "sep=;" by which spreadsheets tell each other the separator.
bool CsvReader::TakeSeparatorLine() {
    constexpr std::string_view kKey = "sep=";
    const std::string_view text(m_buffer.data() + m_begin, m_end - m_begin);
    const std::size_t length = kKey.size() + 1;
    if (text.size() < length || !platform::EqualNoCase(text.substr(0, kKey.size()), kKey)) return false;
    if (kSeparators.find(text[kKey.size()]) == std::string_view::npos) return false;
    if (text.size() > length && !is_line_end(text[length])) return false;
    m_separator = text[kKey.size()];
    m_afterReturn = text.size() > length && text[length] == '\r';
    m_position += std::min(length + 1, text.size());
    m_begin += std::min(length + 1, text.size());
    ++m_line;
    return true;
}

void CsvReader::FindSeparator() {
    std::size_t most = 0;
    for (const char candidate : kSeparators) {
        bool quoted = false;
        std::size_t count = 0;
        for (std::size_t i = m_begin; i < m_end && (quoted || !is_line_end(m_buffer[i])); ++i) {
            if (m_buffer[i] == '"') quoted = !quoted;
            if (m_buffer[i] == candidate && !quoted) ++count;
        }
        if (count <= most) continue;
        most = count;
        m_separator = candidate;
    }
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
    m_begin = 0;
    m_end = kept;
    if (m_buffer.size() < 2 * kept + kBlock) m_buffer.resize(2 * kept + kBlock);
    m_source.read(m_buffer.data() + m_end, static_cast<std::streamsize>(m_buffer.size() - m_end));
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
    for (;;) {
        if (at < m_end && m_buffer[at] == '"') {
            if (ScanQuoted(at) == Scan::kNeedsMore) return Scan::kNeedsMore;
        } else {
            ScanPlain(at);
        }
        if (at == m_end && !m_exhausted) return Scan::kNeedsMore;
        if (at == m_end || is_line_end(m_buffer[at])) break;
        ++at;
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
    while (at < m_end && !IsCellEnd(at)) ++at;
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
    while (at < m_end && !IsCellEnd(at)) ++at;
    m_cells.emplace_back(m_buffer.data() + start, at - start);
}

bool CsvReader::IsCellEnd(std::size_t at) const {
    return m_buffer[at] == m_separator || is_line_end(m_buffer[at]);
}

bool CsvReader::IsBlankRecord() const {
    return m_cells.size() == 1 && m_cells[0].find_first_not_of(" \t") == std::string_view::npos;
}

}  // namespace wxl::files
