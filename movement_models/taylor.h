#pragma once
#include <array>
#include <cmath>
#include <cstddef>
#include <limits>

namespace wxl::movement_models {

/// A number with its first and second derivatives in N variables: a truncated Taylor series, carried through a
/// computation by the usual operators.
template <std::size_t N>
struct Taylor {
    static constexpr std::size_t kSecond = N * (N + 1) / 2;

    double Value = 0.0;
    std::array<double, N> First{};
    std::array<double, kSecond> Second{};  ///< upper triangle row by row: (0,0), (0,1), (1,1)

    Taylor() = default;
    Taylor(double value) : Value(value) {}  // NOLINT(google-explicit-constructor): a constant is a number too

    /// The number e^l as a function of the variable `index`, which is l.
    static Taylor Exponential(double value, std::size_t index) {
        Taylor t(value);
        t.First[index] = value;
        t.Second[index == 0 ? 0 : kSecond - 1] = value;
        return t;
    }

    Taylor& operator+=(const Taylor& o) {
        Value += o.Value;
        for (std::size_t i = 0; i < N; ++i) First[i] += o.First[i];
        for (std::size_t i = 0; i < kSecond; ++i) Second[i] += o.Second[i];
        return *this;
    }
    Taylor& operator-=(const Taylor& o) {
        Value -= o.Value;
        for (std::size_t i = 0; i < N; ++i) First[i] -= o.First[i];
        for (std::size_t i = 0; i < kSecond; ++i) Second[i] -= o.Second[i];
        return *this;
    }
    Taylor& operator*=(double factor) {
        Value *= factor;
        for (double& d : First) d *= factor;
        for (double& d : Second) d *= factor;
        return *this;
    }
};

template <std::size_t N>
Taylor<N> operator+(Taylor<N> a, const Taylor<N>& b) {
    return a += b;
}
template <std::size_t N>
Taylor<N> operator-(Taylor<N> a, const Taylor<N>& b) {
    return a -= b;
}
template <std::size_t N>
Taylor<N> operator-(Taylor<N> a) {
    return a *= -1.0;
}
template <std::size_t N>
Taylor<N> operator*(Taylor<N> a, double factor) {
    return a *= factor;
}
template <std::size_t N>
Taylor<N> operator*(double factor, Taylor<N> a) {
    return a *= factor;
}
template <std::size_t N>
Taylor<N> operator+(Taylor<N> a, double b) {
    a.Value += b;
    return a;
}
template <std::size_t N>
Taylor<N> operator+(double b, Taylor<N> a) {
    a.Value += b;
    return a;
}
template <std::size_t N>
Taylor<N> operator-(Taylor<N> a, double b) {
    a.Value -= b;
    return a;
}
template <std::size_t N>
Taylor<N> operator-(double b, const Taylor<N>& a) {
    return -a + b;
}

template <std::size_t N>
Taylor<N> operator*(const Taylor<N>& a, const Taylor<N>& b) {
    Taylor<N> t(a.Value * b.Value);
    for (std::size_t i = 0, k = 0; i < N; ++i) {
        t.First[i] = a.First[i] * b.Value + a.Value * b.First[i];
        for (std::size_t j = i; j < N; ++j, ++k)
            t.Second[k] =
                a.Second[k] * b.Value + a.Value * b.Second[k] + (a.First[i] * b.First[j] + a.First[j] * b.First[i]);
    }
    return t;
}

/// f(a), given the value and the first two derivatives of f at a.Value.
template <std::size_t N>
Taylor<N> composed(const Taylor<N>& a, double f, double first, double second) {
    Taylor<N> t(f);
    for (std::size_t i = 0, k = 0; i < N; ++i) {
        t.First[i] = first * a.First[i];
        for (std::size_t j = i; j < N; ++j, ++k) t.Second[k] = first * a.Second[k] + second * (a.First[i] * a.First[j]);
    }
    return t;
}

template <std::size_t N>
Taylor<N> reciprocal(const Taylor<N>& a) {
    const double r = 1.0 / a.Value;
    return composed(a, r, -r * r, 2.0 * r * r * r);
}
template <std::size_t N>
Taylor<N> operator/(const Taylor<N>& a, const Taylor<N>& b) {
    return a * reciprocal(b);
}
template <std::size_t N>
Taylor<N> operator/(double a, const Taylor<N>& b) {
    return reciprocal(b) * a;
}
template <std::size_t N>
Taylor<N> operator/(Taylor<N> a, double b) {
    return a *= 1.0 / b;
}
template <std::size_t N>
Taylor<N> exp(const Taylor<N>& a) {
    const double e = std::exp(a.Value);
    return composed(a, e, e, e);
}
template <std::size_t N>
Taylor<N> expm1(const Taylor<N>& a) {
    const double e = std::exp(a.Value);
    return composed(a, std::expm1(a.Value), e, e);
}
template <std::size_t N>
Taylor<N> log(const Taylor<N>& a) {
    // Rounding may make a determinant 0 or less: no number.
    if (!(a.Value > 0.0)) return {std::numeric_limits<double>::quiet_NaN()};
    const double r = 1.0 / a.Value;
    return composed(a, std::log(a.Value), r, -r * r);
}

inline double value_of(double a) {
    return a;
}
template <std::size_t N>
double value_of(const Taylor<N>& a) {
    return a.Value;
}

}  // namespace wxl::movement_models
