#pragma once
#include "analysis/animal_fixes.h"
#include "platform/file_system.h"
#include "platform/values.h"

#include <cstdint>
#include <filesystem>
#include <memory>
#include <span>
#include <vector>

namespace wxl::batch {

/// The fixes of all animals in one binary file, so that a task reads those of its own animals and no others.
///
/// Header (40 bytes): "WXLPTS" and two blanks, version 1 and the byte order mark 0x01020304 (32 bits each), number of
/// animals, number of fixes, checksum of the index (64 bits each). Index, 24 bytes per animal: number of the first fix,
/// number of fixes, checksum of the fixes. Then x and y of every fix, doubles, sorted by animal, in the layer's order.
/// Numbers are in the byte order of the machine that wrote them. Checksums are 64-bit FNV-1a (Fowler, Noll, Vo 1991).
///
/// Publishes the file; RuntimeError when it cannot be written.
void write_point_store(platform::IFileSystem& files, const std::filesystem::path& file,
                       std::span<const analysis::AnimalFixes> animals);
void write_points(platform::IFileSystem& files, const std::filesystem::path& file,
                  std::span<const std::span<const platform::Point>> animals);

/// A store that is read animal by animal.
class PointStore {
public:
    /// Reads header and index. RuntimeError 57 that names the file when it is no store, is cut short, was changed, or
    /// was written on a machine of the other byte order.
    PointStore(const platform::IFileSystem& files, std::filesystem::path file);

    std::size_t AnimalCount() const { return m_index.size(); }

    /// The fixes of one animal, in the layer's order. RuntimeError 57 as above.
    std::vector<platform::Point> Read(std::size_t animal) const;

private:
    struct Entry {
        std::uint64_t First = 0;
        std::uint64_t Count = 0;
        std::uint64_t Checksum = 0;
    };
    friend void write_points(platform::IFileSystem& files, const std::filesystem::path& file,
                             std::span<const std::span<const platform::Point>> animals);

    void ReadBytes(std::uint64_t offset, void* into, std::uint64_t count) const;
    [[noreturn]] void Refuse(const std::string& why) const;

    std::filesystem::path m_path;
    std::unique_ptr<platform::IInputFile> m_file;
    std::vector<Entry> m_index;
};

}  // namespace wxl::batch
