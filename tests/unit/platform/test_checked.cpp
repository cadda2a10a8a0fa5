#include "platform/checked.h"
#include "tests/contract/stage.h"

#include <cfenv>
#include <cmath>
#include <gtest/gtest.h>
#include <limits>
#include <random>

namespace wxl::platform {
namespace {

using tests::error_of;

constexpr std::int32_t kMax = std::numeric_limits<std::int32_t>::max();
constexpr std::int32_t kMin = std::numeric_limits<std::int32_t>::min();
constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
constexpr double kInfinity = std::numeric_limits<double>::infinity();

}  // namespace

TEST(Checked, Sums_differences_and_products_stop_at_32_bits) {
    EXPECT_EQ(sum_i32(kMax - 1, 1), kMax);
    EXPECT_EQ(error_of([] { sum_i32(kMax, 1); }), 6);
    EXPECT_EQ(error_of([] { sum_i32(kMin, -1); }), 6);
    EXPECT_EQ(difference_i32(kMin + 1, 1), kMin);
    EXPECT_EQ(error_of([] { difference_i32(kMin, 1); }), 6);
    EXPECT_EQ(error_of([] { difference_i32(0, kMin); }), 6);
    EXPECT_EQ(product_i32(21474, 100000), 2147400000);
    EXPECT_EQ(error_of([] { product_i32(21475, 100000); }), 6);
    EXPECT_EQ(error_of([] { product_i32(kMin, -1); }), 6);
    EXPECT_EQ(product_i32(-46340, 46340), -2147395600);
}

TEST(Checked, Halves_round_to_the_even_neighbour) {
    EXPECT_EQ(round_half_even_i32(0.5), 0);
    EXPECT_EQ(round_half_even_i32(1.5), 2);
    EXPECT_EQ(round_half_even_i32(2.5), 2);
    EXPECT_EQ(round_half_even_i32(3.5), 4);
    EXPECT_EQ(round_half_even_i32(39.5), 40);
    EXPECT_EQ(round_half_even_i32(-0.5), 0);
    EXPECT_EQ(round_half_even_i32(-1.5), -2);
    EXPECT_EQ(round_half_even_i32(-2.5), -2);
    EXPECT_EQ(round_half_even_i32(2.4999999999999996), 2);
    EXPECT_EQ(round_half_even_i32(2.5000000000000004), 3);
    EXPECT_EQ(round_half_even_i32(0.49999999999999994), 0) << "the number whose sum with a half rounds up";
}

TEST(Checked, Rounding_agrees_with_the_processor_on_random_numbers) {
    ASSERT_EQ(std::fegetround(), FE_TONEAREST);
    std::mt19937_64 random(3);
    std::uniform_real_distribution<double> any(-2e9, 2e9);
    for (int i = 0; i < 20000; ++i) {
        const double value = i % 2 == 0 ? any(random) : std::floor(any(random)) + 0.5;
        ASSERT_EQ(round_half_even_i32(value), static_cast<std::int32_t>(std::nearbyint(value))) << value;
    }
}

TEST(Checked, Rounding_overflows_where_the_rounded_number_does) {
    EXPECT_EQ(round_half_even_i32(2147483647.4), kMax);
    EXPECT_EQ(error_of([] { round_half_even_i32(2147483647.5); }), 6);
    EXPECT_EQ(round_half_even_i32(-2147483648.5), kMin);
    EXPECT_EQ(error_of([] { round_half_even_i32(-2147483648.6); }), 6);
    for (const double bad : {kNaN, kInfinity, -kInfinity, 1e300}) {
        EXPECT_EQ(error_of([&] { round_half_even_i32(bad); }), 6) << bad;
        EXPECT_EQ(error_of([&] { floor_i32(bad); }), 6) << bad;
    }
}

TEST(Checked, Floor_goes_down_on_both_sides_of_zero) {
    EXPECT_EQ(floor_i32(2.9), 2);
    EXPECT_EQ(floor_i32(-0.1), -1);
    EXPECT_EQ(floor_i32(-2.0), -2);
    EXPECT_EQ(floor_i32(2147483647.9), kMax);
    EXPECT_EQ(error_of([] { floor_i32(2147483648.0); }), 6);
    EXPECT_EQ(error_of([] { floor_i32(-2147483648.1); }), 6);
}

TEST(Checked, Whole_numbers_narrow_only_when_they_fit) {
    EXPECT_EQ(to_i16(32767), 32767);
    EXPECT_EQ(to_i16(-32768), -32768);
    EXPECT_EQ(error_of([] { to_i16(32768); }), 6);
    EXPECT_EQ(error_of([] { to_i16(-32769); }), 6);
    EXPECT_EQ(error_of([] { to_i16(std::numeric_limits<std::int64_t>::max()); }), 6);
}

TEST(Checked, Quotients_fault_on_a_zero_divisor) {
    EXPECT_EQ(quotient(1.0, 4.0), 0.25);
    EXPECT_EQ(quotient(0.0, -3.0), 0.0);
    EXPECT_EQ(error_of([] { quotient(1.0, 0.0); }), 11);
    EXPECT_EQ(error_of([] { quotient(-1.0, -0.0); }), 11);
    EXPECT_EQ(error_of([] { quotient(0.0, 0.0); }), 6);
    EXPECT_EQ(error_of([] { quotient(1e300, 1e-300); }), 6);
    EXPECT_EQ(quotient(1e-300, 1e300), 0.0);
}

TEST(Checked, Decimals_round_half_to_even) {
    EXPECT_EQ(round_half_even(0.03125, 4), 0.0312);
    EXPECT_EQ(round_half_even(0.09375, 4), 0.0938);
    EXPECT_EQ(round_half_even(2.5, 0), 2.0);
    EXPECT_EQ(round_half_even(3.5, 0), 4.0);
    EXPECT_EQ(round_half_even(-2.5, 0), -2.0);
    EXPECT_EQ(round_half_even(0.125, 2), 0.12);
    EXPECT_EQ(round_half_even(0.375, 2), 0.38);
    EXPECT_EQ(round_half_even(1234.56789, 2), 1234.57);
    EXPECT_EQ(round_half_even(-0.00001, 4), 0.0);
}

TEST(Checked, What_has_no_fraction_left_stays_as_it_is) {
    for (const double value : {1e16, -1e300, 4503599627370497.0, kInfinity})
        EXPECT_EQ(round_half_even(value, 4), value);
    EXPECT_TRUE(std::isnan(round_half_even(kNaN, 2)));
    EXPECT_EQ(round_half_even(1e300, 15), 1e300) << "the product would be infinite";
}

TEST(Checked, Only_0_to_15_decimals_can_be_asked_for) {
    EXPECT_EQ(error_of([] { round_half_even(1.0, -1); }), 5);
    EXPECT_EQ(error_of([] { round_half_even(1.0, 16); }), 5);
    EXPECT_EQ(round_half_even(0.1, 15), 0.1);
}

}  // namespace wxl::platform
