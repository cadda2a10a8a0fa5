#include "adapters/raster/raster_writing.h"

#include "platform/dataset_files.h"

namespace wxl::files {

void check_new_raster(const platform::IFileSystem& files, const std::filesystem::path& folder,
                      const platform::RasterDefinition& definition) {
    if (!files.FolderExists(folder))
        platform::Raise(platform::error_number::kPathNotFound, "The folder does not exist: " + folder.string());
    platform::CheckRasterDefinition(definition);
    refuse_taken_raster(files, folder, definition);
}

void refuse_taken_raster(const platform::IFileSystem& files, const std::filesystem::path& folder,
                         const platform::RasterDefinition& definition) {
    for (const auto& part : platform::RasterParts(folder, definition.Name, definition.Format))
        if (files.FileExists(part) || files.FolderExists(part))
            platform::Raise(platform::error_number::kFileExists, "The name is taken: " + part.string());
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
