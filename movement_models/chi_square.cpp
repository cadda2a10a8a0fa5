#include "movement_models/chi_square.h"

#include <cmath>

namespace wxl::movement_models {

namespace {

/// Both tails of the gamma distribution with shape a at x: the smaller is computed, the other is its complement.
struct Tails {
    double Lower;
    double Upper;
};

/// x^a e^(-x) / Gamma(a); for large a by the distance from the mode, which keeps its digits.
double density_times_x(double a, double x) {
    if (a < 50.0) return std::exp(a * std::log(x) - x - std::lgamma(a));
    const double u = (x - a) / a;
    const double stirling = 1.0 / (12.0 * a) * (1.0 - 1.0 / (30.0 * a * a) * (1.0 - 2.0 / (7.0 * a * a)));
    constexpr double kRootOfTwoPi = 2.5066282746310005024;
    return std::sqrt(a) / kRootOfTwoPi * std::exp(a * (std::log1p(u) - u) - stirling);
}

double lower_series(double a, double x) {
    double term = 1.0 / a;
    double sum = term;
    for (double k = a + 1.0; term > sum * 1e-17; k += 1.0) {
        term *= x / k;
        sum += term;
    }
    return sum * density_times_x(a, x);
}

/// The continued fraction by Lentz's method (Press et al. 1992, Numerical Recipes, 6.2).
double upper_fraction(double a, double x) {
    constexpr double kTiny = 1e-300;
    constexpr int kMost = 100000;
    double b = x + 1.0 - a;
    double c = 1.0 / kTiny;
    double d = 1.0 / b;
    double h = d;
    for (int i = 1; i < kMost; ++i) {
        const double an = -i * (i - a);
        b += 2.0;
        d = an * d + b;
        if (std::abs(d) < kTiny) d = kTiny;
        c = b + an / c;
        if (std::abs(c) < kTiny) c = kTiny;
        d = 1.0 / d;
        const double factor = d * c;
        h *= factor;
        if (std::abs(factor - 1.0) < 1e-16) break;
    }
    return h * density_times_x(a, x);
}

Tails tails(double a, double x) {
    if (x < a + 1.0) {
        const double lower = lower_series(a, x);
        return {lower, 1.0 - lower};
    }
    const double upper = upper_fraction(a, x);
    return {1.0 - upper, upper};
}

/// Error of the tail in question, positive where x is too large.
double excess(double a, double x, double probability) {
    const Tails t = tails(a, x);
    return probability < 0.5 ? t.Lower - probability : (1.0 - probability) - t.Upper;
}

}  // namespace

double chi_square_quantile(double probability, double degrees) {
    const double a = 0.5 * degrees;
    double low = 0.0;
    double high = a + 1.0;
    while (excess(a, high, probability) < 0.0) {
        low = high;
        high *= 2.0;
    }
    double x = 0.5 * (low + high);
    for (int i = 0; i < 1100 && high - low > 1e-15 * high; ++i) {
        const double error = excess(a, x, probability);
        if (error == 0.0) break;
        (error > 0.0 ? high : low) = x;
        // Far from the quantile the density is too small for a number: there is no step.
        const double slope = density_times_x(a, x);
        const double newton = slope > 0.0 ? x - error * x / slope : high;
        const bool inside = newton > low && newton < high;
        // Near zero the quantile may be tiny: halving its logarithm is faster than halving the value.
        const double half = low > 0.0 ? 0.5 * (low + high) : high / 16.0;
        const double next = inside ? newton : half;
        if (std::abs(next - x) <= 1e-15 * x) break;
        x = next;
    }
    return 2.0 * x;
}

}  // namespace wxl::movement_models
