#include "adapters/disk/disk_file_system.h"
#include "adapters/disk/folder_lock.h"
#include "adapters/disk/system_clock.h"
#include "adapters/gdal/gdal_support.h"
#include "adapters/raster/raster_dataset.h"
#include "tests/support/scratch_folder.h"
#include "tests/unit/cli/captured_console.h"
#include "tests/unit/cli/package_rows.h"

#include <array>
#include <fstream>
#include <gmock/gmock.h>
#include <iterator>
#include <map>
#include <nlohmann/json.hpp>
#include <ogrsf_frmts.h>

namespace wxl::cli {
namespace {

namespace fs = std::filesystem;
using nlohmann::json;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;

std::string content(const fs::path& file) {
    std::ifstream in(file, std::ios::binary);
    return {std::istreambuf_iterator<char>(in), {}};
}

/// Points in metres (UTM 33N): animal 3 at four corners of a square of side 200, animal 7 with five fixes, animal 9
/// with one fix.
struct KdeCommand : testing::Test {
    tests::ScratchFolder Folder;
    const std::string Points = Folder / "points.shp";
    const std::string Out = Folder / "out";

    KdeCommand() {
        Import("points",
               "a,x,y\n3,1000,500\n3,1200,500\n3,1000,700\n3,1200,700\n"
               "7,1900,800\n7,1500,600\n7,1600,750\n7,1700,650\n7,1640,780\n");
    }

    void Import(const std::string& name, const std::string& csv, const std::string& crs = "EPSG:32633") {
        std::ofstream(Folder / (name + ".csv")) << csv;
        const Ran ran = run_wxl({"import", Folder / (name + ".csv"), Folder / (name + ".shp"), "--id", "a", "--x", "x",
                                 "--y", "y", "--from-crs", crs, "--to-crs", crs});
        ASSERT_EQ(ran.Code, 0) << ran.Err;
    }

    Ran Kde(std::vector<std::string> more) const { return KdeOf(Points, Out, std::move(more)); }

    static Ran KdeOf(const std::string& layer, const std::string& out, std::vector<std::string> more) {
        std::vector<std::string> arguments = {"kde", layer, "--id-field", "animal", "--out", out};
        arguments.insert(arguments.end(), more.begin(), more.end());
        return run_wxl(arguments);
    }

    std::string Report() const { return content(fs::path(Out) / "WXL_KDE_ANALYSIS.txt"); }
    bool Stands(const std::string& name) const { return fs::exists(fs::path(Out) / name); }
};

TEST_F(KdeCommand, Writes_rasters_isopleths_and_a_report_and_says_where) {
    const Ran ran =
        Kde({"--cell-size", "20", "--prefix", "K", "--extent", "min", "--isopleths", "95,50", "--polygons"});
    EXPECT_EQ(ran.Code, 0) << ran.Err;
    EXPECT_THAT(ran.Out, StartsWith("3: 4 fixes, bandwidth 91.6486, 46 x 46 cells: " + Out + "/K1, 95 %: "));
    EXPECT_THAT(ran.Out, HasSubstr(" km2\n7: 5 fixes, bandwidth "));
    EXPECT_THAT(ran.Out, HasSubstr("\nreport: " + Out + "/WXL_KDE_ANALYSIS.txt\n"));
    EXPECT_TRUE(Stands("K1/hdr.adf") && Stands("K2/hdr.adf") && Stands("K1_iso_poly.shp") && Stands("K2_iso_poly.shp"));
    EXPECT_TRUE(Stands("WXL_KERNEL_SETTINGS.txt"));
    EXPECT_FALSE(Stands(".wxl_run.lock"));
    EXPECT_THAT(Report(), HasSubstr("\r\nUnique ID field: animal\r\n"));
}

TEST_F(KdeCommand, Condition_chooses_its_animal_where_row_numbers_repeat) {
    const std::string points = Folder / "points.geojson";
    std::ofstream(points) << R"({"type":"FeatureCollection","crs":{"type":"name","properties":)"
                             R"({"name":"urn:ogc:def:crs:EPSG::32633"}},"features":[)";
    const std::array<std::array<int, 2>, 4> corners = {{{0, 0}, {200, 0}, {0, 200}, {200, 200}}};
    std::ofstream more(points, std::ios::app);
    for (int i = 0; i < 8; ++i)
        more << (i == 0 ? "" : ",") << R"({"type":"Feature","properties":{"id":)" << i % 4 << R"(,"name":")"
             << (i < 4 ? "Arn" : "Zoe") << R"("},"geometry":{"type":"Point","coordinates":[)"
             << (i < 4 ? 1000 : 500000) + corners[static_cast<std::size_t>(i % 4)][0] << ","
             << 500 + corners[static_cast<std::size_t>(i % 4)][1] << "]}}";
    more << "]}";
    more.close();
    const Ran ran = run_wxl({"kde", points, "--id-field", "name", "--out", Out, "--cell-size", "20", "--extent", "min",
                             "--where", "name = 'Zoe'", "--json"});
    ASSERT_EQ(ran.Code, 0) << ran.Err;
    const json animals = json::parse(ran.Out)["animals"];
    ASSERT_EQ(animals.size(), 1U);
    EXPECT_EQ(animals[0]["id"], "Zoe");
    EXPECT_EQ(animals[0]["n"], 4);
    // HREF of a square of side 200 is 91.6486...: four of them on either side of 500000.
    EXPECT_NEAR(animals[0]["origin"][0].get<double>(), 500000.0 - 4.0 * 91.6486, 0.001);
}

TEST_F(KdeCommand, Json_is_one_object_with_an_entry_per_distribution) {
    const Ran ran = Kde({"--cell-size", "20", "--bandwidth", "60,100", "--isopleths", "95,50", "--polygons", "--lines",
                         "--extent", "full:500", "--json", "--rescale"});
    ASSERT_EQ(ran.Code, 0) << ran.Err;
    const json result = json::parse(ran.Out);
    EXPECT_EQ(result["report"], Out + "/WXL_KDE_ANALYSIS.txt");
    EXPECT_EQ(result["settings"], Out + "/WXL_KERNEL_SETTINGS.txt");
    ASSERT_EQ(result["animals"].size(), 4U);
    const json& first = result["animals"][0];
    EXPECT_EQ(first["id"], "3");
    EXPECT_EQ(first["naming_id"], "1");
    EXPECT_EQ(first["n"], 4);
    EXPECT_EQ(first["method"], "manual");
    // Unit variance: both standard deviations are sqrt(40000 / 3), and 60 map units are 60 / 115.470... of them.
    EXPECT_NEAR(first["bandwidth"].get<double>(), 0.519615242270663, 1e-12);
    EXPECT_NEAR(first["bandwidth_map_units"].get<double>(), 60.0, 1e-9);
    EXPECT_TRUE(first["href"].is_null());
    EXPECT_TRUE(first["minimised"].is_null());
    // Int((900 + 1000) / 20) columns and Int((300 + 1000) / 20) rows.
    EXPECT_EQ(first["columns"], 95);
    EXPECT_EQ(first["rows"], 65);
    EXPECT_EQ(first["cell_size"], 20.0);
    EXPECT_EQ(first["origin"], json::array({500.0, 0.0}));
    EXPECT_NEAR(first["volume"].get<double>(), 1e6, 1e3);
    EXPECT_EQ(first["raster"], "1_b1");
    ASSERT_EQ(first["levels"].size(), 2U);
    EXPECT_EQ(first["levels"][0]["percent"], 95.0);
    EXPECT_GT(first["levels"][0]["area"].get<double>(), first["levels"][1]["area"].get<double>());
    EXPECT_LT(first["levels"][0]["level"].get<double>(), first["levels"][1]["level"].get<double>());
    EXPECT_TRUE(first["max_edge_value"].is_number());
    EXPECT_EQ(first["edge_warning"], false);
    EXPECT_EQ(first["status"], 0);
    EXPECT_EQ(first["isopleth_status"], 0);
    EXPECT_EQ(first["warnings"], json::array());
    EXPECT_EQ(first["files"], json::array({Out + "/1_b1", Out + "/1_b1_iso_line.shp", Out + "/1_b1_iso_poly.shp"}));
    EXPECT_EQ(result["animals"][3]["raster"], "2_b2");
    const std::string methods = result["methods"]["text"];
    EXPECT_THAT(methods,
                StartsWith("We estimated the home ranges of 2 animals from 9 fixes (median 4.5, range 4 to 5 per "
                           "animal)."));
    EXPECT_THAT(methods, HasSubstr(" The bandwidth was set to 60 m and 100 m."));
    EXPECT_THAT(methods, HasSubstr(" Computed with WXL Tools "));
    EXPECT_THAT(result["methods"]["references"].dump(), HasSubstr("Laver, P. N. and M. J. Kelly 2008."));
}

// Animal 3: a square of side 200. Animal 7: all five fixes are corners, and the shoelace gives 33500. The distances
// from their mean (1668, 716) are 69.857, 73.348, 76.026, 204.157 and 246.739; the quantile at 60 % is 76.026 + 0.4 x
// 128.131, and the three fixes within it, (1600,750) (1700,650) (1640,780), have an area of 3500.
TEST_F(KdeCommand, Minimum_convex_polygons_stand_in_one_layer_in_json_and_in_the_summary) {
    const Ran ran = Kde({"--cell-size", "20", "--prefix", "K", "--extent", "min", "--bandwidth", "60,100", "--mcp",
                         "100,60", "--json"});
    ASSERT_EQ(ran.Code, 0) << ran.Err;
    const json result = json::parse(ran.Out);
    ASSERT_EQ(result["animals"].size(), 4U);
    for (const std::size_t value : {0U, 1U})
        EXPECT_EQ(result["animals"][value]["mcp"],
                  json::parse(R"([{"percent":100.0,"area":40000.0,"n":4,"status":"ok"},)"
                              R"({"percent":60.0,"area":40000.0,"n":4,"status":"ok"}])"));
    EXPECT_EQ(result["animals"][2]["mcp"][0], json::parse(R"({"percent":100.0,"area":33500.0,"n":5,"status":"ok"})"));
    EXPECT_EQ(result["animals"][2]["mcp"][1], json::parse(R"({"percent":60.0,"area":3500.0,"n":3,"status":"ok"})"));
    const std::string summary = content(fs::path(Out) / "WXL_KDE_SUMMARY.csv");
    EXPECT_THAT(summary, HasSubstr("\r\n3,1,4,mcp,,,,,100,,40000,0.04,,,K1_b1,0,4,,,,,0.005375,0.002684\r\n3,1,4,mcp,,,"
                                   ",,60,,40000,0.04,,,K1_b1,0,4,,,,,0.005375,0.002684\r\n"
                                   "3,1,4,manual,100,"));
    const Ran mcp =
        run_wxl({"mcp", Points, "--id-field", "animal", "--percent", "100,60", "--out", Folder / "mcp.shp"});
    ASSERT_EQ(mcp.Code, 0) << mcp.Err;
    for (const char* part : {".shp", ".shx", ".dbf", ".prj"})
        EXPECT_EQ(content(fs::path(Out) / (std::string("Kmcp") + part)), content(Folder / (std::string("mcp") + part)))
            << part;
}

TEST_F(KdeCommand, Layer_of_polygons_is_neither_lost_nor_read_and_written) {
    const std::vector<std::string> call = {"--cell-size", "20", "--extent", "min", "--mcp", "100"};
    const Ran first = Kde(call);
    EXPECT_THAT(first.Err, HasSubstr("3: 4 fixes are too few for a polygon that says anything\n"));
    EXPECT_THAT(first.Err, Not(HasSubstr("7: 5 fixes are")));
    EXPECT_THAT(first.Out, HasSubstr(" cells: " + Out + "/1, MCP 100 %: 0.04 km2\n"));
    EXPECT_THAT(first.Out, HasSubstr("\nminimum convex polygons: " + Out + "/mcp.shp\n"));
    fs::remove_all(fs::path(Out) / "1");
    fs::remove_all(fs::path(Out) / "2");
    const Ran taken = Kde(call);
    EXPECT_EQ(taken.Code, 1);
    EXPECT_THAT(taken.Err, HasSubstr("mcp.shp"));
    std::vector<std::string> again = call;
    again.emplace_back("--overwrite");
    EXPECT_EQ(Kde(again).Code, 0);
    EXPECT_TRUE(Stands("mcp.shp"));
    Import("mcp", "a,x,y\n3,1000,500\n3,1200,500\n3,1000,700\n");
    const std::string before = content(Folder / "mcp.shp");
    const Ran reads = run_wxl({"kde", Folder / "mcp.shp", "--id-field", "animal", "--out", Folder.Path().string(),
                               "--cell-size", "20", "--mcp", "100", "--overwrite"});
    EXPECT_EQ(reads.Code, 1);
    EXPECT_EQ(content(Folder / "mcp.shp"), before);
}

// Four corners, then fixes inside: from the first number that is looked at, five, the area is that of the square. In
// another order the fixes have no curve.
TEST_F(KdeCommand, Area_curve_and_its_asymptote_are_told_where_fixes_are_in_the_order_of_time) {
    std::string rows =
        "animal,x,y,timestamp\na,1000,500,2024-01-01\na,1200,500,2024-01-02\na,1000,700,2024-01-03\n"
        "a,1200,700,2024-01-04\n";
    for (int day = 5; day < 30; ++day)
        rows += "a," + std::to_string(1050 + 3 * day) + "," + std::to_string(600 + day % 7) + ",2024-01-" +
                (day < 10 ? "0" : "") + std::to_string(day) + "\n";
    std::ofstream(Folder / "timed.csv") << rows;
    ASSERT_EQ(run_wxl({"import", Folder / "timed.csv", Folder / "timed.shp", "--from-crs", "EPSG:32633"}).Code, 0);
    const Ran ran = KdeOf(Folder / "timed.shp", Out, {"--cell-size", "20", "--extent", "min", "--html", "--json"});
    ASSERT_EQ(ran.Code, 0) << ran.Err;
    const json result = json::parse(ran.Out);
    EXPECT_EQ(result["animals"][0]["asymptote"], json::parse(R"({"n":5,"reached":true})"));
    const std::string page = content(fs::path(Out) / "WXL_KDE_ANALYSIS.html");
    EXPECT_THAT(page,
                HasSubstr("<figcaption>From 5 fixes on, every area lies within 5 % of the last. Fixes that follow each "
                          "other are seldom independent"));
    EXPECT_THAT(std::string(result["methods"]["text"]),
                HasSubstr("with a tenth of the fixes to follow, for 1 of 1 animal."));
    EXPECT_THAT(std::string(result["methods"]["text"]),
                HasSubstr(" Tracking lasted from 2024-01-01 to 2024-01-29 (UTC), for 28 days per animal"));
    const Ran untimed = Kde({"--cell-size", "20", "--extent", "min", "--json", "--prefix", "U"});
    EXPECT_TRUE(json::parse(untimed.Out)["animals"][0]["asymptote"].is_null());
}

TEST_F(KdeCommand, Percentages_of_polygons_are_checked) {
    EXPECT_THAT(Kde({"--cell-size", "20", "--mcp", "95,x"}).Err, HasSubstr("--mcp: \"x\" is not a percentage above 0"));
    EXPECT_THAT(Kde({"--cell-size", "20", "--mcp", "101"}).Err, HasSubstr("--mcp: 101 is above 100 %"));
}

TEST_F(KdeCommand, Polygons_of_a_batch_are_those_of_one_run) {
    const std::vector<std::string> call = {"--cell-size", "20",          "--extent", "min",       "--mcp",
                                           "100,60",      "--isopleths", "95",       "--polygons"};
    ASSERT_EQ(Kde(call).Code, 0);
    const std::string summary = content(fs::path(Out) / "WXL_KDE_SUMMARY.csv");
    const std::string other = Folder / "batch";
    std::vector<std::string> plan = {"batch", "plan", Points, "--id-field", "animal", "--out", other, "--tasks", "2"};
    plan.insert(plan.end(), call.begin(), call.end());
    ASSERT_EQ(run_wxl(plan).Code, 0);
    ASSERT_EQ(run_wxl({"batch", "run", other, "--task", "1"}).Code, 0);
    ASSERT_EQ(run_wxl({"batch", "run", other, "--task", "2"}).Code, 0);
    ASSERT_EQ(run_wxl({"batch", "merge", other}).Code, 0);
    EXPECT_EQ(content(fs::path(other) / "WXL_KDE_SUMMARY.csv"), summary);
    for (const char* part : {"mcp.shp", "mcp.dbf"})
        EXPECT_EQ(content(fs::path(other) / part), content(fs::path(Out) / part)) << part;
}

/// Animal 1: two clusters of five fixes, 400 m apart. Animal 2: nine fixes, and one 40 km off: 6.6 times HREF, where
/// two normal densities of nine to one part at 4.3 times. Animal 3: two fixes at one place.
std::string clusters() {
    std::string rows = "a,x,y\n3,500000,0\n3,500000,0\n2,540000,0\n";
    const auto add = [&](const std::string& animal, int x, int y) {
        rows += animal + "," + std::to_string(x) + "," + std::to_string(y) + "\n";
    };
    for (const int x : {0, 400})
        for (const auto& [dx, dy] : {std::pair(0, 0), {40, 0}, {0, 40}, {-40, 0}, {0, -40}})
            add("1", 500000 + x + dx, dy);
    for (const int dx : {-40, 0, 40})
        for (const int dy : {-40, 0, 40}) add("2", 500000 + dx, dy);
    return rows;
}

TEST_F(KdeCommand, Ad_hoc_bandwidth_is_the_smallest_that_leaves_the_range_whole) {
    Import("clusters", clusters());
    const std::string layer = Folder / "clusters.shp";
    const Ran ran = KdeOf(layer, Out,
                          {"--cell-size", "5", "--bandwidth", "adhoc", "--extent", "min", "--json", "--where",
                           "animal <> '2'", "--answer", "overlap=yes", "--isopleths", "95", "--polygons", "--html"});
    ASSERT_EQ(ran.Code, 0) << ran.Err;
    const json found = json::parse(ran.Out)["animals"][0];
    EXPECT_EQ(found["method"], "adhoc");
    EXPECT_EQ(found["adhoc"]["status"], "ok");
    const double proportion = found["adhoc"]["proportion"];
    EXPECT_LT(proportion, 1.0);
    EXPECT_DOUBLE_EQ(found["bandwidth_map_units"].get<double>(), proportion * found["href"].get<double>());
    EXPECT_DOUBLE_EQ(found["reach"].get<double>(), 4.0);
    EXPECT_EQ(found["adhoc"]["trace"][0], json::parse(R"({"proportion":1.0,"parts":1,"holes":0})"));
    EXPECT_TRUE(found["reason"].is_null());
    // The comparison of ranges asks the same rule of the same cells.
    const Ran overlap = run_wxl({"overlap", layer, "--id-field", "animal", "--where", "animal = '1'", "--bandwidth",
                                 "adhoc", "--cell-size", "5", "--json"});
    EXPECT_DOUBLE_EQ(json::parse(overlap.Out)["animals"][0]["bandwidth"].get<double>(),
                     found["bandwidth_map_units"].get<double>());
    const json none = json::parse(ran.Out)["animals"][1];
    EXPECT_EQ(none["adhoc"], json::parse(R"({"status":"no bandwidth","proportion":null,"cell_size":5.0,"trace":[]})"));
    EXPECT_EQ(none["reason"], "all 2 fixes lie at one place");
    EXPECT_THAT(Report(),
                HasSubstr("Bandwidth estimtor: ad hoc, smallest proportion of HREF with the 95 % range in 1 part\r\n"));
    const std::string page = content(fs::path(Out) / "WXL_KDE_ANALYSIS.html");
    EXPECT_THAT(
        page, HasSubstr(" × HREF, " + std::to_string(found["adhoc"]["trace"].size()) + " proportions tried</summary>"));
    EXPECT_THAT(page, HasSubstr(" --bandwidth adhoc "));
    EXPECT_THAT(content(fs::path(Out) / "WXL_KDE_SUMMARY.csv"), HasSubstr("\r\n1,1,10,adhoc,"));
}

TEST_F(KdeCommand, Ad_hoc_bandwidth_of_a_range_in_parts_is_left_to_the_user) {
    Import("clusters", clusters());
    const auto ask = [&](const std::string& bandwidth, const std::string& out) {
        const Ran ran = KdeOf(
            Folder / "clusters.shp", Folder / out,
            {"--cell-size", "500", "--extent", "min", "--json", "--where", "animal = '2'", "--bandwidth", bandwidth});
        return json::parse(ran.Out)["animals"][0];
    };
    const json one = ask("adhoc", "one");
    EXPECT_EQ(one["adhoc"]["status"], "in parts at the reference bandwidth");
    EXPECT_EQ(one["adhoc"]["proportion"], 1.0);
    EXPECT_EQ(one["bandwidth"], one["href"]);
    EXPECT_EQ(one["reason"], "the 95 % range is in 2 parts at HREF already, which is kept: it is for you to decide");
    const json two = ask("ADHOC:2", "two");
    EXPECT_EQ(two["adhoc"]["status"], "whole down to the cell size");
    EXPECT_LT(two["adhoc"]["proportion"], 1.0);
    EXPECT_EQ(two["reason"],
              "the 95 % range stays whole down to the cell size: a smaller one lets the bandwidth shrink further");
}

TEST_F(KdeCommand, Ad_hoc_bandwidth_is_for_fixed_kernels_and_whole_numbers_of_parts) {
    EXPECT_EQ(Kde({"--cell-size", "20", "--bandwidth", "adhoc", "--adaptive"}).Err,
              "wxl: --bandwidth adhoc is for fixed kernels of coordinates as they are: leave out --adaptive and "
              "--rescale\n");
    EXPECT_THAT(Kde({"--cell-size", "20", "--bandwidth", "adhoc:0"}).Err,
                HasSubstr("--bandwidth: \"0\" is not a number of parts from 1 to 1000"));
    EXPECT_THAT(Kde({"--cell-size", "20", "--bandwidth", "adhoc:1.5"}).Err, HasSubstr("\"1.5\" is not a number"));
    const Ran dry = Kde({"--cell-size", "20", "--bandwidth", "adhoc", "--extent", "min", "--dry-run"});
    EXPECT_THAT(dry.Out, HasSubstr("bandwidth by a search (planned with HREF)"));
}

// Eight places 1,000 apart with four fixes each; 17 of the 32 fixes are 12.5 m off.
TEST_F(KdeCommand, The_page_advises_by_the_parts_of_the_range_and_the_error_of_the_positions) {
    const std::string table = Folder / "places.csv";
    std::ofstream file(table);
    file << "animal,x,y,eobs:horizontal-accuracy-estimate\n";
    for (int i = 0; i < 32; ++i)
        file << "a," << i % 8 * 1000 + i / 8 * 13 << "," << i % 2 * 1000 + i / 8 * 7 << "," << (i < 17 ? 12.5 : 3)
             << "\n";
    file.close();
    const auto advice = [&](const std::string& bandwidth) {
        run_wxl({"kde", table, "--from-crs", "EPSG:32633", "--no-time", "--out", Out, "--bandwidth", bandwidth,
                 "--cell-size", "5", "--isopleths", "50,95", "--overwrite"});
        return content(fs::path(Out) / "WXL_KDE_ANALYSIS.html");
    };
    EXPECT_THAT(advice("20"), HasSubstr("<p class=\"advice\">If you do not know which method to take: "));
    EXPECT_THAT(advice("20"),
                HasSubstr("; with the bandwidth of this run its 95 % range is in 8 parts, often a sign of "
                          "too small a bandwidth (Kie 2013).</p>"));
    EXPECT_THAT(
        advice("10"),
        HasSubstr("; the bandwidth of this run, 10 m, is smaller than the error of its positions (median 12.5 m, "
                  "from eobs:horizontal-accuracy-estimate), and finer detail is error, not use of space (Moser "
                  "and Garton 2007).</p>"));
}

TEST_F(KdeCommand, Search_results_say_whether_they_were_minimised) {
    const Ran ran = Kde({"--cell-size", "5", "--bandwidth", "lscv", "--extent", "min", "--json"});
    ASSERT_EQ(ran.Code, 0) << ran.Err;
    const json result = json::parse(ran.Out);
    ASSERT_EQ(result["animals"].size(), 2U);
    for (const json& animal : result["animals"]) {
        EXPECT_EQ(animal["method"], "lscv");
        EXPECT_TRUE(animal["minimised"].is_boolean());
        EXPECT_EQ(animal["warnings"].empty(), animal["minimised"].get<bool>());
        EXPECT_TRUE(animal["max_edge_value"].is_null());
    }
}

TEST_F(KdeCommand, Wrong_calls_end_with_2_and_write_nothing) {
    const std::vector<std::vector<std::string>> calls = {
        {"--cell-size", "0.5"},
        {"--cell-size", "ten"},
        {"--cell-size", "20", "--bandwidth", "narrow"},
        {"--cell-size", "20", "--bandwidth", "100,"},
        {"--cell-size", "20", "--bandwidth", "prop:-1"},
        {"--cell-size", "20", "--extent", "wide"},
        {"--cell-size", "20", "--extent", "full:x"},
        {"--cell-size", "20", "--isopleths", "95,x", "--lines"},
        {"--cell-size", "20", "--isopleths", "101", "--lines"},
        {"--cell-size", "20", "--isopleths", "95"},
        {"--cell-size", "20", "--scaling", "0"},
        {"--cell-size", "20", "--raster-format", "PNG"},
        {"--cell-size", "20", "--answer", "perhaps"},
        {"--cell-size", "20", "--prefix", "w*"},
        {"--cell-size", "20", "--prefix", "../w"},
        {"--cell-size", "20", "--prefix", "a/b"},
        {"--cell-size", "20", "--prefix", "w:"},
        {"--cell-size", "20", "--prefix", " w"},
        {"--cell-size", "20", "--prefix", "w\t"},
        {"--cell-size", "20", "--prefix", "w*", "--dry-run"},
    };
    for (const auto& call : calls) {
        const Ran ran = Kde(call);
        EXPECT_EQ(ran.Code, 2) << testing::PrintToString(call);
        EXPECT_EQ(ran.Out, "") << testing::PrintToString(call);
        EXPECT_NE(ran.Err, "") << testing::PrintToString(call);
        EXPECT_FALSE(fs::exists(Out)) << testing::PrintToString(call);
    }
}

TEST_F(KdeCommand, A_prefix_that_no_name_can_hold_is_refused_before_anything_runs) {
    ASSERT_EQ(Kde({"--cell-size", "20", "--extent", "min"}).Code, 0);
    const std::string report = Report();
    const std::string settings = Folder / "starred.txt";
    std::ofstream(settings, std::ios::binary) << "[PREFIX]\r\nW*\r\n\r\n";
    for (const std::vector<std::string>& more :
         {std::vector<std::string>{"--prefix", "w*"}, {"--settings", settings}, {"--prefix", "w*", "--jobs", "2"}}) {
        std::vector<std::string> call = {"--cell-size", "20", "--extent", "min"};
        call.insert(call.end(), more.begin(), more.end());
        const Ran ran = Kde(call);
        EXPECT_EQ(ran.Code, 2) << ran.Err;
        EXPECT_THAT(ran.Err,
                    testing::MatchesRegex("wxl: --prefix: The output name \"[wW].0\" holds a wildcard or quote. "
                                          "Please choose another prefix or name.\n"));
        EXPECT_EQ(Report(), report);
    }
}

TEST_F(KdeCommand, Keywords_are_taken_in_any_case) {
    const auto plan = [&](const std::string& bandwidth, const std::string& extent) {
        const Ran ran = Kde({"--cell-size", "20", "--bandwidth", bandwidth, "--extent", extent, "--dry-run", "--json"});
        EXPECT_EQ(ran.Code, 0) << bandwidth << " " << extent << ": " << ran.Err;
        return ran.Out.substr(0, ran.Out.find("seconds"));
    };
    EXPECT_EQ(plan("HREF", "MIN"), plan("href", "min"));
    EXPECT_EQ(plan("Lscv", "Full"), plan("lscv", "full"));
    EXPECT_EQ(plan("BCV", "FULL:100"), plan("bcv", "full:100"));
    EXPECT_EQ(plan("PROP:0.5,1E0", "full"), plan("prop:0.5,1E0", "full"));
    const std::string raster = Folder / "Ref.asc";
    std::ofstream(raster) << "ncols 60\nnrows 30\nxllcorner 500\nyllcorner 0\ncellsize 50\nNODATA_value -1\n"
                          << [] {
                                 std::string rows;
                                 for (int i = 0; i < 30 * 60; ++i) rows += i % 60 == 59 ? "1\n" : "1 ";
                                 return rows;
                             }();
    EXPECT_EQ(plan("href", "REF:" + raster), plan("href", "ref:" + raster));
    EXPECT_THAT(Kde({"--cell-size", "20", "--bandwidth", "NARROW"}).Err, HasSubstr("\"NARROW\""));
}

TEST_F(KdeCommand, Inputs_that_cannot_be_used_end_with_1_and_advice) {
    Ran ran = run_wxl({"kde", Folder / "absent.shp", "--id-field", "animal", "--out", Out, "--cell-size", "20"});
    EXPECT_EQ(ran.Code, 1);
    EXPECT_THAT(ran.Err, HasSubstr("absent.shp"));
    ran = run_wxl({"kde", Points, "--id-field", "wolf", "--out", Out, "--cell-size", "20"});
    EXPECT_EQ(ran.Code, 1);
    EXPECT_THAT(ran.Err, HasSubstr("animal"));
    EXPECT_FALSE(fs::exists(Out));
}

TEST_F(KdeCommand, A_layer_in_degrees_is_imported_unless_degrees_are_allowed) {
    Import("degrees", "a,x,y\n1,12.1,55.6\n1,12.2,55.7\n1,12.3,55.5\n", "EPSG:4326");
    const auto call = [&](const std::string& cell, const std::string& bandwidth) {
        return std::vector<std::string>{"kde",         Folder / "degrees.shp",
                                        "--id-field",  "animal",
                                        "--out",       Out,
                                        "--cell-size", cell,
                                        "--prefix",    "W",
                                        "--bandwidth", bandwidth,
                                        "--extent",    "min",
                                        "--overwrite"};
    };
    const Ran imported = run_wxl(call("500", "5000"));
    EXPECT_EQ(imported.Code, 0) << imported.Err;
    EXPECT_THAT(imported.Err, HasSubstr("in WGS 84 / UTM zone 33N, areas are "));
    // East of the zone's middle less 2.9 degrees at 55.6 N and 2.7 at 55.5 N: 12.1 km; with eight bandwidths 104 cells.
    EXPECT_THAT(imported.Out, HasSubstr("1: 3 fixes, bandwidth 5000, 104 x "));
    std::vector<std::string> allowed = call("1", "5");
    allowed.push_back("--degrees");
    EXPECT_EQ(run_wxl(allowed).Code, 0);
}

/// A folder to work in, as results go to the present one.
struct KdeAlone : testing::Test {
    tests::ScratchFolder Folder;
    const fs::path Before = fs::current_path();

    KdeAlone() { fs::current_path(Folder.Path()); }
    ~KdeAlone() override { fs::current_path(Before); }

    /// Two animals at corners of squares of side 0.001 and 0.002 degrees, one fix an hour.
    void WriteTable(const std::string& name) const {
        std::ofstream(Folder / name) << "wolf,timestamp,lon,lat\n"
                                        "Anna,2020-06-01 00:00:00,15.0,50.0\nAnna,2020-06-01 01:00:00,15.001,50.0\n"
                                        "Anna,2020-06-01 02:00:00,15.0,50.001\nAnna,2020-06-02 00:00:00,15.001,50.001\n"
                                        "Ben,2020-06-01 00:00:00,15.0,50.0\nBen,2020-06-01 01:00:00,15.002,50.0\n"
                                        "Ben,2020-06-01 02:00:00,15.0,50.002\nBen,2020-06-03 12:00:00,15.002,50.002\n";
    }
};

// Anna's square is 71.6 m by 111.2 m on the ground: standard deviations are half of it times sqrt(4 / 3), 41.3 and
// 64.2 m, so HREF is sqrt((41.3^2 + 64.2^2) / 2) x 4^(-1/6) = 42.9 m and the nearest round tenth 5 m; Ben's twice that.
TEST_F(KdeAlone, A_table_becomes_ranges_and_a_page_in_one_line) {
    WriteTable("wolves.csv");
    const Ran ran = run_wxl({"kde", "wolves.csv", "--id", "wolf"});
    ASSERT_EQ(ran.Code, 0) << ran.Err;
    const std::string folder = (Folder.Path() / "wolves_ranges").string();
    EXPECT_THAT(ran.Out, testing::MatchesRegex("Anna: 4 fixes, 1 day, bandwidth 42\\.[0-9]+ m, cells of 5 m, "
                                               "95 %: [0-9.]+ ha, 50 %: [0-9.]+ ha\n"
                                               "Ben: 4 fixes, 2\\.5 days, bandwidth 85\\.[0-9]+ m, cells of 10 m, "
                                               "95 %: [0-9.]+ ha, 50 %: [0-9.]+ ha\n"
                                               "report: " +
                                               folder +
                                               "/WXL_KDE_ANALYSIS\\.txt\n"
                                               "ranges: " +
                                               folder +
                                               "/RANGES\\.gpkg\n"
                                               "page: " +
                                               folder + "/WXL_KDE_ANALYSIS\\.html\n"));
    EXPECT_TRUE(fs::exists("wolves_ranges/1/hdr.adf") && fs::exists("wolves_ranges/RANGES.gpkg"));
    EXPECT_FALSE(fs::exists("wolves_ranges/1_iso_poly.shp"));
    const std::string page = content("wolves_ranges/WXL_KDE_ANALYSIS.html");
    EXPECT_THAT(page,
                HasSubstr("wxl kde " + (Folder.Path() / "wolves.csv").string() + " --id wolf --id-field animal --out " +
                          folder + " --cell-size auto --bandwidth href --extent min --isopleths 95,50 --html --gpkg"));
}

TEST_F(KdeAlone, The_command_of_the_page_repeats_the_run) {
    WriteTable("wolves.csv");
    const Ran first = run_wxl({"kde", "wolves.csv", "--id-field", "wolf", "--json"});
    ASSERT_EQ(first.Code, 0) << first.Err;
    const Ran again =
        run_wxl({"kde",           "wolves.csv",  "--id",   "wolf",        "--id-field",  "animal",   "--out",
                 "wolves_ranges", "--cell-size", "auto",   "--bandwidth", "href",        "--extent", "min",
                 "--isopleths",   "95,50",       "--html", "--gpkg",      "--overwrite", "--json"});
    ASSERT_EQ(again.Code, 0) << again.Err;
    EXPECT_EQ(first.Out, again.Out);
}

TEST_F(KdeAlone, What_is_given_stays_and_the_rest_is_chosen) {
    WriteTable("wolves.csv");
    const Ran ran = run_wxl({"kde", "wolves.csv", "--id", "wolf", "--out", "r", "--bandwidth", "prop:0.5", "--extent",
                             "full", "--isopleths", "80", "--lines"});
    ASSERT_EQ(ran.Code, 0) << ran.Err;
    // Half of Anna's HREF is 21 m: cells of 2 m.
    EXPECT_THAT(ran.Out, HasSubstr(" m, cells of 2 m, 80 %: "));
    EXPECT_TRUE(fs::exists("r/1_b1_iso_line.shp"));
    EXPECT_FALSE(fs::exists("r/1_b1_iso_poly.shp"));
    EXPECT_THAT(content("r/WXL_KDE_ANALYSIS.txt"), HasSubstr("\r\nRaster cell size: auto\r\n"));
}

TEST_F(KdeAlone, Cells_suit_the_bandwidth_that_leaves_a_range_whole) {
    WriteTable("wolves.csv");
    const Ran ran = run_wxl({"kde", "wolves.csv", "--id", "wolf", "--bandwidth", "adhoc", "--json"});
    ASSERT_EQ(ran.Code, 0) << ran.Err;
    const json told = json::parse(ran.Out);
    for (const json& animal : told["animals"]) {
        const double cells = animal["bandwidth_map_units"].get<double>() / animal["cell_size"].get<double>();
        EXPECT_GE(cells, 6.0);
        EXPECT_LE(cells, 15.0);
    }
}

TEST_F(KdeAlone, All_ranges_stand_in_one_package) {
    WriteTable("wolves.csv");
    const Ran ran = run_wxl({"kde", "wolves.csv", "--id", "wolf", "--json"});
    ASSERT_EQ(ran.Code, 0) << ran.Err;
    const json animals = json::parse(ran.Out)["animals"];
    const fs::path package = "wolves_ranges/RANGES.gpkg";
    const auto isopleths = rows_of(package, "isopleths");
    ASSERT_EQ(isopleths.size(), 4U);
    EXPECT_THAT(isopleths[0], StartsWith("Anna|95|"));
    EXPECT_THAT(isopleths[1], StartsWith("Anna|50|"));
    EXPECT_THAT(isopleths[0], testing::EndsWith("|href|4|2020-06-01T00:00:00Z|2020-06-02T00:00:00Z|1|1"));
    EXPECT_THAT(isopleths[3], HasSubstr("|href|4|2020-06-01T00:00:00Z|2020-06-03T12:00:00Z|"));
    EXPECT_EQ(rows_of(package, "fixes").size(), 8U);
    EXPECT_EQ(rows_of(package, "fixes")[5], "Ben|2");
    const auto summary = rows_of(package, "summary");
    ASSERT_EQ(summary.size(), 2U);
    EXPECT_THAT(summary[1],
                StartsWith("Ben|4|2020-06-01T00:00:00Z|2020-06-03T12:00:00Z|2.5|2|3600|3600|106200|102600|0|"
                           "href|"));

    const files::GdalDatasetPtr dataset(GDALDataset::Open(package.c_str(), GDAL_OF_VECTOR | GDAL_OF_READONLY));
    OGRLayer& layer = *dataset->GetLayerByName("isopleths");
    EXPECT_STREQ(layer.GetSpatialRef()->GetName(), "WGS 84 / UTM zone 33N");
    EXPECT_TRUE(layer.TestCapability(OLCFastSpatialFilter));
    for (const auto& feature : layer)
        EXPECT_EQ(feature->GetGeometryRef()->toMultiPolygon()->getNumGeometries(), feature->GetFieldAsInteger("parts"));
    layer.ResetReading();
    const OGRFeatureUniquePtr first(layer.GetNextFeature());
    const double area = animals[0]["levels"][0]["area"].get<double>();
    EXPECT_NEAR(first->GetGeometryRef()->toMultiPolygon()->get_Area(), area, 1e-6 * area);
    EXPECT_NEAR(first->GetFieldAsDouble("area_m2"), area, 1e-9 * area);
    EXPECT_NEAR(first->GetFieldAsDouble("area_ha"), area / 1e4, 1e-9 * area);
    const auto styles = rows_of(package, "layer_styles");
    ASSERT_EQ(styles.size(), 2U);
    EXPECT_THAT(styles[0], HasSubstr("||isopleths|geom|isopleths|<!DOCTYPE qgis"));
}

// The polygon of four corners is all of them; half of them, equally far from the middle, are all again.
TEST_F(KdeAlone, Minimum_convex_polygons_are_a_layer_of_the_package) {
    WriteTable("wolves.csv");
    ASSERT_EQ(run_wxl({"kde", "wolves.csv", "--id", "wolf"}).Code, 0);
    const Ran ran = run_wxl({"kde", "wolves.csv", "--id", "wolf", "--overwrite", "--mcp", "100,50", "--json"});
    ASSERT_EQ(ran.Code, 0) << ran.Err;
    const json polygons = json::parse(ran.Out)["animals"][0]["mcp"];
    const fs::path package = "wolves_ranges/RANGES.gpkg";
    const auto rows = rows_of(package, "mcp");
    ASSERT_EQ(rows.size(), 4U);
    EXPECT_THAT(rows[0], StartsWith("Anna|100|"));
    EXPECT_THAT(rows[0], testing::EndsWith("|4|ok"));
    EXPECT_THAT(rows[3], StartsWith("Ben|50|"));
    EXPECT_EQ(rows_of(package, "isopleths").size(), 4U);
    EXPECT_THAT(rows_of(package, "layer_styles").back(), HasSubstr("||mcp|geom|mcp|<!DOCTYPE qgis"));
    const files::GdalDatasetPtr dataset(GDALDataset::Open(package.c_str(), GDAL_OF_VECTOR | GDAL_OF_READONLY));
    const OGRFeatureUniquePtr first(dataset->GetLayerByName("mcp")->GetNextFeature());
    const double area = polygons[0]["area"].get<double>();
    EXPECT_NEAR(first->GetFieldAsDouble("area_m2"), area, 1e-9 * area);
    EXPECT_NEAR(first->GetGeometryRef()->toMultiPolygon()->get_Area(), area, 1e-6 * area);
    EXPECT_NEAR(area, 71.6 * 111.2, 0.005 * area);
}

TEST_F(KdeAlone, A_later_run_keeps_the_ranges_of_other_rasters) {
    WriteTable("wolves.csv");
    const auto kde = [](const std::vector<std::string>& more) {
        std::vector<std::string> call = {"kde", "wolves.csv", "--id", "wolf", "--overwrite"};
        call.insert(call.end(), more.begin(), more.end());
        const Ran ran = run_wxl(call);
        EXPECT_EQ(ran.Code, 0) << ran.Err;
        return content("wolves_ranges/RANGES.gpkg");
    };
    const fs::path package = "wolves_ranges/RANGES.gpkg";
    const std::string first = kde({});
    EXPECT_EQ(rows_of(package, "isopleths").size(), 4U);
    kde({"--prefix", "P", "--bandwidth", "prop:0.8,1", "--isopleths", "90"});
    EXPECT_EQ(rows_of(package, "isopleths").size(), 8U);
    EXPECT_EQ(rows_of(package, "fixes").size(), 8U);
    kde({"--isopleths", "80"});
    const auto isopleths = rows_of(package, "isopleths");
    ASSERT_EQ(isopleths.size(), 6U);
    EXPECT_THAT(isopleths[0], testing::EndsWith("|1|P1_b1"));
    EXPECT_THAT(isopleths[4], StartsWith("Anna|80|"));
    EXPECT_EQ(rows_of(package, "summary").size(), 6U);
    fs::remove_all("wolves_ranges");
    EXPECT_EQ(kde({}) == first, true);
}

TEST_F(KdeAlone, A_package_that_is_something_else_stays) {
    WriteTable("wolves.csv");
    fs::create_directory("wolves_ranges");
    std::ofstream("wolves_ranges/RANGES.gpkg") << "my notes";
    const Ran notes = run_wxl({"kde", "wolves.csv", "--id", "wolf"});
    EXPECT_EQ(notes.Code, 0);
    EXPECT_THAT(notes.Err,
                HasSubstr("/wolves_ranges/RANGES.gpkg is not a package of this tool's ranges in the coordinate "
                          "system of the points, and was left as it is; no package was written.\n"));
    EXPECT_EQ(content("wolves_ranges/RANGES.gpkg"), "my notes");
    ASSERT_EQ(run_wxl({"kde", "wolves.csv", "--id", "wolf", "--out", "r"}).Code, 0);
    const std::string before = content("r/RANGES.gpkg");
    const Ran elsewhere =
        run_wxl({"kde", "wolves.csv", "--id", "wolf", "--out", "r", "--prefix", "E", "--to-crs", "EPSG:32632"});
    EXPECT_THAT(elsewhere.Err, HasSubstr("and was left as it is"));
    EXPECT_EQ(content("r/RANGES.gpkg") == before, true);
}

TEST_F(KdeAlone, No_package_is_written_where_none_is_wanted) {
    WriteTable("wolves.csv");
    const Ran ran = run_wxl({"kde", "wolves.csv", "--id", "wolf", "--no-gpkg"});
    EXPECT_EQ(ran.Code, 0) << ran.Err;
    EXPECT_THAT(ran.Out, Not(HasSubstr("ranges: ")));
    EXPECT_FALSE(fs::exists("wolves_ranges/RANGES.gpkg"));
    EXPECT_TRUE(fs::exists("wolves_ranges/2_iso_poly.shp"));
}

TEST_F(KdeAlone, A_second_run_does_not_replace_the_first) {
    WriteTable("wolves.csv");
    ASSERT_EQ(run_wxl({"kde", "wolves.csv", "--id", "wolf"}).Code, 0);
    const std::string page = content("wolves_ranges/WXL_KDE_ANALYSIS.html");
    const Ran ran = run_wxl({"kde", "wolves.csv", "--id", "wolf"});
    EXPECT_EQ(ran.Code, 1);
    EXPECT_THAT(ran.Err, HasSubstr("--overwrite replaces them"));
    EXPECT_EQ(content("wolves_ranges/WXL_KDE_ANALYSIS.html"), page);
    EXPECT_EQ(run_wxl({"kde", "wolves.csv", "--id", "wolf", "--overwrite"}).Code, 0);
}

TEST_F(KdeAlone, A_condition_chooses_fixes_of_a_table) {
    WriteTable("wolves.csv");
    const Ran ran = run_wxl({"kde", "wolves.csv", "--id", "wolf", "--where", "animal = 'Ben'"});
    ASSERT_EQ(ran.Code, 0) << ran.Err;
    EXPECT_THAT(ran.Out, StartsWith("Ben: 4 fixes"));
}

TEST_F(KdeAlone, A_layer_without_a_field_of_animals_is_one_animal) {
    std::ofstream(Folder / "t.csv") << "x,y\n500000,5500000\n500200,5500000\n500000,5500300\n";
    ASSERT_EQ(run_wxl({"import", "t.csv", "fox.gpkg", "--x", "x", "--y", "y", "--from-crs", "EPSG:32633"}).Code, 0);
    const Ran found = run_wxl({"kde", "fox.gpkg"});
    EXPECT_EQ(found.Code, 0) << found.Err;
    EXPECT_THAT(found.Out, StartsWith("t: 3 fixes, bandwidth "));
    std::ofstream(Folder / "p.geojson")
        << R"({"type":"FeatureCollection","features":[)"
           R"({"type":"Feature","properties":{},"geometry":{"type":"Point","coordinates":[15,50]}},)"
           R"({"type":"Feature","properties":{},"geometry":{"type":"Point","coordinates":[15.01,50.01]}},)"
           R"({"type":"Feature","properties":{},"geometry":{"type":"Point","coordinates":[15.02,50.0]}}]})";
    const Ran unnamed = run_wxl({"kde", "p.geojson"});
    EXPECT_EQ(unnamed.Code, 0) << unnamed.Err;
    EXPECT_THAT(unnamed.Out, StartsWith("p: 3 fixes, bandwidth "));
}

TEST_F(KdeAlone, Processes_side_by_side_choose_the_same) {
    WriteTable("wolves.csv");
    const Ran one = run_wxl({"kde", "wolves.csv", "--id", "wolf", "--out", "a", "--dry-run", "--json"});
    ASSERT_EQ(one.Code, 0) << one.Err;
    const json plan = json::parse(one.Out);
    EXPECT_EQ(plan["animals"][0]["cell_size"], 5.0);
    EXPECT_EQ(plan["animals"][1]["cell_size"], 10.0);
    ASSERT_EQ(run_wxl({"batch", "plan", "wolves.csv", "--id", "wolf", "--tasks", "2", "--mcp", "100"}).Code, 0);
    ASSERT_EQ(run_wxl({"batch", "run", "wolves_ranges", "--task", "1"}).Code, 0);
    ASSERT_EQ(run_wxl({"batch", "run", "wolves_ranges", "--task", "2"}).Code, 0);
    const Ran merged = run_wxl({"batch", "merge", "wolves_ranges", "--json"});
    ASSERT_EQ(merged.Code, 0) << merged.Err;
    const Ran whole = run_wxl({"kde", "wolves.csv", "--id", "wolf", "--out", "whole", "--mcp", "100", "--json"});
    EXPECT_EQ(json::parse(merged.Out)["animals"][1]["levels"], json::parse(whole.Out)["animals"][1]["levels"]);
    EXPECT_EQ(json::parse(merged.Out)["animals"][1]["cell_size"], 10.0);
    EXPECT_EQ(content("wolves_ranges/RANGES.gpkg") == content("whole/RANGES.gpkg"), true);
}

TEST_F(KdeCommand, A_question_without_an_answer_stops_the_run_and_names_the_option) {
    const Ran stopped = Kde({"--cell-size", "20", "--extent", "full:10"});
    EXPECT_EQ(stopped.Code, 1);
    EXPECT_THAT(stopped.Err,
                HasSubstr("Warning: the extent buffer distance you have provided may not be large enough"));
    EXPECT_THAT(stopped.Err, HasSubstr("--answer buffer=yes"));
    EXPECT_EQ(stopped.Out, "");
    EXPECT_TRUE(fs::is_empty(Out));
    EXPECT_EQ(Kde({"--cell-size", "20", "--extent", "full:10", "--answer", "buffer=cancel"}).Code, 1);
    EXPECT_TRUE(fs::is_empty(Out));
    EXPECT_EQ(Kde({"--cell-size", "20", "--extent", "full:10", "--answer", "buffer=no"}).Code, 0);
    EXPECT_THAT(Report(), HasSubstr("full extent + 10\r\n"));
}

TEST_F(KdeCommand, A_question_without_an_answer_leaves_the_files_of_earlier_runs_as_they_were) {
    ASSERT_EQ(Kde({"--cell-size", "20", "--prefix", "E", "--extent", "min"}).Code, 0);
    const auto files = [&] {
        std::map<std::string, std::string> found;
        for (const auto& entry : fs::recursive_directory_iterator(Out))
            if (entry.is_regular_file()) found[entry.path().string()] = content(entry.path());
        return found;
    };
    const auto before = files();
    ASSERT_TRUE(before.contains(Out + "/WXL_KDE_ANALYSIS.txt") && before.contains(Out + "/WXL_KERNEL_SETTINGS.txt"));
    Import("twice", "a,x,y\n3,1000,500\n3,1200,500\n3,1000,700\n3,1000,700\n");
    const std::string overlaps = Folder / "twice.shp";
    const std::vector<std::vector<std::string>> calls = {
        {"kde", Points, "--extent", "full:10"},
        {"kde", Points, "--extent", "full:10", "--jobs", "2"},
        {"batch", "plan", Points, "--extent", "full:10"},
        {"kde", overlaps, "--extent", "min", "--bandwidth", "lscv"},
        {"kde", overlaps, "--extent", "min", "--bandwidth", "lscv", "--jobs", "2"},
        {"batch", "plan", overlaps, "--extent", "min", "--bandwidth", "lscv"},
    };
    for (auto call : calls) {
        for (const char* more : {"--id-field", "animal", "--cell-size", "20", "--prefix", "L", "--out"})
            call.emplace_back(more);
        call.push_back(Out);
        const Ran ran = run_wxl(call);
        EXPECT_EQ(ran.Code, 1) << testing::PrintToString(call);
        EXPECT_THAT(ran.Err, HasSubstr("wxl: stopped, because this question has no answer"));
        EXPECT_EQ(files(), before) << testing::PrintToString(call);
    }
}

TEST_F(KdeCommand, A_buffer_is_suggested_wide_enough_for_every_method) {
    int number = 0;
    for (const char* bandwidth : {"href", "lscv", "bcv", "33.3,100", "prop:0.5,1.5"}) {
        const std::string out = Folder / ("run" + std::to_string(number++));
        const Ran ran = run_wxl(
            {"kde", Points, "--id-field", "animal", "--out", out, "--cell-size", "20", "--bandwidth", bandwidth});
        EXPECT_EQ(ran.Code, 0) << bandwidth << ran.Err;
    }
}

TEST_F(KdeCommand, Overlapping_fixes_are_asked_about_where_a_search_needs_them_apart) {
    Import("doubled", "a,x,y\n1,0,0\n1,0,0\n1,300,200\n1,100,900\n");
    const auto run = [&](const std::string& bandwidth, const std::vector<std::string>& more) {
        std::vector<std::string> call = {
            "kde", Folder / "doubled.shp", "--id-field", "animal",     "--out", Out, "--cell-size", "5", "--extent",
            "min", "--bandwidth",          bandwidth,    "--overwrite"};
        call.insert(call.end(), more.begin(), more.end());
        return run_wxl(call);
    };
    for (const char* search : {"lscv", "bcv"}) {
        const Ran asked = run(search, {});
        EXPECT_EQ(asked.Code, 1);
        EXPECT_THAT(asked.Err, HasSubstr("these animals have such fixes: 1 (2 of 4 fixes, 50 %). The remedy: thin the "
                                         "fixes in time, delete those at the place of another, or take the reference "
                                         "bandwidth (HREF), which needs no places apart. Would you like to continue "
                                         "anyway?\nwxl: stopped, because this question has no answer: give --answer "
                                         "overlap=yes or --answer overlap=no\n"));
        EXPECT_TRUE(fs::is_empty(Out));
        EXPECT_EQ(run(search, {"--answer", "overlap=no"}).Code, 1);
        EXPECT_TRUE(fs::is_empty(Out));
        EXPECT_EQ(run(search, {"--answer", "overlap=yes"}).Code, 0);
        fs::remove_all(Out);
    }
    for (const char* method : {"href", "50", "prop:0.5", "adhoc"}) EXPECT_EQ(run(method, {}).Code, 0) << method;
}

TEST_F(KdeCommand, A_few_overlapping_fixes_are_advised_to_be_taken) {
    std::string csv = "a,x,y\n1,0,0\n1,0,0\n";
    for (int i = 1; i < 250; ++i) csv += "1," + std::to_string(i * 37 % 500) + "," + std::to_string(i) + "\n";
    Import("few", csv);
    const Ran asked = run_wxl({"kde", Folder / "few.shp", "--id-field", "animal", "--out", Out, "--cell-size", "5",
                               "--extent", "min", "--bandwidth", "lscv"});
    EXPECT_EQ(asked.Code, 1);
    EXPECT_THAT(asked.Err,
                HasSubstr("1 (2 of 251 fixes, 0.8 %). They are under 1 %, which hardly changes the search."));
    EXPECT_THAT(asked.Err, HasSubstr("--answer overlap=no; --answer overlap=yes is advised here\n"));
}

TEST_F(KdeCommand, A_dry_run_tells_the_plan_and_writes_nothing) {
    const Ran text = Kde({"--cell-size", "20", "--extent", "min", "--dry-run", "--prefix", "K"});
    EXPECT_EQ(text.Code, 0) << text.Err;
    EXPECT_THAT(text.Out, StartsWith("3: 4 fixes, HREF 91.6486424665735, bandwidth 91.6486424665735, 46 x 46 cells, "));
    EXPECT_THAT(text.Out, HasSubstr("raster K1\n7: 5 fixes, HREF "));
    const Ran asJson =
        Kde({"--cell-size", "20", "--extent", "min", "--dry-run", "--json", "--bandwidth", "prop:0.5,2"});
    const json animals = json::parse(asJson.Out)["animals"];
    ASSERT_EQ(animals.size(), 4U);
    EXPECT_NEAR(animals[1]["bandwidth_map_units"].get<double>(), 2.0 * 91.6486424665735, 1e-9);
    EXPECT_EQ(animals[1]["columns"], 46);
    EXPECT_NEAR(animals[1]["megabytes"].get<double>(), 46 * 46 * 8 / 1e6, 1e-12);
    EXPECT_EQ(animals[1]["raster"], "1_b2");
    const Ran large = Kde({"--cell-size", "1", "--extent", "full:1e6", "--dry-run"});
    EXPECT_THAT(large.Out, HasSubstr("more than 50 million cells"));
    EXPECT_FALSE(fs::exists(Out));
}

TEST_F(KdeCommand, A_dry_run_tells_what_will_fail) {
    // Animal 3 has a reference bandwidth of 91.65, animal 7 a larger one.
    const Ran cell = Kde({"--cell-size", "92", "--extent", "full:5000", "--dry-run"});
    EXPECT_EQ(cell.Code, 0) << cell.Err;
    EXPECT_THAT(cell.Out, HasSubstr("raster 1: will fail: the bandwidth 91.65 is smaller than the cell size 92\n"));
    EXPECT_THAT(cell.Out, Not(HasSubstr("raster 2: will fail")));
    const Ran none = Kde({"--cell-size", "9000", "--extent", "full:0", "--bandwidth", "9500", "--dry-run", "--json"});
    EXPECT_EQ(none.Code, 1);
    EXPECT_EQ(json::parse(none.Out)["animals"][1]["failure"],
              "the raster has no cells: the cell size 9000 is larger than the extent");
    EXPECT_THAT(none.Err, HasSubstr("wxl: no distribution can be computed in this way\n"));
    const json search = json::parse(
        Kde({"--cell-size", "20", "--extent", "min", "--bandwidth", "lscv", "--dry-run", "--json"}).Out)["animals"][0];
    EXPECT_TRUE(search["bandwidth_map_units"].is_null());
    EXPECT_EQ(search["planned_with"], "href");
}

TEST_F(KdeCommand, A_dry_run_tells_names_that_are_taken) {
    ASSERT_EQ(Kde({"--cell-size", "20", "--extent", "min"}).Code, 0);
    const std::string advice = "wxl: --overwrite replaces them, --prefix names them otherwise\n";
    const Ran dry = Kde({"--cell-size", "20", "--extent", "min", "--dry-run", "--json"});
    EXPECT_EQ(dry.Code, 1);
    EXPECT_EQ(json::parse(dry.Out)["names_taken"], json::array({"1", "2"}));
    EXPECT_THAT(dry.Err, HasSubstr("wxl: the run will be refused, because the output folder holds 1, 2\n" + advice));
    EXPECT_EQ(Kde({"--cell-size", "20", "--extent", "min", "--dry-run", "--overwrite"}).Code, 0);
    EXPECT_THAT(Kde({"--cell-size", "20", "--extent", "min"}).Err, HasSubstr(advice));
}

TEST_F(KdeCommand, A_second_run_of_a_list_is_refused_by_run_and_dry_run_and_leaves_the_report) {
    const std::vector<std::string> call = {"--cell-size", "20", "--extent", "min", "--bandwidth", "prop:0.5,1"};
    ASSERT_EQ(Kde(call).Code, 0);
    const std::string report = Report();
    const Ran second = Kde(call);
    EXPECT_EQ(second.Code, 1);
    EXPECT_THAT(second.Err, HasSubstr("Error: the output folder already holds 1_b1. You should use a new, empty folder "
                                      "for the output of this tool.\n"
                                      "wxl: --overwrite replaces them, --prefix names them otherwise\n"));
    EXPECT_EQ(Report(), report);
    std::vector<std::string> dry = call;
    dry.insert(dry.end(), {"--dry-run", "--json"});
    const Ran planned = Kde(dry);
    EXPECT_EQ(planned.Code, 1);
    EXPECT_EQ(json::parse(planned.Out)["names_taken"], json::array({"1_b1", "1_b2", "2_b1", "2_b2"}));
}

// Of the user's bandwidths a settings file loads the word TRUE, and that into the list.
TEST_F(KdeCommand, A_list_that_a_settings_file_spoils_is_told_in_a_sentence) {
    const std::vector<std::string> good = {"--cell-size", "20",    "--extent",        "min",
                                           "--bandwidth", "60,80", "--save-settings", Out + "_s.txt"};
    ASSERT_EQ(Kde(good).Code, 0);
    std::string settings = content(Out + "_s.txt");
    settings.replace(settings.find("60,80"), 5, "TRUE");
    std::ofstream(Out + "_s.txt") << settings;
    const std::string report = Report();
    const std::string sentence =
        "Error: the list of bandwidths on the Bandwidth tab holds \"TRUE\", which is not a number. Please write "
        "numbers separated by commas.\n";
    for (const char* extra : {"--overwrite", "--dry-run"}) {
        const Ran ran = Kde({"--settings", Out + "_s.txt", extra});
        EXPECT_EQ(ran.Code, 1) << extra;
        EXPECT_THAT(ran.Err, HasSubstr(sentence)) << extra;
    }
    EXPECT_EQ(Report(), report);
    EXPECT_TRUE(fs::exists(fs::path(Out) / "1_b1"));
}

TEST_F(KdeCommand, Reach_is_whole_or_a_number_above_0) {
    const std::vector<std::string> call = {"--cell-size", "20", "--extent", "min", "--adaptive", "--json"};
    for (const char* wrong : {"0", "-1", "x", "nan"}) {
        std::vector<std::string> refused = call;
        refused.insert(refused.end(), {"--reach", wrong});
        const Ran ran = Kde(refused);
        EXPECT_EQ(ran.Code, 2) << wrong;
        EXPECT_EQ(ran.Err,
                  std::string("wxl: --reach: \"") + wrong + "\" is not a number of bandwidths above 0, or whole\n");
    }
    const json usual = json::parse(Kde(call).Out)["animals"][0];
    EXPECT_EQ(usual["reach"], 4.0);
    std::vector<std::string> whole = call;
    whole.insert(whole.end(), {"--reach", "WHOLE", "--overwrite"});
    const json full = json::parse(Kde(whole).Out)["animals"][0];
    EXPECT_GE(full["reach"].get<double>(), 3.999999);
    EXPECT_LE(full["beyond_reach"].get<double>(), usual["beyond_reach"].get<double>() + 1e-12);
    EXPECT_LT(full["beyond_reach"], 2e-4);
    std::vector<std::string> dry = whole;
    dry.push_back("--dry-run");
    EXPECT_EQ(json::parse(Kde(dry).Out)["animals"][0]["columns"], full["columns"]);
    std::vector<std::string> searched = call;
    searched.insert(searched.end(), {"--bandwidth", "bcv", "--overwrite"});
    EXPECT_TRUE(json::parse(Kde(searched).Out)["animals"][0]["local_minima"].is_array());
    EXPECT_TRUE(usual["local_minima"].is_null());
}

TEST_F(KdeCommand, Folders_and_conditions_of_no_use_are_told_before_the_run) {
    const std::vector<std::string> call = {"--cell-size", "20", "--extent", "min"};
    const Ran none = Kde({"--cell-size", "20", "--extent", "min", "--where", "animal = 'Fraja'"});
    EXPECT_EQ(none.Code, 1);
    EXPECT_THAT(none.Err, HasSubstr("wxl: no fix meets --where animal = 'Fraja'\n"));
    fs::create_directories(Out);
    fs::permissions(Out, fs::perms::owner_read | fs::perms::owner_exec);
    const Ran locked = Kde(call);
    const Ran table = run_wxl({"stats", Points, "--id-field", "animal", "--csv", Out + "/x.csv"});
    fs::permissions(Out, fs::perms::owner_all);
    EXPECT_EQ(locked.Code, 1);
    EXPECT_THAT(locked.Err, HasSubstr("wxl: The folder " + Out + " is read-only.\n"));
    EXPECT_THAT(table.Err, HasSubstr("wxl: The folder " + Out + " is read-only.\n"));
    fs::remove_all(Out);
    std::ofstream(Out) << "a file";
    EXPECT_THAT(Kde(call).Err, HasSubstr(Out + ": this folder cannot be made; choose another by --out\n"));
}

TEST_F(KdeCommand, The_plan_gives_the_grids_that_the_run_then_has) {
    for (const std::string extent : {"min", "full"})
        for (const std::string bandwidth : {"href", "80", "prop:0.8"}) {
            const std::vector<std::string> call = {"--cell-size", "15",        "--extent", extent,     "--bandwidth",
                                                   bandwidth,     "--rescale", "--json",   "--prefix", "P"};
            std::vector<std::string> dry = call;
            dry.emplace_back("--dry-run");
            std::vector<std::string> wet = call;
            wet.emplace_back("--overwrite");
            const json planned = json::parse(Kde(dry).Out)["animals"];
            const json done = json::parse(Kde(wet).Out)["animals"];
            ASSERT_EQ(planned.size(), done.size());
            for (std::size_t i = 0; i < done.size(); ++i)
                for (const char* key : {"columns", "rows", "cell_size", "raster"})
                    EXPECT_EQ(planned[i][key], done[i][key]) << extent << bandwidth << key;
        }
}

TEST_F(KdeCommand, Nothing_is_overwritten_unless_asked) {
    const std::vector<std::string> call = {"--cell-size", "20",         "--extent", "min", "--isopleths",
                                           "95",          "--polygons", "--prefix", "K"};
    ASSERT_EQ(Kde(call).Code, 0);
    std::ofstream(fs::path(Out) / "K1_notes.txt") << "mine";
    const Ran second = Kde(call);
    EXPECT_EQ(second.Code, 1);
    EXPECT_THAT(second.Err, HasSubstr("naming conflict detected"));
    std::vector<std::string> forced = call;
    forced[1] = "40";
    forced.emplace_back("--overwrite");
    const Ran third = Kde(forced);
    EXPECT_EQ(third.Code, 0) << third.Err;
    EXPECT_EQ(content(fs::path(Out) / "K1_notes.txt"), "mine");
    EXPECT_EQ(files::OpenRaster(fs::path(Out) / "K1")->Band()->Geometry().CellSize, 40.0);
    EXPECT_THAT(Report(), HasSubstr(std::string(60, '=')));
}

TEST_F(KdeCommand, A_prefix_cannot_leave_the_folder) {
    fs::create_directories(Out);
    fs::create_directory(Folder / "1");
    for (const bool overwrite : {false, true}) {
        std::vector<std::string> call = {"--cell-size", "20", "--extent", "min", "--prefix", "../"};
        if (overwrite) call.emplace_back("--overwrite");
        const Ran ran = Kde(call);
        EXPECT_EQ(ran.Code, 2);
        EXPECT_THAT(ran.Err, HasSubstr("path separator"));
    }
    EXPECT_TRUE(fs::exists(Folder / "1"));
    EXPECT_TRUE(fs::is_empty(Out));
}

TEST_F(KdeCommand, Settings_are_saved_and_loaded) {
    const std::string settings = Folder / "settings.txt";
    ASSERT_EQ(Kde({"--cell-size", "20", "--extent", "full:700", "--adaptive", "--isopleths", "95", "--lines",
                   "--save-settings", settings})
                  .Code,
              0);
    EXPECT_THAT(content(settings), HasSubstr("[EXTENT]\r\nFULL\r\n700\r\n"));
    const std::string other = Folder / "other";
    const Ran ran = run_wxl(
        {"kde", Points, "--id-field", "animal", "--out", other, "--settings", settings, "--cell-size", "25", "--json"});
    ASSERT_EQ(ran.Code, 0) << ran.Err;
    const json first = json::parse(ran.Out)["animals"][0];
    EXPECT_EQ(first["cell_size"], 25.0);
    EXPECT_EQ(first["origin"], json::array({300.0, -200.0}));
    EXPECT_EQ(first["files"].size(), 2U);
    EXPECT_THAT(content(fs::path(other) / "WXL_KDE_ANALYSIS.txt"), HasSubstr("Kernel type: adaptive\r\n"));
    EXPECT_EQ(Kde({"--cell-size", "20", "--prefix", "S", "--save-settings", settings}).Code, 1);
    EXPECT_EQ(Kde({"--settings", Folder / "absent.txt"}).Code, 1);
}

TEST_F(KdeCommand, A_condition_selects_the_fixes) {
    const Ran ran = Kde({"--cell-size", "20", "--extent", "min", "--where", "animal = '7'", "--json"});
    ASSERT_EQ(ran.Code, 0) << ran.Err;
    const json animals = json::parse(ran.Out)["animals"];
    ASSERT_EQ(animals.size(), 1U);
    EXPECT_EQ(animals[0]["n"], 5);
    EXPECT_THAT(Report(), HasSubstr("(Using selected features only)\r\n"));
    EXPECT_EQ(Kde({"--cell-size", "20", "--where", "animal ==="}).Code, 1);
}

TEST_F(KdeCommand, Rasters_can_be_GeoTIFFs) {
    const Ran ran = Kde({"--cell-size", "20", "--extent", "min", "--raster-format", "gtiff", "--isopleths", "95",
                         "--polygons", "--json"});
    ASSERT_EQ(ran.Code, 0) << ran.Err;
    EXPECT_TRUE(Stands("1.tif") && Stands("1_iso_poly.shp"));
    EXPECT_EQ(json::parse(ran.Out)["animals"][0]["files"][0], Out + "/1.tif");
    EXPECT_EQ(Kde({"--cell-size", "20", "--extent", "min", "--raster-format", "GTiff"}).Code, 1);
}

TEST_F(KdeCommand, A_reference_raster_gives_extent_and_cells) {
    ASSERT_EQ(Kde({"--cell-size", "40", "--extent", "full:500", "--prefix", "R"}).Code, 0);
    const std::string other = Folder / "other";
    const Ran ran = run_wxl({"kde", Points, "--id-field", "animal", "--out", other, "--extent", "ref:" + Out + "/R1",
                             "--bandwidth", "80", "--json"});
    ASSERT_EQ(ran.Code, 0) << ran.Err;
    const json first = json::parse(ran.Out)["animals"][0];
    EXPECT_EQ(first["cell_size"], 40.0);
    EXPECT_EQ(first["columns"], 47);
    EXPECT_EQ(first["origin"], json::array({500.0, 0.0}));
    EXPECT_EQ(
        run_wxl({"kde", Points, "--id-field", "animal", "--out", other, "--extent", "ref:" + Out + "/absent"}).Code, 1);
}

TEST_F(KdeCommand, A_reference_raster_in_another_coordinate_system_is_refused) {
    Import("south", "a,x,y\n3,1000,500\n3,1200,500\n3,1000,700\n3,1200,700\n", "EPSG:32733");
    const std::string there = Folder / "there";
    ASSERT_EQ(run_wxl({"kde", Folder / "south.shp", "--id-field", "animal", "--out", there, "--cell-size", "40",
                       "--extent", "full:500"})
                  .Code,
              0);
    const Ran ran = Kde({"--extent", "ref:" + there + "/1", "--bandwidth", "80"});
    EXPECT_EQ(ran.Code, 1);
    EXPECT_THAT(
        ran.Err,
        StartsWith(
            "Error: the reference layer 1 is in another coordinate system than the points (WGS 84 / UTM zone 33N). "
            "Please choose a raster in that system, or reproject it.\n"));
    EXPECT_FALSE(Stands("1"));
    const Ran planned = Kde({"--extent", "ref:" + there + "/1", "--bandwidth", "80", "--dry-run"});
    EXPECT_EQ(planned.Code, 1);
    EXPECT_EQ(
        planned.Err,
        "wxl: the reference layer 1 is in another coordinate system than the points (WGS 84 / UTM zone 33N): choose a "
        "raster in that system, or reproject it\n");
}

TEST_F(KdeCommand, Rows_out_of_the_order_of_time_are_told) {
    const std::string points = Folder / "points.geojson";
    std::ofstream(points)
        << R"({"type":"FeatureCollection","crs":{"type":"name","properties":{"name":"urn:ogc:def:crs:EPSG::32633"}},)"
           R"("features":[)"
           R"({"type":"Feature","properties":{"a":"w","Time2":3},"geometry":{"type":"Point","coordinates":[0,0]}},)"
           R"({"type":"Feature","properties":{"a":"w","Time2":1},"geometry":{"type":"Point","coordinates":[200,0]}},)"
           R"({"type":"Feature","properties":{"a":"w","Time2":2},"geometry":{"type":"Point","coordinates":[0,200]}}]})";
    const std::string told =
        "1 fix is earlier than the one before: the "
        "indices of independence take the rows as they stand, so sort them by time";
    const auto kde = [&](std::vector<std::string> more) {
        std::vector<std::string> call = {"kde",   points, "--id-field",  "a",  "--cell-size", "20", "--extent", "min",
                                         "--out", Out,    "--isopleths", "50", "--lines",     "-q"};
        call.insert(call.end(), more.begin(), more.end());
        return run_wxl(call);
    };
    const Ran ran = kde({"--json"});
    ASSERT_EQ(ran.Code, 0) << ran.Err;
    EXPECT_EQ(json::parse(ran.Out)["animals"][0]["reason"], told);
    EXPECT_THAT(ran.Err, HasSubstr("w: " + told + "\n"));
}

// The cell is as wide as those of the raster, the corner and the counts are the raster's own.
TEST_F(KdeCommand, A_reference_raster_may_have_oblong_cells_which_isopleths_refuse) {
    files::RegisterGdal();
    const std::string raster = Folder / "oblong.tif";
    {
        GDALDriver* driver = GetGDALDriverManager()->GetDriverByName("GTiff");
        const files::GdalDatasetPtr dataset(driver->Create(raster.c_str(), 9, 12, 1, GDT_Float32, nullptr));
        std::array<double, 6> transform = {300.0, 300.0, 0.0, 2500.0, 0.0, -200.0};
        ASSERT_EQ(dataset->SetGeoTransform(transform.data()), CE_None);
    }
    const Ran ran = Kde({"--extent", "ref:" + raster, "--bandwidth", "400", "--json"});
    ASSERT_EQ(ran.Code, 0) << ran.Err;
    const json first = json::parse(ran.Out)["animals"][0];
    EXPECT_EQ(first["cell_size"], 300.0);
    EXPECT_EQ(first["columns"], 9);
    EXPECT_EQ(first["rows"], 12);
    EXPECT_EQ(first["origin"], json::array({300.0, 100.0}));
    const Ran isopleths =
        run_wxl({"isopleths", raster, "--levels", "95", "--polygons", "--out", Folder / "iso", "--name", "o"});
    EXPECT_EQ(isopleths.Code, 1);
    EXPECT_THAT(isopleths.Err, HasSubstr("has cells that are not square"));
}

TEST_F(KdeCommand, A_reference_raster_beside_a_layer_of_the_same_name_is_found) {
    ASSERT_EQ(Kde({"--cell-size", "40", "--extent", "full:500", "--prefix", "R"}).Code, 0);
    fs::rename(fs::path(Out) / "R1", Folder / "points");
    const fs::path before = fs::current_path();
    fs::current_path(fs::path(Points).parent_path());
    const auto kde = [&](const std::string& more) {
        return run_wxl({"kde", "points.shp", "--id-field", "animal", "--out", "other", "--extent", "ref:points",
                        "--bandwidth", "80", "--json", more});
    };
    const Ran planned = kde("--dry-run");
    const Ran ran = kde("--rescale");
    fs::current_path(before);
    ASSERT_EQ(planned.Code, 0) << planned.Err;
    EXPECT_EQ(json::parse(planned.Out)["animals"][0]["columns"], 47);
    ASSERT_EQ(ran.Code, 0) << ran.Err;
    EXPECT_EQ(json::parse(ran.Out)["animals"][0]["columns"], 47);
    EXPECT_THAT(content(Folder / "other" / "WXL_KDE_ANALYSIS.txt"),
                HasSubstr("reference layer (" + (Folder / "points").string() + ")"));
}

TEST_F(KdeCommand, Failing_animals_are_told_and_a_batch_without_any_success_fails) {
    Import("one", "a,x,y\n1,0,0\n2,0,0\n2,500,100\n2,100,400\n");
    const auto run = [&](const std::string& out, const std::string& cell) {
        return run_wxl({"kde", Folder / "one.shp", "--id-field", "animal", "--out", Folder / out, "--cell-size", cell,
                        "--extent", "min", "--json"});
    };
    const Ran some = run("some", "20");
    EXPECT_EQ(some.Code, 0);
    EXPECT_THAT(some.Err, HasSubstr("(Animal ID: 1)"));
    EXPECT_THAT(some.Err, HasSubstr("wxl: 1 of 2 distributions could not be computed"));
    const json failed = json::parse(some.Out)["animals"][0];
    EXPECT_EQ(failed["status"], 5001);
    EXPECT_TRUE(failed["volume"].is_null());
    EXPECT_EQ(failed["warnings"],
              json::array({"The bandwidth or dimensions of the output raster were 0. Could not calculate kernel."}));
    EXPECT_TRUE(failed["bandwidth"].is_null());
    EXPECT_TRUE(failed["bandwidth_map_units"].is_null());
    EXPECT_EQ(run("none", "5000").Code, 1);
    const Ran text = run_wxl({"kde", Folder / "one.shp", "--id-field", "animal", "--out", Folder / "text",
                              "--cell-size", "20", "--extent", "min"});
    EXPECT_THAT(text.Out, StartsWith("1: 1 fix, bandwidth not computed, 0 x 0 cells: failed (code 5001: 1 fix is too "
                                     "few for a bandwidth)\n"));
    EXPECT_THAT(text.Err, Not(HasSubstr("too few")));
}

TEST_F(KdeCommand, A_field_that_hardly_names_animals_is_doubted) {
    std::string csv = "a,x,y\n";
    for (int i = 0; i < 10; ++i) csv += std::to_string(i) + "," + std::to_string(i * 100) + ",0\n";
    Import("ten", csv + "9,0,300\n9,500,700\n");
    const auto err = [&](const std::vector<std::string>& more) {
        std::vector<std::string> call = {"kde",          Folder / "ten.shp", "--id-field", "animal",   "--out",
                                         Folder / "ten", "--cell-size",      "20",         "--extent", "min"};
        call.insert(call.end(), more.begin(), more.end());
        return run_wxl(call).Err;
    };
    const std::string doubt =
        "wxl: 10 of 10 animals have fewer than 5 fixes: is animal the field that names the animal?\n";
    EXPECT_THAT(err({}), HasSubstr(doubt));
    EXPECT_THAT(err({"--where", "animal <> '0'", "--prefix", "B"}), Not(HasSubstr("is animal the field")));
}

TEST_F(KdeCommand, Isopleths_that_look_like_shares_are_noted) {
    const auto err = [&](const std::string& isopleths) {
        return Kde({"--cell-size", "20", "--extent", "min", "--lines", "--isopleths", isopleths, "--overwrite"}).Err;
    };
    const std::string note = "wxl: --isopleths takes percentages: 95 means 95 %, and 0.95 less than 1 %\n";
    EXPECT_THAT(err("0.95,0.5"), HasSubstr(note));
    EXPECT_THAT(err("95,0.5"), Not(HasSubstr("takes percentages")));
}

TEST_F(KdeCommand, A_folder_in_which_another_run_works_is_refused) {
    files::DiskFileSystem disk;
    files::DiskFolders folders;
    const files::SystemClock clock;
    files::FolderLocks locks(disk, folders, clock);
    fs::create_directories(Out);
    std::string holder;
    const auto lock = locks.Take(Out, holder);
    for (const bool overwrite : {false, true}) {
        std::vector<std::string> call = {"--cell-size", "20", "--extent", "min"};
        if (overwrite) call.emplace_back("--overwrite");
        const Ran ran = Kde(call);
        EXPECT_EQ(ran.Code, 1);
        EXPECT_THAT(ran.Err, HasSubstr("another analysis is writing into the output folder (process "));
    }
    EXPECT_FALSE(Stands("WXL_KDE_ANALYSIS.txt"));
}

TEST_F(KdeCommand, Independence_indices_stand_in_the_report_when_asked_for) {
    ASSERT_EQ(
        Kde({"--cell-size", "20", "--extent", "min", "--independence", "--verbose-log", "--bandwidth", "bcv"}).Code, 0);
    EXPECT_THAT(Report(), HasSubstr("Independence of observation indices:\r\nanimal, Count, Schoener, Swihart_Slade\r\n"
                                    "3, 4, 2, 0.5\r\n"));
    EXPECT_THAT(Report(), HasSubstr("BCV Profile:\r\nh,BCV_value\r\n"));
}

}  // namespace
}  // namespace wxl::cli
