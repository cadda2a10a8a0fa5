#pragma once
// Samples of fixes for differential tests: the same ones on every machine.

#include "platform/values.h"

#include <cmath>
#include <cstdint>
#include <string>
#include <vector>

namespace wxl::tests {

/// Pseudo-random numbers by a fixed recipe (splitmix64), so that a sample is the same under every standard library.
class Dice {
public:
    explicit Dice(std::uint64_t seed) : m_state(seed) {}

    /// Uniform in [0, 1).
    double Uniform() {
        m_state += 0x9E3779B97F4A7C15U;
        std::uint64_t z = m_state;
        z = (z ^ (z >> 30U)) * 0xBF58476D1CE4E5B9U;
        z = (z ^ (z >> 27U)) * 0x94D049BB133111EBU;
        return static_cast<double>((z ^ (z >> 31U)) >> 11U) * 0x1.0p-53;
    }

    /// Normal with mean 0 and standard deviation 1 (Box and Muller 1958).
    double Normal() {
        const double radius = std::sqrt(-2.0 * std::log(1.0 - Uniform()));
        return radius * std::cos(6.283185307179586 * Uniform());
    }

private:
    std::uint64_t m_state;
};

struct NamedSample {
    std::string Name;
    std::vector<platform::Point> Points;
};

/// One cloud of fixes, standard deviation `sd`.
inline std::vector<platform::Point> normal_sample(std::size_t count, double sd, platform::Point centre,
                                                  std::uint64_t seed) {
    Dice dice(seed);
    std::vector<platform::Point> points;
    points.reserve(count);
    for (std::size_t i = 0; i < count; ++i) {
        const double x = centre.X + sd * dice.Normal();
        points.push_back({x, centre.Y + sd * dice.Normal()});
    }
    return points;
}

/// A walk that is drawn back to its centre: fixes follow one another closely, as real tracks do.
inline std::vector<platform::Point> walk_sample(std::size_t count, double step, platform::Point centre,
                                                std::uint64_t seed) {
    Dice dice(seed);
    std::vector<platform::Point> points;
    points.reserve(count);
    platform::Point at = centre;
    for (std::size_t i = 0; i < count; ++i) {
        at.X += step * dice.Normal() - 0.02 * (at.X - centre.X);
        at.Y += step * dice.Normal() - 0.02 * (at.Y - centre.Y);
        points.push_back(at);
    }
    return points;
}

/// Samples that are awkward in one way each, of `count` fixes or a few more.
inline std::vector<NamedSample> hostile_samples(std::size_t count) {
    const platform::Point utm{512345.0, 5834567.0};
    std::vector<NamedSample> samples;
    samples.push_back({"normal", normal_sample(count, 250.0, utm, 1)});
    samples.push_back({"walk", walk_sample(count, 40.0, utm, 2)});

    std::vector<platform::Point> duplicates = normal_sample(count / 4 + 1, 300.0, utm, 3);
    for (std::size_t i = 0; duplicates.size() < count; ++i) duplicates.push_back(duplicates[i]);
    samples.push_back({"every fix several times", duplicates});

    std::vector<platform::Point> rounded = normal_sample(count, 200.0, utm, 4);
    for (auto& p : rounded) p = {std::round(p.X / 50.0) * 50.0, std::round(p.Y / 50.0) * 50.0};
    samples.push_back({"rounded to 50 m", rounded});

    std::vector<platform::Point> line;
    Dice dice(5);
    for (std::size_t i = 0; i < count; ++i) line.push_back({utm.X + 1000.0 * dice.Uniform(), utm.Y});
    samples.push_back({"on a line", line});

    std::vector<platform::Point> outlier = normal_sample(count, 30.0, utm, 6);
    outlier.push_back({utm.X + 60000.0, utm.Y - 45000.0});
    samples.push_back({"one far outlier", outlier});

    std::vector<platform::Point> clusters;
    for (std::uint64_t k = 0; k < 5; ++k) {
        const platform::Point centre{utm.X + 4000.0 * dice.Normal(), utm.Y + 4000.0 * dice.Normal()};
        for (const auto& p : normal_sample(count / 5 + 1, 15.0, centre, 7 + k)) clusters.push_back(p);
    }
    samples.push_back({"tight clusters far apart", clusters});

    std::vector<platform::Point> far = normal_sample(count, 3.0, {5.8e8, -9.1e8}, 20);
    samples.push_back({"metres of spread, huge coordinates", far});

    std::vector<platform::Point> stretched;
    for (std::size_t i = 0; i < count; ++i) stretched.push_back({5000.0 * dice.Normal(), 5.0 * dice.Normal()});
    samples.push_back({"long and thin", stretched});
    return samples;
}

}  // namespace wxl::tests
