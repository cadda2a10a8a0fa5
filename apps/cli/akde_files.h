#pragma once
// Rasters and isopleths of wxl akde.

#include "apps/cli/akde_animal.h"
#include "platform/services.h"

#include <filesystem>
#include <string>
#include <vector>

namespace wxl::cli {

/// Where an animal's files go, and what they are.
struct AkdePlace {
    std::filesystem::path Folder;
    std::string Name;  ///< of the raster; "_poly" and "_line" follow for isopleths
    std::string Format;
    double Scaling = 1.0;
    bool Lines = false;
    bool Overwrite = false;
    platform::SpatialReference Reference;
};

/// Writes the raster and the isopleths, polygons with the fields PERCENT, BOUND (low, est, high), LEVEL (of the raster)
/// and AREA (corrected, square map units). The files, raster first. RuntimeError 58 when a name is taken.
std::vector<std::string> write_akde(const AkdeAnimal& akde, const AkdePlace& place, const platform::Services& services);

}  // namespace wxl::cli
