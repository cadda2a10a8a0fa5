#pragma once
#include "adapters/gdal/source_rules.h"
#include "platform/rasters.h"

#include <filesystem>
#include <memory>
#include <vector>

namespace wxl::files {

/// Which cells a raster may have: contours need square ones, a reference for other grids only has a place and a width.
enum class CellShape { kSquare, kOblong };

/// The first band of any raster that GDAL opens: a GRID folder, a GeoTIFF, ... RuntimeError 53 when nothing stands
/// there, 57 when it is no raster, 5 when its cells are not north-up, or oblong where `shape` is kSquare;
/// IndirectSource for what `sources` rules out. The cell size of oblong cells is their width. Nothing is written beside
/// it.
std::shared_ptr<platform::IRasterDataset> OpenRaster(const std::filesystem::path& path,
                                                     Sources sources = Sources::kPlain,
                                                     CellShape shape = CellShape::kSquare);

/// The files that a raster is read from, as OpenRaster would open it.
std::vector<std::filesystem::path> RasterFiles(const std::filesystem::path& path, Sources sources = Sources::kPlain);

}  // namespace wxl::files
