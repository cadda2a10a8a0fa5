// Overlap of all pairs of animals on a grid of 317 x 317 cells, all six indices at 95 %.
// Names: <program>/<animals>/<width of a range in percent of the grid's>/<1: conditional indices too>.

#include "comparison/overlap.h"
#include "tests/support/samples.h"

#include <benchmark/benchmark.h>
#include <cmath>
#include <vector>

namespace {

using namespace wxl;

constexpr std::int32_t kCells = 317;

/// A hill that ends at `width` percent of the grid across.
std::vector<double> hill(double centreX, double centreY, double width) {
    const double reach = kCells * width / 200.0;
    std::vector<double> cells;
    for (std::int32_t row = 0; row < kCells; ++row)
        for (std::int32_t column = 0; column < kCells; ++column) {
            const double x = (column - centreX) / reach;
            const double y = (row - centreY) / reach;
            const bool inside = std::abs(x) < 1.0 && std::abs(y) < 1.0;
            cells.push_back(inside ? std::exp(-8.0 * (x * x + y * y)) / reach / reach : 0.0);
        }
    return cells;
}

comparison::DensitySet scene(const benchmark::State& state) {
    comparison::DensitySet set{{0.0, 0.0, 1.0, kCells, kCells}, {95.0}, {}};
    const auto width = static_cast<double>(state.range(1));
    tests::Dice dice(5);
    for (std::int64_t animal = 0; animal < state.range(0); ++animal) {
        const double margin = width / 200.0;
        const double x = kCells * (margin + (1.0 - 2.0 * margin) * dice.Uniform());
        const double y = kCells * (margin + (1.0 - 2.0 * margin) * dice.Uniform());
        set.Animals.emplace_back(set.Grid, comparison::whole_of(set.Grid, hill(x, y, width)), set.Percents);
    }
    return set;
}

/// From densities in memory to live tiles and ranges.
void tiles(benchmark::State& state) {
    const platform::RasterGeometry grid{0.0, 0.0, 1.0, kCells, kCells};
    const comparison::PartOfGrid part =
        comparison::whole_of(grid, hill(kCells / 2.0, kCells / 2.0, static_cast<double>(state.range(1))));
    const std::vector<double> percents = {95.0};
    for (auto _ : state)
        for (std::int64_t animal = 0; animal < state.range(0); ++animal) {
            comparison::TiledDensity tiled(grid, part, percents);
            benchmark::DoNotOptimize(tiled);
        }
}

void all_pairs(benchmark::State& state) {
    const comparison::DensitySet set = scene(state);
    const comparison::OverlapSettings settings{.Conditional = state.range(2) != 0, .AllPairs = true};
    double sum = 0.0;
    for (auto _ : state)
        for (const comparison::PairOverlap& pair : comparison::overlaps(set, settings)) sum += pair.Indices->Ba;
    benchmark::DoNotOptimize(sum);
}

BENCHMARK(tiles)->Args({1000, 30})->Args({1000, 100})->Unit(benchmark::kSecond)->Iterations(1);
BENCHMARK(all_pairs)
    ->Args({1000, 30, 0})
    ->Args({1000, 100, 0})
    ->Args({1000, 30, 1})
    ->Args({1000, 100, 1})
    ->Unit(benchmark::kSecond)
    ->Iterations(1);

}  // namespace

BENCHMARK_MAIN();
