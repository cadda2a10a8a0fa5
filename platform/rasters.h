#pragma once
// Rasters, read and written row by row.

#include "platform/values.h"

#include <cstdint>
#include <filesystem>
#include <memory>
#include <span>
#include <string>

namespace wxl::platform {

struct RasterStatistics {
    double Minimum = 0.0;
    double Maximum = 0.0;
};

/// One band of cell values, 32-bit floats, row 0 north.
class IRasterBand {
public:
    virtual ~IRasterBand() = default;
    virtual RasterGeometry Geometry() const = 0;

    /// Reads one row of Columns cells into `cells` (RuntimeError 9 when the row or the span does not fit).
    virtual void ReadRow(std::int32_t row, std::span<float> cells) = 0;

    /// Exact minimum and maximum over all cells, computed anew (skip factor 1 in both directions).
    virtual RasterStatistics ComputeStatistics() = 0;
};

/// A raster dataset with one band.
class IRasterDataset {
public:
    virtual ~IRasterDataset() = default;
    virtual std::string Name() const = 0;
    virtual SpatialReference Reference() const = 0;
    virtual std::shared_ptr<IRasterBand> Band() = 0;

    /// Where the dataset lies on disk; empty for one that lives in memory only.
    virtual std::filesystem::path Path() const = 0;
};

/// A raster being written, row by row from the north. Until Publish nothing stands under its final name; a writer
/// destroyed before Publish leaves nothing behind.
class IRasterWriter {
public:
    virtual ~IRasterWriter() = default;
    virtual void WriteRow(std::span<const float> cells) = 0;
    virtual std::shared_ptr<IRasterDataset> Publish() = 0;
};

/// What a new raster is to be.
struct RasterDefinition {
    std::string Name;
    std::string Format = "GRID";
    RasterGeometry Geometry;
    SpatialReference Reference;
};

}  // namespace wxl::platform
