#pragma once
// Sums over the cells that two animals share, for all pairs that share a tile.

#include "comparison/tiled_density.h"

#include <cstddef>
#include <cstdint>
#include <functional>
#include <vector>

namespace wxl::comparison {

/// Sums over the tiles in which both densities live, of shares of the distributions (density x cell area).
struct PairTotals {
    AgreementSums Agreement;
    double VolumeI = 0.0;  ///< of i in these tiles
    double VolumeJ = 0.0;
    friend bool operator==(const PairTotals&, const PairTotals&) = default;
};

/// Sums at one percentage.
struct RangeTotals {
    std::int64_t CommonCells = 0;  ///< in both ranges
    double JInRangeOfI = 0.0;      ///< volume of j within the range of i
    double IInRangeOfJ = 0.0;
    PairTotals Conditional;  ///< of the densities within their own ranges; 0 unless asked for
    double JInBoth = 0.0;    ///< volume of j in the cells of both ranges; 0 unless asked for
    double IInBoth = 0.0;
    friend bool operator==(const RangeTotals&, const RangeTotals&) = default;
};

struct PairSums {
    std::uint32_t I = 0;
    std::uint32_t J = 0;
    PairTotals Whole;
    std::vector<RangeTotals> Ranges;  ///< one per percentage
    friend bool operator==(const PairSums&, const PairSums&) = default;
};

/// Volumes of one animal, added from its tiles in the way in which pairs are: equal to VolumeI and VolumeJ of a pair
/// that shares all tiles.
struct TileVolumes {
    double Whole = 0.0;
    std::vector<double> Ranges;  ///< within each range
};

std::vector<TileVolumes> tile_volumes(const DensitySet& set);

/// The sums of every pair I <= J that shares a tile, ascending. A tile's sums are added to those of its row of tiles,
/// and these, from the north, to the pair's.
/// @param progress told now and then how much is done, 0 to 1; may be null
std::vector<PairSums> pair_sums(const DensitySet& set, bool conditional, const std::function<void(double)>& progress);

/// The sums of a pair over one row of tiles.
struct RowSums {
    std::uint32_t Row = 0;
    PairSums Sums;
    friend bool operator==(const RowSums&, const RowSums&) = default;
};

/// The part of pair_sums that the rows of tiles from `firstRow` to before `endRow` make: a record for each pair and row
/// that it shares a tile in, ascending by pair, then row.
std::vector<RowSums> row_sums(const DensitySet& set, bool conditional, std::uint32_t firstRow, std::uint32_t endRow,
                              const std::function<void(double)>& progress);

/// What pair_sums gives, bit by bit, from the records of all rows, in any order.
std::vector<PairSums> added_rows(std::vector<RowSums> rows);

}  // namespace wxl::comparison
