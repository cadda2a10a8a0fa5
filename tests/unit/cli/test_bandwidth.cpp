#include "tests/unit/cli/layer_files.h"

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <fmt/format.h>
#include <fstream>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>
#include <random>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

namespace wxl::cli {
namespace {

using tests::ScratchFolder;

const std::string kSquare =
    "a,0,0,2018-05-09\n"
    "a,2,0,2018-05-10\n"
    "a,0,2,2018-05-11\n"
    "a,2,2,2018-05-12\n";

/// Two clouds of 60 fixes, spread 100, centres 1500 apart: cross-validation prefers a bandwidth of a cloud's size to
/// that of the whole.
std::string two_clusters() {
    std::mt19937 random(7);
    const auto normal = [&] {
        double sum = -6.0;
        for (int i = 0; i < 12; ++i) sum += static_cast<double>(random()) / 4294967296.0;
        return sum;
    };
    std::ostringstream rows;
    for (int i = 0; i < 120; ++i)
        rows << "c," << (i % 2) * 1500 + 100.0 * normal() << "," << 100.0 * normal() << ",2018-05-09\n";
    return rows.str();
}

/// Six places 600 apart with 36 fixes each, no two at one spot, in an order of no meaning. Each row ends in `more`.
std::string six_places(const std::string& header, const std::string& more) {
    std::mt19937 random(11);
    std::vector<std::string> rows;
    const auto shift = [&] { return static_cast<double>(random() % 3000) / 100.0 - 15.0; };
    for (int i = 0; i < 216; ++i) {
        const int place = i / 36;
        const double x = place * 600 + i % 6 * 40 + shift();
        const double y = place % 2 * 600 + i % 36 / 6 * 40 + shift();
        rows.push_back("a," + std::to_string(x) + "," + std::to_string(y) + more + "\n");
    }
    for (std::size_t i = rows.size() - 1; i > 0; --i) std::swap(rows[i], rows[random() % (i + 1)]);
    std::string text = "animal,x,y" + header + "\n";
    for (const std::string& row : rows) text += row;
    return text;
}

std::string layer_of(const ScratchFolder& folder, const std::string& rows) {
    const std::string csv = write_file(folder, "six.csv", rows);
    const std::string layer = (folder / "six.gpkg").string();
    const Ran ran = run_wxl({"import", csv, layer, "--from-crs", "EPSG:32633", "--no-time"});
    EXPECT_EQ(ran.Code, 0) << ran.Err;
    return layer;
}

TEST(Bandwidth, A_range_in_many_parts_is_told) {
    const ScratchFolder folder;
    const std::string layer = layer_of(folder, six_places("", ""));
    const std::string text =
        "advised: adhoc, as with the bandwidth of LSCV its 95 % range is in 6 parts, often a sign of too small a "
        "bandwidth (Hemson et al. 2005): the smallest proportion of HREF that leaves the range whole (Kie 2013)";
    EXPECT_EQ(run_wxl({"bandwidth", layer, "--id-field", "animal", "--method", "lscv"}).Err, "a: " + text + "\n");
    for (const char* rescale : {"--json", "--rescale"}) {
        const Ran ran = run_wxl({"bandwidth", layer, "--id-field", "animal", "--method", "lscv", "--json", rescale});
        const auto advice = nlohmann::json::parse(ran.Out)[0]["advice"];
        EXPECT_EQ(advice["text"], text);
        EXPECT_EQ(advice["method"], "adhoc");
        EXPECT_EQ(advice["range_parts"], 6);
        EXPECT_TRUE(advice["position_error"].is_null());
    }
}

TEST(Bandwidth, A_bandwidth_below_the_error_of_the_positions_is_told) {
    const ScratchFolder folder;
    const std::string layer = layer_of(folder, six_places(",location-error-numerical", ",90.5"));
    const Ran ran = run_wxl({"bandwidth", layer, "--id-field", "animal", "--method", "lscv", "--json"});
    const auto advice = nlohmann::json::parse(ran.Out)[0]["advice"];
    EXPECT_EQ(advice["position_error"]["median_metres"], 90.5);
    EXPECT_EQ(advice["position_error"]["field"], "location-error-numerical");
    EXPECT_EQ(advice["position_error"]["from"], "metres");
    EXPECT_THAT(
        advice["text"].get<std::string>(),
        testing::MatchesRegex(
            "advised: adhoc, as the bandwidth of LSCV, 6[0-9]\\.[0-9]+ m, is smaller than the error of its "
            "positions \\(median 90.5 m, from location-error-numerical\\), and finer detail is error, not use of "
            "space \\(Moser and Garton 2007\\): the smallest proportion of HREF that leaves the range whole "
            "\\(Kie 2013\\), and not below that error"));
}

// 36 fixes of a square lattice of 100: the variances are 100^2 x 3, and HREF is 173.2051 x 36^(-1/6) = 95.32.
TEST(Bandwidth, Classes_of_Argos_tell_the_error_of_the_positions) {
    const ScratchFolder folder;
    std::string rows = "animal,x,y,lc\n";
    for (int i = 0; i < 36; ++i)
        rows += "a," + std::to_string(i % 6 * 100) + "," + std::to_string(i / 6 * 100) + (i % 3 == 0 ? ",3\n" : ",B\n");
    const Ran ran = run_wxl({"bandwidth", layer_of(folder, rows), "--id-field", "animal", "--method", "href"});
    EXPECT_THAT(ran.Err, testing::EndsWith(
                             "HREF, as even that, 95.32 m, is smaller than the error of its positions (median 10280 m, "
                             "from the Argos classes of lc after Costa et al. 2010): the range tells of the error as "
                             "much as of the animal (Moser and Garton 2007)\n"));
}

TEST(Bandwidth, Reference_bandwidth_of_a_square) {
    ScratchFolder folder;
    const std::string layer = make_layer(folder, kSquare);
    const Ran ran = run_wxl({"bandwidth", layer, "--id-field", "animal", "--method", "href"});
    EXPECT_EQ(ran.Code, 0);
    EXPECT_EQ(
        ran.Err,
        "a: advised: HREF, as 4 fixes are too few for a search (30 or more: Seaman et al. 1999); an area of so few "
        "is a first look\n");
    EXPECT_EQ(ran.Out,
              "id  n          bandwidth               href\n"
              "a   4  0.916486424665735  0.916486424665735\n");
}

TEST(Bandwidth, Rescaled_bandwidth_is_told_in_both_units) {
    ScratchFolder folder;
    const std::string layer = make_layer(folder, kSquare);
    const Ran ran = run_wxl({"bandwidth", layer, "--id-field", "animal", "--method", "href", "--rescale", "--json"});
    EXPECT_EQ(ran.Code, 0);
    const auto json = nlohmann::json::parse(ran.Out);
    EXPECT_NEAR(json[0]["bandwidth"].get<double>(), std::pow(4.0, -1.0 / 6.0), 1e-12);
    EXPECT_NEAR(json[0]["bandwidth_map_units"].get<double>(), std::sqrt(4.0 / 3.0) * std::pow(4.0, -1.0 / 6.0), 1e-12);
}

TEST(Bandwidth, Search_tells_its_minimum_and_writes_the_scores_it_reached) {
    ScratchFolder folder;
    const std::string layer = make_layer(folder, two_clusters());
    const std::string csv = (folder / "p.csv").string();
    const Ran ran =
        run_wxl({"bandwidth", layer, "--id-field", "animal", "--method", "lscv", "--profile", csv, "--json"});
    EXPECT_EQ(ran.Code, 0) << ran.Err;
    const auto json = nlohmann::json::parse(ran.Out);
    ASSERT_EQ(json.size(), 1U);
    EXPECT_EQ(json[0]["id"], "c");
    EXPECT_EQ(json[0]["n"], 120);
    EXPECT_EQ(json[0]["method"], "lscv");
    const double href = json[0]["href"].get<double>();
    const double smallest = json[0]["minimum"]["h"].get<double>();
    EXPECT_TRUE(json[0]["minimised"].get<bool>());
    EXPECT_EQ(json[0]["bandwidth"].get<double>(), smallest);

    std::istringstream lines(read_file(csv));
    std::string line;
    std::getline(lines, line);
    EXPECT_EQ(line, "id,h,score");
    int rows = 0;
    double lowest = INFINITY;
    double lowestAt = 0.0;
    while (std::getline(lines, line)) {
        double h = 0.0;
        double score = 0.0;
        ASSERT_EQ(std::sscanf(line.c_str(), "c,%lf,%lf", &h, &score), 2) << line;
        EXPECT_GE(h, 0.05 * href * 0.999999);
        EXPECT_LE(h, 2.0 * href * 1.000001);
        if (score < lowest) lowestAt = h;
        lowest = std::min(lowest, score);
        ++rows;
    }
    EXPECT_GE(rows, 201);
    EXPECT_LE(rows, 203);
    EXPECT_NEAR(lowestAt, smallest, 1e-9 * smallest);
}

TEST(Bandwidth, Animal_without_spread_is_told_and_the_others_go_on) {
    ScratchFolder folder;
    const std::string layer = make_layer(folder, kSquare + "b,5,5,2018-05-09\n");
    const Ran ran = run_wxl({"bandwidth", layer, "--id-field", "animal", "--method", "href", "--json"});
    EXPECT_EQ(ran.Code, 0);
    EXPECT_NE(ran.Err.find("b: no bandwidth, because one fix is too few\n"), std::string::npos);
    const auto json = nlohmann::json::parse(ran.Out);
    EXPECT_EQ(json[1]["id"], "b");
    EXPECT_TRUE(json[1]["bandwidth"].is_null());
    EXPECT_TRUE(json[1]["href"].is_null());
    EXPECT_TRUE(json[1]["minimised"].is_null());
    EXPECT_TRUE(json[1]["minimum"].is_null());
}

TEST(Bandwidth, Layer_in_which_no_animal_has_one_fails) {
    ScratchFolder folder;
    const std::string layer = make_layer(folder, "b,5,5,2018-05-09\nb,5,5,2018-05-10\n");
    const Ran ran = run_wxl({"bandwidth", layer, "--id-field", "animal", "--method", "href"});
    EXPECT_EQ(ran.Code, 1);
    EXPECT_NE(ran.Err.find("wxl: " + layer + ": no animal has a bandwidth\n"), std::string::npos) << ran.Err;
}

// The mean of equal numbers of this size is off by a rounding, which leaves a variance above zero.
TEST(Bandwidth, Fixes_at_one_place_have_no_bandwidth_wherever_the_place_is) {
    ScratchFolder folder;
    std::string rows;
    for (int i = 0; i < 41; ++i) rows += "b,323484.2194833446,6144646.98291362,2018-05-09\n";
    const std::string layer = make_layer(folder, rows);
    const std::string svg = (folder / "p.svg").string();
    for (const char* method : {"lscv", "bcv"}) {
        const Ran ran = run_wxl({"bandwidth", layer, "--id-field", "animal", "--method", method, "--plot", svg});
        EXPECT_EQ(ran.Code, 1);
        EXPECT_EQ(ran.Out, "id   n  bandwidth  href  minimised\nb   41        N/A   N/A        N/A\n");
        EXPECT_EQ(ran.Err, "b: no bandwidth, because its 41 fixes are too few or have no spread\nwxl: " + layer +
                               ": no animal has a bandwidth\n");
        EXPECT_FALSE(std::filesystem::exists(svg));
    }
}

TEST(Bandwidth, Fixes_on_a_line_along_an_axis_cannot_be_rescaled) {
    ScratchFolder folder;
    std::string rows;
    for (int i = 0; i < 41; ++i) rows += fmt::format("b,323484.2194833446,{},2018-05-09\n", 6144646 + i * i);
    const std::string layer = make_layer(folder, rows);
    for (const char* method : {"href", "lscv", "bcv"}) {
        const Ran ran = run_wxl({"bandwidth", layer, "--id-field", "animal", "--method", method, "--rescale"});
        EXPECT_EQ(ran.Code, 1);
        EXPECT_EQ(ran.Err, "b: no bandwidth, because its 41 fixes are too few or have no spread\nwxl: " + layer +
                               ": no animal has a bandwidth\n");
    }
}

TEST(Bandwidth, Method_is_taken_in_any_case) {
    ScratchFolder folder;
    const std::string layer = make_layer(folder, kSquare);
    const auto json =
        nlohmann::json::parse(run_wxl({"bandwidth", layer, "--id-field", "animal", "--method", "LSCV", "--json"}).Out);
    EXPECT_EQ(json[0]["method"], "lscv");
    const Ran wrong = run_wxl({"bandwidth", layer, "--id-field", "animal", "--method", "best"});
    EXPECT_EQ(wrong.Code, 2);
    EXPECT_EQ(wrong.Err, "wxl: --method: \"best\" is not href, lscv or bcv; wxl bandwidth --help tells more\n");
}

TEST(Bandwidth, Pictures_are_refused_under_the_ending_of_another_format) {
    ScratchFolder folder;
    const std::string layer = make_layer(folder, kSquare);
    const std::string png = (folder / "p.png").string();
    const Ran ran = run_wxl({"bandwidth", layer, "--id-field", "animal", "--method", "lscv", "--plot", png});
    EXPECT_EQ(ran.Code, 2);
    EXPECT_EQ(ran.Err, "wxl: --plot: the picture is an SVG, and \"" + png + "\" does not end in .svg\n");
}

TEST(Bandwidth, Reference_rule_has_no_profile) {
    const Ran ran = run_wxl({"bandwidth", "x.shp", "--id-field", "animal", "--method", "href", "--profile", "p.csv"});
    EXPECT_EQ(ran.Code, 2);
    EXPECT_EQ(ran.Err, "wxl: --profile needs --method lscv or bcv: the reference rule has no scores\n");
}

/// Names of the files in a folder that end with ".svg", in order.
std::vector<std::string> pictures_in(const ScratchFolder& folder) {
    std::vector<std::string> names;
    for (const auto& entry : std::filesystem::directory_iterator(folder.Path()))
        if (entry.path().extension() == ".svg") names.push_back(entry.path().filename().string());
    std::sort(names.begin(), names.end());
    return names;
}

TEST(Bandwidth, Plot_of_one_animal_is_one_picture) {
    ScratchFolder folder;
    const std::string layer = make_layer(folder, two_clusters());
    const std::string svg = (folder / "p.svg").string();
    const Ran ran = run_wxl({"bandwidth", layer, "--id-field", "animal", "--method", "lscv", "--plot", svg, "--json"});
    EXPECT_EQ(ran.Code, 0) << ran.Err;
    EXPECT_EQ(pictures_in(folder), std::vector<std::string>{"p.svg"});
    EXPECT_EQ(nlohmann::json::parse(ran.Out)[0]["plot"], svg);
    const std::string picture = read_file(svg);
    EXPECT_THAT(picture, testing::StartsWith("<svg xmlns=\"http://www.w3.org/2000/svg\""));
    EXPECT_THAT(picture, testing::HasSubstr(">c: LSCV profile</title>"));
    EXPECT_THAT(picture, testing::HasSubstr(">Bandwidth h (metre)</text>"));
    EXPECT_THAT(picture, testing::HasSubstr(">HREF "));
}

TEST(Bandwidth, Plot_of_several_animals_is_a_picture_for_each_that_was_searched) {
    ScratchFolder folder;
    const std::string layer =
        make_layer(folder, "<b>,9,9,2018-05-09\n" + kSquare + "z,0,0,2018-05-09\nz,1,3,2018-05-10\nz,5,1,2018-05-11\n");
    const std::string svg = (folder / "p.svg").string();
    const Ran ran = run_wxl({"bandwidth", layer, "--id-field", "animal", "--method", "bcv", "--plot", svg, "--json"});
    EXPECT_EQ(ran.Code, 0) << ran.Err;
    // "<b>" has one fix and naming ID 1.
    EXPECT_EQ(pictures_in(folder), (std::vector<std::string>{"p-2.svg", "p-3.svg"}));
    const auto json = nlohmann::json::parse(ran.Out);
    EXPECT_TRUE(json[0]["plot"].is_null());
    EXPECT_EQ(json[2]["plot"], (folder / "p-3.svg").string());
    EXPECT_THAT(read_file((folder / "p-3.svg").string()), testing::HasSubstr(">z: BCV profile</title>"));
}

TEST(Bandwidth, Plot_of_a_rescaled_sample_is_in_its_units) {
    ScratchFolder folder;
    const std::string layer = make_layer(folder, two_clusters());
    const std::string svg = (folder / "p.svg").string();
    EXPECT_EQ(
        run_wxl({"bandwidth", layer, "--id-field", "animal", "--method", "lscv", "--plot", svg, "--rescale"}).Code, 0);
    EXPECT_THAT(read_file(svg), testing::HasSubstr(">Bandwidth h (unit variance)</text>"));
}

TEST(Bandwidth, Plot_that_exists_is_replaced_only_when_asked_for) {
    ScratchFolder folder;
    const std::string layer = make_layer(folder, kSquare + "z,0,0,2018-05-09\nz,1,3,2018-05-10\n");
    const std::string second = (folder / "p-2.svg").string();
    std::ofstream(second) << "mine";
    const std::vector<std::string> call = {"bandwidth", layer,  "--id-field", "animal",
                                           "--method",  "lscv", "--plot",     (folder / "p.svg").string()};
    const Ran refused = run_wxl(call);
    EXPECT_EQ(refused.Code, 1);
    EXPECT_THAT(refused.Err, testing::HasSubstr(second + " exists: choose another name, or give --overwrite"));
    EXPECT_EQ(pictures_in(folder), std::vector<std::string>{"p-2.svg"});
    EXPECT_EQ(read_file(second), "mine");
    auto again = call;
    again.push_back("--overwrite");
    EXPECT_EQ(run_wxl(again).Code, 0);
    EXPECT_THAT(read_file(second), testing::StartsWith("<svg"));
}

TEST(Bandwidth, Plot_needs_a_search) {
    const Ran ran = run_wxl({"bandwidth", "x.shp", "--id-field", "animal", "--method", "href", "--plot", "p.svg"});
    EXPECT_EQ(ran.Code, 2);
    EXPECT_THAT(ran.Err, testing::HasSubstr("--plot needs --method lscv or bcv: the reference rule has no scores"));
}

}  // namespace
}  // namespace wxl::cli
