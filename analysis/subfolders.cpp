#include "analysis/subfolders.h"

#include <algorithm>

namespace wxl::analysis {
namespace {

/// Places as wide as the largest, so that the folders' names sort as their animals do.
std::string place_text(std::size_t place, std::size_t width) {
    const std::string digits = std::to_string(place);
    return std::string(width - std::min(width, digits.size()), '0') + digits;
}

}  // namespace

void spread_over_subfolders(std::vector<AnimalFixes>& animals, std::size_t every) {
    const std::size_t width = std::to_string(animals.size()).size();
    for (std::size_t i = 0; i < animals.size(); ++i) {
        animals[i].Subfolder.clear();
        if (every == 0) continue;
        const std::size_t first = i / every * every;
        const std::size_t last = std::min(animals.size() - first, every) + first;
        animals[i].Subfolder = "animals_" + place_text(first + 1, width) + "-" + place_text(last, width);
    }
}

std::vector<std::string> subfolders_of(const std::vector<AnimalFixes>& animals) {
    std::vector<std::string> folders;
    for (const AnimalFixes& animal : animals)
        if (!animal.Subfolder.empty() && (folders.empty() || folders.back() != animal.Subfolder))
            folders.push_back(animal.Subfolder);
    return folders;
}

}  // namespace wxl::analysis
