#include "analysis/statistics.h"

#include <gtest/gtest.h>

namespace wxl::analysis {
namespace {

AnimalFixes animal(platform::FieldValue id, std::string namingId, std::vector<platform::Point> fixes) {
    return {.Id = std::move(id), .NamingId = std::move(namingId), .Fixes = std::move(fixes)};
}

/// A line along x (y does not vary), a square, a diagonal, a single fix, three fixes at one place, none at all.
std::vector<AnimalFixes> animals() {
    return {animal(std::int64_t{1}, "1", {{0, 0}, {1, 0}, {2, 0}, {3, 0}}),
            animal(std::int64_t{2}, "2", {{0, 0}, {2, 0}, {2, 2}, {0, 2}}),
            animal(std::int64_t{3}, "3", {{0, 0}, {1, 1}, {2, 2}, {3, 3}}),
            animal(std::int64_t{4}, "4", {{5, 5}}),
            animal(std::int64_t{5}, "5", {{0.1, 0.1}, {0.1, 0.1}, {0.1, 0.1}}),
            animal(std::int64_t{6}, "6", {})};
}

TEST(FittedNumberText, Drops_digits_and_never_cuts) {
    EXPECT_EQ(fitted_number_text(2.0 / 3.0, 10), "0.66666667");
    EXPECT_EQ(fitted_number_text(2.0 / 3.0, 17), "0.666666666666667");
    EXPECT_EQ(fitted_number_text(1.23456789e-7, 10), "1.2346E-07");
    EXPECT_EQ(fitted_number_text(0.0000123456789, 10), "1.2346E-05");
    EXPECT_EQ(fitted_number_text(1.99999999999, 10), "2");
    EXPECT_EQ(fitted_number_text(-0.123456789, 11), "-0.12345679");
    EXPECT_EQ(fitted_number_text(0.0, 10), "0");
    EXPECT_EQ(fitted_number_text(0.6, 10), "0.6");
}

TEST(FittedNumberText, A_number_that_fits_in_no_way_comes_whole) {
    EXPECT_EQ(fitted_number_text(123456.0, 4), "123456");
}

// x 0 2, y 0 0.5: deviations sqrt(2) and sqrt(1/8), ratio 4.
TEST(Statistics, The_ratio_is_x_over_y) {
    const std::vector<AnimalFixes> wide = {animal(std::int64_t{1}, "1", {{0, 0}, {2, 0.5}})};
    EXPECT_DOUBLE_EQ(variance_rows(wide)[0].Ratio.value(), 4.0);
}

TEST(Statistics, A_coordinate_that_does_not_vary_has_deviation_zero_at_any_distance_from_the_origin) {
    std::vector<platform::Point> fixes;
    for (int i = 0; i < 7; ++i) fixes.push_back({482311.1 + i, 5891243.7});
    const std::vector<AnimalFixes> line = {animal(std::int64_t{1}, "1", fixes)};
    EXPECT_EQ(variance_rows(line)[0].SdY, 0.0);
    EXPECT_EQ(variance_rows(line)[0].Ratio, std::nullopt);
    EXPECT_EQ(href_rows(line)[0].HrefScaled, std::nullopt);
}

TEST(Statistics, The_largest_value_is_that_of_the_raw_coordinates) {
    EXPECT_NEAR(largest_href(href_rows(animals())), 1.02466297300416, 1e-14);
    EXPECT_EQ(largest_href({}), 0.0);
    const std::vector<AnimalFixes> single = {animal(std::int64_t{4}, "4", {{5, 5}})};
    EXPECT_EQ(largest_href(href_rows(single)), 0.0);
}

TEST(Statistics, Coordinates_beyond_the_range_of_numbers_are_not_applicable) {
    const std::vector<AnimalFixes> far = {
        animal(std::int64_t{1}, "1", {{-1e308, 0}, {1e308, 1e308}, {1e308, -1e308}, {0, 1}})};
    EXPECT_EQ(variance_rows(far)[0].SdX, std::nullopt);
    EXPECT_EQ(href_rows(far)[0].Href, std::nullopt);
    EXPECT_EQ(href_rows(far)[0].HrefScaled, std::nullopt);
}

}  // namespace
}  // namespace wxl::analysis
