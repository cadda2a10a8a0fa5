#include "engine/cross_validation.h"
#include "engine/pair_level.h"
#include "engine/pair_sums.h"
#include "tests/support/samples.h"

#include <cmath>
#include <gtest/gtest.h>
#include <vector>

namespace wxl::engine {
namespace {

std::vector<double> default_range(const std::vector<platform::Point>& points, double multiple) {
    platform::Extent extent;
    for (const auto& p : points) extent.Include(p);
    const double href = 0.1 * std::hypot(extent.Width(), extent.Height());
    std::vector<double> bandwidths;
    for (int i = 0; i <= 12; ++i) bandwidths.push_back(href * (0.05 + (multiple - 0.05) * i / 12.0));
    return bandwidths;
}

/// What the pairs of a sum can add up to at most: the scale of its rounding errors.
double magnitude(Criterion criterion, std::size_t count, double value) {
    return std::abs(value) + static_cast<double>(count) * (criterion == Criterion::kLscv ? 0.4 : 8.0);
}

void expect_agreement(const std::vector<platform::Point>& points, const std::vector<double>& bandwidths,
                      const std::string& name) {
    WorkClock clock;
    for (const Criterion criterion : {Criterion::kLscv, Criterion::kBcv}) {
        std::vector<double> literal;
        for (const double h : bandwidths) literal.push_back(literal_pair_sum(criterion, points, h, clock));
        for (const PairMethod method : {PairMethod::kDirect, PairMethod::kSpectrum, PairMethod::kTiles}) {
            const std::vector<PairSum> sums = pair_sums(criterion, points, bandwidths, method, clock);
            ASSERT_EQ(sums.size(), literal.size());
            for (std::size_t i = 0; i < sums.size(); ++i) {
                const std::string where = name + ", criterion " + std::to_string(static_cast<int>(criterion)) +
                                          ", method " + std::to_string(static_cast<int>(method)) + ", row " +
                                          std::to_string(i);
                const double tolerance = 1e-11 * magnitude(criterion, points.size(), literal[i]);
                EXPECT_NEAR(sums[i].Value, literal[i], tolerance) << where;
                EXPECT_LE(std::abs(sums[i].Value - literal[i]),
                          sums[i].Error + 1e-14 * magnitude(criterion, points.size(), literal[i]))
                    << where;
            }
        }
    }
}

TEST(PairSums, Every_method_agrees_with_the_plain_loop_on_hostile_samples) {
    for (const auto& sample : tests::hostile_samples(220))
        expect_agreement(sample.Points, default_range(sample.Points, 2.0), sample.Name);
}

// The extent is thousands of bandwidths, so that the tiles are many and their borders matter.
TEST(PairSums, Tiles_agree_with_the_plain_loop_across_their_borders) {
    const auto points = tests::normal_sample(1500, 1000.0, {5.0e5, 5.8e6}, 31);
    WorkClock clock;
    const std::vector<double> bandwidths = {0.7, 1.1, 2.0, 2.9, 6.0, 11.0, 40.0};
    for (const Criterion criterion : {Criterion::kLscv, Criterion::kBcv}) {
        const auto tiles = pair_sums(criterion, points, bandwidths, PairMethod::kTiles, clock);
        for (std::size_t i = 0; i < bandwidths.size(); ++i) {
            const double literal = literal_pair_sum(criterion, points, bandwidths[i], clock);
            EXPECT_NEAR(tiles[i].Value, literal, 1e-11 * magnitude(criterion, points.size(), literal)) << i;
        }
    }
}

// Bandwidths far below and far above every distance: nothing but the diagonal, or every pair at its full value.
TEST(PairSums, Extreme_bandwidths_agree_with_the_plain_loop) {
    auto points = tests::normal_sample(150, 100.0, {5.0e5, 5.8e6}, 41);
    points.push_back(points.front());
    WorkClock clock;
    const std::vector<double> bandwidths = {1e-60, 1e-9, 1e-3, 1.0, 1e5, 1e30};
    for (const Criterion criterion : {Criterion::kLscv, Criterion::kBcv}) {
        const auto direct = pair_sums(criterion, points, bandwidths, PairMethod::kDirect, clock);
        for (std::size_t i = 0; i < bandwidths.size(); ++i) {
            const double literal = literal_pair_sum(criterion, points, bandwidths[i], clock);
            EXPECT_NEAR(direct[i].Value, literal, 1e-11 * magnitude(criterion, points.size(), literal)) << i;
        }
    }
}

TEST(PairSums, Small_samples_go_pair_by_pair_and_large_ones_by_the_transform) {
    const auto small = tests::normal_sample(1000, 100.0, {0.0, 0.0}, 51);
    const auto large = tests::normal_sample(40000, 100.0, {0.0, 0.0}, 52);
    const std::vector<double> bandwidths = {1.0, 40.0};
    EXPECT_EQ(fastest_pair_method(Criterion::kLscv, small, bandwidths), PairMethod::kDirect);
    EXPECT_EQ(fastest_pair_method(Criterion::kLscv, large, bandwidths), PairMethod::kSpectrum);
}

// One transform over this extent would need 10^15 cells.
TEST(PairSums, A_large_sample_over_a_huge_extent_is_cut_into_tiles) {
    auto points = tests::normal_sample(30000, 100.0, {0.0, 0.0}, 53);
    points.push_back({1e8, 1e8});
    EXPECT_EQ(fastest_pair_method(Criterion::kLscv, points, std::vector<double>{3.0, 40.0}), PairMethod::kTiles);
}

// Bandwidths of 20 to 800 m make transforms of 20 to 140 m and of 140 to 800 m; the first has the smaller cells.
TEST(PairSums, Memory_of_transforms_is_that_of_the_largest_one) {
    const platform::Extent extent{0.0, 0.0, 36000.0, 27000.0};
    for (const Criterion criterion : {Criterion::kLscv, Criterion::kBcv}) {
        const TransformBox box = PairLevel(criterion, 20.0, 140.0).BoxFor(extent);
        const double megabytes = megabytes_of_transforms(criterion, extent, 500000, 20.0, 800.0);
        // Sides are rounded up to good sizes.
        EXPECT_GT(megabytes, 0.95 * 8e-6 * static_cast<double>(box.Cells()));
        EXPECT_LE(megabytes, 8e-6 * static_cast<double>(box.Cells()));
    }
}

TEST(PairSums, Pairs_take_no_memory_for_transforms) {
    const platform::Extent extent{0.0, 0.0, 36000.0, 27000.0};
    EXPECT_EQ(megabytes_of_transforms(Criterion::kLscv, extent, 1000, 20.0, 800.0), 0.0);
    EXPECT_EQ(megabytes_of_transforms(Criterion::kLscv, extent, 2, 20.0, 800.0), 0.0);
}

// One transform of an extent of 1,000,000 bandwidths would have 1E13 cells or more.
TEST(PairSums, Tiles_take_the_memory_of_one_of_them) {
    const platform::Extent extent{0.0, 0.0, 1e6, 1e6};
    EXPECT_DOUBLE_EQ(megabytes_of_transforms(Criterion::kLscv, extent, 100000, 1.0, 40.0), 33.554432);
    EXPECT_EQ(megabytes_of_transforms(Criterion::kLscv, extent, 10000, 1.0, 40.0), 0.0);
}

}  // namespace
}  // namespace wxl::engine
