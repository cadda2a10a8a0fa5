#include "adapters/ogr/ogr_feature_class.h"
#include "isopleths/rings.h"
#include "tests/unit/cli/layer_files.h"
#include "tests/unit/cli/timed_rows.h"

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <fmt/format.h>
#include <gtest/gtest.h>
#include <map>
#include <nlohmann/json.hpp>

namespace wxl::cli {
namespace {

using Json = nlohmann::ordered_json;
using tests::ScratchFolder;

Ran run_akde_on(const std::string& layer, const std::string& out, std::vector<std::string> more = {}) {
    std::vector<std::string> arguments{"akde",         layer,        "--id-field", "animal",
                                       "--time-field", "Date,Time1", "--out",      out};
    arguments.insert(arguments.end(), more.begin(), more.end());
    return run_wxl(arguments);
}

// The areas are those of the worked example; on cells of 10 m and a grid that cuts 2e-5 of the volume they are good to
// 2e-4.
TEST(Akde, Json_of_fourteen_fixes) {
    ScratchFolder folder;
    const std::string out = (folder / "out").string();
    const Ran ran = run_akde_on(make_layer(folder, fourteen_rows("a")), out, {"--json", "--prefix", "K"});
    ASSERT_EQ(ran.Code, 0) << ran.Err;
    const Json animal = Json::parse(ran.Out)["animals"][0];
    EXPECT_EQ(animal["model"], "OU isotropic");
    EXPECT_NEAR(animal["h"].get<double>(), 0.951585954, 1e-8);
    EXPECT_NEAR(animal["bias"].get<double>(), 1.557186649, 1e-8);
    EXPECT_NEAR(animal["dof_area"].get<double>(), 3.282965, 1e-6);
    const double variance = 0.951585954 * 0.951585954 * 158353.7138;
    EXPECT_NEAR(animal["bandwidth_matrix"][0].get<double>(), variance, 1e-2);
    EXPECT_EQ(animal["bandwidth_matrix"][1], 0.0);
    EXPECT_EQ(animal["weights"], "uniform");
    const Json& isopleths = animal["isopleths"];
    ASSERT_EQ(isopleths.size(), 6U);
    EXPECT_EQ(isopleths[0]["bound"], "low");
    EXPECT_NEAR(isopleths[0]["area"].get<double>() / 627897, 1.0, 2e-4);
    EXPECT_NEAR(isopleths[1]["area"].get<double>() / 2769916, 1.0, 2e-4);
    EXPECT_NEAR(isopleths[2]["area"].get<double>() / 6471294, 1.0, 2e-4);
    EXPECT_EQ(animal["raster"], "K1");
    EXPECT_EQ(animal["files"].size(), 2U);
}

// What wxl kde tells of an animal is told here too, in the same order.
TEST(Akde, Json_has_the_keys_of_kde_and_its_own) {
    ScratchFolder folder;
    const std::string layer = make_layer(folder, fourteen_rows("a"));
    const Ran kde = run_wxl(
        {"kde", layer, "--id-field", "animal", "--out", (folder / "kde").string(), "--cell-size", "10", "--json"});
    ASSERT_EQ(kde.Code, 0) << kde.Err;
    std::vector<std::string> keys;
    const Json other = Json::parse(kde.Out)["animals"][0];
    for (const auto& [key, value] : other.items()) keys.push_back(key);
    for (const char* own :
         {"verdict", "model", "tau_position_s", "tau_velocity_s", "bandwidth_matrix", "h", "dof_bandwidth", "dof_area",
          "bias", "weights", "effective_weights", "zero_weights", "isopleths"})
        keys.push_back(own);
    const Ran ran = run_akde_on(layer, (folder / "out").string(), {"--json"});
    const Json animal = Json::parse(ran.Out)["animals"][0];
    std::vector<std::string> told;
    for (const auto& [key, value] : animal.items()) told.push_back(key);
    EXPECT_EQ(told, keys);
    EXPECT_EQ(animal["method"], "akde");
    EXPECT_TRUE(animal["reason"].is_null());
    EXPECT_EQ(animal["bandwidth"], animal["h"]);
    EXPECT_NEAR(animal["bandwidth_map_units"].get<double>(), 0.951585954 * std::sqrt(158353.7138), 1e-5);
    EXPECT_EQ(animal["reach"], 10.0);
    EXPECT_EQ(animal["edge_warning"], false);
    EXPECT_EQ(animal["status"], 0);
    EXPECT_EQ(animal["warnings"].size(), 2U);
}

TEST(Akde, Json_of_an_animal_without_a_range_says_why) {
    ScratchFolder folder;
    const Ran ran =
        run_akde_on(make_layer(folder, "b,500000,5800000,2020-01-01\n"), (folder / "out").string(), {"--json"});
    EXPECT_EQ(ran.Code, 1);
    const Json animal = Json::parse(ran.Out)["animals"][0];
    EXPECT_EQ(animal["reason"], "There is 1 fix of different times: at least 3 are needed.");
    EXPECT_EQ(animal["status"], 1);
    EXPECT_TRUE(animal["bandwidth_matrix"].is_null());
    EXPECT_EQ(animal["isopleths"].size(), 0U);
    EXPECT_NE(read_file(folder / "out/WXL_AKDE_SUMMARY.csv").find("b,1,"), std::string::npos);
}

TEST(Akde, Fixes_that_meet_a_condition) {
    ScratchFolder folder;
    const std::string layer = make_layer(folder, fourteen_rows("a") + fourteen_rows("b"));
    const Ran ran = run_akde_on(layer, (folder / "out").string(), {"--json", "--where", "animal = 'b'"});
    ASSERT_EQ(ran.Code, 0) << ran.Err;
    const Json json = Json::parse(ran.Out);
    ASSERT_EQ(json["animals"].size(), 1U);
    EXPECT_EQ(json["animals"][0]["id"], "b");
    const Ran none = run_akde_on(layer, (folder / "two").string(), {"--where", "animal = 'c'"});
    EXPECT_EQ(none.Code, 1);
    EXPECT_EQ(none.Err, "wxl: no fix meets --where animal = 'c'\n");
}

TEST(Akde, Full_extent_is_one_grid_for_all_animals) {
    ScratchFolder folder;
    std::string rows = fourteen_rows("a");
    std::string shifted = fourteen_rows("b");
    for (std::size_t at = shifted.find("b,500"); at != std::string::npos; at = shifted.find("b,500", at + 1))
        shifted.replace(at, 5, "b,502");
    for (std::size_t at = shifted.find("b,499"); at != std::string::npos; at = shifted.find("b,499", at + 1))
        shifted.replace(at, 5, "b,501");
    const std::string layer = make_layer(folder, rows + shifted);
    const Ran ran = run_akde_on(layer, (folder / "out").string(),
                                {"--json", "--extent", "full", "--cell-size", "20", "--raster-format", "gtiff"});
    ASSERT_EQ(ran.Code, 0) << ran.Err;
    const Json animals = Json::parse(ran.Out)["animals"];
    ASSERT_EQ(animals.size(), 2U);
    for (const char* key : {"columns", "rows", "cell_size", "origin"}) EXPECT_EQ(animals[0][key], animals[1][key]);
    // 4 x 0.951585954 x 397.936821 beyond -82, and beyond 538 + 2000
    EXPECT_EQ(animals[0]["origin"][0], 498400.0);
    EXPECT_EQ(animals[0]["columns"], (504060 - 498400) / 20);
    EXPECT_NEAR(animals[1]["isopleths"][1]["area"].get<double>() / 2769916, 1.0, 1e-3);
    const Ran buffered =
        run_akde_on(layer, (folder / "two").string(), {"--json", "--extent", "full:100", "--cell-size", "20"});
    EXPECT_EQ(Json::parse(buffered.Out)["animals"][0]["edge_warning"], true);
    EXPECT_NE(buffered.Err.find("% of the distribution lies on the raster; a larger one would show it whole\n"),
              std::string::npos);
}

// A density of 1e300 has no cell: the run fails after the old files could have been touched.
TEST(Akde, A_replacement_that_fails_leaves_the_old_files) {
    for (const char* format : {"grid", "gtiff"}) {
        ScratchFolder folder;
        const std::string layer = make_layer(folder, fourteen_rows("a"));
        const std::string out = (folder / "out").string();
        ASSERT_EQ(run_akde_on(layer, out, {"--raster-format", format, "--lines"}).Code, 0);
        const auto contents = [&] {
            std::map<std::string, std::string> files;
            for (const auto& entry : std::filesystem::recursive_directory_iterator(out))
                if (entry.is_regular_file() && entry.path().extension() != ".csv")
                    files[entry.path().string()] = read_file(entry.path());
            return files;
        };
        const auto before = contents();
        const Ran ran =
            run_akde_on(layer, out, {"--raster-format", format, "--lines", "--overwrite", "--scaling", "1e300"});
        EXPECT_EQ(ran.Code, 1);
        EXPECT_EQ(contents(), before) << format;
    }
}

TEST(Akde, Overwrite_replaces_a_raster_of_the_other_format_and_nothing_foreign) {
    ScratchFolder folder;
    const std::string layer = make_layer(folder, fourteen_rows("a"));
    const std::string out = (folder / "out").string();
    ASSERT_EQ(run_akde_on(layer, out, {"--lines"}).Code, 0);
    EXPECT_EQ(run_akde_on(layer, out, {"--raster-format", "gtiff", "--overwrite"}).Code, 0);
    EXPECT_EQ(names_in(out), (std::set<std::string>{"1.tif", "1_poly.cpg", "1_poly.dbf", "1_poly.prj", "1_poly.shp",
                                                    "1_poly.shx", "WXL_AKDE_SUMMARY.csv"}));
    const std::string other = (folder / "other").string();
    std::filesystem::create_directories(other + "/1");
    write_file(folder, "other/1/mine.txt", "kept");
    const Ran ran = run_akde_on(layer, other, {"--overwrite"});
    EXPECT_EQ(ran.Code, 1);
    EXPECT_NE(ran.Err.find("is no raster and is not replaced: choose another folder or prefix\n"), std::string::npos)
        << ran.Err;
    EXPECT_EQ(read_file(other + "/1/mine.txt"), "kept");
}

TEST(Akde, Names_that_are_taken_are_told_before_anything_is_computed) {
    ScratchFolder folder;
    const std::string layer = make_layer(folder, fourteen_rows("a"));
    const std::string out = (folder / "out").string();
    std::filesystem::create_directories(out);
    write_file(folder, "out/1_poly.dbf", "");
    const Ran ran = run_akde_on(layer, out);
    EXPECT_EQ(ran.Code, 1);
    EXPECT_EQ(ran.Err, "wxl: " + out + "/1_poly.dbf exists: choose another folder or prefix, or give --overwrite\n");
}

std::size_t count_of(const std::string& text, const std::string& part) {
    std::size_t count = 0;
    for (std::size_t at = text.find(part); at != std::string::npos; at = text.find(part, at + 1)) ++count;
    return count;
}

TEST(Akde, Page_of_three_animals) {
    ScratchFolder folder;
    const std::string layer =
        make_layer(folder, fourteen_rows("a") + fourteen_rows("<b> & c") + "d,500000,5800000,2020-01-01\n");
    const std::string out = (folder / "out").string();
    const Ran ran = run_akde_on(layer, out, {"--html", "--json", "--raster-format", "gtiff"});
    ASSERT_EQ(ran.Code, 0) << ran.Err;
    EXPECT_EQ(Json::parse(ran.Out)["page"], out + "/WXL_AKDE_ANALYSIS.html");
    const std::string html = read_file(out + "/WXL_AKDE_ANALYSIS.html");
    EXPECT_TRUE(html.starts_with("<!DOCTYPE html>\n")) << html.substr(0, 100);
    EXPECT_TRUE(html.ends_with("</html>\n"));
    EXPECT_EQ(count_of(html, "<article class=\"animal\""), 3U);
    EXPECT_EQ(count_of(html, "<svg class=\"map\""), 2U);
    EXPECT_EQ(count_of(html, "class=\"wxl-variogram\""), 2U);
    for (const char* part : {"http://www.w3.org/2000/svg\" id", "https://", "<link", "<b> & c", "nan", "inf"})
        EXPECT_EQ(count_of(html, part), 0U) << part;
    EXPECT_EQ(count_of(html, "<td class=\"num\">2.77</td><td class=\"num\">6.471</td></tr>"), 2U);
    EXPECT_EQ(count_of(html, "There is 1 fix of different times: at least 3 are needed."), 2U);
    EXPECT_EQ(count_of(html, "wxl akde " + layer + " --id-field animal --time-field Date,Time1 --out " + out +
                                 " --raster-format GTiff --isopleths 95,50 --html"),
              1U);
    // Six lines of two percentages on each of the two maps.
    EXPECT_EQ(count_of(html, "<use href=\"#map-1-l"), 12U);
}

TEST(Akde, Page_of_another_program_stays) {
    ScratchFolder folder;
    const std::string layer = make_layer(folder, fourteen_rows("a"));
    std::filesystem::create_directories(folder / "out");
    write_file(folder, "out/WXL_AKDE_ANALYSIS.html", "mine");
    const Ran ran = run_akde_on(layer, (folder / "out").string(), {"--html"});
    EXPECT_NE(ran.Err.find("WXL_AKDE_ANALYSIS.html is not a page of this tool and was left as it is; no page was "
                           "written.\n"),
              std::string::npos)
        << ran.Err;
    EXPECT_EQ(read_file(folder / "out/WXL_AKDE_ANALYSIS.html"), "mine");
}

// The table, the layer that wxl import makes of it, and the same with its fields named are one analysis.
TEST(Akde, A_tracking_file_is_imported_on_the_way) {
    ScratchFolder folder;
    std::string rows = "animal,lon,lat,timestamp\n";
    for (int i = 0; i < 40; ++i)
        rows += fmt::format("a,{},{},2020-01-{:02d} 0{}:00:00\n", 15.0 + 0.001 * ((i * 7) % 11),
                            52.0 + 0.001 * ((i * 5) % 13), 1 + i / 4, 2 * (i % 4));
    const std::string csv = write_file(folder, "track.csv", rows);
    const std::string layer = (folder / "track.shp").string();
    ASSERT_EQ(run_wxl({"import", csv, layer}).Code, 0);
    const auto isopleths = [&](const std::string& input, const std::string& out, std::vector<std::string> more) {
        std::vector<std::string> call{"akde", input, "--out", (folder / out).string(), "--json"};
        call.insert(call.end(), more.begin(), more.end());
        const Ran ran = run_wxl(call);
        EXPECT_EQ(ran.Code, 0) << ran.Err;
        return Json::parse(ran.Out)["animals"][0]["isopleths"];
    };
    const Json expected = isopleths(layer, "one", {"--id-field", "animal", "--time-field", "Date,Time1"});
    EXPECT_EQ(isopleths(csv, "two", {}), expected);
    EXPECT_EQ(isopleths(layer, "three", {}), expected);
    EXPECT_EQ(isopleths(csv, "four", {"--id-field", "animal", "--time-field", "timestamp"}), expected);
    EXPECT_EQ(Json::parse(run_wxl({"models", csv, "--json"}).Out)[0]["n"], 40);
}

TEST(Akde, Fields_that_cannot_be_found_are_asked_for) {
    ScratchFolder folder;
    const std::string file = write_file(
        folder, "p.geojson",
        R"({"type":"FeatureCollection","crs":{"type":"name","properties":{"name":"EPSG:32633"}},"features":[{"type":)"
        R"("Feature","properties":{"animal":"a","when":"2020-01-01"},"geometry":{"type":"Point","coordinates":[5e5,5e6]}}]})");
    const Ran ran = run_wxl({"akde", file, "--id-field", "animal", "--out", (folder / "out").string()});
    EXPECT_EQ(ran.Code, 1);
    EXPECT_EQ(ran.Err,
              "wxl: " + file + ": which field holds the time? Name it by --time-field; the fields are: animal, when\n");
}

TEST(Akde, Outlines_have_the_areas_that_are_told) {
    ScratchFolder folder;
    const std::string out = (folder / "out").string();
    ASSERT_EQ(run_akde_on(make_layer(folder, fourteen_rows("a")), out).Code, 0);
    const auto polygons = files::OgrFeatureClass::Open(out + "/1_poly.shp");
    EXPECT_EQ(polygons->FeatureCount(), 6);
    platform::ITable& table = polygons->Table();
    const int area = table.FindField("AREA");
    const int bound = table.FindField("BOUND");
    const int percent = table.FindField("PERCENT");
    ASSERT_GE(std::min({area, bound, percent}), 0);
    const auto cursor = polygons->Find({});
    std::string bounds;
    while (const auto feature = cursor->NextFeature()) {
        const double told = platform::ValueNumber(feature->Value(area));
        EXPECT_NEAR(isopleths::area_of(feature->Shape()) / told, 1.0, 6e-3);  // a contour goes between cells
        bounds += platform::ValueText(feature->Value(bound)) + platform::ValueText(feature->Value(percent)) + " ";
    }
    EXPECT_EQ(bounds, "high95 est95 high50 est50 low95 low50 ");
}

TEST(Akde, Optimal_weights_on_the_grid_of_another_raster) {
    ScratchFolder folder;
    const std::string layer = make_layer(folder, fourteen_rows("a"));
    const std::string out = (folder / "out").string();
    ASSERT_EQ(run_akde_on(layer, out, {"--raster-format", "gtiff"}).Code, 0);
    const Ran ran = run_akde_on(layer, (folder / "two").string(),
                                {"--json", "--weights", "optimal", "--extent", "ref:" + out + "/1.tif", "--lines",
                                 "--at", "OU:isotropic:22123.2171"});
    ASSERT_EQ(ran.Code, 0) << ran.Err;
    const Json animal = Json::parse(ran.Out)["animals"][0];
    EXPECT_NEAR(animal["h"].get<double>(), 0.943490034, 1e-8);
    EXPECT_NEAR(animal["isopleths"][1]["area"].get<double>() / 2797553, 1.0, 2e-4);
    EXPECT_EQ(animal["cell_size"], 10.0);
    EXPECT_EQ(animal["files"].size(), 3U);
}

TEST(Akde, Earlier_results_stay_unless_they_may_go) {
    ScratchFolder folder;
    const std::string layer = make_layer(folder, fourteen_rows("a"));
    const std::string out = (folder / "out").string();
    ASSERT_EQ(run_akde_on(layer, out).Code, 0);
    const Ran again = run_akde_on(layer, out);
    EXPECT_EQ(again.Code, 1);
    EXPECT_EQ(again.Err.find(out + "/1"), again.Err.find(out)) << again.Err;
    EXPECT_EQ(run_akde_on(layer, out, {"--overwrite"}).Code, 0);
}

TEST(Akde, An_animal_that_fails_does_not_stop_the_others) {
    ScratchFolder folder;
    const std::string layer =
        make_layer(folder, fourteen_rows("a") + "b,500000,5800000,2020-01-01\nb,500001,5800000,2020-01-02\n");
    const Ran ran = run_akde_on(layer, (folder / "out").string());
    EXPECT_EQ(ran.Code, 0);
    EXPECT_NE(ran.Out.find("b: failed (There are 2 fixes of different times: at least 3 are needed.)\n"),
              std::string::npos)
        << ran.Out;
    EXPECT_NE(ran.Err.find("wxl: 1 of 2 distributions could not be computed\n"), std::string::npos) << ran.Err;
}

TEST(Akde, Wrong_values_are_wrong_calls) {
    const auto code = [](const std::vector<std::string>& more) { return run_akde_on("none.shp", "out", more).Code; };
    EXPECT_EQ(code({"--isopleths", "95,100"}), 2);
    EXPECT_EQ(code({"--isopleths", ""}), 2);
    EXPECT_EQ(code({"--cell-size", "0"}), 2);
    EXPECT_EQ(code({"--scaling", "-1"}), 2);
    EXPECT_EQ(code({"--extent", "whole"}), 2);
    EXPECT_EQ(code({"--extent", "full:x"}), 2);
    EXPECT_EQ(code({"--prefix", "a/b"}), 2);
    EXPECT_EQ(code({"--weights", "some"}), 2);
    EXPECT_EQ(code({"--at", "OU"}), 2);
}

// 5000 m of kernels in cells of a millimetre.
TEST(Akde, Too_many_cells_are_refused_with_advice) {
    ScratchFolder folder;
    const Ran ran =
        run_akde_on(make_layer(folder, fourteen_rows("a")), (folder / "out").string(), {"--cell-size", "0.001"});
    EXPECT_EQ(ran.Code, 1);
    EXPECT_NE(ran.Err.find("more than 50 million: give a larger cell size\n"), std::string::npos) << ran.Err;
}

}  // namespace
}  // namespace wxl::cli
