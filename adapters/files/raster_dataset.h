#pragma once
#include "adapters/files/source_rules.h"
#include "platform/rasters.h"

#include <filesystem>
#include <memory>

namespace wxl::files {

/// The first band of any raster that GDAL opens: a GRID folder, a GeoTIFF, ... RuntimeError 53 when nothing stands
/// there, 57 when it is no raster, 5 when its cells are not square or not north-up; IndirectSource for what `sources`
/// rules out. Nothing is written beside it.
std::shared_ptr<platform::IRasterDataset> OpenRaster(const std::filesystem::path& path,
                                                     Sources sources = Sources::kPlain);

}  // namespace wxl::files
