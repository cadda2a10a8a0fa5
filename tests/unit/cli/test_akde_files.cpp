// What wxl akde writes besides rasters and shapefiles, and where.

#include "platform/text.h"
#include "tests/unit/cli/layer_files.h"
#include "tests/unit/cli/package_rows.h"
#include "tests/unit/cli/timed_rows.h"

#include <filesystem>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

namespace wxl::cli {
namespace {

namespace fs = std::filesystem;
using Json = nlohmann::ordered_json;
using testing::EndsWith;
using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;
using tests::ScratchFolder;

Ran akde(const std::string& layer, const std::string& out, std::vector<std::string> more = {}) {
    std::vector<std::string> arguments{"akde", layer, "--id-field", "animal", "--out", out, "--cell-size", "20"};
    arguments.insert(arguments.end(), more.begin(), more.end());
    return run_wxl(arguments);
}

TEST(AkdePackage, Holds_estimates_and_limits_of_all_animals) {
    ScratchFolder folder;
    const std::string layer =
        make_layer(folder, fourteen_rows("a") + fourteen_rows("b") + "c,500000,5800000,2020-01-01T06:00:00Z\n");
    const std::string out = (folder / "out").string();
    const Ran ran = akde(layer, out, {"--gpkg", "--json"});
    ASSERT_EQ(ran.Code, 0) << ran.Err;
    const fs::path package = out + "/RANGES.gpkg";
    EXPECT_EQ(Json::parse(ran.Out)["package"], package.string());

    const auto isopleths = rows_of(package, "isopleths");
    ASSERT_EQ(isopleths.size(), 12U);
    EXPECT_THAT(isopleths[0], StartsWith("a|95|high|"));
    EXPECT_THAT(isopleths[0], HasSubstr("|akde|OU isotropic|14|3.28296"));
    EXPECT_THAT(isopleths[0], EndsWith("|2020-01-01T00:00:00Z|2020-01-02T02:00:00Z|1|1"));
    EXPECT_THAT(isopleths[1], StartsWith("a|95|est|"));
    EXPECT_THAT(isopleths[6], StartsWith("b|95|high|"));

    const auto fixes = rows_of(package, "fixes");
    ASSERT_EQ(fixes.size(), 29U);
    EXPECT_EQ(fixes[1], "a|2|2020-01-01T02:00:00Z");
    EXPECT_EQ(fixes[28], "c|1|2020-01-01T06:00:00Z");

    // A row for each animal and percentage, and one that says why there is no range.
    const auto summary = rows_of(package, "summary");
    ASSERT_EQ(summary.size(), 5U);
    EXPECT_THAT(summary[0], StartsWith("a|14|14|2020-01-01T00:00:00Z|2020-01-02T02:00:00Z|OU isotropic|22123.2"));
    EXPECT_THAT(summary[0], EndsWith("||1|0"));
    EXPECT_THAT(summary[4], StartsWith("c|1|1|2020-01-01T06:00:00Z|2020-01-01T06:00:00Z||"));
    EXPECT_THAT(summary[4], EndsWith("|There is 1 fix of different times: at least 3 are needed.|3|1"));
}

// The areas are those of the worked example; outlines on cells of 20 m enclose them to 1e-3.
TEST(AkdePackage, Outlines_enclose_the_areas_of_their_rows) {
    ScratchFolder folder;
    const std::string out = (folder / "out").string();
    ASSERT_EQ(akde(make_layer(folder, fourteen_rows("a")), out, {"--gpkg", "--isopleths", "95"}).Code, 0);
    files::RegisterGdal();
    const fs::path package = out + "/RANGES.gpkg";
    const files::GdalDatasetPtr dataset(GDALDataset::Open(package.c_str(), GDAL_OF_VECTOR | GDAL_OF_READONLY));
    OGRLayer& layer = *dataset->GetLayerByName("isopleths");
    EXPECT_STREQ(layer.GetSpatialRef()->GetName(), "WGS 84 / UTM zone 33N");
    EXPECT_TRUE(layer.TestCapability(OLCFastSpatialFilter));
    const std::vector<double> areas = {6471294, 2769916, 627897};
    std::size_t row = 0;
    for (const auto& feature : layer) {
        ASSERT_LT(row, areas.size());
        EXPECT_NEAR(feature->GetFieldAsDouble("area_m2") / areas[row], 1.0, 1e-3);
        EXPECT_NEAR(feature->GetFieldAsDouble("area_ha") * 1e4 / areas[row], 1.0, 1e-3);
        const auto& shape = *feature->GetGeometryRef()->toMultiPolygon();
        EXPECT_NEAR(shape.get_Area() / areas[row], 1.0, 5e-3);
        ++row;
    }
    EXPECT_EQ(row, 3U);
    const auto styles = rows_of(package, "layer_styles");
    ASSERT_EQ(styles.size(), 2U);
    EXPECT_THAT(styles[0], HasSubstr("label=\"95 % limits of its area\""));
    EXPECT_THAT(styles[0], HasSubstr("name=\"outline_style\" value=\"dash\""));
}

TEST(AkdePackage, A_later_run_keeps_the_ranges_of_other_rasters) {
    ScratchFolder folder;
    const std::string layer = make_layer(folder, fourteen_rows("a"));
    const std::string out = (folder / "out").string();
    const fs::path package = out + "/RANGES.gpkg";
    const auto run = [&](const std::vector<std::string>& more) {
        std::vector<std::string> all{"--gpkg", "--overwrite"};
        all.insert(all.end(), more.begin(), more.end());
        const Ran ran = akde(layer, out, all);
        EXPECT_EQ(ran.Code, 0) << ran.Err;
        return read_file(package);
    };
    const std::string first = run({});
    EXPECT_EQ(rows_of(package, "isopleths").size(), 6U);
    run({"--prefix", "P", "--isopleths", "80"});
    EXPECT_EQ(rows_of(package, "isopleths").size(), 9U);
    EXPECT_EQ(rows_of(package, "fixes").size(), 14U);
    run({"--isopleths", "90"});
    const auto isopleths = rows_of(package, "isopleths");
    ASSERT_EQ(isopleths.size(), 6U);
    EXPECT_THAT(isopleths[0], EndsWith("|P1"));
    EXPECT_THAT(isopleths[3], StartsWith("a|90|high|"));
    EXPECT_EQ(rows_of(package, "summary").size(), 2U);
    fs::remove_all(out);
    EXPECT_EQ(run({}) == first, true);
}

TEST(AkdePackage, The_package_of_another_command_stays) {
    ScratchFolder folder;
    const std::string layer = make_layer(folder, fourteen_rows("a"));
    const std::string out = (folder / "out").string();
    ASSERT_EQ(run_wxl({"kde", layer, "--id-field", "animal", "--out", out, "--cell-size", "20", "--gpkg"}).Code, 0);
    const std::string before = read_file(out + "/RANGES.gpkg");
    const Ran ran = akde(layer, out, {"--gpkg", "--prefix", "K"});
    EXPECT_EQ(ran.Code, 0);
    EXPECT_THAT(ran.Err, HasSubstr("Warning: " + out +
                                   "/RANGES.gpkg is not a package of ranges with limits in the coordinate system of "
                                   "the points, and was left as it is; no package was written. Choose another output "
                                   "folder for one.\n"));
    EXPECT_EQ(read_file(out + "/RANGES.gpkg") == before, true);
    EXPECT_THAT(ran.Out, Not(HasSubstr("ranges: ")));
}

TEST(AkdePackage, A_layer_of_the_package_is_never_written_over) {
    ScratchFolder folder;
    const std::string out = (folder / "out").string();
    ASSERT_EQ(akde(make_layer(folder, fourteen_rows("a")), out, {"--gpkg"}).Code, 0);
    const std::string before = read_file(out + "/RANGES.gpkg");
    const Ran ran =
        akde(out + "/RANGES.gpkg:fixes", out, {"--time-field", "time", "--gpkg", "--prefix", "K", "--overwrite"});
    EXPECT_EQ(ran.Code, 1);
    EXPECT_THAT(ran.Err, HasSubstr(out + "/RANGES.gpkg"));
    EXPECT_EQ(read_file(out + "/RANGES.gpkg") == before, true);
    const Ran again = akde(out + "/RANGES.gpkg:fixes", (folder / "two").string(), {"--time-field", "time", "--gpkg"});
    EXPECT_EQ(again.Code, 0) << again.Err;
    EXPECT_EQ(read_file(folder / "two/RANGES.gpkg") == before, true);
}

TEST(AkdeSubfolders, Take_the_rasters_of_every_so_many_animals) {
    ScratchFolder folder;
    const std::string layer = make_layer(folder, fourteen_rows("a") + fourteen_rows("b") + fourteen_rows("c"));
    const std::string out = (folder / "out").string();
    const Ran ran = akde(layer, out, {"--group-by", "2", "--raster-format", "gtiff", "--gpkg", "--html", "--json"});
    ASSERT_EQ(ran.Code, 0) << ran.Err;
    EXPECT_EQ(names_in(out), (std::set<std::string>{"animals_1-2", "animals_3-3", "RANGES.gpkg",
                                                    "WXL_AKDE_ANALYSIS.html", "WXL_AKDE_SUMMARY.csv"}));
    EXPECT_TRUE(fs::exists(out + "/animals_1-2/2.tif") && fs::exists(out + "/animals_3-3/3_poly.shp"));
    EXPECT_EQ(Json::parse(ran.Out)["animals"][2]["files"][0], out + "/animals_3-3/3.tif");
    EXPECT_THAT(rows_of(out + "/RANGES.gpkg", "isopleths").back(), EndsWith("|animals_3-3/3"));
    const std::string page = read_file(out + "/WXL_AKDE_ANALYSIS.html");
    EXPECT_THAT(page, HasSubstr("<code>animals_3-3/3</code>"));
    EXPECT_THAT(page, HasSubstr(" --group-by 2 --isopleths 95,50 --gpkg --html"));
    EXPECT_THAT(page, Not(HasSubstr("there is no map")));
    const Ran again = akde(layer, out, {"--group-by", "2", "--raster-format", "gtiff"});
    EXPECT_EQ(again.Code, 1);
    EXPECT_THAT(again.Err, HasSubstr(" exists: choose another folder or prefix, or give --overwrite\n"));
    EXPECT_EQ(akde(layer, out, {"--group-by", "2", "--raster-format", "gtiff", "--overwrite"}).Code, 0);
}

TEST(AkdeSubfolders, A_link_in_their_place_is_refused) {
    ScratchFolder folder;
    const std::string layer = make_layer(folder, fourteen_rows("a"));
    const std::string out = (folder / "out").string();
    fs::create_directories(out);
    fs::create_directories(folder / "elsewhere");
    fs::create_directory_symlink(folder / "elsewhere", out + "/animals_1-1");
    const Ran ran = akde(layer, out, {"--group-by", "5"});
    EXPECT_EQ(ran.Code, 1);
    EXPECT_THAT(ran.Err, HasSubstr(out + "/animals_1-1 is a link, and nothing is written through links: delete it"));
    EXPECT_TRUE(fs::is_empty(folder / "elsewhere"));
}

// Every second of the fixes is two hours after the one before it.
TEST(AkdeImport, Options_of_import_say_how_a_tracking_file_is_read) {
    ScratchFolder folder;
    const std::string file = write_file(folder, "t.csv", "who,east,north,when\n" + fourteen_rows("a"));
    const auto call = [&](const std::string& out, std::vector<std::string> more) {
        std::vector<std::string> arguments{"akde",       file,         "--out",   (folder / out).string(),
                                           "--id",       "who",        "--x",     "east",
                                           "--y",        "north",      "--time",  "when",
                                           "--from-crs", "EPSG:32633", "--every", "4h"};
        arguments.insert(arguments.end(), more.begin(), more.end());
        return run_wxl(arguments);
    };
    const Ran ran = call("out", {"--json", "--html", "--cell-size", "50"});
    ASSERT_EQ(ran.Code, 0) << ran.Err;
    EXPECT_EQ(Json::parse(ran.Out)["animals"][0]["n"], 7);
    EXPECT_THAT(read_file(folder / "out/WXL_AKDE_ANALYSIS.html"),
                HasSubstr(" --id who --x east --y north --time when --from-crs EPSG:32633 --every 4h --id-field animal "
                          "--time-field Date,Time1 --out "));
    const Ran split = call("two", {"--dry-run", "--split-by", "year-month"});
    EXPECT_THAT(split.Out, StartsWith("a 2020-01: 7 fixes")) << split.Err;
    const Ran timeless = run_wxl({"models", file, "--no-time"});
    EXPECT_EQ(timeless.Code, 2);
    EXPECT_EQ(timeless.Err, "wxl: --no-time: movement models need the times of the fixes\n");
}

std::vector<std::string> summary_lines(const fs::path& folder) {
    std::vector<std::string> lines = platform::Split(read_file(folder / "WXL_AKDE_SUMMARY.csv"), '\n');
    EXPECT_EQ(lines.back(), "");
    lines.pop_back();
    for (std::string& line : lines) {
        EXPECT_THAT(line, EndsWith("\r"));
        line.pop_back();
    }
    return lines;
}

TEST(AkdeSummary, Rows_name_their_rasters) {
    ScratchFolder folder;
    const std::string layer = make_layer(folder, fourteen_rows("a") + "c,500000,5800000,2020-01-01T06:00:00Z\n");
    const fs::path out = folder / "out";
    ASSERT_EQ(akde(layer, out, {"--group-by", "1", "--prefix", "K"}).Code, 0);
    const auto lines = summary_lines(out);
    ASSERT_EQ(lines.size(), 4U);
    EXPECT_EQ(lines[0],
              "id,n,model,tau_position_s,tau_velocity_s,dof_area,h,dof_bandwidth,bias,weights,cell_size,volume,percent,"
              "area_low,area,area_high,reason,raster");
    EXPECT_THAT(lines[1], StartsWith("a,14,OU isotropic,22123.2"));
    EXPECT_THAT(lines[1], EndsWith(",,animals_1-1/K1"));
    EXPECT_THAT(lines[2], EndsWith(",,animals_1-1/K1"));
    EXPECT_EQ(lines[3], "c,1,,,,,,,,,,,,,,,There is 1 fix of different times: at least 3 are needed.,animals_2-2/K2");
}

TEST(AkdeSummary, A_later_run_keeps_the_rows_of_other_rasters) {
    ScratchFolder folder;
    const std::string layer = make_layer(folder, fourteen_rows("a") + fourteen_rows("b"));
    const fs::path out = folder / "out";
    ASSERT_EQ(akde(layer, out).Code, 0);
    const auto first = summary_lines(out);
    ASSERT_EQ(first.size(), 5U);
    // Other names are no reason to refuse a run.
    ASSERT_EQ(akde(layer, out, {"--prefix", "P", "--isopleths", "80", "--where", "animal = 'b'"}).Code, 0);
    auto expected = first;
    expected.push_back(summary_lines(out).back());
    EXPECT_THAT(expected.back(), EndsWith(",,P1"));
    EXPECT_EQ(summary_lines(out), expected);
    // The raster "1" is made anew, of another animal: rows stand in the order in which they came.
    ASSERT_EQ(akde(layer, out, {"--overwrite", "--isopleths", "90", "--where", "animal = 'b'"}).Code, 0);
    const auto last = summary_lines(out);
    ASSERT_EQ(last.size(), 5U);
    EXPECT_EQ((std::vector(last.begin(), last.begin() + 4)),
              (std::vector<std::string>{first[0], first[3], first[4], expected[5]}));
    EXPECT_THAT(last[4], StartsWith("b,14,"));
    EXPECT_THAT(last[4], EndsWith(",,1"));
}

TEST(AkdeSummary, A_batch_keeps_the_rows_that_a_run_keeps) {
    ScratchFolder folder;
    const std::string layer = make_layer(folder, fourteen_rows("a") + fourteen_rows("b"));
    const std::string batch = (folder / "batch").string();
    for (const std::string& out : {(folder / "run").string(), batch}) ASSERT_EQ(akde(layer, out).Code, 0);
    ASSERT_EQ(akde(layer, folder / "run", {"--prefix", "P"}).Code, 0);
    ASSERT_EQ(run_wxl({"batch", "plan-akde", layer, "--id-field", "animal", "--out", batch, "--cell-size", "20",
                       "--prefix", "P", "--tasks", "2"})
                  .Code,
              0);
    for (const char* task : {"1", "2"}) ASSERT_EQ(run_wxl({"batch", "run", batch, "--task", task}).Code, 0);
    ASSERT_EQ(run_wxl({"batch", "merge", batch}).Code, 0);
    EXPECT_EQ(summary_lines(batch).size(), 9U);
    EXPECT_EQ(summary_lines(batch), summary_lines(folder / "run"));
}

TEST(AkdeSummary, A_file_that_is_none_stays_as_it_is) {
    ScratchFolder folder;
    const std::string layer = make_layer(folder, fourteen_rows("a"));
    const fs::path out = folder / "out";
    fs::create_directories(out);
    write_file(folder, "out/WXL_AKDE_SUMMARY.csv", "my notes\n");
    const Ran ran = akde(layer, out, {"--overwrite"});
    EXPECT_EQ(ran.Code, 0);
    EXPECT_THAT(ran.Err, HasSubstr("Warning: " + (out / "WXL_AKDE_SUMMARY.csv").string() +
                                   " is not a summary of this tool and was left as it is; no summary was written.\n"));
    EXPECT_THAT(ran.Out, Not(HasSubstr("summary: ")));
    EXPECT_EQ(read_file(out / "WXL_AKDE_SUMMARY.csv"), "my notes\n");
    EXPECT_TRUE(Json::parse(akde(layer, out, {"--json", "--prefix", "P"}).Out)["summary"].is_null());
}

// A summary that another run left in the folder hides no ranges, and one without a range is told.
TEST(AkdeSummary, Names_the_animals_whose_ranges_are_compared) {
    ScratchFolder folder;
    const std::string layer =
        make_layer(folder, fourteen_rows("a") + fourteen_rows("b") + "c,500000,5800000,2020-01-01T06:00:00Z\n");
    const std::string out = (folder / "out").string();
    ASSERT_EQ(akde(layer, out, {"--extent", "full"}).Code, 0);
    const Json json = Json::parse(run_wxl({"overlap", out, "--json"}).Out);
    ASSERT_EQ(json["animals"].size(), 3U);
    EXPECT_EQ(json["animals"][0]["id"], "a");
    EXPECT_EQ(json["animals"][0]["n"], 14);
    EXPECT_EQ(json["animals"][1]["id"], "b");
    EXPECT_EQ(json["animals"][2]["id"], "c");
    EXPECT_THAT(json["animals"][2]["status"].get<std::string>(), HasSubstr("There is 1 fix of different times"));
    EXPECT_NEAR(json["pairs"][0]["ba"].get<double>(), 1.0, 1e-3);  // the same fixes
    ASSERT_EQ(run_wxl({"kde", layer, "--id-field", "animal", "--out", out, "--extent", "ref:" + out + "/1", "--prefix",
                       "K", "--where", "animal = 'b'"})
                  .Code,
              0);
    const Json both = Json::parse(run_wxl({"overlap", out, "--json"}).Out);
    EXPECT_EQ(both["animals"].size(), 4U) << both.dump(1);
}

TEST(AkdeDryRun, Tells_what_would_be_computed_and_writes_nothing) {
    ScratchFolder folder;
    const std::string layer = make_layer(folder, fourteen_rows("a") + "b,500000,5800000,2020-01-01T06:00:00Z\n");
    const std::string out = (folder / "out").string();
    const Ran ran = akde(layer, out, {"--dry-run", "--group-by", "1", "--prefix", "K"});
    EXPECT_EQ(ran.Code, 0) << ran.Err;
    EXPECT_THAT(ran.Out, StartsWith("a: 14 fixes, 2020-01-01T00:00:00Z to 2020-01-02T02:00:00Z, about "));
    EXPECT_THAT(ran.Out, HasSubstr(" s, raster animals_1-1/K1\nb: 1 fix, "));
    EXPECT_THAT(ran.Out, EndsWith("raster animals_2-2/K2: will fail: There is 1 fix of different times: at least 3 are "
                                  "needed.\n"));
    EXPECT_FALSE(fs::exists(out));
    const Json json = Json::parse(akde(layer, out, {"--dry-run", "--json"}).Out);
    EXPECT_EQ(json["animals"][0]["n_used"], 14);
    EXPECT_TRUE(json["animals"][0]["failure"].is_null());
    EXPECT_EQ(json["names_taken"], Json::array());
}

/// The fixes of an animal belong to none from now on.
void forget_animal(const std::string& layer, const std::string& animal) {
    files::RegisterGdal();
    const files::GdalDatasetPtr dataset(GDALDataset::Open(layer.c_str(), GDAL_OF_VECTOR | GDAL_OF_UPDATE));
    OGRLayer& rows = *dataset->GetLayer(0);
    for (const auto& row : rows) {
        if (row->GetFieldAsString("animal") != animal) continue;
        row->SetField("animal", "");
        ASSERT_EQ(rows.SetFeature(row.get()), OGRERR_NONE);
    }
}

TEST(AkdeDryRun, Tells_of_points_without_an_animal_as_that_of_kde_does) {
    ScratchFolder folder;
    const std::string layer = make_layer(folder, fourteen_rows("a") + "x,500000,5800000,2020-01-01T06:00:00Z\n" +
                                                     "x,500000,5800001,2020-01-01T07:00:00Z\n");
    forget_animal(layer, "x");
    const std::string out = (folder / "out").string();
    const Ran ran = akde(layer, out, {"--dry-run", "--json"});
    EXPECT_EQ(Json::parse(ran.Out)["points_without_id"], 2);
    EXPECT_EQ(ran.Err, "wxl: 2 points have no value in the field animal and will be left out\n");
    const Ran kde =
        run_wxl({"kde", layer, "--id-field", "animal", "--out", out, "--cell-size", "20", "--dry-run", "--json"});
    EXPECT_EQ(kde.Err, ran.Err);
    EXPECT_EQ(Json::parse(kde.Out)["points_without_id"], 2);
    EXPECT_EQ(
        Json::parse(akde(layer, out, {"--dry-run", "--json", "--where", "animal = 'a'"}).Out)["points_without_id"], 0);
    // The run says so too, and wxl models, and whoever plans a batch.
    const std::string warning = "Warning: 2 points have no value in the field animal and are left out.\n";
    EXPECT_THAT(akde(layer, out).Err, StartsWith(warning));
    EXPECT_THAT(run_wxl({"batch", "plan-akde", layer, "--id-field", "animal", "--out", out, "--overwrite"}).Err,
                StartsWith(warning));
    EXPECT_THAT(run_wxl({"models", layer, "--id-field", "animal"}).Err, StartsWith(warning));
}

TEST(AkdeDryRun, Of_animals_without_a_range_has_failed) {
    ScratchFolder folder;
    const Ran ran =
        akde(make_layer(folder, "b,500000,5800000,2020-01-01T06:00:00Z\n"), (folder / "out").string(), {"--dry-run"});
    EXPECT_EQ(ran.Code, 1);
    EXPECT_EQ(ran.Err, "wxl: no distribution can be computed in this way\n");
}

TEST(AkdeDryRun, Tells_what_keeps_the_run_from_starting) {
    ScratchFolder folder;
    const std::string layer = make_layer(folder, fourteen_rows("a"));
    const std::string out = (folder / "out").string();
    ASSERT_EQ(akde(layer, out, {"--raster-format", "gtiff"}).Code, 0);
    for (const char* part : {"cpg", "dbf", "prj", "shx"}) fs::remove(out + "/1_poly." + part);
    const Ran ran = akde(layer, out, {"--dry-run", "--raster-format", "gtiff"});
    EXPECT_EQ(ran.Code, 1);
    EXPECT_EQ(ran.Err,
              "wxl: the run will be refused, because the output folder holds 1.tif, 1_poly.shp: --overwrite replaces "
              "them, --out names another folder\n");
    EXPECT_EQ(akde(layer, out, {"--dry-run", "--overwrite"}).Code, 0);
}

}  // namespace
}  // namespace wxl::cli
