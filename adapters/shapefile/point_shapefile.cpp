#include "adapters/shapefile/point_shapefile.h"

#include "adapters/disk/byte_order.h"
#include "adapters/shapefile/shapefile_parts.h"
#include "platform/text.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>

namespace wxl::files {

using platform::FieldType;
using platform::FieldValue;

namespace {

constexpr std::uint64_t kHeaderLength = 100;
constexpr std::uint64_t kRowsAtOnce = 1024;
constexpr std::uint64_t kIndexEntry = 8;
constexpr std::size_t kRecordHeader = 8;
constexpr std::size_t kShortestPoint = 20;   // type and two coordinates
constexpr std::uint64_t kLongestPoint = 36;  // and height and measure

bool is_point_type(std::uint32_t type) {
    constexpr std::array<std::uint32_t, 3> kPoints = {1, 11, 21};
    return std::find(kPoints.begin(), kPoints.end(), type) != kPoints.end();
}

/// Whether bytes 32 to 126 are ASCII in texts of that encoding, and no part of another character.
bool keeps_ascii(const std::string& encoding) {
    constexpr std::array<std::string_view, 3> kFamilies = {"UTF-8", "ISO-8859-", "CP125"};
    return encoding.empty() || std::any_of(kFamilies.begin(), kFamilies.end(),
                                           [&](std::string_view family) { return encoding.starts_with(family); });
}

bool parse_text(std::string_view cell, FieldValue& value) {
    const std::size_t last = cell.find_last_not_of(' ');
    if (last == std::string_view::npos || cell.front() == ' ') return false;
    cell = cell.substr(0, last + 1);
    if (!std::all_of(cell.begin(), cell.end(), [](char c) { return c >= ' ' && c <= '~'; })) return false;
    value = std::string(cell);
    return true;
}

/// The number between blanks: an optional minus, digits and perhaps a point among them; empty when it is no such
/// number.
std::string_view plain_number(std::string_view cell, bool whole) {
    const std::size_t begin = cell.find_first_not_of(' ');
    if (begin == std::string_view::npos) return {};
    cell = cell.substr(begin, cell.find_last_not_of(' ') + 1 - begin);
    std::string_view digits = cell;
    if (digits.front() == '-') digits.remove_prefix(1);
    int points = 0;
    for (const char c : digits) {
        if (c == '.' && !whole)
            ++points;
        else if (c < '0' || c > '9')
            return {};
    }
    const bool plain = !digits.empty() && digits.front() != '.' && digits.back() != '.' && points <= 1;
    return plain ? cell : std::string_view();
}

bool parse_integer(std::string_view cell, FieldValue& value) {
    constexpr std::size_t kLongest = 18;
    const std::string_view text = plain_number(cell, true);
    std::int64_t number = 0;
    if (text.empty() || text.size() > kLongest) return false;
    std::from_chars(text.data(), text.data() + text.size(), number);
    value = number;
    return true;
}

bool parse_double(std::string_view cell, FieldValue& value) {
    const std::string_view text = plain_number(cell, false);
    double number = 0.0;
    if (text.empty()) return false;
    std::from_chars(text.data(), text.data() + text.size(), number);
    value = number;
    return true;
}

}  // namespace

PointShapefile::Files::Files(const std::filesystem::path& shapefile)
    : Shapes(shapefile),
      Index(part_of(shapefile, "shx")),
      Table(part_of(shapefile, "dbf")),
      Layout(DbfLayout::Read(Table)) {
    std::array<char, kHeaderLength> header;
    Shapes.Read(0, header);
    ShapeType = load_little<std::uint32_t>(header, 32);
    Rows =
        std::min<std::uint64_t>(Layout.Rows(), (std::max(Index.Size(), kHeaderLength) - kHeaderLength) / kIndexEntry);
}

PointShapefile::PointShapefile(std::unique_ptr<Files> files, std::vector<Content> contents)
    : m_files(std::move(files)), m_contents(std::move(contents)) {}

std::unique_ptr<PointShapefile> PointShapefile::Open(const std::filesystem::path& shapefile,
                                                     std::span<const platform::Field> fields,
                                                     std::span<const std::string> wanted, const std::string& encoding) {
    auto files = std::make_unique<Files>(shapefile);
    if (!is_point_type(files->ShapeType) || files->Layout.Rows() != files->Rows) return nullptr;
    std::vector<Content> contents = ContentsOf(files->Layout, fields, wanted, encoding);
    if (contents.empty()) return nullptr;
    return std::unique_ptr<PointShapefile>(new PointShapefile(std::move(files), std::move(contents)));
}

/// By column; empty when one that is asked for can only be read by OGR.
std::vector<PointShapefile::Content> PointShapefile::ContentsOf(const DbfLayout& layout,
                                                                std::span<const platform::Field> fields,
                                                                std::span<const std::string> wanted,
                                                                const std::string& encoding) {
    if (fields.size() != layout.Columns().size()) return {};
    std::vector<Content> contents(fields.size(), Content::kUnasked);
    for (std::size_t i = 0; i < fields.size(); ++i) {
        const bool isAsked = wanted.empty() || std::any_of(wanted.begin(), wanted.end(), [&](const std::string& name) {
                                 return platform::EqualNoCase(name, fields[i].Name);
                             });
        if (!isAsked) continue;
        const char type = layout.Columns()[i].Type;
        const bool isNumber = type == 'N' || type == 'F';
        if (type == 'C' && fields[i].Type == FieldType::kText && keeps_ascii(encoding))
            contents[i] = Content::kText;
        else if (isNumber && fields[i].Type == FieldType::kInteger)
            contents[i] = Content::kInteger;
        else if (isNumber && fields[i].Type == FieldType::kDouble)
            contents[i] = Content::kDouble;
        else
            return {};
    }
    return contents;
}

bool PointShapefile::Parse(std::string_view cell, Content content, FieldValue& value) {
    switch (content) {
        case Content::kText:
            return parse_text(cell, value);
        case Content::kInteger:
            return parse_integer(cell, value);
        case Content::kDouble:
            return parse_double(cell, value);
        case Content::kUnasked:
            break;
    }
    return true;
}

std::shared_ptr<const PointRows> PointShapefile::Next() {
    const std::uint64_t count = std::min(kRowsAtOnce, m_files->Rows - m_next);
    if (count == 0) return nullptr;
    auto rows = std::make_shared<PointRows>(static_cast<std::int64_t>(m_next), count, m_contents.size());
    ReadLocations(*rows);
    ReadCells(*rows);
    m_next += count;
    return rows;
}

void PointShapefile::ReadLocations(PointRows& rows) {
    const std::size_t count = rows.Kinds.size();
    std::vector<char> index(count * kIndexEntry);
    m_files->Index.Read(kHeaderLength + m_next * kIndexEntry, index);

    // Records mostly follow one another: what lies elsewhere is read by itself.
    const std::uint64_t begin = std::uint64_t{load_big(index, 0)} * 2;
    const std::uint64_t length = std::min(std::uint64_t{load_big(index, 4)} * 2, kLongestPoint) + kRecordHeader;
    const std::uint64_t available = begin < m_files->Shapes.Size() ? m_files->Shapes.Size() - begin : 0;
    m_bytes.resize(static_cast<std::size_t>(std::min(available, length * count)));
    m_files->Shapes.Read(begin, m_bytes);

    for (std::size_t row = 0; row < count; ++row) {
        const std::uint64_t offset = std::uint64_t{load_big(index, row * kIndexEntry)} * 2;
        const std::uint32_t words = load_big(index, row * kIndexEntry + 4);
        const std::uint64_t end = offset + kRecordHeader + std::uint64_t{words} * 2;
        if (end > m_files->Shapes.Size() || std::uint64_t{words} * 2 < kShortestPoint) continue;
        const bool isNear = offset >= begin && end <= begin + m_bytes.size();
        const auto record = isNear ? std::span<const char>(m_bytes).subspan(static_cast<std::size_t>(offset - begin))
                                   : RecordApart(offset);
        const platform::Point location{load_little<double>(record, kRecordHeader + 4),
                                       load_little<double>(record, kRecordHeader + 12)};
        const bool isPlain = load_big(record, 4) == words &&
                             load_little<std::uint32_t>(record, kRecordHeader) == m_files->ShapeType &&
                             std::isfinite(location.X) && std::isfinite(location.Y);
        if (!isPlain) continue;
        rows.Kinds[row] = PointRows::Kind::kPlain;
        rows.Locations[row] = location;
    }
}

std::span<const char> PointShapefile::RecordApart(std::uint64_t offset) {
    constexpr std::size_t kFew = 64;                              // records, each read by itself
    constexpr std::uint64_t kMostHeld = std::uint64_t{64} << 20;  // bytes
    constexpr std::size_t kLength = kRecordHeader + kShortestPoint;
    const std::uint64_t size = m_files->Shapes.Size();
    const bool holdsAll = ++m_askedApart > kFew && size <= kMostHeld;
    if (!holdsAll || m_askedApart == kFew + 1) {
        m_apart.resize(holdsAll ? static_cast<std::size_t>(size) : kLength);
        m_files->Shapes.Read(holdsAll ? 0 : offset, m_apart);
    }
    return std::span<const char>(m_apart).subspan(holdsAll ? static_cast<std::size_t>(offset) : 0, kLength);
}

void PointShapefile::ReadCells(PointRows& rows) {
    const DbfLayout& layout = m_files->Layout;
    const std::size_t recordLength = layout.RecordLength();
    m_bytes.resize(rows.Kinds.size() * recordLength);
    m_files->Table.Read(layout.HeaderLength() + m_next * recordLength, m_bytes);
    const std::string_view table(m_bytes.data(), m_bytes.size());
    for (std::size_t row = 0; row < rows.Kinds.size(); ++row) {
        const std::string_view record = table.substr(row * recordLength, recordLength);
        if (record.front() == '*') rows.Kinds[row] = PointRows::Kind::kDeleted;
        for (std::size_t i = 0; i < rows.Columns && rows.Kinds[row] == PointRows::Kind::kPlain; ++i) {
            const DbfColumn& column = layout.Columns()[i];
            const std::string_view cell = record.substr(column.Offset, column.Width);
            if (!Parse(cell, m_contents[i], rows.Cells[row * rows.Columns + i]))
                rows.Kinds[row] = PointRows::Kind::kOther;
        }
    }
}

}  // namespace wxl::files
