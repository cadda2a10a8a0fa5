#include "movement_models/chebyshev.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace wxl::movement_models {

Chebyshev::Chebyshev(std::size_t order) : m_nodes(order), m_weights(order), m_math(&engine::vector_math()) {
    for (std::size_t a = 0; a < order; ++a) {
        const double angle =
            std::numbers::pi * (2.0 * static_cast<double>(a) + 1.0) / (2.0 * static_cast<double>(order));
        m_nodes[a] = std::cos(angle);
        m_weights[a] = (a % 2 == 0 ? 1.0 : -1.0) * std::sin(angle);
    }
    std::vector<double> values(order);
    for (int half = 0; half < 2; ++half) {
        m_halves[half].resize(order * order);
        m_turned[half].resize(order * order);
        for (std::size_t b = 0; b < order; ++b) {
            Basis(0.5 * (m_nodes[b] + (half == 0 ? -1.0 : 1.0)), values.data());
            for (std::size_t a = 0; a < order; ++a)
                m_halves[half][a * order + b] = m_turned[half][b * order + a] = values[a];
        }
    }
}

void Chebyshev::AddProduct(const double* matrix, const double* values, double* sums) const {
    const std::size_t order = m_nodes.size();
    std::size_t a = 0;
    for (; a + engine::kRankOfUpdate <= order; a += engine::kRankOfUpdate)
        m_math->AddRanks(sums, matrix + a * order, order, values + a, order);
    for (; a < order; ++a) m_math->AddRank(sums, matrix + a * order, values[a], order);
}

void Chebyshev::Basis(double x, double* values) const {
    const std::size_t order = m_nodes.size();
    for (std::size_t a = 0; a < order; ++a) values[a] = x - m_nodes[a];
    if (const double* node = std::find(values, values + order, 0.0); node != values + order) {
        const auto place = static_cast<std::size_t>(node - values);
        std::fill(values, values + order, 0.0);
        values[place] = 1.0;
        return;
    }
    for (std::size_t a = 0; a < order; ++a) values[a] = m_weights[a] / values[a];
    double sum = 0.0;
    for (std::size_t a = 0; a < order; ++a) sum += values[a];
    const double scale = 1.0 / sum;
    for (std::size_t a = 0; a < order; ++a) values[a] *= scale;
}

}  // namespace wxl::movement_models
