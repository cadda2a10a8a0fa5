#include "adapters/raster/grid_layout.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cstdio>
#include <cstring>
#include <string_view>

namespace wxl::files::grid {
namespace {

constexpr std::uint32_t swapped(float cell) {
    return __builtin_bswap32(std::bit_cast<std::uint32_t>(cell));
}

template <class Number>
void append_raw(std::string& bytes, Number value) {
    std::array<char, sizeof(Number)> raw{};
    std::memcpy(raw.data(), &value, sizeof(Number));
    bytes.append(raw.data(), raw.size());
}

void append_zeros(std::string& bytes, std::size_t count) {
    bytes.append(count, '\0');
}

constexpr std::int32_t words(std::int64_t bytes) {
    return static_cast<std::int32_t>(bytes / 2);
}

}  // namespace

void append_u16(std::string& bytes, std::uint16_t value) {
    append_raw(bytes, __builtin_bswap16(value));
}

void append_i32(std::string& bytes, std::int32_t value) {
    append_raw(bytes, __builtin_bswap32(static_cast<std::uint32_t>(value)));
}

void append_f64(std::string& bytes, double value) {
    append_raw(bytes, __builtin_bswap64(std::bit_cast<std::uint64_t>(value)));
}

std::string tile_name(std::int32_t tileColumn, std::int32_t tileRow) {
    std::array<char, 32> name{};
    if (tileRow < 2)
        std::snprintf(name.data(), name.size(), "w%03d%03d", tileColumn + 1, 1 - tileRow);
    else
        std::snprintf(name.data(), name.size(), "z%03d%03d", tileColumn + 1, tileRow - 1);
    return name.data();
}

std::string file_head(std::int64_t length) {
    std::string head;
    append_i32(head, 0x0000270A);
    append_i32(head, -1004);  // FFFFFC14
    append_zeros(head, 16);
    append_i32(head, words(length));
    append_zeros(head, 72);
    return head;
}

std::int64_t data_length(std::int32_t columns, std::int32_t rows) {
    const std::int64_t filled = count_of(columns, kBlockColumns);
    const std::int64_t empty = kTileBlocks - filled;
    return kHeadBytes + count_of(rows, kBlockRows) * (filled * (kBlockBytes + 2) + empty * 2);
}

std::string index_file(std::int32_t columns, std::int32_t rows) {
    const std::int32_t filled = count_of(columns, kBlockColumns);
    const std::int32_t blockRows = count_of(rows, kBlockRows);
    std::string index = file_head(kHeadBytes + std::int64_t{blockRows} * kTileBlocks * 8);
    std::int32_t offset = words(kHeadBytes);
    for (std::int32_t row = 0; row < blockRows; ++row) {
        for (std::int32_t column = 0; column < kTileBlocks; ++column) {
            const std::int32_t length = column < filled ? words(kBlockBytes) : 0;
            append_i32(index, offset);
            append_i32(index, length);
            offset += 1 + length;
        }
    }
    return index;
}

std::string header_file(const platform::RasterGeometry& geometry) {
    const double cell = geometry.CellSize;
    const platform::Extent bounds = geometry.Bounds();
    constexpr double kTileWidth = kTileCells;
    std::string header("GRID1.2\0", 8);
    append_i32(header, 0);
    append_i32(header, -1);
    append_i32(header, 2);  // floats
    append_i32(header, 1);  // not compressed
    append_zeros(header, 232);
    append_f64(header, cell);
    append_f64(header, cell);
    append_f64(header, bounds.XMin - kTileWidth * cell / 2.0);
    append_f64(header, bounds.YMax - 3.0 * kTileWidth * cell / 2.0);
    append_i32(header, kTileBlocks);
    append_i32(header, kTileCells / kBlockRows);
    append_i32(header, kBlockColumns);
    append_i32(header, 1);
    append_i32(header, kBlockRows);
    return header;
}

std::string bounds_file(const platform::RasterGeometry& geometry) {
    const platform::Extent bounds = geometry.Bounds();
    std::string bytes;
    for (const double edge : {bounds.XMin, bounds.YMin, bounds.XMax, bounds.YMax}) append_f64(bytes, edge);
    return bytes;
}

std::string statistics_file(const std::array<double, 4>& minimumMaximumMeanDeviation) {
    std::string bytes;
    for (const double value : minimumMaximumMeanDeviation) append_f64(bytes, value);
    return bytes;
}

void append_block(std::string& bytes, std::span<const std::span<const float>> rows, std::size_t firstColumn) {
    append_u16(bytes, kBlockBytes / 2);
    for (std::size_t row = 0; row < std::size_t{kBlockRows}; ++row) {
        std::array<std::uint32_t, kBlockColumns> cells;
        const auto source = row < rows.size() ? rows[row].subspan(firstColumn) : std::span<const float>();
        const std::size_t filled = std::min(source.size(), cells.size());
        for (std::size_t i = 0; i < filled; ++i) cells[i] = swapped(source[i]);
        std::fill(cells.begin() + static_cast<std::ptrdiff_t>(filled), cells.end(), swapped(kMissing));
        std::array<char, sizeof(cells)> raw;
        std::memcpy(raw.data(), cells.data(), raw.size());
        bytes.append(raw.data(), raw.size());
    }
}

}  // namespace wxl::files::grid
