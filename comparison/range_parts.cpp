#include "comparison/range_parts.h"

#include <cstddef>
#include <numeric>
#include <vector>

namespace wxl::comparison {
namespace {

/// Sets of cells that are joined step by step.
class Groups {
public:
    explicit Groups(std::size_t count) : m_parents(count) {
        std::iota(m_parents.begin(), m_parents.end(), std::size_t{0});
    }

    std::size_t Of(std::size_t cell) {
        while (m_parents[cell] != cell) cell = m_parents[cell] = m_parents[m_parents[cell]];
        return cell;
    }

    void Join(std::size_t a, std::size_t b) {
        a = Of(a);
        b = Of(b);
        (a < b ? m_parents[b] : m_parents[a]) = a < b ? a : b;
    }

private:
    std::vector<std::size_t> m_parents;
};

/// A grid with a margin of empty cells, all of which are outside together.
class PartCounter {
public:
    PartCounter(std::span<const double> cells, std::int32_t columns, const VolumeRange& range)
        : m_width(static_cast<std::size_t>(columns) + 2),
          m_height(cells.size() / static_cast<std::size_t>(columns) + 2),
          m_density(m_width * m_height, 0.0),
          m_inside(m_density.size(), 0),
          m_level(range.Level),
          m_groups(m_density.size()) {
        for (std::size_t row = 0; row + 2 < m_height; ++row)
            for (std::size_t column = 0; column + 2 < m_width; ++column) {
                const std::size_t cell = (row + 1) * m_width + column + 1;
                m_density[cell] = cells[row * static_cast<std::size_t>(columns) + column];
                m_inside[cell] = belongs(range, m_density[cell]) ? 1 : 0;
            }
    }

    RangeParts Count() {
        for (std::size_t row = 0; row < m_height; ++row)
            for (std::size_t column = 0; column < m_width; ++column) {
                const std::size_t cell = row * m_width + column;
                if (column + 1 < m_width) JoinEqual(cell, cell + 1);
                if (row + 1 < m_height) JoinEqual(cell, cell + m_width);
                if (column + 1 < m_width && row + 1 < m_height) JoinAcross(cell);
            }
        RangeParts parts;
        for (std::size_t cell = 1; cell < m_inside.size(); ++cell)
            if (m_groups.Of(cell) == cell) ++(m_inside[cell] != 0 ? parts.Parts : parts.Holes);
        return parts;
    }

private:
    void JoinEqual(std::size_t a, std::size_t b) {
        if (m_inside[a] == m_inside[b]) m_groups.Join(a, b);
    }

    /// At a saddle, the two cells on the side of the mean are joined.
    void JoinAcross(std::size_t northWest) {
        const std::size_t southWest = northWest + m_width;
        const bool falling = m_inside[northWest] != 0;
        const bool rising = m_inside[southWest] != 0;
        if (falling == rising || m_inside[southWest + 1] != m_inside[northWest] ||
            m_inside[northWest + 1] != m_inside[southWest])
            return;
        const double mean =
            (m_density[northWest] + m_density[northWest + 1] + m_density[southWest] + m_density[southWest + 1]) / 4.0;
        if ((mean >= m_level) == falling) {
            m_groups.Join(northWest, southWest + 1);
        } else {
            m_groups.Join(northWest + 1, southWest);
        }
    }

    std::size_t m_width;
    std::size_t m_height;
    std::vector<double> m_density;
    std::vector<char> m_inside;
    double m_level;
    Groups m_groups;
};

}  // namespace

RangeParts range_parts(std::span<const double> cells, std::int32_t columns, const VolumeRange& range) {
    return PartCounter(cells, columns, range).Count();
}

}  // namespace wxl::comparison
