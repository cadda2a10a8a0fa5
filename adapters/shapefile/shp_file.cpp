#include "adapters/shapefile/shp_file.h"

#include "adapters/disk/byte_order.h"
#include "platform/runtime_error.h"

#include <array>
#include <cmath>
#include <limits>
#include <utility>

namespace wxl::files {

using platform::Extent;
using platform::Geometry;
using platform::Point;
using platform::ShapeType;
namespace error_number = platform::error_number;

namespace {

constexpr std::size_t kHeaderLength = 100;
constexpr std::uint32_t kFileCode = 9994;
constexpr std::uint32_t kVersion = 1000;

enum RecordType : std::uint32_t { kNull = 0, kPoint = 1, kPolyline = 3, kPolygon = 5 };

std::uint32_t record_type(ShapeType type) {
    switch (type) {
        case ShapeType::kPoint:
            return kPoint;
        case ShapeType::kPolyline:
            return kPolyline;
        case ShapeType::kPolygon:
            return kPolygon;
        case ShapeType::kNull:
            break;
    }
    return kNull;
}

template <class Number>
void append(std::string& bytes, Number value) {
    bytes.resize(bytes.size() + sizeof value);
    store_little(bytes, bytes.size() - sizeof value, value);
}

void append_big(std::string& bytes, std::uint32_t value) {
    append(bytes, __builtin_bswap32(value));
}

void append(std::string& bytes, const Point& point) {
    if (!std::isfinite(point.X) || !std::isfinite(point.Y))
        platform::Raise(error_number::kInvalidCall, "A shape has a coordinate that is not a finite number.");
    append(bytes, point.X);
    append(bytes, point.Y);
}

void append(std::string& bytes, const Extent& extent) {
    append(bytes, extent.XMin);
    append(bytes, extent.YMin);
    append(bytes, extent.XMax);
    append(bytes, extent.YMax);
}

std::uint32_t count_u31(std::size_t count) {
    if (count > static_cast<std::size_t>(std::numeric_limits<std::int32_t>::max()))
        platform::Raise(error_number::kOverflow);
    return static_cast<std::uint32_t>(count);
}

/// Points, with heights and measures or without, are their own extent; all other shapes begin with theirs.
bool is_point_type(std::uint32_t type) {
    return type == 1 || type == 11 || type == 21;
}

/// Extent of a record's shape; empty for a null shape.
Extent record_extent(std::string_view record) {
    Extent extent;
    const auto type = load_little<std::uint32_t>(record, 0);
    if (type == kNull) return extent;
    extent.Include({load_little<double>(record, 4), load_little<double>(record, 12)});
    if (!is_point_type(type)) extent.Include({load_little<double>(record, 20), load_little<double>(record, 28)});
    return extent;
}

}  // namespace

std::string shape_record(const Geometry& shape) {
    std::string record;
    append(record, record_type(shape.Type));
    if (shape.IsNull()) return record;
    if (shape.Type == ShapeType::kPoint) {
        append(record, shape.Location);
        return record;
    }
    Extent extent;
    std::size_t vertices = 0;
    for (const auto& part : shape.Parts) {
        vertices += part.size();
        for (const Point& point : part) extent.Include(point);
    }
    if (vertices == 0) return shape_record(Geometry());
    record.reserve(44 + 4 * shape.Parts.size() + 16 * vertices);
    append(record, extent);
    append(record, count_u31(shape.Parts.size()));
    append(record, count_u31(vertices));
    std::size_t start = 0;
    for (const auto& part : shape.Parts) {
        append(record, count_u31(start));
        start += part.size();
    }
    for (const auto& part : shape.Parts)
        for (const Point& point : part) append(record, point);
    return record;
}

std::string shp_header(ShapeType type) {
    std::string header(kHeaderLength, '\0');
    store_big(header, 0, kFileCode);
    store_big(header, 24, kHeaderLength / 2);
    store_little(header, 28, kVersion);
    store_little(header, 32, record_type(type));
    return header;
}

bool holds_plane_shapes(const std::string& header) {
    const auto type = load_little<std::uint32_t>(header, 32);
    return type == kPoint || type == kPolyline || type == kPolygon;
}

ShpReader::ShpReader(const std::filesystem::path& shp, const std::filesystem::path& shx)
    : m_shapes(shp), m_header(kHeaderLength, '\0') {
    m_shapes.Read(0, m_header);
    const InputFile index(shx);
    std::string indexHeader(kHeaderLength, '\0');
    index.Read(0, indexHeader);
    if (load_big(m_header, 0) != kFileCode || load_big(indexHeader, 0) != kFileCode)
        raise_damaged(shp, "its header or that of its .shx file is no shapefile's");
    const std::uint64_t length = std::uint64_t{load_big(indexHeader, 24)} * 2;
    if (length < kHeaderLength || length > index.Size()) raise_damaged(shx, "its length is wrong");
    m_index.resize((length - kHeaderLength) / 8 * 8);
    index.Read(kHeaderLength, m_index);
}

std::string ShpReader::Record(std::uint32_t row) const {
    const std::uint64_t offset = std::uint64_t{load_big(m_index, row * std::size_t{8})} * 2;
    const std::uint64_t length = std::uint64_t{load_big(m_index, row * std::size_t{8} + 4)} * 2;
    if (length < 4 || offset + 8 + length > m_shapes.Size())
        raise_damaged(m_shapes.Path(), "record " + std::to_string(row) + " lies outside the file");
    std::string record(length, '\0');
    m_shapes.Read(offset + 8, record);
    const auto type = load_little<std::uint32_t>(record, 0);
    if (type != kNull && record.size() < (is_point_type(type) ? 20U : 36U))
        raise_damaged(m_shapes.Path(), "record " + std::to_string(row) + " is too short");
    return record;
}

ShpWriter::ShpWriter(const std::filesystem::path& shp, const std::filesystem::path& shx, std::string header)
    : m_shapes(shp, platform::WriteMode::kReplace),
      m_index(shx, platform::WriteMode::kReplace),
      m_header(std::move(header)) {
    m_shapes.Write(m_header);
    m_index.Write(m_header);
}

void ShpWriter::Append(std::string_view record) {
    const std::uint64_t words = record.size() / 2;
    if (m_words + 4 + words > static_cast<std::uint64_t>(std::numeric_limits<std::int32_t>::max()))
        platform::Raise(error_number::kOverflow, "The shapefile would grow beyond 4 GB.");
    std::string head;
    append_big(head, ++m_rows);
    append_big(head, static_cast<std::uint32_t>(words));
    std::string place;
    append_big(place, static_cast<std::uint32_t>(m_words));
    append_big(place, static_cast<std::uint32_t>(words));
    m_shapes.Write(head);
    m_shapes.Write(record);
    m_index.Write(place);
    m_words += 4 + words;
    const Extent extent = record_extent(record);
    if (!extent.IsEmpty()) {
        m_extent.Include({extent.XMin, extent.YMin});
        m_extent.Include({extent.XMax, extent.YMax});
    }
}

std::string ShpWriter::HeaderOfLength(std::uint64_t words) const {
    std::string header = m_header;
    store_big(header, 24, static_cast<std::uint32_t>(words));
    const std::array<double, 4> corners = {m_extent.XMin, m_extent.YMin, m_extent.XMax, m_extent.YMax};
    for (std::size_t i = 0; i < corners.size(); ++i)
        store_little(header, 36 + 8 * i, m_extent.IsEmpty() ? 0.0 : corners[i]);
    return header;
}

void ShpWriter::Close() {
    m_shapes.Seek(0);
    m_shapes.Write(HeaderOfLength(m_words));
    m_shapes.Close();
    m_index.Seek(0);
    m_index.Write(HeaderOfLength(50 + std::uint64_t{m_rows} * 4));
    m_index.Close();
}

}  // namespace wxl::files
