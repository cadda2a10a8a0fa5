#include "adapters/ogr/ogr_feature_class.h"
#include "isopleths/rings.h"
#include "tests/unit/cli/layer_files.h"
#include "tests/unit/cli/timed_rows.h"

#include <algorithm>
#include <gtest/gtest.h>
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
    EXPECT_NE(again.Err.find("WXL_AKDE_SUMMARY.csv"), std::string::npos) << again.Err;
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
    EXPECT_EQ(code({"--extent", "full"}), 2);
    EXPECT_EQ(code({"--weights", "some"}), 2);
    EXPECT_EQ(code({"--at", "OU"}), 2);
}

// 5000 m of kernels in cells of a millimetre.
TEST(Akde, Too_many_cells_are_refused_with_advice) {
    ScratchFolder folder;
    const Ran ran =
        run_akde_on(make_layer(folder, fourteen_rows("a")), (folder / "out").string(), {"--cell-size", "0.001"});
    EXPECT_EQ(ran.Code, 1);
    EXPECT_NE(ran.Err.find("more than 50 million: give a larger --cell-size\n"), std::string::npos) << ran.Err;
}

}  // namespace
}  // namespace wxl::cli
