#include "adapters/files/tracking_csv.h"
#include "platform/runtime_error.h"

#include <gtest/gtest.h>
#include <sstream>
#include <string>
#include <vector>

namespace wxl::files {
namespace {

Tracking read(const std::string& text, const TrackingColumns& wanted = {}) {
    std::istringstream source(text);
    CsvReader reader(source, "f.csv");
    return read_tracking(reader, wanted);
}

std::string refusal(const std::string& text, const TrackingColumns& wanted = {}) {
    try {
        read(text, wanted);
    } catch (const platform::RuntimeError& error) {
        return error.Description;
    }
    return "";
}

TEST(TrackingCsv, Movebank_file_is_read) {
    const Tracking t = read(
        "event-id,visible,timestamp,location-long,location-lat,import-marked-outlier,tag-local-identifier,"
        "individual-local-identifier\n"
        "1,true,2018-05-09 14:59:05.000,6.5815293,53.0082323,false,\"5642\",\"5515851\"\n");
    ASSERT_EQ(t.Fixes.size(), 1U);
    EXPECT_EQ(t.Animals, (std::vector<std::string>{"5515851"}));
    EXPECT_EQ(t.Fixes[0].X, 6.5815293);
    EXPECT_EQ(t.Fixes[0].Y, 53.0082323);
    EXPECT_EQ(t.Fixes[0].Seconds, 17660LL * 86400 + 53945);
    EXPECT_EQ(t.Fixes[0].Line, 2U);
    EXPECT_EQ(t.Columns.Id, "individual-local-identifier");
    EXPECT_EQ(t.Columns.X, "location-long");
    EXPECT_EQ(t.Columns.Y, "location-lat");
    EXPECT_EQ(t.Columns.Time, "timestamp");
}

struct Names {
    const char* Id;
    const char* X;
    const char* Y;
    const char* Time;
};

class ColumnNames : public testing::TestWithParam<Names> {};

TEST_P(ColumnNames, Are_found) {
    const Names& n = GetParam();
    const Tracking t = read(std::string(n.Time) + "," + n.Y + "," + n.X + ",other," + n.Id + "\n2018-05-09,2,1,z,w\n");
    EXPECT_EQ(t.Columns.Id, n.Id);
    EXPECT_EQ(t.Columns.X, n.X);
    EXPECT_EQ(t.Columns.Y, n.Y);
    EXPECT_EQ(t.Columns.Time, n.Time);
    EXPECT_EQ(t.Fixes.at(0).X, 1.0);
    EXPECT_EQ(t.Fixes.at(0).Y, 2.0);
}

INSTANTIATE_TEST_SUITE_P(
    TrackingCsv, ColumnNames,
    testing::Values(Names{"individual-local-identifier", "location-long", "location-lat", "timestamp"},
                    Names{"individual.local.identifier", "location.long", "location.lat", "timestamp"},
                    Names{"individual_local_identifier", "location_long", "location_lat", "timestamp"},
                    Names{"tag-local-identifier", "location-long", "location-lat", "timestamp"},
                    Names{"organismID", "decimalLongitude", "decimalLatitude", "eventDate"},
                    Names{"individualID", "decimalLongitude", "decimalLatitude", "eventDate"},
                    Names{"Animal", "Longitude", "Latitude", "DateTime"}, Names{"ID", "X", "Y", "Date"},
                    Names{"animal_id", "lon", "lat", "date"}, Names{"name", "Long", "Lat", "Time"},
                    Names{"id", "Easting", "Northing", "date_time"},
                    Names{"id", "utm-easting", "utm-northing", "time"}));

TEST(TrackingCsv, Animal_goes_before_tag_and_tag_before_row_number) {
    EXPECT_EQ(read("id,tag-local-identifier,x,y\n1,T,0,0\n").Columns.Id, "tag-local-identifier");
    EXPECT_EQ(read("tag-local-identifier,individual-local-identifier,x,y\nT,A,0,0\n").Columns.Id,
              "individual-local-identifier");
}

TEST(TrackingCsv, Columns_can_be_named_in_any_case) {
    const Tracking t = read("id,x,y,lon,lat,seen,timestamp,Collar\n1,9,9,3,4,2018-05-09,2000-01-01,c7\n",
                            {"COLLAR", "LON", "Lat", "seen"});
    EXPECT_EQ(t.Animals, (std::vector<std::string>{"c7"}));
    EXPECT_EQ(t.Fixes.at(0).X, 3.0);
    EXPECT_EQ(t.Fixes.at(0).Y, 4.0);
    EXPECT_EQ(t.Fixes.at(0).Seconds, 17660LL * 86400);
    EXPECT_EQ(t.Columns.Id, "Collar");
}

TEST(TrackingCsv, Rows_that_are_no_fix_are_counted_by_their_first_reason) {
    const Tracking t = read(
        "id,x,y,visible,import-marked-outlier,manually-marked-outlier,algorithm-marked-outlier\n"
        "a,1,1,true,false,false,false\n"
        "a,1,1,FALSE,true,false,false\n"
        "a,1,1,true,true,false,false\n"
        "a,1,1,true,,TRUE,\n"
        "a,,1,true,,,true\n"
        "a,,1,true,,,\n"
        "a,1,NaN,true,,,\n"
        "a,NA,NA,true,,,\n"
        ",1,1,true,,,\n"
        "NA,1,1,,,,\n"
        "a,2,2,,,,\n");
    EXPECT_EQ(t.LeftOut.NotVisible, 1);
    EXPECT_EQ(t.LeftOut.Outliers, 3);
    EXPECT_EQ(t.LeftOut.WithoutPosition, 3);
    EXPECT_EQ(t.LeftOut.WithoutAnimal, 2);
    EXPECT_EQ(t.Fixes.size(), 2U);
}

TEST(TrackingCsv, Fixes_stand_by_animal_and_time_with_the_timeless_last) {
    const Tracking t = read(
        "id,x,y,timestamp\n"
        "b,1,0,2018-05-09\n"
        "a,2,0,\n"
        "a,3,0,2018-05-10\n"
        "10,4,0,2018-05-09\n"
        "a,5,0,2018-05-09\n"
        "9,6,0,2018-05-09\n"
        "a,7,0,2018-05-09\n"
        "a,8,0,NA\n");
    EXPECT_EQ(t.Animals, (std::vector<std::string>{"10", "9", "a", "b"}));
    std::vector<double> x;
    for (const TrackingFix& fix : t.Fixes) x.push_back(fix.X);
    EXPECT_EQ(x, (std::vector<double>{4, 6, 5, 7, 3, 2, 8, 1}));
    EXPECT_EQ(t.WithoutTime, 2);
    EXPECT_FALSE(t.Fixes[5].HasTime());
}

TEST(TrackingCsv, File_without_times_is_read) {
    const Tracking t = read("id,x,y\na,1,2\n");
    EXPECT_EQ(t.Columns.Time, "");
    EXPECT_EQ(t.Fixes.size(), 1U);
}

TEST(TrackingCsv, Date_and_time_of_day_in_two_columns_are_joined) {
    const Tracking t =
        read("id,x,y,Date,Time\na,1,2,2018-05-09,14:59:05\na,1,2,2018-05-09 10:00,14:59:05\na,1,2,2018-05-10,\n");
    EXPECT_EQ(t.Fixes.at(0).Seconds, 17660LL * 86400 + 36000);
    EXPECT_EQ(t.Fixes.at(1).Seconds, 17660LL * 86400 + 53945);
    EXPECT_EQ(t.Fixes.at(2).Seconds, 17661LL * 86400);
}

TEST(TrackingCsv, Names_of_the_time_of_day_are_kept_only_where_dates_were_joined) {
    EXPECT_EQ(read("id,x,y,Date,Time\na,1,2,2018-05-09,14:59:05\n").TimeOfDay, "Time");
    EXPECT_EQ(read("id,x,y,Date,Time\na,1,2,2018-05-09 14:59,14:59:05\n").TimeOfDay, "");
    EXPECT_EQ(read("id,x,y,Date\na,1,2,2018-05-09\n").TimeOfDay, "");
}

TEST(TrackingCsv, Times_of_collars_are_found_and_utc_goes_before_local_time) {
    const Tracking t =
        read("id,x,y,LMT_Date,LMT_Time,UTC_Date,UTC_Time\na,1,2,09.05.2018,16:59:05,09.05.2018,14:59:05\n");
    EXPECT_EQ(t.Columns.Time, "UTC_Date");
    EXPECT_EQ(t.TimeOfDay, "UTC_Time");
    EXPECT_EQ(t.Fixes.at(0).Seconds, 17660LL * 86400 + 53945);
    const Tracking local = read("id,x,y,LMT_Time,LMT_Date\na,1,2,16:59:05,2018-05-09\n");
    EXPECT_EQ(local.Columns.Time, "LMT_Date");
    EXPECT_EQ(local.TimeOfDay, "LMT_Time");
    EXPECT_EQ(local.Fixes.at(0).Seconds, 17660LL * 86400 + 53945 + 7200);
    for (const char* name : {"GMT Time", "Fix Time", "UTC_DateTime"}) {
        const Tracking whole = read(std::string("id,x,y,") + name + "\na,1,2,2018-05-09 14:59:05\n");
        EXPECT_EQ(whole.Columns.Time, name);
        EXPECT_EQ(whole.Fixes.at(0).Seconds, 17660LL * 86400 + 53945) << name;
    }
    // The second column holds the date, too.
    EXPECT_EQ(read("id,x,y,Date,Fix Time\na,1,2,2018-05-09,2018-05-09 14:59:05\n").Fixes.at(0).Seconds,
              17660LL * 86400 + 53945);
    EXPECT_EQ(read("id,x,y,UTC_Date,UTC_Time,LMT_Date,LMT_Time\na,1,2,2018-05-09,14:59:05,2018-05-10,16:59:05\n",
                   {"", "", "", "LMT_Date"})
                  .Fixes.at(0)
                  .Seconds,
              17661LL * 86400 + 53945 + 7200);
}

TEST(TrackingCsv, A_number_beside_the_name_of_an_animal_is_mentioned) {
    EXPECT_EQ(read("id,name,x,y\n1,Rex,0,0\n").OtherId, "id");
    EXPECT_EQ(read("id,name,x,y\n1,Rex,0,0\n", {"name", "", "", ""}).OtherId, "");
    EXPECT_EQ(read("id,tag-local-identifier,x,y\n1,T,0,0\n").OtherId, "");
    EXPECT_EQ(read("name,x,y\nRex,0,0\n").OtherId, "");
}

TEST(TrackingCsv, A_line_that_names_the_separator_is_no_header) {
    const Tracking t = read("sep=;\r\nid;x;y\r\na;6,5;53\r\n");
    EXPECT_EQ(t.Fixes.at(0).X, 6.5);
    EXPECT_EQ(t.Fixes.at(0).Line, 3U);
    EXPECT_EQ(
        refusal("sep=;\nfoo;x;y\na;1;2\n"),
        "f.csv, line 2: no column looks like the animal's name; give it by --id COLUMN; the columns are: foo, x, y");
}

TEST(TrackingCsv, Windows_1252_and_utf8_names_become_utf8) {
    EXPECT_EQ(read("id,x,y\nBj\xF6rn,1,2\n").Animals, (std::vector<std::string>{"Bj\xC3\xB6rn"}));
    EXPECT_EQ(read("id,x,y\nBj\xC3\xB6rn,1,2\n").Animals, (std::vector<std::string>{"Bj\xC3\xB6rn"}));
    EXPECT_EQ(read("\xEF\xBB\xBFid,x,y\nw,1,2\n").Columns.Id, "id");
}

TEST(TrackingCsv, Decimal_comma_is_read_where_cells_are_not_separated_by_commas) {
    const Tracking t = read("id;x;y\na;6,58;53.5\n");
    EXPECT_EQ(t.Fixes.at(0).X, 6.58);
    EXPECT_EQ(t.Fixes.at(0).Y, 53.5);
}

TEST(TrackingCsv, Numbers_have_signs_and_exponents) {
    const Tracking t = read("id,x,y\na,+1.5e2,-2\n");
    EXPECT_EQ(t.Fixes.at(0).X, 150.0);
    EXPECT_EQ(t.Fixes.at(0).Y, -2.0);
}

TEST(TrackingCsv, Same_name_in_two_animals_stays_one_and_spellings_stay_apart) {
    EXPECT_EQ(read("id,x,y\n007,1,2\n7,1,2\n007,1,2\nA,1,2\na,1,2\n").Animals,
              (std::vector<std::string>{"007", "7", "A", "a"}));
}

TEST(TrackingCsv, Bad_files_are_refused_with_file_line_and_advice) {
    EXPECT_EQ(refusal(""), "f.csv is empty: it needs a header row and one row per fix");
    EXPECT_EQ(refusal("id,x,y\n"), "f.csv holds no fix: it has a header and no rows");
    EXPECT_EQ(
        refusal("id,x,y,visible\na,1,2,false\n,1,2,\na,,,\n"),
        "f.csv holds no fix: of 3 rows, 1 are not visible, 0 are outliers, 1 have no position, 1 have no animal in "
        "column \"id\" (another column: --id)");
    EXPECT_EQ(
        refusal("foo,x,y\na,1,2\n"),
        "f.csv, line 1: no column looks like the animal's name; give it by --id COLUMN; the columns are: foo, x, y");
    EXPECT_EQ(
        refusal("id,x,latitude\na,1,2\n"),
        "f.csv, line 1: no two columns look like a position; give them by --x COLUMN --y COLUMN; the columns are: id, "
        "x, latitude");
    EXPECT_EQ(refusal("id,x,y\na,1,2\n", {"wolf", "", "", ""}),
              "f.csv, line 1: there is no column \"wolf\" for --id; the columns are: id, x, y");
    EXPECT_EQ(refusal("id,x,y\na,1,2\na,1\n"),
              "f.csv, line 3: 2 cells where the header has 3; correct the row, or delete it");
    EXPECT_EQ(refusal("id,x,y\na,1,2\na,1,2,3\n"),
              "f.csv, line 3: 4 cells where the header has 3; correct the row, or delete it");
    EXPECT_EQ(refusal("id,x,y\na,1,2 m\n"),
              "f.csv, line 2: \"2 m\" in column \"y\" is not a coordinate; correct it, or empty the cell");
    EXPECT_EQ(refusal("id,x,y\na,inf,2\n"),
              "f.csv, line 2: \"inf\" in column \"x\" is not a coordinate; correct it, or empty the cell");
    EXPECT_EQ(refusal("id,x,y\na,1e999,2\n"),
              "f.csv, line 2: \"1e999\" in column \"x\" is not a coordinate; correct it, or empty the cell");
    EXPECT_EQ(
        refusal("id,x,y,timestamp\na,1,2,9/5/2018 14:59\n"),
        "f.csv, line 2: \"9/5/2018 14:59\" in column \"timestamp\" is not a time like 2018-05-09 14:59:05; format the "
        "column as yyyy-mm-dd hh:mm:ss, or empty the cell to keep the fix without a time");
    EXPECT_EQ(
        refusal("id|time|lon|lat\na|2018-05-09|1|2\n"),
        "f.csv, line 1: the header is in one piece: \"id|time|lon|lat\"; separate the columns by commas, semicolons "
        "or tabs");
    EXPECT_EQ(refusal("id,x,y\na,\"13,1\",2\n"),
              "f.csv, line 2: \"13,1\" in column \"x\" is not a coordinate; write numbers with a decimal point, or "
              "separate the columns by semicolons");
    EXPECT_EQ(refusal("id,x,y\na,\"1,3,1\",2\n"),
              "f.csv, line 2: \"1,3,1\" in column \"x\" is not a coordinate; correct it, or empty the cell");
    EXPECT_EQ(
        refusal("id,x,y\n" + std::string(255, 'n') + ",1,2\n"),
        "f.csv, line 2: the animal's name in column \"id\" is longer than 254 bytes; shorten it, or choose another "
        "column by --id");
}

TEST(TrackingCsv, Cells_in_messages_are_short_and_harmless) {
    EXPECT_EQ(refusal("id,x,y\na,1,\x1B[2J" + std::string(60, '9') + "\n"),
              "f.csv, line 2: \"?[2J" + std::string(36, '9') +
                  "...\" in column \"y\" is not a coordinate; correct it, or empty the cell");
}

}  // namespace
}  // namespace wxl::files
