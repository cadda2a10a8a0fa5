#include "worked_tracks.h"

#include "dense_twin.h"

#include <algorithm>
#include <cmath>
#include <numbers>
#include <random>

namespace wxl::tests {

namespace {

using namespace movement_models;

/// Standard normal numbers by Box and Muller (1958): the library's own differ from compiler to compiler.
class Normal {
public:
    explicit Normal(std::uint64_t seed) : m_source(seed) {}
    double operator()() {
        const double radius = std::sqrt(-2.0 * std::log1p(-Uniform()));
        return radius * std::cos(2.0 * std::numbers::pi * Uniform());
    }

private:
    double Uniform() { return static_cast<double>(m_source() >> 11) * 0x1p-53; }
    std::mt19937_64 m_source;
};

/// Position as the difference of two Ornstein-Uhlenbeck numbers driven by the same noise: OUF with a = 1/tau1 and
/// b = 1/tau2 is proportional to u_a - u_b, where du_k = -k u_k dt + dW.
std::vector<double> drawn_axis(double tau1, double tau2, std::size_t fixes, double step, Normal& normal) {
    const double a = 1.0 / tau1;
    const double b = 1.0 / tau2;
    // Covariance of both over the step, and at rest.
    const auto over = [&](double rate, double time) { return -std::expm1(-rate * time) / rate; };
    const double aa = over(2 * a, step);
    const double ab = over(a + b, step);
    const double bb = over(2 * b, step);
    const double l11 = std::sqrt(aa);
    const double l21 = ab / l11;
    const double l22 = std::sqrt(std::max(0.0, bb - l21 * l21));
    const double r11 = std::sqrt(1 / (2 * a));
    const double r21 = 1 / (a + b) / r11;
    const double r22 = std::sqrt(std::max(0.0, 1 / (2 * b) - r21 * r21));
    const double scale = 1 / std::sqrt(1 / (2 * a) - 2 / (a + b) + 1 / (2 * b));
    double u = 0.0;
    double v = 0.0;
    std::vector<double> axis;
    for (std::size_t i = 0; i < fixes; ++i) {
        const double first = normal();
        const double second = normal();
        if (i == 0) {
            u = r11 * first;
            v = r21 * first + r22 * second;
        } else {
            u = u * std::exp(-a * step) + l11 * first;
            v = v * std::exp(-b * step) + l21 * first + l22 * second;
        }
        axis.push_back(scale * (u - v));
    }
    return axis;
}

}  // namespace

Track fourteen_fixes() {
    std::vector<double> times;
    for (int i = 0; i < 14; ++i) times.push_back(7200.0 * i);
    return track_of(times, {50, 70, 347, 444, 256, -82, 538, 180, 391, 244, 344, -9, -56, -74},
                    {-509, -425, -71, 50, -357, -330, -135, 491, 571, 209, 688, 416, 573, 698});
}

Track drawn_track(const Autocorrelation& model, const Matrix2& covariance, std::size_t fixes, double step,
                  std::uint64_t seed) {
    Normal normal(seed);
    const auto [tau1, tau2] = model.Scales;
    const std::vector<double> p = drawn_axis(tau1, tau2, fixes, step, normal);
    const std::vector<double> q = drawn_axis(tau1, tau2, fixes, step, normal);
    const double l11 = std::sqrt(covariance.XX);
    const double l21 = covariance.XY / l11;
    const double l22 = std::sqrt(covariance.YY - l21 * l21);
    std::vector<double> times;
    std::vector<double> x;
    std::vector<double> y;
    for (std::size_t i = 0; i < fixes; ++i) {
        times.push_back(step * static_cast<double>(i));
        x.push_back(l11 * p[i]);
        y.push_back(l21 * p[i] + l22 * q[i]);
    }
    return track_of(times, x, y);
}

}  // namespace wxl::tests
