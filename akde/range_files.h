#pragma once
// Rasters and isopleths of home ranges.

#include "akde/animal_range.h"
#include "platform/services.h"

#include <filesystem>
#include <string>
#include <vector>

namespace wxl::akde {

/// Where an animal's files go, and what they are.
struct RangePlace {
    std::filesystem::path Folder;
    std::string Name;             ///< of the raster; "_poly" and "_line" follow for isopleths
    std::string Format = "GRID";  ///< of the raster: "GRID", "GTiff"
    double Scaling = 1e6;         ///< of the densities in the raster
    bool Lines = false;           ///< isopleths as lines too
    platform::SpatialReference Reference;
};

/// What stands in the folder under the names that the animal's files are to have, in whatever raster format.
std::vector<std::filesystem::path> standing_files(const RangePlace& place, const platform::Services& services);

/// What stands on disk of a range.
struct WrittenRange {
    std::vector<std::string> Files;            ///< raster first
    std::vector<platform::Geometry> Outlines;  ///< of the range's isopleths; null where one is not drawn
};

/// Writes the raster and the isopleths, polygons with the fields PERCENT, BOUND (low, est, high), LEVEL (of the raster)
/// and AREA (corrected, square map units).
///
/// All are written into a folder of their own beside those of the same names, which go when the new ones are complete
/// and then at once. RuntimeError 70 when the old raster's folder holds other files.
WrittenRange write_range(const AnimalRange& range, const RangePlace& place, const platform::Services& services);

}  // namespace wxl::akde
