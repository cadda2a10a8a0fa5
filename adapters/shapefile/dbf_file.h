#pragma once
#include "adapters/disk/disk_output_file.h"
#include "adapters/shapefile/dbf_layout.h"

#include <functional>

namespace wxl::files {

/// Deletion mark of a record (its first byte).
inline constexpr char kDeletedMark = '*';

/// A .dbf table read record by record.
class DbfReader {
public:
    explicit DbfReader(const std::filesystem::path& file) : m_file(file), m_layout(DbfLayout::Read(m_file)) {}
    const DbfLayout& Layout() const { return m_layout; }

    /// Calls `action` with every row number and its record, in order; the bytes may be changed and last for the call.
    void ForEach(const std::function<void(std::uint32_t, std::span<char>)>& action) const;

private:
    InputFile m_file;
    DbfLayout m_layout;
};

/// A new .dbf file, written record by record.
class DbfWriter {
public:
    DbfWriter(const std::filesystem::path& file, DbfLayout layout);
    void Append(std::string_view record);

    /// Writes the number of records and closes, checked.
    void Close();

private:
    DiskOutputFile m_file;
    DbfLayout m_layout;
    std::uint32_t m_rows = 0;
};

}  // namespace wxl::files
