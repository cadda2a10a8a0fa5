#pragma once
// The part of a raster that holds something.

#include "platform/rasters.h"

#include <cstdint>
#include <memory>

namespace wxl::results_page {

/// Columns and rows of a raster, from the north-west.
struct Window {
    std::int32_t FirstColumn = 0;
    std::int32_t FirstRow = 0;
    std::int32_t Columns = 0;
    std::int32_t Rows = 0;
    friend bool operator==(const Window&, const Window&) = default;
};

/// The cells above `least` with a rim of one cell where the raster has it; the whole raster when no cell is. `maximum`
/// is set to the largest of them, at least 0.
Window occupied_window(platform::IRasterBand& band, double& maximum, double least = 0.0);

/// Where a window lies.
platform::RasterGeometry window_geometry(const platform::RasterGeometry& raster, const Window& window);

/// A window as a raster of its own. Rows are read from the source as they are asked for.
std::shared_ptr<platform::IRasterDataset> windowed(std::shared_ptr<platform::IRasterDataset> source,
                                                   const Window& window);

}  // namespace wxl::results_page
