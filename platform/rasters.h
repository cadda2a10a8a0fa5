#pragma once
// Rasters, read and written row by row.

#include "platform/values.h"

#include <cstdint>
#include <filesystem>
#include <functional>
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

    /// Of the dataset that the band belongs to.
    virtual SpatialReference Reference() const = 0;

    /// Reads one row of Columns cells into `cells` (RuntimeError 9 when the row or the span does not fit).
    virtual void ReadRow(std::int32_t row, std::span<float> cells) = 0;

    /// Exact minimum and maximum over all cells, computed anew (skip factor 1 in both directions). Cells that are not a
    /// number are passed over; both values are NaN when there is no other.
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

    /// RuntimeError 9 when the row has not Columns cells or all rows are written, 6 for a cell that CheckCells refuses.
    virtual void WriteRow(std::span<const float> cells) = 0;

    /// Gives the raster its name and opens it; RuntimeError 5 before the last row is written.
    virtual std::shared_ptr<IRasterDataset> Publish() = 0;
};

/// What a new raster is to be.
struct RasterDefinition {
    std::string Name;
    std::string Format = "GRID";
    RasterGeometry Geometry;
    SpatialReference Reference;
};

/// Makes a raster in a folder, ready for its rows.
using CreateRaster = std::function<std::unique_ptr<IRasterWriter>(const std::filesystem::path& folder,
                                                                  const RasterDefinition& definition)>;

/// Refuses a definition that no raster can have: a bad name (CheckDatasetName), no cells, a cell size or origin that is
/// not finite, or one so far out that doubles cannot tell its cells apart. RuntimeError 5 with the reason.
void CheckRasterDefinition(const RasterDefinition& definition);

/// Refuses cells that are not finite, and the lowest float, which formats keep for missing cells. RuntimeError 6 that
/// names the raster.
void CheckCells(std::span<const float> cells, const std::string& name);

/// Minimum and maximum of a band, row by row; for bands that have no faster way.
RasterStatistics StatisticsByRows(IRasterBand& band);

}  // namespace wxl::platform
