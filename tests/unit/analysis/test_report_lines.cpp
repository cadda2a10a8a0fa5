#include "analysis/report_lines.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace wxl::analysis {
namespace {

using testing::ElementsAre;

RunHeader two_text_animals() {
    RunHeader header;
    header.Start = {2026, 11, 20, 15, 4, 5};
    header.InputName = "bears";
    header.IdField = "NAME";
    header.TextIds = true;
    header.Ids = {"Ada", "Bo"};
    header.NamingIds = {"1", "2"};
    header.Variances = {{"Ada", "4", "1.5", "3", "0.5"}, {"Bo", "1", "N/A", "N/A", "N/A"}};
    return header;
}

AnimalRecord record_of_bo() {
    AnimalRecord record;
    record.Id = "Bo";
    record.NamingId = "2";
    record.SampleSize = 30;
    record.Bandwidth = 120.25;
    record.Href = 130.5;
    record.Grid = {600.5, -100.0, 50.0, 34, 22};
    record.RasterName = "K2";
    record.Volume = 999876.5;
    return record;
}

const Settings kQuiet{.ScalingFactor = {.Text = "1000000"}};

TEST(ReportLines, Separator_is_a_rule_of_60_equals_signs_between_three_blank_lines) {
    EXPECT_THAT(separator_lines(),
                ElementsAre("", "", "", "============================================================", "", "", ""));
}

TEST(ReportLines, Header_of_text_ids_lists_the_renaming) {
    EXPECT_THAT(header_lines(two_text_animals()),
                ElementsAre("WXL KERNEL DENSITY ANALYSIS", "", "Start time: 11/20/2026 3:04:05 PM", "Input data: bears",
                            "Unique ID field: NAME",
                            "(Text based unique ID field detected - unique numerical ID's generated automatically)", "",
                            "Unique ID name remapping (unique ID, naming ID):", "     Ada, 1", "     Bo, 2", "",
                            "Variances of x and y coordinates: ", "NAME, Count, StdDev_X, StdDev_Y, Ratio(x:y)",
                            "Ada, 4, 1.5, 3, 0.5", "Bo, 1, N/A, N/A, N/A"));
}

TEST(ReportLines, Header_of_numeric_ids_has_no_renaming_and_shows_the_independence_table_when_calculated) {
    RunHeader header = two_text_animals();
    header.TextIds = false;
    header.SelectedOnly = true;
    header.IndependenceField = "NAME";
    header.Independence = {{"Ada", "4", "1.96", "0.31"}};
    header.Variances.clear();
    EXPECT_THAT(header_lines(header),
                ElementsAre("WXL KERNEL DENSITY ANALYSIS", "", "Start time: 11/20/2026 3:04:05 PM", "Input data: bears",
                            "Unique ID field: NAME", "(Using selected features only)", "", "",
                            "Independence of observation indices:", "NAME, Count, Schoener, Swihart_Slade",
                            "Ada, 4, 1.96, 0.31",
                            "Variances of x and y coordinates: ", "NAME, Count, StdDev_X, StdDev_Y, Ratio(x:y)"));
}

TEST(ReportLines, Kernel_settings_show_the_texts_as_typed) {
    const Settings settings{.FixedKernel = false,
                            .Method = BandwidthMethod::kManual,
                            .Bandwidths = {.Text = "50, 80"},
                            .Proportions = {.Text = "0.5"},
                            .OutputFolder = "/data/out",
                            .Prefix = "ELK",
                            .Cells = {.Text = "39.5"},
                            .ScalingFactor = {.Text = "1E6"}};
    EXPECT_THAT(kernel_settings_lines(settings),
                ElementsAre("", "KERNEL SETTINGS", "Kernel type: adaptive", "Bandwidth estimtor: manual (50, 80)",
                            "Output folder: /data/out", "Raster prefix name: ELK", "Raster cell size: 39.5",
                            "Scaling factor: 1E6"));
}

TEST(ReportLines, Estimator_line_of_each_method) {
    const auto line = [](BandwidthMethod method) {
        return kernel_settings_lines(
            {.Method = method, .Bandwidths = {.Text = "150"}, .Proportions = {.Text = "0.2, 0.4"}})[3];
    };
    EXPECT_EQ(line(BandwidthMethod::kLscv), "Bandwidth estimtor: LSCV");
    EXPECT_EQ(line(BandwidthMethod::kBcv), "Bandwidth estimtor: BCV");
    EXPECT_EQ(line(BandwidthMethod::kHref), "Bandwidth estimtor: HREF");
    EXPECT_EQ(line(BandwidthMethod::kManual), "Bandwidth estimtor: manual (150)");
    EXPECT_EQ(line(BandwidthMethod::kProportion), "Bandwidth estimtor: Proportion(s) of HREF (0.2, 0.4)");
}

TEST(ReportLines, Isopleth_line_carries_its_own_blank_line) {
    EXPECT_THAT(extent_settings_lines({.Mode = ExtentMode::kFull,
                                       .Buffer = {.Text = "420"},
                                       .Isopleths = true,
                                       .Percentages = {.Text = "95, 50"},
                                       .Polygons = true}),
                ElementsAre("Extent setting: full extent + 420", "Isopleths: 95, 50( polygons )", "", "",
                            "Case specific settings:"));
    EXPECT_THAT(extent_settings_lines({.Mode = ExtentMode::kMinimum,
                                       .Isopleths = true,
                                       .Percentages = {.Text = "95"},
                                       .Lines = true,
                                       .Polygons = true,
                                       .Donuts = true}),
                ElementsAre("Extent setting: smallest extent for each set of points",
                            "Isopleths: 95( lines  polygons  donuts )", "", "", "Case specific settings:"));
    EXPECT_THAT(extent_settings_lines({.Mode = ExtentMode::kReference, .ReferenceName = "study area"}),
                ElementsAre("Extent setting: reference layer (study area)", "Isopleths not calculated", "",
                            "Case specific settings:"));
}

TEST(ReportLines, Block_of_a_success_gives_volume_and_typed_scaling) {
    EXPECT_THAT(animal_lines(record_of_bo(), kQuiet, false),
                ElementsAre("Unique ID: Bo", "Sample size: 30", "Bandwidth: 120.25", "HREF (for reference): 130.5",
                            "Columns, Rows: 34, 22", "Origin of raster (lower left x, y): 600.5, -100",
                            "Raster name: K2", "Kernel calculated successfully.", "Volume: 999876.5 / 1000000"));
}

TEST(ReportLines, Block_of_a_failure_gives_warnings_before_the_code) {
    AnimalRecord record = record_of_bo();
    record.Status = 5002;
    record.Warnings = "The bandwidth (40) is smaller than the cell size (50). Processing aborted.\r";
    const Lines lines = animal_lines(record, kQuiet, true);
    EXPECT_THAT(lines,
                ElementsAre("Unique ID: Bo", "Unique numerical ID used for naming output: 2", "Sample size: 30",
                            "Bandwidth: 120.25", "HREF (for reference): 130.5", "Columns, Rows: 34, 22",
                            "Origin of raster (lower left x, y): 600.5, -100", "Raster name: K2",
                            "Warnings!The bandwidth (40) is smaller than the cell size (50). Processing aborted.\r",
                            "Error encountered while calculating kernel! (code: 5002)"));
}

TEST(ReportLines, Search_lines_of_lscv_and_bcv) {
    AnimalRecord record = record_of_bo();
    record.Method = BandwidthMethod::kLscv;
    record.Minimized = true;
    record.Profile = {{10.0, -0.25}, {20.5, 1e-5}, {0.0, 0.0}};
    const Lines quiet = animal_lines(record, kQuiet, false);
    EXPECT_EQ(quiet[4], "Bandwidth represents minimized LSCV");
    EXPECT_EQ(quiet[5], "Columns, Rows: 34, 22");

    const Settings verbose{.ScalingFactor = {.Text = "1"}, .Verbose = true};
    const Lines lscv = animal_lines(record, verbose, false);
    EXPECT_THAT(Lines(lscv.begin() + 4, lscv.begin() + 10),
                ElementsAre("Bandwidth represents minimized LSCV", "LSCV Profile:", "h,LSCV_value", "10, -0.25",
                            "20.5, 1E-05", "0, 0"));

    record.Method = BandwidthMethod::kBcv;
    record.Minimized = false;
    const Lines bcv = animal_lines(record, verbose, false);
    EXPECT_THAT(Lines(bcv.begin() + 4, bcv.begin() + 8),
                ElementsAre("BCV function could not be minimized. HREF bandwidth used.", "BCV Profile:", "h,BCV_value",
                            "10, -0.25"));
}

TEST(ReportLines, Block_ends_with_the_edge_warning_and_a_blank_line) {
    AnimalRecord record = record_of_bo();
    EXPECT_THAT(animal_end_lines(record), ElementsAre(""));
    record.EdgeWarning = true;
    EXPECT_THAT(
        animal_end_lines(record),
        ElementsAre("A warning was generated when calculating the isopleths. It is possible that the extent of the "
                    "raster was not large enough to accommodate the utilization distribution. Data truncation may "
                    "therefore have occurred, and this can profoundly disrupt the isopleth calculation. It is "
                    "recommended you inspect the vector isopleth carefully to determine if it is valid.",
                    ""));
}

TEST(ReportLines, Finish_has_no_full_stop) {
    EXPECT_THAT(finish_lines({2026, 1, 2, 0, 5, 9}),
                ElementsAre("Finish time: 1/2/2026 12:05:09 AM", "Processing complete"));
}

TEST(ReportLines, Remarks_on_the_points_stand_in_brackets_below_the_input) {
    RunHeader header;
    header.InputName = "wolves";
    header.IdField = "animal";
    header.SelectedOnly = true;
    header.Remarks = remarks_of("animal", 50, true);
    const Lines lines = header_lines(header);
    EXPECT_EQ(Lines(lines.begin() + 4, lines.begin() + 9),
              (Lines{"Unique ID field: animal", "(Using selected features only)",
                     "(50 points have no value in the field animal and were left out)",
                     "(The layer is in degrees: cell size, bandwidths and areas mean nothing as lengths)", ""}));
    EXPECT_EQ(remarks_of("animal", 1, false),
              (std::vector<std::string>{"1 point has no value in the field animal and was left out"}));
    EXPECT_TRUE(remarks_of("animal", 0, false).empty());
}

}  // namespace
}  // namespace wxl::analysis
