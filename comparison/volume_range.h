#pragma once
#include <cstdint>
#include <span>
#include <vector>

namespace wxl::comparison {

/// The cells of highest density that hold a share of a distribution's volume.
struct VolumeRange {
    double Percent = 0.0;
    double Level = 0.0;      ///< density of the cell with which the share is reached; 0 for 100 %
    std::int64_t Cells = 0;  ///< of the range
};

/// Whether a cell belongs to the range: as dense as its level but for rounding (a billionth), so that cells of equal
/// density enter together. At 100 % every cell with any density.
bool belongs(const VolumeRange& range, double density);

/// Sum of the densities, row by row as they lie.
double total_density(std::span<const double> cells);

/// The ranges that hold the given percentages of the sum over the cells: cells by falling density until they reach the
/// share (but for 1E-12 of the whole).
/// @param cells densities, finite and not negative
/// @param percents above 0 and up to 100
/// @return in the order of the percentages; no cell where there is no density at all
std::vector<VolumeRange> ranges_by_volume(std::span<const double> cells, std::span<const double> percents);

}  // namespace wxl::comparison
