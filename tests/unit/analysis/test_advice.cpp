#include "analysis/advice.h"

#include <gtest/gtest.h>

namespace wxl::analysis {
namespace {

AdviceFacts independent(std::int32_t count) {
    return {.Count = count, .Schoener = 2.0, .SwihartSlade = 0.1};
}

TEST(Advice, Few_fixes_are_for_the_reference_bandwidth) {
    EXPECT_EQ(advised_method(independent(29)), BandwidthMethod::kHref);
    EXPECT_EQ(advice_text(independent(29)),
              "advised: HREF, as 29 fixes are too few for a search (30 or more: Seaman et al. 1999); an area of so few "
              "is a first look");
    EXPECT_EQ(advised_method(independent(30)), BandwidthMethod::kLscv);
    EXPECT_EQ(advice_text(independent(1)), "");
}

TEST(Advice, A_search_with_a_minimum_is_taken) {
    AdviceFacts facts = independent(200);
    facts.LscvMinimized = true;
    EXPECT_EQ(advised_method(facts), BandwidthMethod::kLscv);
    EXPECT_EQ(advice_text(facts),
              "advised: LSCV, as its search has a minimum (Seaman and Powell 1996); HREF is wider where there are "
              "several centres (Worton 1989)");
}

TEST(Advice, A_search_without_one_or_below_a_cell_gives_way_to_the_ad_hoc_bandwidth) {
    AdviceFacts facts = independent(200);
    facts.LscvMinimized = false;
    EXPECT_EQ(advised_method(facts), BandwidthMethod::kAdHoc);
    facts.LscvMinimized = true;
    facts.LscvBandwidth = 9.0;
    facts.CellSize = 10.0;
    EXPECT_EQ(advised_method(facts), BandwidthMethod::kAdHoc);
    EXPECT_EQ(advice_text(facts),
              "advised: adhoc, as the bandwidth of LSCV is smaller than a cell: the smallest proportion of HREF that "
              "leaves the range whole (Kie 2013)");
}

TEST(Advice, Places_that_fixes_share_rule_out_a_search_from_one_percent_on) {
    AdviceFacts facts = independent(200);
    facts.Coincident = {.Fixes = 2, .Pairs = 1};
    EXPECT_EQ(advised_method(facts), BandwidthMethod::kHref);
    facts.Count = 201;
    EXPECT_EQ(advised_method(facts), BandwidthMethod::kLscv);
}

TEST(Advice, Fixes_that_depend_on_each_other_are_for_movement_models) {
    AdviceFacts facts = independent(200);
    EXPECT_FALSE(is_autocorrelated(facts));
    facts.SwihartSlade = 0.61;
    EXPECT_TRUE(is_autocorrelated(facts));
    facts = independent(200);
    facts.Schoener = 0.316;
    EXPECT_TRUE(is_autocorrelated(facts));
    EXPECT_TRUE(advice_text(facts).starts_with(
        "advised: wxl akde, as fixes depend on each other (Schoener 0.32, Swihart and Slade 0.1) and ranges of "
        "independent fixes come out too small then (Fleming et al. 2015); of the other methods LSCV, if "));
}

}  // namespace
}  // namespace wxl::analysis
