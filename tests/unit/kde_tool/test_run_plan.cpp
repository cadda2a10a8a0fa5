#include "kde_tool/run_plan.h"
#include "platform/runtime_error.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <limits>

namespace wxl::kde_tool {
namespace {

using testing::ElementsAre;

RunInputs usable_inputs() {
    RunInputs inputs;
    inputs.LayerName = "bears";
    inputs.IdField = "ID";
    inputs.OutputFolder = "/out";
    inputs.CellSizeText = "50";
    inputs.ScalingText = "1000000";
    inputs.BufferText = "2000";
    return inputs;
}

TEST(RunPlan, Undefined_settings_are_found_in_their_order) {
    RunInputs inputs;
    inputs.Method = BandwidthMethod::kProportion;
    inputs.Isopleths = true;
    EXPECT_EQ(undefined_setting(inputs),
              "Error: the proportion(s) of reference bandwidth have not been defined on the Bandwidth tab.");
    inputs.Method = BandwidthMethod::kManual;
    EXPECT_EQ(undefined_setting(inputs),
              "Error: the user defined bandwidth has not been defined on the Bandwidth tab.");
    inputs.BandwidthText = "150";
    EXPECT_EQ(undefined_setting(inputs), "Error: the extent buffer has not been defined on the Output Options tab.");
    inputs.Mode = ExtentMode::kReference;
    EXPECT_EQ(undefined_setting(inputs),
              "Error: the extent reference layer has not been defined on the Output Options tab.");
    inputs.Mode = ExtentMode::kMinimum;
    EXPECT_EQ(undefined_setting(inputs),
              "Error: the isopleth percentages have not been defined on the Output Options tab.");
    inputs.IsoplethText = "95";
    EXPECT_EQ(undefined_setting(inputs), std::nullopt);
}

TEST(RunPlan, Unusable_settings_are_named_with_their_page) {
    EXPECT_EQ(unusable_setting(usable_inputs()), std::nullopt);
    const auto refusal = [](auto&& spoil) {
        RunInputs inputs = usable_inputs();
        spoil(inputs);
        return unusable_setting(inputs).value_or("");
    };
    EXPECT_EQ(refusal([](RunInputs& i) { i.LayerName = ""; }),
              "Error: please choose a point layer on the Input Data tab.");
    EXPECT_EQ(refusal([](RunInputs& i) { i.IdField = ""; }),
              "Error: please choose the field that names the animals (unique animal ID) on the Input Data tab.");
    EXPECT_EQ(refusal([](RunInputs& i) { i.OutputFolder = ""; }),
              "Error: please choose an output folder on the Output Options tab.");
    const std::string cell =
        "Error: please enter the raster cell size on the Output Options tab. It must be a number above 0.5 and is used "
        "as a whole number of map units.";
    for (const char* text : {"", "fifty", "0", "-10", "0.5", "0.49"})
        EXPECT_EQ(refusal([&](RunInputs& i) { i.CellSizeText = text; }), cell) << text;
    EXPECT_EQ(refusal([](RunInputs& i) { i.CellSizeText = "0.51"; }), "");
    EXPECT_EQ(refusal([](RunInputs& i) {
                  i.CellSizeText = "";
                  i.Mode = ExtentMode::kReference;
              }),
              "");
    for (const char* text : {"", "1e6x", "0", "-1"})
        EXPECT_EQ(refusal([&](RunInputs& i) { i.ScalingText = text; }),
                  "Error: please enter the scaling factor on the Output Options tab. It must be a number above 0.");
    EXPECT_EQ(refusal([](RunInputs& i) { i.BufferText = "wide"; }),
              "Error: the extent buffer on the Output Options tab is not a number.");
}

TEST(RunPlan, Bandwidth_lists_are_split_at_commas) {
    RunInputs inputs;
    inputs.Method = BandwidthMethod::kManual;
    inputs.BandwidthText = "50, 80,33.3";
    EXPECT_THAT(bandwidth_values(inputs), ElementsAre(50.0, 80.0, 33.3));
    EXPECT_EQ(largest_value(inputs, bandwidth_values(inputs)), 80.0);
    inputs.Method = BandwidthMethod::kProportion;
    inputs.ProportionText = "0.2, 1.0, 0.4";
    EXPECT_THAT(bandwidth_values(inputs), ElementsAre(0.2, 1.0, 0.4));
    EXPECT_EQ(largest_value(inputs, bandwidth_values(inputs)), 1.0);
    inputs.Method = BandwidthMethod::kLscv;
    EXPECT_THAT(bandwidth_values(inputs), ElementsAre(0.0));
    EXPECT_EQ(largest_value(inputs, bandwidth_values(inputs)), 0.0);
}

TEST(RunPlan, Bandwidth_that_is_no_number_is_a_type_mismatch) {
    for (const char* text : {"50, x", "50,", "fifty"}) {
        RunInputs inputs;
        inputs.Method = BandwidthMethod::kManual;
        inputs.BandwidthText = text;
        try {
            bandwidth_values(inputs);
            FAIL() << text;
        } catch (const platform::RuntimeError& error) {
            EXPECT_EQ(error.Number, 13);
        }
    }
}

TEST(RunPlan, Isopleth_percentages_keep_their_order_and_refuse_what_is_no_number) {
    EXPECT_THAT(*isopleth_percentages("95, 90,50"), ElementsAre(95.0, 90.0, 50.0));
    EXPECT_EQ(isopleth_percentages("95, x, 50"), std::nullopt);
    EXPECT_EQ(isopleth_percentages("95,"), std::nullopt);
}

TEST(RunPlan, Rasters_are_numbered_for_proportions_and_for_lists_of_bandwidths) {
    RunInputs inputs;
    inputs.Prefix = "K";
    EXPECT_EQ(raster_name(inputs, "3", 1, 1), "K3");
    inputs.Method = BandwidthMethod::kProportion;
    EXPECT_EQ(raster_name(inputs, "3", 1, 1), "K3_b1");
    EXPECT_EQ(raster_name(inputs, "7", 2, 2), "K7_b2");
    inputs.Method = BandwidthMethod::kManual;
    EXPECT_EQ(raster_name(inputs, "3", 1, 1), "K3");
    EXPECT_EQ(raster_name(inputs, "3", 2, 2), "K3_b2");
    EXPECT_EQ(isopleth_name("ELK12_b2"), "ELK12_b2_iso");
}

TEST(RunPlan, Datasets_of_one_value_are_the_raster_and_the_shapefiles_asked_for) {
    RunInputs inputs;
    inputs.Polygons = true;
    EXPECT_THAT(dataset_names(inputs, "K3"), ElementsAre("K3"));
    inputs.Isopleths = true;
    EXPECT_THAT(dataset_names(inputs, "K3"), ElementsAre("K3", "K3_iso_poly"));
    inputs.Lines = inputs.Donuts = true;
    EXPECT_THAT(dataset_names(inputs, "K3"), ElementsAre("K3", "K3_iso_line", "K3_iso_poly", "K3_iso_donut"));
}

TEST(RunPlan, Recommended_buffer_is_whole_and_the_accepted_one_is_not) {
    const auto advice = [](BandwidthMethod method, double largest, double href) {
        const BufferAdvice a = recommended_buffer(method, largest, href);
        return std::pair(a.Shown, a.Accepted);
    };
    EXPECT_EQ(advice(BandwidthMethod::kHref, 0.0, 120.0), std::pair(420.0, 420.0));
    EXPECT_EQ(advice(BandwidthMethod::kManual, 80.0, 999.0), std::pair(280.0, 280.0));
    EXPECT_EQ(advice(BandwidthMethod::kManual, 33.3, 0.0).first, 117.0);
    EXPECT_DOUBLE_EQ(advice(BandwidthMethod::kManual, 33.3, 0.0).second, 116.55);
    // 0.8 x 101 x 3.5 = 282.8 and 101.9 x 3.5 = 356.65: both cut off, never rounded up.
    EXPECT_EQ(advice(BandwidthMethod::kProportion, 0.8, 101.0).first, 282.0);
    EXPECT_EQ(advice(BandwidthMethod::kLscv, 0.0, 101.9).first, 356.0);
    EXPECT_EQ(advice(BandwidthMethod::kBcv, 0.0, 0.0), std::pair(0.0, 0.0));
}

TEST(RunPlan, Buffer_question_names_the_whole_number) {
    EXPECT_EQ(
        buffer_question({117.0, 116.55}),
        "Warning: the extent buffer distance you have provided may not be large enough to capture the full extent "
        "of the utilization distribution. This data truncation can profoundly distort the isopleths. It is "
        "recommended you use a buffer distance of at least 117 for this dataset. Do you wish to use this "
        "recommended value?");
}

TEST(RunPlan, Grids_count_whole_cells_only) {
    const platform::Extent extent{1000.0, 500.0, 1900.0, 800.0};
    EXPECT_EQ(enlarged_grid(extent, 400.0, 50.0), (platform::RasterGeometry{600.0, 100.0, 50.0, 34, 22}));
    EXPECT_EQ(enlarged_grid(extent, 0.0, 70.0), (platform::RasterGeometry{1000.0, 500.0, 70.0, 12, 4}));
    EXPECT_EQ(enlarged_grid({5.0, 5.0, 5.0, 5.0}, 0.0, 10.0), (platform::RasterGeometry{5.0, 5.0, 10.0, 0, 0}));
}

TEST(RunPlan, Grids_beyond_any_raster_are_counted_as_far_as_32_bits_go) {
    const platform::RasterGeometry grid = enlarged_grid({0.0, 0.0, 1e300, 100.0}, -20.0, 10.0);
    EXPECT_EQ(grid.Columns, 2147483647);
    EXPECT_EQ(grid.Rows, 6);
    EXPECT_EQ(enlarged_grid({1000.0, 500.0, 1900.0, 800.0}, 1e8, 1.0).Columns, 200000900);
    EXPECT_EQ(enlarged_grid({}, 0.0, 10.0).Columns, 0);
    EXPECT_EQ(enlarged_grid({0.0, 0.0, std::numeric_limits<double>::quiet_NaN(), 1.0}, 0.0, 1.0).Columns, 0);
}

TEST(RunPlan, Edge_thresholds_follow_the_method) {
    EXPECT_DOUBLE_EQ(edge_threshold(BandwidthMethod::kLscv, 1e6), 0.01);
    EXPECT_DOUBLE_EQ(edge_threshold(BandwidthMethod::kBcv, 1e6), 0.01);
    EXPECT_DOUBLE_EQ(edge_threshold(BandwidthMethod::kHref, 1e6), 0.01);
    EXPECT_DOUBLE_EQ(edge_threshold(BandwidthMethod::kProportion, 1e6), 0.0005);
    EXPECT_DOUBLE_EQ(edge_threshold(BandwidthMethod::kManual, 1e6), 0.0005);
}

TEST(RunPlan, Overlap_needs_both_coordinates_equal) {
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

TEST(RunPlan, Overlap_question_joins_ids_with_two_blanks) {
    EXPECT_EQ(overlap_question(std::vector<std::string>{"3", "7"}),
              "Warning: overlapping points were detected for the following animals:\r\n3  7\r\nThis may prevent "
              "reasonable estimation of the bandwidth. Would you like to continue anyway?");
}

}  // namespace
}  // namespace wxl::kde_tool
