#include "apps/cli/read_files.h"

#include "adapters/disk/disk_file_system.h"
#include "platform/dataset_files.h"
#include "platform/runtime_error.h"

namespace wxl::cli {

namespace fs = std::filesystem;

namespace {

/// The archive that a path of GDAL's leads into ("/vsizip/a.zip/layer.csv"); the path itself for any other.
fs::path file_of(const fs::path& path) {
    std::string text = path.string();
    while (text.starts_with("/vsi")) {
        const std::size_t slash = text.find('/', 1);
        if (slash == std::string::npos) return path;
        text.erase(0, slash + 1);
    }
    if (text == path.string()) return path;
    fs::path file = text;
    std::error_code ignored;
    while (!fs::exists(file, ignored) && file.has_relative_path()) file = file.parent_path();
    return file;
}

}  // namespace

void ReadFiles::Add(const fs::path& file) {
    m_files.Add(file_of(file));
}

void ReadFiles::Add(const std::vector<fs::path>& files) {
    for (const fs::path& file : files) Add(file);
}

void ReadFiles::Refuse(const fs::path& output) const {
    if (m_files.Holds(output))
        platform::Raise(platform::error_number::kPermissionDenied,
                        output.string() + " is read by this command too: choose another name for the output");
}

void ReadFiles::Refuse(const std::vector<fs::path>& outputs) const {
    for (const fs::path& output : outputs) Refuse(output);
}

void ReadFiles::RefuseShapefile(const fs::path& folder, const std::string& name) const {
    Refuse(platform::NewShapefileParts(folder, name));
    Refuse(platform::FolderContents(files::DiskFileSystem(), folder).Shapefile(name));
}

}  // namespace wxl::cli
