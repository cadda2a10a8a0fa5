#include "analysis/suggestions.h"

#include "analysis/raster_extent.h"
#include "engine/kernel_grid.h"
#include "engine/kernel_reach.h"

#include <algorithm>
#include <cmath>

namespace wxl::analysis {
namespace {

constexpr double kCellsPerBandwidth = 10.0;

bool fits(const AnimalFixes& animal, double href, double cellSize) {
    const auto grid = enlarged_grid(platform::bounds_of(animal.Fixes), engine::kUsualReach * href, cellSize);
    const double cells = static_cast<double>(grid.Columns) * static_cast<double>(grid.Rows);
    return cells <= static_cast<double>(engine::KernelGrid::kMaximumCells);
}

bool all_fit(std::span<const AnimalFixes> animals, std::span<const HrefRow> hrefs, double cellSize) {
    for (std::size_t i = 0; i < animals.size(); ++i)
        if (hrefs[i].Href && !fits(animals[i], *hrefs[i].Href, cellSize)) return false;
    return true;
}

}  // namespace

double round_number(double value) {
    const double power = std::pow(10.0, std::floor(std::log10(value)));
    const double digits = value / power;
    const double rounded = digits < 1.5 ? 1.0 : digits < 3.5 ? 2.0 : digits < 7.5 ? 5.0 : 10.0;
    return rounded * power;
}

std::optional<double> suggested_cell_size(std::span<const AnimalFixes> animals, std::span<const HrefRow> hrefs) {
    std::optional<double> smallest;
    for (const HrefRow& row : hrefs)
        if (row.Href && *row.Href > 0.0) smallest = std::min(smallest.value_or(*row.Href), *row.Href);
    if (!smallest || !std::isfinite(*smallest)) return std::nullopt;
    double cellSize = std::max(round_number(*smallest / kCellsPerBandwidth), 1.0);
    // Twice a round number is nearest to the next one.
    while (!all_fit(animals, hrefs, cellSize)) cellSize = round_number(2.0 * cellSize);
    return cellSize;
}

}  // namespace wxl::analysis
