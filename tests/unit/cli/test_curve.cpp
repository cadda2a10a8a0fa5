#include "tests/unit/cli/layer_files.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

namespace wxl::cli {
namespace {

using tests::ScratchFolder;

const std::string kNote =
    "wxl: successive fixes are seldom independent: a curve that is level by their number may still grow with time\n";

/// Fixes out of the order of time: the corners of a square of side 2 come first, then fixes within.
std::string square_then_inside() {
    std::string rows;
    for (int day = 28; day > 4; --day)
        rows += "a,1,1,2018-05-" + std::string(day < 10 ? "0" : "") + std::to_string(day) + "\n";
    return rows + "a,0,2,2018-05-04\na,2,2,2018-05-03\na,2,0,2018-05-02\na,0,0,2018-05-01\n";
}

TEST(Curve, Fixes_are_taken_in_the_order_of_time) {
    ScratchFolder folder;
    const std::string layer = make_layer(folder, square_then_inside());
    const Ran ran = run_wxl({"curve", layer, "--id-field", "animal", "--first", "2", "--step", "1", "--json"});
    EXPECT_EQ(ran.Code, 0);
    EXPECT_EQ(ran.Err, kNote);
    const auto json = nlohmann::ordered_json::parse(ran.Out);
    EXPECT_EQ(json[0]["id"], "a");
    EXPECT_EQ(json[0]["of"], "mcp:100");
    EXPECT_EQ(json[0]["order"], "time");
    EXPECT_TRUE(json[0]["seed"].is_null());
    EXPECT_EQ(json[0]["sizes"].size(), 27U);
    EXPECT_EQ(json[0]["sizes"][0].dump(), R"({"n":2,"area":0.0,"low":null,"high":null})");
    EXPECT_EQ(json[0]["sizes"][1].dump(), R"({"n":3,"area":2.0,"low":null,"high":null})");
    EXPECT_EQ(json[0]["sizes"][2].dump(), R"({"n":4,"area":4.0,"low":null,"high":null})");
    EXPECT_EQ(json[0]["asymptote"].dump(), R"({"n":4,"reached":true})");
}

TEST(Curve, Table_csv_and_plot) {
    ScratchFolder folder;
    const std::string layer = make_layer(folder, square_then_inside());
    const std::string csv = (folder / "curve.csv").string();
    const std::string plot = (folder / "curve.svg").string();
    const Ran ran = run_wxl({"curve", layer, "--id-field", "animal", "--step", "20", "--csv", csv, "--plot", plot});
    EXPECT_EQ(ran.Out,
              "id   n  area  level from  asymptote\n"
              "a   28     4           5    reached\n"
              "plot: " +
                  plot + "\n");
    EXPECT_EQ(read_file(csv),
              "id,of,order,seed,n,area,low,high\na,mcp:100,time,,5,4,,\na,mcp:100,time,,25,4,,\n"
              "a,mcp:100,time,,28,4,,\n");
    EXPECT_NE(read_file(plot).find("From 5 fixes on, every area lies within 5 % of the last."), std::string::npos);
}

TEST(Curve, Random_orders_are_the_same_for_the_same_seed) {
    ScratchFolder folder;
    const std::string layer = make_layer(folder, square_then_inside());
    const std::vector<std::string> call = {"curve",        layer, "--id-field", "animal", "--order", "random",
                                           "--replicates", "9",   "--seed",     "42",     "--json",  "-q"};
    const Ran ran = run_wxl(call);
    EXPECT_EQ(ran.Err, "");
    EXPECT_EQ(ran.Out, run_wxl(call).Out);
    const auto json = nlohmann::ordered_json::parse(ran.Out);
    EXPECT_EQ(json[0]["seed"], 42);
    const auto& last = json[0]["sizes"].back();
    EXPECT_EQ(last.dump(), R"({"n":28,"area":4.0,"low":4.0,"high":4.0})");
}

TEST(Curve, Of_kernels) {
    ScratchFolder folder;
    const std::string layer = make_layer(folder, square_then_inside());
    const Ran ran = run_wxl({"curve", layer, "--id-field", "animal", "--of", "KERNEL:50", "--bandwidth", "5",
                             "--cell-size", "1", "--json"});
    const auto json = nlohmann::ordered_json::parse(ran.Out);
    EXPECT_EQ(json[0]["of"], "kernel:50");
    // Nearly one kernel of variance 25 and a little of the fixes': a circle of 2 pi 25.3 ln 2.
    EXPECT_NEAR(json[0]["sizes"].back()["area"].get<double>(), 110.2, 3.0);
}

TEST(Curve, Without_a_distribution_areas_are_missing) {
    ScratchFolder folder;
    const std::string layer = make_layer(folder, "a,5,5,2018-05-09\na,5,5,2018-05-10\nb,5,5,\n");
    const Ran ran = run_wxl({"curve", layer, "--id-field", "animal", "--of", "kernel", "--json", "-q"});
    EXPECT_EQ(ran.Code, 0);
    EXPECT_EQ(ran.Err, "b: 1 without a time left out\n");
    const auto json = nlohmann::ordered_json::parse(ran.Out);
    EXPECT_EQ(json[0]["sizes"].dump(), R"([{"n":2,"area":null,"low":null,"high":null}])");
    EXPECT_TRUE(json[0]["asymptote"].is_null());
    EXPECT_EQ(json[1]["sizes"].dump(), "[]");
}

TEST(Curve, Calls_that_make_no_sense_are_refused) {
    ScratchFolder folder;
    const std::string layer = make_layer(folder, square_then_inside());
    const auto refusal = [&](std::vector<std::string> options) {
        options.insert(options.begin(), {"curve", layer, "--id-field", "animal"});
        return run_wxl(options).Err;
    };
    EXPECT_EQ(refusal({"--of", "hull"}), "wxl: --of: \"hull\" is not mcp[:P] or kernel[:P]\n");
    EXPECT_EQ(refusal({"--of", "mcp:95,50"}), "wxl: --of takes one percentage\n");
    EXPECT_EQ(refusal({"--bandwidth", "50"}), "wxl: --bandwidth is for --of kernel\n");
    EXPECT_EQ(refusal({"--of", "kernel", "--bandwidth", "lscv"}),
              "wxl: --bandwidth: \"lscv\" is not href or a number of map units above 0\n");
    EXPECT_EQ(refusal({"--plot", "curve.png"}),
              "wxl: --plot: the picture is an SVG, and \"curve.png\" does not end in .svg\n");
    EXPECT_EQ(refusal({"--time-field", "when"}),
              "wxl: " + layer + " has no field \"when\"; its fields are: animal, Time2, Date, Time1\n");
}

}  // namespace
}  // namespace wxl::cli
