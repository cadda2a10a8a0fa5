#include "comparison/compared_ranges.h"

#include "comparison/index_table.h"

#include <array>
#include <charconv>
#include <cstddef>
#include <utility>

namespace wxl::comparison {
namespace {

/// A grid that holds less of a distribution cuts it.
constexpr double kWholeShare = 0.99;
/// More of a distribution than there is: the scaling factor must be another.
constexpr double kMoreThanWhole = 1.01;

/// A percentage with one decimal.
std::string tenth_text(double percent) {
    std::array<char, 400> text{};
    const auto end = std::to_chars(text.data(), text.data() + text.size(), percent, std::chars_format::fixed, 1);
    return {text.data(), end.ptr};
}

}  // namespace

void add_animal(ComparedRanges& ranges, ComparedAnimal animal, PartOfGrid density, bool normalise) {
    const double cell = ranges.Densities.Grid.CellSize;
    animal.Volume = total_density(density.Cells) * cell * cell;
    if (!density.Cells.empty() && !(animal.Volume > 0.0) && animal.Status == "ok")
        animal.Status = "no volume in the grid";
    if (normalise && animal.Volume > 0.0)
        for (double& value : density.Cells) value /= animal.Volume;
    ranges.Densities.Animals.push_back(
        animal.Volume > 0.0 ? TiledDensity(ranges.Densities.Grid, density, ranges.Densities.Percents) : TiledDensity());
    ranges.Animals.push_back(std::move(animal));
}

std::vector<std::string> volume_warnings(const ComparedRanges& ranges) {
    std::vector<std::string> warnings;
    for (std::size_t i = 0; i < ranges.Animals.size(); ++i) {
        const ComparedAnimal& animal = ranges.Animals[i];
        if (!ranges.Densities.Animals[i].IsAlive()) {
            warnings.push_back(animal.Name + ": not compared: " + animal.Status);
        } else if (animal.Volume < kWholeShare) {
            warnings.push_back(animal.Name + ": the cells hold " + tenth_text(100.0 * animal.Volume) +
                               " % of its distribution: the grid, or the reach of the kernels, cuts it");
        } else if (animal.Volume > kMoreThanWhole) {
            warnings.push_back(animal.Name + ": the raster holds " + told_text(animal.Volume) +
                               " times a whole distribution: give its scaling factor by --scaling S");
        }
    }
    return warnings;
}

std::optional<double> area_of(const ComparedRanges& ranges, std::size_t animal, std::size_t percent) {
    const TiledDensity& density = ranges.Densities.Animals[animal];
    if (!density.IsAlive()) return std::nullopt;
    const double cell = ranges.Densities.Grid.CellSize;
    return static_cast<double>(density.Ranges()[percent].Cells) * cell * cell;
}

}  // namespace wxl::comparison
