#include "adapters/shapefile/shapefile_parts.h"

#include "adapters/disk/disk_file_system.h"
#include "adapters/disk/posix_error.h"
#include "platform/file_system.h"
#include "platform/runtime_error.h"
#include "platform/text.h"

#include <array>
#include <atomic>
#include <cerrno>
#include <cstdio>
#include <fcntl.h>
#include <span>
#include <sys/stat.h>
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

fs::path folder_of(const fs::path& file) {
    return file.has_parent_path() ? file.parent_path() : fs::path(".");
}

}  // namespace

bool is_shapefile(const fs::path& path) {
    return platform::EqualNoCase(path.extension().string(), ".shp");
}

fs::path main_file_of(const fs::path& path, const std::string& layer) {
    std::error_code ignored;
    const std::string extension = path.extension().string();
    if (platform::EqualNoCase(extension, ".dbf") || platform::EqualNoCase(extension, ".shx")) {
        fs::path main = part_of(path, "shp");
        return fs::is_regular_file(main, ignored) ? main : path;
    }
    if (!fs::is_directory(path, ignored)) return path;
    std::vector<fs::path> found;
    for (const auto& entry : fs::directory_iterator(path, ignored))
        if (is_shapefile(entry.path()) && (layer.empty() || platform::EqualNoCase(entry.path().stem().string(), layer)))
            found.push_back(entry.path());
    return found.size() == 1 ? found.front() : path;
}

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

}  // namespace wxl::files
