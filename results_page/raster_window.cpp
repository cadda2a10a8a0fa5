#include "results_page/raster_window.h"

#include <algorithm>
#include <utility>
#include <vector>

namespace wxl::results_page {
namespace {

std::vector<float> row_of(const platform::IRasterBand& band) {
    return std::vector<float>(static_cast<std::size_t>(band.Geometry().Columns));
}

class WindowBand final : public platform::IRasterBand {
public:
    WindowBand(std::shared_ptr<platform::IRasterBand> source, const Window& window)
        : m_source(std::move(source)), m_window(window), m_row(row_of(*m_source)) {}

    platform::RasterGeometry Geometry() const override { return window_geometry(m_source->Geometry(), m_window); }

    platform::SpatialReference Reference() const override { return m_source->Reference(); }

    void ReadRow(std::int32_t row, std::span<float> cells) override {
        m_source->ReadRow(m_window.FirstRow + row, m_row);
        std::copy_n(m_row.begin() + m_window.FirstColumn, cells.size(), cells.begin());
    }

    platform::RasterStatistics ComputeStatistics() override { return platform::StatisticsByRows(*this); }

private:
    std::shared_ptr<platform::IRasterBand> m_source;
    Window m_window;
    std::vector<float> m_row;
};

class WindowRaster final : public platform::IRasterDataset {
public:
    WindowRaster(std::shared_ptr<platform::IRasterDataset> source, const Window& window)
        : m_source(std::move(source)), m_band(std::make_shared<WindowBand>(m_source->Band(), window)) {}

    std::string Name() const override { return m_source->Name(); }
    platform::SpatialReference Reference() const override { return m_source->Reference(); }
    std::shared_ptr<platform::IRasterBand> Band() override { return m_band; }
    std::filesystem::path Path() const override { return {}; }

private:
    std::shared_ptr<platform::IRasterDataset> m_source;
    std::shared_ptr<platform::IRasterBand> m_band;
};

/// First and last index met, widened by one within 0..count - 1.
struct Reach {
    std::int32_t First = -1;
    std::int32_t Last = -1;

    void Include(std::int32_t index) {
        First = First < 0 ? index : std::min(First, index);
        Last = std::max(Last, index);
    }
    void Widen(std::int32_t count) {
        First = std::max(First - 1, 0);
        Last = std::min(Last + 1, count - 1);
    }
};

}  // namespace

Window occupied_window(platform::IRasterBand& band, double& maximum, double least) {
    const platform::RasterGeometry geometry = band.Geometry();
    std::vector<float> cells = row_of(band);
    Reach columns;
    Reach rows;
    maximum = 0.0;
    for (std::int32_t row = 0; row < geometry.Rows; ++row) {
        band.ReadRow(row, cells);
        const auto occupied = [least](float cell) { return static_cast<double>(cell) > least; };
        const auto first = std::find_if(cells.begin(), cells.end(), occupied);
        if (first == cells.end()) continue;
        const auto last = std::find_if(cells.rbegin(), cells.rend(), occupied).base() - 1;
        rows.Include(row);
        columns.Include(static_cast<std::int32_t>(first - cells.begin()));
        columns.Include(static_cast<std::int32_t>(last - cells.begin()));
        for (const float cell : cells) maximum = std::max(maximum, static_cast<double>(cell));
    }
    if (rows.First < 0) return {0, 0, geometry.Columns, geometry.Rows};
    rows.Widen(geometry.Rows);
    columns.Widen(geometry.Columns);
    return {columns.First, rows.First, columns.Last - columns.First + 1, rows.Last - rows.First + 1};
}

platform::RasterGeometry window_geometry(const platform::RasterGeometry& raster, const Window& window) {
    return {raster.OriginX + window.FirstColumn * raster.CellSize,
            raster.OriginY + (raster.Rows - window.FirstRow - window.Rows) * raster.CellSize, raster.CellSize,
            window.Columns, window.Rows};
}

std::shared_ptr<platform::IRasterDataset> windowed(std::shared_ptr<platform::IRasterDataset> source,
                                                   const Window& window) {
    return std::make_shared<WindowRaster>(std::move(source), window);
}

}  // namespace wxl::results_page
