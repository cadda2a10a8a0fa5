#pragma once
#include <filesystem>
#include <set>
#include <string>
#include <utility>

namespace wxl::files {

/// A set of files, known by what they are and not by what they are called: a link, a second name of the same file, or
/// the way through /proc leads to the same one. Names in one folder that differ in case only are taken for one file,
/// which on some disks they are.
class FileIdentities {
public:
    /// A file that is not there is known by its place.
    void Add(const std::filesystem::path& file);
    bool Holds(const std::filesystem::path& file) const;

private:
    using Number = std::pair<std::uint64_t, std::uint64_t>;  ///< device and inode

    std::set<Number> m_files;
    std::set<std::pair<Number, std::string>> m_places;  ///< folder, and name in capitals
};

}  // namespace wxl::files
