#include "adapters/shapefile/dbf_layout.h"

#include "adapters/disk/byte_order.h"
#include "platform/runtime_error.h"

#include <algorithm>

namespace wxl::files {

using platform::Field;
using platform::FieldType;
namespace error_number = platform::error_number;

namespace {

constexpr std::size_t kDescriptorLength = 32;
constexpr char kEndOfColumns = 0x0D;
constexpr std::size_t kLongestRecord = 65535;
constexpr std::size_t kLongestName = 10;

DbfColumn column_of(const std::string& descriptor) {
    DbfColumn column;
    column.Descriptor = descriptor;
    column.Type = descriptor[11];
    column.Width = static_cast<unsigned char>(descriptor[16]);
    column.Decimals = static_cast<unsigned char>(descriptor[17]);
    // Some programs keep the upper byte of a text's width here, others a format; readers take it for neither.
    if (column.Type == 'C') column.Decimals = 0;
    return column;
}

struct TypeAndSize {
    char Type;
    int Width;
    int Decimals;
};

TypeAndSize type_and_size(const Field& field) {
    switch (field.Type) {
        case FieldType::kInteger:
            return {'N', field.Length > 0 ? std::min(field.Length, 18) : 18, 0};
        case FieldType::kDouble:
            if (field.Length > 0) return {'N', std::min(field.Length, 255), std::clamp(field.Precision, 0, 15)};
            return {'N', 24, 15};
        case FieldType::kText:
            return {'C', field.Length > 0 ? std::min(field.Length, 254) : 254, 0};
        case FieldType::kDate:
            return {'D', 8, 0};
        case FieldType::kObjectId:
        case FieldType::kGeometry:
            break;
    }
    platform::Raise(error_number::kInvalidCall,
                    "The field \"" + field.Name + "\" is of a type that no column can hold.");
}

}  // namespace

DbfLayout::DbfLayout() : m_start(kDescriptorLength, '\0'), m_rest(1, kEndOfColumns) {
    m_start[0] = 0x03;
    // The date of the last change is fixed, so that equal data give equal bytes.
    m_start[1] = 95;
    m_start[2] = 7;
    m_start[3] = 26;
}

DbfLayout DbfLayout::Read(const InputFile& file) {
    DbfLayout layout;
    file.Read(0, layout.m_start);
    layout.m_rows = load_little<std::uint32_t>(layout.m_start, 4);
    const std::size_t headerLength = load_little<std::uint16_t>(layout.m_start, 8);
    layout.m_recordLength = load_little<std::uint16_t>(layout.m_start, 10);
    if (headerLength <= kDescriptorLength || layout.m_recordLength == 0)
        raise_damaged(file.Path(), "its header is no table's");

    std::string columns(headerLength - kDescriptorLength, '\0');
    file.Read(kDescriptorLength, columns);
    std::size_t offset = 0;
    while (offset + kDescriptorLength <= columns.size() && columns[offset] != kEndOfColumns) {
        layout.m_columns.push_back(column_of(columns.substr(offset, kDescriptorLength)));
        offset += kDescriptorLength;
    }
    layout.m_rest = columns.substr(offset);

    std::size_t used = 1;
    for (const DbfColumn& column : layout.m_columns) used += column.Width;
    if (used > layout.m_recordLength) raise_damaged(file.Path(), "its columns are wider than its records");
    layout.m_slack = layout.m_recordLength - used;
    layout.PlaceColumns(layout.m_slack);
    if (file.Size() < headerLength + std::uint64_t{layout.m_rows} * layout.m_recordLength)
        raise_damaged(file.Path(), "it is shorter than its header says");
    return layout;
}

void DbfLayout::PlaceColumns(std::size_t extra) {
    std::size_t offset = 1;
    for (DbfColumn& column : m_columns) {
        column.Offset = offset;
        offset += column.Width;
    }
    m_recordLength = offset + extra;
}

std::size_t DbfLayout::HeaderLength() const {
    return m_start.size() + m_columns.size() * kDescriptorLength + m_rest.size();
}

void DbfLayout::AddColumn(const Field& field, const std::string& name) {
    if (name.empty() || name.size() > kLongestName)
        platform::Raise(error_number::kInvalidCall,
                        "The field name \"" + field.Name + "\" is empty or longer than 10 characters.");
    const auto [type, width, decimals] = type_and_size(field);
    if (m_recordLength + static_cast<std::size_t>(width) > kLongestRecord ||
        HeaderLength() + kDescriptorLength > kLongestRecord)
        platform::Raise(error_number::kOverflow, "The table has no room for the field \"" + field.Name + "\".");
    std::string descriptor(kDescriptorLength, '\0');
    descriptor.replace(0, name.size(), name);
    descriptor[11] = type;
    descriptor[16] = static_cast<char>(width);
    descriptor[17] = static_cast<char>(decimals);
    m_columns.push_back(column_of(descriptor));
    PlaceColumns(m_slack);
}

void DbfLayout::DropColumn(std::size_t column) {
    m_columns.erase(m_columns.begin() + static_cast<std::ptrdiff_t>(column));
    PlaceColumns(m_slack);
}

std::string DbfLayout::Header(std::uint32_t rows) const {
    std::string header = m_start;
    store_little(header, 4, rows);
    store_little(header, 8, static_cast<std::uint16_t>(HeaderLength()));
    store_little(header, 10, static_cast<std::uint16_t>(m_recordLength));
    for (const DbfColumn& column : m_columns) header += column.Descriptor;
    return header + m_rest;
}

}  // namespace wxl::files
