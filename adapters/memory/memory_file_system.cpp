#include "adapters/memory/memory_file_system.h"

#include "platform/runtime_error.h"
#include "platform/text.h"

#include <algorithm>
#include <cstring>
#include <utility>

namespace wxl::memory {

namespace error_number = platform::error_number;

namespace {

[[noreturn]] void raise_at(std::int32_t number, const std::filesystem::path& path) {
    platform::Raise(number, platform::DescriptionOf(number) + ": " + path.string());
}

std::filesystem::path clean(const std::filesystem::path& path) {
    const auto normal = path.lexically_normal();
    return normal.has_filename() || !normal.has_relative_path() ? normal : normal.parent_path();
}

bool lies_below(const std::filesystem::path& path, const std::filesystem::path& folder) {
    const auto [end, rest] = std::mismatch(folder.begin(), folder.end(), path.begin(), path.end());
    return end == folder.end() && rest != path.end();
}

}  // namespace

/// A file of a memory disk open for writing.
class MemoryOutputFile final : public platform::IOutputFile {
public:
    MemoryOutputFile(std::shared_ptr<MemoryDisk> disk, std::filesystem::path file, std::shared_ptr<std::string> bytes)
        : m_disk(std::move(disk)), m_file(std::move(file)), m_bytes(std::move(bytes)), m_at(m_bytes->size()) {}

    void Write(std::string_view bytes) override {
        CheckOpen();
        Guard([&] {
            m_disk->Meet(DiskStep::kWrite, m_file);
            const std::size_t end = m_at + bytes.size();
            const std::size_t grown = end > m_bytes->size() ? end - m_bytes->size() : 0;
            if (m_disk->Used() + grown > m_disk->Capacity) raise_at(error_number::kDiskFull, m_file);
            if (grown > 0) m_bytes->resize(end);
            m_bytes->replace(m_at, bytes.size(), bytes);
            m_at = end;
        });
    }

    void Seek(std::uint64_t offset) override {
        CheckOpen();
        m_at = offset;
    }

    void Flush() override { CheckOpen(); }

    void Close() override {
        CheckOpen();
        m_open = false;
        if (m_failure) throw platform::RuntimeError(*m_failure);
        m_disk->Meet(DiskStep::kClose, m_file);
    }

private:
    void CheckOpen() const {
        if (!m_open) platform::Raise(error_number::kInvalidCall, "The file is closed: " + m_file.string());
    }

    /// Keeps the first failure for Close, as a real disk's file does.
    template <class Step>
    void Guard(Step&& step) {
        try {
            step();
        } catch (const platform::RuntimeError& error) {
            if (!m_failure) m_failure = std::make_unique<platform::RuntimeError>(error);
            throw;
        }
    }

    std::shared_ptr<MemoryDisk> m_disk;
    std::filesystem::path m_file;
    std::shared_ptr<std::string> m_bytes;
    std::size_t m_at;
    bool m_open = true;
    std::unique_ptr<platform::RuntimeError> m_failure;
};

/// A file of a memory disk open for reading.
class MemoryInputFile final : public platform::IInputFile {
public:
    MemoryInputFile(std::filesystem::path file, std::shared_ptr<std::string> bytes)
        : m_file(std::move(file)), m_bytes(std::move(bytes)) {}

    std::uint64_t Size() const override { return m_bytes->size(); }

    void Read(std::uint64_t offset, std::span<char> bytes) const override {
        if (offset > m_bytes->size() || bytes.size() > m_bytes->size() - offset)
            raise_at(error_number::kDeviceIo, m_file);
        m_bytes->copy(bytes.data(), bytes.size(), offset);
    }

private:
    std::filesystem::path m_file;
    std::shared_ptr<std::string> m_bytes;
};

void MemoryDisk::Fail(DiskStep step, int nth, std::int32_t number) {
    m_faults[step] = {nth, number};
}

void MemoryDisk::AddFolder(const std::filesystem::path& folder) {
    for (auto path = clean(folder); m_folders.insert(path).second;) path = path.parent_path();
}

void MemoryDisk::AddFile(const std::filesystem::path& file, std::string bytes) {
    const auto path = clean(file);
    if (!m_folders.contains(path.parent_path())) raise_at(error_number::kPathNotFound, file);
    m_files[path] = std::make_shared<std::string>(std::move(bytes));
}

const std::string& MemoryDisk::Bytes(const std::filesystem::path& file) const {
    return *Find(file);
}

std::shared_ptr<std::string> MemoryDisk::Find(const std::filesystem::path& file) const {
    const auto found = m_files.find(clean(file));
    if (found == m_files.end()) raise_at(error_number::kFileNotFound, file);
    return found->second;
}

void MemoryDisk::SetReadOnly(const std::filesystem::path& file) {
    m_readOnly.insert(clean(file));
}

bool MemoryDisk::Taken(const std::filesystem::path& path) const {
    return m_files.contains(clean(path)) || m_folders.contains(clean(path));
}

void MemoryDisk::Meet(DiskStep step, const std::filesystem::path& path) {
    const auto fault = m_faults.find(step);
    if (fault == m_faults.end() || --fault->second.Left > 0) return;
    const std::int32_t number = fault->second.Number;
    m_faults.erase(fault);
    raise_at(number, path);
}

std::uint64_t MemoryDisk::Used() const {
    std::uint64_t used = 0;
    for (const auto& [path, bytes] : m_files) used += bytes->size();
    return used;
}

MemoryFileSystem::MemoryFileSystem(std::shared_ptr<MemoryDisk> disk) : m_disk(std::move(disk)) {}

bool MemoryFileSystem::FileExists(const std::filesystem::path& file) const {
    return m_disk->m_files.contains(clean(file));
}

bool MemoryFileSystem::FolderExists(const std::filesystem::path& folder) const {
    return m_disk->m_folders.contains(clean(folder));
}

std::string MemoryFileSystem::ReadFile(const std::filesystem::path& file, std::uint64_t limit) const {
    m_disk->Meet(DiskStep::kRead, file);
    const auto path = clean(file);
    if (!FolderExists(path.parent_path())) raise_at(error_number::kPathNotFound, file);
    if (FolderExists(path)) raise_at(error_number::kPermissionDenied, file);
    const std::string& bytes = m_disk->Bytes(path);
    if (bytes.size() > limit)
        platform::Raise(error_number::kOverflow, "The file is larger than the " + std::to_string(limit) +
                                                     " bytes that can be read: " + file.string());
    return bytes;
}

std::unique_ptr<platform::IInputFile> MemoryFileSystem::OpenForReading(const std::filesystem::path& file) const {
    m_disk->Meet(DiskStep::kRead, file);
    const auto path = clean(file);
    if (!FolderExists(path.parent_path())) raise_at(error_number::kPathNotFound, file);
    if (FolderExists(path)) raise_at(error_number::kPermissionDenied, file);
    return std::make_unique<MemoryInputFile>(path, m_disk->Find(path));
}

std::optional<platform::FileFacts> MemoryFileSystem::FactsOf(const std::filesystem::path& file) const {
    if (!FileExists(file)) return std::nullopt;
    return platform::FileFacts{clean(file), m_disk->Bytes(file).size(), kMemoryFileTime};
}

std::unique_ptr<platform::IOutputFile> MemoryFileSystem::OpenForWriting(const std::filesystem::path& file,
                                                                        platform::WriteMode mode) {
    m_disk->Meet(DiskStep::kOpen, file);
    const auto path = clean(file);
    if (!FolderExists(path.parent_path())) raise_at(error_number::kPathNotFound, file);
    if (mode == platform::WriteMode::kNew && m_disk->Taken(path)) raise_at(error_number::kFileExists, file);
    if (FolderExists(path) || m_disk->m_readOnly.contains(path)) raise_at(error_number::kPermissionDenied, file);
    auto& bytes = m_disk->m_files[path];
    if (!bytes) bytes = std::make_shared<std::string>();
    if (mode == platform::WriteMode::kReplace) bytes->clear();
    return std::make_unique<MemoryOutputFile>(m_disk, path, bytes);
}

void MemoryFileSystem::Rename(const std::filesystem::path& from, const std::filesystem::path& to) {
    m_disk->Meet(DiskStep::kRename, to);
    const auto source = clean(from);
    const auto target = clean(to);
    if (!m_disk->Taken(source)) raise_at(error_number::kFileNotFound, from);
    if (!FolderExists(target.parent_path())) raise_at(error_number::kPathNotFound, to);
    if (FolderExists(target) || (FolderExists(source) && m_disk->Taken(target)))
        raise_at(error_number::kFileExists, to);
    if (const auto file = m_disk->m_files.find(source); file != m_disk->m_files.end()) {
        const auto bytes = file->second;
        m_disk->m_files.erase(file);
        m_disk->m_files[target] = bytes;
        return;
    }
    const auto moved = [&](const std::filesystem::path& path) {
        return path == source ? target : target / path.lexically_relative(source);
    };
    decltype(m_disk->m_files) files;
    for (const auto& [path, bytes] : m_disk->m_files) files[lies_below(path, source) ? moved(path) : path] = bytes;
    decltype(m_disk->m_folders) folders;
    for (const auto& path : m_disk->m_folders)
        folders.insert(path == source || lies_below(path, source) ? moved(path) : path);
    m_disk->m_files.swap(files);
    m_disk->m_folders.swap(folders);
}

void MemoryFileSystem::DeleteFile(const std::filesystem::path& file, bool forced) {
    m_disk->Meet(DiskStep::kDelete, file);
    const auto path = clean(file);
    if (!FolderExists(path.parent_path())) raise_at(error_number::kPathNotFound, file);
    if (!FileExists(path)) raise_at(error_number::kFileNotFound, file);
    if (m_disk->m_readOnly.contains(path) && !forced) raise_at(error_number::kPermissionDenied, file);
    m_disk->m_files.erase(path);
    m_disk->m_readOnly.erase(path);
}

std::vector<std::string> MemoryFileSystem::List(const std::filesystem::path& folder) const {
    const auto path = clean(folder);
    std::vector<std::string> names;
    for (const auto& [file, bytes] : m_disk->m_files)
        if (file.parent_path() == path) names.push_back(file.filename().string());
    for (const auto& other : m_disk->m_folders)
        if (other != path && other.parent_path() == path) names.push_back(other.filename().string());
    std::sort(names.begin(), names.end());
    return names;
}

MemoryFolders::MemoryFolders(std::shared_ptr<MemoryDisk> disk) : m_disk(std::move(disk)) {}

void MemoryFolders::Create(const std::filesystem::path& folder) {
    const auto path = clean(folder);
    if (m_disk->Taken(path)) raise_at(error_number::kFileExists, folder);
    if (!m_disk->m_folders.contains(path.parent_path())) raise_at(error_number::kPathNotFound, folder);
    m_disk->m_folders.insert(path);
}

void MemoryFolders::DeleteTree(const std::filesystem::path& folder) {
    m_disk->Meet(DiskStep::kDelete, folder);
    const auto path = clean(folder);
    if (!m_disk->m_folders.contains(path)) raise_at(error_number::kPathNotFound, folder);
    std::erase_if(m_disk->m_files, [&](const auto& file) { return lies_below(file.first, path); });
    std::erase_if(m_disk->m_folders, [&](const auto& other) { return other == path || lies_below(other, path); });
}

std::filesystem::path MemoryFolders::FindIgnoringCase(const std::filesystem::path& folder) const {
    const auto path = clean(folder);
    if (m_disk->m_folders.contains(path)) return folder;
    const std::string upper = platform::UpperCase(path.string());
    const auto found = std::find_if(m_disk->m_folders.begin(), m_disk->m_folders.end(),
                                    [&](const auto& other) { return platform::UpperCase(other.string()) == upper; });
    return found == m_disk->m_folders.end() ? std::filesystem::path() : *found;
}

std::size_t MemoryTempPath::GetTempPathA(std::size_t size, char* buffer) const {
    if (Path.empty()) return 0;
    if (Path.size() + 1 > size) return Path.size() + 1;
    std::memcpy(buffer, Path.c_str(), Path.size() + 1);
    return Path.size();
}

}  // namespace wxl::memory
