#pragma once
// One animal's density and ranges, kept only where there is any of it.

#include "comparison/tile_sums.h"
#include "comparison/volume_range.h"
#include "platform/values.h"

#include <array>
#include <cstdint>
#include <span>
#include <vector>

namespace wxl::comparison {

/// Which cells of a tile belong to a range: cell (row, column) of the tile is bit 32 row + column.
using TileMask = std::array<std::uint64_t, kTileCells / 64>;

/// Densities per square map unit of a part of a grid, row by row from the north: finite and not negative. Beyond the
/// part there is none.
struct PartOfGrid {
    std::int32_t FirstColumn = 0;
    std::int32_t FirstRow = 0;
    std::int32_t Columns = 0;
    std::int32_t Rows = 0;
    std::vector<double> Cells;

    double operator()(std::int32_t column, std::int32_t row) const {
        return Cells[static_cast<std::size_t>(row - FirstRow) * static_cast<std::size_t>(Columns) +
                     static_cast<std::size_t>(column - FirstColumn)];
    }
};

/// All cells of a grid as a part of it; nothing where there are no cells.
PartOfGrid whole_of(const platform::RasterGeometry& grid, std::vector<double> cells);

/// A density cut into tiles of kTileRows x kTileColumns cells, numbered row by row from the north-west; the last row
/// and column of tiles may reach beyond the grid, with empty cells. Only live tiles, those with any density, are kept.
class TiledDensity {
public:
    /// An animal without a distribution.
    TiledDensity() = default;

    /// @param grid the grid of all densities that will be compared
    /// @param part what of it holds the density
    /// @param percents of the ranges, above 0 and up to 100
    TiledDensity(const platform::RasterGeometry& grid, const PartOfGrid& part, std::span<const double> percents);

    /// Whether there is any density.
    bool IsAlive() const { return !m_tiles.empty(); }

    /// Sum over the cells x cell area, from the densities as they were given.
    double Volume() const { return m_volume; }

    /// One range per percentage, in their order.
    const std::vector<VolumeRange>& Ranges() const { return m_ranges; }

    /// Numbers of the live tiles, ascending.
    const std::vector<std::uint32_t>& Tiles() const { return m_tiles; }

    /// Square roots of the cells' shares of the distribution (density x cell area), kTileCells of the live tile at
    /// `place` in Tiles(). Shares below 1E-18 count as none: their products would leave the range of floats.
    const float* Roots(std::size_t place) const { return &m_roots[place * kTileCells]; }

    /// The range of percentage number `percent` within the live tile at `place`.
    const TileMask& Mask(std::size_t percent, std::size_t place) const {
        return m_masks[percent * m_tiles.size() + place];
    }

private:
    void AddTile(const platform::RasterGeometry& grid, const PartOfGrid& part, std::uint32_t tile);

    double m_volume = 0.0;
    std::vector<VolumeRange> m_ranges;
    std::vector<std::uint32_t> m_tiles;
    std::vector<float> m_roots;
    std::vector<TileMask> m_masks;
};

/// Tiles in one row of tiles of a grid.
std::uint32_t tiles_per_row(const platform::RasterGeometry& grid);

/// Rows of tiles of a grid.
std::uint32_t tile_rows(const platform::RasterGeometry& grid);

/// Densities on one grid, with ranges at the same percentages.
struct DensitySet {
    platform::RasterGeometry Grid;
    std::vector<double> Percents;
    std::vector<TiledDensity> Animals;
};

}  // namespace wxl::comparison
