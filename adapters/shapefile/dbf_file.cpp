#include "adapters/shapefile/dbf_file.h"

#include "platform/runtime_error.h"

#include <algorithm>
#include <limits>
#include <utility>

namespace wxl::files {

void DbfReader::ForEach(const std::function<void(std::uint32_t, std::span<char>)>& action) const {
    constexpr std::size_t kBlock = 1 << 20;  // bytes
    const std::size_t length = m_layout.RecordLength();
    const std::uint32_t perBlock = static_cast<std::uint32_t>(std::max<std::size_t>(1, kBlock / length));
    std::vector<char> block(perBlock * length);
    for (std::uint32_t first = 0; first < m_layout.Rows();) {
        const std::uint32_t count = std::min(perBlock, m_layout.Rows() - first);
        m_file.Read(m_layout.HeaderLength() + std::uint64_t{first} * length, std::span(block).first(count * length));
        for (std::uint32_t i = 0; i < count; ++i) action(first + i, std::span(block).subspan(i * length, length));
        first += count;
    }
}

DbfWriter::DbfWriter(const std::filesystem::path& file, DbfLayout layout)
    : m_file(file, platform::WriteMode::kReplace), m_layout(std::move(layout)) {
    m_file.Write(m_layout.Header(0));
}

void DbfWriter::Append(std::string_view record) {
    if (m_rows == std::numeric_limits<std::uint32_t>::max()) platform::Raise(platform::error_number::kOverflow);
    m_file.Write(record);
    ++m_rows;
}

void DbfWriter::Close() {
    constexpr char kEndOfFile = 0x1A;
    m_file.Write(std::string_view(&kEndOfFile, 1));
    m_file.Seek(0);
    m_file.Write(m_layout.Header(m_rows));
    m_file.Close();
}

}  // namespace wxl::files
