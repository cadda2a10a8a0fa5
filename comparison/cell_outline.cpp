#include "comparison/cell_outline.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <utility>

namespace wxl::comparison {
namespace {

/// A corner of cells: that north-west of cell (row, column).
struct Corner {
    std::int32_t Row = 0;
    std::int32_t Column = 0;
    friend bool operator==(const Corner&, const Corner&) = default;
};

using Ring = std::vector<Corner>;

/// Twice the cells that a ring encloses: above 0 where it turns like the hands of a clock.
std::int64_t clockwise(const Ring& ring) {
    std::int64_t sum = 0;
    for (std::size_t i = 0; i < ring.size(); ++i) {
        const Corner& from = ring[i];
        const Corner& to = ring[(i + 1) % ring.size()];
        sum += std::int64_t{from.Column} * to.Row - std::int64_t{to.Column} * from.Row;
    }
    return sum;
}

/// Whether an animal's range has a cell at a bit of a tile.
bool has_bit(const TileMask& mask, std::size_t bit) {
    return (mask[bit / 64] >> (bit % 64) & 1U) != 0;
}

/// A live tile and what is meant of it.
struct MaskedTile {
    std::uint32_t Tile = 0;
    TileMask Mask{};
};

bool any(const TileMask& mask) {
    return std::any_of(mask.begin(), mask.end(), [](std::uint64_t word) { return word != 0; });
}

/// The tiles' cells, in the smallest rectangle of whole tiles around them.
CellWindow window_of(const platform::RasterGeometry& grid, const std::vector<MaskedTile>& tiles) {
    CellWindow window;
    if (tiles.empty()) return window;
    const auto perRow = static_cast<std::int32_t>(tiles_per_row(grid));
    std::int32_t left = perRow;
    std::int32_t right = 0;
    for (const MaskedTile& tile : tiles) {
        const auto column = static_cast<std::int32_t>(tile.Tile) % perRow;
        left = std::min(left, column);
        right = std::max(right, column);
    }
    constexpr auto kRows = static_cast<std::int32_t>(kTileRows);
    constexpr auto kColumns = static_cast<std::int32_t>(kTileColumns);
    window.Row = static_cast<std::int32_t>(tiles.front().Tile) / perRow * kRows;
    window.Column = left * kColumns;
    window.Rows = (static_cast<std::int32_t>(tiles.back().Tile) / perRow + 1) * kRows - window.Row;
    window.Columns = (right + 1 - left) * kColumns;
    window.Inside.assign(static_cast<std::size_t>(window.Rows) * static_cast<std::size_t>(window.Columns), 0);
    for (const MaskedTile& tile : tiles) {
        const auto row = static_cast<std::int32_t>(tile.Tile) / perRow * kRows - window.Row;
        const auto column = static_cast<std::int32_t>(tile.Tile) % perRow * kColumns - window.Column;
        for (std::size_t bit = 0; bit < kTileCells; ++bit) {
            if (!has_bit(tile.Mask, bit)) continue;
            const auto inRow = static_cast<std::int32_t>(bit / kTileColumns);
            const auto inColumn = static_cast<std::int32_t>(bit % kTileColumns);
            window.Inside[static_cast<std::size_t>(row + inRow) * static_cast<std::size_t>(window.Columns) +
                          static_cast<std::size_t>(column + inColumn)] = 1;
            ++window.Cells;
        }
    }
    return window;
}

/// Follows the edges of cells, with the cells on the right.
class Tracer {
public:
    explicit Tracer(const CellWindow& cells)
        : m_cells(cells),
          m_parts(cells.Inside.size(), 0),
          m_passed(cells.Inside.size(), 0),
          m_stands(static_cast<std::size_t>(cells.Rows + 1) * static_cast<std::size_t>(cells.Columns + 1), 0) {}

    /// The rings of each part: the outer one first.
    std::vector<std::vector<Ring>> Parts() {
        for (std::int32_t row = 0; row < m_cells.Rows; ++row)
            for (std::int32_t column = 0; column < m_cells.Columns; ++column) Visit(row, column);
        for (std::vector<Ring>& part : m_rings)
            std::stable_partition(part.begin(), part.end(), [](const Ring& ring) { return clockwise(ring) > 0; });
        return std::move(m_rings);
    }

private:
    std::size_t PlaceOf(std::int32_t row, std::int32_t column) const {
        return static_cast<std::size_t>(row) * static_cast<std::size_t>(m_cells.Columns) +
               static_cast<std::size_t>(column);
    }

    /// A cell whose northern edge no ring has passed yet begins one.
    void Visit(std::int32_t row, std::int32_t column) {
        if (!m_cells.Holds(row, column)) return;
        const std::size_t place = PlaceOf(row, column);
        if (m_parts[place] == 0) Flood(row, column);
        if (m_cells.Holds(row - 1, column) || m_passed[place] != 0) return;
        AddSimple(Follow(row, column), m_rings[m_parts[place] - 1]);
    }

    /// Marks all cells that hang together with one by edges as a new part.
    void Flood(std::int32_t row, std::int32_t column) {
        m_rings.emplace_back();
        const auto part = static_cast<std::uint32_t>(m_rings.size());
        std::vector<Corner> open = {{row, column}};
        m_parts[PlaceOf(row, column)] = part;
        while (!open.empty()) {
            const Corner cell = open.back();
            open.pop_back();
            for (const auto& [down, right] : kHeadings) {
                const Corner next{cell.Row + down, cell.Column + right};
                if (!m_cells.Holds(next.Row, next.Column) || m_parts[PlaceOf(next.Row, next.Column)] != 0) continue;
                m_parts[PlaceOf(next.Row, next.Column)] = part;
                open.push_back(next);
            }
        }
    }

    /// The corners at which the ring turns that passes the northern edge of a cell. Where cells meet in a corner alone
    /// it stays with the cell that it comes along.
    Ring Follow(std::int32_t row, std::int32_t column) {
        Ring ring;
        Corner at{row, column};
        std::size_t heading = kEast;
        do {
            if (heading == kEast) m_passed[PlaceOf(at.Row, at.Column)] = 1;
            at.Row += kHeadings[heading].first;
            at.Column += kHeadings[heading].second;
            const std::size_t before = heading;
            if (!AheadRight(at, heading)) {
                heading = (heading + 1) % 4;
            } else if (AheadLeft(at, heading)) {
                heading = (heading + 3) % 4;
            }
            if (heading != before) ring.push_back(at);
        } while (at != Corner{row, column} || heading != kEast);
        return ring;
    }

    bool AheadRight(const Corner& at, std::size_t heading) const {
        constexpr std::array<std::pair<int, int>, 4> kCell = {{{0, 0}, {0, -1}, {-1, -1}, {-1, 0}}};
        return m_cells.Holds(at.Row + kCell[heading].first, at.Column + kCell[heading].second);
    }

    bool AheadLeft(const Corner& at, std::size_t heading) const {
        constexpr std::array<std::pair<int, int>, 4> kCell = {{{-1, 0}, {0, 0}, {0, -1}, {-1, -1}}};
        return m_cells.Holds(at.Row + kCell[heading].first, at.Column + kCell[heading].second);
    }

    /// Where a corner stands in the ring at hand, from 1; 0: not in it.
    std::size_t& StandsAt(const Corner& corner) {
        return m_stands[static_cast<std::size_t>(corner.Row) * static_cast<std::size_t>(m_cells.Columns + 1) +
                        static_cast<std::size_t>(corner.Column)];
    }

    /// A ring that passes corners twice, as rings that do not.
    void AddSimple(const Ring& ring, std::vector<Ring>& rings) {
        Ring open;
        for (const Corner& corner : ring) {
            const std::size_t stands = StandsAt(corner);
            if (stands == 0) {
                open.push_back(corner);
                StandsAt(corner) = open.size();
                continue;
            }
            const auto first = open.begin() + static_cast<std::ptrdiff_t>(stands - 1);
            rings.emplace_back(first, open.end());
            for (auto gone = first + 1; gone != open.end(); ++gone) StandsAt(*gone) = 0;
            open.erase(first + 1, open.end());
        }
        for (const Corner& corner : open) StandsAt(corner) = 0;
        rings.push_back(std::move(open));
    }

    static constexpr std::size_t kEast = 0;
    /// East, south, west, north: rows and columns of a step.
    static constexpr std::array<std::pair<std::int32_t, std::int32_t>, 4> kHeadings = {
        {{0, 1}, {1, 0}, {0, -1}, {-1, 0}}};

    const CellWindow& m_cells;
    std::vector<std::uint32_t> m_parts;      ///< of each cell, from 1; 0: none yet
    std::vector<char> m_passed;              ///< whether a ring has passed a cell's northern edge
    std::vector<std::size_t> m_stands;       ///< see StandsAt
    std::vector<std::vector<Ring>> m_rings;  ///< of each part
};

/// The live tiles of an animal's range.
std::vector<MaskedTile> tiles_of(const TiledDensity& animal, std::size_t percent) {
    std::vector<MaskedTile> tiles;
    for (std::size_t place = 0; place < animal.Tiles().size(); ++place)
        if (any(animal.Mask(percent, place))) tiles.push_back({animal.Tiles()[place], animal.Mask(percent, place)});
    return tiles;
}

}  // namespace

CellWindow range_cells(const DensitySet& set, std::size_t animal, std::size_t percent) {
    return window_of(set.Grid, tiles_of(set.Animals[animal], percent));
}

CellWindow common_cells(const DensitySet& set, std::size_t i, std::size_t j, std::size_t percent) {
    const TiledDensity& first = set.Animals[i];
    const TiledDensity& second = set.Animals[j];
    std::vector<MaskedTile> tiles;
    std::size_t k = 0;
    for (std::size_t place = 0; place < first.Tiles().size(); ++place) {
        const std::uint32_t tile = first.Tiles()[place];
        while (k < second.Tiles().size() && second.Tiles()[k] < tile) ++k;
        if (k == second.Tiles().size() || second.Tiles()[k] != tile) continue;
        MaskedTile both{tile, first.Mask(percent, place)};
        for (std::size_t word = 0; word < both.Mask.size(); ++word) both.Mask[word] &= second.Mask(percent, k)[word];
        if (any(both.Mask)) tiles.push_back(both);
    }
    return window_of(set.Grid, tiles);
}

platform::Geometry cell_outline(const platform::RasterGeometry& grid, const CellWindow& cells) {
    platform::Geometry shape;
    for (const std::vector<Ring>& part : Tracer(cells).Parts())
        for (const Ring& ring : part) {
            std::vector<platform::Point>& points = shape.Parts.emplace_back();
            points.reserve(ring.size() + 1);
            for (const Corner& corner : ring)
                points.push_back({grid.OriginX + (cells.Column + corner.Column) * grid.CellSize,
                                  grid.OriginY + (grid.Rows - cells.Row - corner.Row) * grid.CellSize});
            points.push_back(points.front());
        }
    if (!shape.Parts.empty()) shape.Type = platform::ShapeType::kPolygon;
    return shape;
}

}  // namespace wxl::comparison
