#include "adapters/files/raster_dataset.h"

#include "adapters/files/gdal_support.h"
#include "platform/runtime_error.h"
#include "platform/text.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <utility>

namespace wxl::files {

namespace error_number = platform::error_number;

namespace {

/// An open dataset, shared by a raster and its band.
struct OpenDataset {
    std::filesystem::path Path;
    GdalDatasetPtr Handle;
    platform::RasterGeometry Geometry;
};

class GdalRasterBand final : public platform::IRasterBand {
public:
    explicit GdalRasterBand(std::shared_ptr<OpenDataset> dataset)
        : m_dataset(std::move(dataset)), m_band(m_dataset->Handle->GetRasterBand(1)) {
        int columns = 0;
        m_band->GetBlockSize(&columns, &m_blockRows);
    }

    platform::RasterGeometry Geometry() const override { return m_dataset->Geometry; }

    void ReadRow(std::int32_t row, std::span<float> cells) override {
        const auto& geometry = m_dataset->Geometry;
        if (row < 0 || row >= geometry.Rows || cells.size() != static_cast<std::size_t>(geometry.Columns))
            platform::Raise(error_number::kSubscript);
        const GdalErrors errors;
        DropOtherBlocks(row);
        const CPLErr result = m_band->RasterIO(GF_Read, 0, row, geometry.Columns, 1, cells.data(), geometry.Columns, 1,
                                               GDT_Float32, 0, 0, nullptr);
        if (result != CE_None || errors.Failed()) errors.RaiseReading(m_dataset->Path);
    }

    platform::RasterStatistics ComputeStatistics() override { return platform::StatisticsByRows(*this); }

private:
    /// Rows are read from north to south: blocks once passed would only fill the memory.
    void DropOtherBlocks(std::int32_t row) {
        const std::int32_t blockRow = row / m_blockRows;
        if (std::exchange(m_blockRow, blockRow) != blockRow) m_band->FlushCache(false);
    }

    std::shared_ptr<OpenDataset> m_dataset;
    GDALRasterBand* m_band;
    int m_blockRows = 1;
    std::int32_t m_blockRow = -1;
};

class GdalRasterDataset final : public platform::IRasterDataset {
public:
    explicit GdalRasterDataset(std::shared_ptr<OpenDataset> dataset)
        : m_dataset(std::move(dataset)), m_band(std::make_shared<GdalRasterBand>(m_dataset)) {}

    std::string Name() const override {
        const auto& path = m_dataset->Path;
        const bool isTiff = platform::EqualNoCase(path.extension().string(), ".tif");
        return (isTiff ? path.stem() : path.filename()).string();
    }

    platform::SpatialReference Reference() const override { return FromOgr(m_dataset->Handle->GetSpatialRef()); }
    std::shared_ptr<platform::IRasterBand> Band() override { return m_band; }
    std::filesystem::path Path() const override { return m_dataset->Path; }

private:
    std::shared_ptr<OpenDataset> m_dataset;
    std::shared_ptr<platform::IRasterBand> m_band;
};

platform::RasterGeometry geometry_of(GDALDataset& dataset, const std::filesystem::path& path) {
    const auto refuse = [&](const std::string& reason) {
        platform::Raise(error_number::kInvalidCall, "The raster " + path.string() + " " + reason + ".");
    };
    std::array<double, 6> transform{};
    if (dataset.GetRasterCount() < 1) refuse("has no band");
    if (dataset.GetGeoTransform(transform.data()) != CE_None) refuse("has no position");
    const auto [left, cellWidth, columnShear, top, rowShear, cellHeight] = transform;
    if (columnShear != 0.0 || rowShear != 0.0 || cellWidth <= 0.0 || cellHeight >= 0.0) refuse("is not north-up");
    // The far edges may be off by half a cell at most.
    const int columns = dataset.GetRasterXSize();
    const int rows = dataset.GetRasterYSize();
    if (std::abs(cellWidth + cellHeight) * std::max(columns, rows) > 0.5 * cellWidth)
        refuse("has cells that are not square");
    return {left, top + rows * cellHeight, cellWidth, columns, rows};
}

}  // namespace

std::shared_ptr<platform::IRasterDataset> OpenRaster(const std::filesystem::path& path) {
    RegisterGdal();
    const GdalErrors errors;
    const auto plain = path.has_filename() ? path : path.parent_path();
    GdalDatasetPtr handle(GDALDataset::Open(plain.c_str(), GDAL_OF_RASTER | GDAL_OF_READONLY | GDAL_OF_VERBOSE_ERROR));
    if (!handle) errors.RaiseReading(plain);
    const auto geometry = geometry_of(*handle, plain);
    return std::make_shared<GdalRasterDataset>(
        std::make_shared<OpenDataset>(OpenDataset{plain, std::move(handle), geometry}));
}

}  // namespace wxl::files
