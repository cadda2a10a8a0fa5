#include "tests/unit/cli/layer_files.h"
#include "tests/unit/cli/layer_rows.h"

#include <gtest/gtest.h>

namespace wxl::cli {
namespace {

using platform::FieldValue;
using platform::Point;
using tests::ScratchFolder;

const std::string kOutOfSequence =
    "Display Tracks: This track segment is out of sequence.  Do you want to draw the track segment?\n";
const std::string kMixed =
    "the fixes of 2 animals (field animal) are taken as one track; --where \"animal = 'a'\" chooses one\n";

struct TrackCommand : testing::Test {
    ScratchFolder Folder;
    const std::string Layer = make_layer(Folder,
                                         "a,1,10,2018-05-09\n"
                                         "a,2,20,2018-05-10\n"
                                         "a,3,30,2018-05-11\n"
                                         "b,4,40,2018-05-12\n"
                                         "a,5,50,2018-05-13\n");
    const std::string Output = (Folder / "track.shp").string();

    Ran Track(std::vector<std::string> more) const {
        std::vector<std::string> arguments = {"track", Layer, Output};
        arguments.insert(arguments.end(), more.begin(), more.end());
        return run_wxl(arguments);
    }

    /// From and to of every leg, by their x coordinates.
    std::vector<std::pair<double, double>> Legs() const {
        std::vector<std::pair<double, double>> legs;
        for (const LayerRow& row : layer_rows(Output))
            legs.emplace_back(row.Shape.Parts.at(0).front().X, row.Shape.Parts.at(0).back().X);
        return legs;
    }
};

TEST_F(TrackCommand, Writes_a_line_from_each_fix_to_the_next) {
    // Import sorts by animal: rows 0 to 3 are of a, row 4 is of b.
    const Ran ran = Track({"--where", "animal = 'a'"});
    EXPECT_EQ(ran.Code, 0);
    EXPECT_EQ(ran.Out, Output + ": 4 fixes, 3 legs\n");
    EXPECT_EQ(ran.Err, "");
    const auto rows = layer_rows(Output);
    ASSERT_EQ(rows.size(), 3U);
    EXPECT_EQ(rows[0].Shape.Parts, (std::vector<std::vector<Point>>{{{1, 10}, {2, 20}}}));
    EXPECT_EQ(Legs(), (std::vector<std::pair<double, double>>{{1, 2}, {2, 3}, {3, 5}}));
    EXPECT_EQ(layer_column(Output, "Id"), (std::vector<FieldValue>{1LL, 2LL, 3LL}));
    EXPECT_EQ(files::OgrFeatureClass::Open(Output)->Reference().Name, "WGS 84 / UTM zone 33N");
}

TEST_F(TrackCommand, Gap_is_asked_about) {
    const Ran asked = Track({"--where", "FID <> 1"});
    EXPECT_EQ(asked.Code, 1);
    EXPECT_EQ(asked.Out, "");
    EXPECT_EQ(asked.Err, kMixed + kOutOfSequence +
                             "wxl: stopped, because this question has no answer: give --answer out-of-sequence=yes or "
                             "--answer out-of-sequence=no\nwxl: " +
                             Output + ": the track was not saved\n");
    EXPECT_FALSE(std::filesystem::exists(Output));

    const Ran no = Track({"--where", "FID <> 1", "--answer", "out-of-sequence=no"});
    EXPECT_EQ(no.Code, 0);
    EXPECT_EQ(no.Err, kMixed + kOutOfSequence);
    EXPECT_EQ(Legs(), (std::vector<std::pair<double, double>>{{3, 5}, {5, 4}}));

    EXPECT_EQ(Track({"--where", "FID <> 1", "--answer", "yes", "--overwrite"}).Code, 0);
    EXPECT_EQ(Legs(), (std::vector<std::pair<double, double>>{{1, 3}, {3, 5}, {5, 4}}));
}

TEST_F(TrackCommand, Too_few_fixes_are_told) {
    EXPECT_EQ(Track({"--where", "FID > 9"}).Err,
              "You must select the points to track\nwxl: " + Output + ": the track was not saved\n");
    const Ran one = Track({"--where", "FID = 2"});
    EXPECT_EQ(one.Code, 1);
    EXPECT_EQ(one.Err, "You must select more then one point to track\nwxl: " + Output + ": the track was not saved\n");
    EXPECT_FALSE(std::filesystem::exists(Output));
}

TEST_F(TrackCommand, Track_without_a_leg_is_a_failure) {
    const Ran ran = Track({"--where", "FID IN (0, 2)", "--answer", "no"});
    EXPECT_EQ(ran.Code, 1);
    EXPECT_EQ(ran.Err, kOutOfSequence + "Please add a track\nwxl: " + Output + ": the track was not saved\n");
}

TEST_F(TrackCommand, Existing_shapefile_is_replaced_only_when_asked_and_only_by_a_whole_one) {
    ASSERT_EQ(Track({}).Code, 0);
    const auto names = names_in(Folder.Path());
    const std::string bytes = read_file(Output);
    const Ran refused = Track({});
    EXPECT_EQ(refused.Code, 1);
    EXPECT_EQ(refused.Err, "wxl: " + Output + " exists: choose another name, or give --overwrite\n");
    EXPECT_EQ(Track({"--where", "FID = 2", "--overwrite"}).Code, 1);
    EXPECT_EQ(read_file(Output), bytes);
    EXPECT_EQ(Track({"--where", "FID < 2", "--overwrite"}).Code, 0);
    EXPECT_EQ(Legs(), (std::vector<std::pair<double, double>>{{1, 2}}));
    EXPECT_EQ(names_in(Folder.Path()), names);
}

TEST_F(TrackCommand, Rows_that_share_a_number_are_no_track) {
    write_file(Folder, "two.csv", "id,x,y\n1,1,1\n2,2,2\n1,9,9\n");
    const std::string layer =
        write_file(Folder, "two.vrt",
                   "<OGRVRTDataSource><OGRVRTLayer name=\"two\"><SrcDataSource relativeToVRT=\"1\">two.csv"
                   "</SrcDataSource><GeometryType>wkbPoint</GeometryType><GeometryField encoding=\"PointFromColumns\" "
                   "x=\"x\" y=\"y\"/><FID>id</FID></OGRVRTLayer></OGRVRTDataSource>");
    const Ran ran = run_wxl({"track", layer, Output, "--allow-indirect"});
    EXPECT_EQ(ran.Code, 1);
    EXPECT_EQ(ran.Err, "wxl: " + layer +
                           ": several rows have one row number, so that the order of the fixes is not known; number "
                           "the rows anew (ogr2ogr -unsetFid OUT.gpkg INPUT)\n");
    EXPECT_FALSE(std::filesystem::exists(Output));
}

TEST_F(TrackCommand, Wrong_names_are_told) {
    const Ran ran = run_wxl({"track", Layer, (Folder / "track.gpkg").string()});
    EXPECT_EQ(ran.Code, 2);
    EXPECT_EQ(run_wxl({"track", Layer, (Folder / "no/track.shp").string()}).Code, 1);
    EXPECT_EQ(run_wxl({"track", Layer}).Code, 2);
}

}  // namespace
}  // namespace wxl::cli
