#include "adapters/gdal/gdal_support.h"
#include "adapters/ogr/ogr_feature_class.h"
#include "tests/support/telemetry.h"
#include "tests/unit/cli/layer_files.h"

#include <chrono>
#include <cmath>
#include <cstdlib>
#include <gdal_priv.h>
#include <gtest/gtest.h>
#include <ogrsf_frmts.h>
#include <thread>
#include <variant>
#include <vector>

namespace wxl::cli {
namespace {

using platform::FieldValue;
using tests::ScratchFolder;

const std::string kHeader =
    "event-id,visible,timestamp,location-long,location-lat,import-marked-outlier,individual-local-identifier\n";
const std::string kNoneLeftOut =
    "rows left out: 0 not visible, 0 outliers, 0 without a position, 0 without an animal\n";

/// What is told of a projection whose scale is that of UTM near its middle.
std::string utm_note(const std::string& zone) {
    return "in WGS 84 / UTM zone " + zone + ", areas are up to 0.1 % and distances less than 0.05 % wrong\n";
}

const std::string kNoTime =
    "columns: animal \"id\", x \"lon\", y \"lat\", no time\n"
    "no time column found; give it by --time COLUMN (the movement tools need it)\n";

struct Row {
    std::vector<FieldValue> Values;
    platform::Point Location;
};

std::vector<Row> rows_of(const std::string& shapefile) {
    const auto points = files::OgrFeatureClass::Open(shapefile);
    const auto cursor = points->Find({});
    std::vector<Row> rows;
    while (const auto feature = cursor->NextFeature()) {
        Row row{{}, feature->Shape().Location};
        for (int i = 0; i < static_cast<int>(points->Table().Fields().size()); ++i)
            row.Values.push_back(feature->Value(i));
        rows.push_back(row);
    }
    return rows;
}

TEST(Import, Movebank_table_becomes_a_shapefile_in_its_utm_zone) {
    ScratchFolder folder;
    const std::string csv = write_file(folder, "t.csv",
                                       kHeader +
                                           "1,true,2018-05-09 14:59:05.000,15.0,0.0,false,\"007\"\n"
                                           "2,false,2018-05-09 15:59:05.000,15.1,0.0,false,\"007\"\n"
                                           "3,true,2018-05-08 00:00:00.000,15.0,0.0,false,\"007\"\n"
                                           "4,true,2018-05-08 00:00:00.000,15.0,0.0,true,\"007\"\n"
                                           "5,true,2018-05-08 00:00:00.000,,,false,\"007\"\n"
                                           "6,true,2018-05-08 00:00:00.000,15.0,0.0,false,\n"
                                           "7,true,,15.0,0.0,false,\"007\"\n"
                                           "8,true,2018-05-10 00:00:00.000,15.0,0.0,false,\"00\xC3\xA9\"\n");
    const std::string shp = (folder / "t.shp").string();
    const Ran ran = run_wxl({"import", csv, shp});
    EXPECT_EQ(ran.Code, 0);
    EXPECT_EQ(ran.Out, shp + ": 4 fixes of 2 animals, WGS 84 / UTM zone 33N (EPSG:32633)\n");
    EXPECT_EQ(
        ran.Err,
        "columns: animal \"individual-local-identifier\", x \"location-long\", y \"location-lat\", time \"timestamp\"\n"
        "rows left out: 1 not visible, 1 outliers, 1 without a position, 1 without an animal\n"
        "1 fix without a time kept, after the others of the animal; Time2 is empty there\n" +
            utm_note("33N") + "fields: \"event-id\" is event_id, \"import-marked-outlier\" is import_mar\n");

    const auto fields = files::OgrFeatureClass::Open(shp)->Table().Fields();
    ASSERT_EQ(fields.size(), 7U);
    EXPECT_EQ(fields[0].Name, "animal");
    EXPECT_EQ(fields[0].Type, platform::FieldType::kText);
    EXPECT_EQ(fields[1].Name, "Time2");
    EXPECT_EQ(fields[1].Type, platform::FieldType::kInteger);
    EXPECT_EQ(fields[2].Name, "Date");
    EXPECT_EQ(fields[3].Name, "Time1");
    EXPECT_EQ(fields[4].Name, "event_id");
    EXPECT_EQ(fields[4].Type, platform::FieldType::kInteger);
    EXPECT_EQ(fields[5].Name, "visible");
    EXPECT_EQ(fields[6].Name, "import_mar");

    const auto rows = rows_of(shp);
    ASSERT_EQ(rows.size(), 4U);
    const std::int64_t day = 17659LL * 86400;  // 2018-05-08
    EXPECT_EQ(rows[0].Values,
              (std::vector<FieldValue>{"007", day, "2018-05-08", "00:00:00", std::int64_t{3}, "true", "false"}));
    EXPECT_EQ(rows[1].Values, (std::vector<FieldValue>{"007", day + 86400 + 53945, "2018-05-09", "14:59:05",
                                                       std::int64_t{1}, "true", "false"}));
    EXPECT_EQ(rows[2].Values[0], FieldValue("007"));
    EXPECT_TRUE(platform::IsMissing(rows[2].Values[1]));
    EXPECT_EQ(rows[3].Values[0], FieldValue("00\xC3\xA9"));
    EXPECT_NEAR(rows[0].Location.X, 500000.0, 1e-6);
    EXPECT_NEAR(rows[0].Location.Y, 0.0, 1e-6);
    EXPECT_EQ(files::OgrFeatureClass::Open(shp)->Reference().Name, "WGS 84 / UTM zone 33N");
}

TEST(Import, Every_file_of_the_shapefile_has_its_final_name_and_nothing_else_is_left) {
    ScratchFolder folder;
    make_layer(folder, "a,1,2,2018-05-09\n");
    EXPECT_EQ(names_in(folder.Path()),
              (std::set<std::string>{"layer.csv", "layer.cpg", "layer.dbf", "layer.prj", "layer.shp", "layer.shx"}));
}

TEST(Import, Projected_coordinates_are_kept_as_they_are) {
    ScratchFolder folder;
    const auto rows = rows_of(make_layer(folder, "a,123456.789,6000000.125,2018-05-09\n"));
    ASSERT_EQ(rows.size(), 1U);
    EXPECT_EQ(rows[0].Location, (platform::Point{123456.789, 6000000.125}));
}

TEST(Import, Target_coordinate_system_can_be_chosen) {
    ScratchFolder folder;
    const std::string csv = write_file(folder, "t.csv", "id,lon,lat\na,10,52\n");
    const std::string shp = (folder / "t.shp").string();
    const Ran ran = run_wxl({"-q", "import", csv, shp, "--to-crs", "epsg:3035"});
    EXPECT_EQ(ran.Code, 0);
    EXPECT_EQ(ran.Out, shp + ": 1 fix of 1 animal, ETRS89-extended / LAEA Europe (epsg:3035)\n");
    EXPECT_EQ(ran.Err, "");
    // The centre of that projection has these coordinates by definition.
    const auto rows = rows_of(shp);
    EXPECT_NEAR(rows.at(0).Location.X, 4321000.0, 0.01);
    EXPECT_NEAR(rows.at(0).Location.Y, 3210000.0, 0.01);
}

TEST(Import, Times_of_any_century_come_back_as_whole_seconds) {
    ScratchFolder folder;
    const auto rows = rows_of(make_layer(folder,
                                         "a,1,2,1900-01-01\n"
                                         "a,1,2,1969-12-31 23:59:59\n"
                                         "a,1,2,2038-01-19 03:14:08\n"
                                         "a,1,2,2300-01-01\n"));
    ASSERT_EQ(rows.size(), 4U);
    EXPECT_EQ(rows[0].Values, (std::vector<FieldValue>{"a", -2208988800LL, "1900-01-01", "00:00:00"}));
    EXPECT_EQ(rows[1].Values, (std::vector<FieldValue>{"a", -1LL, "1969-12-31", "23:59:59"}));
    EXPECT_EQ(rows[2].Values, (std::vector<FieldValue>{"a", 2147483648LL, "2038-01-19", "03:14:08"}));
    EXPECT_EQ(rows[3].Values, (std::vector<FieldValue>{"a", 10413792000LL, "2300-01-01", "00:00:00"}));
}

TEST(Import, Numbers_of_times_are_told_with_their_days) {
    ScratchFolder folder;
    const std::string csv = write_file(folder, "t.csv", "id,lon,lat,date\na,10,52,43229.5\na,10,52,43233\n");
    const Ran ran = run_wxl({"import", csv, (folder / "t.shp").string()});
    EXPECT_NE(ran.Err.find("\nthe numbers of the time are read as days of a spreadsheet: 2018-05-09 to 2018-05-13\n"),
              std::string::npos)
        << ran.Err;
    const std::string second = write_file(folder, "u.csv", "id,lon,lat,date\na,10,52,43250\n");
    const Ran both = run_wxl({"import", csv, second, (folder / "b.shp").string()});
    EXPECT_NE(both.Err.find("\nthe numbers of the time are read as days of a spreadsheet: 2018-05-09 to 2018-05-30\n"),
              std::string::npos)
        << both.Err;
}

TEST(Import, Times_of_clocks_that_were_not_set_are_told_and_kept) {
    ScratchFolder folder;
    std::string rows;
    for (int i = 1; i < 10; ++i) rows += "w,10,52,2018-05-0" + std::to_string(i) + " 14:59\n";
    const auto told = [&](const std::string& odd) {
        const std::string csv = write_file(folder, "t.csv", "id,lon,lat,time\n" + rows + odd);
        const Ran ran = run_wxl({"import", csv, (folder / "t.shp").string(), "--overwrite"});
        EXPECT_EQ(ran.Code, 0);
        EXPECT_NE(ran.Err.find("rows left out: 0 not visible, 0 outliers, 0 without a position, 0 without an animal\n"),
                  std::string::npos)
            << ran.Err;
        const std::size_t begin = ran.Err.find('\n') + 1;
        return ran.Err.substr(begin, ran.Err.find("\nrows left out") - begin);
    };
    EXPECT_EQ(told("w,10,52,1970-01-01T00:00:00\n"),
              "1 fix stands where clocks start, far from the other times (line 11, animal \"w\": 1970-01-01T00:00:00), "
              "as if the clock had not been set; correct the times, or empty their cells to keep the fixes without a "
              "time");
    EXPECT_EQ(
        told("w,10,52,2000-01-01 00:00\nw,10,52,1980-01-06\n"),
        "2 fixes stand where clocks start, far from the other times (the first: line 11, animal \"w\": 2000-01-01 "
        "00:00), as if the clock had not been set; correct the times, or empty their cells to keep the fixes "
        "without a time");
    EXPECT_EQ(
        told("w,10,52,1998-09-19 12:00\n"),
        "1 fix is 1024 weeks from the other times of its animal (line 11, animal \"w\": 1998-09-19 12:00), as where "
        "a receiver's count of weeks starts anew; move such times by 7168 days in the table, or empty their cells "
        "to keep the fixes without a time");
    EXPECT_EQ(told("w,10,52,2080-05-01 12:00\n"),
              "1 fix is over 20 years from the other times of its animal (line 11, animal \"w\": 2080-05-01 12:00); if "
              "that is wrong, correct the times, or empty their cells to keep the fixes without a time");
}

TEST(Import, Positions_that_name_their_system_are_imported_in_it) {
    ScratchFolder folder;
    const std::string csv = write_file(
        folder, "t.csv", "id,geom\na,SRID=32633;POINT(500000 5800000)\na,SRID=32633;POINT(500010 5800000)\n");
    const Ran ran = run_wxl({"import", csv, (folder / "t.gpkg").string()});
    EXPECT_EQ(ran.Code, 0);
    EXPECT_NE(ran.Err.find("\npositions are in EPSG:32633, as their SRID says\n"), std::string::npos) << ran.Err;
    EXPECT_NE(ran.Out.find("2 fixes of 1 animal, WGS 84 / UTM zone 33N"), std::string::npos) << ran.Out;
    const std::string other = write_file(folder, "o.csv", "id,geom\na,POINT(15 52)\n");
    const Ran both = run_wxl({"import", csv, other, (folder / "b.gpkg").string()});
    EXPECT_EQ(both.Code, 1);
    EXPECT_NE(both.Err.find("are in EPSG:32633, those of " + other + " in EPSG:4326: import each on its own"),
              std::string::npos)
        << both.Err;
}

TEST(Import, Table_without_times_gets_no_time_fields) {
    ScratchFolder folder;
    const std::string csv = write_file(folder, "t.csv", "id,lon,lat\na,10,52\n");
    const Ran ran = run_wxl({"import", csv, (folder / "t.shp").string()});
    EXPECT_EQ(ran.Err, kNoTime + kNoneLeftOut + utm_note("32N"));
    EXPECT_EQ(files::OgrFeatureClass::Open((folder / "t.shp").string())->Table().Fields().size(), 1U);
}

TEST(Import, Fixes_far_from_the_zone_are_told) {
    ScratchFolder folder;
    const std::string csv = write_file(folder, "t.csv", "id,lon,lat\na,9,52\na,9,52\na,25,52\n");
    const Ran ran = run_wxl({"import", csv, (folder / "t.shp").string()});
    EXPECT_EQ(ran.Code, 0);
    EXPECT_EQ(ran.Err.substr(0, ran.Err.rfind("\nin Lambert")),
              kNoTime + kNoneLeftOut +
                  "1 fix lies more than 4.5 degrees from the middle of UTM zone 32N (line 4, animal \"a\"), so an "
                  "equal-area projection is taken; correct what is wrong, or give --to-crs EPSG:32632");
}

// Sorted by animal, the first of the far fixes is that of line 5; in the file it is that of line 2.
TEST(Import, Of_several_fixes_far_from_the_zone_the_first_of_the_file_is_told) {
    ScratchFolder folder;
    const std::string csv = write_file(folder, "t.csv", "id,lon,lat\nb,25,52\na,9,52\na,9,52\na,26,52\na,9,52\n");
    const Ran ran = run_wxl({"import", csv, (folder / "t.shp").string()});
    EXPECT_NE(ran.Err.find("\n2 fixes lie more than 4.5 degrees from the middle of UTM zone 32N (the first: line 2, "
                           "animal \"b\"), so an equal-area projection is taken; correct what is wrong, or give "
                           "--to-crs EPSG:32632\n"),
              std::string::npos)
        << ran.Err;
}

TEST(Import, Positions_of_zero_are_kept_and_told) {
    ScratchFolder folder;
    const std::string csv = write_file(folder, "t.csv", "id,lon,lat\na,9,52\na,0,0\na,9,52\n");
    const Ran ran = run_wxl({"import", csv, (folder / "t.shp").string(), "--to-crs", "EPSG:32632"});
    EXPECT_EQ(ran.Code, 0);
    EXPECT_NE(
        ran.Err.find(kNoTime + kNoneLeftOut +
                     "1 fix has the position 0, 0 (line 3, animal \"a\"), which often stands for a missing one; if "
                     "so, empty these cells\n"),
        std::string::npos);
    EXPECT_EQ(rows_of((folder / "t.shp").string()).size(), 3U);
    const std::string metres = write_file(folder, "m.csv", "id,x,y\na,0,0\na,9000,0\nb,0,0\n");
    const Ran projected = run_wxl({"import", metres, (folder / "m.shp").string(), "--from-crs", "EPSG:32633"});
    EXPECT_NE(projected.Err.find("\n2 fixes have the position 0, 0 (the first: line 2, animal \"a\"), which"),
              std::string::npos);
}

TEST(Import, Much_distortion_is_told_even_when_quiet) {
    ScratchFolder folder;
    const std::string csv = write_file(folder, "t.csv", "id,lon,lat\na,25,0\n");
    const Ran ran = run_wxl({"import", "-q", csv, (folder / "t.shp").string(), "--to-crs", "EPSG:32631"});
    EXPECT_EQ(ran.Code, 0);
    // 22 degrees from the middle on the equator: 0.9996 cosh of the way on the sphere, 0.9996 / cos 22 = 1.078 (Snyder
    // 1987, eq. 8-4), squared 1.162; a little more on the ellipsoid.
    EXPECT_EQ(
        ran.Err,
        "in WGS 84 / UTM zone 31N, areas are up to 16.4 % and distances up to 7.9 % wrong; --to-crs equal-area has "
        "true areas\n");
}

TEST(Import, Fixes_without_a_column_of_animals_are_one_animal) {
    ScratchFolder folder;
    const std::string csv = write_file(folder, "wolf 3.csv", "lon,lat\n9,52\n9,53\n");
    const std::string shp = (folder / "t.shp").string();
    const Ran ran = run_wxl({"import", csv, shp});
    EXPECT_NE(
        ran.Err.find("no column names the animal: all fixes are those of \"wolf 3\", as the file is called; name the "
                     "column by --id COLUMN, or the animal by --animal NAME\n"),
        std::string::npos)
        << ran.Err;
    EXPECT_EQ(rows_of(shp).at(0).Values[0], FieldValue("wolf 3"));
    EXPECT_EQ(run_wxl({"import", csv, shp, "--overwrite", "--animal", "Rex"}).Code, 0);
    EXPECT_EQ(rows_of(shp).at(0).Values[0], FieldValue("Rex"));
}

TEST(Import, Several_files_become_one_layer) {
    ScratchFolder folder;
    const std::string a = write_file(folder, "a.csv", "lon,lat,time,sex\n9,52,2018-05-09,f\n");
    const std::string b =
        write_file(folder, "b.geojson",
                   "{\"type\":\"FeatureCollection\",\"features\":[{\"type\":\"Feature\",\"properties\":"
                   "{\"when\":\"2018-05-09T01:00:00Z\"},\"geometry\":{\"type\":\"Point\",\"coordinates\":"
                   "[9.5,52.5]}}]}");
    const std::string out = (folder / "t.gpkg").string();
    const Ran ran = run_wxl({"import", a, b, out});
    EXPECT_EQ(ran.Code, 0) << ran.Err;
    EXPECT_EQ(ran.Out, out + ": 2 fixes of 2 animals, WGS 84 / UTM zone 32N (EPSG:32632)\n");
    EXPECT_NE(ran.Err.find(b + ": columns: no animal, points, time \"when\"\n"), std::string::npos) << ran.Err;
    const auto points = files::OgrFeatureClass::Open(out);
    const int time = points->Table().FindField("Time2");
    const int sex = points->Table().FindField("sex");
    const auto cursor = points->Find({});
    const auto first = cursor->NextFeature();
    EXPECT_EQ(first->Value(sex), FieldValue("f"));
    EXPECT_EQ(cursor->NextFeature()->Value(time), FieldValue(17660LL * 86400 + 3600));
}

TEST(Import, Rows_left_out_are_listed) {
    ScratchFolder folder;
    std::string text = "id,lon,lat\na,,\n";
    for (int i = 0; i < 9; ++i) text += "a,9,52\n";
    const std::string csv = write_file(folder, "t.csv", text + "a,\"9,x\",52\n");
    const std::string listed = (folder / "r.csv").string();
    const Ran ran = run_wxl({"import", csv, (folder / "t.shp").string(), "--rejected", listed});
    EXPECT_EQ(ran.Code, 0) << ran.Err;
    EXPECT_NE(ran.Err.find("1 without a position, 0 without an animal, 1 with a position that cannot be\n"),
              std::string::npos);
    EXPECT_EQ(read_file(listed),
              "file,line,reason,column,value\n" + csv + ",2,no_position,lon,\n" + csv + ",12,position,lon,\"9,x\"\n");
}

TEST(Import, Rows_are_listed_also_where_they_stop_the_import) {
    ScratchFolder folder;
    const std::string csv = write_file(folder, "t.csv", "id,lon,lat\na,9,52\na,east,52\n");
    const std::string listed = (folder / "r.csv").string();
    const Ran ran = run_wxl({"import", csv, (folder / "t.shp").string(), "--rejected", listed});
    EXPECT_EQ(ran.Code, 1);
    EXPECT_EQ(read_file(listed), "file,line,reason,column,value\n" + csv + ",3,position,lon,east\n");
}

// Intervals of 4 h from 00:10: 04:15 is the first fix of the second.
TEST(Import, Fixes_are_thinned) {
    ScratchFolder folder;
    const std::string csv = write_file(folder, "t.csv",
                                       "id,lon,lat,time\na,9,52,2024-01-01 00:10\na,9,52,2024-01-01 02:00\n"
                                       "a,9,52,2024-01-01 04:05\na,9,52,2024-01-01 04:15\nb,9,52,2024-01-01 04:05\n");
    const std::string shp = (folder / "t.shp").string();
    const Ran ran = run_wxl({"import", csv, shp, "--every", "4h"});
    EXPECT_EQ(ran.Code, 0) << ran.Err;
    EXPECT_NE(ran.Err.find(", 2 thinned out\n"), std::string::npos);
    const auto rows = rows_of(shp);
    ASSERT_EQ(rows.size(), 3U);
    EXPECT_EQ(rows[1].Values[3], FieldValue("04:15:00"));
    ASSERT_EQ(run_wxl({"import", csv, shp, "--every", "4h", "--every-tolerance", "10min", "--overwrite"}).Code, 0);
    EXPECT_EQ(rows_of(shp).at(1).Values[3], FieldValue("04:05:00"));
    EXPECT_EQ(run_wxl({"import", csv, shp, "--every", "4", "--overwrite"}).Err,
              "wxl: --every: \"4\" is no duration like 4h, 30min or 1d\n");
}

TEST(Import, Fixes_are_split_by_season_or_column) {
    ScratchFolder folder;
    const std::string csv =
        write_file(folder, "t.csv",
                   "id,lon,lat,time,state\na,9,52,2024-06-01,x\na,9,52,2024-01-01,y\na,9,52,2024-07-01,\n"
                   "b,9,52,,x\n");
    const std::string shp = (folder / "t.shp").string();
    const Ran ran = run_wxl({"import", csv, shp, "--split-by", "season"});
    EXPECT_EQ(ran.Code, 0) << ran.Err;
    EXPECT_EQ(ran.Out, shp + ": 3 fixes of 2 animals, WGS 84 / UTM zone 32N (EPSG:32632)\n");
    EXPECT_NE(ran.Err.find(", 1 that belong to no part of the split\n"), std::string::npos);
    auto rows = rows_of(shp);
    ASSERT_EQ(rows.size(), 3U);
    EXPECT_EQ(rows[0].Values[0], FieldValue("a winter"));
    EXPECT_EQ(rows[0].Values[1], FieldValue("a"));
    EXPECT_EQ(rows[0].Values[2], FieldValue("winter"));
    EXPECT_EQ(rows[2].Values[0], FieldValue("a summer"));
    ASSERT_EQ(run_wxl({"import", csv, shp, "--split-by", "STATE", "--overwrite"}).Code, 0);
    rows = rows_of(shp);
    ASSERT_EQ(rows.size(), 3U);
    EXPECT_EQ(rows[0].Values[0], FieldValue("a x"));
    EXPECT_EQ(rows[1].Values[0], FieldValue("a y"));
    EXPECT_EQ(rows[2].Values[0], FieldValue("b x"));
    EXPECT_EQ(run_wxl({"import", csv, shp, "--split-by", "sex", "--overwrite"}).Code, 2);
}

TEST(Import, Range_over_180_degrees_stays_in_one_piece) {
    ScratchFolder folder;
    std::string text = "id,lon,lat\n";
    for (int i = 0; i < 20; ++i) text += "a," + std::to_string(i < 10 ? 170 + i : i - 190) + ",52\n";
    const std::string shp = (folder / "t.shp").string();
    const Ran ran = run_wxl({"import", write_file(folder, "t.csv", text), shp});
    EXPECT_NE(ran.Out.find("Lambert azimuthal equal-area"), std::string::npos);
    const auto rows = rows_of(shp);
    // A degree of longitude at 52 N is 69 km.
    for (std::size_t i = 1; i < rows.size(); ++i)
        EXPECT_NEAR(rows[i].Location.X - rows[i - 1].Location.X, 69000.0, 2000.0);
}

TEST(Import, Date_and_time_of_day_are_told_both) {
    ScratchFolder folder;
    const std::string csv = write_file(folder, "t.csv", "id,lon,lat,Date,Time\na,9,52,15.01.2024,12:00\n");
    const std::string shp = (folder / "t.shp").string();
    EXPECT_EQ(
        run_wxl({"import", csv, shp}).Err,
        "columns: animal \"id\", x \"lon\", y \"lat\", time \"Date\" and \"Time\"\n" + kNoneLeftOut + utm_note("32N"));
    EXPECT_EQ(rows_of(shp).at(0).Values[2], FieldValue("2024-01-15"));
    EXPECT_EQ(rows_of(shp).at(0).Values[3], FieldValue("12:00:00"));
}

TEST(Import, A_number_beside_the_name_is_told) {
    ScratchFolder folder;
    const std::string csv = write_file(folder, "t.csv", "id,name,lon,lat,time\n1,Rex,9,52,\n2,Rex,9,52,\n");
    const std::string shp = (folder / "t.shp").string();
    const std::string note =
        "animals are told apart by the column \"name\", not by \"id\"; if several have the same name, give --id "
        "\"id\"\n";
    EXPECT_NE(run_wxl({"import", csv, shp}).Err.find(note), std::string::npos);
    const Ran chosen = run_wxl({"import", csv, shp, "--id", "id", "--overwrite"});
    EXPECT_EQ(chosen.Err.find("told apart"), std::string::npos);
    EXPECT_NE(chosen.Out.find("2 fixes of 2 animals"), std::string::npos);
}

TEST(Import, Existing_shapefile_is_kept_unless_overwriting_is_asked_for) {
    ScratchFolder folder;
    const std::string shp = make_layer(folder, "a,1,2,2018-05-09\n");
    const std::string csv = write_file(folder, "new.csv", "animal,x,y\nb,3,4\nb,5,6\n");
    const Ran refused = run_wxl({"import", csv, shp, "--from-crs", "EPSG:32633"});
    EXPECT_EQ(refused.Code, 1);
    EXPECT_EQ(refused.Out, "");
    EXPECT_EQ(refused.Err, "wxl: " + shp + " exists: choose another name, or give --overwrite\n");
    EXPECT_EQ(rows_of(shp).size(), 1U);

    const Ran ran = run_wxl({"import", csv, shp, "--from-crs", "EPSG:32633", "--overwrite"});
    EXPECT_EQ(ran.Code, 0) << ran.Err;
    EXPECT_EQ(rows_of(shp).size(), 2U);
    EXPECT_EQ(files::OgrFeatureClass::Open(shp)->Table().Fields().size(), 1U);
    EXPECT_EQ(names_in(folder.Path()), (std::set<std::string>{"layer.csv", "layer.cpg", "layer.dbf", "layer.prj",
                                                              "layer.shp", "layer.shx", "new.csv"}));
}

TEST(Import, Failure_leaves_no_file_behind_and_the_old_shapefile_whole) {
    ScratchFolder folder;
    const std::string shp = make_layer(folder, "a,1,2,2018-05-09\n");
    const auto before = names_in(folder.Path());
    const std::string bytes = read_file(shp);
    const std::string csv = write_file(folder, "layer.csv", "animal,x,y\nb,3,4\nb,oops,6\n");
    const Ran ran = run_wxl({"import", csv, shp, "--from-crs", "EPSG:32633", "--overwrite"});
    EXPECT_EQ(ran.Code, 1);
    EXPECT_EQ(ran.Err, "wxl: " + csv +
                           ", line 3: \"oops\" in column \"x\" is not a coordinate; correct it, or empty the cell\n");
    EXPECT_EQ(names_in(folder.Path()), before);
    EXPECT_EQ(read_file(shp), bytes);
}

/// Runs a call that fails and returns what it says.
std::string failure(std::vector<std::string> arguments, int code) {
    const Ran ran = run_wxl(std::move(arguments));
    EXPECT_EQ(ran.Code, code);
    EXPECT_EQ(ran.Out, "");
    return ran.Err;
}

TEST(Import, Wrong_files_and_names_are_told_with_advice) {
    ScratchFolder folder;
    const std::string csv = write_file(folder, "t.csv", "id,lon,lat\na,10,52\n");
    const std::string shp = (folder / "t.shp").string();
    const std::string absent = (folder / "absent.csv").string();
    const std::string home = folder.Path().string();
    EXPECT_EQ(failure({"import", absent, shp}, 1), "wxl: " + absent + ": there is no such file\n");
    EXPECT_EQ(failure({"import", home, shp}, 1), "wxl: " + home + " is a folder: name the CSV file in it\n");
    EXPECT_EQ(failure({"import", csv, home + "/no/t.shp"}, 1),
              "wxl: " + home + "/no: there is no such folder; make it first\n");
    EXPECT_EQ(failure({"import", csv, home + "/t.kml"}, 2),
              "wxl: " + home +
                  "/t.kml: the name of the output must end in .gpkg (GeoPackage), .shp (shapefile) or .fgb "
                  "(FlatGeobuf)\n");
    EXPECT_EQ(
        failure({"import", csv, shp, "--time-zone", "Mars"}, 2),
        "wxl: --time-zone: there is no time zone \"Mars\": name one like Europe/Berlin, America/Denver or UTC+2\n");
    EXPECT_EQ(failure({"import", csv, shp, "--date-order", "dym"}, 2),
              "wxl: --date-order: \"dym\" is not dmy, mdy or ymd; wxl import --help tells more\n");
    EXPECT_EQ(failure({"import", csv, shp, "--from-crs", "EPSG:999999"}, 2),
              "wxl: --from-crs EPSG:999999: there is no such coordinate system\n");
    EXPECT_EQ(
        failure({"import", csv, shp, "--to-crs", "/etc/passwd"}, 2),
        "wxl: --to-crs: \"/etc/passwd\" is no code like EPSG:32633, WKT or PROJ text; wxl import --help tells more\n");
    EXPECT_EQ(failure({"import", csv, shp, "--x", "lon"}, 2), "wxl: --x requires --y; wxl import --help tells more\n");
    EXPECT_EQ(failure({"import", csv}, 2), "wxl: OUT is required; wxl import --help tells more\n");
    EXPECT_EQ(names_in(folder.Path()), (std::set<std::string>{"t.csv"}));
}

TEST(Import, Positions_that_are_no_degrees_are_told_with_their_line) {
    ScratchFolder folder;
    const std::string csv = write_file(folder, "t.csv", "id,x,y\na,10,52\na,512345.5,6000000\n");
    EXPECT_EQ(
        failure({"import", "-q", csv, (folder / "t.shp").string()}, 1),
        "wxl: " + csv +
            ", line 3: the position 512345.5, 6000000 is not in degrees; name the coordinate system by --from-crs "
            "EPSG:n\n");
}

TEST(Import, Positions_near_a_pole_get_a_projection_of_their_own) {
    ScratchFolder folder;
    const std::string csv = write_file(folder, "t.csv", "id,lon,lat\na,10,86\n");
    const std::string shp = (folder / "t.shp").string();
    EXPECT_EQ(run_wxl({"import", "-q", csv, shp}).Out,
              shp + ": 1 fix of 1 animal, Lambert azimuthal equal-area, centre 86.0 N 10.0 E (equal-area)\n");
}

TEST(Import, Real_telemetry_of_three_birds) {
    const auto csv = tests::DataFile("O_ASSEN-gps-2018.csv");
    WXL_NEEDS_TELEMETRY(csv);
    ScratchFolder folder;
    const std::string shp = (folder / "birds.shp").string();
    const Ran ran = run_wxl({"import", csv.string(), shp});
    EXPECT_EQ(ran.Code, 0);
    EXPECT_EQ(ran.Out, shp + ": 14893 fixes of 3 animals, WGS 84 / UTM zone 32N (EPSG:32632)\n");
    EXPECT_EQ(ran.Err.substr(0, ran.Err.find("in WGS 84")),
              "columns: animal \"individual-local-identifier\", x \"location-long\", y \"location-lat\", time "
              "\"timestamp\"\n" +
                  kNoneLeftOut);
    const auto rows = rows_of(shp);
    ASSERT_EQ(rows.size(), 14893U);
    for (std::size_t i = 1; i < rows.size(); ++i) {
        const bool ascending =
            rows[i - 1].Values[0] == rows[i].Values[0]
                ? std::get<std::int64_t>(rows[i - 1].Values[1]) <= std::get<std::int64_t>(rows[i].Values[1])
                : std::get<std::string>(rows[i - 1].Values[0]) < std::get<std::string>(rows[i].Values[0]);
        ASSERT_TRUE(ascending) << i;
    }
}

TEST(Import, Real_telemetry_with_invisible_rows) {
    const auto csv = tests::DataFile("O_ASSEN-gps-2019.csv");
    WXL_NEEDS_TELEMETRY(csv);
    ScratchFolder folder;
    const std::string shp = (folder / "birds.shp").string();
    const Ran ran = run_wxl({"import", csv.string(), shp});
    EXPECT_EQ(ran.Code, 0);
    EXPECT_EQ(ran.Out, shp + ": 5259 fixes of 2 animals, WGS 84 / UTM zone 32N (EPSG:32632)\n");
    EXPECT_NE(ran.Err.find("rows left out: 4 not visible, 0 outliers"), std::string::npos);
}

TEST(Import, Real_telemetry_with_line_ends_of_carriage_returns) {
    const auto csv = tests::DataFile("mahoney_cougar_coyote_sample-gps.csv");
    WXL_NEEDS_TELEMETRY(csv);
    ScratchFolder folder;
    const std::string shp = (folder / "cats.shp").string();
    const Ran ran = run_wxl({"import", csv.string(), shp});
    EXPECT_EQ(ran.Code, 0);
    EXPECT_EQ(ran.Out, shp + ": 30 fixes of 2 animals, WGS 84 / UTM zone 12N (EPSG:32612)\n");
}

TEST(Import, Sample_is_four_animals_with_about_a_thousand_fixes) {
    ScratchFolder folder;
    const std::string shp = (folder / "wolves.shp").string();
    const Ran ran = run_wxl({"import", tests::SourceFile("samples/wolves.csv").string(), shp});
    EXPECT_EQ(ran.Code, 0);
    EXPECT_EQ(ran.Out, shp + ": 1001 fixes of 4 animals, WGS 84 / UTM zone 33N (EPSG:32633)\n");
    EXPECT_EQ(
        ran.Err.substr(0, ran.Err.find("in WGS 84")),
        "columns: animal \"individual-local-identifier\", x \"location-long\", y \"location-lat\", time \"timestamp\"\n"
        "rows left out: 2 not visible, 4 outliers, 3 without a position, 0 without an animal\n");
}

TEST(Import, Sample_is_what_its_script_makes) {
    if (std::system("python3 -c '' >/dev/null 2>&1") != 0) GTEST_SKIP() << "python3 is absent";
    ScratchFolder folder;
    const std::string made = (folder / "wolves.csv").string();
    ASSERT_EQ(std::system(("python3 " + tests::SourceFile("samples/make_sample.py").string() + " " + made).c_str()), 0);
    EXPECT_EQ(read_file(made), read_file(tests::SourceFile("samples/wolves.csv")));
}

TEST(Import, Systems_of_heights_and_of_distances_from_the_earths_centre_are_refused) {
    ScratchFolder folder;
    const std::string csv = write_file(folder, "t.csv", "animal,x,y\na,500000,5000000\na,500100,5000200\n");
    const std::string out = folder / "o.gpkg";
    for (const std::string option : {"--from-crs", "--to-crs"}) {
        const Ran centre = run_wxl({"import", csv, out, option, "EPSG:4978"});
        EXPECT_EQ(centre.Code, 2);
        EXPECT_EQ(centre.Err, "wxl: " + option + " EPSG:4978: x and y of WGS 84 are no places on a map\n");
        const Ran height = run_wxl({"import", csv, out, option, "EPSG:5773"});
        EXPECT_EQ(height.Code, 2);
        EXPECT_EQ(height.Err, "wxl: " + option + " EPSG:5773: x and y of EGM96 height are no places on a map\n");
    }
    EXPECT_FALSE(std::filesystem::exists(out));
}

// What stands in them belongs to the old file, and would spoil the new one.
TEST(Import, A_GeoPackage_that_another_program_has_open_is_not_replaced) {
    ScratchFolder folder;
    const std::string csv = write_file(folder, "t.csv", "animal,x,y\na,500000,5000000\na,500100,5000200\n");
    const std::string out = folder / "o.gpkg";
    for (const std::string ending : {"-wal", "-journal"}) {
        const std::string side = write_file(folder, "o.gpkg" + ending, "");
        const std::vector<std::string> call = {"import", csv, out, "--from-crs", "EPSG:32633", "--overwrite"};
        std::filesystem::remove(out);
        const Ran left = run_wxl(call);
        EXPECT_EQ(left.Code, 1);
        EXPECT_EQ(left.Err, "wxl: " + side + " is left from another file, and would be taken for a part of " + out +
                                ": delete it, or choose another name\n");
        EXPECT_FALSE(std::filesystem::exists(out));
        write_file(folder, "o.gpkg", "old");
        const Ran open = run_wxl(call);
        EXPECT_EQ(open.Code, 1);
        EXPECT_EQ(open.Err,
                  "wxl: " + out + " is open in another program, or a change of it was cut short (" + side +
                      " stands beside it): close it there, or open it in QGIS and save it, and do this again\n");
        EXPECT_EQ(read_file(out), "old");
        std::filesystem::remove(side);
    }
}

TEST(Import, Names_of_zones_beside_the_times_are_told_unless_a_zone_is_given) {
    const ScratchFolder folder;
    const std::string csv =
        write_file(folder, "t.csv", "animal,lon,lat,time,timezone\na,15.1,45.1,2018-05-09 10:00:00,Europe/Berlin\n");
    const std::string told =
        "the column \"timezone\" names the zones of clocks, and the times are taken as UTC; if they are not, give "
        "--time-zone NAME\n";
    const std::string out = folder / "o.gpkg";
    EXPECT_NE(run_wxl({"import", csv, out}).Err.find(told), std::string::npos);
    const Ran given = run_wxl({"import", csv, out, "--time-zone", "Europe/Berlin", "--overwrite"});
    EXPECT_EQ(given.Code, 0);
    EXPECT_EQ(given.Err.find(told), std::string::npos);
}

TEST(Import, The_same_file_gives_the_same_bytes_again) {
    const ScratchFolder folder;
    const std::string csv = write_file(
        folder, "t.csv",
        "animal,lon,lat,timestamp,sex\na,15.1,45.1,2018-05-09 10:00:00,f\nb,15.2,45.2,2018-05-10 10:00:00,m\n");
    for (const std::string ending : {"gpkg", "fgb", "shp"}) {
        const std::string out = folder / ("o." + ending);
        ASSERT_EQ(run_wxl({"import", csv, out}).Code, 0);
        const std::string first = read_file(out);
        // A GeoPackage would tell the millisecond of its last change.
        std::this_thread::sleep_for(std::chrono::milliseconds(5));
        ASSERT_EQ(run_wxl({"import", csv, out, "--overwrite"}).Code, 0);
        EXPECT_TRUE(read_file(out) == first) << ending;
        EXPECT_GT(first.size(), 100U) << ending;
    }
    files::RegisterGdal();
    const files::GdalDatasetPtr package(
        GDALDataset::Open((folder / "o.gpkg").c_str(), GDAL_OF_VECTOR | GDAL_OF_READONLY));
    OGRLayer* told = package->ExecuteSQL("SELECT last_change || '' FROM gpkg_contents", nullptr, nullptr);
    EXPECT_EQ(std::string((*told->begin())->GetFieldAsString(0)), "1970-01-01T00:00:00.000Z");
    package->ReleaseResultSet(told);
}

TEST(Import, Two_columns_of_one_name_are_refused_where_they_are_read) {
    ScratchFolder folder;
    const std::string out = folder / "o.gpkg";
    const auto told = [&](const std::string& table, const std::vector<std::string>& options) {
        std::vector<std::string> call = {"import", write_file(folder, "t.csv", table), out, "--from-crs", "EPSG:32633"};
        call.insert(call.end(), options.begin(), options.end());
        const Ran ran = run_wxl(call);
        EXPECT_EQ(ran.Code, 1) << ran.Err;
        return ran.Err.substr(0, ran.Err.find(';'));
    };
    const std::string row = "\na,500000,5000000,7\nb,500100,5000200,8\n";
    const std::string before = "wxl: " + std::string(folder / "t.csv") + ", line 1: two columns are called ";
    EXPECT_EQ(told("animal,x,y,X" + row, {}), before + "\"x\"");
    EXPECT_EQ(told("animal,x,y,y" + row, {"--x", "x", "--y", "y"}), before + "\"y\"");
    EXPECT_EQ(told("animal,x,y,animal" + row, {}), before + "\"animal\"");
    EXPECT_FALSE(std::filesystem::exists(out));
    const Ran others = run_wxl({"import",
                                write_file(folder, "o.csv",
                                           "animal,x,y,note,note\na,500000,5000000,7,8\n"
                                           "b,500100,5000200,8,9\n"),
                                out, "--from-crs", "EPSG:32633"});
    EXPECT_EQ(others.Code, 0) << others.Err;
}

}  // namespace
}  // namespace wxl::cli
