#include "tests/unit/cli/captured_console.h"

#include <gtest/gtest.h>

namespace wxl::cli {
namespace {

TEST(Program, Version_is_a_result) {
    const Ran ran = run_wxl({"--version"});
    EXPECT_EQ(ran.Code, 0);
    EXPECT_EQ(ran.Out, "wxl 1.1.0\n");
    EXPECT_EQ(ran.Err, "");
}

TEST(Program, Help_is_a_result) {
    const Ran ran = run_wxl({"--help"});
    EXPECT_EQ(ran.Code, 0);
    EXPECT_EQ(ran.Out.rfind("Home ranges from animal tracking data", 0), 0U);
    EXPECT_EQ(ran.Err, "");
}

TEST(Program, Call_without_a_command_is_wrong) {
    const Ran ran = run_wxl({});
    EXPECT_EQ(ran.Code, 2);
    EXPECT_EQ(ran.Out, "");
    EXPECT_EQ(ran.Err, "wxl: name a command; wxl --help lists them\n");
}

TEST(Program, Unknown_command_is_a_wrong_call) {
    const Ran ran = run_wxl({"frobnicate"});
    EXPECT_EQ(ran.Code, 2);
    EXPECT_EQ(ran.Out, "");
    EXPECT_EQ(ran.Err, "wxl: there is no command \"frobnicate\"; wxl --help tells more\n");
}

/// What a wrong call says.
std::string problem(const std::vector<std::string>& arguments) {
    const Ran ran = run_wxl(arguments);
    EXPECT_EQ(ran.Code, 2);
    EXPECT_EQ(ran.Out, "");
    return ran.Err;
}

TEST(Program, Misspelled_command_is_told_with_the_nearest) {
    EXPECT_EQ(problem({"kdee", "x.shp", "--id-field", "animal"}),
              "wxl: there is no command \"kdee\"; is it kde? wxl --help tells more\n");
    EXPECT_EQ(problem({"remove-duplicate", "x.shp"}),
              "wxl: there is no command \"remove-duplicate\"; is it remove-duplicates? wxl --help tells more\n");
    EXPECT_EQ(problem({"batch", "stat"}),
              "wxl: there is no command \"stat\"; is it status? wxl batch --help tells more\n");
    EXPECT_EQ(problem({"batch"}),
              "wxl: name a command of it: plan, plan-akde, run, merge, status, submit, overlap; wxl batch --help tells "
              "more\n");
}

TEST(Program, Misspelled_option_is_told_with_the_nearest) {
    const std::string more = " wxl kde --help tells more\n";
    const auto kde = [](std::vector<std::string> arguments) {
        arguments.insert(arguments.begin(), {"kde", "x.shp", "--id-field", "animal"});
        return problem(arguments);
    };
    EXPECT_EQ(kde({"--cellsize", "100"}), "wxl: there is no option --cellsize; is it --cell-size?" + more);
    EXPECT_EQ(kde({"--cellsize=100"}), "wxl: there is no option --cellsize; is it --cell-size?" + more);
    EXPECT_EQ(kde({"--iso", "95"}), "wxl: there is no option --iso; is it --isopleths?" + more);
    EXPECT_EQ(kde({"--colour", "red"}), "wxl: there is no option --colour;" + more);
    EXPECT_EQ(kde({"-x"}), "wxl: there is no option -x; is it --x?" + more);
    EXPECT_EQ(kde({"-7"}), "wxl: there is no option -7;" + more);
    EXPECT_EQ(kde({"more.shp"}), "wxl: \"more.shp\" is one argument too many;" + more);
    EXPECT_EQ(kde({"--json=abc"}), "wxl: --json takes no value;" + more);
    EXPECT_EQ(kde({"--out"}), "wxl: --out needs a value: DIR;" + more);
    EXPECT_EQ(kde({"--max-dop", "high"}), "wxl: --max-dop: \"high\" is no number;" + more);
    EXPECT_EQ(problem({"kde", "x.shp", "--idfield", "animal"}),
              "wxl: there is no option --idfield; is it --id-field?" + more);
    EXPECT_EQ(problem({"bandwidth", "x.shp"}), "wxl: --id-field is required; wxl bandwidth --help tells more\n");
    EXPECT_EQ(problem({"--json", "kde", "x.shp"}),
              "wxl: --json stands before the command it belongs to; give it after wxl kde;" + more);
}

TEST(Program, Values_out_of_range_are_refused_in_a_sentence) {
    const std::string more = "; wxl kde --help tells more\n";
    const auto kde = [](const std::string& option, const std::string& value) {
        return problem({"kde", "x.shp", "--id-field", "animal", "--out", "o", "--cell-size", "1", option, value});
    };
    for (const std::string value : {"0", "x", "1.5", "-1", "9999999999", "00"})
        EXPECT_EQ(kde("--group-by", value), "wxl: --group-by: \"" + value + "\" is not a whole number above 0" + more);
    EXPECT_EQ(kde("--raster-format", "tiff"), "wxl: --raster-format: \"tiff\" is not GRID or GTiff" + more);
    for (const std::string value : {"0", "1025", "x", "1.5", "-1", "9999999999"})
        EXPECT_EQ(kde("--jobs", value), "wxl: --jobs: \"" + value + "\" is not a whole number from 1 to 1024" + more);
    EXPECT_EQ(problem({"curve", "x.shp", "--id-field", "animal", "--tolerance", "101"}),
              "wxl: --tolerance: \"101\" is not a number from 0 to 100; wxl curve --help tells more\n");
}

TEST(Program, Empty_paths_are_refused) {
    EXPECT_EQ(problem({"kde", "x.shp", "--id-field", "animal", "--out", "", "--cell-size", "1"}),
              "wxl: --out is empty\n");
    EXPECT_EQ(problem({"isopleths", "x", "--levels", "95", "--name", "n", "--out", ""}), "wxl: --out is empty\n");
    EXPECT_EQ(problem({"stats", "x.shp", "--id-field", "animal", "--csv", ""}), "wxl: --csv is empty\n");
    EXPECT_EQ(problem({"info", ""}), "wxl: INPUT is empty\n");
    EXPECT_EQ(problem({"import", "x.csv", ""}), "wxl: FILE is empty\n");
    EXPECT_EQ(problem({"batch", "merge", ""}), "wxl: DIR is empty\n");
}

}  // namespace
}  // namespace wxl::cli
