#pragma once
#include "movement_models/models.h"
#include "movement_models/step_coefficients.h"
#include "movement_models/track.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <numbers>
#include <random>
#include <vector>

namespace wxl::bench {

/// Standard normal numbers by Box and Muller (1958): the same from every compiler.
class Normal {
public:
    explicit Normal(std::uint64_t seed) : m_source(seed) {}
    double Uniform() { return static_cast<double>(m_source() >> 11) * 0x1p-53; }
    double operator()() {
        const double radius = std::sqrt(-2.0 * std::log1p(-Uniform()));
        return radius * std::cos(2.0 * std::numbers::pi * Uniform());
    }

private:
    std::mt19937_64 m_source;
};

/// Irregular times: steps between 0.2 and 1.8 of the mean.
inline std::vector<double> irregular_times(std::size_t fixes, double meanStep, Normal& normal) {
    std::vector<double> times{0.0};
    while (times.size() < fixes) times.push_back(times.back() + meanStep * (0.2 + 1.6 * normal.Uniform()));
    return times;
}

/// One axis of unit variance at these times.
inline std::vector<double> drawn_axis(const movement_models::Autocorrelation& model, const std::vector<double>& times,
                                      Normal& normal) {
    using movement_models::ModelKind;
    const auto [tau1, tau2] = model.Scales;
    std::vector<double> axis{normal()};
    const bool fast = model.Kind == ModelKind::kOuf || model.Kind == ModelKind::kCritical;
    const movement_models::StepModel<double> steps = model.Kind == ModelKind::kOuf
                                                         ? movement_models::StepModel<double>(tau1, tau2)
                                                         : movement_models::StepModel<double>(tau1 > 0.0 ? tau1 : 1.0);
    double velocity = std::sqrt(steps.Omega2()) * normal();
    for (std::size_t i = 1; i < times.size(); ++i) {
        const double step = times[i] - times[i - 1];
        const double last = axis.back();
        if (model.Kind == ModelKind::kIid) {
            axis.push_back(normal());
        } else if (!fast) {
            axis.push_back(std::exp(-step / tau1) * last + std::sqrt(-std::expm1(-2.0 * step / tau1)) * normal());
        } else {
            const auto c = steps.Step(step);
            const double first = normal();
            const double across = c.Q12 / std::sqrt(c.Q11);
            axis.push_back(c.C0 * last + c.G * velocity + std::sqrt(c.Q11) * first);
            velocity = c.C1 * last + c.GPrime * velocity + across * first +
                       std::sqrt(std::max(0.0, c.Q22 - across * across)) * normal();
        }
    }
    return axis;
}

/// A track drawn from a model with this covariance.
inline movement_models::Track drawn_track(const movement_models::Autocorrelation& model,
                                          const movement_models::Matrix2& covariance, std::size_t fixes,
                                          double meanStep, std::uint64_t seed) {
    Normal normal(seed);
    const std::vector<double> times = irregular_times(fixes, meanStep, normal);
    const std::vector<double> p = drawn_axis(model, times, normal);
    const std::vector<double> q = drawn_axis(model, times, normal);
    const double l11 = std::sqrt(covariance.XX);
    const double l21 = covariance.XY / l11;
    const double l22 = std::sqrt(covariance.YY - l21 * l21);
    std::vector<platform::Point> places;
    for (std::size_t i = 0; i < fixes; ++i) places.push_back({l11 * p[i], l21 * p[i] + l22 * q[i]});
    return movement_models::prepare_track(times, places).Fixes;
}

}  // namespace wxl::bench
