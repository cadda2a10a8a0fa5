#pragma once
// Layout of the binary GRID format: blocks of 256 x 4 cells, tiles of 8 x 512 blocks, one data and one index file each.
// All numbers are big-endian.

#include "platform/values.h"

#include <array>
#include <cstdint>
#include <span>
#include <string>

namespace wxl::files::grid {

inline constexpr std::int32_t kBlockColumns = 256;  ///< cells
inline constexpr std::int32_t kBlockRows = 4;       ///< cells
inline constexpr std::int32_t kTileBlocks = 8;      ///< blocks of a tile, left to right
inline constexpr std::int32_t kTileCells = 2048;    ///< cells of a tile, in both directions
inline constexpr std::int32_t kHeadBytes = 100;     ///< of data and index files
inline constexpr std::int32_t kBlockBytes = 4096;   ///< cells of one block, without its length
inline constexpr float kMissing = -3.4028234663852886e38F;

/// Blocks or tiles of `size` cells that `cells` cells begin.
constexpr std::int32_t count_of(std::int32_t cells, std::int32_t size) {
    return (cells - 1) / size + 1;
}

/// Which of `cells` cells in one direction a tile holds.
constexpr std::int32_t cells_in_tile(std::int32_t cells, std::int32_t tile) {
    const std::int32_t left = cells - tile * kTileCells;
    return left < kTileCells ? left : kTileCells;
}

/// Appends big-endian numbers.
void append_u16(std::string& bytes, std::uint16_t value);
void append_i32(std::string& bytes, std::int32_t value);
void append_f64(std::string& bytes, double value);

/// Name of a tile's data file, counted from 0 at the north-west corner, without the ending ".adf".
std::string tile_name(std::int32_t tileColumn, std::int32_t tileRow);

/// Head of a data or index file of `length` bytes.
std::string file_head(std::int64_t length);

/// Length in bytes of a tile's data file, from the cells it holds.
std::int64_t data_length(std::int32_t columns, std::int32_t rows);

/// The whole index file of a tile that holds columns x rows cells.
std::string index_file(std::int32_t columns, std::int32_t rows);

std::string header_file(const platform::RasterGeometry& geometry);
std::string bounds_file(const platform::RasterGeometry& geometry);
std::string statistics_file(const std::array<double, 4>& minimumMaximumMeanDeviation);

/// Appends one record of a block: its length and 4 rows of 256 cells. `rows` holds up to four rows of the raster, of
/// which the block takes the cells from `firstColumn` on; cells beyond a row's end or below the last row are missing.
void append_block(std::string& bytes, std::span<const std::span<const float>> rows, std::size_t firstColumn);

}  // namespace wxl::files::grid
