#include "dense_twin.h"
#include "movement_models/bandwidth.h"
#include "worked_tracks.h"

#include <cmath>
#include <gtest/gtest.h>
#include <random>

namespace wxl::movement_models {
namespace {

constexpr Autocorrelation kOuOfThreeHours{ModelKind::kOu, {10800, 0}};

Track ten_hourly_fixes() {
    std::vector<double> times;
    std::vector<double> places;
    for (int i = 0; i < 10; ++i) {
        times.push_back(3600.0 * i);
        places.push_back(i % 3);
    }
    return tests::track_of(times, places, places);
}

TEST(Bandwidth, Of_independent_fixes) {
    EXPECT_NEAR(std::sqrt(independent_bandwidth(1)), std::sqrt(2.0), 1e-15);
    EXPECT_NEAR(std::sqrt(independent_bandwidth(2)), 1.175929581575, 1e-12);
    EXPECT_NEAR(std::sqrt(independent_bandwidth(10)), 0.804171265433, 1e-12);
    EXPECT_NEAR(std::sqrt(independent_bandwidth(100)), 0.502205267741, 1e-12);
    EXPECT_NEAR(std::sqrt(independent_bandwidth(1000)), 0.328162512878, 1e-12);
}

TEST(Bandwidth, Ten_hourly_fixes_with_equal_weights) {
    const Bandwidth bandwidth = uniform_bandwidth(ten_hourly_fixes(), kOuOfThreeHours);
    EXPECT_NEAR(bandwidth.H(), 1.022259351973, 1e-12);
    EXPECT_NEAR(equivalent_fixes(bandwidth.Squared), 3.518665513548, 1e-11);
    EXPECT_NEAR(bandwidth.Bias, 1.611449248978, 1e-12);
    EXPECT_NEAR(bandwidth.EffectiveWeights(), 10.0, 1e-12);
    EXPECT_EQ(bandwidth.ZeroWeights(), 0U);
}

TEST(Bandwidth, Fourteen_fixes_with_equal_weights) {
    const Bandwidth bandwidth = uniform_bandwidth(tests::fourteen_fixes(), {ModelKind::kOu, {22123.2171, 0}});
    EXPECT_NEAR(bandwidth.H(), 0.951585954, 1e-8);
    EXPECT_NEAR(bandwidth.Bias, 1.557186649, 1e-8);
}

TEST(Bandwidth, Independent_fixes_have_their_closed_form) {
    const Bandwidth bandwidth = uniform_bandwidth(ten_hourly_fixes(), {});
    EXPECT_NEAR(bandwidth.H(), 0.804171265433, 1e-12);
    EXPECT_NEAR(bandwidth.Bias, 0.9 + bandwidth.Squared, 1e-15);
}

double uniform(std::mt19937_64& source) {
    return static_cast<double>(source() >> 11) * 0x1p-53;
}

/// Times of every kind of sampling, starting at 0.
std::vector<std::vector<double>> samplings() {
    std::mt19937_64 source(42);
    std::vector<std::vector<double>> all(6, {0.0});
    const auto step = [&](std::size_t kind, std::size_t i) -> double {
        switch (kind) {
            case 0:
                return 60.0;
            case 1:
                return std::exp(8.0 * uniform(source));
            case 2:
                return i % 100 == 0 ? 86400.0 : 1.0;
            case 3:
                return i < 150 ? 0.1 : 3600.0 * uniform(source) + 1.0;
            case 4:
                return i % 100 == 0 ? 3e6 : 600.0 + uniform(source);
            default:
                return i == 100 ? 1e9 : 1e-3;
        }
    };
    for (std::size_t kind = 0; kind < all.size(); ++kind)
        for (std::size_t i = 1; i < 301; ++i) all[kind].push_back(all[kind].back() + step(kind, i));
    all.push_back({0.0, 5.0});
    all.push_back({0.0, 5.0, 5.5});
    return all;
}

std::vector<Autocorrelation> models_of_all_scales() {
    std::vector<Autocorrelation> models;
    for (const double tau : {5.0, 600.0, 86400.0, 1e12}) {
        models.push_back({ModelKind::kOu, {tau, 0}});
        models.push_back({ModelKind::kCritical, {tau, 0}});
        models.push_back({ModelKind::kOuf, {tau, tau / 20}});
    }
    return models;
}

std::vector<double> random_weights(std::size_t count, std::uint64_t seed) {
    std::mt19937_64 source(seed);
    std::vector<double> weights;
    double sum = 0.0;
    for (std::size_t i = 0; i < count; ++i) {
        weights.push_back(i % 7 == 3 ? 0.0 : uniform(source));
        sum += weights.back();
    }
    for (double& w : weights) w /= sum;
    return weights;
}

long double double_sum(const std::vector<double>& times, const std::vector<double>& weights,
                       const std::function<double(double)>& f) {
    long double sum = 0.0L;
    for (std::size_t i = 0; i < times.size(); ++i)
        for (std::size_t j = 0; j < times.size(); ++j)
            sum += static_cast<long double>(weights[i]) * weights[j] * f(std::abs(times[i] - times[j]));
    return sum;
}

// Interpolation is good to 1e-13 of the largest value on a panel.
TEST(PairSums, Agree_with_the_double_sum) {
    for (const std::vector<double>& times : samplings())
        for (const Autocorrelation& model : models_of_all_scales()) {
            Track track;
            track.Times = times;
            const TimeTree tree(track.Times, bandwidth_resolution(track, model));
            const std::vector<double> weights = random_weights(times.size(), 3);
            const PairSums sums(tree, model, weights);
            const double lowest = independent_bandwidth(static_cast<double>(times.size()));
            for (const double h : {lowest, 0.3, 2.0}) {
                const auto wanted = static_cast<double>(
                    double_sum(times, weights, [&](double lag) { return 1.0 / (model.Semivariance(lag) + h); }));
                EXPECT_NEAR((sums.Error(h) + 2.0 / (2.0 + h) - 0.5) * 2.0 / wanted, 1.0, 1e-11)
                    << model_name(model.Kind) << ' ' << model.Scales.Position << ' ' << times[1] << ' ' << h;
                const auto slope = static_cast<double>(double_sum(times, weights, [&](double lag) {
                    return 1.0 / ((model.Semivariance(lag) + h) * (model.Semivariance(lag) + h));
                }));
                EXPECT_NEAR((2.0 / ((2.0 + h) * (2.0 + h)) - sums.Slope(h)) * 2.0 / slope, 1.0, 1e-10);
            }
            const auto bias =
                static_cast<double>(double_sum(times, weights, [&](double lag) { return model.Semivariance(lag); }));
            EXPECT_NEAR(sums.Bias(0.0), bias, 1e-11);
        }
}

TEST(PairSums, Need_few_lags) {
    Track track;
    for (int i = 0; i < 20000; ++i) track.Times.push_back(300.0 * i);
    const TimeTree tree(track.Times, bandwidth_resolution(track, {ModelKind::kOuf, {86400, 3600}}));
    EXPECT_LE(tree.Compress(std::vector<double>(20000, 1.0 / 20000)).Lags.size(), 600U);
}

TEST(LagProduct, Agrees_with_the_full_matrix) {
    for (const std::vector<double>& times : samplings())
        for (const Autocorrelation& model : models_of_all_scales()) {
            Track track;
            track.Times = times;
            const double h = independent_bandwidth(static_cast<double>(times.size()));
            const auto f = [&](double lag) { return 0.5 / (model.Semivariance(lag) + h); };
            const TimeTree tree(track.Times, bandwidth_resolution(track, model));
            const LagProduct product(tree, f);
            const std::vector<double> weights = random_weights(times.size(), 9);
            std::vector<double> y(times.size());
            product.Multiply(weights, y);
            for (std::size_t i = 0; i < times.size(); i += 37) {
                long double wanted = 0.0L;
                for (std::size_t j = 0; j < times.size(); ++j)
                    wanted += static_cast<long double>(weights[j]) * f(std::abs(times[i] - times[j]));
                EXPECT_NEAR(y[i] / static_cast<double>(wanted), 1.0, 1e-11);
            }
        }
}

}  // namespace
}  // namespace wxl::movement_models
