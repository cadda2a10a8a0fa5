#pragma once
// From fixes to the overlap of all pairs.

#include "comparison/animal_density.h"
#include "comparison/compared_ranges.h"

#include <functional>
#include <string>
#include <string_view>
#include <vector>

namespace wxl::comparison {

/// One animal, or what else is compared like one.
struct NamedFixes {
    std::string Name;
    engine::PointSample Fixes;
};

/// How ranges of fixes are compared.
struct FixComparison {
    DensitySettings Densities;
    double CellSize = 0.0;  ///< map units; 0: one that suits the smallest bandwidth
    std::vector<double> Percents;
    bool Normalise = false;  ///< divide each density by its volume
};

/// Who hears how a comparison goes on.
struct ComparisonEars {
    std::function<void(double share, std::string_view what)> Progress;  ///< may throw to end it
    std::function<void(const std::string& line)> Problem;
};

/// The densities of the animals on one grid, and their ranges; no pairs yet.
ComparedRanges ranges_of_fixes(const std::vector<NamedFixes>& animals, const FixComparison& wanted,
                               const ComparisonEars& ears);

}  // namespace wxl::comparison
