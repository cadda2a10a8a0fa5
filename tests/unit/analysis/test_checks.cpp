#include "analysis/checks.h"
#include "analysis/settings_text.h"

#include <gtest/gtest.h>

namespace wxl::analysis {
namespace {

Settings usable_settings() {
    Settings settings;
    settings.LayerName = "bears";
    settings.IdField = "ID";
    settings.OutputFolder = "/out";
    settings.Cells = cell_size_of("50");
    settings.ScalingFactor = typed_number("1000000");
    settings.Buffer = typed_number("2000");
    return settings;
}

TEST(Checks, Undefined_settings_are_found_in_their_order) {
    Settings settings;
    settings.Method = BandwidthMethod::kProportion;
    settings.Isopleths = true;
    EXPECT_EQ(undefined_setting(settings),
              "Error: the proportion(s) of reference bandwidth have not been defined on the Bandwidth tab.");
    settings.Method = BandwidthMethod::kManual;
    EXPECT_EQ(undefined_setting(settings),
              "Error: the user defined bandwidth has not been defined on the Bandwidth tab.");
    settings.Bandwidths = typed_numbers("150");
    EXPECT_EQ(undefined_setting(settings), "Error: the extent buffer has not been defined on the Output Options tab.");
    settings.Mode = ExtentMode::kReference;
    EXPECT_EQ(undefined_setting(settings),
              "Error: the extent reference layer has not been defined on the Output Options tab.");
    settings.Mode = ExtentMode::kMinimum;
    EXPECT_EQ(undefined_setting(settings),
              "Error: the isopleth percentages have not been defined on the Output Options tab.");
    settings.Percentages = typed_numbers("95");
    EXPECT_EQ(undefined_setting(settings), std::nullopt);
}

TEST(Checks, Unusable_settings_are_named_with_their_page) {
    EXPECT_EQ(unusable_setting(usable_settings()), std::nullopt);
    const auto refusal = [](auto&& spoil) {
        Settings settings = usable_settings();
        spoil(settings);
        return unusable_setting(settings).value_or("");
    };
    EXPECT_EQ(refusal([](Settings& i) { i.LayerName = ""; }),
              "Error: please choose a point layer on the Input Data tab.");
    EXPECT_EQ(refusal([](Settings& i) { i.IdField = ""; }),
              "Error: please choose the field that names the animals (unique animal ID) on the Input Data tab.");
    EXPECT_EQ(refusal([](Settings& i) { i.OutputFolder = ""; }),
              "Error: please choose an output folder on the Output Options tab.");
    const std::string cell =
        "Error: please enter the raster cell size on the Output Options tab. It must be a number above 0.5 and is used "
        "as a whole number of map units.";
    for (const char* text : {"", "fifty", "0", "-10", "0.5", "0.49"})
        EXPECT_EQ(refusal([&](Settings& i) { i.Cells = cell_size_of(text); }), cell) << text;
    EXPECT_EQ(refusal([](Settings& i) { i.Cells = cell_size_of("0.51"); }), "");
    EXPECT_EQ(refusal([](Settings& i) {
                  i.Cells = cell_size_of("");
                  i.Mode = ExtentMode::kReference;
              }),
              "");
    for (const char* text : {"", "1e6x", "0", "-1"})
        EXPECT_EQ(refusal([&](Settings& i) { i.ScalingFactor = typed_number(std::string(text)); }),
                  "Error: please enter the scaling factor on the Output Options tab. It must be a number above 0.");
    EXPECT_EQ(refusal([](Settings& i) { i.Buffer = typed_number(std::string("wide")); }),
              "Error: the extent buffer on the Output Options tab is not a number.");
}

TEST(Checks, A_list_with_a_piece_that_is_no_number_is_refused) {
    Settings settings = usable_settings();
    settings.Method = BandwidthMethod::kManual;
    settings.Bandwidths = typed_numbers("50;80");
    EXPECT_EQ(malformed_list(settings),
              "Error: the list of bandwidths on the Bandwidth tab holds \"50;80\", which is not a number. Please write "
              "numbers separated by commas.");
    settings.Method = BandwidthMethod::kProportion;
    settings.Proportions = typed_numbers("0.5,1,");
    EXPECT_EQ(malformed_list(settings),
              "Error: the list of proportions on the Bandwidth tab holds \"\", which is not a number. Please write "
              "numbers separated by commas.");
    settings.Method = BandwidthMethod::kLscv;
    EXPECT_EQ(malformed_list(settings), std::nullopt) << "lists of other methods are not looked at";
    settings.Isopleths = true;
    settings.Percentages = typed_numbers("95, x");
    EXPECT_EQ(malformed_list(settings),
              "Error: an invalid isopleth value was detected. Please check these values and run the tool again.");
}

TEST(Checks, The_first_refusal_is_told) {
    EXPECT_EQ(refusal_of(usable_settings()), std::nullopt);
    Settings settings = usable_settings();
    settings.LayerName.clear();
    settings.Isopleths = true;
    settings.Percentages = typed_numbers("");
    EXPECT_EQ(refusal_of(settings), "Error: the isopleth percentages have not been defined on the Output Options tab.");
    settings.Percentages = typed_numbers("x");
    EXPECT_EQ(refusal_of(settings),
              "Error: an invalid isopleth value was detected. Please check these values and run the tool again.");
    settings.Percentages = typed_numbers("95");
    EXPECT_EQ(refusal_of(settings), "Error: please choose a point layer on the Input Data tab.");
}

}  // namespace
}  // namespace wxl::analysis
