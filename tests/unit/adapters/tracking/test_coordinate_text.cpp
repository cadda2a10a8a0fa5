#include "adapters/tracking/coordinate_text.h"

#include <gtest/gtest.h>

namespace wxl::tracking {
namespace {

double degrees(std::string_view text) {
    return coordinate_from_text(text).value_or(CoordinateText{-1000.0, '\0'}).Value;
}

TEST(CoordinateText, Hemispheres_before_and_behind) {
    EXPECT_EQ(degrees("12.5W"), -12.5);
    EXPECT_EQ(degrees("12,5 e"), 12.5);
    EXPECT_EQ(degrees("S 33.25"), -33.25);
    EXPECT_EQ(degrees("n33.25"), 33.25);
    EXPECT_TRUE(coordinate_from_text("S 33.25")->IsLatitude());
    EXPECT_TRUE(coordinate_from_text("12.5W")->IsLongitude());
    EXPECT_EQ(coordinate_from_text("12.5")->Hemisphere, '\0');
}

// 33 degrees 24 minutes 36 seconds = 33 + 24/60 + 36/3600 = 33.41
TEST(CoordinateText, Degrees_minutes_and_seconds) {
    for (const char* text : {"33\xC2\xB0 24' 36.0\" S",
                             "33\xB0"
                             "24'36\"S",
                             "S33 24 36", "33d24m36s S", "33:24:36S", "33\xC2\xB0 24\xE2\x80\xB2 36\xE2\x80\xB3 S",
                             "33\xC2\xBA"
                             "24.6' S",
                             "33 24,6 S"})
        EXPECT_NEAR(degrees(text), -33.41, 1e-12) << text;
    EXPECT_NEAR(degrees("-33:24:36"), -33.41, 1e-12);
    EXPECT_NEAR(degrees("33d24m36s"), 33.41, 1e-12);
    EXPECT_EQ(degrees("0\xC2\xB0 30' 0\" W"), -0.5);
}

TEST(CoordinateText, Anything_else_is_none) {
    for (const char* text :
         {"", "N", "33 60 0 S", "33 24 61 S", "33.5 24 36 S", "-33 S", "2 m", "33 24 36 10", "w", "5 X"})
        EXPECT_FALSE(coordinate_from_text(text)) << text;
}

}  // namespace
}  // namespace wxl::tracking
