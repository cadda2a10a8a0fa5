#pragma once
#include "platform/file_system.h"

#include <filesystem>
#include <map>
#include <string>
#include <string_view>
#include <vector>

namespace wxl::platform {

/// What stands in a folder under the names that datasets have: all files of one, not only the one by which it is known.
/// As the folder was when this was made.
class FolderContents {
public:
    /// A folder that is not there holds nothing.
    FolderContents(const IFileSystem& files, std::filesystem::path folder);

    /// The files of the shapefile NAME, whether its .shp is among them (then it is the first) or not: all that programs
    /// take for parts of it, with extensions in any case.
    std::vector<std::filesystem::path> Shapefile(const std::string& name) const;

    /// The raster NAME of the format "GRID" or "GTiff" and what programs keep beside it.
    std::vector<std::filesystem::path> Raster(const std::string& name, const std::string& format) const;

private:
    std::filesystem::path m_folder;
    std::multimap<std::string, std::string> m_names;  ///< by themselves with the extension in small letters
};

/// Where a new shapefile's files will stand.
std::vector<std::filesystem::path> NewShapefileParts(const std::filesystem::path& folder, const std::string& name);

/// Where a new raster of the format "GRID" or "GTiff" will stand, followed by what programs may keep beside it.
std::vector<std::filesystem::path> RasterParts(const std::filesystem::path& folder, const std::string& name,
                                               const std::string& format);

/// Where a new raster of the format "GRID" or "GTiff" will stand.
std::filesystem::path RasterPlace(const std::filesystem::path& folder, const std::string& name,
                                  const std::string& format);

}  // namespace wxl::platform
