#include "adapters/tracking/position_text.h"

#include <gtest/gtest.h>

namespace wxl::tracking {
namespace {

TEST(PositionText, Notations_that_tell_their_order) {
    for (const char* text : {"POINT (5.1 52.2)", "POINT(5.1 52.2)", "point z (5.1 52.2 7)", "SRID=4326;POINT(5.1 52.2)",
                             "c(5.1, 52.2)", "[5.1, 52.2]", "[5.1,52.2,7.0]", "{'latitude': 52.2, 'longitude': 5.1}",
                             "{\"type\":\"Point\",\"coordinates\":[5.1,52.2]}", "5.1E, 52.2N", "5.1 E 52.2 N"}) {
        const auto position = position_from_text(text);
        ASSERT_TRUE(position) << text;
        EXPECT_EQ(position->First, 5.1) << text;
        EXPECT_EQ(position->Second, 52.2) << text;
        EXPECT_EQ(position->Order, PairOrder::kLongitudeFirst) << text;
    }
    for (const char* text : {"52 12 N, 5 6 W", "52\xC2\xB0 12' N 5\xC2\xB0 6' W", "N52 12 W5 6", "52.2N 5.1W",
                             "52 deg 12' 0.00\" N, 5 deg 6' 0.00\" W"}) {
        const auto position = position_from_text(text);
        ASSERT_TRUE(position) << text;
        EXPECT_NEAR(position->First, 52.2, 1e-12) << text;
        EXPECT_NEAR(position->Second, -5.1, 1e-12) << text;
        EXPECT_EQ(position->Order, PairOrder::kLatitudeFirst) << text;
    }
}

TEST(PositionText, Two_numbers_tell_no_order) {
    for (const char* text :
         {"52.2, 5.1", "52.2,5.1", "52.2 5.1", "52,2; 5,1", "52,2 5,1", "52,2, 5,1", "(52.2, 5.1)"}) {
        const auto position = position_from_text(text);
        ASSERT_TRUE(position) << text;
        EXPECT_EQ(position->First, 52.2) << text;
        EXPECT_EQ(position->Second, 5.1) << text;
        EXPECT_FALSE(position->Order) << text;
    }
}

TEST(PositionText, Anything_else_is_none) {
    for (const char* text : {"", "52.2", "52,5", "POINT EMPTY", "LINESTRING (5.1 52.2, 5.2 52.3)",
                             "POLYGON ((5 52, 6 52, 6 53, 5 52))", "POINT (5.1)", "c(5.1)", "[]", "{}", "SRID=4326",
                             "52.2N, 5.1N", "north field", "1, 2, 3", "2018-05-09 14:59"})
        EXPECT_FALSE(position_from_text(text)) << text;
}

TEST(PositionText, Empty_positions) {
    EXPECT_TRUE(is_empty_position("POINT EMPTY"));
    EXPECT_TRUE(is_empty_position("c(NA, NA)"));
    EXPECT_FALSE(is_empty_position("POINT (5.1 52.2)"));
    EXPECT_FALSE(is_empty_position("c(5.1, 52.2)"));
}

// 5212.5 is 52 degrees and 12.5 minutes: 52 + 12.5 / 60 = 52.208333...
TEST(PositionText, Degrees_and_minutes_in_one_number) {
    EXPECT_NEAR(degrees_of_receiver(5212.5).value_or(0.0), 52.0 + 12.5 / 60.0, 1e-12);
    EXPECT_EQ(degrees_of_receiver(-530.0), -5.5);
    EXPECT_FALSE(degrees_of_receiver(5260.0));
}

}  // namespace
}  // namespace wxl::tracking
