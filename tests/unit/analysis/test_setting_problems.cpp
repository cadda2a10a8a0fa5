#include "analysis/setting_problems.h"
#include "analysis/settings_text.h"

#include <gtest/gtest.h>

namespace wxl::analysis {
namespace {

TEST(SettingProblems, Percentages_lie_above_0_and_up_to_100) {
    Settings settings;
    const auto problem = [&](const char* text) {
        settings.Percentages = typed_numbers(text);
        return percentages_problem(settings);
    };
    EXPECT_EQ(problem("150"), "") << "isopleths are off";
    settings.Isopleths = settings.Polygons = true;
    EXPECT_EQ(problem("95, 50"), "");
    EXPECT_EQ(problem("100"), "");
    EXPECT_EQ(problem("95, 150"), "\"150\" is not a number above 0 and up to 100.");
    EXPECT_EQ(problem("0"), "\"0\" is not a number above 0 and up to 100.");
    EXPECT_EQ(problem("95, x"), "\"x\" is not a number above 0 and up to 100.");
    EXPECT_EQ(problem("95,"), "\"\" is not a number above 0 and up to 100.");
    EXPECT_EQ(problem(""), "") << "an empty field is told when OK is pressed";
    settings.Polygons = false;
    EXPECT_EQ(problem("95"), "Tick lines, polygons or donut polygons.");
}

TEST(SettingProblems, Cells_are_no_larger_than_the_smallest_bandwidth) {
    Settings settings;
    const auto problem = [&](const char* text, const KnownFixes& fixes = {false, 132.104}) {
        settings.Cells = cell_size_of(text);
        return cell_problem(settings, fixes);
    };
    EXPECT_EQ(problem(""), "");
    EXPECT_EQ(problem("132"), "");
    EXPECT_EQ(problem("auto"), "");
    EXPECT_EQ(problem("133"), "Cells must not be larger than the bandwidth, and the smallest is 132.1.");
    EXPECT_EQ(problem("133", {}), "") << "bandwidths are not known yet";
    EXPECT_EQ(problem("0.5"), "\"0.5\" is not a number above 0.5.");
    EXPECT_EQ(problem("0,6"), "\"0,6\" is not a number above 0.5.");
    settings.Method = BandwidthMethod::kProportion;
    settings.Proportions = typed_numbers("0.5, 1");
    EXPECT_EQ(problem("100"), "Cells must not be larger than the bandwidth, and the smallest is 66.05.");
    settings.Method = BandwidthMethod::kManual;
    settings.Bandwidths = typed_numbers("80, 50");
    EXPECT_EQ(problem("51"), "Cells must not be larger than the bandwidth, and the smallest is 50.");
    EXPECT_EQ(problem("50"), "");
    settings.Bandwidths = typed_numbers("x");
    EXPECT_EQ(problem("51"), "");
    settings.Method = BandwidthMethod::kLscv;
    EXPECT_EQ(problem("500"), "") << "a search has its bandwidth yet to find";
    settings.Mode = ExtentMode::kReference;
    EXPECT_EQ(problem("x"), "") << "the raster's cells are taken";
}

TEST(SettingProblems, Lists_hold_numbers_above_0) {
    Settings settings;
    settings.Bandwidths = typed_numbers("50;80");
    EXPECT_EQ(list_problem(settings), "") << "another method";
    settings.Method = BandwidthMethod::kManual;
    EXPECT_EQ(list_problem(settings), "\"50;80\" is not a number above 0. Write numbers separated by commas.");
    settings.Bandwidths = typed_numbers("50, -1");
    EXPECT_EQ(list_problem(settings), "\"-1\" is not a number above 0. Write numbers separated by commas.");
    settings.Bandwidths = typed_numbers("");
    EXPECT_EQ(list_problem(settings), "");
    settings.Method = BandwidthMethod::kProportion;
    settings.Proportions = typed_numbers("0.5, 1");
    EXPECT_EQ(list_problem(settings), "");
}

TEST(SettingProblems, Other_fields) {
    Settings settings;
    EXPECT_EQ(layer_problem({}), "");
    EXPECT_EQ(layer_problem({.InDegrees = true}),
              "Distances cannot be measured in degrees. Choose a layer in metres, or reproject this one.");
    settings.Prefix = "ELK_1";
    EXPECT_EQ(prefix_problem(settings), "");
    settings.Prefix = "a/b";
    EXPECT_EQ(prefix_problem(settings), "No file can have such a name. Use letters, digits and underscores.");
    settings.ScalingFactor = typed_number("-2");
    EXPECT_EQ(scaling_problem(settings), "\"-2\" is not a number above 0.");
    settings.ScalingFactor = typed_number("1000000");
    EXPECT_EQ(scaling_problem(settings), "");
    settings.Buffer = typed_number("2 km");
    EXPECT_EQ(buffer_problem(settings), "\"2 km\" is not a number.");
    settings.Mode = ExtentMode::kMinimum;
    EXPECT_EQ(buffer_problem(settings), "");
}

}  // namespace
}  // namespace wxl::analysis
