#include "comparison/tiled_density.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <utility>

namespace wxl::comparison {
namespace {

constexpr double kSmallestShare = 1e-18;

std::size_t tiles_along(std::int32_t cells, std::size_t perTile) {
    return (static_cast<std::size_t>(cells) + perTile - 1) / perTile;
}

float root_of(double share) {
    return share < kSmallestShare ? 0.0F : static_cast<float>(std::sqrt(share));
}

/// The tiles with a cell above 0, ascending.
std::vector<std::uint32_t> live_tiles(const platform::RasterGeometry& grid, const PartOfGrid& part) {
    const std::size_t perRow = tiles_per_row(grid);
    std::vector<std::uint32_t> tiles;
    std::vector<char> alive(perRow);
    const auto keep = [&](std::size_t tileRow) {
        for (std::size_t tile = 0; tile < perRow; ++tile)
            if (alive[tile] != 0) tiles.push_back(static_cast<std::uint32_t>(tileRow * perRow + tile));
        std::fill(alive.begin(), alive.end(), 0);
    };
    const std::int32_t end = part.FirstRow + part.Rows;
    for (std::int32_t row = part.FirstRow; row < end; ++row) {
        for (std::int32_t column = part.FirstColumn; column < part.FirstColumn + part.Columns; ++column)
            if (part(column, row) > 0.0) alive[static_cast<std::size_t>(column) / kTileColumns] = 1;
        const std::size_t tileRow = static_cast<std::size_t>(row) / kTileRows;
        if (row + 1 == end || static_cast<std::size_t>(row + 1) / kTileRows != tileRow) keep(tileRow);
    }
    return tiles;
}

}  // namespace

std::uint32_t tiles_per_row(const platform::RasterGeometry& grid) {
    return static_cast<std::uint32_t>(tiles_along(grid.Columns, kTileColumns));
}

std::uint32_t tile_rows(const platform::RasterGeometry& grid) {
    return static_cast<std::uint32_t>(tiles_along(grid.Rows, kTileRows));
}

PartOfGrid whole_of(const platform::RasterGeometry& grid, std::vector<double> cells) {
    if (cells.empty()) return {};
    return {0, 0, grid.Columns, grid.Rows, std::move(cells)};
}

TiledDensity::TiledDensity(const platform::RasterGeometry& grid, const PartOfGrid& part,
                           std::span<const double> percents)
    : m_volume(total_density(part.Cells) * grid.CellSize * grid.CellSize),
      m_ranges(ranges_by_volume(part.Cells, percents)),
      m_tiles(live_tiles(grid, part)) {
    m_roots.reserve(m_tiles.size() * kTileCells);
    m_masks.resize(m_tiles.size() * m_ranges.size());
    for (const std::uint32_t tile : m_tiles) AddTile(grid, part, tile);
}

void TiledDensity::AddTile(const platform::RasterGeometry& grid, const PartOfGrid& part, std::uint32_t tile) {
    const std::uint32_t perRow = tiles_per_row(grid);
    const auto north = static_cast<std::int32_t>(tile / perRow * kTileRows);
    const auto west = static_cast<std::int32_t>(tile % perRow * kTileColumns);
    const std::int32_t endRow = std::min(north + static_cast<std::int32_t>(kTileRows), part.FirstRow + part.Rows);
    const std::int32_t endColumn =
        std::min(west + static_cast<std::int32_t>(kTileColumns), part.FirstColumn + part.Columns);
    const std::size_t place = m_roots.size() / kTileCells;
    const double area = grid.CellSize * grid.CellSize;
    m_roots.resize(m_roots.size() + kTileCells, 0.0F);
    for (std::int32_t row = std::max(north, part.FirstRow); row < endRow; ++row)
        for (std::int32_t column = std::max(west, part.FirstColumn); column < endColumn; ++column) {
            const double density = part(column, row);
            const std::size_t bit =
                static_cast<std::size_t>(row - north) * kTileColumns + static_cast<std::size_t>(column - west);
            m_roots[place * kTileCells + bit] = root_of(density * area);
            for (std::size_t percent = 0; percent < m_ranges.size(); ++percent)
                if (belongs(m_ranges[percent], density))
                    m_masks[percent * m_tiles.size() + place][bit / 64] |= std::uint64_t{1} << (bit % 64);
        }
}

}  // namespace wxl::comparison
