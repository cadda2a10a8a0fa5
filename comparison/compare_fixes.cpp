#include "comparison/compare_fixes.h"

#include <cstddef>
#include <cstdint>
#include <utility>

namespace wxl::comparison {
namespace {

std::vector<AnimalBandwidth> bandwidths_of(const std::vector<NamedFixes>& animals, const DensitySettings& settings,
                                           const ComparisonEars& ears) {
    std::vector<AnimalBandwidth> bandwidths;
    for (const NamedFixes& animal : animals) {
        ears.Progress(static_cast<double>(bandwidths.size()) / static_cast<double>(animals.size()),
                      "bandwidth of " + animal.Name);
        bandwidths.push_back(bandwidth_of(animal.Fixes, settings));
        if (!bandwidths.back().Warning.empty()) ears.Problem(animal.Name + ": " + bandwidths.back().Warning);
    }
    return bandwidths;
}

}  // namespace

ComparedRanges ranges_of_fixes(const std::vector<NamedFixes>& animals, const FixComparison& wanted,
                               const ComparisonEars& ears) {
    const std::vector<AnimalBandwidth> bandwidths = bandwidths_of(animals, wanted.Densities, ears);
    std::vector<engine::PointSample> samples;
    samples.reserve(animals.size());
    for (const NamedFixes& animal : animals) samples.push_back(animal.Fixes);
    ComparedRanges ranges;
    ranges.Densities.Percents = wanted.Percents;
    ranges.Densities.Grid = shared_grid(samples, bandwidths, wanted.CellSize);
    for (std::size_t i = 0; i < animals.size(); ++i) {
        ears.Progress(static_cast<double>(i) / static_cast<double>(animals.size()), "density of " + animals[i].Name);
        AnimalDensity density = density_of(samples[i], bandwidths[i], wanted.Densities, ranges.Densities.Grid);
        ComparedAnimal animal;
        animal.Name = animals[i].Name;
        animal.Fixes = static_cast<std::int64_t>(samples[i].size());
        if (bandwidths[i].MapUnits > 0.0) animal.Bandwidth = bandwidths[i].MapUnits;
        if (!density.Reason.empty()) animal.Status = density.Reason;
        add_animal(ranges, std::move(animal), std::move(density.Part), wanted.Normalise);
    }
    return ranges;
}

}  // namespace wxl::comparison
