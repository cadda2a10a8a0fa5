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

std::vector<std::string> subfolder_names(std::size_t count, std::size_t every) {
    std::vector<std::string> names(count);
    const std::size_t width = std::to_string(count).size();
    for (std::size_t i = 0; every > 0 && i < count; ++i) {
        const std::size_t first = i / every * every;
        const std::size_t last = std::min(count - first, every) + first;
        names[i] = "animals_" + place_text(first + 1, width) + "-" + place_text(last, width);
    }
    return names;
}

void spread_over_subfolders(std::vector<AnimalFixes>& animals, std::size_t every) {
    const std::vector<std::string> names = subfolder_names(animals.size(), every);
    for (std::size_t i = 0; i < animals.size(); ++i) animals[i].Subfolder = names[i];
}

std::vector<std::string> subfolders_of(const std::vector<AnimalFixes>& animals) {
    std::vector<std::string> folders;
    for (const AnimalFixes& animal : animals)
        if (!animal.Subfolder.empty() && (folders.empty() || folders.back() != animal.Subfolder))
            folders.push_back(animal.Subfolder);
    return folders;
}

}  // namespace wxl::analysis
