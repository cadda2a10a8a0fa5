#include "analysis/suggestions.h"

#include <gtest/gtest.h>

namespace wxl::analysis {
namespace {

TEST(RoundNumber, Is_the_nearest_of_1_2_and_5_times_a_power_of_ten) {
    EXPECT_EQ(round_number(1.0), 1.0);
    EXPECT_EQ(round_number(1.49), 1.0);
    EXPECT_EQ(round_number(1.5), 2.0);
    EXPECT_EQ(round_number(3.49), 2.0);
    EXPECT_EQ(round_number(3.5), 5.0);
    EXPECT_EQ(round_number(39.63), 50.0);
    EXPECT_EQ(round_number(74.9), 50.0);
    EXPECT_EQ(round_number(75.0), 100.0);
    EXPECT_EQ(round_number(100.0), 100.0);
    EXPECT_DOUBLE_EQ(round_number(0.034), 0.02);
}

class SuggestedCellSize : public testing::Test {
protected:
    /// Fixes at (0, 0) and (span, span), and this reference bandwidth.
    void Add(double href, double span) {
        AddFixes({{0.0, 0.0}, {span, span}});
        hrefs.back().Href = href;
    }

    void AddFixes(std::vector<platform::Point> fixes) {
        animals.emplace_back().Fixes = std::move(fixes);
        hrefs.emplace_back();
    }

    std::optional<double> Suggested() const { return suggested_cell_size(animals, hrefs); }

    std::vector<AnimalFixes> animals;
    std::vector<HrefRow> hrefs;
};

TEST_F(SuggestedCellSize, Is_a_tenth_of_the_smallest_bandwidth_as_a_round_number) {
    Add(900.0, 5000.0);
    Add(396.3, 2000.0);
    EXPECT_EQ(Suggested(), 50.0);
}

TEST_F(SuggestedCellSize, Is_a_whole_number_of_map_units) {
    Add(4.0, 20.0);
    EXPECT_EQ(Suggested(), 1.0);
}

TEST_F(SuggestedCellSize, Passes_over_animals_without_a_bandwidth) {
    Add(0.0, 0.0);
    AddFixes({{0.0, 0.0}});
    EXPECT_EQ(Suggested(), std::nullopt);
    Add(1000.0, 5000.0);
    EXPECT_EQ(Suggested(), 100.0);
}

// 100000 + 8 x 20 wide: with cells of 2 there are 50080 x 50080, with 5 there are 20032 x 20032, with 10 there are
// 10016 x 10016, and with 20 there are 5008 x 5008 = 25,080,064, the first below 50 million.
TEST_F(SuggestedCellSize, Grows_until_every_raster_is_small_enough) {
    Add(20.0, 100000.0);
    EXPECT_EQ(Suggested(), 20.0);
}

}  // namespace
}  // namespace wxl::analysis
