#include "comparison/quantile.h"

#include <gtest/gtest.h>
#include <vector>

namespace wxl::comparison {
namespace {

TEST(Quantile, Lies_between_the_order_statistics) {
    const std::vector<double> values = {1.0, 2.0, 4.0, 8.0};
    EXPECT_EQ(quantile(values, 0.0), 1.0);
    EXPECT_EQ(quantile(values, 25.0), 1.75);
    EXPECT_EQ(quantile(values, 50.0), 3.0);
    EXPECT_DOUBLE_EQ(quantile(values, 90.0), 6.8);
    EXPECT_EQ(quantile(values, 100.0), 8.0);
}

TEST(Quantile, Of_one_value_and_of_equal_values_is_that_value) {
    EXPECT_EQ(quantile(std::vector<double>{0.1}, 97.5), 0.1);
    EXPECT_EQ(quantile(std::vector<double>(7, 0.1), 33.3), 0.1);
}

}  // namespace
}  // namespace wxl::comparison
