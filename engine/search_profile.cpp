#include "engine/search_profile.h"

#include <algorithm>
#include <cmath>
#include <iterator>

namespace wxl::engine {
namespace {

/// How high the scores climb from a row, going one way, before they fall below it or end.
template <class Iterator>
double climb(Iterator row, Iterator end) {
    const double own = row->Score;
    double highest = own;
    for (++row; row != end && !(row->Score < own); ++row) highest = std::max(highest, row->Score);
    return highest - own;
}

}  // namespace

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

SearchProfile LocalMinima(const SearchProfile& reached) {
    constexpr double kRounding = 1e-9;
    double size = 0.0;
    for (const ProfileRow& row : reached)
        if (std::isfinite(row.Score)) size = std::max(size, std::abs(row.Score));
    SearchProfile minima;
    for (std::size_t i = 1; i + 1 < reached.size(); ++i) {
        if (!(reached[i].Score < reached[i - 1].Score) || reached[i].Score > reached[i + 1].Score) continue;
        const auto row = reached.begin() + static_cast<std::ptrdiff_t>(i);
        const double depth =
            std::min(climb(row, reached.end()), climb(std::make_reverse_iterator(row + 1), reached.rend()));
        if (depth > kRounding * size) minima.push_back(reached[i]);
    }
    return minima;
}

}  // namespace wxl::engine
