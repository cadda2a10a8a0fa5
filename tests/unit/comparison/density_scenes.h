#pragma once
// Densities with known overlap.

#include "comparison/overlap.h"
#include "tests/support/samples.h"

#include <cmath>
#include <cstdint>
#include <numbers>
#include <vector>

namespace wxl::comparison {

inline platform::RasterGeometry square_grid(std::int32_t cells, double cellSize) {
    return {0.0, 0.0, cellSize, cells, cells};
}

/// A round Gaussian of standard deviation `sd` around (x, y), at the centres of the cells.
inline std::vector<double> gaussian(const platform::RasterGeometry& grid, double x, double y, double sd) {
    std::vector<double> cells;
    for (std::int32_t row = 0; row < grid.Rows; ++row)
        for (std::int32_t column = 0; column < grid.Columns; ++column) {
            const double dx = grid.OriginX + (column + 0.5) * grid.CellSize - x;
            const double dy = grid.OriginY + (grid.Rows - row - 0.5) * grid.CellSize - y;
            cells.push_back(std::exp(-(dx * dx + dy * dy) / (2.0 * sd * sd)) / (2.0 * std::numbers::pi * sd * sd));
        }
    return cells;
}

inline DensitySet set_of(const platform::RasterGeometry& grid, const std::vector<std::vector<double>>& densities,
                         const std::vector<double>& percents) {
    DensitySet set{grid, percents, {}};
    for (const std::vector<double>& cells : densities)
        set.Animals.push_back(cells.empty() ? TiledDensity() : TiledDensity(grid, whole_of(grid, cells), percents));
    return set;
}

inline const PairOverlap& find(const std::vector<PairOverlap>& pairs, std::uint32_t i, std::uint32_t j, double percent,
                               bool conditional = false) {
    static const PairOverlap kNone;
    for (const PairOverlap& pair : pairs)
        if (pair.First == i && pair.Second == j && pair.Percent == percent && pair.Conditional == conditional)
            return pair;
    return kNone;
}

}  // namespace wxl::comparison
