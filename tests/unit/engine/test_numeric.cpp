#include "engine/numeric.h"
#include "engine/point_sample.h"
#include "platform/runtime_error.h"

#include <cmath>
#include <gtest/gtest.h>
#include <limits>

namespace wxl::engine {
namespace {

const PointSample kSquare = {{0.0, 0.0}, {2.0, 0.0}, {0.0, 4.0}, {2.0, 4.0}};

std::int32_t error_of(const PointSample& sample) {
    try {
        Variance(sample, 0);
    } catch (const platform::RuntimeError& error) {
        return error.Number;
    }
    return 0;
}

// Deviations of 1 (2) from the mean, four times, over 3.
TEST(Numeric, Variance_has_the_divisor_n_minus_1) {
    EXPECT_DOUBLE_EQ(Variance(kSquare, 0), 4.0 / 3.0);
    EXPECT_DOUBLE_EQ(Variance(kSquare, 1), 16.0 / 3.0);
}

TEST(Numeric, Variance_of_any_other_column_is_0) {
    EXPECT_EQ(Variance(kSquare, 2), 0.0);
    EXPECT_EQ(Variance(kSquare, -1), 0.0);
    EXPECT_EQ(Variance({}, 7), 0.0);
}

TEST(Numeric, Variance_without_two_points_faults) {
    EXPECT_NE(error_of({}), 0);
    EXPECT_NE(error_of({{1.0, 2.0}}), 0);
}

TEST(Numeric, Variance_that_is_no_number_faults) {
    const double nan = std::numeric_limits<double>::quiet_NaN();
    const double infinity = std::numeric_limits<double>::infinity();
    EXPECT_EQ(error_of({{nan, 0.0}, {1.0, 0.0}}), platform::error_number::kOverflow);
    EXPECT_EQ(error_of({{infinity, 0.0}, {1.0, 0.0}}), platform::error_number::kOverflow);
    EXPECT_EQ(error_of({{1e200, 0.0}, {-1e200, 0.0}}), platform::error_number::kOverflow);
}

TEST(Numeric, Variance_keeps_its_digits_far_from_the_origin) {
    EXPECT_DOUBLE_EQ(Variance(PointSample{{5.8e6, 0.0}, {5.8e6 + 2.0, 0.0}}, 0), 2.0);
}

// The sum of fifty times 500000.1 is not fifty times it: the mean is off by a rounding, the variance is not.
TEST(Numeric, Variance_of_equal_coordinates_is_exactly_0) {
    PointSample column;
    for (int i = 0; i < 50; ++i) column.push_back({500000.1, 6000000.3 + i});
    EXPECT_EQ(Variance(column, 0), 0.0);
    EXPECT_NEAR(Variance(column, 1), 212.5, 1e-6);
    EXPECT_NE(error_of({{500000.1, 0.0}}), 0);
}

// ln 10 = 2.302585092994046; the divisor ln 2.718281828 is 1 - 1.7E-10.
TEST(Numeric, NaturalLog_divides_by_the_logarithm_of_a_rounded_e) {
    EXPECT_DOUBLE_EQ(NaturalLog(10.0), 2.3025850933828913);
    EXPECT_NE(NaturalLog(10.0), std::log(10.0));
}

TEST(Numeric, PointDistance_is_euclidean) {
    EXPECT_EQ(PointDistance(1.0, 2.0, 4.0, 6.0), 5.0);
}

TEST(Numeric, Kernels_at_0_and_1) {
    EXPECT_DOUBLE_EQ(GaussianKernel(0.0), 0.15915494309189551);
    EXPECT_DOUBLE_EQ(GaussianKernel(1.0), 0.09653235263005401);
    EXPECT_DOUBLE_EQ(GaussianKernel2(0.0), 0.15915494309189551 / 2.0);
    EXPECT_DOUBLE_EQ(GaussianKernel2(1.0), 0.061974997154826544);
    EXPECT_EQ(GaussianKernel(1e200), 0.0);
}

TEST(Numeric, SafeExp_is_0_below_minus_1000) {
    EXPECT_EQ(SafeExp(0.0), 1.0);
    EXPECT_EQ(SafeExp(-1000.0), std::exp(-1000.0));
    EXPECT_EQ(SafeExp(-1000.5), 0.0);
    EXPECT_DOUBLE_EQ(SafeExp(2.0), 7.38905609893065);
}

TEST(Numeric, SafeLog_of_nothing_is_a_tiny_negative_number) {
    EXPECT_EQ(SafeLog(0.0), -3.4E-300);
    EXPECT_EQ(SafeLog(-5.0), -3.4E-300);
    EXPECT_DOUBLE_EQ(SafeLog(10.0), 2.3025850933828913);
}

}  // namespace
}  // namespace wxl::engine
