#pragma once
// The inner loops of the engine, once in portable form and once for wider vector registers. Both do the same operations
// in the same order on each element, so that results are the same on every machine.

#include <cstddef>
#include <cstdint>

namespace wxl::engine {

/// Power sums kept per bin: orders 0 to 7.
inline constexpr std::size_t kMomentOrders = 8;

/// Bits of the fraction that number the bins: 2^7 bins between a number and its double.
inline constexpr int kBinBits = 7;

/// Width of the window that spreads a point on a grid, in cells.
inline constexpr std::size_t kSpreadWidth = 16;

/// Most kernels that one pass over a row adds.
inline constexpr std::size_t kRankOfUpdate = 8;

struct VectorMath {
    /// values[i] = exp(values[i]) for values[i] <= 0, with 0 below -708 where doubles lose their precision.
    void (*Exponentials)(double* values, std::size_t count);

    /// row[i] += weights[k] * columns[k * stride + i], for k = 0 to kRankOfUpdate - 1 in this order.
    void (*AddRanks)(double* row, const double* columns, std::size_t stride, const double* weights, std::size_t count);

    /// row[i] += weight * column[i].
    void (*AddRank)(double* row, const double* column, double weight, std::size_t count);

    /// squares[i] = (x - xs[i])^2 + (y - ys[i])^2.
    void (*SquaredDistances)(double x, double y, const double* xs, const double* ys, double* squares,
                             std::size_t count);

    /// Sorts values[i] + shift (positive, normal) into bins by their leading bits: bins[i] is the number of the bin, at
    /// most lastBin, and offsets[i] in [-1, 1) where in the bin the value lies.
    void (*FindBins)(const double* values, double shift, std::int64_t lastBin, std::int64_t* bins, double* offsets,
                     std::size_t count);

    /// moments[(bins[i] - firstBin) * kMomentOrders + k] += weights[i] * offsets[i]^k, for all orders k.
    void (*AddMoments)(const std::int64_t* bins, const double* offsets, const double* weights, std::int64_t firstBin,
                       double* moments, std::size_t count);

    /// cells[r * stride + c] += rows[r] * columns[c], for r and c from 0 to kSpreadWidth - 1.
    void (*Spread)(double* cells, std::size_t stride, const double* rows, const double* columns);
};

/// The fastest form that this machine can run.
const VectorMath& vector_math();

/// The form that every machine can run.
const VectorMath& portable_vector_math();

}  // namespace wxl::engine
