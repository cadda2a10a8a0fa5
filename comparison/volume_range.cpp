#include "comparison/volume_range.h"

#include <algorithm>
#include <bit>
#include <cstddef>
#include <functional>

namespace wxl::comparison {
namespace {

constexpr double kTieTolerance = 1e-9;
constexpr double kShareTolerance = 1e-12;

/// Densities sorted into classes by their leading bits, 256 between a number and its double, falling from the largest:
/// finding a level then costs a few passes over the cells in place of a sort.
class DensityClasses {
public:
    explicit DensityClasses(std::span<const double> cells)
        : m_cells(cells), m_largest(*std::max_element(cells.begin(), cells.end())), m_sums(kClasses, 0.0) {
        for (const double cell : cells)
            if (cell > 0.0) m_sums[ClassOf(cell)] += cell;
    }

    /// The density at which the cells, from the densest on, reach `share`; the lowest density where they do not.
    double LevelOf(double share) const {
        double reached = 0.0;
        std::size_t place = 0;
        std::size_t last = 0;
        for (; place < kClasses && reached + m_sums[place] < share; ++place) {
            if (m_sums[place] > 0.0) last = place;
            reached += m_sums[place];
        }
        if (place == kClasses) return Falling(last).back();
        const std::vector<double> falling = Falling(place);
        for (const double density : falling) {
            reached += density;
            if (reached >= share) return density;
        }
        return falling.back();
    }

private:
    static constexpr std::size_t kClasses = std::size_t{1} << 14U;  // 64 octaves; the last takes all that is lower
    static constexpr unsigned kDroppedBits = 44;

    std::size_t ClassOf(double density) const {
        const std::uint64_t below = std::bit_cast<std::uint64_t>(m_largest) - std::bit_cast<std::uint64_t>(density);
        return std::min(kClasses - 1, static_cast<std::size_t>(below >> kDroppedBits));
    }

    std::vector<double> Falling(std::size_t place) const {
        std::vector<double> densities;
        for (const double cell : m_cells)
            if (cell > 0.0 && ClassOf(cell) == place) densities.push_back(cell);
        std::sort(densities.begin(), densities.end(), std::greater<>());
        return densities;
    }

    std::span<const double> m_cells;
    double m_largest;
    std::vector<double> m_sums;
};

bool is_whole(double percent) {
    return percent >= 100.0;
}

}  // namespace

bool belongs(const VolumeRange& range, double density) {
    return density > 0.0 && density >= range.Level * (1.0 - kTieTolerance);
}

double total_density(std::span<const double> cells) {
    double sum = 0.0;
    for (const double cell : cells) sum += cell;
    return sum;
}

std::vector<VolumeRange> ranges_by_volume(std::span<const double> cells, std::span<const double> percents) {
    std::vector<VolumeRange> ranges;
    for (const double percent : percents) ranges.push_back({.Percent = percent});
    const double total = total_density(cells);
    if (!(total > 0.0)) return ranges;
    const DensityClasses classes(cells);
    for (VolumeRange& range : ranges) {
        if (!is_whole(range.Percent)) range.Level = classes.LevelOf((range.Percent / 100.0 - kShareTolerance) * total);
        for (const double cell : cells) range.Cells += belongs(range, cell) ? 1 : 0;
    }
    return ranges;
}

}  // namespace wxl::comparison
