#include "tests/unit/cli/layer_files.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>
#include <string>

namespace wxl::cli {
namespace {

using tests::ScratchFolder;

const std::string kEight =
    "a,0,0,2018-05-09\na,6,0,2018-05-09\na,6,4,2018-05-09\na,0,4,2018-05-09\n"
    "a,3,2,2018-05-09\na,3,0,2018-05-09\na,12,2,2018-05-09\na,3,2,2018-05-09\n";
const std::string kOnALine = "b,1,1,2018-05-09\nb,2,2,2018-05-09\nb,3,3,2018-05-09\n";

// Corners (0,0) (6,0) (12,2) (6,4) (0,4): 36. The nearest 80 %, six fixes: (0,0) (6,0) (6,4): 12.
TEST(Mcp, Table_of_eight_fixes_and_a_line) {
    ScratchFolder folder;
    const std::string layer = make_layer(folder, kEight + kOnALine);
    const Ran ran = run_wxl({"mcp", layer, "--id-field", "animal", "--percent", "100,80"});
    EXPECT_EQ(ran.Code, 0);
    EXPECT_EQ(ran.Err, "b: 3 fixes are too few for a polygon that says anything\n");
    EXPECT_EQ(ran.Out,
              "id  percent  area  n   status\n"
              "a       100    36  8       ok\n"
              "a        80    12  6       ok\n"
              "b       100     0  3  no area\n"
              "b        80     0  3  no area\n");
}

TEST(Mcp, Json_csv_and_shapefile) {
    ScratchFolder folder;
    const std::string layer = make_layer(folder, kEight + kOnALine);
    const std::string csv = (folder / "mcp.csv").string();
    const std::string out = (folder / "mcp.shp").string();
    const Ran ran =
        run_wxl({"mcp", layer, "--id-field", "animal", "--percent", "100,80", "--json", "--csv", csv, "--out", out});
    EXPECT_EQ(ran.Code, 0);
    EXPECT_EQ(nlohmann::ordered_json::parse(ran.Out).dump(),
              R"([{"id":"a","n":8,"mcp":[{"percent":100.0,"area":36.0,"n":8,"status":"ok"},)"
              R"({"percent":80.0,"area":12.0,"n":6,"status":"ok"}]},)"
              R"({"id":"b","n":3,"mcp":[{"percent":100.0,"area":0.0,"n":3,"status":"no area"},)"
              R"({"percent":80.0,"area":0.0,"n":3,"status":"no area"}]}])");
    EXPECT_EQ(read_file(csv),
              "id,percent,area,n,status\na,100,36,8,ok\na,80,12,6,ok\nb,100,0,3,no area\nb,80,0,3,no area\n");
    EXPECT_TRUE(std::filesystem::exists(out));
    const Ran again = run_wxl({"mcp", layer, "--id-field", "animal", "--out", out});
    EXPECT_EQ(again.Code, 1);
    EXPECT_EQ(run_wxl({"mcp", layer, "--id-field", "animal", "--out", out, "--overwrite"}).Code, 0);
}

TEST(Mcp, One_fix_per_interval) {
    ScratchFolder folder;
    const std::string layer = make_layer(folder,
                                         "a,0,0,2024-01-01 00:10\na,9,9,2024-01-01 02:00\na,5,0,2024-01-01 04:05\n"
                                         "a,4,0,2024-01-01 04:15\na,4,4,2024-01-01 13:00\na,0,4,2024-01-01 16:10\n");
    const auto area = [&](const std::vector<std::string>& more) {
        std::vector<std::string> call = {"mcp", layer, "--id-field", "animal", "--percent", "100", "--json", "-q"};
        call.insert(call.end(), more.begin(), more.end());
        return nlohmann::json::parse(run_wxl(call).Out)[0]["mcp"][0]["area"].get<double>();
    };
    EXPECT_EQ(area({"--every", "4h"}), 16.0);                                // rows 1, 4, 5, 6
    EXPECT_EQ(area({"--every", "4h", "--every-tolerance", "10min"}), 18.0);  // rows 1, 3, 5, 6
}

// Intervals of 6600, 7500, 600, 31500 and 11400 s: quartiles 6600, 7500 and 11400; 16 hours are 2/3 of a day.
TEST(Mcp, Facts_on_times_where_a_time_column_is_given_as_in_overlap_and_curve) {
    ScratchFolder folder;
    const std::string layer =
        make_layer(folder,
                   "a,0,0,2024-01-01 00:10\na,90,90,2024-01-01 02:00\na,50,0,2024-01-01 04:05\n"
                   "a,40,0,2024-01-01 04:15\na,40,40,2024-01-01 13:00\na,0,40,2024-01-01 16:10\n");
    const std::string facts =
        R"("first":"2024-01-01T00:10:00Z","last":"2024-01-01T16:10:00Z","days":0.6666666666666666,"distinct_days":1,)"
        R"("median_s":7500.0,"q1_s":6600.0,"q3_s":11400.0,"iqr_s":4800.0,"equal_times":0}])";
    for (const char* command : {"mcp", "curve", "overlap"}) {
        const Ran ran = run_wxl({command, layer, "--id-field", "animal", "--time-field", "Time2", "--json", "-q"});
        ASSERT_EQ(ran.Code, 0) << ran.Err;
        EXPECT_NE(nlohmann::ordered_json::parse(ran.Out).dump().find(facts), std::string::npos) << ran.Out;
    }
    EXPECT_EQ(run_wxl({"mcp", layer, "--id-field", "animal", "--json"}).Out.find("median_s"), std::string::npos);
}

// 35 degrees south in January.
TEST(Mcp, Seasons_of_the_wrong_hemisphere_are_told) {
    ScratchFolder folder;
    const std::string csv = write_file(folder, "k.csv",
                                       "animal,lon,lat,timestamp\nk,145.10,-35.20,2024-01-05 10:00:00\n"
                                       "k,145.12,-35.21,2024-01-06 10:00:00\nk,145.14,-35.20,2024-01-07 10:00:00\n");
    const std::string layer = (folder / "k.gpkg").string();
    ASSERT_EQ(run_wxl({"import", csv, layer}).Code, 0);
    const std::string told =
        "the animals live south of the equator, and their seasons are named as in the north: --hemisphere south names "
        "them as there\n";
    for (const char* key : {"season", "year-season"}) {
        const Ran north = run_wxl({"mcp", layer, "--id-field", "animal", "--split-by", key});
        EXPECT_NE(north.Out.find("winter"), std::string::npos);
        EXPECT_NE(north.Err.find(told), std::string::npos) << north.Err;
        const Ran south = run_wxl({"mcp", layer, "--id-field", "animal", "--split-by", key, "--hemisphere", "south"});
        EXPECT_NE(south.Out.find("summer"), std::string::npos);
        EXPECT_EQ(south.Err.find(told), std::string::npos) << south.Err;
    }
    const Ran month = run_wxl({"mcp", layer, "--id-field", "animal", "--split-by", "month"});
    EXPECT_EQ(month.Err.find(told), std::string::npos) << month.Err;
}

TEST(Mcp, What_is_left_out_is_told) {
    ScratchFolder folder;
    const std::string layer = make_layer(folder, kEight + "c,1,1,\n");
    const Ran ran = run_wxl({"mcp", layer, "--id-field", "animal", "--percent", "100", "--split-by", "month"});
    EXPECT_EQ(ran.Err, "1 point left out: no time in Time2\n");
    EXPECT_EQ(ran.Out,
              "id    percent  area  n  status\n"
              "a 05      100    36  8      ok\n");
    EXPECT_EQ(run_wxl({"mcp", layer, "--id-field", "animal", "--where", "Time2 < 0"}).Err,
              "wxl: " + layer + ": there is no animal among the fixes that were chosen\n");
}

}  // namespace
}  // namespace wxl::cli
