#include "results_page/repeat_command.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace wxl::results_page {
namespace {

using analysis::BandwidthMethod;
using analysis::ExtentMode;
using testing::ElementsAre;

PageRun plain_run() {
    PageRun run;
    run.Wanted.LayerName = "wolves";
    run.Source = "/data/wolves.shp";
    run.Wanted.IdField = "animal";
    run.Wanted.Method = BandwidthMethod::kLscv;
    run.Wanted.Cells.Text = "100";
    run.Wanted.ScalingFactor.Text = "1000000";
    run.Wanted.Mode = ExtentMode::kMinimum;
    run.Folder = "/out";
    run.Wanted.RasterFormat = "GRID";
    return run;
}

TEST(RepeatCommand, Names_only_what_differs_from_the_defaults) {
    EXPECT_THAT(repeat_words(plain_run()),
                ElementsAre("wxl", "kde", "/data/wolves.shp", "--id-field", "animal", "--out", "/out", "--cell-size",
                            "100", "--bandwidth", "lscv", "--extent", "min", "--html"));
}

TEST(RepeatCommand, Names_every_setting) {
    PageRun run = plain_run();
    run.Wanted.GeoPackage = true;
    run.Source.clear();
    run.Wanted.Method = BandwidthMethod::kProportion;
    run.Wanted.Proportions.Text = "0.4, 0.6";
    run.Wanted.Prefix = "W";
    run.Wanted.ScalingFactor.Text = "1000";
    run.Wanted.FixedKernel = false;
    run.Wanted.Rescale = true;
    run.Wanted.Mode = ExtentMode::kFull;
    run.Wanted.Buffer.Text = "2500.5";
    run.Wanted.Isopleths = true;
    run.Wanted.Percentages.Text = "95, 50";
    run.Wanted.Lines = run.Wanted.Polygons = run.Wanted.Donuts = true;
    run.Wanted.ConvexPercentages.Text = "100, 95";
    run.Wanted.Verbose = true;
    run.Wanted.Where = "sex = 'f'";
    run.Wanted.RasterFormat = "GTiff";
    run.Reference.IsGeographic = true;
    EXPECT_THAT(
        repeat_words(run),
        ElementsAre("wxl", "kde", "wolves", "--id-field", "animal", "--where", "sex = 'f'", "--out", "/out", "--prefix",
                    "W", "--cell-size", "100", "--scaling", "1000", "--bandwidth", "prop:0.4,0.6", "--adaptive",
                    "--rescale", "--extent", "full:2500.5", "--isopleths", "95,50", "--lines", "--polygons", "--donuts",
                    "--mcp", "100,95", "--raster-format", "GTiff", "--degrees", "--verbose-log", "--html", "--gpkg"));
}

TEST(RepeatCommand, Is_quoted_for_a_shell) {
    EXPECT_EQ(shell_text({"wxl", "--where", "name = 'O''Malley'", "", "a b", "$(rm)", "full:2.5"}),
              "wxl --where 'name = '\\''O'\\'''\\''Malley'\\''' '' 'a b' '$(rm)' full:2.5");
}

}  // namespace
}  // namespace wxl::results_page
