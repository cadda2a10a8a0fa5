#include "results_page/repeat_command.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace wxl::results_page {
namespace {

using kde_tool::BandwidthMethod;
using kde_tool::ExtentMode;
using testing::ElementsAre;

PageRun plain_run() {
    PageRun run;
    run.Inputs.LayerName = "wolves";
    run.Inputs.Source = "/data/wolves.shp";
    run.Inputs.IdField = "animal";
    run.Inputs.Method = BandwidthMethod::kLscv;
    run.Inputs.CellSizeText = "100";
    run.Inputs.ScalingText = "1000000";
    run.Inputs.Mode = ExtentMode::kMinimum;
    run.Folder = "/out";
    run.RasterFormat = "GRID";
    return run;
}

TEST(RepeatCommand, Names_only_what_differs_from_the_defaults) {
    EXPECT_THAT(repeat_words(plain_run()),
                ElementsAre("wxl", "kde", "/data/wolves.shp", "--id-field", "animal", "--out", "/out", "--cell-size",
                            "100", "--bandwidth", "lscv", "--extent", "min", "--html"));
}

TEST(RepeatCommand, Names_every_setting) {
    PageRun run = plain_run();
    run.Inputs.Source.clear();
    run.Inputs.Method = BandwidthMethod::kProportion;
    run.Inputs.ProportionText = "0.4, 0.6";
    run.Inputs.Prefix = "W";
    run.Inputs.ScalingText = "1000";
    run.Inputs.FixedKernel = false;
    run.Inputs.Rescale = true;
    run.Inputs.Mode = ExtentMode::kFull;
    run.Inputs.BufferText = "2500.5";
    run.Inputs.Isopleths = true;
    run.Inputs.IsoplethText = "95, 50";
    run.Inputs.Lines = run.Inputs.Polygons = run.Inputs.Donuts = true;
    run.Inputs.Verbose = true;
    run.Inputs.Where = "sex = 'f'";
    run.RasterFormat = "GTiff";
    run.Reference.IsGeographic = true;
    EXPECT_THAT(
        repeat_words(run),
        ElementsAre("wxl", "kde", "wolves", "--id-field", "animal", "--where", "sex = 'f'", "--out", "/out", "--prefix",
                    "W", "--cell-size", "100", "--scaling", "1000", "--bandwidth", "prop:0.4,0.6", "--adaptive",
                    "--rescale", "--extent", "full:2500.5", "--isopleths", "95,50", "--lines", "--polygons", "--donuts",
                    "--raster-format", "GTiff", "--degrees", "--verbose-log", "--html"));
}

TEST(RepeatCommand, Is_quoted_for_a_shell) {
    EXPECT_EQ(shell_text({"wxl", "--where", "name = 'O''Malley'", "", "a b", "$(rm)", "full:2.5"}),
              "wxl --where 'name = '\\''O'\\'''\\''Malley'\\''' '' 'a b' '$(rm)' full:2.5");
}

}  // namespace
}  // namespace wxl::results_page
