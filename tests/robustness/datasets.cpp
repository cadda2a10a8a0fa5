#include "tests/robustness/datasets.h"

#include "tests/robustness/faulty_program.h"

namespace wxl::tests {

namespace fs = std::filesystem;

Files datasets_in(const fs::path& folder) {
    Files found;
    for (const auto& [name, bytes] : snapshot_of(folder)) {
        if (name.find("/.") != std::string::npos || name.front() == '.') continue;
        const fs::path file = folder / name;
        const std::string extension = file.extension();
        const bool part = extension == ".dbf" || extension == ".shx" || extension == ".prj" || extension == ".cpg";
        if (part && !fs::exists(fs::path(file).replace_extension(".shp"))) continue;
        found[name] = extension == ".txt" ? without_times(bytes) : bytes;
    }
    return found;
}

std::string dataset_name(const std::string& file) {
    const fs::path path(file);
    if (path.extension() == ".adf") return path.parent_path();
    return fs::path(path).replace_extension();
}

std::map<std::string, Files> by_dataset(const Files& files) {
    std::map<std::string, Files> sets;
    for (const auto& [file, bytes] : files) sets[dataset_name(file)][file] = bytes;
    return sets;
}

}  // namespace wxl::tests
