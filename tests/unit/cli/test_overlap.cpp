#include "tests/unit/cli/layer_files.h"
#include "tests/unit/cli/package_rows.h"
#include "tests/unit/cli/raster_files.h"

#include <array>
#include <fstream>
#include <gmock/gmock.h>
#include <limits>
#include <nlohmann/json.hpp>

namespace wxl::cli {
namespace {

namespace fs = std::filesystem;
using testing::ElementsAre;
using testing::HasSubstr;
using tests::ScratchFolder;
using Json = nlohmann::ordered_json;

/// Five rows and columns of cells of 10 m with densities in the middle row alone.
std::vector<std::vector<float>> middle_row(const std::vector<float>& cells) {
    std::vector<std::vector<float>> rows(5, std::vector<float>(5, 0.0F));
    rows[2] = cells;
    return rows;
}

/// Two animals whose shares are .4 .3 .2 .1 0 and 0 .1 .6 .2 .1; densities times 1000000.
void make_five_cells(const ScratchFolder& folder) {
    make_raster(folder, "f", middle_row({4000.0F, 3000.0F, 2000.0F, 1000.0F, 0.0F}));
    make_raster(folder, "g", middle_row({0.0F, 1000.0F, 6000.0F, 2000.0F, 1000.0F}));
}

/// Two clusters of 20 fixes on the corners of small squares, and one fix of another animal.
std::string two_clusters_and_a_loner() {
    std::string rows;
    for (int i = 0; i < 40; ++i)
        rows += std::string(i < 20 ? "a" : "b") + "," + std::to_string(500000 + (i < 20 ? 0 : 300) + 50 * (i % 2)) +
                "," + std::to_string(4649000 + 50 * (i / 2 % 2)) + ",2018-05-09\n";
    return rows + "c,500100,4649000,2018-05-09\n";
}

TEST(Overlap, Five_cells_to_their_digits_as_json) {
    ScratchFolder folder;
    make_five_cells(folder);
    const Ran ran = run_wxl({"overlap", folder.Path().string(), "--percent", "80", "--conditional", "--json"});
    EXPECT_EQ(ran.Code, 0);
    EXPECT_EQ(ran.Err, "");
    const Json json = Json::parse(ran.Out);
    EXPECT_EQ(json["grid"].dump(), R"({"cell_size":10.0,"columns":5,"rows":5,"origin":[500000.0,4649000.0]})");
    EXPECT_EQ(json["animals"][1]["id"], "g");
    EXPECT_EQ(json["animals"][1]["area"].dump(), R"({"80":200.0})");
    EXPECT_EQ(json["animals"][1]["status"], "ok");
    ASSERT_EQ(json["pairs"].size(), 6U);  // f f, f g and g g, whole and conditional
    EXPECT_EQ(json["pairs"][2].dump(),
              R"({"i":"f","j":"g","percent":80.0,"conditional":false,"hr_ij":0.333333,"hr_ji":0.5,"phr_ij":0.7,)"
              R"("phr_ji":0.3,"vi":0.4,"ba":0.661037,"udoi":0.17,"hd":0.823363})");
    EXPECT_EQ(json["pairs"][3].dump(),
              R"({"i":"f","j":"g","percent":80.0,"conditional":true,"hr_ij":0.333333,"hr_ji":0.5,"phr_ij":0.6,)"
              R"("phr_ji":0.2,"vi":0.2,"ba":0.34641,"udoi":0.12,"hd":1.00358})");
}

TEST(Overlap, Matrices_on_screen) {
    ScratchFolder folder;
    make_five_cells(folder);
    const Ran ran = run_wxl({"overlap", folder.Path().string(), "--percent", "80", "--index", "ba,PHR"});
    EXPECT_EQ(ran.Out,
              "animal    n  bandwidth  volume  area 80 %  status\n"
              "f       N/A        N/A  1.0000        300      ok\n"
              "g       N/A        N/A  1.0000        200      ok\n"
              "\n"
              "BA       f       g\n"
              "f   1.0000  0.6610\n"
              "g   0.6610  1.0000\n"
              "\n"
              "PHR at 80 %       f       g\n"
              "f            0.9000  0.7000\n"
              "g            0.3000  0.8000\n");
}

TEST(Overlap, Long_csv_has_both_directions) {
    ScratchFolder folder;
    ScratchFolder out;
    make_five_cells(folder);
    const std::string csv = (out / "overlap.csv").string();
    const Ran ran = run_wxl({"overlap", folder.Path().string(), "--percent", "80,50", "--index", "vi,hr", "--csv", csv,
                             "--out", (out / "new").string()});
    EXPECT_EQ(ran.Code, 0) << ran.Err;
    EXPECT_EQ(read_file(csv),
              "range_of,animal,index,percent,conditional,value\n"
              "f,f,vi,,no,1\n"
              "f,f,hr,80,no,1\n"
              "f,f,hr,50,no,1\n"
              "f,g,vi,,no,0.4\n"
              "g,f,vi,,no,0.4\n"
              "f,g,hr,80,no,0.333333\n"
              "g,f,hr,80,no,0.5\n"
              "f,g,hr,50,no,0\n"
              "g,f,hr,50,no,0\n"
              "g,g,vi,,no,1\n"
              "g,g,hr,80,no,1\n"
              "g,g,hr,50,no,1\n");
    EXPECT_EQ(read_file(out / "new/WXL_OVERLAP.csv"), read_file(csv));
    EXPECT_NE(read_file(out / "new/WXL_OVERLAP.svg").find("<title>f, g: 0.4</title>"), std::string::npos);
    EXPECT_EQ(run_wxl({"overlap", folder.Path().string(), "--csv", csv}).Err,
              "wxl: " + csv + " exists: choose another name, or give --overwrite\n");
}

/// The five cells compared at 80 % into the folder "new".
Ran compare_five_cells(const ScratchFolder& folder, const std::vector<std::string>& more = {}) {
    std::vector<std::string> call = {"overlap", folder.Path().string(),   "--percent", "80",
                                     "--out",   (folder / "new").string()};
    call.insert(call.end(), more.begin(), more.end());
    return run_wxl(call);
}

constexpr const char* kCommonCell = "f|g|80|100|0.01|0.333333|0.5|0.7|0.3|0.4|0.661037|0.17|0.823363";

TEST(Overlap, Common_areas_are_a_layer_of_the_package) {
    ScratchFolder folder;
    make_five_cells(folder);
    const Ran ran = compare_five_cells(folder, {"--conditional"});
    EXPECT_EQ(ran.Err, "");
    EXPECT_THAT(ran.Out, testing::EndsWith("\npage: " + (folder / "new/WXL_OVERLAP_ANALYSIS.html").string() +
                                           "\nranges: " + (folder / "new/RANGES.gpkg").string() + "\n"));
    const fs::path package = folder / "new/RANGES.gpkg";
    EXPECT_THAT(rows_of(package, "overlap"), ElementsAre(kCommonCell));
    EXPECT_THAT(rows_of(package, "layer_styles"), ElementsAre(HasSubstr("||overlap|geom|overlap|<!DOCTYPE qgis")));
    const files::GdalDatasetPtr dataset(GDALDataset::Open(package.c_str(), GDAL_OF_VECTOR | GDAL_OF_READONLY));
    OGRLayer& layer = *dataset->GetLayerByName("overlap");
    EXPECT_STREQ(layer.GetSpatialRef()->GetName(), "WGS 84 / UTM zone 33N");
    const OGRFeatureUniquePtr common(layer.GetNextFeature());
    OGREnvelope box;
    common->GetGeometryRef()->getEnvelope(&box);
    EXPECT_EQ(box.MinX, 500020.0);  // the third cell of the third row
    EXPECT_EQ(box.MaxX, 500030.0);
    EXPECT_EQ(box.MinY, 4649020.0);
    EXPECT_EQ(box.MaxY, 4649030.0);
}

TEST(Overlap, Results_of_an_earlier_call_are_replaced_only_where_that_is_asked_for) {
    ScratchFolder folder;
    make_five_cells(folder);
    ASSERT_EQ(compare_five_cells(folder).Code, 0);
    const std::string page = read_file(folder / "new/WXL_OVERLAP_ANALYSIS.html");
    for (const char* name : {"WXL_OVERLAP.csv", "WXL_OVERLAP.svg", "WXL_OVERLAP_ANALYSIS.html"}) {
        EXPECT_EQ(compare_five_cells(folder).Err,
                  "wxl: " + (folder / "new" / name).string() + " exists: choose another folder, or give --overwrite\n");
        fs::remove(folder / "new" / name);
    }
    EXPECT_EQ(compare_five_cells(folder).Err,
              "wxl: " + (folder / "new/RANGES.gpkg").string() +
                  " has a layer overlap already: choose another folder, or give --overwrite\n");
    const std::string package = read_file(folder / "new/RANGES.gpkg");
    EXPECT_EQ(compare_five_cells(folder, {"--overwrite"}).Code, 0);
    EXPECT_THAT(rows_of(folder / "new/RANGES.gpkg", "overlap"), ElementsAre(kCommonCell));
    EXPECT_EQ(names_in(folder / "new").size(), 4U);
}

TEST(Overlap, The_package_of_an_analysis_keeps_its_tables) {
    ScratchFolder folder;
    const std::string layer = make_layer(folder, two_clusters_and_a_loner());
    const std::string out = (folder / "kde").string();
    ASSERT_EQ(run_wxl({"kde", layer, "--id-field", "animal", "--out", out, "--cell-size", "5", "--extent", "full:100",
                       "--answer", "yes", "--gpkg", "--isopleths", "95,50", "--mcp", "100"})
                  .Code,
              0);
    const auto isopleths = rows_of(out + "/RANGES.gpkg", "isopleths");
    const Ran ran = run_wxl({"overlap", out, "--percent", "99.9", "--out", out});
    EXPECT_EQ(ran.Code, 0) << ran.Err;
    EXPECT_EQ(rows_of(out + "/RANGES.gpkg", "isopleths"), isopleths);
    EXPECT_EQ(isopleths.size(), 4U);
    EXPECT_EQ(rows_of(out + "/RANGES.gpkg", "mcp").size(), 3U);
    EXPECT_EQ(rows_of(out + "/RANGES.gpkg", "summary").size(), 3U);
    EXPECT_EQ(rows_of(out + "/RANGES.gpkg", "layer_styles").size(), 4U);
}

TEST(Overlap, Files_that_are_something_else_stay) {
    ScratchFolder folder;
    make_five_cells(folder);
    fs::create_directory(folder / "new");
    write_file(folder, "new/RANGES.gpkg", "my notes");
    write_file(folder, "new/WXL_OVERLAP_ANALYSIS.html", "my page");
    const Ran ran = compare_five_cells(folder, {"--overwrite"});
    EXPECT_EQ(ran.Code, 0);
    EXPECT_EQ(ran.Err,
              "Warning: " + (folder / "new/RANGES.gpkg").string() +
                  " is not a package of this tool's ranges in the coordinate system of the ranges, and was left as it "
                  "is; no layer of common areas was written.\nWarning: " +
                  (folder / "new/WXL_OVERLAP_ANALYSIS.html").string() +
                  " is not a page of this tool and was left as it is; no page was written.\n");
    EXPECT_EQ(read_file(folder / "new/RANGES.gpkg"), "my notes");
    EXPECT_EQ(read_file(folder / "new/WXL_OVERLAP_ANALYSIS.html"), "my page");
}

TEST(Overlap, The_page_shows_pairs_maps_meanings_and_the_call) {
    ScratchFolder folder;
    make_five_cells(folder);
    make_raster(folder, "h&i", middle_row({0.0F, 5000.0F, 0.0F, 0.0F, 0.0F}));
    ASSERT_EQ(compare_five_cells(folder, {"--index", "ba,hr"}).Code, 0);
    const std::string page = read_file(folder / "new/WXL_OVERLAP_ANALYSIS.html");
    EXPECT_THAT(page, HasSubstr("<td class=\"num\" data-value=\"0.661037\">0.661</td>"));
    EXPECT_THAT(page, HasSubstr("HR at 80 %, second"));
    EXPECT_THAT(page, HasSubstr("<title>f and g: 0.0001 km², BA 0.661</title>"));
    EXPECT_THAT(page, HasSubstr("<li>h&amp;i: the cells hold 50.0 % of its distribution"));
    EXPECT_THAT(page, HasSubstr("Bhattacharyya 1943"));
    EXPECT_THAT(page, testing::Not(HasSubstr("volume of intersection")));
    EXPECT_THAT(page, testing::Not(HasSubstr("h&i")));
    EXPECT_THAT(page, HasSubstr("wxl overlap " + folder.Path().string() + " --percent 80 --index ba,hr --out " +
                                (folder / "new").string()));
}

TEST(Overlap, Rasters_on_different_grids_are_refused_with_both) {
    ScratchFolder folder;
    make_five_cells(folder);
    make_raster(folder, "h", {{1.0F}});
    const Ran ran = run_wxl({"overlap", folder.Path().string()});
    EXPECT_EQ(ran.Code, 1);
    EXPECT_EQ(ran.Err, "wxl: the rasters lie on different grids: " + (folder / "f").string() +
                           " has 5 x 5 cells of 10 from (500000, 4649000), and " + (folder / "h").string() +
                           " has 1 x 1 cells of 10 from (500000, 4649000); compare rasters of one run with --extent "
                           "full or ref:RASTER\n");
}

TEST(Overlap, Rasters_that_are_no_densities_are_refused) {
    ScratchFolder folder;
    make_raster(folder, "f", middle_row({1.0F, -2.0F, 0.0F, 0.0F, 0.0F}));
    const Ran ran = run_wxl({"overlap", folder.Path().string()});
    EXPECT_EQ(ran.Code, 1);
    EXPECT_EQ(ran.Err, "wxl: " + (folder / "f").string() + " is no density raster: it has a cell of -2\n");
}

TEST(Overlap, Volumes_that_are_not_whole_are_told) {
    ScratchFolder folder;
    make_five_cells(folder);
    make_raster(folder, "h", middle_row({0.0F, 5000.0F, 0.0F, 0.0F, 0.0F}));
    make_raster(folder, "i", middle_row({0.0F, 0.0F, 0.0F, 0.0F, 0.0F}));
    make_raster(folder, "j", middle_row({0.0F, 20000.0F, 0.0F, 0.0F, 0.0F}));
    const Ran ran = run_wxl({"overlap", folder.Path().string(), "--index", "ba"});
    EXPECT_EQ(ran.Code, 0);
    EXPECT_EQ(ran.Err,
              "h: the cells hold 50.0 % of its distribution: the grid, or the reach of the kernels, cuts it\n"
              "i: not compared: no volume in the grid\n"
              "j: the raster holds 2 times a whole distribution: give its scaling factor by --scaling S\n");
    const Ran whole = run_wxl({"overlap", folder.Path().string(), "--index", "ba", "--normalise", "--json"});
    EXPECT_EQ(Json::parse(whole.Out)["pairs"][9]["ba"], 1.0);  // h with itself
}

TEST(Overlap, Of_a_layer_with_an_animal_of_one_fix) {
    ScratchFolder folder;
    const std::string layer = make_layer(folder, two_clusters_and_a_loner());
    const Ran ran = run_wxl({"overlap", layer, "--id-field", "animal", "--json"});
    EXPECT_EQ(ran.Code, 0);
    EXPECT_EQ(ran.Err, "c: not compared: one fix is too few for a bandwidth\n");
    const Json json = Json::parse(ran.Out);
    ASSERT_EQ(json["pairs"].size(), 6U);
    EXPECT_EQ(json["animals"][0]["n"], 20);
    EXPECT_NEAR(json["animals"][0]["volume"].get<double>(), 1.0, 3e-4);
    EXPECT_EQ(json["animals"][2].dump(), R"({"id":"c","n":1,"bandwidth":null,"volume":null,"area":{"95":null},)"
                                         R"("status":"one fix is too few for a bandwidth"})");
    EXPECT_TRUE(json["pairs"][2]["ba"].is_null());  // a with c
    EXPECT_EQ(json["pairs"][0]["hd"], 0.0);
    EXPECT_LT(json["pairs"][1]["ba"].get<double>(), 0.1);  // clusters 300 m apart, bandwidths of 16 m
}

// The raster of an analysis on the same cells holds the same density in 32-bit floats.
TEST(Overlap, Of_an_earlier_run_is_that_of_its_fixes) {
    ScratchFolder folder;
    const std::string layer = make_layer(folder, two_clusters_and_a_loner());
    const std::string out = (folder / "kde").string();
    ASSERT_EQ(run_wxl({"kde", layer, "--id-field", "animal", "--out", out, "--cell-size", "5", "--extent", "full:100",
                       "--answer", "yes"})
                  .Code,
              0);
    const Ran ran = run_wxl({"overlap", out, "--json"});
    EXPECT_EQ(ran.Code, 0) << ran.Err;
    const Json ofRun = Json::parse(ran.Out);
    const Json ofFixes =
        Json::parse(run_wxl({"overlap", layer, "--id-field", "animal", "--cell-size", "5", "--json"}).Out);
    ASSERT_EQ(ofRun["animals"].size(), 3U);
    EXPECT_EQ(ofRun["animals"][0]["id"], "a");
    EXPECT_EQ(ofRun["animals"][0]["n"], 20);
    EXPECT_NEAR(ofRun["animals"][0]["bandwidth"].get<double>(), ofFixes["animals"][0]["bandwidth"].get<double>(), 1e-9);
    EXPECT_TRUE(ofRun["animals"][2]["volume"].is_null());
    EXPECT_NEAR(ofRun["pairs"][1]["ba"].get<double>(), ofFixes["pairs"][1]["ba"].get<double>(), 1e-4);  // other origin
}

TEST(Overlap, Groups_of_one_animal_are_compared) {
    ScratchFolder folder;
    std::string rows;
    for (int i = 0; i < 40; ++i)
        rows += "a," + std::to_string(500000 + 50 * (i % 2)) + "," + std::to_string(4649000 + 50 * (i / 2 % 2)) +
                (i < 20 ? ",2018-05-09" : ",2019-05-09") + "\n";
    const std::string layer = make_layer(folder, rows);
    const Ran ran = run_wxl({"overlap", layer, "--id-field", "animal", "--split-by", "year", "--json"});
    EXPECT_EQ(ran.Err, "");
    const Json json = Json::parse(ran.Out);
    EXPECT_EQ(json["animals"][0]["id"], "a 2018");
    EXPECT_EQ(json["animals"][1]["id"], "a 2019");
    EXPECT_EQ(json["pairs"][1]["hr_ij"], 1.0);  // the same fixes in both years
    EXPECT_EQ(json["pairs"][1]["hd"], 0.0);
}

/// Gives the row `row` of a shapefile of points other coordinates.
void move_point(const std::string& shapefile, std::size_t row, double x, double y) {
    std::fstream file(shapefile, std::ios::binary | std::ios::in | std::ios::out);
    const std::array<double, 2> place = {x, y};
    file.seekp(static_cast<std::streamoff>(100 + 28 * row + 12));
    file.write(reinterpret_cast<const char*>(place.data()), 16);
}

// Places that are none count in no command; places that are absurd leave their own animal without a range.
TEST(Overlap, Fixes_at_no_place_or_an_absurd_one_leave_the_others_as_they_are) {
    ScratchFolder folder;
    std::string rows;
    for (int i = 0; i < 4; ++i) rows += "z,500000,4649000,2018-05-1" + std::to_string(i) + "\n";
    const std::string good = make_layer(folder, two_clusters_and_a_loner());
    const Json expected = Json::parse(
        run_wxl({"overlap", good, "--id-field", "animal", "--where", "animal < 'c'", "--cell-size", "4", "--json"})
            .Out);
    ScratchFolder hostile;
    const std::string layer = make_layer(hostile, two_clusters_and_a_loner() + rows);
    constexpr double kNan = std::numeric_limits<double>::quiet_NaN();
    constexpr double kInfinity = std::numeric_limits<double>::infinity();
    move_point(layer, 40, kNan, 4649000.0);
    move_point(layer, 41, 1e308, -1e308);
    move_point(layer, 42, -1e308, 1e308);
    move_point(layer, 43, 500000.0, -kInfinity);
    const Ran ran = run_wxl(
        {"overlap", layer, "--id-field", "animal", "--cell-size", "4", "--json", "--out", (folder / "out").string()});
    EXPECT_EQ(ran.Code, 0);
    EXPECT_THAT(ran.Err, HasSubstr("2 points left out: no location\n"));
    EXPECT_THAT(ran.Err, HasSubstr("c: not compared: no fix\n"));
    EXPECT_THAT(ran.Err, HasSubstr("z: not compared: the fixes have no spread\n"));
    const Json json = Json::parse(ran.Out);
    EXPECT_EQ(json["pairs"][1], expected["pairs"][1]);
    EXPECT_TRUE(json["pairs"][3]["ba"].is_null());
    for (const char* command : {"mcp", "curve"}) {
        const Ran other = run_wxl({command, layer, "--id-field", "animal"});
        EXPECT_EQ(other.Code, 0) << other.Err;
        EXPECT_THAT(other.Err, HasSubstr("2 points left out: no location\n"));
    }
}

TEST(Overlap, Without_any_distribution_the_call_fails) {
    ScratchFolder folder;
    const std::string layer = make_layer(folder, "a,5,5,2018-05-09\nb,6,6,2018-05-09\nb,6,6,2018-05-10\n");
    const Ran ran = run_wxl({"overlap", layer, "--id-field", "animal", "--json"});
    EXPECT_EQ(ran.Code, 1);
    EXPECT_EQ(ran.Err,
              "a: not compared: one fix is too few for a bandwidth\n"
              "b: not compared: the fixes have no spread\n"
              "wxl: " +
                  layer + ": no animal has a distribution\n");
    EXPECT_EQ(Json::parse(ran.Out)["pairs"].size(), 3U);
}

TEST(Overlap, Calls_that_make_no_sense_are_refused) {
    ScratchFolder folder;
    const std::string layer = make_layer(folder, two_clusters_and_a_loner());
    const auto refusal = [&](std::vector<std::string> options) {
        options.insert(options.begin(), {"overlap", layer});
        const Ran ran = run_wxl(options);
        EXPECT_EQ(ran.Code, 2);
        return ran.Err;
    };
    EXPECT_EQ(refusal({}),
              "wxl: name the field of the animals by --id-field FIELD (only a folder of rasters needs none)\n");
    EXPECT_EQ(refusal({"--id-field", "animal", "--percent", "95,0"}),
              "wxl: --percent: \"0\" is no percentage above 0 and up to 100\n");
    EXPECT_EQ(refusal({"--id-field", "animal", "--index", "ba,xx"}),
              "wxl: --index: \"xx\" is not ba, vi, udoi, phr, hr or hd\n");
    EXPECT_EQ(refusal({"--id-field", "animal", "--bandwidth", "adhoc:0"}),
              "wxl: --bandwidth: \"0\" is not a number of parts from 1 to 1000\n");
    EXPECT_EQ(refusal({"--id-field", "animal", "--bandwidth", "wide"}),
              "wxl: --bandwidth: \"wide\" is not href, lscv, bcv, adhoc[:PARTS], prop:P, or a number of map units "
              "above 0\n");
    EXPECT_EQ(refusal({"--id-field", "animal", "--bandwidth", "adhoc", "--adaptive"}),
              "wxl: --bandwidth adhoc is for fixed kernels of coordinates as they are: leave out --adaptive and "
              "--rescale\n");
    EXPECT_EQ(refusal({"--id-field", "animal", "--every-tolerance", "1h"}), "wxl: --every-tolerance needs --every\n");
    EXPECT_EQ(refusal({"--id-field", "animal", "--every", "soon"}),
              "wxl: --every: \"soon\" is no time span like 4h, 30min or 1d12h\n");
    EXPECT_EQ(refusal({"--id-field", "animal", "--scaling", "2"}), "wxl: --scaling is for a folder of rasters\n");
    ScratchFolder empty;
    EXPECT_EQ(run_wxl({"overlap", empty.Path().string()}).Err,
              "wxl: " + empty.Path().string() +
                  " holds no density rasters: name the output folder of wxl kde, or a point layer with --id-field "
                  "FIELD\n");
}

}  // namespace
}  // namespace wxl::cli
