#pragma once
#include "apps/cli/input_layer.h"
#include "platform/rasters.h"

#include <cstdint>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace wxl::cli {

/// A density raster of an earlier run.
struct DensityRaster {
    std::string Name;  ///< of the animal where the run's summary tells it, otherwise of the raster
    std::optional<std::int64_t> Fixes;
    std::optional<double> Bandwidth;
    std::string Failure;  ///< why the run has no raster of this animal; empty: it has one
    std::filesystem::path Path;
};

/// The distributions of the summary in a folder; where there is none, all rasters in it by their names. An animal that
/// has several is called after its rasters.
/// RuntimeError 53 when the folder holds neither.
std::vector<DensityRaster> rasters_in(const std::filesystem::path& folder);

/// The tables in a folder that are read besides the rasters.
ReadFiles tables_in(const std::filesystem::path& folder);

/// What all rasters of a comparison share.
struct RasterFrame {
    platform::RasterGeometry Grid;
    platform::SpatialReference Reference;
};

/// The grid of the rasters. RuntimeError 5 that tells both geometries where two differ: nothing is resampled.
RasterFrame common_frame(const std::vector<DensityRaster>& rasters, bool allowIndirect);

/// The cells as densities per square map unit, row by row from the north; cells that are not a number are 0.
/// RuntimeError 5 for a negative or infinite cell.
std::vector<double> densities_of(const DensityRaster& raster, double scaling, bool allowIndirect);

/// The scaling factor that the settings record of a folder tells; 1000000 where there is none.
double scaling_in(const std::filesystem::path& folder);

}  // namespace wxl::cli
