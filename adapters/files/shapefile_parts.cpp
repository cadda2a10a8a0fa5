#include "adapters/files/shapefile_parts.h"

#include "adapters/files/disk_file_system.h"
#include "adapters/files/posix_error.h"
#include "platform/file_system.h"
#include "platform/runtime_error.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <cerrno>
#include <cstdio>
#include <fcntl.h>
#include <span>
#include <sys/stat.h>
#include <sys/xattr.h>
#include <unistd.h>

namespace wxl::files {

namespace fs = std::filesystem;

namespace {

constexpr std::array<std::string_view, 4> kAttributeIndexes = {"idm", "ind", "ain", "aih"};
constexpr std::array<std::string_view, 5> kSpatialIndexes = {"qix", "sbn", "sbx", "fbn", "fbx"};
constexpr std::array<std::string_view, 5> kOtherParts = {"dbf", "shx", "prj", "cpg", "qpj"};

void remove_parts(const fs::path& shapefile, std::span<const std::string_view> extensions) {
    for (const std::string_view extension : extensions) {
        std::error_code failure;
        const auto part = part_of(shapefile, extension);
        fs::remove(part, failure);
        if (failure) RaiseErrno(failure.value(), part);
    }
}

std::string ascii_upper(std::string_view text) {
    std::string upper(text);
    for (char& c : upper)
        if (c >= 'a' && c <= 'z') c = static_cast<char>(c - 'a' + 'A');
    return upper;
}

fs::path swap_folder(const fs::path& shapefile) {
    return shapefile.parent_path() / ("." + shapefile.stem().string() + ".swap");
}

fs::path folder_of(const fs::path& file) {
    return file.has_parent_path() ? file.parent_path() : fs::path(".");
}

/// What other programs noted beside the file's content: labels, comments, access lists.
void take_over_attributes(const fs::path& old, const fs::path& replacement) {
    std::string names(static_cast<std::size_t>(std::max<ssize_t>(::listxattr(old.c_str(), nullptr, 0), 0)), '\0');
    const ssize_t listed = names.empty() ? 0 : ::listxattr(old.c_str(), names.data(), names.size());
    names.resize(static_cast<std::size_t>(std::max<ssize_t>(listed, 0)));
    for (std::size_t at = 0; at < names.size(); at = names.find('\0', at) + 1) {
        const char* name = names.c_str() + at;
        std::string value(static_cast<std::size_t>(std::max<ssize_t>(::getxattr(old.c_str(), name, nullptr, 0), 0)),
                          '\0');
        const ssize_t size = ::getxattr(old.c_str(), name, value.data(), value.size());
        // One that the system sets itself, or that this disk does not take, is none to be kept.
        if (size >= 0) [[maybe_unused]]
            const int ignored = ::setxattr(replacement.c_str(), name, value.data(), static_cast<std::size_t>(size), 0);
    }
}

/// Gives a new file the rights and, where the system allows it, the owner of the old one.
void take_over_rights(const fs::path& old, const fs::path& replacement) {
    struct stat status = {};
    if (::stat(old.c_str(), &status) != 0) return;
    [[maybe_unused]] const int ignored = ::chown(replacement.c_str(), status.st_uid, status.st_gid);
    take_over_attributes(old, replacement);
    if (::chmod(replacement.c_str(), status.st_mode & 07777) != 0) RaiseErrno(errno, replacement);
}

}  // namespace

fs::path part_of(const fs::path& shapefile, std::string_view extension) {
    const auto lower = fs::path(shapefile).replace_extension(extension);
    const auto upper = fs::path(shapefile).replace_extension(ascii_upper(extension));
    std::error_code ignored;
    return !fs::exists(lower, ignored) && fs::exists(upper, ignored) ? upper : lower;
}

std::vector<fs::path> parts_of(const fs::path& shapefile) {
    std::vector<fs::path> parts;
    std::error_code ignored;
    const auto add = [&](fs::path part) {
        if (fs::exists(part, ignored)) parts.push_back(std::move(part));
    };
    for (const auto extension : kSpatialIndexes) add(part_of(shapefile, extension));
    for (const auto extension : kAttributeIndexes) add(part_of(shapefile, extension));
    for (const auto extension : kOtherParts) add(part_of(shapefile, extension));
    add(shapefile.string() + ".xml");
    add(shapefile);
    return parts;
}

void remove_indexes(const fs::path& shapefile, bool rowsChange) {
    remove_parts(shapefile, kAttributeIndexes);
    if (rowsChange) remove_parts(shapefile, kSpatialIndexes);
}

bool is_protected(const fs::path& path) {
    struct stat status = {};
    return ::stat(path.c_str(), &status) != 0 || (status.st_mode & 0222) == 0 || ::access(path.c_str(), W_OK) != 0;
}

void rename_file(const fs::path& from, const fs::path& to) {
    CheckReplaceable(to);
    if (std::rename(from.c_str(), to.c_str()) != 0) RaiseErrno(errno, to);
}

void rename_new(const fs::path& from, const fs::path& to) {
    if (::renameat2(AT_FDCWD, from.c_str(), AT_FDCWD, to.c_str(), RENAME_NOREPLACE) == 0) return;
    if (errno != EINVAL && errno != ENOSYS) RaiseErrno(errno, to);
    struct stat standing = {};
    if (::lstat(to.c_str(), &standing) == 0) RaiseErrno(EEXIST, to);
    rename_file(from, to);
}

void sync_folder(const fs::path& folder) {
    const int descriptor = ::open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (descriptor < 0) return;
    ::fsync(descriptor);
    ::close(descriptor);
}

void finish_interrupted_swap(const fs::path& shapefile) {
    const fs::path swap = swap_folder(shapefile);
    std::error_code failure;
    // A link of that name leads to files that are not ours.
    if (!fs::is_directory(fs::symlink_status(swap, failure))) return;
    std::vector<fs::path> waiting;
    for (const auto& entry : fs::directory_iterator(swap, failure))
        if (entry.path().stem() == shapefile.stem()) waiting.push_back(entry.path());
    for (const fs::path& file : waiting) {
        // Another program may be finishing the same change.
        if (std::rename(file.c_str(), (folder_of(shapefile) / file.filename()).c_str()) != 0 && errno != ENOENT)
            RaiseErrno(errno, file);
    }
    sync_folder(folder_of(shapefile));
    if (::rmdir(swap.c_str()) != 0 && errno != ENOENT) RaiseErrno(errno, swap);
}

TemporaryFolder::TemporaryFolder(const fs::path& beside) {
    static std::atomic<unsigned> count = 0;
    const std::string name = beside.stem().string() + "." + std::to_string(++count);
    m_path = folder_of(beside) / platform::TemporaryName(name);
    if (::mkdir(m_path.c_str(), 0777) != 0) RaiseErrno(errno, m_path);
}

TemporaryFolder::~TemporaryFolder() {
    std::error_code ignored;
    fs::remove_all(m_path, ignored);
}

PartsSwap::PartsSwap(fs::path shapefile) : m_shapefile(std::move(shapefile)), m_folder(m_shapefile) {}

fs::path PartsSwap::Replacement(const fs::path& old) {
    m_replaced.push_back(old);
    return m_folder.Path() / old.filename();
}

void PartsSwap::Commit() {
    for (const fs::path& old : m_replaced) take_over_rights(old, m_folder.Path() / old.filename());
    if (m_replaced.size() == 1) {
        rename_file(m_folder.Path() / m_replaced.front().filename(), m_replaced.front());
        sync_folder(folder_of(m_shapefile));
        return;
    }
    sync_folder(m_folder.Path());
    rename_new(m_folder.Path(), swap_folder(m_shapefile));
    sync_folder(folder_of(m_shapefile));
    finish_interrupted_swap(m_shapefile);
}

}  // namespace wxl::files
