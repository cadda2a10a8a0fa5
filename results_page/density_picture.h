#pragma once
#include "platform/pictures.h"
#include "platform/rasters.h"

#include <cstdint>

namespace wxl::results_page {

/// A density raster as a small picture.
struct DensityPicture {
    platform::IndexedPicture Picture;
    platform::Extent Bounds;  ///< map units; where the picture lies
};

/// Draws a raster with at most `side` picture cells in either direction: each the mean of a square block of cells,
/// coloured by the square root of its share of `maximum`, so that thin parts of a range show. 0 and below is clear.
/// @param maximum largest cell of the raster, at least 0
DensityPicture density_picture(platform::IRasterBand& band, double maximum, std::int32_t side);

/// Colours of the pictures.
inline constexpr std::size_t kDensityColours = 48;

}  // namespace wxl::results_page
