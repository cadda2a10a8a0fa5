#include "adapters/gdal/gdal_support.h"
#include "tests/unit/cli/layer_files.h"
#include "tests/unit/cli/layer_rows.h"

#include <array>
#include <gtest/gtest.h>
#include <ogrsf_frmts.h>

namespace wxl::cli {
namespace {

using platform::FieldValue;
using tests::ScratchFolder;

const std::string kQuestion =
    "Add Time and Distance Fields: This will add the following fields to the selected layer.\n"
    "\n"
    "T_Obs_Sec = Time since last observation in seconds\n"
    "T_Cumul = Time cumulative in seconds\n"
    "Dist = Distance from last observation in meters\n"
    "Dist_Cumul = Distance cumulative in meters\n"
    "Me_Per_Sec = Meters per second from last obs.\n"
    "Mi_Per_Hr = Miles per hour from last obs.\n";

// 120 m in a minute, then 180 m in two.
const std::string kWalk =
    "a,500000,5000000,2018-05-09 00:00:00\n"
    "a,500120,5000000,2018-05-09 00:01:00\n"
    "a,500300,5000000,2018-05-09 00:03:00\n";

TEST(ObsFields, Fills_times_distances_and_speeds) {
    ScratchFolder folder;
    const std::string layer = make_layer(folder, kWalk);
    const Ran ran = run_wxl({"obs-fields", layer, "--yes"});
    EXPECT_EQ(ran.Code, 0);
    EXPECT_EQ(ran.Out, layer + ": 3 rows filled\n");
    EXPECT_EQ(ran.Err, kQuestion);
    EXPECT_EQ(layer_column(layer, "T_Obs_Sec"), (std::vector<FieldValue>{0.0, 60.0, 120.0}));
    EXPECT_EQ(layer_column(layer, "T_Cumul"), (std::vector<FieldValue>{0.0, 60.0, 180.0}));
    EXPECT_EQ(layer_column(layer, "Dist"), (std::vector<FieldValue>{FieldValue(), 120.0, 180.0}));
    EXPECT_EQ(layer_column(layer, "Dist_Cumul"), (std::vector<FieldValue>{FieldValue(), 120.0, 300.0}));
    EXPECT_EQ(layer_column(layer, "Me_per_Sec"), (std::vector<FieldValue>{FieldValue(), 2.0, 1.5}));
    EXPECT_EQ(layer_column(layer, "Mi_per_hr"), (std::vector<FieldValue>{FieldValue(), 4.472727, 3.354545}));
}

TEST(ObsFields, Several_animals_are_a_question) {
    ScratchFolder folder;
    const std::string layer = make_layer(folder, kWalk + "b,500400,5000000,2018-05-09 00:04:00\n");
    const std::string mixed =
        "the fixes of 2 animals (field animal) are taken as one track; --id-field animal takes each animal by itself\n";
    const Ran asked = run_wxl({"obs-fields", layer, "--yes"});
    EXPECT_EQ(asked.Code, 1);
    EXPECT_EQ(asked.Err, mixed +
                             "wxl: stopped, because this question has no answer: give --answer animals=yes or "
                             "--answer animals=no\n");
    EXPECT_EQ(layer_rows(layer).at(0).Values.size(), 4U);
    EXPECT_EQ(run_wxl({"obs-fields", layer, "--yes", "--answer", "animals=no"}).Out, layer + ": nothing changed\n");
    const Ran ran = run_wxl({"obs-fields", layer, "--yes", "--answer", "animals=yes"});
    EXPECT_EQ(ran.Code, 0);
    EXPECT_EQ(ran.Err, mixed + kQuestion);
    EXPECT_EQ(layer_column(layer, "Dist"), (std::vector<FieldValue>{FieldValue(), 120.0, 180.0, 100.0}));
}

TEST(ObsFields, Each_animal_begins_anew) {
    ScratchFolder folder;
    const std::string layer = make_layer(folder, kWalk +
                                                     "b,500400,5000000,2018-05-09 00:03:00\n"
                                                     "b,500430,5000040,2018-05-09 00:03:10\n");
    ASSERT_EQ(run_wxl({"obs-fields", layer, "--answer", "yes", "--id-field", "animal"}).Code, 0);
    EXPECT_EQ(layer_column(layer, "T_Obs_Sec"), (std::vector<FieldValue>{0.0, 60.0, 120.0, 0.0, 10.0}));
    EXPECT_EQ(layer_column(layer, "T_Cumul"), (std::vector<FieldValue>{0.0, 60.0, 180.0, 0.0, 10.0}));
    EXPECT_EQ(layer_column(layer, "Dist"), (std::vector<FieldValue>{FieldValue(), 120.0, 180.0, FieldValue(), 50.0}));
    EXPECT_EQ(layer_column(layer, "Dist_Cumul"),
              (std::vector<FieldValue>{FieldValue(), 120.0, 300.0, FieldValue(), 50.0}));
    EXPECT_EQ(layer_column(layer, "Me_per_Sec"), (std::vector<FieldValue>{FieldValue(), 2.0, 1.5, FieldValue(), 5.0}));
}

/// kWalk as a GeoPackage with one more column.
std::string make_geopackage(const ScratchFolder& folder, const char* name, OGRFieldType type, OGRFieldSubType subtype) {
    files::RegisterGdal();
    const std::string path = (folder / "fixes.gpkg").string();
    const files::GdalDatasetPtr dataset(
        GetGDALDriverManager()->GetDriverByName("GPKG")->Create(path.c_str(), 0, 0, 0, GDT_Unknown, nullptr));
    OGRSpatialReference utm;
    EXPECT_EQ(utm.importFromEPSG(32633), OGRERR_NONE);
    OGRLayer* layer = dataset->CreateLayer("fixes", &utm, wkbPoint);
    OGRFieldDefn time("Time2", OFTInteger);
    OGRFieldDefn column(name, type);
    column.SetSubType(subtype);
    EXPECT_EQ(layer->CreateField(&time), OGRERR_NONE);
    EXPECT_EQ(layer->CreateField(&column), OGRERR_NONE);
    const std::array<std::pair<double, int>, 3> walk = {{{500000.0, 0}, {500120.0, 60}, {500300.0, 180}}};
    for (const auto& [x, seconds] : walk) {
        const OGRFeatureUniquePtr row(OGRFeature::CreateFeature(layer->GetLayerDefn()));
        row->SetField(0, seconds);
        const OGRPoint point(x, 5000000.0);
        row->SetGeometry(&point);
        EXPECT_EQ(layer->CreateFeature(row.get()), OGRERR_NONE);
    }
    return path;
}

TEST(ObsFields, Values_that_a_standing_column_cannot_hold_are_told_before_anything_is_written) {
    struct Case {
        const char* Name;
        OGRFieldType Type;
        OGRFieldSubType SubType;
        std::string Told;
    };
    for (const Case& one :
         {Case{"Dist", OFTInteger, OFSTBoolean, "The value 120 does not fit the field \"Dist\" of the type Boolean."},
          Case{"Dist", OFTDate, OFSTNone, "The value 120 does not fit the field \"Dist\" of the type Date."},
          Case{"Me_per_Sec", OFTInteger, OFSTInt16,
               "The field \"Me_per_Sec\" holds whole numbers, and the value 1.5 is none. Please rename or delete the "
               "field."}}) {
        ScratchFolder folder;
        const std::string layer = make_geopackage(folder, one.Name, one.Type, one.SubType);
        const std::string bytes = read_file(layer);
        const Ran ran = run_wxl({"obs-fields", layer, "--yes"});
        EXPECT_EQ(ran.Code, 1) << one.Name;
        EXPECT_EQ(ran.Err, kQuestion + one.Told + "\nwxl: " + layer + ": the fields are not complete\n");
        EXPECT_EQ(read_file(layer), bytes) << one.Name;
    }
    ScratchFolder folder;
    const std::string layer = make_geopackage(folder, "Dist", OFTInteger, OFSTInt16);
    EXPECT_EQ(run_wxl({"obs-fields", layer, "--yes"}).Code, 0);
    EXPECT_EQ(layer_column(layer, "Dist"), (std::vector<FieldValue>{FieldValue(), 120LL, 180LL}));
}

// "*UTM*" is asked of the name that the .prj has, whatever system its parameters are those of.
TEST(ObsFields, The_name_of_the_coordinate_system_is_that_of_the_projection_file) {
    const std::string stop =
        "The fields have not been calculated! The data needs to be in and defined with a UTM projection.\n";
    for (const auto& [name, isUtm] : {std::pair("WGS_1984_UTM_Zone_33N", true),
                                      {"WGS 84 / UTM zone 33N", true},
                                      {"County_UTM", true},
                                      {"Moose_grid", false},
                                      {"my_utm", false},
                                      {"wgs_1984_utm_zone_33n", false}}) {
        ScratchFolder folder;
        const std::string layer = make_layer(folder, kWalk);
        const std::string projection = layer.substr(0, layer.size() - 3) + "prj";
        std::string text = read_file(projection);
        const std::size_t from = text.find('"') + 1;
        text.replace(from, text.find('"', from) - from, name);
        std::ofstream(projection) << text;
        const Ran ran = run_wxl({"obs-fields", layer, "--yes"});
        EXPECT_EQ(ran.Err.find(stop) == std::string::npos, isUtm) << name << ": " << ran.Err;
        if (isUtm) continue;
        EXPECT_NE(run_wxl({"info", layer}).Out.find(std::string("crs      ") + name), std::string::npos);
    }
}

TEST(ObsFields, One_row_is_told_as_one) {
    ScratchFolder folder;
    const std::string layer = make_layer(folder, "a,500000,5000000,2018-05-09 00:00:00\n");
    EXPECT_EQ(run_wxl({"obs-fields", layer, "--yes"}).Out, layer + ": 1 row filled\n");
}

TEST(ObsFields, Question_without_an_answer_changes_nothing) {
    ScratchFolder folder;
    const std::string layer = make_layer(folder, kWalk);
    const Ran asked = run_wxl({"obs-fields", layer});
    EXPECT_EQ(asked.Code, 1);
    EXPECT_EQ(asked.Out, "");
    EXPECT_EQ(asked.Err, kQuestion +
                             "wxl: stopped, because this question has no answer: give --answer add-fields=yes or "
                             "--answer add-fields=no\n");
    const Ran declined = run_wxl({"obs-fields", layer, "--answer", "no"});
    EXPECT_EQ(declined.Code, 0);
    EXPECT_EQ(declined.Out, layer + ": nothing changed\n");
    EXPECT_EQ(layer_rows(layer).at(0).Values.size(), 4U);
    EXPECT_EQ(run_wxl({"obs-fields", layer, "--answer", "no", "--yes"}).Code, 2);
    EXPECT_EQ(run_wxl({"obs-fields", layer, "--answer", "add-fields=yes"}).Code, 0);
    EXPECT_EQ(layer_rows(layer).at(0).Values.size(), 10U);
}

TEST(ObsFields, Rows_of_one_time_end_the_work_and_earlier_rows_stay_filled) {
    ScratchFolder folder;
    const std::string layer = make_layer(folder, kWalk + "a,500400,5000000,2018-05-09 00:03:00\n");
    const Ran ran = run_wxl({"obs-fields", layer, "--yes"});
    EXPECT_EQ(ran.Code, 1);
    EXPECT_EQ(ran.Out, "");
    EXPECT_EQ(ran.Err, kQuestion +
                           "Divide by zero!!  Check your data.  \n"
                           "You can not have a value of zero in the time2 field \n"
                           "or two observartions that were taken at the same time.\n"
                           "wxl: " +
                           layer + ": the fields are not complete\n");
    EXPECT_EQ(layer_column(layer, "Dist"), (std::vector<FieldValue>{FieldValue(), 120.0, 180.0, FieldValue()}));
}

TEST(ObsFields, Layers_that_are_not_in_utm_are_told) {
    ScratchFolder folder;
    const std::string csv = write_file(folder, "t.csv", "animal,x,y,timestamp\n" + kWalk);
    const std::string layer = (folder / "t.shp").string();
    ASSERT_EQ(run_wxl({"import", csv, layer, "--from-crs", "EPSG:3035"}).Code, 0);
    const Ran ran = run_wxl({"obs-fields", layer, "--yes"});
    EXPECT_EQ(ran.Code, 1);
    EXPECT_EQ(ran.Err, kQuestion +
                           "The fields have not been calculated! The data needs to be in and defined with a UTM "
                           "projection.\nwxl: " +
                           layer + ": the fields are not complete\n");
}

TEST(ObsFields, Layers_without_times_and_layers_that_cannot_be_changed_are_told) {
    ScratchFolder folder;
    const std::string csv = write_file(folder, "t.csv", "animal,x,y\na,500000,5000000\n");
    const std::string layer = (folder / "t.shp").string();
    ASSERT_EQ(run_wxl({"import", csv, layer, "--from-crs", "EPSG:32633"}).Code, 0);
    const Ran timeless = run_wxl({"obs-fields", layer, "--yes"});
    EXPECT_EQ(timeless.Code, 1);
    EXPECT_EQ(timeless.Err,
              "You must select a points layer with a Time2 field\nwxl: " + layer + ": the fields are not complete\n");

    const std::string fixed =
        write_file(folder, "fixed.geojson",
                   R"({"type":"FeatureCollection","features":[{"type":"Feature","properties":{"Time2":1},)"
                   R"("geometry":{"type":"Point","coordinates":[15,45]}}]})");
    const std::string bytes = read_file(fixed);
    const Ran readOnly = run_wxl({"obs-fields", fixed, "--yes"});
    EXPECT_EQ(readOnly.Code, 1);
    EXPECT_EQ(readOnly.Err,
              fixed + " is of a format (GeoJSON) that is only read. Shapefiles and GeoPackages can be changed.\nwxl: " +
                  fixed + ": the fields are not complete\n");
    EXPECT_EQ(read_file(fixed), bytes);
}

}  // namespace
}  // namespace wxl::cli
