#include "analysis/advice.h"

#include <cstddef>
#include <gtest/gtest.h>
#include <string>

namespace wxl::analysis {
namespace {

AdviceFacts independent(std::int32_t count) {
    return {.Count = count, .Schoener = 2.0, .SwihartSlade = 0.1};
}

/// 200 independent fixes on a map in metres, and a search that has found that bandwidth.
AdviceFacts searched(BandwidthMethod method, double mapUnits) {
    AdviceFacts facts = independent(200);
    facts.Given = GivenBandwidth{.Method = method, .Minimized = true, .MapUnits = mapUnits};
    facts.Href = 60.0;
    facts.MetresPerUnit = 1.0;
    return facts;
}

platform::SpatialReference on_map(double metresPerUnit, bool degrees) {
    platform::SpatialReference reference;
    reference.MetersPerUnit = metresPerUnit;
    reference.IsGeographic = degrees;
    return reference;
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
    const AdviceFacts facts = searched(BandwidthMethod::kLscv, 20.0);
    EXPECT_EQ(advised_method(facts), BandwidthMethod::kLscv);
    EXPECT_EQ(advice_text(facts),
              "advised: LSCV, as its search has a minimum (Seaman and Powell 1996); HREF is wider where there are "
              "several centres (Worton 1989)");
}

TEST(Advice, Another_search_tells_nothing_of_the_minimum_of_LSCV) {
    EXPECT_EQ(advice_text(searched(BandwidthMethod::kBcv, 20.0)),
              "advised: LSCV, if its search has a minimum (Seaman and Powell 1996); HREF suits one centre of activity "
              "(Worton 1989)");
}

TEST(Advice, A_search_without_one_or_below_a_cell_gives_way_to_the_ad_hoc_bandwidth) {
    AdviceFacts facts = searched(BandwidthMethod::kLscv, 60.0);
    facts.Given->Minimized = false;
    EXPECT_EQ(advised_method(facts), BandwidthMethod::kAdHoc);
    EXPECT_EQ(advice_text(facts),
              "advised: adhoc, as LSCV has no minimum inside its range: the smallest proportion of HREF that leaves "
              "the range whole (Kie 2013)");
    facts = searched(BandwidthMethod::kLscv, 9.0);
    facts.CellSize = 9.0;
    EXPECT_EQ(advised_method(facts), BandwidthMethod::kLscv);
    facts.CellSize = 10.0;
    EXPECT_EQ(advised_method(facts), BandwidthMethod::kAdHoc);
    EXPECT_EQ(advice_text(facts),
              "advised: adhoc, as the bandwidth of LSCV is smaller than a cell: the smallest proportion of HREF that "
              "leaves the range whole (Kie 2013)");
    facts.Given->Method = BandwidthMethod::kBcv;
    EXPECT_EQ(advice_text(facts),
              "advised: adhoc, as the bandwidth of BCV is smaller than a cell: the smallest proportion of HREF that "
              "leaves the range whole (Kie 2013)");
}

TEST(Advice, A_search_below_the_error_of_the_positions_gives_way_to_the_ad_hoc_bandwidth) {
    AdviceFacts facts = searched(BandwidthMethod::kLscv, 5.3);
    facts.Error = PositionError{.Metres = 5.3, .Field = "location-error-numerical"};
    EXPECT_EQ(advised_method(facts), BandwidthMethod::kLscv) << "as wide as the error";
    facts.Given->MapUnits = 3.1;
    EXPECT_EQ(advised_method(facts), BandwidthMethod::kAdHoc);
    EXPECT_EQ(advice_text(facts),
              "advised: adhoc, as the bandwidth of LSCV, 3.1 m, is smaller than the error of its positions (median 5.3 "
              "m, from location-error-numerical), and finer detail is error, not use of space (Moser and Garton 2007): "
              "the smallest proportion of HREF that leaves the range whole (Kie 2013), and not below that error");
    facts.MetresPerUnit = 0.3048;
    facts.Given->MapUnits = 10.0;
    EXPECT_TRUE(advice_text(facts).starts_with("advised: adhoc, as the bandwidth of LSCV, 3.048 m, is smaller"));
    facts.MetresPerUnit = 0.0;
    EXPECT_EQ(advised_method(facts), BandwidthMethod::kLscv) << "nothing to compare where units are unknown";
}

TEST(Advice, Positions_worse_than_the_reference_bandwidth_are_told) {
    AdviceFacts facts = searched(BandwidthMethod::kBcv, 70.0);
    facts.Error = PositionError{.Metres = 490.0, .Field = "lc", .OfArgosClasses = true};
    EXPECT_EQ(advised_method(facts), BandwidthMethod::kHref);
    EXPECT_EQ(advice_text(facts),
              "advised: HREF, as even that, 60 m, is smaller than the error of its positions (median 490 m, from the "
              "Argos classes of lc after Costa et al. 2010): the range tells of the error as much as of the animal "
              "(Moser and Garton 2007)");
}

TEST(Advice, A_range_of_a_search_in_five_parts_gives_way_to_the_ad_hoc_bandwidth) {
    AdviceFacts facts = searched(BandwidthMethod::kBcv, 20.0);
    facts.Given->Range = RangeInParts{95.0, 4};
    EXPECT_EQ(advised_method(facts), BandwidthMethod::kLscv);
    facts.Given->Range = RangeInParts{95.0, 5};
    EXPECT_EQ(advised_method(facts), BandwidthMethod::kAdHoc);
    EXPECT_EQ(advice_text(facts),
              "advised: adhoc, as with the bandwidth of BCV its 95 % range is in 5 parts, often a sign of too small a "
              "bandwidth (Hemson et al. 2005): the smallest proportion of HREF that leaves the range whole (Kie 2013)");
}

TEST(Advice, A_range_in_parts_with_the_reference_bandwidth_may_be_several) {
    AdviceFacts facts = independent(200);
    facts.Given = GivenBandwidth{.Method = BandwidthMethod::kHref, .MapUnits = 60.0, .Range = RangeInParts{90.0, 6}};
    EXPECT_EQ(advised_method(facts), BandwidthMethod::kHref);
    EXPECT_EQ(advice_text(facts),
              "advised: HREF, as with it its 90 % range is in 6 parts already, and a search would make more of them: "
              "look whether it is one range, or those of several seasons or places (Kie 2013)");
}

TEST(Advice, What_speaks_against_a_bandwidth_of_ones_own_is_added) {
    AdviceFacts facts = independent(200);
    facts.MetresPerUnit = 1.0;
    facts.Given = GivenBandwidth{.Method = BandwidthMethod::kManual, .MapUnits = 10.0, .Range = RangeInParts{95.0, 12}};
    const std::string base =
        "advised: LSCV, if its search has a minimum (Seaman and Powell 1996); HREF suits one centre of activity "
        "(Worton 1989)";
    EXPECT_EQ(advice_text(facts),
              base +
                  "; with the bandwidth of this run its 95 % range is in 12 parts, often a sign of too "
                  "small a bandwidth (Kie 2013)");
    facts.Error = PositionError{.Metres = 12.5, .Field = "hacc"};
    EXPECT_EQ(advice_text(facts),
              base +
                  "; the bandwidth of this run, 10 m, is smaller than the error of its positions (median 12.5 m, from "
                  "hacc), and finer detail is error, not use of space (Moser and Garton 2007)");
    facts.Given->Method = BandwidthMethod::kAdHoc;
    EXPECT_EQ(advice_text(facts), base);
}

TEST(Advice, The_range_is_that_of_95_percent_or_nearly_so) {
    const auto isopleth = [](double percent, std::int32_t parts) {
        return IsoplethRecord{.Percent = percent, .Parts = parts};
    };
    EXPECT_EQ(range_in_parts({}), std::nullopt);
    EXPECT_EQ(range_in_parts(std::vector{isopleth(50, 9), isopleth(100, 9), isopleth(95, 0)}), std::nullopt);
    EXPECT_EQ(range_in_parts(std::vector{isopleth(99, 9), isopleth(95, 2), isopleth(90, 3)}), (RangeInParts{95.0, 2}));
    EXPECT_EQ(range_in_parts(std::vector{isopleth(90, 3), isopleth(98, 8), isopleth(50, 1)}), (RangeInParts{98.0, 8}));
}

TEST(Advice, Takes_what_a_record_tells) {
    AnimalRecord record;
    record.SampleSize = 40;
    record.Method = BandwidthMethod::kLscv;
    record.Minimized = true;
    record.Bandwidth = 0.5;
    record.BandwidthMapUnits = 100.0;
    record.Href = 2.0;
    record.Grid.CellSize = 10.0;
    record.Isopleths = {{.Percent = 95.0, .Parts = 3}};
    record.Error = PositionError{.Metres = 7.0, .Field = "epe"};
    const AdviceFacts facts = advice_facts(record, on_map(1.0, false));
    EXPECT_EQ(facts.Count, 40);
    EXPECT_EQ(facts.Given->MapUnits, 100.0);
    EXPECT_TRUE(facts.Given->Minimized);
    EXPECT_EQ(facts.Given->Range, (RangeInParts{95.0, 3}));
    EXPECT_EQ(facts.Href, 400.0);
    EXPECT_EQ(facts.CellSize, 10.0);
    EXPECT_EQ(facts.Error, record.Error);
    EXPECT_EQ(facts.MetresPerUnit, 1.0);
    EXPECT_EQ(advice_facts(record, on_map(111000.0, true)).MetresPerUnit, 0.0);
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

std::string told_indices(double schoener, double swihartSlade) {
    AdviceFacts facts = independent(200);
    facts.Schoener = schoener;
    facts.SwihartSlade = swihartSlade;
    const std::string text = advice_text(facts);
    const std::size_t first = text.find('(') + 1;
    return text.substr(first, text.find(')') - first);
}

TEST(Advice, Indices_have_digits_enough_to_be_read_as_what_they_are) {
    EXPECT_EQ(told_indices(0.0005572, 1.98765), "Schoener 0.00056, Swihart and Slade 1.99");
    EXPECT_EQ(told_indices(0.0149, -0.004), "Schoener 0.015, Swihart and Slade -0.004");
    EXPECT_EQ(told_indices(0.0, 0.0), "Schoener 0, Swihart and Slade 0");
}

TEST(Advice, Rounding_takes_no_index_over_the_limit_that_it_is_judged_by) {
    EXPECT_EQ(told_indices(1.5983, 0.6004), "Schoener 1.598, Swihart and Slade 0.6004");
    EXPECT_EQ(told_indices(2.40001, 0.6), "Schoener 2.40001, Swihart and Slade 0.6");
    EXPECT_EQ(told_indices(1.99997, 0.60001), "Schoener 2, Swihart and Slade 0.60001");
}

}  // namespace
}  // namespace wxl::analysis
