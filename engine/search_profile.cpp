#include "engine/search_profile.h"

#include <cmath>

namespace wxl::engine {

SearchProfile ReachedRows(SearchProfile profile) {
    while (!profile.empty() && profile.back() == ProfileRow{}) profile.pop_back();
    return profile;
}

std::optional<ProfileRow> SmallestScore(const SearchProfile& reached) {
    std::optional<ProfileRow> smallest;
    for (const ProfileRow& row : reached)
        if (std::isfinite(row.Bandwidth) && std::isfinite(row.Score) && (!smallest || row.Score < smallest->Score))
            smallest = row;
    return smallest;
}

}  // namespace wxl::engine
