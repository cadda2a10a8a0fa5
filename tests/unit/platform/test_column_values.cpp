#include "platform/runtime_error.h"
#include "platform/values.h"

#include <gtest/gtest.h>
#include <limits>

namespace wxl::platform {
namespace {

std::int32_t error_of(const FieldValue& value, FieldType type) {
    try {
        ValueForColumn(value, type);
    } catch (const RuntimeError& error) {
        return error.Number;
    }
    return 0;
}

TEST(ColumnValues, A_number_in_a_whole_number_column_is_rounded_half_to_even) {
    EXPECT_EQ(ValueForColumn(2.5, FieldType::kInteger), FieldValue(std::int64_t{2}));
    EXPECT_EQ(ValueForColumn(3.5, FieldType::kInteger), FieldValue(std::int64_t{4}));
    EXPECT_EQ(ValueForColumn(std::string("-7"), FieldType::kInteger), FieldValue(std::int64_t{-7}));
    EXPECT_EQ(error_of(1e19, FieldType::kInteger), 6);
}

TEST(ColumnValues, A_whole_number_keeps_all_its_digits) {
    constexpr std::int64_t kLarge = 9007199254740993;  // 2^53 + 1: no double
    EXPECT_EQ(ValueForColumn(kLarge, FieldType::kInteger), FieldValue(kLarge));
    EXPECT_EQ(ValueForColumn(std::int64_t{7}, FieldType::kDouble), FieldValue(7.0));
}

TEST(ColumnValues, A_number_becomes_text_in_a_text_column) {
    EXPECT_EQ(ValueForColumn(0.5, FieldType::kText), FieldValue("0.5"));
    EXPECT_EQ(ValueForColumn(std::int64_t{-3}, FieldType::kText), FieldValue("-3"));
}

TEST(ColumnValues, Texts_that_are_no_numbers_and_values_that_are_not_finite_are_refused) {
    EXPECT_EQ(error_of(std::string("wolf"), FieldType::kDouble), 13);
    EXPECT_EQ(error_of(std::numeric_limits<double>::quiet_NaN(), FieldType::kDouble), 6);
    EXPECT_EQ(error_of(std::numeric_limits<double>::infinity(), FieldType::kInteger), 6);
}

TEST(ColumnValues, A_missing_value_stays_missing_in_any_column) {
    for (const FieldType type : {FieldType::kInteger, FieldType::kDouble, FieldType::kText, FieldType::kDate})
        EXPECT_TRUE(IsMissing(ValueForColumn(FieldValue(), type)));
}

TEST(ColumnValues, Cells_equal_numbers_by_size_and_texts_by_bytes) {
    EXPECT_TRUE(ValueEquals(std::int64_t{3}, 3.0));
    EXPECT_TRUE(ValueEquals(3.0, std::string("3")));
    EXPECT_TRUE(ValueEquals(std::string("3.0"), std::int64_t{3}));
    EXPECT_FALSE(ValueEquals(std::string("3.0"), std::string("3")));
    EXPECT_FALSE(ValueEquals(std::string("Wolf"), std::string("wolf")));
    EXPECT_FALSE(ValueEquals(std::string("wolf"), 3.0));
    EXPECT_FALSE(ValueEquals(std::int64_t{9007199254740993}, std::int64_t{9007199254740992}));
    EXPECT_TRUE(ValueEquals(FieldValue(), FieldValue()));
    EXPECT_FALSE(ValueEquals(FieldValue(), std::int64_t{0}));
    EXPECT_FALSE(ValueEquals(std::string(), FieldValue()));
}

}  // namespace
}  // namespace wxl::platform
