#pragma once
#include <cstddef>
#include <span>
#include <vector>

namespace wxl::isopleths {

/// Finds levels by their value, however many there are.
class LevelIndex {
public:
    /// Copies the levels, which are no NaN.
    explicit LevelIndex(std::span<const double> levels);

    /// Place of the level closest to a value; of equally close ones the first. There is at least one level.
    std::size_t Nearest(double value) const;

    /// Whether no earlier level is equal to the one at `place`.
    bool IsFirst(std::size_t place) const;

private:
    struct Level {
        double Value;
        std::size_t Place;  ///< of the first level of this value
    };
    std::vector<double> m_levels;
    std::vector<Level> m_ascending;
};

}  // namespace wxl::isopleths
