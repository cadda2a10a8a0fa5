#include "engine/gaussian_field.h"
#include "engine/pilot_density.h"
#include "tests/support/engine_twins.h"
#include "tests/support/samples.h"

#include <algorithm>
#include <cmath>
#include <gtest/gtest.h>

namespace wxl::engine {
namespace {

void expect_same_pilot(const std::vector<platform::Point>& points, double bandwidth, const std::string& name) {
    WorkClock clock;
    const std::vector<double> density = pilot_density(points, bandwidth, clock);
    const std::vector<double> expected = tests::twin_pilot(points, bandwidth);
    ASSERT_EQ(density.size(), expected.size());
    double worst = 0.0;
    for (std::size_t i = 0; i < expected.size(); ++i)
        worst = std::max(worst, std::abs(density[i] - expected[i]) / expected[i]);
    EXPECT_LE(worst, 1e-10) << name << ", bandwidth " << bandwidth;
}

TEST(PilotDensity, Agrees_with_the_plain_loop_on_hostile_samples) {
    for (const auto& sample : tests::hostile_samples(1200)) {
        const double href = tests::twin_href(sample.Points);
        for (const double multiple : {0.02, 0.3, 1.0, 5.0})
            expect_same_pilot(sample.Points, multiple * href, sample.Name);
    }
}

TEST(PilotDensity, Agrees_with_the_plain_loop_where_both_methods_meet) {
    auto points = tests::normal_sample(4000, 30.0, {5e5, 5.8e6}, 101);
    for (const auto& p : tests::normal_sample(300, 20000.0, {5e5, 5.8e6}, 102)) points.push_back(p);
    expect_same_pilot(points, 9.0, "dense core, sparse surroundings");
}

TEST(PilotDensity, Of_equal_fixes_counts_them) {
    const std::vector<platform::Point> points(2500, {5.1e5, 5.8e6});
    WorkClock clock;
    for (const double value : pilot_density(points, 3.0, clock)) EXPECT_NEAR(value, 2500.0 / 6.28318530717958, 1e-9);
}

// A fix 9 bandwidths away from 20,000 others: only its own term counts, to more digits than the others' sum has.
TEST(PilotDensity, Keeps_its_precision_at_an_isolated_fix_beside_a_crowd) {
    std::vector<platform::Point> points(20000, {0.0, 0.0});
    points.push_back({9.0, 0.0});
    points.push_back({5.0, 0.0});
    WorkClock clock;
    const std::vector<double> density = pilot_density(points, 1.0, clock);
    const double near = std::exp(-0.5 * 16.0);
    EXPECT_NEAR(density[20000] * 6.28318530717958, 1.0 + 20000.0 * std::exp(-0.5 * 81.0) + near, 1e-11);
    const double crowd = 20000.0 * std::exp(-0.5 * 25.0);
    EXPECT_NEAR(density[20001] * 6.28318530717958 / (1.0 + crowd + near), 1.0, 1e-11);
}

TEST(PilotDensity, Far_apart_fixes_stand_alone) {
    std::vector<platform::Point> points;
    for (int i = 0; i < 700; ++i) points.push_back({1e15 * i, -3e14 * i});
    WorkClock clock;
    for (const double value : pilot_density(points, 1e-3, clock)) EXPECT_DOUBLE_EQ(value, 1.0 / 6.28318530717958);
}

TEST(GaussianField, Moments_agree_with_the_pairs) {
    const auto sources = tests::normal_sample(900, 6.0, {1e6, -2e6}, 103);
    const auto targets = tests::normal_sample(200, 9.0, {1e6, -2e6}, 104);
    const GaussianField field(1.0);
    WorkClock clock;
    std::vector<double> direct(targets.size(), 0.0);
    std::vector<double> moments(targets.size(), 0.0);
    field.AddDirectly(sources, targets, direct, clock);
    field.AddByMoments(sources, targets, moments, clock);
    for (std::size_t i = 0; i < targets.size(); ++i) EXPECT_NEAR(moments[i], direct[i], 1e-12 * (1.0 + direct[i])) << i;
}

}  // namespace
}  // namespace wxl::engine
