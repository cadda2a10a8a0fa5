#include "adapters/disk/file_identities.h"

#include "platform/text.h"

#include <optional>
#include <sys/stat.h>

namespace wxl::files {

namespace fs = std::filesystem;

namespace {

std::optional<std::pair<std::uint64_t, std::uint64_t>> number_of(const fs::path& path) {
    struct stat status = {};
    if (::stat(path.c_str(), &status) != 0) return std::nullopt;
    return std::pair<std::uint64_t, std::uint64_t>(status.st_dev, status.st_ino);
}

fs::path folder_of(const fs::path& file) {
    return file.has_parent_path() ? file.parent_path() : fs::path(".");
}

std::string place_name(const fs::path& file) {
    return platform::UpperCase(file.filename().string());
}

}  // namespace

void FileIdentities::Add(const fs::path& file) {
    const fs::path plain = file.has_filename() ? file : file.parent_path();
    if (const auto number = number_of(plain)) m_files.insert(*number);
    if (const auto folder = number_of(folder_of(plain))) m_places.emplace(*folder, place_name(plain));
}

bool FileIdentities::Holds(const fs::path& file) const {
    const auto number = number_of(file);
    if (number && m_files.contains(*number)) return true;
    const auto folder = number_of(folder_of(file));
    return folder && m_places.contains({*folder, place_name(file)});
}

}  // namespace wxl::files
