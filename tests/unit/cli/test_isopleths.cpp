#include "adapters/ogr/ogr_feature_class.h"
#include "tests/unit/cli/layer_files.h"
#include "tests/unit/cli/raster_files.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

namespace wxl::cli {
namespace {

using tests::ScratchFolder;

// Bins of 4 / 100000: the middle lies in bin 100000, its 8 neighbours in bin 50001, the 16 cells around them in bin
// 25000. Volume 100000 + 8 x 50001 + 16 x 25000 = 900008. Half of it is reached with the neighbours (500008): level
// 50001 x 4 / 100000. 95 % (855007.6) needs the 16 cells: level 25000 x 4 / 100000.
const std::vector<float> kHill = {0.0F, 1.00003F, 2.00006F, 4.0F};
constexpr double kLevel50 = 2.00004;
constexpr double kLevel95 = 1.0;

// The contours run a hair outside the centres of the neighbours (a square of 2 x 2 cells) and of the cells around them
// (4 x 4 cells), of 10 m.
constexpr double kArea50 = 400.0;
constexpr double kArea95 = 1600.0;

/// A hill that reaches the raster's edge; one corner is empty.
std::vector<std::vector<float>> cut_hill() {
    auto rows = rings({1.00003F, 2.00006F, 4.0F});
    rows[0][0] = 0.0F;
    return rows;
}

struct IsoplethCommand : testing::Test {
    ScratchFolder Folder;
    const std::string Out = (Folder / "out").string();

    Ran Draw(const std::string& raster, std::vector<std::string> more) const {
        std::vector<std::string> arguments = {"isopleths", raster, "--out", Out, "--name", "K1"};
        arguments.insert(arguments.end(), more.begin(), more.end());
        return run_wxl(arguments);
    }

    std::string Output(const std::string& ending) const { return Out + "/K1_" + ending + ".shp"; }
};

/// The numbers of one field, row by row.
std::vector<double> numbers_of(const std::string& shapefile, const std::string& field) {
    const auto features = files::OgrFeatureClass::Open(shapefile);
    const int column = features->Table().FindField(field);
    std::vector<double> numbers;
    const auto rows = features->Find({});
    while (const auto row = rows->NextFeature()) numbers.push_back(platform::ValueNumber(row->Value(column)));
    return numbers;
}

TEST_F(IsoplethCommand, Levels_that_look_like_shares_are_told_to_be_percentages) {
    const std::string raster = make_raster(Folder, "k1", rings(kHill));
    const std::string told = "the levels are percentages: 95 means 95 %, and 0.95 less than one percent\n";
    const Ran shares = Draw(raster, {"--levels", "0.95,0.5"});
    EXPECT_TRUE(shares.Err.starts_with(told)) << shares.Err;
    EXPECT_EQ(Draw(raster, {"--levels", "95,0.5", "--overwrite"}).Err.find(told), std::string::npos);
}

TEST_F(IsoplethCommand, Draws_lines_polygons_and_donuts_of_a_grid) {
    const std::string raster = make_raster(Folder, "k1", rings(kHill));
    const Ran ran = Draw(raster, {"--levels", "95,50", "--lines", "--polygons", "--donuts", "--json"});
    ASSERT_EQ(ran.Code, 0) << ran.Err;
    EXPECT_EQ(ran.Err, "");
    const auto json = nlohmann::ordered_json::parse(ran.Out);
    ASSERT_EQ(json["levels"].size(), 2U);
    EXPECT_EQ(json["levels"][0]["percent"], 95);
    EXPECT_DOUBLE_EQ(json["levels"][0]["level"].get<double>(), kLevel95);
    EXPECT_NEAR(json["levels"][0]["area"].get<double>(), kArea95, 0.5);
    EXPECT_EQ(json["levels"][1]["percent"], 50);
    EXPECT_DOUBLE_EQ(json["levels"][1]["level"].get<double>(), kLevel50);
    EXPECT_NEAR(json["levels"][1]["area"].get<double>(), kArea50, 0.5);
    EXPECT_EQ(json["max_edge_value"], 0.0);
    EXPECT_EQ(json["min"], 0.0);
    EXPECT_EQ(json["max"], 4.0);
    EXPECT_EQ(json["status"], 0);
    EXPECT_EQ(json["files"], (std::vector<std::string>{Output("line"), Output("poly"), Output("donut")}));
    EXPECT_EQ(numbers_of(Output("line"), "PERCENT"), (std::vector<double>{50, 95}));
    EXPECT_EQ(numbers_of(Output("poly"), "PERCENT"), (std::vector<double>{95, 50}));
}

TEST_F(IsoplethCommand, Donuts_are_rings_whatever_the_order_of_the_percentages) {
    const std::string raster = make_raster(Folder, "k1", rings(kHill));
    ASSERT_EQ(Draw(raster, {"--levels", "95,50,95", "--donuts"}).Code, 0);
    EXPECT_EQ(numbers_of(Output("donut"), "PERCENT1"), (std::vector<double>{0, 50}));
    EXPECT_EQ(numbers_of(Output("donut"), "PERCENT2"), (std::vector<double>{50, 95}));
    const auto areas = numbers_of(Output("donut"), "AREA");
    ASSERT_EQ(areas.size(), 2U);
    EXPECT_NEAR(areas[0], kArea50, 0.5);
    EXPECT_NEAR(areas[1], kArea95 - kArea50, 0.5);
}

// 40 and 50 % both need the neighbours of the middle, which end at a volume of 500008.
TEST_F(IsoplethCommand, Percentages_that_share_a_level_share_its_area) {
    const std::string raster = make_raster(Folder, "k1", rings(kHill));
    const Ran ran = Draw(raster, {"--levels", "40,50,95", "--polygons", "--donuts", "--json"});
    ASSERT_EQ(ran.Code, 0) << ran.Err;
    const auto json = nlohmann::ordered_json::parse(ran.Out);
    EXPECT_EQ(json["levels"][0]["level"], json["levels"][1]["level"]);
    EXPECT_NEAR(json["levels"][0]["area"].get<double>(), kArea50, 0.5);
    EXPECT_EQ(json["levels"][1]["area"], json["levels"][0]["area"]);
    EXPECT_NEAR(json["levels"][2]["area"].get<double>(), kArea95, 0.5);
    EXPECT_EQ(numbers_of(Output("poly"), "PERCENT"), (std::vector<double>{95, 40}));
    const auto donuts = numbers_of(Output("donut"), "AREA");
    ASSERT_EQ(donuts.size(), 2U);
    EXPECT_NEAR(donuts[1], kArea95 - kArea50, 0.5);
}

TEST_F(IsoplethCommand, Draws_polygons_when_nothing_is_named_and_prints_a_table) {
    const std::string raster = make_raster(Folder, "k1", rings(kHill));
    const Ran ran = Draw(raster, {"--levels", "50"});
    EXPECT_EQ(ran.Code, 0);
    EXPECT_EQ(ran.Out.rfind("percent    level", 0), 0U) << ran.Out;
    EXPECT_NE(ran.Out.find("\n50       2.00004  400."), std::string::npos) << ran.Out;
    EXPECT_NE(ran.Out.find("\n" + Output("poly") + "\n"), std::string::npos);
    EXPECT_EQ(names_in(Out),
              (std::set<std::string>{"K1_poly.cpg", "K1_poly.dbf", "K1_poly.prj", "K1_poly.shp", "K1_poly.shx"}));
}

TEST_F(IsoplethCommand, Reads_a_geotiff_as_a_grid) {
    const std::string raster = make_raster(Folder, "k1", rings(kHill), "GTiff");
    const Ran ran = Draw(raster, {"--levels", "95", "--lines", "--json"});
    EXPECT_EQ(ran.Code, 0) << ran.Err;
    const auto json = nlohmann::ordered_json::parse(ran.Out);
    EXPECT_DOUBLE_EQ(json["levels"][0]["level"].get<double>(), kLevel95);
    EXPECT_NEAR(json["levels"][0]["area"].get<double>(), kArea95, 0.5) << "known without polygons too";
    EXPECT_EQ(numbers_of(Output("line"), "PERCENT"), (std::vector<double>{95}));
    EXPECT_EQ(files::OgrFeatureClass::Open(Output("line"))->Reference().Name, "WGS 84 / UTM zone 33N");
}

TEST_F(IsoplethCommand, Tells_which_isopleths_the_edge_cuts) {
    const std::string raster = make_raster(Folder, "k1", cut_hill());
    const Ran ran = Draw(raster, {"--levels", "95,50"});
    EXPECT_EQ(ran.Code, 0);
    EXPECT_EQ(ran.Err,
              "cut by the raster's edge: 95 % (cells there reach 1.00003); a larger raster would show them "
              "whole\n");
}

TEST_F(IsoplethCommand, Keeps_shapefiles_that_exist_unless_overwriting_is_asked_for) {
    const std::string raster = make_raster(Folder, "k1", rings(kHill));
    ASSERT_EQ(Draw(raster, {"--levels", "50", "--polygons"}).Code, 0);
    const std::string bytes = read_file(Output("poly"));
    const Ran refused = Draw(raster, {"--levels", "95", "--lines", "--polygons"});
    EXPECT_EQ(refused.Code, 1);
    EXPECT_EQ(refused.Out, "");
    EXPECT_EQ(refused.Err, "wxl: " + Output("poly") + " exists: choose another name, or give --overwrite\n");
    EXPECT_EQ(read_file(Output("poly")), bytes);
    EXPECT_EQ(names_in(Out).size(), 5U);

    EXPECT_EQ(Draw(raster, {"--levels", "95", "--lines", "--polygons", "--overwrite"}).Code, 0);
    EXPECT_EQ(numbers_of(Output("poly"), "PERCENT"), (std::vector<double>{95}));
    EXPECT_EQ(numbers_of(Output("line"), "PERCENT"), (std::vector<double>{95}));
    EXPECT_EQ(names_in(Out).size(), 10U);
}

TEST_F(IsoplethCommand, Failure_says_why_and_leaves_the_old_shapefile) {
    ASSERT_EQ(Draw(make_raster(Folder, "k1", rings(kHill)), {"--levels", "50"}).Code, 0);
    const auto before = names_in(Out);
    const std::string bytes = read_file(Output("poly"));
    const std::string flat = make_raster(Folder, "flat", rings({2.5F, 2.5F, 2.5F}));
    const Ran ran = Draw(flat, {"--levels", "50", "--overwrite", "--json"});
    EXPECT_EQ(ran.Code, 1);
    const auto json = nlohmann::ordered_json::parse(ran.Out);
    EXPECT_EQ(json["status"], 3001);
    EXPECT_EQ(json["max_edge_value"], 2.5);
    EXPECT_TRUE(json["levels"][0]["level"].is_null());
    EXPECT_TRUE(json["files"].empty());
    EXPECT_EQ(ran.Err, "Error: CreateIsopleths 3001\n6\nOverflow\nwxl: " + flat +
                           ": the isopleths could not be made: all cells hold 2.5 (status 3001)\n");
    EXPECT_EQ(names_in(Out), before);
    EXPECT_EQ(read_file(Output("poly")), bytes);
}

TEST_F(IsoplethCommand, Raster_without_a_contour_is_a_failure) {
    // All volume lies in one cell, so that every level is its value, above which nothing lies.
    const std::string peak = make_raster(Folder, "peak", rings({0.0F, 0.0F, 1.0F}));
    const Ran ran = Draw(peak, {"--levels", "50"});
    EXPECT_EQ(ran.Code, 1);
    EXPECT_EQ(ran.Out, "");
    EXPECT_EQ(ran.Err, "wxl: " + peak + ": no cell of the raster lies beyond any of these levels (status 3000)\n");
    EXPECT_TRUE(names_in(Out).empty());
}

TEST_F(IsoplethCommand, Calls_that_make_no_sense_are_refused_before_anything_is_made) {
    const std::string raster = make_raster(Folder, "k1", rings(kHill));
    const auto refused = [&](const std::string& levels, const std::string& piece) {
        const Ran ran = Draw(raster, {"--levels", levels});
        EXPECT_EQ(ran.Code, 2) << levels;
        EXPECT_EQ(ran.Err, "wxl: --levels: \"" + piece + "\" is no percentage above 0 and up to 100\n");
    };
    refused("0", "0");
    refused("95,101", "101");
    refused("95,", "");
    refused("95;50", "95;50");
    refused("-5", "-5");
    refused("nan", "nan");
    EXPECT_EQ(Draw(raster, {}).Code, 2);
    for (const std::string name : {"../K1", "a*", ""}) {
        const Ran ran = run_wxl({"isopleths", raster, "--levels", "50", "--out", Out, "--name", name});
        EXPECT_EQ(ran.Code, 2) << name;
        EXPECT_EQ(ran.Err.rfind("wxl: --name: ", 0), 0U) << ran.Err;
    }
    EXPECT_FALSE(std::filesystem::exists(Out));
}

TEST_F(IsoplethCommand, Missing_rasters_and_impossible_folders_are_told) {
    const std::string absent = (Folder / "absent").string();
    const Ran missing = Draw(absent, {"--levels", "50"});
    EXPECT_EQ(missing.Code, 1);
    EXPECT_EQ(missing.Err, "wxl: File not found: " + absent + "\n");
    EXPECT_FALSE(std::filesystem::exists(Out));

    const std::string file = write_file(Folder, "text.txt", "no raster");
    const Ran foreign = Draw(file, {"--levels", "50"});
    EXPECT_EQ(foreign.Code, 1);
    EXPECT_EQ(foreign.Err.rfind("wxl: " + file + " could not be read", 0), 0U) << foreign.Err;

    const std::string raster = make_raster(Folder, "k1", rings(kHill));
    const Ran blocked = run_wxl({"isopleths", raster, "--levels", "50", "--out", file + "/out", "--name", "K1"});
    EXPECT_EQ(blocked.Code, 1);
    EXPECT_EQ(blocked.Err, "wxl: " + file + "/out: this folder cannot be made; choose another by --out\n");

    const Ran away = Draw("/vsicurl/http://localhost/k1.tif", {"--levels", "50"});
    EXPECT_EQ(away.Code, 1);
    EXPECT_NE(away.Err.find("--allow-indirect"), std::string::npos);
}

TEST_F(IsoplethCommand, Folders_are_made_with_those_above_them_and_may_have_any_letters) {
    const std::string raster = make_raster(Folder, "k1", rings(kHill));
    const std::string out = (Folder / "größe/карта").string();
    EXPECT_EQ(run_wxl({"isopleths", raster, "--levels", "50", "--out", out, "--name", "ä"}).Code, 0);
    EXPECT_TRUE(std::filesystem::exists(out + "/ä_poly.shp"));
}

}  // namespace
}  // namespace wxl::cli
