#include "comparison/pair_table.h"

#include <algorithm>
#include <bit>
#include <limits>
#include <span>
#include <utility>

namespace wxl::comparison {
namespace {

/// Animals are compared block by block, so that the tiles of two blocks stay in cache.
constexpr std::size_t kBlock = 32;

void add(PairTotals& sum, const PairTotals& part) {
    sum.Agreement.Affinity += part.Agreement.Affinity;
    sum.Agreement.Shared += part.Agreement.Shared;
    sum.Agreement.Product += part.Agreement.Product;
    sum.Agreement.Distance += part.Agreement.Distance;
    sum.VolumeI += part.VolumeI;
    sum.VolumeJ += part.VolumeJ;
}

void add(RangeTotals& sum, const RangeTotals& part) {
    sum.CommonCells += part.CommonCells;
    sum.JInRangeOfI += part.JInRangeOfI;
    sum.IInRangeOfJ += part.IInRangeOfJ;
    add(sum.Conditional, part.Conditional);
    sum.JInBoth += part.JInBoth;
    sum.IInBoth += part.IInBoth;
}

void add(PairSums& sum, const PairSums& part) {
    add(sum.Whole, part.Whole);
    for (std::size_t percent = 0; percent < sum.Ranges.size(); ++percent)
        add(sum.Ranges[percent], part.Ranges[percent]);
}

void clear(PairSums& sums) {
    sums.Whole = {};
    std::fill(sums.Ranges.begin(), sums.Ranges.end(), RangeTotals{});
}

bool any(const TileMask& mask) {
    return std::any_of(mask.begin(), mask.end(), [](std::uint64_t word) { return word != 0; });
}

std::int64_t common_cells(const TileMask& a, const TileMask& b) {
    std::int64_t count = 0;
    for (std::size_t word = 0; word < a.size(); ++word) count += std::popcount(a[word] & b[word]);
    return count;
}

/// The range of one percentage within one tile, spread over the cells.
struct SpreadRange {
    const TileMask* Mask = nullptr;                              ///< null: no cell of the tile is in the range
    std::vector<float> Inside = std::vector<float>(kTileCells);  ///< 1 in the range, 0 outside
    std::vector<float> Roots = std::vector<float>(kTileCells);   ///< 0 outside the range
    double Volume = 0.0;                                         ///< within the range
};

/// One animal in one tile.
struct SpreadTile {
    std::uint32_t Animal = 0;
    const float* Roots = nullptr;
    double Volume = 0.0;
    std::vector<SpreadRange> Ranges;
};

const std::vector<float>& ones() {
    static const std::vector<float> kOnes(kTileCells, 1.0F);
    return kOnes;
}

void spread(SpreadRange& range, const TileMask& mask, const float* roots) {
    range.Mask = any(mask) ? &mask : nullptr;
    range.Volume = 0.0;
    if (range.Mask == nullptr) return;
    for (std::size_t cell = 0; cell < kTileCells; ++cell) {
        const bool inside = (mask[cell / 64] >> (cell % 64) & 1U) != 0;
        range.Inside[cell] = inside ? 1.0F : 0.0F;
        range.Roots[cell] = inside ? roots[cell] : 0.0F;
    }
    range.Volume = tile_math().Squares(range.Inside.data(), roots);
}

void spread(SpreadTile& tile, const TiledDensity& density, std::size_t place) {
    tile.Roots = density.Roots(place);
    tile.Volume = tile_math().Squares(ones().data(), tile.Roots);
    for (std::size_t percent = 0; percent < tile.Ranges.size(); ++percent)
        spread(tile.Ranges[percent], density.Mask(percent, place), tile.Roots);
}

/// A live tile of one of a block's animals.
struct LiveTile {
    std::uint32_t Tile = 0;
    std::uint32_t Animal = 0;
    std::uint32_t Place = 0;
};

/// The live tiles of up to kBlock animals, tile by tile.
struct Block {
    std::uint32_t First = 0;
    std::uint32_t End = 0;
    std::vector<LiveTile> Tiles;
};

/// Rows of tiles from First to before End.
struct TileRows {
    std::uint32_t PerRow = 1;  ///< tiles in a row
    std::uint32_t First = 0;
    std::uint32_t End = std::numeric_limits<std::uint32_t>::max();

    bool Hold(std::uint32_t tile) const { return tile / PerRow >= First && tile / PerRow < End; }
};

Block block_from(std::span<const TiledDensity> animals, std::size_t first, const TileRows& rows) {
    Block block{
        static_cast<std::uint32_t>(first), static_cast<std::uint32_t>(std::min(animals.size(), first + kBlock)), {}};
    for (std::uint32_t animal = block.First; animal < block.End; ++animal) {
        const auto& tiles = animals[animal].Tiles();
        for (std::uint32_t place = 0; place < tiles.size(); ++place)
            if (rows.Hold(tiles[place])) block.Tiles.push_back({tiles[place], animal, place});
    }
    std::sort(block.Tiles.begin(), block.Tiles.end(), [](const LiveTile& a, const LiveTile& b) {
        return a.Tile != b.Tile ? a.Tile < b.Tile : a.Animal < b.Animal;
    });
    return block;
}

/// The animals of a block that live in one tile after another.
class BlockTiles {
public:
    BlockTiles(std::span<const TiledDensity> animals, const Block& block, std::size_t percents)
        : m_animals(animals), m_next(block.Tiles.begin()), m_end(block.Tiles.end()) {
        m_spread.resize(kBlock);
        for (SpreadTile& tile : m_spread) tile.Ranges.resize(percents);
    }

    bool AtEnd() const { return m_next == m_end; }
    std::uint32_t Tile() const { return m_next->Tile; }

    /// Passes over the present tile.
    void Skip() {
        const std::uint32_t tile = Tile();
        while (!AtEnd() && Tile() == tile) ++m_next;
    }

    /// Passes over the present tile and spreads its animals.
    std::span<const SpreadTile> Take() {
        const std::uint32_t tile = Tile();
        std::size_t count = 0;
        for (; !AtEnd() && Tile() == tile; ++m_next, ++count) {
            m_spread[count].Animal = m_next->Animal;
            spread(m_spread[count], m_animals[m_next->Animal], m_next->Place);
        }
        return {m_spread.data(), count};
    }

private:
    std::span<const TiledDensity> m_animals;
    std::vector<LiveTile>::const_iterator m_next;
    std::vector<LiveTile>::const_iterator m_end;
    std::vector<SpreadTile> m_spread;
};

void add_conditional(RangeTotals& sums, const SpreadRange& i, const SpreadRange& j) {
    const TileMath& math = tile_math();
    add(sums.Conditional, {math.Agreement(i.Roots.data(), j.Roots.data()), i.Volume, j.Volume});
    sums.JInBoth += math.Squares(i.Inside.data(), j.Roots.data());
    sums.IInBoth += math.Squares(j.Inside.data(), i.Roots.data());
}

void add_tile(PairSums& sums, const SpreadTile& i, const SpreadTile& j, bool conditional) {
    const TileMath& math = tile_math();
    add(sums.Whole, {math.Agreement(i.Roots, j.Roots), i.Volume, j.Volume});
    for (std::size_t percent = 0; percent < sums.Ranges.size(); ++percent) {
        const SpreadRange& rangeI = i.Ranges[percent];
        const SpreadRange& rangeJ = j.Ranges[percent];
        RangeTotals& totals = sums.Ranges[percent];
        if (rangeI.Mask != nullptr) totals.JInRangeOfI += math.Squares(rangeI.Inside.data(), j.Roots);
        if (rangeJ.Mask != nullptr) totals.IInRangeOfJ += math.Squares(rangeJ.Inside.data(), i.Roots);
        if (rangeI.Mask == nullptr || rangeJ.Mask == nullptr) continue;
        totals.CommonCells += common_cells(*rangeI.Mask, *rangeJ.Mask);
        if (conditional) add_conditional(totals, rangeI, rangeJ);
    }
}

/// Sums of the pairs of two blocks.
class BlockSums {
public:
    /// @param rows gets the sums of each row where it is given; the totals are not made then
    BlockSums(std::size_t percents, bool conditional, std::vector<RowSums>* rows)
        : m_conditional(conditional),
          m_rows(rows),
          m_row(kBlock * kBlock),
          m_total(kBlock * kBlock),
          m_met(kBlock * kBlock) {
        for (auto* sums : {&m_row, &m_total})
            for (PairSums& pair : *sums) pair.Ranges.resize(percents);
    }

    void Begin(const Block& first, const Block& second) {
        m_first = first.First;
        m_second = second.First;
    }

    void AddTile(std::span<const SpreadTile> first, std::span<const SpreadTile> second) {
        for (const SpreadTile& i : first)
            for (const SpreadTile& j : second)
                if (i.Animal <= j.Animal) add_tile(RowOf(i.Animal, j.Animal), i, j, m_conditional);
    }

    void EndRow(std::uint32_t row) {
        for (const std::size_t pair : m_touched) {
            if (m_rows == nullptr) {
                add(m_total[pair], m_row[pair]);
            } else {
                m_rows->push_back({row, Named(pair, m_row[pair])});
            }
            clear(m_row[pair]);
            m_met[pair] |= kMet;
            m_met[pair] &= static_cast<char>(~kInRow);
        }
        m_touched.clear();
    }

    void TakeInto(std::vector<PairSums>& pairs) {
        for (std::size_t pair = 0; pair < m_total.size(); ++pair) {
            if (m_met[pair] == 0) continue;
            pairs.push_back(Named(pair, m_total[pair]));
            clear(m_total[pair]);
            m_met[pair] = 0;
        }
    }

private:
    static constexpr char kMet = 1;
    static constexpr char kInRow = 2;

    PairSums Named(std::size_t pair, PairSums sums) const {
        sums.I = m_first + static_cast<std::uint32_t>(pair / kBlock);
        sums.J = m_second + static_cast<std::uint32_t>(pair % kBlock);
        return sums;
    }

    PairSums& RowOf(std::uint32_t i, std::uint32_t j) {
        const std::size_t pair = (i - m_first) * kBlock + (j - m_second);
        if ((m_met[pair] & kInRow) == 0) {
            m_met[pair] |= kInRow;
            m_touched.push_back(pair);
        }
        return m_row[pair];
    }

    bool m_conditional;
    std::vector<RowSums>* m_rows;
    std::uint32_t m_first = 0;
    std::uint32_t m_second = 0;
    std::vector<PairSums> m_row;    ///< of the present row of tiles
    std::vector<PairSums> m_total;  ///< of the rows before it
    std::vector<char> m_met;
    std::vector<std::size_t> m_touched;
};

/// Visits the tiles that both blocks live in, from the north-west.
void add_blocks(std::span<const TiledDensity> animals, const Block& first, const Block& second, std::size_t percents,
                std::uint32_t tilesPerRow, BlockSums& sums) {
    BlockTiles ofFirst(animals, first, percents);
    BlockTiles ofSecond(animals, second, percents);
    std::uint32_t row = 0;
    while (!ofFirst.AtEnd() && !ofSecond.AtEnd()) {
        if (ofFirst.Tile() < ofSecond.Tile()) {
            ofFirst.Skip();
        } else if (ofSecond.Tile() < ofFirst.Tile()) {
            ofSecond.Skip();
        } else {
            if (ofFirst.Tile() / tilesPerRow != row) sums.EndRow(row);
            row = ofFirst.Tile() / tilesPerRow;
            const auto tilesOfFirst = ofFirst.Take();
            sums.AddTile(tilesOfFirst, ofSecond.Take());
        }
    }
    sums.EndRow(row);
}

/// The volumes of one animal, row of tiles by row of tiles.
TileVolumes volumes_of(const TiledDensity& animal, SpreadTile& tile, std::uint32_t tilesPerRow) {
    const std::size_t percents = tile.Ranges.size();
    TileVolumes total{0.0, std::vector<double>(percents)};
    TileVolumes row = total;
    const auto end_row = [&] {
        total.Whole += std::exchange(row.Whole, 0.0);
        for (std::size_t p = 0; p < percents; ++p) total.Ranges[p] += std::exchange(row.Ranges[p], 0.0);
    };
    const std::vector<std::uint32_t>& tiles = animal.Tiles();
    for (std::size_t place = 0; place < tiles.size(); ++place) {
        if (place > 0 && tiles[place] / tilesPerRow != tiles[place - 1] / tilesPerRow) end_row();
        spread(tile, animal, place);
        row.Whole += tile.Volume;
        for (std::size_t p = 0; p < percents; ++p) row.Ranges[p] += tile.Ranges[p].Volume;
    }
    end_row();
    return total;
}

}  // namespace

std::vector<TileVolumes> tile_volumes(const DensitySet& set) {
    std::vector<TileVolumes> volumes;
    SpreadTile tile;
    tile.Ranges.resize(set.Percents.size());
    for (const TiledDensity& animal : set.Animals) volumes.push_back(volumes_of(animal, tile, tiles_per_row(set.Grid)));
    return volumes;
}

namespace {

/// Goes through all pairs of blocks; `taken` is called after each.
void sum_pairs(const DensitySet& set, const TileRows& rows, BlockSums& sums, const std::function<void()>& taken,
               const std::function<void(double)>& progress) {
    const std::span<const TiledDensity> animals = set.Animals;
    std::vector<Block> blocks;
    for (std::size_t first = 0; first < animals.size(); first += kBlock)
        blocks.push_back(block_from(animals, first, rows));
    const std::size_t all = blocks.size() * (blocks.size() + 1) / 2;
    std::size_t done = 0;
    for (std::size_t first = 0; first < blocks.size(); ++first)
        for (std::size_t second = first; second < blocks.size(); ++second) {
            sums.Begin(blocks[first], blocks[second]);
            add_blocks(animals, blocks[first], blocks[second], set.Percents.size(), rows.PerRow, sums);
            taken();
            if (progress) progress(static_cast<double>(++done) / static_cast<double>(all));
        }
}

bool is_before(const PairSums& a, const PairSums& b) {
    return a.I != b.I ? a.I < b.I : a.J < b.J;
}

bool is_earlier(const RowSums& a, const RowSums& b) {
    if (is_before(a.Sums, b.Sums) || is_before(b.Sums, a.Sums)) return is_before(a.Sums, b.Sums);
    return a.Row < b.Row;
}

}  // namespace

std::vector<PairSums> pair_sums(const DensitySet& set, bool conditional, const std::function<void(double)>& progress) {
    std::vector<PairSums> pairs;
    BlockSums sums(set.Percents.size(), conditional, nullptr);
    sum_pairs(
        set, {.PerRow = tiles_per_row(set.Grid)}, sums, [&] { sums.TakeInto(pairs); }, progress);
    std::sort(pairs.begin(), pairs.end(), is_before);
    return pairs;
}

std::vector<RowSums> row_sums(const DensitySet& set, bool conditional, std::uint32_t firstRow, std::uint32_t endRow,
                              const std::function<void(double)>& progress) {
    std::vector<RowSums> rows;
    std::vector<PairSums> totals;
    BlockSums sums(set.Percents.size(), conditional, &rows);
    sum_pairs(
        set, {tiles_per_row(set.Grid), firstRow, endRow}, sums,
        [&] {
            sums.TakeInto(totals);
            totals.clear();
        },
        progress);
    std::sort(rows.begin(), rows.end(), is_earlier);
    return rows;
}

std::vector<PairSums> added_rows(std::vector<RowSums> rows) {
    std::sort(rows.begin(), rows.end(), is_earlier);
    std::vector<PairSums> pairs;
    for (const RowSums& row : rows) {
        if (pairs.empty() || is_before(pairs.back(), row.Sums)) {
            pairs.push_back({.I = row.Sums.I, .J = row.Sums.J, .Whole = {}, .Ranges = {}});
            pairs.back().Ranges.resize(row.Sums.Ranges.size());
        }
        add(pairs.back(), row.Sums);
    }
    return pairs;
}

}  // namespace wxl::comparison
