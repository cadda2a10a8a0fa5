#include "adapters/disk/disk_file_system.h"

#include "adapters/disk/disk_output_file.h"
#include "adapters/disk/input_file.h"
#include "adapters/disk/posix_error.h"
#include "platform/runtime_error.h"
#include "platform/text.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <dirent.h>
#include <fcntl.h>
#include <optional>
#include <sys/stat.h>
#include <system_error>
#include <unistd.h>
#include <utility>

namespace wxl::files {

namespace error_number = platform::error_number;

namespace {

/// An open file descriptor.
class Descriptor {
public:
    explicit Descriptor(int value) : m_value(value) {}
    ~Descriptor() {
        if (m_value >= 0) ::close(m_value);
    }
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;
    int Value() const { return m_value; }
    int Release() { return std::exchange(m_value, -1); }

private:
    int m_value;
};

struct FolderCloser {
    void operator()(DIR* folder) const { ::closedir(folder); }
};
using OpenFolder = std::unique_ptr<DIR, FolderCloser>;

/// What stands under a name, the link itself when it is one.
std::optional<struct stat> entry_at(const std::filesystem::path& path) {
    struct stat entry {};
    if (::lstat(path.c_str(), &entry) != 0) return std::nullopt;
    return entry;
}

std::optional<struct stat> target_of(const std::filesystem::path& path) {
    struct stat target {};
    if (::stat(path.c_str(), &target) != 0) return std::nullopt;
    return target;
}

std::vector<std::string> names_in(DIR* folder, const std::filesystem::path& path) {
    std::vector<std::string> names;
    while (true) {
        errno = 0;
        const dirent* entry = ::readdir(folder);
        if (entry == nullptr) break;
        const std::string name = entry->d_name;
        if (name != "." && name != "..") names.push_back(name);
    }
    if (errno != 0) RaiseErrno(errno, path);
    std::sort(names.begin(), names.end());
    return names;
}

[[noreturn]] void raise_special(const std::filesystem::path& file) {
    platform::Raise(error_number::kPermissionDenied,
                    file.string() + " is a pipe or a device and no file: choose another name");
}

bool refused(int code) {
    return code == EACCES || code == EPERM;
}

/// Opens the folder `name` below `parent` to be emptied; a read-only one is made writable, a link is never followed.
int open_to_empty(int parent, const std::string& name) {
    const int flags = O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC;
    const int folder = ::openat(parent, name.c_str(), flags);
    if (folder >= 0 || !refused(errno)) return folder;
    if (::fchmodat(parent, name.c_str(), S_IRWXU, 0) != 0) return -1;
    return ::openat(parent, name.c_str(), flags);
}

void empty_folder(int folder, const std::filesystem::path& path);

void delete_entry(int parent, const std::string& name, const std::filesystem::path& path) {
    if (::unlinkat(parent, name.c_str(), 0) == 0) return;
    const int code = errno;
    struct stat entry {};
    if (::fstatat(parent, name.c_str(), &entry, AT_SYMLINK_NOFOLLOW) != 0) RaiseErrno(errno, path);
    if (!S_ISDIR(entry.st_mode)) RaiseErrno(code, path);
    {
        const Descriptor folder(open_to_empty(parent, name));
        if (folder.Value() < 0) RaiseErrno(errno, path);
        empty_folder(folder.Value(), path);
    }
    if (::unlinkat(parent, name.c_str(), AT_REMOVEDIR) != 0) RaiseErrno(errno, path);
}

void empty_folder(int folder, const std::filesystem::path& path) {
    struct stat entry {};
    if (::fstat(folder, &entry) == 0 && (entry.st_mode & S_IRWXU) != S_IRWXU)
        ::fchmod(folder, (entry.st_mode & 07777) | S_IRWXU);
    Descriptor copy(::fcntl(folder, F_DUPFD_CLOEXEC, 0));
    if (copy.Value() < 0) RaiseErrno(errno, path);
    const OpenFolder open(::fdopendir(copy.Value()));
    if (!open) RaiseErrno(errno, path);
    copy.Release();
    for (const std::string& name : names_in(open.get(), path)) delete_entry(folder, name, path / name);
}

/// Folders equal to `name` but for case in `parent`, the exact one first.
std::vector<std::filesystem::path> folders_like(const std::filesystem::path& parent, const std::string& name) {
    std::vector<std::filesystem::path> found;
    const auto add_folder = [&](const std::filesystem::path& path) {
        const auto target = target_of(path);
        if (target && S_ISDIR(target->st_mode)) found.push_back(path);
    };
    add_folder(parent / name);
    const OpenFolder open(::opendir(parent.empty() ? "." : parent.c_str()));
    if (!open) return found;
    const std::string upper = platform::UpperCase(name);
    for (const std::string& entry : names_in(open.get(), parent))
        if (entry != name && platform::UpperCase(entry) == upper) add_folder(parent / entry);
    return found;
}

/// Depth first, so that an exact folder without the wanted child does not hide a sibling that has it.
std::filesystem::path find_from(const std::filesystem::path& parent, const std::vector<std::string>& names,
                                std::size_t next) {
    if (next == names.size()) return parent;
    for (const auto& folder : folders_like(parent, names[next])) {
        auto found = find_from(folder, names, next + 1);
        if (!found.empty()) return found;
    }
    return {};
}

}  // namespace

void CheckReplaceable(const std::filesystem::path& file) {
    const auto standing = entry_at(file);
    if (!standing || S_ISREG(standing->st_mode) || S_ISDIR(standing->st_mode)) return;
    if (!S_ISLNK(standing->st_mode)) raise_special(file);
    platform::Raise(error_number::kPermissionDenied,
                    file.string() + " is a link, and nothing is written through links: delete it");
}

bool DiskFileSystem::FileExists(const std::filesystem::path& file) const {
    const auto target = target_of(file);
    return target && !S_ISDIR(target->st_mode);
}

bool DiskFileSystem::FolderExists(const std::filesystem::path& folder) const {
    const auto target = target_of(folder);
    return target && S_ISDIR(target->st_mode);
}

std::string DiskFileSystem::ReadFile(const std::filesystem::path& file, std::uint64_t limit) const {
    // A pipe would make its reader wait for a writer.
    const Descriptor descriptor(::open(file.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK));
    if (descriptor.Value() < 0) RaiseErrno(errno, file);
    const auto check = [&](std::uint64_t size) {
        if (size > limit)
            platform::Raise(error_number::kOverflow, "The file is larger than the " + std::to_string(limit) +
                                                         " bytes that can be read: " + file.string());
    };
    struct stat entry {};
    if (::fstat(descriptor.Value(), &entry) != 0) RaiseErrno(errno, file);
    // A folder is told by the reading of it.
    if (!S_ISREG(entry.st_mode) && !S_ISDIR(entry.st_mode)) RaiseNoFile(entry.st_mode, file);
    if (S_ISREG(entry.st_mode)) check(static_cast<std::uint64_t>(entry.st_size));
    std::string bytes;
    std::array<char, 65536> piece{};
    while (true) {
        const ssize_t got = ::read(descriptor.Value(), piece.data(), piece.size());
        if (got < 0 && errno == EINTR) continue;
        if (got < 0) RaiseErrno(errno, file);
        if (got == 0) return bytes;
        bytes.append(piece.data(), static_cast<std::size_t>(got));
        check(bytes.size());
    }
}

std::unique_ptr<platform::IInputFile> DiskFileSystem::OpenForReading(const std::filesystem::path& file) const {
    return std::make_unique<InputFile>(file);
}

std::optional<platform::FileFacts> DiskFileSystem::FactsOf(const std::filesystem::path& file) const {
    const auto target = target_of(file);
    if (!target || !S_ISREG(target->st_mode)) return std::nullopt;
    return platform::FileFacts{std::filesystem::absolute(file).lexically_normal(),
                               static_cast<std::uint64_t>(target->st_size), target->st_mtim.tv_sec};
}

std::unique_ptr<platform::IOutputFile> DiskFileSystem::OpenForWriting(const std::filesystem::path& file,
                                                                      platform::WriteMode mode) {
    return std::make_unique<DiskOutputFile>(file, mode);
}

void DiskFileSystem::Rename(const std::filesystem::path& from, const std::filesystem::path& to) {
    const auto source = entry_at(from);
    if (!source) RaiseErrno(errno, from);
    const bool isFolder = S_ISDIR(source->st_mode);
    if (isFolder && ::renameat2(AT_FDCWD, from.c_str(), AT_FDCWD, to.c_str(), RENAME_NOREPLACE) == 0) return;
    const bool unsupported = isFolder && (errno == EINVAL || errno == ENOSYS);
    if (isFolder && !unsupported) RaiseErrno(errno, to);
    if (isFolder && entry_at(to)) RaiseErrno(EEXIST, to);
    if (!isFolder) CheckReplaceable(to);
    if (::rename(from.c_str(), to.c_str()) != 0) RaiseErrno(errno == EISDIR ? EEXIST : errno, to);
}

void DiskFileSystem::DeleteFile(const std::filesystem::path& file, bool forced) {
    const auto entry = entry_at(file);
    if (!entry) RaiseErrno(errno, file);
    if (S_ISDIR(entry->st_mode)) RaiseErrno(ENOENT, file);
    if (!S_ISLNK(entry->st_mode)) CheckReplaceable(file);
    const bool readOnly = S_ISREG(entry->st_mode) && (entry->st_mode & S_IWUSR) == 0;
    if (readOnly && !forced) RaiseErrno(EACCES, file);
    if (::unlink(file.c_str()) == 0) return;
    const int code = errno;
    // Some network drives refuse to delete what is marked read-only.
    if (readOnly && refused(code) && ::chmod(file.c_str(), S_IRUSR | S_IWUSR) == 0 && ::unlink(file.c_str()) == 0)
        return;
    RaiseErrno(code, file);
}

std::vector<std::string> DiskFileSystem::List(const std::filesystem::path& folder) const {
    const OpenFolder open(::opendir(folder.c_str()));
    if (!open && (errno == ENOENT || errno == ENOTDIR)) return {};
    if (!open) RaiseErrno(errno, folder);
    return names_in(open.get(), folder);
}

void DiskFolders::Create(const std::filesystem::path& folder) {
    if (::mkdir(folder.c_str(), 0777) == 0) return;
    const int code = errno;
    if (code == ENOENT)
        platform::Raise(error_number::kPathNotFound,
                        platform::DescriptionOf(error_number::kPathNotFound) + ": " + folder.string());
    RaiseErrno(code, folder);
}

bool DiskFolders::IsLink(const std::filesystem::path& folder) const {
    const auto entry = entry_at(folder.has_filename() ? folder : folder.parent_path());
    return entry && S_ISLNK(entry->st_mode);
}

void DiskFolders::DeleteTree(const std::filesystem::path& folder) {
    const auto path = folder.has_filename() ? folder : folder.parent_path();
    const auto entry = entry_at(path);
    if (!entry || !(S_ISDIR(entry->st_mode) || S_ISLNK(entry->st_mode)))
        platform::Raise(error_number::kPathNotFound,
                        platform::DescriptionOf(error_number::kPathNotFound) + ": " + path.string());
    delete_entry(AT_FDCWD, path.string(), path);
}

std::filesystem::path DiskFolders::FindIgnoringCase(const std::filesystem::path& folder) const {
    const auto exact = target_of(folder);
    if (exact && S_ISDIR(exact->st_mode)) return folder;
    std::vector<std::string> names;
    for (const auto& part : folder.relative_path())
        if (!part.empty()) names.push_back(part.string());
    if (names.empty()) return {};
    return find_from(folder.root_path(), names, 0);
}

std::size_t SystemTempPath::GetTempPathA(std::size_t size, char* buffer) const {
    const char* set = std::getenv("TMPDIR");
    std::string path = set != nullptr && *set != '\0' ? set : "/tmp";
    if (path.back() != '/') path += '/';
    // The terminating zero must fit as well, and counts only when it does not.
    if (path.size() + 1 > size) return path.size() + 1;
    std::memcpy(buffer, path.c_str(), path.size() + 1);
    return path.size();
}

std::filesystem::path temporary_folder() {
    std::array<char, 4096> path{};
    const std::size_t length = SystemTempPath().GetTempPathA(path.size(), path.data());
    return length < path.size() ? std::filesystem::path(path.data()) : std::filesystem::path("/tmp");
}

void RaiseNoTemporary(int code) {
    const std::filesystem::path folder = temporary_folder();
    platform::Raise(ErrorNumberOf(code, folder), "Nothing can be written to the folder of temporary files, " +
                                                     folder.string() + " (" + std::generic_category().message(code) +
                                                     "): name another in the variable TMPDIR");
}

}  // namespace wxl::files
