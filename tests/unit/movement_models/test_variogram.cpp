#include "dense_twin.h"
#include "movement_models/variogram.h"
#include "worked_tracks.h"

#include <cmath>
#include <gtest/gtest.h>

namespace wxl::movement_models {
namespace {

// Lags of 10 and 20 of 0, 10, 20, 30, 40: squares of the steps 9, 4, 1, 16 and of two steps 25, 9, 25.
TEST(Variogram, Five_regular_fixes) {
    const Track track = tests::track_of({0, 10, 20, 30, 40}, {0, 3, 5, 6, 10}, {1, 1, 1, 1, 1});
    const auto points = variogram_of(track);
    ASSERT_EQ(points.size(), 2U);
    EXPECT_EQ(points[0].Pairs, 4.0);
    EXPECT_NEAR(points[0].Lag, 10.0, 1e-12);
    EXPECT_NEAR(points[0].Semivariance, 30.0 / 16.0, 1e-12);
    EXPECT_EQ(points[1].Pairs, 3.0);
    EXPECT_NEAR(points[1].Lag, 20.0, 1e-12);
    EXPECT_NEAR(points[1].Semivariance, 59.0 / 12.0, 1e-12);
}

/// Bins as they are defined: floor(lag/width + 1/2).
std::vector<VariogramPoint> by_definition(const Track& track) {
    const double width = track.MedianStep();
    std::vector<VariogramPoint> bins;
    for (std::size_t i = 0; i < track.Size(); ++i)
        for (std::size_t j = i + 1; j < track.Size(); ++j) {
            const double lag = track.Times[j] - track.Times[i];
            const auto bin = static_cast<std::size_t>(std::floor(lag / width + 0.5));
            if (bin >= bins.size()) bins.resize(bin + 1);
            bins[bin].Pairs += 1.0;
            bins[bin].Lag += lag;
            bins[bin].Semivariance +=
                0.25 * (std::pow(track.X[j] - track.X[i], 2) + std::pow(track.Y[j] - track.Y[i], 2));
        }
    for (VariogramPoint& bin : bins) {
        bin.Lag /= bin.Pairs;
        bin.Semivariance /= bin.Pairs;
    }
    std::erase_if(bins,
                  [&](const VariogramPoint& bin) { return !(bin.Pairs > 0) || bin.Lag > 0.5 * track.Duration(); });
    return bins;
}

Track irregular_track(std::size_t fixes) {
    Track track = tests::drawn_track({ModelKind::kOuf, {20000, 900}}, {1e4, 0, 1e4}, fixes, 600, 5);
    for (std::size_t i = 1; i < fixes; ++i) track.Times[i] += 250.0 * std::sin(static_cast<double>(i * i));
    return track;
}

TEST(Variogram, Irregular_fixes_by_definition) {
    const Track track = irregular_track(400);
    const auto points = variogram_of(track);
    const auto wanted = by_definition(track);
    ASSERT_EQ(points.size(), wanted.size());
    for (std::size_t k = 0; k < points.size(); ++k) {
        EXPECT_EQ(points[k].Pairs, wanted[k].Pairs);
        EXPECT_NEAR(points[k].Lag / wanted[k].Lag, 1.0, 1e-12);
        EXPECT_NEAR(points[k].Semivariance / wanted[k].Semivariance, 1.0, 1e-12);
    }
}

TEST(Variogram, Joined_bins_hold_every_pair_once) {
    const Track track = irregular_track(1200);
    const auto all = variogram_of(track);
    const auto few = variogram_of(track, 40);
    EXPECT_LE(few.size(), 41U);
    double pairs = 0.0;
    double squares = 0.0;
    for (const VariogramPoint& point : all) {
        pairs += point.Pairs;
        squares += point.Pairs * point.Semivariance;
    }
    double fewPairs = 0.0;
    double fewSquares = 0.0;
    for (const VariogramPoint& point : few) {
        fewPairs += point.Pairs;
        fewSquares += point.Pairs * point.Semivariance;
    }
    EXPECT_NEAR(fewPairs / pairs, 1.0, 2e-3);  // the last bin may end beyond half the duration
    EXPECT_NEAR(fewSquares / squares, 1.0, 5e-3);
    for (std::size_t k = 0; k < 20; ++k) EXPECT_EQ(few[k].Pairs, all[k].Pairs);
}

TEST(Variogram, A_straight_way_rises_and_a_range_does_not) {
    std::vector<double> t;
    std::vector<double> x;
    std::vector<double> y;
    for (int i = 0; i < 60; ++i) {
        t.push_back(i);
        x.push_back(10.0 * i);
        y.push_back(i % 5);
    }
    const Track straight = tests::track_of(t, x, y);
    EXPECT_TRUE(still_rises(variogram_of(straight), straight.Duration()));
    const Track resident = tests::drawn_track({ModelKind::kOuf, {3000, 900}}, {1e4, 0, 1e4}, 2000, 600, 5);
    EXPECT_FALSE(still_rises(variogram_of(resident), resident.Duration()));
}

// Two degrees: quantiles 2 ln(1/0.975) = 0.0506356 and 2 ln 40 = 7.3777589.
TEST(Variogram, Cautious_limits) {
    const Interval limits = variogram_interval({600.0, 8.0, 50.0}, 700.0);
    EXPECT_NEAR(limits.Low, 16.0 / 7.37775890822787, 1e-10);
    EXPECT_NEAR(limits.High, 16.0 / 0.0506356159685798, 1e-9);
}

TEST(Variogram, Curve_of_a_model) {
    FittedModel fit;
    fit.Model = {ModelKind::kOu, {100, 0}};
    fit.Covariance = {30, 5, 10};
    EXPECT_NEAR(model_semivariance(fit, 100.0), 20.0 * 0.63212055882855767, 1e-12);
}

}  // namespace
}  // namespace wxl::movement_models
