#include "analysis/settings_text.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace wxl::analysis {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

TEST(SettingsText, Lists_are_split_at_commas_and_keep_their_order_and_text) {
    const TypedNumbers list = typed_numbers("50, 80,33.3");
    EXPECT_EQ(list.Text, "50, 80,33.3");
    EXPECT_THAT(list.Values, ElementsAre(50.0, 80.0, 33.3));
    EXPECT_EQ(list.NoNumber, std::nullopt);
}

TEST(SettingsText, A_list_with_a_piece_that_is_no_number_names_it_and_has_no_values) {
    for (const auto& [text, piece] :
         {std::pair("50, x", " x"), {"50,", ""}, {"fifty,y", "fifty"}, {"50;80", "50;80"}}) {
        EXPECT_EQ(typed_numbers(text).NoNumber, piece) << text;
        EXPECT_THAT(typed_numbers(text).Values, IsEmpty()) << text;
        EXPECT_EQ(typed_numbers(text).Text, text);
    }
}

TEST(SettingsText, Values_are_those_of_the_method) {
    Settings settings;
    settings.Bandwidths = typed_numbers("50,80");
    settings.Proportions = typed_numbers("0.5");
    settings.Method = BandwidthMethod::kManual;
    EXPECT_THAT(values_of(settings), ElementsAre(50.0, 80.0));
    settings.Method = BandwidthMethod::kProportion;
    EXPECT_THAT(values_of(settings), ElementsAre(0.5));
    settings.Method = BandwidthMethod::kLscv;
    EXPECT_THAT(values_of(settings), ElementsAre(0.0));
    EXPECT_EQ(list_of(settings), TypedNumbers());
}

TEST(SettingsText, Cell_sizes_are_whole_rounded_half_to_even) {
    for (const auto& [text, side] : {std::pair("2.5", 2.0), {"3.5", 4.0}, {"0.6", 1.0}, {"0.5", 0.0}, {"-3", -3.0}})
        EXPECT_EQ(cell_size_of(text).Side, side) << text;
    EXPECT_EQ(cell_size_of("2.5").Typed, 2.5);
    EXPECT_EQ(cell_size_of("2.5").Text, "2.5");
    EXPECT_EQ(cell_size_of("fifty"), (CellSize{"fifty", 0.0, 0.0}));
}

TEST(SettingsText, Reach_is_nothing_whole_or_a_number_above_zero) {
    EXPECT_EQ(reach_of(""), Reach());
    EXPECT_EQ(reach_of("whole")->How, Reach::Kind::kWhole);
    EXPECT_EQ(reach_of("7.5"), (Reach{Reach::Kind::kBandwidths, "7.5", 7.5}));
    for (const char* text : {"0", "-1", "wide", "4 x"}) EXPECT_EQ(reach_of(text), std::nullopt) << text;
}

TEST(SettingsText, Bandwidth_words_go_both_ways) {
    for (const char* word : {"href", "lscv", "bcv", "adhoc", "adhoc:3", "prop:0.5,1", "150", "100,150"}) {
        const BandwidthChoice choice = bandwidth_of(word);
        Settings settings;
        settings.Method = choice.Method;
        settings.Bandwidths = settings.Proportions = choice.Values;
        settings.AdHocParts = choice.Parts.value_or(1);
        EXPECT_EQ(bandwidth_text(settings), word);
    }
    EXPECT_EQ(bandwidth_of("prop:0.5").Method, BandwidthMethod::kProportion);
    EXPECT_THAT(bandwidth_of("prop:0.5,1").Values.Values, ElementsAre(0.5, 1.0));
    for (const char* word : {"adhoc:", "adhoc:0", "adhoc:1.5", "adhoc:1001", "adhoc:x"})
        EXPECT_EQ(bandwidth_of(word).Parts, std::nullopt) << word;
    EXPECT_EQ(bandwidth_of("LSCV").Values.NoNumber, "LSCV");
}

TEST(SettingsText, Extent_words_go_both_ways) {
    for (const char* word : {"min", "ref:dem", "full:400"}) {
        const auto choice = extent_of(word);
        ASSERT_TRUE(choice) << word;
        Settings settings;
        settings.Mode = choice->Mode;
        settings.Buffer = choice->Buffer.value_or(TypedNumber());
        settings.ReferenceName = choice->ReferenceName;
        EXPECT_EQ(extent_text(settings), word);
    }
    EXPECT_EQ(extent_of("full")->Buffer, std::nullopt);
    EXPECT_EQ(extent_of("full:wide")->Buffer, (TypedNumber{"wide", std::nullopt}));
    for (const char* word : {"", "ref:", "FULL", "4"}) EXPECT_FALSE(extent_of(word)) << word;
}

TEST(SettingsText, Blanks_of_a_list_do_not_stand_in_a_word) {
    Settings settings;
    settings.Method = BandwidthMethod::kProportion;
    settings.Proportions = typed_numbers("0.2, 0.4");
    EXPECT_EQ(bandwidth_text(settings), "prop:0.2,0.4");
}

TEST(SettingsText, Numbers_of_a_list_that_cannot_be_are_found) {
    EXPECT_EQ(not_positive(typed_numbers("1,0.5")), std::nullopt);
    EXPECT_EQ(not_positive(typed_numbers("1,0,-1")), "0");
    EXPECT_EQ(not_positive(typed_numbers("1,x")), "x");
    EXPECT_EQ(above_hundred(typed_numbers("95,100")), std::nullopt);
    EXPECT_EQ(above_hundred(typed_numbers("95,100.5,101")), 100.5);
    EXPECT_TRUE(is_positive_number("1e-9"));
    EXPECT_FALSE(is_positive_number("0"));
    EXPECT_FALSE(is_positive_number("x"));
}

TEST(SettingsText, Cells_of_the_bandwidths_have_a_word_in_any_case) {
    EXPECT_TRUE(cell_size_of("auto").OfBandwidths);
    EXPECT_TRUE(cell_size_of("AUTO").OfBandwidths);
    EXPECT_EQ(cell_size_of("AUTO").Side, 0.0);
    EXPECT_FALSE(cell_size_of("20").OfBandwidths);
    EXPECT_FALSE(cell_size_of("automatic").OfBandwidths);
}

}  // namespace
}  // namespace wxl::analysis
