#include "engine/pair_sums.h"

#include "engine/pair_level.h"
#include "engine/tiles.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace wxl::engine {
namespace {

/// Costs in nanoseconds, as measured; only their ratios matter.
constexpr double kPerPair = 3.0;
constexpr double kPerCell = 22.0;
constexpr double kPerPoint = 300.0;

/// Cells of the largest transform, 8 bytes each.
constexpr double kMostCells = 1.2e8;

/// Bandwidths share a transform up to these ratios: the reach of the largest widens the box, and the smallest sets its
/// cells. A tile's own transform has about this many cells a side.
constexpr double kRatioOfSpectrum = 7.0;
constexpr double kRatioOfTiles = 4.0;
constexpr double kCellsOfTile = 2048.0;

/// Looking at the tiles takes a while itself; below this cost of all pairs it cannot pay.
constexpr double kWorthTiles = 5e8;

/// Tiles are numbered exactly up to here.
constexpr double kMostTilesAcross = 1e15;

double cost_of_pairs(double count) {
    return kPerPair * count * (count - 1.0) / 2.0;
}

double cell_of_spectrum(Criterion criterion, double lowest) {
    return 3.141592653589793 * lowest / (1.5 * highest_wave_of(criterion));
}

/// Cells of a transform, as a real number: the sizes themselves may be beyond any whole number.
double cells_of_spectrum(Criterion criterion, const platform::Extent& extent, double lowest, double highest) {
    const double apart = reach_of(criterion) * highest;
    const double cell = cell_of_spectrum(criterion, lowest);
    return (extent.Width() + apart) / cell * ((extent.Height() + apart) / cell);
}

double cost_of_spectrum(double cells, double count) {
    return cells > kMostCells ? std::numeric_limits<double>::infinity() : kPerCell * cells + kPerPoint * count;
}

/// One group of bandwidths and the side of its tiles.
struct Level {
    std::span<const double> Bandwidths;
    double Reach;
    double Side;
};

std::vector<Level> levels_of(Criterion criterion, std::span<const double> bandwidths, double ratio) {
    std::vector<Level> levels;
    while (!bandwidths.empty()) {
        const double lowest = bandwidths.front();
        const auto end = std::upper_bound(bandwidths.begin(), bandwidths.end(), ratio * lowest);
        const auto count = static_cast<std::size_t>(end - bandwidths.begin());
        const double reach = reach_of(criterion) * bandwidths[count - 1];
        const double cell = cell_of_spectrum(criterion, lowest);
        levels.push_back({bandwidths.first(count), reach, std::max(kCellsOfTile * cell - 3.0 * reach, 2.0 * reach)});
        bandwidths = bandwidths.subspan(count);
    }
    return levels;
}

struct TileChoice {
    bool Spectrum;
    double Cost;
};

TileChoice choice_for(Criterion criterion, const Tile& tile, const Level& level) {
    platform::Extent extent = platform::bounds_of(tile.Owners);
    for (const platform::Point& point : tile.Margin) extent.Include(point);
    const auto owners = static_cast<double>(tile.Owners.size());
    const auto margin = static_cast<double>(tile.Margin.size());
    const double pairs = cost_of_pairs(owners) + kPerPair * owners * margin;
    const double cells = cells_of_spectrum(criterion, extent, level.Bandwidths.front(), level.Bandwidths.back());
    const double spectrum = cost_of_spectrum(cells, owners) + (margin > 0.0 ? cost_of_spectrum(cells, margin) : 0.0);
    return {spectrum < pairs, std::min(spectrum, pairs)};
}

double cost_of_tiles(Criterion criterion, std::span<const platform::Point> points, std::span<const double> bandwidths) {
    const platform::Extent extent = platform::bounds_of(points);
    double cost = 0.0;
    for (const Level& level : levels_of(criterion, bandwidths, kRatioOfTiles)) {
        if (std::max(extent.Width(), extent.Height()) / level.Side > kMostTilesAcross)
            return std::numeric_limits<double>::infinity();
        for_each_tile(points, level.Side, level.Reach,
                      [&](const Tile& tile) { cost += choice_for(criterion, tile, level).Cost; });
    }
    return cost;
}

void add_tile(PairLevel& sums, const Tile& tile, bool spectrum, WorkClock& clock) {
    if (spectrum) return sums.AddHalfSpectrum(tile.Owners, tile.Margin, clock);
    sums.AddPairs(tile.Owners, clock);
    sums.AddHalfPairs(tile.Owners, tile.Margin, clock);
}

void append(const PairLevel& sums, std::span<const double> bandwidths, std::vector<PairSum>& results,
            WorkClock& clock) {
    for (const double bandwidth : bandwidths) {
        results.push_back(sums.At(bandwidth));
        clock.Tick();
    }
}

double cost_of_spectra(Criterion criterion, std::span<const platform::Point> points,
                       std::span<const double> bandwidths) {
    const platform::Extent extent = platform::bounds_of(points);
    double cost = 0.0;
    for (const Level& level : levels_of(criterion, bandwidths, kRatioOfSpectrum)) {
        const double cells = cells_of_spectrum(criterion, extent, level.Bandwidths.front(), level.Bandwidths.back());
        cost += cost_of_spectrum(cells, static_cast<double>(points.size()));
    }
    return cost;
}

std::vector<PairSum> sums_by_spectra(Criterion criterion, std::span<const platform::Point> points,
                                     std::span<const double> bandwidths, WorkClock& clock) {
    std::vector<PairSum> results;
    for (const Level& level : levels_of(criterion, bandwidths, kRatioOfSpectrum)) {
        PairLevel sums(criterion, level.Bandwidths.front(), level.Bandwidths.back());
        sums.AddSpectrum(points, clock);
        append(sums, level.Bandwidths, results, clock);
    }
    return results;
}

std::vector<PairSum> sums_by_tiles(Criterion criterion, std::span<const platform::Point> points,
                                   std::span<const double> bandwidths, WorkClock& clock) {
    std::vector<PairSum> results;
    for (const Level& level : levels_of(criterion, bandwidths, kRatioOfTiles)) {
        PairLevel sums(criterion, level.Bandwidths.front(), level.Bandwidths.back());
        for_each_tile(points, level.Side, level.Reach, [&](const Tile& tile) {
            add_tile(sums, tile, choice_for(criterion, tile, level).Spectrum, clock);
        });
        append(sums, level.Bandwidths, results, clock);
    }
    return results;
}

}  // namespace

PairMethod fastest_pair_method(Criterion criterion, std::span<const platform::Point> points,
                               std::span<const double> bandwidths) {
    const auto count = static_cast<double>(points.size());
    const double direct = cost_of_pairs(count);
    const double spectrum = cost_of_spectra(criterion, points, bandwidths);
    if (spectrum < direct) return PairMethod::kSpectrum;
    if (direct < kWorthTiles) return PairMethod::kDirect;
    return cost_of_tiles(criterion, points, bandwidths) < direct ? PairMethod::kTiles : PairMethod::kDirect;
}

std::vector<PairSum> pair_sums(Criterion criterion, std::span<const platform::Point> points,
                               std::span<const double> bandwidths, PairMethod method, WorkClock& clock) {
    if (method == PairMethod::kTiles) return sums_by_tiles(criterion, points, bandwidths, clock);
    if (method == PairMethod::kSpectrum) return sums_by_spectra(criterion, points, bandwidths, clock);
    PairLevel sums(criterion, bandwidths.front(), bandwidths.back());
    sums.AddPairs(points, clock);
    std::vector<PairSum> results;
    append(sums, bandwidths, results, clock);
    return results;
}

double megabytes_of_transforms(Criterion criterion, const platform::Extent& extent, std::size_t count, double lowest,
                               double highest) {
    constexpr double kMegabytesPerCell = 8e-6;
    const auto points = static_cast<double>(count);
    const double direct = cost_of_pairs(points);
    double cost = 0.0;
    double largest = 0.0;
    for (double from = lowest; from <= highest; from *= kRatioOfSpectrum) {
        const double to = std::min(kRatioOfSpectrum * from, highest);
        const double cells = cells_of_spectrum(criterion, extent, from, to);
        cost += cost_of_spectrum(cells, points);
        largest = std::max(largest, cells);
    }
    if (cost < direct) return largest * kMegabytesPerCell;
    return direct < kWorthTiles ? 0.0 : kCellsOfTile * kCellsOfTile * kMegabytesPerCell;
}

}  // namespace wxl::engine
