#include "batch/point_store.h"

#include "platform/runtime_error.h"

#include <array>
#include <cstring>
#include <string_view>
#include <utility>

namespace wxl::batch {
namespace {

constexpr std::array<char, 8> kMagic = {'W', 'X', 'L', 'P', 'T', 'S', ' ', ' '};
constexpr std::uint32_t kVersion = 1;
constexpr std::uint32_t kByteOrder = 0x01020304;
constexpr std::uint32_t kOtherByteOrder = 0x04030201;

struct Header {
    std::array<char, 8> Magic = kMagic;
    std::uint32_t Version = kVersion;
    std::uint32_t ByteOrder = kByteOrder;
    std::uint64_t Animals = 0;
    std::uint64_t Fixes = 0;
    std::uint64_t IndexChecksum = 0;
};
static_assert(sizeof(Header) == 40);
static_assert(sizeof(platform::Point) == 16);

template <class T>
std::string_view bytes_of(const T* values, std::size_t count) {
    return {static_cast<const char*>(static_cast<const void*>(values)), count * sizeof(T)};
}

std::uint64_t fnv1a(std::string_view bytes) {
    std::uint64_t hash = 0xcbf29ce484222325U;
    for (const char c : bytes) hash = (hash ^ static_cast<unsigned char>(c)) * 0x100000001b3U;
    return hash;
}

}  // namespace

void write_point_store(platform::IFileSystem& files, const std::filesystem::path& file,
                       std::span<const analysis::AnimalFixes> animals) {
    std::vector<std::span<const platform::Point>> fixes;
    for (const analysis::AnimalFixes& animal : animals) fixes.emplace_back(animal.Fixes);
    write_points(files, file, fixes);
}

void write_points(platform::IFileSystem& files, const std::filesystem::path& file,
                  std::span<const std::span<const platform::Point>> animals) {
    Header header;
    std::vector<PointStore::Entry> index;
    for (const std::span<const platform::Point>& fixes : animals) {
        const std::size_t count = fixes.size();
        index.push_back({header.Fixes, count, fnv1a(bytes_of(fixes.data(), count))});
        header.Fixes += count;
    }
    header.Animals = index.size();
    header.IndexChecksum = fnv1a(bytes_of(index.data(), index.size()));

    const auto temporary = file.parent_path() / platform::TemporaryName(file.filename().string());
    const auto out = files.OpenForWriting(temporary, platform::WriteMode::kReplace);
    out->Write(bytes_of(&header, 1));
    out->Write(bytes_of(index.data(), index.size()));
    for (const std::span<const platform::Point>& fixes : animals) out->Write(bytes_of(fixes.data(), fixes.size()));
    out->Close();
    files.Rename(temporary, file);
}

PointStore::PointStore(const platform::IFileSystem& files, std::filesystem::path file) : m_path(std::move(file)) {
    try {
        m_file = files.OpenForReading(m_path);
    } catch (const platform::RuntimeError&) {
        Refuse("it is not there or cannot be read");
    }
    const std::uint64_t size = m_file->Size();
    if (size < sizeof(Header)) Refuse("it is cut short");
    Header header;
    ReadBytes(0, &header, sizeof header);
    if (header.Magic != kMagic) Refuse("it is no store of points");
    if (header.ByteOrder == kOtherByteOrder) Refuse("it was written on a machine of another byte order");
    if (header.ByteOrder != kByteOrder || header.Version != kVersion) Refuse("it is of another version");
    // Counts first: sizes computed from a hostile header must not overflow.
    const std::uint64_t room = size - sizeof(Header);
    if (header.Animals > room / sizeof(Entry)) Refuse("it is cut short");
    const std::uint64_t points = room - header.Animals * sizeof(Entry);
    if (header.Fixes > points / sizeof(platform::Point) || header.Fixes * sizeof(platform::Point) != points)
        Refuse("it is cut short");
    m_index.resize(header.Animals);
    ReadBytes(sizeof header, m_index.data(), header.Animals * sizeof(Entry));
    if (fnv1a(bytes_of(m_index.data(), m_index.size())) != header.IndexChecksum) Refuse("it was changed");
    std::uint64_t next = 0;
    for (const Entry& entry : m_index) {
        if (entry.First != next || entry.Count > header.Fixes - next) Refuse("its index makes no sense");
        next += entry.Count;
    }
}

std::vector<platform::Point> PointStore::Read(std::size_t animal) const {
    const Entry& entry = m_index.at(animal);
    std::vector<platform::Point> fixes(entry.Count);
    ReadBytes(sizeof(Header) + m_index.size() * sizeof(Entry) + entry.First * sizeof(platform::Point), fixes.data(),
              entry.Count * sizeof(platform::Point));
    if (fnv1a(bytes_of(fixes.data(), fixes.size())) != entry.Checksum) Refuse("it was changed");
    return fixes;
}

void PointStore::ReadBytes(std::uint64_t offset, void* into, std::uint64_t count) const {
    try {
        m_file->Read(offset, {static_cast<char*>(into), count});
    } catch (const platform::RuntimeError&) {
        Refuse("it cannot be read");
    }
}

void PointStore::Refuse(const std::string& why) const {
    platform::Raise(platform::error_number::kDeviceIo, "The batch's points " + m_path.string() + " cannot be used (" +
                                                           why + "). Plan the batch anew with --overwrite.");
}

}  // namespace wxl::batch
