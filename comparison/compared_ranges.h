#pragma once
// What a comparison of ranges found, and what it has to say of it.

#include "comparison/overlap.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace wxl::comparison {

/// Up to this number of animals all pairs are told, those that share nothing too.
inline constexpr std::size_t kAllPairs = 200;

/// An animal as the results tell it.
struct ComparedAnimal {
    std::string Name;
    std::optional<std::int64_t> Fixes = {};
    std::optional<double> Bandwidth = {};  ///< map units
    double Volume = 0.0;                   ///< of the distribution on the grid, as it was computed
    std::string Status = "ok";             ///< or why there is no distribution
};

struct ComparedRanges {
    std::vector<ComparedAnimal> Animals;
    DensitySet Densities;
    std::vector<PairOverlap> Pairs;
};

/// Adds an animal with its density on a part of the set's grid, and sets its volume; an animal without cells, or with
/// cells of no volume, has no distribution.
/// @param normalise divide the density by its volume
void add_animal(ComparedRanges& ranges, ComparedAnimal animal, PartOfGrid density, bool normalise);

/// One line for each animal that has no distribution, or whose grid holds less or more than all of it.
std::vector<std::string> volume_warnings(const ComparedRanges& ranges);

/// Area of a range in square map units; nothing where the animal has no distribution.
std::optional<double> area_of(const ComparedRanges& ranges, std::size_t animal, std::size_t percent);

}  // namespace wxl::comparison
