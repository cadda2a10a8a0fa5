#pragma once
// The inner loops of the engine, once in portable form and once for wider vector registers. Both do the same operations
// in the same order on each element, so that results are the same on every machine.

#include <cstddef>

namespace wxl::engine {

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
};

/// The fastest form that this machine can run.
const VectorMath& vector_math();

/// The form that every machine can run.
const VectorMath& portable_vector_math();

}  // namespace wxl::engine
