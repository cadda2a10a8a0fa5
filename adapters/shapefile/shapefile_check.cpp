#include "adapters/shapefile/shapefile_check.h"

#include "adapters/disk/byte_order.h"
#include "adapters/disk/input_file.h"
#include "adapters/shapefile/dbf_layout.h"
#include "adapters/shapefile/shapefile_parts.h"
#include "platform/runtime_error.h"

#include <algorithm>
#include <array>
#include <string>
#include <utility>
#include <vector>

namespace wxl::files {

namespace fs = std::filesystem;

namespace {

constexpr std::uint64_t kHeaderLength = 100;
constexpr std::uint32_t kFileCode = 9994;
constexpr std::uint32_t kNullShape = 0;

/// Reads here and there in a file, mostly forward, by blocks.
class BlockReader {
public:
    explicit BlockReader(const InputFile& file) : m_file(file) {}

    std::string_view At(std::uint64_t offset, std::size_t length) {
        if (offset < m_start || offset + length > m_start + m_block.size()) {
            constexpr std::uint64_t kBlock = 1 << 18;  // bytes
            m_start = offset;
            m_block.resize(static_cast<std::size_t>(std::min(kBlock, m_file.Size() - offset)));
            m_file.Read(offset, m_block);
        }
        return std::string_view(m_block).substr(static_cast<std::size_t>(offset - m_start), length);
    }

private:
    const InputFile& m_file;
    std::uint64_t m_start = 0;
    std::string m_block;
};

fs::path existing_part(const fs::path& shapefile, const char* extension) {
    fs::path part = part_of(shapefile, extension);
    std::error_code ignored;
    if (!fs::exists(part, ignored))
        platform::Raise(platform::error_number::kFileNotFound,
                        part.string() + " is missing: copy the shapefile again with all its files.");
    return part;
}

/// The length that a file says it has.
std::uint64_t checked_length(const InputFile& file, std::string_view header) {
    const std::uint64_t length = std::uint64_t{load_big(header, 24)} * 2;
    if (length < kHeaderLength) raise_damaged(file.Path(), "its length is wrong");
    if (length > file.Size())
        raise_damaged(file.Path(), "it has " + std::to_string(file.Size()) + " bytes where its header says " +
                                       std::to_string(length));
    return length;
}

/// Bytes of a point record of the type; 0 for other shapes.
std::uint64_t point_length(std::uint32_t type) {
    constexpr std::uint32_t kPoint = 1;
    constexpr std::uint32_t kPointZ = 11;
    constexpr std::uint32_t kPointM = 21;
    if (type == kPoint) return 20;
    return type == kPointZ || type == kPointM ? 28 : 0;
}

void check_type(const InputFile& shapes, std::uint32_t type) {
    constexpr std::array<std::uint32_t, 14> kTypes = {0, 1, 3, 5, 8, 11, 13, 15, 18, 21, 23, 25, 28, 31};
    if (std::find(kTypes.begin(), kTypes.end(), type) == kTypes.end())
        raise_damaged(shapes.Path(), "there is no shape type " + std::to_string(type));
}

/// The index: where each record begins and how long it is.
std::string read_index(const fs::path& path) {
    const InputFile file(path);
    std::string header(kHeaderLength, '\0');
    file.Read(0, header);
    if (load_big(header, 0) != kFileCode) raise_damaged(path, "its header is no index's");
    const std::uint64_t length = checked_length(file, header);
    if ((length - kHeaderLength) % 8 != 0) raise_damaged(path, "its length is wrong");
    std::string index(static_cast<std::size_t>(length - kHeaderLength), '\0');
    file.Read(kHeaderLength, index);
    return index;
}

std::uint64_t offset_at(const std::string& index, std::size_t at) {
    return std::uint64_t{load_big(index, at)} * 2;
}

/// Places in the index by where their records begin, so that the file is read once from its begin to its end.
std::vector<std::size_t> in_order_of_records(const std::string& index) {
    std::vector<std::size_t> places(index.size() / 8);
    for (std::size_t i = 0; i < places.size(); ++i) places[i] = i * 8;
    const auto before = [&](std::size_t a, std::size_t b) { return offset_at(index, a) < offset_at(index, b); };
    if (!std::is_sorted(places.begin(), places.end(), before)) std::stable_sort(places.begin(), places.end(), before);
    return places;
}

void check_records(const InputFile& shapes, std::uint32_t type, const std::string& index) {
    BlockReader reader(shapes);
    const std::uint64_t pointLength = point_length(type);
    for (const std::size_t at : in_order_of_records(index)) {
        const auto damaged = [&](const char* why) {
            raise_damaged(shapes.Path(), "record " + std::to_string(at / 8 + 1) + " " + why);
        };
        const std::uint64_t offset = offset_at(index, at);
        const std::uint64_t length = std::uint64_t{load_big(index, at + 4)} * 2;
        if (length < 4 || offset < kHeaderLength || offset + 8 + length > shapes.Size())
            damaged("lies outside the file");
        const auto recordType = load_little<std::uint32_t>(reader.At(offset + 8, 4), 0);
        if (recordType == kNullShape) continue;
        if (recordType != type || length < pointLength) damaged("holds another kind of shape than the others");
    }
}

/// Whether every record begins behind the end of the one before, as nearly all files have them.
bool follow_one_another(const std::string& index) {
    std::uint64_t end = 0;
    for (std::size_t at = 0; at < index.size(); at += 8) {
        const std::uint64_t begin = std::uint64_t{load_big(index, at)} * 2;
        if (begin < end) return false;
        end = begin + std::uint64_t{load_big(index, at + 4)} * 2 + 8;
    }
    return true;
}

/// Records need not stand in order, but none may lie over another.
void check_overlaps(const InputFile& shapes, const std::string& index) {
    if (follow_one_another(index)) return;
    std::vector<std::pair<std::uint64_t, std::uint64_t>> places;
    for (std::size_t at = 0; at < index.size(); at += 8)
        places.emplace_back(std::uint64_t{load_big(index, at)} * 2, std::uint64_t{load_big(index, at + 4)} * 2 + 8);
    std::sort(places.begin(), places.end());
    for (std::size_t i = 1; i < places.size(); ++i)
        if (places[i].first < places[i - 1].first + places[i - 1].second)
            raise_damaged(shapes.Path(), "some of its records lie over others");
}

}  // namespace

void CheckShapefile(const fs::path& shapefile) {
    const InputFile shapes(shapefile);
    std::string header(kHeaderLength, '\0');
    const std::uint64_t known = std::min<std::uint64_t>(shapes.Size(), kHeaderLength);
    shapes.Read(0, std::span(header).first(static_cast<std::size_t>(known)));
    const bool begins = known >= 4 && load_big(header, 0) == kFileCode;
    if (!begins && known == kHeaderLength) return;
    if (known < kHeaderLength) raise_damaged(shapefile, "it is too short for a shapefile");
    checked_length(shapes, header);
    const auto type = load_little<std::uint32_t>(header, 32);
    check_type(shapes, type);

    const std::string index = read_index(existing_part(shapefile, "shx"));
    check_records(shapes, type, index);
    check_overlaps(shapes, index);
    const fs::path table = existing_part(shapefile, "dbf");
    const DbfLayout layout = DbfLayout::Read(InputFile(table));
    if (layout.Columns().empty()) raise_damaged(table, "it has no columns");
    if (layout.Rows() != index.size() / 8)
        raise_damaged(shapefile, "it has " + std::to_string(index.size() / 8) + " shapes, and its table has " +
                                     std::to_string(layout.Rows()) + " rows");
}

}  // namespace wxl::files
