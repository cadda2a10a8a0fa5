#include "dense_twin.h"
#include "movement_models/weights.h"
#include "worked_tracks.h"

#include <algorithm>
#include <cmath>
#include <gtest/gtest.h>
#include <numeric>
#include <random>

namespace wxl::movement_models {
namespace {

Track at_times(const std::vector<double>& times) {
    std::vector<double> places;
    for (std::size_t i = 0; i < times.size(); ++i) places.push_back(static_cast<double>(i % 3));
    return tests::track_of(times, places, places);
}

TEST(Weights, Ten_hourly_fixes) {
    std::vector<double> times;
    for (int i = 0; i < 10; ++i) times.push_back(3600.0 * i);
    const Bandwidth bandwidth = optimal_bandwidth(at_times(times), {ModelKind::kOu, {10800, 0}});
    EXPECT_NEAR(bandwidth.H(), 1.012423022327, 1e-11);
    EXPECT_NEAR(bandwidth.Bias, 1.618897107455, 1e-11);
    const double wanted[] = {0.183076572657, 0.085645849940, 0.079106396450, 0.076564005600, 0.075607175373};
    for (std::size_t i = 0; i < 5; ++i) {
        EXPECT_NEAR(bandwidth.Weights[i], wanted[i], 5e-10);
        EXPECT_NEAR(bandwidth.Weights[9 - i], wanted[i], 5e-10);
    }
}

TEST(Weights, Fourteen_fixes) {
    EXPECT_NEAR(optimal_bandwidth(tests::fourteen_fixes(), {ModelKind::kOu, {22123.2171, 0}}).H(), 0.943490034, 1e-8);
}

TEST(Weights, Of_independent_fixes_are_equal) {
    const Bandwidth bandwidth = optimal_bandwidth(at_times({0, 10, 11, 12}), {});
    EXPECT_EQ(bandwidth.Weights, std::vector<double>(4, 0.25));
}

/// The least w'G w by exchanging weight between the pair of fixes that gains most: slow and simple.
std::vector<double> by_exchange(const Track& track, const Autocorrelation& model, double squared) {
    const std::size_t n = track.Size();
    std::vector<double> g(n * n);
    for (std::size_t i = 0; i < n; ++i)
        for (std::size_t j = 0; j < n; ++j)
            g[i * n + j] = 0.5 / (model.Semivariance(std::abs(track.Times[i] - track.Times[j])) + squared);
    std::vector<double> w(n, 1.0 / static_cast<double>(n));
    for (int round = 0; round < 400000; ++round) {
        std::vector<double> y(n, 0.0);
        for (std::size_t i = 0; i < n; ++i)
            for (std::size_t j = 0; j < n; ++j) y[i] += g[i * n + j] * w[j];
        const auto to = static_cast<std::size_t>(std::min_element(y.begin(), y.end()) - y.begin());
        std::size_t from = to;
        for (std::size_t i = 0; i < n; ++i)
            if (w[i] > 0.0 && y[i] > y[from]) from = i;
        const double gain = y[from] - y[to];
        if (gain < 1e-13) break;
        const double step = std::min(w[from], gain / (g[from * n + from] + g[to * n + to] - 2.0 * g[from * n + to]));
        w[from] -= step;
        w[to] += step;
    }
    return w;
}

double objective(const WeightMatrix& matrix, const std::vector<double>& weights) {
    std::vector<double> product(weights.size());
    matrix.Multiply(weights, product);
    return std::inner_product(weights.begin(), weights.end(), product.begin(), 0.0);
}

TEST(Weights, Active_set_finds_the_least_sum) {
    const Track track = at_times({0, 1, 2, 3, 50, 51, 400, 401, 402, 403, 900, 2000, 2001, 2040});
    for (const Autocorrelation& model : {Autocorrelation{ModelKind::kOu, {300, 0}}, {ModelKind::kOuf, {300, 60}}}) {
        const auto matrix = dense_weight_matrix(track, model, 0.5);
        const std::vector<double> fast = least_weights(*matrix, std::vector<double>(14, 1.0 / 14));
        const std::vector<double> slow = by_exchange(track, model, 0.5);
        EXPECT_NEAR(objective(*matrix, fast), objective(*matrix, slow), 1e-9);
        EXPECT_NEAR(std::accumulate(fast.begin(), fast.end(), 0.0), 1.0, 1e-14);
        EXPECT_GE(*std::min_element(fast.begin(), fast.end()), 0.0);
    }
}

/// Regular, irregular, and bursts of a second with gaps of hours.
std::vector<std::vector<double>> samplings(std::size_t fixes) {
    std::mt19937_64 source(8);
    std::vector<std::vector<double>> all(3, {0.0});
    for (std::size_t i = 1; i < fixes; ++i) {
        const double share = static_cast<double>(source() >> 11) * 0x1p-53;
        all[0].push_back(all[0].back() + 900.0);
        all[1].push_back(all[1].back() + std::exp(3.0 + 6.0 * share));
        all[2].push_back(all[2].back() + (i % 20 == 0 ? 20000.0 * share : 1.0));
    }
    return all;
}

TEST(Weights, Sparse_and_dense_matrices_agree) {
    for (const std::vector<double>& times : samplings(400))
        for (const Autocorrelation& model : {Autocorrelation{ModelKind::kOu, {30000, 0}},
                                             {ModelKind::kOuf, {30000, 1500}},
                                             {ModelKind::kCritical, {9000, 0}}}) {
            const Track track = at_times(times);
            const double h = 0.2;
            const TimeTree tree(track.Times, bandwidth_resolution(track, model));
            const auto dense = dense_weight_matrix(track, model, h);
            const auto sparse = sparse_weight_matrix(track, tree, model, h);
            const std::vector<double> start(400, 1.0 / 400);
            const double wanted = objective(*dense, least_weights(*dense, start));
            EXPECT_NEAR(objective(*dense, least_weights(*sparse, start)) / wanted, 1.0, 1e-9) << model_name(model.Kind);
        }
}

TEST(Weights, Lessen_the_error_of_uneven_tracks) {
    const Track track = at_times(samplings(600)[2]);
    const Autocorrelation model{ModelKind::kOuf, {30000, 1500}};
    const Bandwidth uniform = uniform_bandwidth(track, model);
    const Bandwidth optimal = optimal_bandwidth(track, model);
    EXPECT_LT(optimal.Error, uniform.Error);
    EXPECT_GT(optimal.ZeroWeights(), 0U);
    EXPECT_NEAR(std::accumulate(optimal.Weights.begin(), optimal.Weights.end(), 0.0), 1.0, 1e-12);
}

}  // namespace
}  // namespace wxl::movement_models
