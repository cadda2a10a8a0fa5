#pragma once
// Density levels that enclose given percentages of a surface's volume.

#include "platform/messages.h"
#include "platform/rasters.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

namespace wxl::isopleths {

/// Number of bins above bin 0: values are told apart to 1/100000 of the range.
inline constexpr std::int32_t kBins = 100000;

/// Counts the cells of a surface by height and turns percentages of the volume into levels.
///
/// A cell of value v falls into bin floor((v - minimum) x 100000 / range) and weighs as much as its bin's number:
/// volume is measured above the minimum in bin units, so that bin 0 weighs nothing. Counters and products of counter
/// and bin are signed 32-bit numbers: more than 21474 cells in bin 100000 (more in lower bins, in proportion) are
/// RuntimeError 6.
class VolumeHistogram {
public:
    /// Exact minimum and maximum of all cells that will be added.
    VolumeHistogram(double minimum, double maximum);

    /// RuntimeError 9 for a value outside minimum..maximum (or NaN), 6 or 11 when minimum equals maximum.
    void Add(std::span<const float> cells);

    /// Sum of counter x bin over all bins; RuntimeError 6 when a product overflows.
    double TotalVolume() const;

    /// For each percentage, in the order given, the value of the lowest bin at which the volume accumulated from the
    /// top downward first reaches that share of the total. 0 gives minimum + 1.00001 x range, above every cell; more
    /// than 100 is RuntimeError 9.
    std::vector<double> Levels(std::span<const double> percentages) const;

private:
    std::int32_t Weight(std::int32_t bin) const;

    double m_minimum;
    double m_range;
    std::vector<std::int32_t> m_counts;
};

/// The cells along a surface's outer edge.
struct SurfaceEdge {
    double MaxValue = 0.0;      ///< the largest of them, at least 0
    std::vector<double> North;  ///< from west to east
    std::vector<double> South;  ///< from west to east
    std::vector<double> West;   ///< from north to south
    std::vector<double> East;   ///< from north to south
};

/// Reads a surface row by row into edge and histogram. After a fault `edge` holds what was read before it: the top and
/// bottom rows are read first. RuntimeError 9 for a surface without cells.
/// @param host given a turn now and then; may be null
void scan_surface(platform::IRasterBand& band, platform::IHost* host, SurfaceEdge& edge, VolumeHistogram& histogram);

}  // namespace wxl::isopleths
