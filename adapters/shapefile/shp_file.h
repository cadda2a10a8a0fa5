#pragma once
// The two files of shapes: .shp with the records and .shx with where they lie.

#include "adapters/disk/disk_output_file.h"
#include "adapters/disk/input_file.h"
#include "platform/values.h"

#include <string>
#include <string_view>
#include <vector>

namespace wxl::files {

/// The content of a record for a shape (without its record header): types 0, 1, 3 and 5.
std::string shape_record(const platform::Geometry& shape);

/// Records of an existing pair of files.
class ShpReader {
public:
    /// RuntimeError 57 when they are no shapes or do not fit together.
    ShpReader(const std::filesystem::path& shp, const std::filesystem::path& shx);

    std::uint32_t Rows() const { return static_cast<std::uint32_t>(m_index.size() / 8); }

    /// The first 100 bytes of the .shp file.
    const std::string& Header() const { return m_header; }

    /// The content of a record, as it stands.
    std::string Record(std::uint32_t row) const;

private:
    InputFile m_shapes;
    std::string m_header;
    std::vector<char> m_index;
};

/// A new pair of files, written record by record.
class ShpWriter {
public:
    /// `header` is that of another file whose shape type and height and measure ranges are taken over.
    ShpWriter(const std::filesystem::path& shp, const std::filesystem::path& shx, std::string header);

    /// RuntimeError 6 when the file would grow beyond 4 GB, the most that its format can hold.
    void Append(std::string_view record);

    /// Writes sizes and extent into both headers and closes both, checked.
    void Close();

private:
    std::string HeaderOfLength(std::uint64_t words) const;

    DiskOutputFile m_shapes;
    DiskOutputFile m_index;
    std::string m_header;
    std::uint64_t m_words = 50;
    std::uint32_t m_rows = 0;
    platform::Extent m_extent;
};

/// Header of an empty file of shapes of that type.
std::string shp_header(platform::ShapeType type);

/// Whether the shapes of a file with that header have no heights and no measures.
bool holds_plane_shapes(const std::string& header);

}  // namespace wxl::files
