#include "comparison/exact_turn.h"

#include <array>
#include <cmath>
#include <cstddef>

namespace wxl::comparison {
namespace {

/// A number as the sum of doubles that do not overlap, by rising size.
class Expansion {
public:
    /// Adds a double without rounding (Shewchuk's Grow-Expansion).
    void Add(double value) {
        for (std::size_t i = 0; i < m_count; ++i) {
            const double sum = value + m_parts[i];
            const double other = sum - value;
            m_parts[i] = (value - (sum - other)) + (m_parts[i] - other);
            value = sum;
        }
        m_parts[m_count++] = value;
    }

    /// Adds a product of two doubles without rounding.
    void AddProduct(double a, double b) {
        const double product = a * b;
        Add(std::fma(a, b, -product));
        Add(product);
    }

    int Sign() const {
        for (std::size_t i = m_count; i-- > 0;)
            if (m_parts[i] != 0.0) return m_parts[i] > 0.0 ? 1 : -1;
        return 0;
    }

private:
    std::array<double, 12> m_parts{};
    std::size_t m_count = 0;
};

int exact_sign(const platform::Point& a, const platform::Point& b, const platform::Point& c) {
    Expansion sum;
    sum.AddProduct(a.X, b.Y);
    sum.AddProduct(-a.Y, b.X);
    sum.AddProduct(b.X, c.Y);
    sum.AddProduct(-b.Y, c.X);
    sum.AddProduct(c.X, a.Y);
    sum.AddProduct(-c.Y, a.X);
    return sum.Sign();
}

}  // namespace

int turn(const platform::Point& a, const platform::Point& b, const platform::Point& c) {
    constexpr double kErrorBound = 3.3306690738754716e-16;  // (3 + 16 x 2^-53) x 2^-53
    const double left = (a.X - c.X) * (b.Y - c.Y);
    const double right = (a.Y - c.Y) * (b.X - c.X);
    const double difference = left - right;
    if (std::abs(difference) > kErrorBound * (std::abs(left) + std::abs(right))) return difference > 0.0 ? 1 : -1;
    return exact_sign(a, b, c);
}

}  // namespace wxl::comparison
