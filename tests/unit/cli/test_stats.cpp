#include "tests/unit/cli/layer_files.h"

#include <cmath>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

namespace wxl::cli {
namespace {

using tests::ScratchFolder;

// Four corners of a square in the order (0,0), (2,0), (0,2), (2,2). Variances 4/3; reference bandwidth sqrt(4/3) x
// 4^(-1/6), and 4^(-1/6) rescaled. Schoener: mean square step (4 + 8 + 4) / 3 over (2 + 2 + 2 + 2) / 3 = 2. Swihart and
// Slade: -1 (x with next x) + 1/2 (y with next y) + 1/2 + 1/2 (cross terms) = 1/2.
const std::string kSquare =
    "a,0,0,2018-05-09\n"
    "a,2,0,2018-05-10\n"
    "a,0,2,2018-05-11\n"
    "a,2,2,2018-05-12\n";
const std::string kLoner = "\"b, \"\"the loner\"\"\",7,7,2018-05-09\n";

TEST(Stats, Table_of_a_square_and_a_loner) {
    ScratchFolder folder;
    const std::string layer = make_layer(folder, kSquare + kLoner);
    const Ran ran = run_wxl({"stats", layer, "--id-field", "ANIMAL"});
    EXPECT_EQ(ran.Code, 0);
    EXPECT_EQ(ran.Err, "");
    EXPECT_EQ(
        ran.Out,
        "id              count  schoener  swihart_slade              sd_x              sd_y  ratio               href  "
        " "
        "   href_scaled\n"
        "a                   4         2            0.5  1.15470053837925  1.15470053837925      1  0.916486424665735  "
        "0.7937005259841\n"
        "b, \"the loner\"      1       N/A            N/A               N/A               N/A    N/A                "
        "N/A  "
        "            N/A\n");
}

TEST(Stats, Rows_that_are_not_in_the_order_of_time_are_told) {
    ScratchFolder folder;
    const std::string layer = write_file(
        folder, "fixes.geojson",
        R"({"type":"FeatureCollection","crs":{"type":"name","properties":{"name":"urn:ogc:def:crs:EPSG::32633"}},)"
        R"("features":[)"
        R"({"type":"Feature","properties":{"animal":"a","Time2":3},"geometry":{"type":"Point","coordinates":[0,0]}},)"
        R"({"type":"Feature","properties":{"animal":"a","Time2":1},"geometry":{"type":"Point","coordinates":[2,0]}},)"
        R"({"type":"Feature","properties":{"animal":"b","Time2":0},"geometry":{"type":"Point","coordinates":[5,5]}},)"
        R"({"type":"Feature","properties":{"animal":"a","Time2":2},"geometry":{"type":"Point","coordinates":[0,2]}},)"
        R"({"type":"Feature","properties":{"animal":"a","Time2":1},"geometry":{"type":"Point","coordinates":[2,2]}}]})");
    const Ran ran = run_wxl({"stats", layer, "--id-field", "animal", "-q"});
    EXPECT_EQ(ran.Code, 0);
    EXPECT_EQ(ran.Err,
              "a: 2 fixes are earlier than the one before: the indices of independence take the rows as they stand, so "
              "sort them by time\n");
}

TEST(Stats, Json_has_null_where_not_defined) {
    ScratchFolder folder;
    const std::string layer = make_layer(folder, kSquare + kLoner);
    const Ran ran = run_wxl({"stats", layer, "--id-field", "animal", "--json"});
    EXPECT_EQ(ran.Code, 0);
    const auto json = nlohmann::ordered_json::parse(ran.Out);
    ASSERT_EQ(json.size(), 2U);
    EXPECT_EQ(json[0]["id"], "a");
    EXPECT_EQ(json[0]["count"], 4);
    EXPECT_NEAR(json[0]["schoener"].get<double>(), 2.0, 1e-12);
    EXPECT_NEAR(json[0]["swihart_slade"].get<double>(), 0.5, 1e-12);
    EXPECT_NEAR(json[0]["sd_x"].get<double>(), std::sqrt(4.0 / 3.0), 1e-12);
    EXPECT_NEAR(json[0]["href"].get<double>(), std::sqrt(4.0 / 3.0) * std::pow(4.0, -1.0 / 6.0), 1e-12);
    EXPECT_NEAR(json[0]["href_scaled"].get<double>(), std::pow(4.0, -1.0 / 6.0), 1e-12);
    EXPECT_EQ(json[1].dump(),
              R"({"id":"b, \"the loner\"","count":1,"schoener":null,"swihart_slade":null,"sd_x":null,"sd_y":null,)"
              R"("ratio":null,"href":null,"href_scaled":null})");
}

TEST(Stats, Csv_is_written_whole_and_not_over_another) {
    ScratchFolder folder;
    const std::string layer = make_layer(folder, kSquare + kLoner);
    const std::string csv = (folder / "stats.csv").string();
    EXPECT_EQ(run_wxl({"stats", layer, "--id-field", "animal", "--csv", csv}).Code, 0);
    EXPECT_EQ(read_file(csv),
              "id,count,schoener,swihart_slade,sd_x,sd_y,ratio,href,href_scaled\n"
              "a,4,2,0.5,1.15470053837925,1.15470053837925,1,0.916486424665735,0.7937005259841\n"
              "\"b, \"\"the loner\"\"\",1,,,,,,,\n");
    const Ran again = run_wxl({"stats", layer, "--id-field", "animal", "--csv", csv});
    EXPECT_EQ(again.Code, 1);
    EXPECT_EQ(again.Out, "");
    EXPECT_EQ(again.Err, "wxl: " + csv + " exists: choose another name, or give --overwrite\n");
    EXPECT_EQ(run_wxl({"stats", layer, "--id-field", "animal", "--csv", csv, "--overwrite"}).Code, 0);
}

}  // namespace
}  // namespace wxl::cli
