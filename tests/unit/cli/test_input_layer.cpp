#include "tests/support/places.h"
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
         {virtualLayer, disguised, "/vsizip/" + layer, std::string("http://example.org/p.geojson"),
          "/vsicurl/http://example.org/" + layer})
        EXPECT_EQ(failure({"info", input}), "wxl: " + input + advice);
    EXPECT_EQ(run_wxl({"info", virtualLayer, "--allow-indirect"}).Code, 0);
}

TEST(InputLayer, Coordinate_systems_without_places_are_refused) {
    ScratchFolder folder;
    for (const char* code : {"4978", "5773"}) {
        const std::string layer = write_file(
            folder, std::string(code) + ".geojson",
            R"({"type":"FeatureCollection","crs":{"type":"name","properties":{"name":"urn:ogc:def:crs:EPSG::)" +
                std::string(code) +
                R"("}},"features":[{"type":"Feature","properties":{"animal":"a"},"geometry":{"type":"Point",)"
                R"("coordinates":[4000000,600000]}}]})");
        const std::string told = failure({"stats", layer, "--id-field", "animal"});
        EXPECT_TRUE(
            told.starts_with("wxl: " + layer + " is in a coordinate system whose x and y are no places on a map ("))
            << told;
        EXPECT_TRUE(told.ends_with("): project it first\n")) << told;
    }
}

TEST(InputLayer, A_field_name_that_two_fields_have_is_refused) {
    ScratchFolder folder;
    const std::string layer = write_file(
        folder, "two.geojson",
        R"({"type":"FeatureCollection","features":[{"type":"Feature","properties":{"Animal":"a","animal":"b"},)"
        R"("geometry":{"type":"Point","coordinates":[15,45]}}]})");
    EXPECT_EQ(failure({"stats", layer, "--id-field", "animal", "--degrees"}),
              "wxl: " + layer + " has 2 fields of the name \"animal\": rename all but one\n");
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
    EXPECT_EQ(failure({"info", file}),
              "wxl: " + file + " holds no points: name a point layer; a tracking table becomes one by wxl import\n");
}

TEST(InputLayer, A_tracking_table_is_told_how_to_become_a_layer) {
    const std::string table = tests::SourceFile("samples/wolves.csv").string();
    const std::string told =
        "wxl: " + table + " holds no points: name a point layer; a tracking table becomes one by wxl import\n";
    EXPECT_EQ(failure({"info", table}), told);
    EXPECT_EQ(failure({"stats", table, "--id-field", "individual-local-identifier"}), told);
}

// At 60 degrees north, where the cosine of the latitude is one half: R x ln(tan 75 degrees) = 8399737.89 m.
TEST(InputLayer, Web_mercator_is_told_where_something_is_measured) {
    ScratchFolder folder;
    const std::string csv = write_file(
        folder, "t.csv", "animal,x,y\na,1391493.6,8399637.89\na,1391593.6,8399737.89\na,1391693.6,8399837.89\n");
    const std::string layer = (folder / "t.shp").string();
    const std::string told =
        layer +
        " is in a Mercator projection (WGS 84 / Pseudo-Mercator), in which areas here are about 4.0 "
        "times too large: reproject to UTM zone 33N (EPSG:32633)\n";
    const Ran imported = run_wxl({"import", csv, layer, "--from-crs", "EPSG:3857"});
    EXPECT_EQ(imported.Code, 0);
    EXPECT_TRUE(imported.Err.ends_with(told)) << imported.Err;
    EXPECT_EQ(run_wxl({"-q", "stats", layer, "--id-field", "animal"}).Err, told);
    const Ran bandwidth = run_wxl({"bandwidth", layer, "--id-field", "animal", "--method", "href"});
    EXPECT_TRUE(bandwidth.Err.starts_with(told)) << bandwidth.Err;
    const Ran kde = run_wxl(
        {"kde", layer, "--id-field", "animal", "--out", (folder / "out").string(), "--cell-size", "10", "--dry-run"});
    EXPECT_TRUE(kde.Err.starts_with(told)) << kde.Err;
    EXPECT_EQ(run_wxl({"info", layer}).Err, "");
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

TEST(InputLayer, Values_like_degrees_without_a_coordinate_system_are_noted) {
    ScratchFolder folder;
    const auto noted = [&](const std::string& name, const std::string& x, const std::vector<std::string>& more) {
        write_file(folder, name + ".csv", "id,x,y\na," + x + ",55.6\na,12.6,55.8\n");
        write_file(folder, name + ".vrt",
                   "<OGRVRTDataSource><OGRVRTLayer name=\"" + name + "\"><SrcDataSource relativeToVRT=\"1\">" + name +
                       ".csv</SrcDataSource><GeometryType>wkbPoint</GeometryType><GeometryField "
                       "encoding=\"PointFromColumns\" x=\"x\" y=\"y\"/></OGRVRTLayer></OGRVRTDataSource>");
        std::vector<std::string> call = {"stats", (folder / (name + ".vrt")).string(), "--id-field", "id",
                                         "--allow-indirect"};
        call.insert(call.end(), more.begin(), more.end());
        const Ran ran = run_wxl(call);
        EXPECT_EQ(ran.Code, 0) << ran.Err;
        return ran.Err.find(
                   " has no coordinate system, and its values look like degrees: if they are, distances, "
                   "cells and bandwidths are in degrees too; wxl import projects a tracking table to UTM zone "
                   "33N (EPSG:32633)\n") != std::string::npos;
    };
    EXPECT_TRUE(noted("p", "12.4", {}));
    EXPECT_FALSE(noted("q", "12.4", {"--degrees"}));
    EXPECT_FALSE(noted("r", "180.5", {}));
}

}  // namespace
}  // namespace wxl::cli
