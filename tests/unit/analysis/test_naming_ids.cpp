#include "analysis/naming_ids.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace wxl::analysis {
namespace {

using platform::FieldValue;
using testing::ElementsAre;

TEST(NamingIds, Text_ids_are_named_by_their_place_and_numbers_by_themselves) {
    const std::vector<FieldValue> texts = {std::string("Ada"), std::string("Bo")};
    EXPECT_THAT(naming_ids(texts, true), ElementsAre("1", "2"));
    const std::vector<FieldValue> numbers = {std::int64_t{-3}, std::int64_t{12}, 3.5, 1e20};
    EXPECT_THAT(naming_ids(numbers, false), ElementsAre("-3", "12", "3.5", "1E+20"));
}

// 0.1 + 0.2 differs from 0.3 in the 17th digit only.
TEST(NamingIds, Numbers_that_agree_in_15_digits_get_names_of_their_own) {
    const std::vector<FieldValue> numbers = {0.3, 0.1 + 0.2, 2.0};
    EXPECT_THAT(naming_ids(numbers, false), ElementsAre("0.29999999999999999", "0.30000000000000004", "2"));
}

}  // namespace
}  // namespace wxl::analysis
