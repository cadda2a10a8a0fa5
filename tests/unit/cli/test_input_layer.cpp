#include "tests/unit/cli/layer_files.h"

#include <gtest/gtest.h>

namespace wxl::cli {
namespace {

using tests::ScratchFolder;

std::string failure(const std::vector<std::string>& arguments) {
    const Ran ran = run_wxl(arguments);
    EXPECT_EQ(ran.Code, 1);
    EXPECT_EQ(ran.Out, "");
    return ran.Err;
}

TEST(InputLayer, Sources_that_lead_elsewhere_are_refused) {
    ScratchFolder folder;
    const std::string layer = make_layer(folder, "a,1,2,2018-05-09\n");
    const std::string content = "<OGRVRTDataSource><OGRVRTLayer name=\"layer\"><SrcDataSource>" + layer +
                                "</SrcDataSource></OGRVRTLayer></OGRVRTDataSource>";
    const std::string virtualLayer = write_file(folder, "l.vrt", content);
    const std::string disguised = write_file(folder, "l.txt", content);
    const std::string advice = " leads to data elsewhere: name the file that holds them, or give --allow-indirect\n";
    EXPECT_EQ(failure({"info", virtualLayer + ":layer"}), "wxl: " + virtualLayer + advice);
    for (const std::string& input :
         {virtualLayer, disguised, "/vsizip/" + layer,
          std::string("http://example.org/p.geojson"), "/vsicurl/http://example.org/" + layer})
        EXPECT_EQ(failure({"info", input}), "wxl: " + input + advice);
    EXPECT_EQ(run_wxl({"info", virtualLayer, "--allow-indirect"}).Code, 0);
}

TEST(InputLayer, Missing_file_and_foreign_file_fail_with_their_name) {
    ScratchFolder folder;
    const std::string absent = (folder / "absent.shp").string();
    EXPECT_NE(failure({"info", absent}).find(absent), std::string::npos);
    const std::string text = write_file(folder, "notes.txt", "no layer at all\n");
    EXPECT_NE(failure({"info", text}).find(text), std::string::npos);
}

TEST(InputLayer, Layer_without_points_is_refused) {
    ScratchFolder folder;
    const std::string file = write_file(
        folder, "l.geojson",
        R"({"type":"FeatureCollection","features":[{"type":"Feature","properties":{"id":"a"},"geometry":{"type":"LineString","coordinates":[[10,52],[11,52]]}}]})");
    EXPECT_EQ(failure({"info", file}), "wxl: " + file + " holds no points: name a point layer\n");
}

TEST(InputLayer, Degrees_are_refused_where_distances_are_measured) {
    ScratchFolder folder;
    const std::string file = write_file(folder, "p.geojson",
                                        R"({"type":"FeatureCollection","features":[
            {"type":"Feature","properties":{"id":"a"},"geometry":{"type":"Point","coordinates":[12.4,55.6]}},
            {"type":"Feature","properties":{"id":"a"},"geometry":{"type":"Point","coordinates":[12.6,55.8]}}]})");
    const std::string told =
        "wxl: " + file +
        " is in degrees (WGS 84), in which distances cannot be measured: project it first (wxl import "
        "projects a tracking table to UTM zone 33N (EPSG:32633)), or give --degrees\n";
    EXPECT_EQ(failure({"stats", file, "--id-field", "id"}), told);
    EXPECT_EQ(failure({"bandwidth", file, "--id-field", "id", "--method", "href"}), told);
    EXPECT_EQ(run_wxl({"info", file}).Code, 0);
    EXPECT_EQ(run_wxl({"stats", file, "--id-field", "id", "--degrees"}).Code, 0);
}

}  // namespace
}  // namespace wxl::cli
