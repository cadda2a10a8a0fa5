#include "engine/kernel_accumulation.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <span>
#include <tuple>

namespace wxl::engine {
namespace {

/// Columns that one pass takes, so that the factors of a group stay in the first-level cache.
constexpr std::int32_t kTileColumns = 384;

/// Beyond this exponent a factor is left out of a kernel whose corner cells would lose the precision of a double.
constexpr double kLargestExponent = 350.0;

/// A group shares one rectangle as long as this share of the work falls on cells of the kernels' own squares.
constexpr double kLeastUse = 0.6;

std::size_t count_of(std::int32_t first, std::int32_t last) {
    return static_cast<std::size_t>(last - first) + 1;
}

/// Exponent of the kernel's factor at a cell centre.
double exponent(double fix, double centre, double bandwidth) {
    const double t = (fix - centre) / bandwidth;
    return 0.5 * t * t;
}

void narrow(std::int32_t& first, std::int32_t& last, const std::vector<double>& centres, double fix, double bandwidth) {
    const auto beyond = [&](std::int32_t cell) {
        return exponent(fix, centres[static_cast<std::size_t>(cell)], bandwidth) > kLargestExponent;
    };
    while (first <= last && beyond(first)) ++first;
    while (first <= last && beyond(last)) --last;
}

/// Keeps the products of two factors out of the range where doubles lose their precision (and their speed).
void leave_out_vanishing_cells(FixKernel& kernel, const CellCentres& centres) {
    SearchSquare& square = kernel.Square;
    const auto farthest = [&](const std::vector<double>& centre, std::int32_t first, std::int32_t last, double fix) {
        return std::max(exponent(fix, centre[static_cast<std::size_t>(first)], kernel.Bandwidth),
                        exponent(fix, centre[static_cast<std::size_t>(last)], kernel.Bandwidth));
    };
    const double corner = farthest(centres.X, square.FirstColumn, square.LastColumn, kernel.Centre.X) +
                          farthest(centres.Y, square.FirstRow, square.LastRow, kernel.Centre.Y);
    if (corner <= 2.0 * kLargestExponent) return;
    narrow(square.FirstColumn, square.LastColumn, centres.X, kernel.Centre.X, kernel.Bandwidth);
    narrow(square.FirstRow, square.LastRow, centres.Y, kernel.Centre.Y, kernel.Bandwidth);
}

/// Neighbours in space become neighbours in the list: bands of rows, each walked from west to east or back.
void order_by_place(std::vector<FixKernel>& kernels, const KernelGrid& grid) {
    const double cells = static_cast<double>(grid.Columns()) * grid.Rows();
    const double perGroup = cells * static_cast<double>(kRankOfUpdate) / static_cast<double>(kernels.size());
    const auto band = static_cast<std::int32_t>(std::clamp(std::sqrt(perGroup), 1.0, 64.0));
    const auto key = [band](const FixKernel& kernel) {
        const SearchSquare& square = kernel.Square;
        const std::int32_t number = (square.FirstRow / 2 + square.LastRow / 2) / band;
        const std::int32_t column = square.FirstColumn / 2 + square.LastColumn / 2;
        return std::tuple(number, number % 2 == 0 ? column : -column);
    };
    std::stable_sort(kernels.begin(), kernels.end(),
                     [&key](const FixKernel& a, const FixKernel& b) { return key(a) < key(b); });
}

SearchSquare united(const SearchSquare& a, const SearchSquare& b) {
    return {std::min(a.FirstColumn, b.FirstColumn), std::max(a.LastColumn, b.LastColumn),
            std::min(a.FirstRow, b.FirstRow), std::max(a.LastRow, b.LastRow)};
}

/// Adds groups of kernels to a grid, with the memory for their factors kept from group to group.
class GroupAdder {
public:
    GroupAdder(const CellCentres& centres, KernelGrid& grid, const VectorMath& math)
        : m_centres(&centres), m_grid(&grid), m_math(&math) {}

    void Add(std::span<const FixKernel> group, const SearchSquare& whole) {
        const std::size_t width = count_of(whole.FirstColumn, whole.LastColumn);
        const std::size_t height = count_of(whole.FirstRow, whole.LastRow);
        m_columnFactors.assign(kRankOfUpdate * width, 0.0);
        m_rowFactors.assign(kRankOfUpdate * height, 0.0);
        for (std::size_t k = 0; k < group.size(); ++k) {
            const FixKernel& kernel = group[k];
            const SearchSquare& square = kernel.Square;
            double* columns = &m_columnFactors[k * width + count_of(whole.FirstColumn, square.FirstColumn) - 1];
            Factors(m_centres->X, square.FirstColumn, square.LastColumn, kernel.Centre.X, kernel.Bandwidth, columns);
            double* rows = &m_rowFactors[k * height + count_of(whole.FirstRow, square.FirstRow) - 1];
            Factors(m_centres->Y, square.FirstRow, square.LastRow, kernel.Centre.Y, kernel.Bandwidth, rows);
            for (std::size_t r = 0; r < count_of(square.FirstRow, square.LastRow); ++r) rows[r] *= kernel.Weight;
        }
        for (std::int32_t column = whole.FirstColumn; column <= whole.LastColumn; column += kTileColumns)
            AddTile(group.size(), whole, column, std::min(whole.LastColumn, column + kTileColumns - 1));
    }

private:
    void Factors(const std::vector<double>& centres, std::int32_t first, std::int32_t last, double fix,
                 double bandwidth, double* factors) const {
        const std::size_t count = count_of(first, last);
        const double* centre = &centres[static_cast<std::size_t>(first)];
        for (std::size_t i = 0; i < count; ++i) {
            const double t = (fix - centre[i]) / bandwidth;
            factors[i] = -0.5 * t * t;
        }
        m_math->Exponentials(factors, count);
    }

    void AddTile(std::size_t members, const SearchSquare& whole, std::int32_t first, std::int32_t last) {
        const std::size_t width = count_of(whole.FirstColumn, whole.LastColumn);
        const std::size_t height = count_of(whole.FirstRow, whole.LastRow);
        const std::size_t count = count_of(first, last);
        const double* factors = &m_columnFactors[count_of(whole.FirstColumn, first) - 1];
        for (std::size_t r = 0; r < height; ++r) {
            double* cells = &(*m_grid)(first, whole.FirstRow + static_cast<std::int32_t>(r));
            double weights[kRankOfUpdate];
            for (std::size_t k = 0; k < kRankOfUpdate; ++k) weights[k] = m_rowFactors[k * height + r];
            if (members == 1)
                m_math->AddRank(cells, factors, weights[0], count);
            else
                m_math->AddRanks(cells, factors, width, weights, count);
        }
    }

    const CellCentres* m_centres;
    KernelGrid* m_grid;
    const VectorMath* m_math;
    std::vector<double> m_columnFactors;
    std::vector<double> m_rowFactors;
};

}  // namespace

void accumulate(std::vector<FixKernel>& kernels, const CellCentres& centres, KernelGrid& grid, WorkClock& clock,
                const VectorMath& math) {
    for (FixKernel& kernel : kernels)
        if (!kernel.Square.IsEmpty()) leave_out_vanishing_cells(kernel, centres);
    std::erase_if(kernels, [](const FixKernel& kernel) { return kernel.Square.IsEmpty(); });
    if (kernels.empty()) return;
    order_by_place(kernels, grid);

    GroupAdder adder(centres, grid, math);
    for (std::size_t first = 0; first < kernels.size();) {
        SearchSquare whole = kernels[first].Square;
        double used = whole.Area();
        std::size_t members = 1;
        while (members < kRankOfUpdate && first + members < kernels.size()) {
            const SearchSquare& next = kernels[first + members].Square;
            const SearchSquare wider = united(whole, next);
            if (used + next.Area() < kLeastUse * wider.Area() * static_cast<double>(members + 1)) break;
            whole = wider;
            used += next.Area();
            ++members;
        }
        adder.Add(std::span(kernels).subspan(first, members), whole);
        first += members;
        clock.Tick();
    }
}

}  // namespace wxl::engine
