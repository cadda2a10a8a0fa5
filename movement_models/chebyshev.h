#pragma once
#include "engine/vector_math.h"

#include <cstddef>
#include <vector>

namespace wxl::movement_models {

/// Interpolation at the Chebyshev nodes of the first kind on [-1, 1] (barycentric form: Berrut and Trefethen 2004).
class Chebyshev {
public:
    explicit Chebyshev(std::size_t order);

    std::size_t Order() const { return m_nodes.size(); }
    const std::vector<double>& Nodes() const { return m_nodes; }  ///< descending

    /// values[a] = the Lagrange polynomial of node a at x, for all nodes.
    void Basis(double x, double* values) const;

    /// Element (a, b), row by row: the polynomial of node a at node b of the left (0) or right (1) half of the
    /// interval.
    const std::vector<double>& ToHalf(int half) const { return m_halves[half]; }

    /// The same, (b, a).
    const std::vector<double>& FromHalf(int half) const { return m_turned[half]; }

    /// sums[b] += sum over a of values[a] x matrix (a, b), for a matrix of Order x Order.
    void AddProduct(const double* matrix, const double* values, double* sums) const;

private:
    std::vector<double> m_nodes;
    std::vector<double> m_weights;
    std::vector<double> m_halves[2];
    std::vector<double> m_turned[2];
    const engine::VectorMath* m_math;
};

}  // namespace wxl::movement_models
