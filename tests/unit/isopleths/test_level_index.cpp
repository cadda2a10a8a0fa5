#include "isopleths/level_index.h"

#include <cmath>
#include <gtest/gtest.h>
#include <random>

namespace wxl::isopleths {
namespace {

/// The rule, step by step.
std::size_t nearest_by_steps(double value, const std::vector<double>& levels) {
    std::size_t nearest = 0;
    for (std::size_t i = 1; i < levels.size(); ++i)
        if (std::abs(value - levels[i]) < std::abs(value - levels[nearest])) nearest = i;
    return nearest;
}

TEST(LevelIndex, Finds_the_closest_level_and_of_equally_close_ones_the_first) {
    const LevelIndex index(std::vector<double>{4.0, 2.0, 8.0, 2.0});
    EXPECT_EQ(index.Nearest(2.0), 1U);
    EXPECT_EQ(index.Nearest(3.0), 0U);
    EXPECT_EQ(index.Nearest(6.0), 0U);
    EXPECT_EQ(index.Nearest(6.5), 2U);
    EXPECT_EQ(index.Nearest(-1.0), 1U);
    EXPECT_EQ(index.Nearest(100.0), 2U);
    EXPECT_TRUE(index.IsFirst(1));
    EXPECT_FALSE(index.IsFirst(3));
}

TEST(LevelIndex, Answers_as_the_rule_does_step_by_step) {
    std::mt19937 random(7);
    std::uniform_int_distribution<int> few(0, 12);
    for (int round = 0; round < 2000; ++round) {
        std::vector<double> levels(static_cast<std::size_t>(1 + few(random)));
        for (double& level : levels) level = few(random) * (round % 3 == 0 ? 1e-17 : 0.5);
        const LevelIndex index(levels);
        for (const double offset : {0.0, 0.25, 1.0, 1e6}) {
            const double value = few(random) * 0.5 + offset;
            ASSERT_EQ(index.Nearest(value), nearest_by_steps(value, levels)) << round;
        }
    }
}

TEST(LevelIndex, Takes_a_hundred_thousand_equal_levels) {
    const LevelIndex index(std::vector<double>(100000, 0.5));
    EXPECT_EQ(index.Nearest(0.75), 0U);
    EXPECT_TRUE(index.IsFirst(0));
    EXPECT_FALSE(index.IsFirst(99999));
}

}  // namespace
}  // namespace wxl::isopleths
