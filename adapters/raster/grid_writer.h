#pragma once
#include "platform/file_system.h"
#include "platform/rasters.h"

#include <filesystem>
#include <memory>

namespace wxl::files {

/// A writer of the binary GRID format (32-bit floats) that holds four rows of cells. The grid is built in a temporary
/// folder beside its final place; Publish gives it its name and opens it.
std::unique_ptr<platform::IRasterWriter> CreateGrid(platform::IFileSystem& files, platform::IFolders& folders,
                                                    const std::filesystem::path& folder,
                                                    const platform::RasterDefinition& definition);

}  // namespace wxl::files
