#pragma once
#include "platform/file_system.h"
#include "platform/rasters.h"

#include <filesystem>
#include <memory>

namespace wxl::files {

/// A writer of GeoTIFF files NAME.tif: one band of 32-bit floats, tiled and compressed without loss. The file is built
/// under a temporary name beside its final place; Publish gives it its name and opens it.
std::unique_ptr<platform::IRasterWriter> CreateTiff(platform::IFileSystem& files, const std::filesystem::path& folder,
                                                    const platform::RasterDefinition& definition);

}  // namespace wxl::files
