#include "analysis/subfolders.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace wxl::analysis {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

TEST(Subfolders, Are_named_by_the_places_of_their_animals) {
    std::vector<AnimalFixes> animals(12);
    spread_over_subfolders(animals, 5);
    EXPECT_EQ(animals[0].Subfolder, "animals_01-05");
    EXPECT_EQ(animals[4].Subfolder, "animals_01-05");
    EXPECT_EQ(animals[5].Subfolder, "animals_06-10");
    EXPECT_EQ(animals[11].Subfolder, "animals_11-12");
    EXPECT_THAT(subfolders_of(animals), ElementsAre("animals_01-05", "animals_06-10", "animals_11-12"));
}

TEST(Subfolders, There_are_none_without_a_number_and_one_for_a_number_beyond_the_animals) {
    std::vector<AnimalFixes> animals(3);
    spread_over_subfolders(animals, 0);
    EXPECT_THAT(subfolders_of(animals), IsEmpty());
    spread_over_subfolders(animals, static_cast<std::size_t>(-1));
    EXPECT_THAT(subfolders_of(animals), ElementsAre("animals_1-3"));
}

}  // namespace
}  // namespace wxl::analysis
