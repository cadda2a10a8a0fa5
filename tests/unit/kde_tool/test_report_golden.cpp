// Whole reports of small runs. Expected numbers: standard deviations, reference bandwidth and grids worked by hand,
// volumes by a literal sum over cells and fixes in double precision.

#include "tests/unit/kde_tool/run_fixture.h"

namespace wxl::kde_tool {
namespace {

const char* const kEdgeText =
    "A warning was generated when calculating the isopleths. It is possible that the extent of the raster was not "
    "large enough to accommodate the utilization distribution. Data truncation may therefore have occurred, and this "
    "can profoundly disrupt the isopleth calculation. It is recommended you inspect the vector isopleth carefully to "
    "determine if it is valid.";

const std::vector<std::string> kManualRun = {"WXL KERNEL DENSITY ANALYSIS",
                                             "",
                                             "Start time: 11/20/2026 3:04:05 PM",
                                             "Input data: bears",
                                             "Unique ID field: ID",
                                             "",
                                             "Variances of x and y coordinates: ",
                                             "ID, Count, StdDev_X, StdDev_Y, Ratio(x:y)",
                                             "3, 4, 115.470053837925, 115.470053837925, 1",
                                             "7, 2, 282.842712474619, 141.42135623731, 2",
                                             "",
                                             "KERNEL SETTINGS",
                                             "Kernel type: fixed",
                                             "Bandwidth estimtor: manual (100)",
                                             "Output folder: /out",
                                             "Raster prefix name: K",
                                             "Raster cell size: 50",
                                             "Scaling factor: 1000000",
                                             "Extent setting: full extent + 400",
                                             "Isopleths not calculated",
                                             "",
                                             "Case specific settings:",
                                             "Unique ID: 3",
                                             "Sample size: 4",
                                             "Bandwidth: 100",
                                             "HREF (for reference): 0",
                                             "Columns, Rows: 34, 22",
                                             "Origin of raster (lower left x, y): 600, 100",
                                             "Raster name: K3",
                                             "Kernel calculated successfully.",
                                             "Volume: # / 1000000",
                                             "",
                                             "Unique ID: 7",
                                             "Sample size: 2",
                                             "Bandwidth: 100",
                                             "HREF (for reference): 0",
                                             "Columns, Rows: 34, 22",
                                             "Origin of raster (lower left x, y): 600, 100",
                                             "Raster name: K7",
                                             "Kernel calculated successfully.",
                                             "Volume: # / 1000000",
                                             "",
                                             "Finish time: 11/20/2026 3:04:05 PM",
                                             "Processing complete"};

TEST_F(RunTest, Report_of_numeric_ids_with_a_user_bandwidth) {
    AddTwoAnimals();
    Open();
    Run();
    std::string report = Report();
    const std::vector<double> volumes = take_volumes(report);
    EXPECT_EQ(report, as_file(kManualRun));
    ASSERT_EQ(volumes.size(), 2U);
    EXPECT_NEAR(volumes[0], 999968.9728257834, 1e-6);
    EXPECT_NEAR(volumes[1], 999968.9729831, 1e-6);
}

TEST_F(RunTest, Report_of_a_second_run_follows_the_first_and_the_settings_record_is_replaced) {
    AddTwoAnimals();
    Open();
    Run();
    const std::string settings = Disk->Bytes("/out/WXL_KERNEL_SETTINGS.txt");
    Form->txtR.Text = "L";
    Run();
    std::string report = Report();
    take_volumes(report);
    std::vector<std::string> second = kManualRun;
    for (std::string& line : second) {
        if (line == "Raster prefix name: K") line = "Raster prefix name: L";
        if (line.starts_with("Raster name: K")) line[13] = 'L';
    }
    const std::vector<std::string> separator = {"", "", "", std::string(60, '='), "", "", ""};
    EXPECT_EQ(report, as_file(kManualRun) + as_file(separator) + as_file(second));
    const std::string settings2 = Disk->Bytes("/out/WXL_KERNEL_SETTINGS.txt");
    EXPECT_NE(settings.find("[PREFIX]\r\nK\r\n"), std::string::npos);
    EXPECT_NE(settings2.find("[PREFIX]\r\nL\r\n"), std::string::npos);
    EXPECT_EQ(settings2.size(), settings.size());
}

// Schoener: Bo's fixes go right, up-left, right: t^2 = (40000 + 80000 + 40000) / 3 against r^2 = 80000 / 3; Ada's one
// step has t^2 = 200000 against r^2 = 100000. Swihart and Slade for Bo: -1 + 0.5 + 0.5 + 0.5. Bo: sigma = sqrt(40000 /
// 3), HREF = sigma x 4^(-1/6) = 91.6486424665735; padding 4 x HREF = 366.594569866294, columns = Int((200 + 733.189) /
// 50) = 18. Ada: variances 80000 and 20000, HREF = sqrt(50000) x 2^(-1/6) = 199.211009482922, padding 796.844037931689,
// columns = Int((400 + 1593.69) / 50) = 39, rows Int((200 + 1593.69) / 50).
TEST_F(RunTest, Report_of_text_ids_with_smallest_extent_isopleths_and_independence) {
    AddTwoAnimals();
    Open();
    ChooseIdField("NAME");
    Choose(Form->optBE_HREF, &frmKDE::optBE_HREF_Click);
    Choose(Form->optSmall, &frmKDE::optSmall_Click);
    WantPolygons("50, 95");
    Form->btnCalcIO_Click();
    Messages.Clear();
    Run();
    std::string report = Report();
    take_volumes(report);
    EXPECT_EQ(report, as_file({"WXL KERNEL DENSITY ANALYSIS",
                               "",
                               "Start time: 11/20/2026 3:04:05 PM",
                               "Input data: bears",
                               "Unique ID field: NAME",
                               "(Text based unique ID field detected - unique numerical ID's generated automatically)",
                               "",
                               "Unique ID name remapping (unique ID, naming ID):",
                               "     Ada, 1",
                               "     Bo, 2",
                               "",
                               "",
                               "Independence of observation indices:",
                               "NAME, Count, Schoener, Swihart_Slade",
                               "Ada, 2, 2, N/A",
                               "Bo, 4, 2, 0.5",
                               "Variances of x and y coordinates: ",
                               "NAME, Count, StdDev_X, StdDev_Y, Ratio(x:y)",
                               "Ada, 2, 282.842712474619, 141.42135623731, 2",
                               "Bo, 4, 115.470053837925, 115.470053837925, 1",
                               "",
                               "KERNEL SETTINGS",
                               "Kernel type: fixed",
                               "Bandwidth estimtor: HREF",
                               "Output folder: /out",
                               "Raster prefix name: K",
                               "Raster cell size: 50",
                               "Scaling factor: 1000000",
                               "Extent setting: smallest extent for each set of points",
                               "Isopleths: 50, 95( polygons )",
                               "",
                               "",
                               "Case specific settings:",
                               "Unique ID: Ada",
                               "Unique numerical ID used for naming output: 1",
                               "Sample size: 2",
                               "Bandwidth: 199.211009482922",
                               "HREF (for reference): 199.211009482922",
                               "Columns, Rows: 39, 35",
                               "Origin of raster (lower left x, y): 703.155962068311, -196.844037931689",
                               "Raster name: K1",
                               "Kernel calculated successfully.",
                               "Volume: # / 1000000",
                               "",
                               "Unique ID: Bo",
                               "Unique numerical ID used for naming output: 2",
                               "Sample size: 4",
                               "Bandwidth: 91.6486424665735",
                               "HREF (for reference): 91.6486424665735",
                               "Columns, Rows: 18, 18",
                               "Origin of raster (lower left x, y): 633.405430133706, 133.405430133706",
                               "Raster name: K2",
                               "Kernel calculated successfully.",
                               "Volume: # / 1000000",
                               kEdgeText,
                               "",
                               "Finish time: 11/20/2026 3:04:05 PM",
                               "Processing complete"}));
}

}  // namespace
}  // namespace wxl::kde_tool
