#include "adapters/tracking/number_text.h"

#include <gtest/gtest.h>

namespace wxl::tracking {
namespace {

TEST(NumberText, Points_and_commas) {
    EXPECT_EQ(number_from_text("46.69"), 46.69);
    EXPECT_EQ(number_from_text("46,69"), 46.69);
    EXPECT_EQ(number_from_text("-0,5"), -0.5);
    EXPECT_EQ(number_from_text("+1.5e3"), 1500.0);
    EXPECT_EQ(number_from_text(".5"), 0.5);
    EXPECT_EQ(number_from_text("\xE2\x88\x92"
                               "7"),
              -7.0);
}

TEST(NumberText, Groups_of_thousands) {
    EXPECT_EQ(number_from_text("4.472.345,6"), 4472345.6);
    EXPECT_EQ(number_from_text("4,472,345.6"), 4472345.6);
    EXPECT_EQ(number_from_text("4.472.345"), 4472345.0);
    EXPECT_EQ(number_from_text("4,472,345"), 4472345.0);
    EXPECT_EQ(number_from_text("4 472 345,6"), 4472345.6);
    EXPECT_EQ(number_from_text("4\xC2\xA0"
                               "472\xE2\x80\xAF"
                               "345"),
              4472345.0);
    EXPECT_EQ(number_from_text("-4'472'345.6"), -4472345.6);
    EXPECT_EQ(number_from_text("4\xA0"
                               "472"),
              4472.0);
}

TEST(NumberText, Anything_else_is_none) {
    for (const char* text : {"", "-", "+", "--1", "1-2", "1 2", "12 34", "1.2.3", "1,3,1", "4.472.34,5", "inf", "nan",
                             "1e999", "0x10", "5 m", "a1", " 1"})
        EXPECT_EQ(number_from_text(text), std::nullopt) << text;
}

}  // namespace
}  // namespace wxl::tracking
