#include "analysis/independence.h"

#include <cmath>
#include <gtest/gtest.h>
#include <random>
#include <vector>

namespace wxl::analysis {
namespace {

using platform::Point;
using Fixes = std::vector<Point>;

// r2 = (1.5^2 + 0.5^2 + 0.5^2 + 1.5^2) / 3 = 5/3 and t2 = 3 x 1 / 3 = 1.
TEST(Schoener, Four_fixes_on_a_straight_line_at_equal_spacing) {
    EXPECT_DOUBLE_EQ(Schoener(Fixes{{0, 0}, {1, 0}, {2, 0}, {3, 0}}).value(), 0.6);
}

// Each fix lies sqrt(2) from the centre: r2 = 8/3; three steps of length 2: t2 = 4.
TEST(Schoener, A_walk_around_a_square) {
    EXPECT_DOUBLE_EQ(Schoener(Fixes{{0, 0}, {2, 0}, {2, 2}, {0, 2}}).value(), 1.5);
}

// r2 = (1 + 1) / 1 = 2 and t2 = 4.
TEST(Schoener, Two_fixes) {
    EXPECT_DOUBLE_EQ(Schoener(Fixes{{10, 5}, {12, 5}}).value(), 2.0);
}

TEST(Schoener, Is_not_defined_for_fewer_than_two_fixes) {
    EXPECT_EQ(Schoener(Fixes{}), std::nullopt);
    EXPECT_EQ(Schoener(Fixes{{4, 4}}), std::nullopt);
}

// The mean of these equal numbers is not exactly the number: their deviations must count as 0 all the same.
TEST(Schoener, Is_not_defined_when_all_fixes_share_one_location) {
    EXPECT_EQ(Schoener(Fixes{{0.1, 500000.3}, {0.1, 500000.3}, {0.1, 500000.3}}), std::nullopt);
}

TEST(Schoener, Is_not_defined_beyond_the_range_of_numbers) {
    EXPECT_EQ(Schoener(Fixes{{-1e308, 0}, {1e308, 0}, {-1e308, 1e308}}), std::nullopt);
}

// Leading x 0 1 2 and trailing x 1 2 3 are fully correlated, and so are y and both cross pairs.
TEST(SwihartSlade, A_straight_diagonal_has_four_full_correlations) {
    EXPECT_DOUBLE_EQ(SwihartSlade(Fixes{{0, 0}, {1, 1}, {2, 2}, {3, 3}}).value(), 4.0);
}

// The cross correlations are -1 each and added as absolute values.
TEST(SwihartSlade, A_falling_diagonal_has_four_full_correlations_too) {
    EXPECT_DOUBLE_EQ(SwihartSlade(Fixes{{0, 0}, {1, -1}, {2, -2}, {3, -3}}).value(), 4.0);
}

// x alternates (correlation -1); y 0 0 1 1 0 has lag-one correlation 0, and so have both cross pairs.
TEST(SwihartSlade, Can_be_negative) {
    EXPECT_DOUBLE_EQ(SwihartSlade(Fixes{{0, 0}, {1, 0}, {0, 1}, {1, 1}, {0, 0}}).value(), -1.0);
}

// x: leading 0 2 0, mean 2/3, squares 8/3; trailing 2 0 1, mean 1, squares 2; products -8/3 + 0 + ... worked out:
// (-2/3)(1) + (4/3)(-1) + (-2/3)(0) = -2.            xx = -2 / sqrt(16/3)
// y: leading 0 1 3, mean 4/3, squares 14/3; trailing 1 3 1, mean 5/3, squares 8/3;
// (-4/3)(-2/3) + (-1/3)(4/3) + (5/3)(-2/3) = -2/3.   yy = (-2/3) / sqrt(112/9)
// x with next y: (-2/3)(-2/3) + (4/3)(4/3) + (-2/3)(-2/3) = 8/3.   xy = (8/3) / sqrt(64/9) = 1
// y with next x: (-4/3)(1) + (-1/3)(-1) + (5/3)(0) = -1.           yx = 1 / sqrt(28/3)
TEST(SwihartSlade, Four_fixes_worked_by_hand) {
    const double expected =
        -2.0 / std::sqrt(16.0 / 3.0) - (2.0 / 3.0) / std::sqrt(112.0 / 9.0) + 1.0 + 1.0 / std::sqrt(28.0 / 3.0);
    EXPECT_NEAR(SwihartSlade(Fixes{{0, 0}, {2, 1}, {0, 3}, {1, 1}}).value(), expected, 1e-15);
}

TEST(SwihartSlade, Is_not_defined_where_a_coordinate_does_not_vary) {
    EXPECT_EQ(SwihartSlade(Fixes{{0, 0.1}, {1, 0.1}, {2, 0.1}, {3, 0.1}}), std::nullopt);
    EXPECT_EQ(SwihartSlade(Fixes{{500000.3, 1}, {500000.3, 2}, {500000.3, 5}}), std::nullopt);
    EXPECT_EQ(SwihartSlade(Fixes{{7, 7}, {7, 7}, {7, 7}}), std::nullopt);
}

TEST(SwihartSlade, Is_not_defined_where_only_the_first_or_the_last_fix_differs) {
    EXPECT_EQ(SwihartSlade(Fixes{{9, 0}, {0.1, 1}, {0.1, 3}, {0.1, 2}}), std::nullopt);
    EXPECT_EQ(SwihartSlade(Fixes{{0.1, 0}, {0.1, 1}, {0.1, 3}, {9, 2}}), std::nullopt);
}

TEST(SwihartSlade, Is_not_defined_for_fewer_than_three_fixes) {
    EXPECT_EQ(SwihartSlade(Fixes{}), std::nullopt);
    EXPECT_EQ(SwihartSlade(Fixes{{1, 2}}), std::nullopt);
    EXPECT_EQ(SwihartSlade(Fixes{{1, 2}, {3, 5}}), std::nullopt);
}

TEST(SwihartSlade, Is_not_defined_where_its_squares_leave_the_range_of_numbers) {
    EXPECT_EQ(SwihartSlade(Fixes{{0, 0}, {1e-200, 1e-200}, {3e-200, 2e-200}, {0, 1e-200}}), std::nullopt);
    EXPECT_EQ(SwihartSlade(Fixes{{0, 0}, {1e200, 1e200}, {3e200, 2e200}, {0, 1e200}}), std::nullopt);
}

// --- Against the textbook formulas in extended precision ---

using Real = long double;

Real plain_schoener(const Fixes& fixes) {
    const auto n = static_cast<Real>(fixes.size());
    Real x = 0, y = 0, r2 = 0, t2 = 0;
    for (const Point& p : fixes) x += static_cast<Real>(p.X) / n, y += static_cast<Real>(p.Y) / n;
    for (const Point& p : fixes) r2 += (p.X - x) * (p.X - x) + (p.Y - y) * (p.Y - y);
    for (std::size_t i = 1; i < fixes.size(); ++i)
        t2 += std::pow(static_cast<Real>(fixes[i].X) - fixes[i - 1].X, 2.0L) +
              std::pow(static_cast<Real>(fixes[i].Y) - fixes[i - 1].Y, 2.0L);
    return t2 / r2;
}

Real plain_correlation(const Fixes& fixes, double Point::*leading, double Point::*trailing) {
    const std::size_t pairs = fixes.size() - 1;
    Real a = 0, b = 0, ab = 0, aa = 0, bb = 0;
    for (std::size_t i = 0; i < pairs; ++i) a += fixes[i].*leading, b += fixes[i + 1].*trailing;
    a /= static_cast<Real>(pairs);
    b /= static_cast<Real>(pairs);
    for (std::size_t i = 0; i < pairs; ++i) {
        const Real u = fixes[i].*leading - a, v = fixes[i + 1].*trailing - b;
        ab += u * v, aa += u * u, bb += v * v;
    }
    return ab / std::sqrt(aa * bb);
}

Real plain_swihart_slade(const Fixes& fixes) {
    return plain_correlation(fixes, &Point::X, &Point::X) + plain_correlation(fixes, &Point::Y, &Point::Y) +
           std::fabs(plain_correlation(fixes, &Point::X, &Point::Y)) +
           std::fabs(plain_correlation(fixes, &Point::Y, &Point::X));
}

// Map coordinates of a UTM zone, where sums of squares would lose six digits.
TEST(Independence, Both_indices_agree_with_the_plain_formulas_on_random_walks) {
    std::mt19937 random(20261120);
    std::normal_distribution<double> step(0.0, 40.0);
    for (const std::size_t n : {3U, 4U, 10U, 500U, 5000U}) {
        for (const double memory : {0.0, 0.5, 1.0}) {
            Fixes fixes;
            Point at;
            for (std::size_t i = 0; i < n; ++i) {
                at = {memory * at.X + step(random), memory * at.Y + step(random)};
                fixes.push_back({482311.5 + at.X, 5891243.25 + at.Y});
            }
            EXPECT_NEAR(Schoener(fixes).value(), static_cast<double>(plain_schoener(fixes)), 1e-10) << n;
            EXPECT_NEAR(SwihartSlade(fixes).value(), static_cast<double>(plain_swihart_slade(fixes)), 1e-10) << n;
        }
    }
}

}  // namespace
}  // namespace wxl::analysis
