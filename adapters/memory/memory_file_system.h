#pragma once
#include "platform/file_system.h"

#include <cstdint>
#include <limits>
#include <map>
#include <memory>
#include <set>
#include <string>

namespace wxl::memory {

/// What can be made to fail on a memory disk.
enum class DiskStep { kOpen, kWrite, kClose, kRename, kDelete, kRead };

/// When every file of a memory disk was last changed, in seconds since 1970.
inline constexpr std::int64_t kMemoryFileTime = 1'700'000'000;

/// The content of a disk that lives in memory, shared by the file system, folders and rasters over it. The root "/" is
/// there from the start. Paths are compared as written, after "." and ".." are resolved.
class MemoryDisk {
public:
    /// The n-th such step from now (1: the next) fails once with RuntimeError `number`.
    void Fail(DiskStep step, int nth, std::int32_t number);

    /// Makes a folder with all its parents.
    void AddFolder(const std::filesystem::path& folder);

    /// Puts a whole file into a folder that exists.
    void AddFile(const std::filesystem::path& file, std::string bytes);

    /// Bytes of a file; RuntimeError 53 when there is none.
    const std::string& Bytes(const std::filesystem::path& file) const;

    void SetReadOnly(const std::filesystem::path& file);

    /// Bytes that all files together may take; a write beyond is RuntimeError 61.
    std::uint64_t Capacity = std::numeric_limits<std::uint64_t>::max();

private:
    friend class MemoryFileSystem;
    friend class MemoryFolders;
    friend class MemoryOutputFile;

    struct Fault {
        int Left = 0;
        std::int32_t Number = 0;
    };
    void Meet(DiskStep step, const std::filesystem::path& path);
    std::shared_ptr<std::string> Find(const std::filesystem::path& file) const;
    std::uint64_t Used() const;
    bool Taken(const std::filesystem::path& path) const;

    std::map<std::filesystem::path, std::shared_ptr<std::string>> m_files;
    std::set<std::filesystem::path> m_folders = {"/"};
    std::set<std::filesystem::path> m_readOnly;
    std::map<DiskStep, Fault> m_faults;
};

/// Files on a memory disk, with the errors of a real one.
class MemoryFileSystem final : public platform::IFileSystem {
public:
    explicit MemoryFileSystem(std::shared_ptr<MemoryDisk> disk = std::make_shared<MemoryDisk>());

    MemoryDisk& Disk() const { return *m_disk; }

    bool FileExists(const std::filesystem::path& file) const override;
    bool FolderExists(const std::filesystem::path& folder) const override;
    std::string ReadFile(const std::filesystem::path& file, std::uint64_t limit) const override;
    std::unique_ptr<platform::IInputFile> OpenForReading(const std::filesystem::path& file) const override;
    std::optional<platform::FileFacts> FactsOf(const std::filesystem::path& file) const override;
    std::unique_ptr<platform::IOutputFile> OpenForWriting(const std::filesystem::path& file,
                                                          platform::WriteMode mode) override;
    void Rename(const std::filesystem::path& from, const std::filesystem::path& to) override;
    void DeleteFile(const std::filesystem::path& file, bool forced) override;
    std::vector<std::string> List(const std::filesystem::path& folder) const override;

private:
    std::shared_ptr<MemoryDisk> m_disk;
};

/// Folders on a memory disk.
class MemoryFolders final : public platform::IFolders {
public:
    explicit MemoryFolders(std::shared_ptr<MemoryDisk> disk = std::make_shared<MemoryDisk>());

    void Create(const std::filesystem::path& folder) override;

    /// A memory disk has no links.
    bool IsLink(const std::filesystem::path&) const override { return false; }
    void DeleteTree(const std::filesystem::path& folder) override;
    std::filesystem::path FindIgnoringCase(const std::filesystem::path& folder) const override;

private:
    std::shared_ptr<MemoryDisk> m_disk;
};

/// A temporary path of the test's choice; empty: the system has none.
class MemoryTempPath final : public platform::ITempPath {
public:
    explicit MemoryTempPath(std::string path = {}) : Path(std::move(path)) {}
    std::size_t GetTempPathA(std::size_t size, char* buffer) const override;

    std::string Path;
};

}  // namespace wxl::memory
