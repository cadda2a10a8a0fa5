#include "tests/robustness/cut_short_edits.h"

#include "tests/robustness/malformed.h"

#include <cstdint>
#include <string>
#include <sys/stat.h>

namespace wxl::tests {

namespace fs = std::filesystem;

namespace {

/// FNV-1a over words of eight bytes, little end first, and single bytes at the end; each step folds the upper half in.
std::uint64_t digest_of(const std::string& bytes) {
    std::uint64_t value = 0xcbf29ce484222325;
    for (std::size_t at = 0; at < bytes.size();) {
        const std::size_t length = at + 8 <= bytes.size() ? 8 : 1;
        std::uint64_t word = 0;
        for (std::size_t i = length; i-- > 0;) word = word * 256 + static_cast<unsigned char>(bytes[at + i]);
        value = (value ^ word) * 0x100000001b3;
        value ^= value >> 32;
        at += length;
    }
    return value;
}

std::string manifest_line(const char* extension, const fs::path& old, const fs::path& replacement) {
    struct stat status = {};
    EXPECT_EQ(::lstat(old.c_str(), &status), 0);
    const std::string bytes = bytes_of(replacement);
    const std::int64_t changed = std::int64_t{status.st_ctim.tv_sec} * 1000000000 + status.st_ctim.tv_nsec;
    return std::string(extension) + " " + std::to_string(status.st_ino) + " " + std::to_string(changed) + " " +
           std::to_string(status.st_size) + " " + std::to_string(bytes.size()) + " " +
           std::to_string(digest_of(bytes)) + "\n";
}

}  // namespace

fs::path swap_folder_of(const fs::path& shapefile) {
    return shapefile.parent_path() / ("." + shapefile.stem().string() + ".swap");
}

void leave_half_moved(const fs::path& shapefile, const fs::path& changed, int moved) {
    const fs::path folder = swap_folder_of(shapefile);
    fs::create_directory(folder);
    std::string manifest = "wxl-swap-1\n";
    const auto place = [](fs::path part, const char* extension) { return part.replace_extension(extension); };
    for (const char* extension : {"dbf", "shp", "shx"}) {
        const fs::path replacement = place(changed, extension);
        manifest += manifest_line(extension, place(shapefile, extension), replacement);
        fs::copy_file(replacement, place(folder / shapefile.filename(), extension));
    }
    write_bytes(folder / "manifest", manifest);
    for (const char* extension : {"dbf", "shp", "shx"})
        if (moved-- > 0) fs::rename(place(folder / shapefile.filename(), extension), place(shapefile, extension));
}

}  // namespace wxl::tests
