#include "comparison/tiled_density.h"

#include <algorithm>
#include <cmath>

namespace wxl::comparison {
namespace {

constexpr double kSmallestShare = 1e-18;

std::size_t tiles_along(std::int32_t cells, std::size_t perTile) {
    return (static_cast<std::size_t>(cells) + perTile - 1) / perTile;
}

float root_of(double share) {
    return share < kSmallestShare ? 0.0F : static_cast<float>(std::sqrt(share));
}

/// The part of a grid under one tile.
struct Window {
    std::size_t Row;
    std::size_t Column;
    std::size_t Rows;
    std::size_t Columns;
};

Window window_of(const platform::RasterGeometry& grid, std::uint32_t tile) {
    const std::size_t perRow = tiles_per_row(grid);
    const std::size_t row = tile / perRow * kTileRows;
    const std::size_t column = tile % perRow * kTileColumns;
    return {row, column, std::min(kTileRows, static_cast<std::size_t>(grid.Rows) - row),
            std::min(kTileColumns, static_cast<std::size_t>(grid.Columns) - column)};
}

/// The tiles with a cell above 0, ascending.
std::vector<std::uint32_t> live_tiles(const platform::RasterGeometry& grid, std::span<const double> cells) {
    const std::size_t perRow = tiles_per_row(grid);
    std::vector<char> alive(perRow * tiles_along(grid.Rows, kTileRows), 0);
    const auto columns = static_cast<std::size_t>(grid.Columns);
    for (std::size_t row = 0; row < static_cast<std::size_t>(grid.Rows); ++row)
        for (std::size_t column = 0; column < columns; ++column)
            if (cells[row * columns + column] > 0.0) alive[row / kTileRows * perRow + column / kTileColumns] = 1;
    std::vector<std::uint32_t> tiles;
    for (std::size_t tile = 0; tile < alive.size(); ++tile)
        if (alive[tile] != 0) tiles.push_back(static_cast<std::uint32_t>(tile));
    return tiles;
}

}  // namespace

std::uint32_t tiles_per_row(const platform::RasterGeometry& grid) {
    return static_cast<std::uint32_t>(tiles_along(grid.Columns, kTileColumns));
}

std::uint32_t tile_rows(const platform::RasterGeometry& grid) {
    return static_cast<std::uint32_t>(tiles_along(grid.Rows, kTileRows));
}

TiledDensity::TiledDensity(const platform::RasterGeometry& grid, std::span<const double> cells,
                           std::span<const double> percents)
    : m_volume(total_density(cells) * grid.CellSize * grid.CellSize),
      m_ranges(ranges_by_volume(cells, percents)),
      m_tiles(live_tiles(grid, cells)) {
    m_roots.reserve(m_tiles.size() * kTileCells);
    m_masks.resize(m_tiles.size() * m_ranges.size());
    for (const std::uint32_t tile : m_tiles) AddTile(grid, cells, tile);
}

void TiledDensity::AddTile(const platform::RasterGeometry& grid, std::span<const double> cells, std::uint32_t tile) {
    const Window window = window_of(grid, tile);
    const std::size_t place = m_roots.size() / kTileCells;
    const double area = grid.CellSize * grid.CellSize;
    m_roots.resize(m_roots.size() + kTileCells, 0.0F);
    for (std::size_t row = 0; row < window.Rows; ++row)
        for (std::size_t column = 0; column < window.Columns; ++column) {
            const double density =
                cells[(window.Row + row) * static_cast<std::size_t>(grid.Columns) + window.Column + column];
            const std::size_t bit = row * kTileColumns + column;
            m_roots[place * kTileCells + bit] = root_of(density * area);
            for (std::size_t percent = 0; percent < m_ranges.size(); ++percent)
                if (belongs(m_ranges[percent], density))
                    m_masks[percent * m_tiles.size() + place][bit / 64] |= std::uint64_t{1} << (bit % 64);
        }
}

}  // namespace wxl::comparison
