#include "isopleths/level_index.h"

#include <algorithm>
#include <cmath>

namespace wxl::isopleths {

LevelIndex::LevelIndex(std::span<const double> levels) : m_levels(levels.begin(), levels.end()) {
    m_ascending.reserve(m_levels.size());
    for (std::size_t i = 0; i < m_levels.size(); ++i) m_ascending.push_back({m_levels[i], i});
    std::ranges::stable_sort(m_ascending, {}, &Level::Value);
    const auto equal = [](const Level& a, const Level& b) { return a.Value == b.Value; };
    m_ascending.erase(std::unique(m_ascending.begin(), m_ascending.end(), equal), m_ascending.end());
}

std::size_t LevelIndex::Nearest(double value) const {
    const auto above = std::ranges::lower_bound(m_ascending, value, {}, &Level::Value);
    const Level* nearest = &(above == m_ascending.end() ? m_ascending.back() : *above);
    const auto consider = [&](const Level& level) {
        const double distance = std::abs(value - level.Value);
        const double least = std::abs(value - nearest->Value);
        if (distance > least) return false;
        if (distance < least || level.Place < nearest->Place) nearest = &level;
        return true;
    };
    // Far from all of them, several levels are equally far in the precision of a double.
    for (auto below = above; below != m_ascending.begin() && consider(*--below);) continue;
    for (auto next = above; next != m_ascending.end() && consider(*next); ++next) continue;
    return nearest->Place;
}

bool LevelIndex::IsFirst(std::size_t place) const {
    return Nearest(m_levels[place]) == place;
}

}  // namespace wxl::isopleths
