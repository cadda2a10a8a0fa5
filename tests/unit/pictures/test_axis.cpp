#include "pictures/axis.h"

#include <cmath>
#include <gtest/gtest.h>
#include <limits>
#include <utility>

namespace wxl::pictures {
namespace {

std::vector<std::string> labels(const Axis& axis) {
    std::vector<std::string> texts;
    for (const Tick& tick : axis.Ticks) texts.push_back(tick.Text);
    return texts;
}

using Texts = std::vector<std::string>;

TEST(Axis, Ticks_stand_at_round_numbers) {
    EXPECT_EQ(labels(MakeAxis(0.7, 28.9, 6, 0.0)), (Texts{"5", "10", "15", "20", "25"}));
    EXPECT_EQ(labels(MakeAxis(0.0, 1.0, 5, 0.0)), (Texts{"0", "0.2", "0.4", "0.6", "0.8", "1"}));
    EXPECT_EQ(labels(MakeAxis(-1.0, 1.0, 4, 0.0)), (Texts{"-1", "-0.5", "0", "0.5", "1"}));
    EXPECT_EQ(labels(MakeAxis(201.0, 8040.0, 6, 0.0)), (Texts{"2000", "4000", "6000", "8000"}));
    EXPECT_EQ(labels(MakeAxis(0.0, 1.2, 5, 0.0)), (Texts{"0", "0.25", "0.5", "0.75", "1"}));
}

TEST(Axis, Margin_is_added_at_both_ends) {
    const Axis axis = MakeAxis(0.0, 10.0, 5, 0.1);
    EXPECT_DOUBLE_EQ(axis.From, -1.0);
    EXPECT_DOUBLE_EQ(axis.To, 11.0);
}

TEST(Axis, Small_and_large_numbers_share_a_power_of_ten) {
    const Axis small = MakeAxis(-4e-6, 0.0, 4, 0.0);
    EXPECT_EQ(small.Factor, "10⁻⁶");
    EXPECT_EQ(labels(small), (Texts{"-4", "-3", "-2", "-1", "0"}));
    const Axis large = MakeAxis(0.0, 2e5, 4, 0.0);
    EXPECT_EQ(large.Factor, "10³");
    EXPECT_EQ(labels(large), (Texts{"0", "50", "100", "150", "200"}));
    EXPECT_EQ(MakeAxis(0.0, 99999.0, 4, 0.0).Factor, "");
    EXPECT_EQ(MakeAxis(0.0, 0.001, 4, 0.0).Factor, "");
    EXPECT_EQ(MakeAxis(0.0, 0.00099, 4, 0.0).Factor, "10⁻⁶");
}

TEST(Axis, Range_without_width_is_widened_around_its_value) {
    const Axis around = MakeAxis(5.0, 5.0, 5, 0.05);
    EXPECT_DOUBLE_EQ(around.From, 4.5);
    EXPECT_DOUBLE_EQ(around.To, 5.5);
    const Axis zero = MakeAxis(0.0, 0.0, 5, 0.05);
    EXPECT_EQ(zero.From, -1.0);
    EXPECT_EQ(zero.To, 1.0);
}

TEST(Axis, Extreme_ranges_have_finite_ends_and_few_ticks) {
    const double huge = std::numeric_limits<double>::max();
    const double tiny = std::numeric_limits<double>::denorm_min();
    for (const auto& [low, high] : {std::pair{-huge, huge}, std::pair{0.0, tiny}, std::pair{-tiny, tiny},
                                    std::pair{1e9, 1e9 + 2.0}, std::pair{0.0, 1e-299}, std::pair{huge, huge}}) {
        const Axis axis = MakeAxis(low, high, 6, 0.05);
        EXPECT_TRUE(std::isfinite(axis.To - axis.From)) << low;
        EXPECT_GT(axis.To, axis.From) << low;
        EXPECT_LE(axis.Ticks.size(), 9U) << low;
        EXPECT_GE(axis.Ticks.size(), 1U) << low;
    }
}

TEST(ShortNumber, Has_no_more_digits_than_asked_for) {
    EXPECT_EQ(ShortNumber(14.438277784466, 5), "14.438");
    EXPECT_EQ(ShortNumber(0.862687, 3), "0.863");
    EXPECT_EQ(ShortNumber(2e-6, 5), "2E-06");
    EXPECT_EQ(ShortNumber(99999.96, 5), "100000");
    EXPECT_EQ(ShortNumber(0.0, 5), "0");
}

}  // namespace
}  // namespace wxl::pictures
