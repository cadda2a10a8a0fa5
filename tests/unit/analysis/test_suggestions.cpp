#include "analysis/suggestions.h"

#include <gtest/gtest.h>

namespace wxl::analysis {
namespace {

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

// 20000 + 8 x 100 wide: with cells of 10 there are 2080 x 2080, and the wide animal's 20000 + 8 x 4000 = 52000 are
// 5200 x 5200 = 27 million; with 20 there are 2600 x 2600 = 6.76 million, the first below 10 million.
TEST_F(SuggestedCellSize, Suits_the_widest_raster_too) {
    Add(100.0, 20000.0);
    EXPECT_EQ(Suggested(), 10.0);
    Add(4000.0, 20000.0);
    EXPECT_EQ(Suggested(), 20.0);
}

}  // namespace
}  // namespace wxl::analysis
