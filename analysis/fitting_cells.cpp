#include "analysis/fitting_cells.h"

#include "analysis/raster_extent.h"

#include <array>
#include <cmath>

namespace wxl::analysis {
namespace {

constexpr double kCellsPerBandwidth = 10.0;
constexpr double kFewestPerBandwidth = 2.0;
constexpr double kMostCells = 1e7;
constexpr std::array<double, 3> kSteps = {1.0, 2.0, 5.0};

/// A side as its digit and its power of ten. Powers are divided by where they are negative: 0.1 times 2 is not 0.2.
struct RoundSide {
    std::size_t Step = 0;
    int Power = 0;

    double Length() const {
        const double scale = std::pow(10.0, std::abs(Power));
        return Power < 0 ? kSteps[Step] / scale : kSteps[Step] * scale;
    }
    RoundSide Next() const { return Step + 1 < kSteps.size() ? RoundSide{Step + 1, Power} : RoundSide{0, Power + 1}; }
};

RoundSide nearest_side(double length) {
    RoundSide side{0, static_cast<int>(std::floor(std::log10(length))) - 1};
    while (std::abs(side.Next().Length() - length) < std::abs(side.Length() - length)) side = side.Next();
    return side;
}

bool has_too_many(const platform::Extent& extent, double margin, double side) {
    const platform::RasterGeometry grid = enlarged_grid(extent, margin, side);
    return static_cast<double>(grid.Columns) * static_cast<double>(grid.Rows) > kMostCells;
}

}  // namespace

double fitting_cell_size(double bandwidth, const platform::Extent& extent, double margin) {
    if (!(bandwidth > 0.0) || !std::isfinite(bandwidth)) return 0.0;
    RoundSide side = nearest_side(bandwidth / kCellsPerBandwidth);
    while (has_too_many(extent, margin, side.Length()) && side.Next().Length() * kFewestPerBandwidth <= bandwidth)
        side = side.Next();
    return side.Length();
}

}  // namespace wxl::analysis
