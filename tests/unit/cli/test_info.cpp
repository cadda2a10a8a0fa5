#include "tests/unit/cli/layer_files.h"

#include <fstream>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>
#include <string>

namespace wxl::cli {
namespace {

using tests::ScratchFolder;

TEST(Info, Layer_is_told_in_lines) {
    ScratchFolder folder;
    const std::string layer = make_layer(folder, "b,1,2,2018-05-09\na,3.5,4,2018-05-09\na,5,-6,2018-05-10\n");
    const Ran ran = run_wxl({"info", layer});
    EXPECT_EQ(ran.Code, 0);
    EXPECT_EQ(ran.Err, "");
    EXPECT_EQ(ran.Out,
              "layer    layer\n"
              "points   3\n"
              "extent   x 1 to 5, y -6 to 4\n"
              "crs      WGS 84 / UTM zone 33N (metre)\n"
              "sizes    areas are up to 0.5 % and distances up to 0.3 % wrong\n"
              "fields   animal (text), Time2 (whole number), Date (text), Time1 (text)\n"
              "animals  2 by animal\n"
              "  a: 2, 2018-05-09 to 2018-05-10, 1.0 days, 2 with a fix, every 24 h (IQR 0 s)\n"
              "  b: 1, 2018-05-09 to 2018-05-09, 0.0 days, 1 with a fix\n");
}

TEST(Info, Layer_is_told_in_json) {
    ScratchFolder folder;
    const std::string layer = make_layer(folder, "b,1,2,2018-05-09\na,3.5,4,2018-05-09\n");
    const Ran ran = run_wxl({"info", layer, "--json", "--id-field", "TIME2"});
    EXPECT_EQ(ran.Code, 0);
    const auto json = nlohmann::json::parse(ran.Out);
    EXPECT_EQ(json["layer"], "layer");
    EXPECT_EQ(json["points"], 2);
    EXPECT_EQ(json["extent"], (nlohmann::json{1.0, 2.0, 3.5, 4.0}));
    EXPECT_EQ(json["crs"]["name"], "WGS 84 / UTM zone 33N");
    EXPECT_EQ(json["crs"]["unit"], "metre");
    EXPECT_EQ(json["crs"]["degrees"], false);
    // 500 km from the middle of the zone on the equator: 0.9996 (1 + 1.00674 x 0.078424^2 / 2), and its square.
    EXPECT_NEAR(json["distortion"]["length"].get<double>(), 0.002694, 4e-6);
    EXPECT_NEAR(json["distortion"]["area"].get<double>(), 0.005396, 8e-6);
    EXPECT_EQ(json["fields"][1], (nlohmann::json{{"name", "Time2"}, {"type", "whole number"}}));
    EXPECT_EQ(json["id_field"], "Time2");
    EXPECT_EQ(json["animals"][0]["id"], 1525824000);
    EXPECT_EQ(json["animals"][0]["n"], 2);
    EXPECT_EQ(json["animals"][0]["equal_times"], 1);
    EXPECT_EQ(json["without_id"], 0);
}

// Intervals 110, 125, 10, 525 and 190 minutes: median 7500 s, quartiles 6600 and 11400.
TEST(Info, Facts_on_times_are_told) {
    ScratchFolder folder;
    const std::string layer =
        make_layer(folder,
                   "a,1,2,2024-01-01 00:10\na,1,2,2024-01-01 02:00\na,1,2,2024-01-01 04:05\na,1,2,2024-01-01 04:15\n"
                   "a,1,2,2024-01-01 13:00\na,1,2,2024-01-01 16:10\nb,1,2,\n");
    const auto json = nlohmann::ordered_json::parse(run_wxl({"info", layer, "--json"}).Out);
    EXPECT_NEAR(json["animals"][0]["days"].get<double>(), 0.666667, 5e-7);
    auto first = json["animals"][0];
    first.erase("days");
    EXPECT_EQ(first.dump(),
              R"({"id":"a","n":6,"first":"2024-01-01T00:10:00Z","last":"2024-01-01T16:10:00Z","distinct_days":1,)"
              R"("median_s":7500.0,"q1_s":6600.0,"q3_s":11400.0,"iqr_s":4800.0,"equal_times":0})");
    EXPECT_EQ(json["animals"][1].dump(),
              R"({"id":"b","n":1,"first":null,"last":null,"days":null,"distinct_days":0,"median_s":null,"q1_s":null,)"
              R"("q3_s":null,"iqr_s":null,"equal_times":0})");
    EXPECT_NE(run_wxl({"info", layer}).Out.find("  b: 1, no times\n"), std::string::npos);
}

TEST(Info, Animals_are_left_open_where_no_field_looks_like_their_name) {
    ScratchFolder folder;
    const std::string file = write_file(
        folder, "p.geojson",
        R"({"type":"FeatureCollection","features":[{"type":"Feature","properties":{"who":"a"},"geometry":{"type":"Point","coordinates":[10,52]}}]})");
    const Ran ran = run_wxl({"info", file});
    EXPECT_EQ(ran.Code, 0);
    EXPECT_EQ(ran.Err, "the animals are not known: name their field by --id-field FIELD\n");
    EXPECT_NE(ran.Out.find("fields   who (text)\n"), std::string::npos) << ran.Out;
    EXPECT_EQ(ran.Out.find("animals"), std::string::npos);
}

TEST(Info, Unknown_field_is_told_with_the_fields_there_are) {
    ScratchFolder folder;
    const std::string layer = make_layer(folder, "b,1,2,2018-05-09\n");
    const Ran ran = run_wxl({"info", layer, "--id-field", "wolf"});
    EXPECT_EQ(ran.Code, 1);
    EXPECT_EQ(ran.Out, "");
    EXPECT_EQ(ran.Err, "wxl: " + layer + " has no field \"wolf\"; its fields are: animal, Time2, Date, Time1\n");
}

TEST(Info, Workbooks_and_damaged_databases_are_told_with_the_way_on) {
    ScratchFolder folder;
    const auto told = [&](const char* name, const std::string& bytes) {
        const std::string file = folder / name;
        std::ofstream(file, std::ios::binary) << bytes;
        const Ran ran = run_wxl({"info", file});
        EXPECT_EQ(ran.Code, 1);
        return ran.Err.substr(std::string("wxl: " + file).size());
    };
    EXPECT_EQ(
        told("a.xlsx", "PK\x03\x04 and so on"),
        " is a workbook: make a layer of it by wxl import, or save its table as CSV (in a spreadsheet: Save as, CSV "
        "UTF-8) and import that, or give --allow-indirect\n");
    EXPECT_EQ(
        told("a.xls", "\xD0\xCF\x11\xE0 and so on"),
        " is an old Excel workbook or Word document: save the table as CSV (in a spreadsheet: Save as, CSV UTF-8), and "
        "import that\n");
    EXPECT_EQ(told("a.gpkg", "SQLite format 3" + std::string(2000, '\0')),
              " could not be read: the file is no database, or a damaged one\n");
}

}  // namespace
}  // namespace wxl::cli
