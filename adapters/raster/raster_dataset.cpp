#include "adapters/raster/raster_dataset.h"

#include "adapters/gdal/gdal_support.h"
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
    platform::SpatialReference Reference() const override { return FromOgr(m_dataset->Handle->GetSpatialRef()); }

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

    platform::SpatialReference Reference() const override { return m_band->Reference(); }
    std::shared_ptr<platform::IRasterBand> Band() override { return m_band; }
    std::filesystem::path Path() const override { return m_dataset->Path; }

private:
    std::shared_ptr<OpenDataset> m_dataset;
    std::shared_ptr<platform::IRasterBand> m_band;
};

/// Whether a GRID's header says far more cells than the index of its tiles knows: missing tiles would be read as empty.
bool says_too_much(GDALDataset& dataset, const std::filesystem::path& path) {
    if (!platform::EqualNoCase(dataset.GetDriverName(), "AIG")) return false;
    int tileColumns = 1;
    int tileRows = 1;
    dataset.GetRasterBand(1)->GetBlockSize(&tileColumns, &tileRows);
    // Tiles of real GRIDs have some thousand cells; those of a damaged one would fill the memory.
    constexpr std::int64_t kLargestTile = 1'000'000;
    if (std::int64_t{tileColumns} * tileRows > kLargestTile) return true;
    const auto tiles = [](int cells, int tile) { return (std::int64_t{cells} + tile - 1) / tile; };
    const std::int64_t said = tiles(dataset.GetRasterXSize(), tileColumns) * tiles(dataset.GetRasterYSize(), tileRows);
    std::int64_t known = 0;
    std::error_code ignored;
    for (const auto& entry : std::filesystem::directory_iterator(path, ignored)) {
        const std::string name = platform::UpperCase(entry.path().filename().string());
        if (name.ends_with("X.ADF")) known += static_cast<std::int64_t>(entry.file_size(ignored)) / 8;
    }
    constexpr std::int64_t kEmptyTiles = 1000;
    return said > 16 * known + kEmptyTiles;
}

platform::RasterGeometry geometry_of(GDALDataset& dataset, const std::filesystem::path& path, CellShape shape) {
    const auto refuse = [&](const std::string& reason) {
        platform::Raise(error_number::kInvalidCall, "The raster " + path.string() + " " + reason + ".");
    };
    std::array<double, 6> transform{};
    if (dataset.GetRasterCount() < 1) refuse("has no band");
    if (dataset.GetGeoTransform(transform.data()) != CE_None) refuse("has no position");
    const auto [left, cellWidth, columnShear, top, rowShear, cellHeight] = transform;
    if (columnShear != 0.0 || rowShear != 0.0 || cellWidth <= 0.0 || cellHeight >= 0.0) refuse("is not north-up");
    const int columns = dataset.GetRasterXSize();
    const int rows = dataset.GetRasterYSize();
    if (says_too_much(dataset, path))
        refuse("says that it has " + std::to_string(columns) + " columns and " + std::to_string(rows) +
               " rows, and its files hold far fewer; it is damaged: copy it again from where it came from");
    // A damaged header may say anything, and rows are held in memory.
    constexpr int kWidest = 10'000'000;
    constexpr std::int64_t kMostCells = 4'000'000'000;
    if (columns > kWidest || std::int64_t{columns} * rows > kMostCells)
        refuse("says that it has " + std::to_string(columns) + " columns and " + std::to_string(rows) +
               " rows, which is more than can be read; is it damaged?");
    // The far edges may be off by half a cell at most.
    const bool oblong = std::abs(cellWidth + cellHeight) * std::max(columns, rows) > 0.5 * cellWidth;
    if (oblong && shape == CellShape::kSquare) refuse("has cells that are not square");
    return {left, top + rows * cellHeight, cellWidth, columns, rows};
}

std::filesystem::path without_separator(const std::filesystem::path& path) {
    return path.has_filename() ? path : path.parent_path();
}

GdalDatasetPtr open_for_reading(const std::filesystem::path& path, Sources sources) {
    RegisterGdal();
    const GdalErrors errors;
    if (sources == Sources::kPlain) CheckPlain(path);
    // A relative path could read as an address.
    const auto place = sources == Sources::kPlain ? std::filesystem::absolute(path) : path;
    GdalDatasetPtr handle(GDALDataset::Open(place.c_str(), GDAL_OF_RASTER | GDAL_OF_READONLY | GDAL_OF_VERBOSE_ERROR,
                                            AllowedDrivers(sources, DataKind::kRaster)));
    if (handle) handle->GetSpatialRef();
    CheckGrids(path);
    if (sources == Sources::kPlain && !handle) CheckFormat(path, DataKind::kRaster);
    if (!handle) errors.RaiseReading(path);
    return handle;
}

}  // namespace

std::vector<std::filesystem::path> RasterFiles(const std::filesystem::path& path, Sources sources) {
    const auto plain = without_separator(path);
    if (sources != Sources::kPlain) {
        auto files = files_of(*open_for_reading(plain, sources));
        files.push_back(plain);
        return files;
    }
    // GDAL would open what side files name to list it.
    std::vector<std::filesystem::path> files = {plain};
    const std::string stem = plain.stem().string() + ".";
    std::error_code unreadable;
    const auto folder = plain.has_parent_path() ? plain.parent_path() : std::filesystem::path(".");
    for (const auto& entry : std::filesystem::directory_iterator(folder, unreadable))
        if (entry.path().filename().string().starts_with(stem)) files.push_back(entry.path());
    return files;
}

std::shared_ptr<platform::IRasterDataset> OpenRaster(const std::filesystem::path& path, Sources sources,
                                                     CellShape shape) {
    const auto plain = without_separator(path);
    GdalDatasetPtr handle = open_for_reading(plain, sources);
    const GdalErrors errors;
    const auto geometry = geometry_of(*handle, plain, shape);
    return std::make_shared<GdalRasterDataset>(
        std::make_shared<OpenDataset>(OpenDataset{plain, std::move(handle), geometry}));
}

}  // namespace wxl::files
