#pragma once
// A tree of files that a program must leave alone, with one folder in it that it may write to.

#include <filesystem>
#include <fstream>
#include <iterator>
#include <map>
#include <string>
#include <sys/stat.h>

namespace wxl::tests {

/// All that can be seen of every entry of a tree: kind, inode, times of change, rights, content. Links are not
/// followed.
inline std::map<std::string, std::string> entries_of(const std::filesystem::path& tree,
                                                     const std::filesystem::path& except) {
    namespace fs = std::filesystem;
    std::map<std::string, std::string> entries;
    for (auto entry = fs::recursive_directory_iterator(tree); entry != fs::recursive_directory_iterator(); ++entry) {
        if (entry->path() == except) {
            entry.disable_recursion_pending();
            continue;
        }
        struct stat status = {};
        ::lstat(entry->path().c_str(), &status);
        std::string seen = std::to_string(status.st_mode) + " " + std::to_string(status.st_ino) + " " +
                           std::to_string(status.st_nlink) + " " + std::to_string(status.st_size);
        // Writing into the folder that may be written to changes no time of the folders above it.
        seen += " " + std::to_string(status.st_mtim.tv_sec) + "." + std::to_string(status.st_mtim.tv_nsec);
        if (S_ISREG(status.st_mode)) {
            std::ifstream in(entry->path(), std::ios::binary);
            seen += " " + std::string(std::istreambuf_iterator<char>(in), {});
        }
        entries[entry->path().string()] = seen;
    }
    return entries;
}

/// What differs between two looks at a tree; empty when nothing does.
inline std::string difference(const std::map<std::string, std::string>& before,
                              const std::map<std::string, std::string>& after) {
    std::string text;
    for (const auto& [path, seen] : before)
        if (!after.contains(path))
            text += "deleted: " + path + "\n";
        else if (after.at(path) != seen)
            text += "changed: " + path + "\n";
    for (const auto& [path, seen] : after)
        if (!before.contains(path)) text += "made: " + path + "\n";
    return text;
}

}  // namespace wxl::tests
