#include "adapters/raster/raster_workspace.h"

#include "adapters/gdal/gdal_support.h"
#include "adapters/raster/grid_writer.h"
#include "adapters/raster/raster_dataset.h"
#include "adapters/raster/raster_writing.h"
#include "adapters/raster/tiff_writer.h"
#include "platform/runtime_error.h"
#include "platform/text.h"

#include <algorithm>
#include <array>
#include <string_view>

namespace wxl::files {

namespace error_number = platform::error_number;

namespace {

/// Whether the folder holds a file of one of the names, in whatever case.
template <std::size_t N>
bool holds_any(const platform::IFileSystem& files, const std::filesystem::path& folder,
               const std::array<std::string_view, N>& wanted) {
    if (!files.FolderExists(folder)) return false;
    const auto names = files.List(folder);
    return std::any_of(names.begin(), names.end(), [&](const std::string& name) {
        return std::any_of(wanted.begin(), wanted.end(), [&](auto want) { return platform::EqualNoCase(name, want); });
    });
}

bool is_grid(const platform::IFileSystem& files, const std::filesystem::path& folder) {
    static constexpr std::array<std::string_view, 1> kMarks = {"hdr.adf"};
    return holds_any(files, folder, kMarks);
}

bool is_tin(const platform::IFileSystem& files, const std::filesystem::path& folder) {
    static constexpr std::array<std::string_view, 3> kMarks = {"tnxy.adf", "tdenv.adf", "tdenv9.adf"};
    return holds_any(files, folder, kMarks);
}

bool is_raster_file(const platform::IFileSystem& files, const std::filesystem::path& path) {
    if (!files.FileExists(path)) return false;
    RegisterGdal();
    const GdalErrors errors;
    return GDALIdentifyDriverEx(path.c_str(), GDAL_OF_RASTER, AllowedDrivers(Sources::kPlain, DataKind::kRaster),
                                nullptr) != nullptr;
}

/// Where the raster of that name stands; empty when there is none.
std::filesystem::path find_raster(const platform::IFileSystem& files, const std::filesystem::path& folder,
                                  const std::string& name) {
    auto plain = folder / name;
    auto tiff = folder / (name + ".tif");
    if (is_grid(files, plain)) return plain;
    if (files.FileExists(tiff)) return tiff;
    if (is_raster_file(files, plain)) return plain;
    return {};
}

bool is_coverage_file(const std::string& name) {
    const auto ends = [&](std::string_view ending) {
        return name.size() >= ending.size() &&
               platform::EqualNoCase(std::string_view(name).substr(name.size() - ending.size()), ending);
    };
    return ends(".adf") || ends(".aux.xml") || ends(".aux") || ends(".rrd") || ends(".ovr") ||
           platform::EqualNoCase(name, "log");
}

/// Deletes a dataset that is a folder. It first takes a temporary name, so that a broken-off deletion leaves no half
/// dataset.
void delete_dataset_folder(platform::IFileSystem& files, platform::IFolders& folders,
                           const std::filesystem::path& place) {
    for (const std::string& name : files.List(place))
        if (files.FolderExists(place / name) || !is_coverage_file(name))
            platform::Raise(error_number::kPermissionDenied,
                            "The dataset " + place.string() + " is not deleted: it holds other files (" + name + ").");
    const auto temporary = place.parent_path() / platform::TemporaryName(place.filename().string());
    if (files.FolderExists(temporary)) folders.DeleteTree(temporary);
    files.Rename(place, temporary);
    folders.DeleteTree(temporary);
}

void delete_raster_file(platform::IFileSystem& files, const std::filesystem::path& file) {
    files.DeleteFile(file, true);
    const std::filesystem::path overviews = file.string() + ".ovr";
    if (files.FileExists(overviews)) files.DeleteFile(overviews, true);
}

}  // namespace

RasterWorkspace::RasterWorkspace(platform::IFileSystem& files, platform::IFolders& folders)
    : m_files(files), m_folders(folders) {}

bool RasterWorkspace::Exists(const std::filesystem::path& folder, const std::string& name) const {
    return !find_raster(m_files, folder, name).empty();
}

std::shared_ptr<platform::IRasterDataset> RasterWorkspace::Open(const std::filesystem::path& folder,
                                                                const std::string& name) {
    const auto place = find_raster(m_files, folder, name);
    return place.empty() ? nullptr : OpenRaster(place);
}

std::unique_ptr<platform::IRasterWriter> RasterWorkspace::Create(const std::filesystem::path& folder,
                                                                 const platform::RasterDefinition& definition) {
    if (definition.Format == "GRID") return CreateGrid(m_files, m_folders, folder, definition);
    if (definition.Format == "GTiff") return CreateTiff(m_files, folder, definition);
    platform::Raise(error_number::kInvalidCall, "Unknown raster format: " + definition.Format);
}

void RasterWorkspace::Delete(const std::filesystem::path& folder, const std::string& name) {
    platform::CheckDatasetName(name);
    const auto place = find_raster(m_files, folder, name);
    if (place.empty()) platform::Raise(error_number::kFileNotFound, "There is no raster " + (folder / name).string());
    if (m_files.FolderExists(place))
        delete_dataset_folder(m_files, m_folders, place);
    else
        delete_raster_file(m_files, place);
    remove_side_file(m_files, place);
}

TinWorkspace::TinWorkspace(platform::IFileSystem& files, platform::IFolders& folders)
    : m_files(files), m_folders(folders) {}

bool TinWorkspace::Exists(const std::filesystem::path& folder, const std::string& name) const {
    return is_tin(m_files, folder / name);
}

void TinWorkspace::Delete(const std::filesystem::path& folder, const std::string& name) {
    platform::CheckDatasetName(name);
    if (!Exists(folder, name))
        platform::Raise(error_number::kFileNotFound, "There is no TIN " + (folder / name).string());
    delete_dataset_folder(m_files, m_folders, folder / name);
}

}  // namespace wxl::files
