#pragma once
#include "analysis/animal_fixes.h"

#include <cstddef>
#include <string>
#include <vector>

namespace wxl::analysis {

/// The sub-folder of the output folder that takes the datasets of each of `count` animals: one for every `every`
/// animals, in their order, named by their places from 1 ("animals_0001-0100"). With 0 there are none: empty names.
std::vector<std::string> subfolder_names(std::size_t count, std::size_t every);

/// Gives every animal its sub-folder.
void spread_over_subfolders(std::vector<AnimalFixes>& animals, std::size_t every);

/// The distinct sub-folders of the animals, in their order; empty when there are none.
std::vector<std::string> subfolders_of(const std::vector<AnimalFixes>& animals);

}  // namespace wxl::analysis
