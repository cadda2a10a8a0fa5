#include "adapters/files/raster_writing.h"

namespace wxl::files {

void check_new_raster(const platform::IFileSystem& files, const std::filesystem::path& folder,
                      const std::filesystem::path& place, const platform::RasterDefinition& definition) {
    if (!files.FolderExists(folder))
        platform::Raise(platform::error_number::kPathNotFound, "The folder does not exist: " + folder.string());
    platform::CheckRasterDefinition(definition);
    if (files.FileExists(place) || files.FolderExists(place))
        platform::Raise(platform::error_number::kFileExists, "The name is taken: " + place.string());
}

void remove_side_file(platform::IFileSystem& files, const std::filesystem::path& place) {
    const std::filesystem::path side = place.string() + ".aux.xml";
    if (files.FileExists(side)) files.DeleteFile(side, true);
}

void raise_unfinished(const std::string& name) {
    platform::Raise(
        platform::error_number::kInvalidCall,
        "The raster \"" + name + "\" cannot be written on: rows are missing, a write failed, or it is finished.");
}

}  // namespace wxl::files
