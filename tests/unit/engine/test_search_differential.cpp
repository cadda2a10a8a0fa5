// The searches of clsLSCV beside the plain loop over all pairs.

#include "adapters/memory/memory_services.h"
#include "engine/clsLSCV.h"
#include "tests/support/engine_twins.h"
#include "tests/support/samples.h"

#include <cmath>
#include <gtest/gtest.h>

namespace wxl::engine {
namespace {

struct Range {
    double Min;
    double Max;
    double Step;
};

void expect_same_search(const tests::NamedSample& sample, tests::TwinScore score, const Range& range) {
    memory::MemoryMessages messages;
    clsLSCV search(messages);
    search.SetSearchRange(range.Min, range.Max);
    search.SetStepValue(range.Step);
    search.SetInputCoords(sample.Points);
    score == tests::TwinScore::kLscv ? search.CalculateLSCV() : search.CalculateBCV2();
    ASSERT_EQ(search.lErrorStatus, 0) << sample.Name;

    const tests::TwinSearch twin = tests::twin_search(score, sample.Points, range.Min, range.Max, range.Step);
    const auto profile = search.GetLSCVProfile();
    ASSERT_TRUE(profile.has_value());
    ASSERT_GE(profile->size(), twin.Scores.size()) << sample.Name;
    const double tolerance = 1e-9 * twin.LargestScore();
    for (std::size_t row = 0; row < twin.Scores.size(); ++row) {
        EXPECT_EQ((*profile)[row].Bandwidth, twin.Bandwidths[row]) << sample.Name << ", row " << row;
        EXPECT_NEAR((*profile)[row].Score, twin.Scores[row], tolerance) << sample.Name << ", row " << row;
    }
    for (std::size_t row = twin.Scores.size(); row < profile->size(); ++row)
        EXPECT_EQ((*profile)[row], ProfileRow{}) << sample.Name;
    EXPECT_EQ(search.GetBandwidth(), twin.Bandwidths[twin.Best]) << sample.Name;
}

void expect_same_default_search(const tests::NamedSample& sample) {
    const double href = tests::twin_href(sample.Points);
    for (const auto& [score, multiple] :
         {std::pair(tests::TwinScore::kLscv, 2.0), std::pair(tests::TwinScore::kBcv, 3.0)}) {
        const double min = 0.05 * href;
        const double max = multiple * href;
        expect_same_search(sample, score, {min, max, (max - min) / 200.0});
    }
}

// Below some 220 fixes the optimiser runs the plain loop itself, above it does not.
TEST(SearchDifferential, Small_hostile_samples) {
    for (const auto& sample : tests::hostile_samples(60)) expect_same_default_search(sample);
}

TEST(SearchDifferential, Larger_hostile_samples) {
    for (const auto& sample : tests::hostile_samples(330)) expect_same_default_search(sample);
}

TEST(SearchDifferential, Two_and_three_fixes) {
    expect_same_default_search({"two", {{0.0, 0.0}, {3.0, 4.0}}});
    expect_same_default_search({"three", {{0.0, 0.0}, {3.0, 4.0}, {10.0, -2.0}}});
}

TEST(SearchDifferential, Ranges_far_outside_the_usual_one) {
    const tests::NamedSample sample{"normal", tests::normal_sample(400, 250.0, {5e5, 5.8e6}, 61)};
    for (const auto score : {tests::TwinScore::kLscv, tests::TwinScore::kBcv}) {
        expect_same_search(sample, score, {1e-6, 1e-3, 1e-4});
        expect_same_search(sample, score, {1e-3, 2000.0, 100.0});
        expect_same_search(sample, score, {5000.0, 90000.0, 5000.0});
    }
}

// Far below every distance all scores follow the diagonal, far above them all pairs: the rows differ by little.
TEST(SearchDifferential, Nearly_flat_scores_choose_the_row_of_the_plain_loop) {
    const tests::NamedSample sample{"normal", tests::normal_sample(300, 1.0, {0.0, 0.0}, 62)};
    for (const auto score : {tests::TwinScore::kLscv, tests::TwinScore::kBcv})
        expect_same_search(sample, score, {0.35, 0.35 * (1.0 + 1e-7), 0.35e-9});
}

}  // namespace
}  // namespace wxl::engine
