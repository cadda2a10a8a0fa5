#include "analysis/questions.h"
#include "analysis/settings_text.h"

#include <gtest/gtest.h>
#include <utility>
#include <vector>

namespace wxl::analysis {
namespace {

Settings with_list(BandwidthMethod method, const std::string& list) {
    Settings settings;
    settings.Method = method;
    settings.Bandwidths = settings.Proportions = typed_numbers(list);
    return settings;
}

TEST(Questions, Recommended_buffer_is_whole_and_the_accepted_one_is_not) {
    const auto advice = [](BandwidthMethod method, const std::string& list, double href) {
        const BufferAdvice a = recommended_buffer(with_list(method, list), href);
        return std::pair(a.Shown, a.Accepted);
    };
    EXPECT_EQ(advice(BandwidthMethod::kHref, "", 120.0), std::pair(420.0, 420.0));
    EXPECT_EQ(advice(BandwidthMethod::kManual, "50, 80", 999.0), std::pair(280.0, 280.0));
    EXPECT_EQ(advice(BandwidthMethod::kManual, "33.3", 0.0).first, 117.0);
    EXPECT_DOUBLE_EQ(advice(BandwidthMethod::kManual, "33.3", 0.0).second, 116.55);
    // 0.8 x 101 x 3.5 = 282.8 and 101.9 x 3.5 = 356.65: both cut off, never rounded up.
    EXPECT_EQ(advice(BandwidthMethod::kProportion, "0.8, 0.2", 101.0).first, 282.0);
    EXPECT_EQ(advice(BandwidthMethod::kLscv, "9", 101.9).first, 356.0);
    EXPECT_EQ(advice(BandwidthMethod::kBcv, "", 0.0), std::pair(0.0, 0.0));
}

TEST(Questions, Buffer_question_names_the_whole_number) {
    EXPECT_EQ(
        buffer_question({117.0, 116.55}),
        "Warning: the extent buffer distance you have provided may not be large enough to capture the full extent "
        "of the utilization distribution. This data truncation can profoundly distort the isopleths. It is "
        "recommended you use a buffer distance of at least 117 for this dataset. Do you wish to use this "
        "recommended value?");
}

TEST(Questions, The_forms_suggestion_is_rounded) {
    EXPECT_EQ(suggested_buffer(33.3), 117.0);  // 116.55
    EXPECT_EQ(suggested_buffer(0.1), 0.0);     // 0.35
    EXPECT_EQ(suggested_buffer(1.0), 4.0);     // 3.5
}

TEST(Questions, Overlap_needs_both_coordinates_equal) {
    EXPECT_FALSE(has_overlap(std::vector<platform::Point>{{1, 2}, {1, 3}, {2, 2}, {2, 3}}));
    EXPECT_TRUE(has_overlap(std::vector<platform::Point>{{1, 2}, {5, 3}, {0, 9}, {1, 2}}));
    EXPECT_TRUE(has_overlap(std::vector<platform::Point>{{0.0, 1}, {-0.0, 1}}));
    EXPECT_FALSE(has_overlap({}));
    std::vector<platform::Point> many;
    for (int i = 0; i < 1000; ++i) many.push_back({0.25 * (i % 40), 0.25 * (i / 40)});
    EXPECT_FALSE(has_overlap(many));
    many.push_back(many[500]);
    EXPECT_TRUE(has_overlap(many));
}

TEST(Questions, Overlap_question_joins_ids_with_two_blanks) {
    EXPECT_EQ(overlap_question(std::vector<std::string>{"3", "7"}),
              "Warning: overlapping points were detected for the following animals:\r\n3  7\r\nThis may prevent "
              "reasonable estimation of the bandwidth. Would you like to continue anyway?");
}

TEST(Questions, A_search_is_hardly_touched_where_under_one_percent_share_a_place) {
    const std::vector<SharedPlaces> few = {{"a", 2, 201}, {"b\nc", 2, 10000}};
    EXPECT_TRUE(is_harmless(few));
    EXPECT_EQ(
        search_overlap_question(few),
        "Warning: LSCV and BCV take fixes at one place for a sign of a very small bandwidth, and these animals "
        "have such fixes: a (2 of 201 fixes, 1 %), b c (2 of 10000 fixes, under 0.1 %). They are under 1 %, which "
        "hardly changes the search. Would you like to continue anyway?");
    EXPECT_FALSE(is_harmless(std::vector<SharedPlaces>{{"a", 2, 201}, {"b", 2, 200}}));
}

}  // namespace
}  // namespace wxl::analysis
