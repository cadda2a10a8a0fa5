#include "adapters/tracking/tracking_file.h"
#include "platform/runtime_error.h"

#include <cstdint>
#include <gtest/gtest.h>
#include <sstream>
#include <string>
#include <vector>

namespace wxl::tracking {
namespace {

Tracking read(const std::string& text, const ReadOptions& options = {}) {
    Tracking tracking(options);
    tracking.Add(std::make_unique<std::istringstream>(text), "f.csv", "f");
    tracking.Sort();
    return tracking;
}

ReadOptions columns(const std::string& id, const std::string& x, const std::string& y, const std::string& time) {
    ReadOptions options;
    options.Columns.Id = id;
    options.Columns.X = x;
    options.Columns.Y = y;
    options.Columns.Time = time;
    return options;
}

/// What is found of a file of one.
FileFacts facts_of(const std::string& text, const ReadOptions& options = {}) {
    return read(text, options).Files.at(0);
}

std::string refusal(const std::string& text, const ReadOptions& options = {}) {
    try {
        read(text, options);
    } catch (const platform::RuntimeError& error) {
        return error.Description;
    }
    return "";
}

TEST(TrackingFile, Movebank_file_is_read) {
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
    EXPECT_EQ(t.Files.at(0).Id, "individual-local-identifier");
    EXPECT_EQ(t.Files.at(0).X, "location-long");
    EXPECT_EQ(t.Files.at(0).Y, "location-lat");
    EXPECT_EQ(t.Files.at(0).Time, std::vector<std::string>{"timestamp"});
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
    ReadOptions options;
    options.Unit =
        std::string(n.X).find("asting") != std::string::npos ? PositionUnit::kLengths : PositionUnit::kUnknown;
    const Tracking t =
        read(std::string(n.Time) + "," + n.Y + "," + n.X + ",other," + n.Id + "\n2018-05-09,2,1,z,w\n", options);
    EXPECT_EQ(t.Files.at(0).Id, n.Id);
    EXPECT_EQ(t.Files.at(0).X, n.X);
    EXPECT_EQ(t.Files.at(0).Y, n.Y);
    EXPECT_EQ(t.Files.at(0).Time, std::vector<std::string>{n.Time});
    EXPECT_EQ(t.Fixes.at(0).X, 1.0);
    EXPECT_EQ(t.Fixes.at(0).Y, 2.0);
}

INSTANTIATE_TEST_SUITE_P(
    TrackingFile, ColumnNames,
    testing::Values(Names{"individual-local-identifier", "location-long", "location-lat", "timestamp"},
                    Names{"individual.local.identifier", "location.long", "location.lat", "timestamp"},
                    Names{"individual_local_identifier", "location_long", "location_lat", "timestamp"},
                    Names{"tag-local-identifier", "location-long", "location-lat", "timestamp"},
                    Names{"organismID", "decimalLongitude", "decimalLatitude", "eventDate"},
                    Names{"individualID", "decimalLongitude", "decimalLatitude", "eventDate"},
                    Names{"Animal", "Longitude", "Latitude", "DateTime"}, Names{"ID", "X", "Y", "Date"},
                    Names{"animal_id", "lon", "lat", "date"}, Names{"name", "Long", "Lat", "Time"},
                    Names{"id", "Easting", "Northing", "date_time"}, Names{"id", "utm-easting", "utm-northing", "time"},
                    Names{"Dier", "Lengtegraad", "Breedtegraad", "Datum"},
                    Names{"Zwierz\xC4\x99", "D\xC5\x82ugo\xC5\x9B\xC4\x87", "Szeroko\xC5\x9B\xC4\x87", "data"},
                    Names{"zv\xC3\xAD\xC5\x99"
                          "e",
                          "d\xC3\xA9lka", "\xC5\xA1\xC3\xAD\xC5\x99ka", "datum"},
                    Names{"dyr", "l\xC3\xA6ngdegrad", "breddegrad", "dato"},
                    Names{"\xD0\x96\xD0\xB8\xD0\xB2\xD0\xBE\xD1\x82\xD0\xBD\xD0\xBE\xD0\xB5",
                          "\xD0\x94\xD0\xBE\xD0\xBB\xD0\xB3\xD0\xBE\xD1\x82\xD0\xB0",
                          "\xD0\xA8\xD0\xB8\xD1\x80\xD0\xBE\xD1\x82\xD0\xB0", "\xD0\x94\xD0\xB0\xD1\x82\xD0\xB0"},
                    Names{"\xD0\x96\xD0\x98\xD0\x92\xD0\x9E\xD0\xA2\xD0\x9D\xD0\x9E\xD0\x95",
                          "\xD0\x94\xD0\x9E\xD0\x9B\xD0\x93\xD0\x9E\xD0\xA2\xD0\x90",
                          "\xD0\xA8\xD0\x98\xD0\xA0\xD0\x9E\xD0\xA2\xD0\x90", "\xD0\x94\xD0\x90\xD0\xA2\xD0\x90"},
                    Names{"\xD0\xA2\xD0\xB2\xD0\xB0\xD1\x80\xD0\xB8\xD0\xBD\xD0\xB0",
                          "\xD0\x94\xD0\xBE\xD0\xB2\xD0\xB3\xD0\xBE\xD1\x82\xD0\xB0",
                          "\xD0\xA8\xD0\xB8\xD1\x80\xD0\xBE\xD1\x82\xD0\xB0", "\xD0\x94\xD0\xB0\xD1\x82\xD0\xB0"},
                    Names{"\xCE\x96\xCF\x8E\xCE\xBF",
                          "\xCE\x93\xCE\xB5\xCF\x89\xCE\xB3\xCF\x81\xCE\xB1\xCF\x86\xCE\xB9\xCE\xBA\xCF\x8C "
                          "\xCE\xBC\xCE\xAE\xCE\xBA\xCE\xBF\xCF\x82",
                          "\xCE\x93\xCE\xB5\xCF\x89\xCE\xB3\xCF\x81\xCE\xB1\xCF\x86\xCE\xB9\xCE\xBA\xCF\x8C "
                          "\xCF\x80\xCE\xBB\xCE\xAC\xCF\x84\xCE\xBF\xCF\x82",
                          "\xCE\x97\xCE\xBC\xCE\xB5\xCF\x81\xCE\xBF\xCE\xBC\xCE\xB7\xCE\xBD\xCE\xAF\xCE\xB1"},
                    Names{"\xCE\x96\xCE\xA9\xCE\x9F",
                          "\xCE\x93\xCE\x95\xCE\xA9\xCE\x93\xCE\xA1\xCE\x91\xCE\xA6\xCE\x99\xCE\x9A\xCE\x9F "
                          "\xCE\x9C\xCE\x97\xCE\x9A\xCE\x9F\xCE\xA3",
                          "\xCE\x93\xCE\x95\xCE\xA9\xCE\x93\xCE\xA1\xCE\x91\xCE\xA6\xCE\x99\xCE\x9A\xCE\x9F "
                          "\xCE\xA0\xCE\x9B\xCE\x91\xCE\xA4\xCE\x9F\xCE\xA3",
                          "\xCE\x97\xCE\x9C\xCE\x95\xCE\xA1\xCE\x9F\xCE\x9C\xCE\x97\xCE\x9D\xCE\x99\xCE\x91"},
                    Names{"\xE5\x8A\xA8\xE7\x89\xA9\xE7\xBC\x96\xE5\x8F\xB7", "\xE7\xBB\x8F\xE5\xBA\xA6",
                          "\xE7\xBA\xAC\xE5\xBA\xA6", "\xE6\x97\xA5\xE6\x9C\x9F"},
                    Names{"\xE5\x8B\x95\xE7\x89\xA9", "\xE7\xB6\x93\xE5\xBA\xA6", "\xE7\xB7\xAF\xE5\xBA\xA6",
                          "\xE6\x99\x82\xE9\x96\x93"},
                    Names{"\xE5\x80\x8B\xE4\xBD\x93\xE7\x95\xAA\xE5\x8F\xB7", "\xE7\xB5\x8C\xE5\xBA\xA6",
                          "\xE7\xB7\xAF\xE5\xBA\xA6", "\xE6\x97\xA5\xE6\x99\x82"},
                    Names{"\xEA\xB0\x9C\xEC\xB2\xB4\xEB\xB2\x88\xED\x98\xB8", "\xEA\xB2\xBD\xEB\x8F\x84",
                          "\xEC\x9C\x84\xEB\x8F\x84", "\xEB\x82\xA0\xEC\xA7\x9C"},
                    Names{"Hayvan", "Boylam", "Enlem", "Tarih"},
                    Names{"El\xC3\xA4in", "Pituusaste", "Leveysaste", "P\xC3\xA4iv\xC3\xA4m\xC3\xA4\xC3\xA4r\xC3\xA4"},
                    Names{"\xC3\x81LLAT", "HOSSZ\xC3\x9AS\xC3\x81G", "SZ\xC3\x89LESS\xC3\x89G", "D\xC3\x81TUM"},
                    Names{"ZWIERZ\xC4\x98", "D\xC5\x81UGO\xC5\x9A\xC4\x86", "SZEROKO\xC5\x9A\xC4\x86", "data"},
                    Names{"id", "x1_", "y1_", "t1_"}, Names{"ID", "mu.x", "mu.y", "Time"},
                    Names{"CollarSerialNumber", "Longitude", "Latitude", "DateLocal"},
                    Names{"ref", "LON", "LAT", "D_DATE"}));

TEST(TrackingFile, Animal_goes_before_tag_and_tag_before_row_number) {
    EXPECT_EQ(facts_of("id,tag-local-identifier,x,y\n1,T,0,0\n").Id, "tag-local-identifier");
    EXPECT_EQ(read("tag-local-identifier,individual-local-identifier,x,y\nT,A,0,0\n").Files.at(0).Id,
              "individual-local-identifier");
}

TEST(TrackingFile, Columns_can_be_named_in_any_case) {
    const Tracking t = read("id,x,y,lon,lat,seen,timestamp,Collar\n1,9,9,3,4,2018-05-09,2000-01-01,c7\n",
                            columns("COLLAR", "LON", "Lat", "seen"));
    EXPECT_EQ(t.Animals, (std::vector<std::string>{"c7"}));
    EXPECT_EQ(t.Fixes.at(0).X, 3.0);
    EXPECT_EQ(t.Fixes.at(0).Y, 4.0);
    EXPECT_EQ(t.Fixes.at(0).Seconds, 17660LL * 86400);
    EXPECT_EQ(t.Files.at(0).Id, "Collar");
}

TEST(TrackingFile, Rows_that_are_no_fix_are_counted_by_their_first_reason) {
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
    EXPECT_EQ(t.Rejected.Of(Reason::kNotVisible), 1);
    EXPECT_EQ(t.Rejected.Of(Reason::kOutlier), 3);
    EXPECT_EQ(t.Rejected.Of(Reason::kNoPosition), 3);
    EXPECT_EQ(t.Rejected.Of(Reason::kNoAnimal), 2);
    EXPECT_EQ(t.Fixes.size(), 2U);
}

TEST(TrackingFile, Fixes_stand_by_animal_and_time_with_the_timeless_last) {
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
    EXPECT_EQ(t.Files.at(0).WithoutTime, 2);
    EXPECT_FALSE(t.Fixes[5].HasTime());
}

TEST(TrackingFile, File_without_times_is_read) {
    const Tracking t = read("id,x,y\na,1,2\n");
    EXPECT_TRUE(t.Files.at(0).Time.empty());
    EXPECT_EQ(t.Fixes.size(), 1U);
}

TEST(TrackingFile, Times_can_be_left_aside) {
    ReadOptions options;
    options.Columns.NoTime = true;
    const Tracking t = read("id,x,y,time\na,1,2,week 20\n", options);
    EXPECT_FALSE(t.Fixes.at(0).HasTime());
    EXPECT_EQ(t.Others.at(0).Name, "time");
}

TEST(TrackingFile, Date_and_time_of_day_in_two_columns_are_joined) {
    const Tracking t =
        read("id,x,y,Date,Time\na,1,2,2018-05-09,14:59:05\na,1,2,2018-05-09 10:00,14:59:05\na,1,2,2018-05-10,\n");
    EXPECT_EQ(t.Fixes.at(0).Seconds, 17660LL * 86400 + 36000);
    EXPECT_EQ(t.Fixes.at(1).Seconds, 17660LL * 86400 + 53945);
    EXPECT_EQ(t.Fixes.at(2).Seconds, 17661LL * 86400);
}

using Names_ = std::vector<std::string>;

/// Seconds of the fixes of one animal, since 2019-03-13 00:00 UTC.
std::vector<std::int64_t> seconds_of(const std::string& text, const ReadOptions& options = {}) {
    std::vector<std::int64_t> seconds;
    for (const TrackingFix& fix : read(text, options).Fixes) seconds.push_back(fix.Seconds - 17968LL * 86400);
    return seconds;
}

// 14:05:00 as 140500 is a day of 2000 too (2014-05-00 is none, 18:05:00 is 18 May 2000).
TEST(TrackingFile, Times_of_day_as_numbers_that_lost_their_zeros_are_joined) {
    EXPECT_EQ(seconds_of("id,date,time,lat,lon\na,20190313,500,52,5\na,20190313,90501,52,5\na,20190313,180500,52,5\n"),
              (std::vector<std::int64_t>{300, 9 * 3600 + 301, 18 * 3600 + 300}));
    EXPECT_EQ(seconds_of("id,date,time,lat,lon\na,2019-03-13,5,52,5\na,2019-03-13,130,52,5\na,2019-03-13,2359,52,5\n"),
              (std::vector<std::int64_t>{300, 5400, 86340}));
    EXPECT_EQ(seconds_of("id,day,hours,lat,lon\na,2019-03-13,500,52,5\na,2019-03-13,180500,52,5\n",
                         columns("id", "lon", "lat", "day,hours")),
              (std::vector<std::int64_t>{300, 18 * 3600 + 300}));
}

TEST(TrackingFile, Hours_beside_a_date_are_joined) {
    const std::vector<std::int64_t> times = {7 * 3600, 14 * 3600};
    EXPECT_EQ(seconds_of("id,date,hour,lat,lon\na,2019-03-13,7,52,5\na,2019-03-13,14,52,5\n"), times);
    EXPECT_EQ(seconds_of("id,date,time,lat,lon\na,2019-03-13,7,52,5\na,2019-03-13,14,52,5\n"), times);
    EXPECT_EQ(seconds_of("id,date,hour,minute,second,lat,lon\na,13.03.2019,7,5,9,52,5\na,13.03.2019,,,,52,5\n"),
              (std::vector<std::int64_t>{0, 7 * 3600 + 309}));
    EXPECT_EQ(seconds_of("id,date,hour,tz,lat,lon\na,2019-03-13,8,+1,52,5\na,2019-03-13,15,+1,52,5\n"), times);
    EXPECT_EQ(facts_of("id,date,hour,min,lat,lon\na,2019-03-13,7,30,52,5\n").Time, (Names_{"date", "hour", "min"}));
}

TEST(TrackingFile, Offset_of_the_clock_may_stand_in_a_column_of_its_own) {
    const std::vector<std::int64_t> noon = {12 * 3600, 13 * 3600};
    EXPECT_EQ(seconds_of("id,date,time,tz,lat,lon\na,2019-03-13,13:00:00,+01:00,52,5\n"
                         "a,2019-03-13,09:00:00,-04:00,52,5\n"),
              noon);
    EXPECT_EQ(seconds_of("id,local time,UTC offset,lat,lon\na,13.03.2019 13:00,1,52,5\na,13.03.2019 09:00,-4,52,5\n"),
              noon);
    EXPECT_EQ(
        seconds_of("id,Timestamp,Time zone,lat,lon\na,2019-03-13 12:00,GMT,52,5\na,2019-03-13 15:00,GMT+2,52,5\n"),
        noon);
    EXPECT_EQ(seconds_of("id,d,t,tz,lat,lon\na,2019-03-13,13:00,+01,52,5\na,2019-03-13,14:00,+01,52,5\n",
                         columns("id", "lon", "lat", "d,t,tz")),
              noon);
    const FileFacts facts = facts_of("id,local time,utc_offset,lat,lon\na,2019-03-13 13:00,+1,52,5\n");
    EXPECT_EQ(facts.Time, (std::vector<std::string>{"local time", "utc_offset"}));
    EXPECT_FALSE(facts.TimeIsLocal) << "nothing is left to be told";
}

TEST(TrackingFile, Offsets_are_left_aside_where_times_are_utc_or_no_offset_is_told) {
    const std::vector<std::int64_t> noon = {12 * 3600};
    EXPECT_EQ(seconds_of("id,utc time,tz,lat,lon\na,2019-03-13 12:00,+01:00,52,5\n"), noon);
    EXPECT_EQ(seconds_of("id,time,tz,lat,lon\na,2019-03-13 12:00Z,+01:00,52,5\n"), noon);
    const std::string named = "id,time,timezone,lat,lon\na,2019-03-13 12:00,Eastern Standard Time,52,5\n";
    EXPECT_EQ(seconds_of(named), noon);
    EXPECT_EQ(facts_of(named).ZoneOfClock, "timezone");
    EXPECT_EQ(facts_of("id,time,tz,lat,lon\na,2019-03-13 12:00Z,Europe/Berlin,52,5\n").ZoneOfClock, "");
    EXPECT_EQ(facts_of("id,time,tz,lat,lon\na,2019-03-13 12:00,+01:00,52,5\n").ZoneOfClock, "");
}

TEST(TrackingFile, Columns_of_the_time_are_told) {
    EXPECT_EQ(facts_of("id,x,y,Date,Time\na,1,2,2018-05-09,14:59:05\n").Time, (Names_{"Date", "Time"}));
    EXPECT_EQ(facts_of("id,x,y,Date,Time\na,1,2,2018-05-09 14:59,14:59:05\n").Time, Names_{"Date"});
    EXPECT_EQ(facts_of("id,x,y,Date\na,1,2,2018-05-09\n").Time, Names_{"Date"});
    EXPECT_EQ(facts_of("id,x,y,Datum,Uhrzeit\na,1,2,9.5.2018,14:59\n").Time, (Names_{"Datum", "Uhrzeit"}));
    EXPECT_EQ(facts_of("id,x,y,a,b\na,1,2,9.5.2018,14:59\n", columns("", "", "", "a,b")).Time, (Names_{"a", "b"}));
}

TEST(TrackingFile, Times_of_collars_are_found_and_utc_goes_before_local_time) {
    const Tracking t =
        read("id,x,y,LMT_Date,LMT_Time,UTC_Date,UTC_Time\na,1,2,09.05.2018,16:59:05,09.05.2018,14:59:05\n");
    EXPECT_EQ(t.Files.at(0).Time, (Names_{"UTC_Date", "UTC_Time"}));
    EXPECT_EQ(t.Fixes.at(0).Seconds, 17660LL * 86400 + 53945);
    const Tracking local = read("id,x,y,LMT_Time,LMT_Date\na,1,2,16:59:05,2018-05-09\n");
    EXPECT_EQ(local.Files.at(0).Time, (Names_{"LMT_Date", "LMT_Time"}));
    EXPECT_TRUE(local.Files.at(0).TimeIsLocal);
    EXPECT_EQ(local.Fixes.at(0).Seconds, 17660LL * 86400 + 53945 + 7200);
    for (const char* name :
         {"GMT Time", "Fix Time", "UTC_DateTime", "Acquisition Time", "t_", "eventDate", "Zeitstempel"}) {
        const Tracking whole = read(std::string("id,x,y,") + name + "\na,1,2,2018-05-09 14:59:05\n");
        EXPECT_EQ(whole.Files.at(0).Time, Names_{name});
        EXPECT_EQ(whole.Fixes.at(0).Seconds, 17660LL * 86400 + 53945) << name;
    }
    // The second column holds the date, too.
    EXPECT_EQ(read("id,x,y,Date,Fix Time\na,1,2,2018-05-09,2018-05-09 14:59:05\n").Fixes.at(0).Seconds,
              17660LL * 86400 + 53945);
    EXPECT_EQ(read("id,x,y,UTC_Date,UTC_Time,LMT_Date,LMT_Time\na,1,2,2018-05-09,14:59:05,2018-05-10,16:59:05\n",
                   columns("", "", "", "LMT_Date"))
                  .Fixes.at(0)
                  .Seconds,
              17661LL * 86400 + 53945 + 7200);
}

TEST(TrackingFile, Time_of_the_fix_goes_before_other_times) {
    EXPECT_EQ(facts_of("id,x,y,start-timestamp,timestamp-of-fix\na,1,2,2018-05-09 14:00,2018-05-09 14:01\n").Time,
              Names_{"timestamp-of-fix"});
    EXPECT_EQ(facts_of("id,x,y,Receive Time,Acquisition Start Time,Acquisition Time\n"
                       "a,1,2,2018-05-09 14:02,2018-05-09 14:00,2018-05-09 14:01\n")
                  .Time,
              Names_{"Acquisition Time"});
    EXPECT_EQ(facts_of("id,x,y,deploy-on-date,when it was\na,1,2,2018-05-09 14:02,2018-05-09 14:00\n").Time,
              Names_{"when it was"});
}

TEST(TrackingFile, Year_month_and_day_in_columns_of_their_own_are_joined) {
    EXPECT_EQ(read("id,x,y,year,month,day,hour,minute\na,1,2,2018,5,9,14,5\n").Fixes.at(0).Seconds,
              17660LL * 86400 + 14 * 3600 + 300);
    EXPECT_EQ(read("id,x,y,year,month,day,hour\na,1,2,2018,5,9,14\n").Fixes.at(0).Seconds, 17660LL * 86400 + 14 * 3600);
    // 31 + 28 + 31 + 30 + 9 = 129
    EXPECT_EQ(read("id,x,y,year,doy\na,1,2,2018,129\n").Fixes.at(0).Seconds, 17660LL * 86400);
    EXPECT_EQ(read("id,x,y,YearDay,Time\na,1,2,2018129,0905\n").Fixes.at(0).Seconds, 17660LL * 86400 + 9 * 3600 + 300);
}

TEST(TrackingFile, Numbers_of_times_are_told_by_their_size) {
    EXPECT_EQ(read("id,x,y,unixtime\na,1,2,1525877945\n").Fixes.at(0).Seconds, 17660LL * 86400 + 53945);
    EXPECT_EQ(read("id,x,y,unixtime\na,1,2,1525877945999\n").Fixes.at(0).Seconds, 17660LL * 86400 + 53945);
    // 25,569 days from 1899-12-30 to 1970-01-01; 0.75 of a day is 18:00.
    EXPECT_EQ(read("id,x,y,Date\na,1,2,43229.75\n").Fixes.at(0).Seconds, 17660LL * 86400 + 64800);
    EXPECT_EQ(read("id,x,y,Date,Time\na,1,2,43229,0.75\n").Fixes.at(0).Seconds, 17660LL * 86400 + 64800);
}

/// A table of one animal with these times.
std::string timed_rows(const std::vector<std::string>& times, const std::string& column = "timestamp") {
    std::string text = "id,x,y," + column + "\n";
    for (const std::string& time : times) text += "a,1,2," + time + "\n";
    return text;
}

/// Whole numbers from `first` on.
std::vector<std::string> numbers_from(std::int64_t first, std::int64_t step, int count) {
    std::vector<std::string> numbers;
    for (int i = 0; i < count; ++i) numbers.push_back(std::to_string(first + step * i));
    return numbers;
}

TEST(TrackingFile, Numbers_from_a_start_are_no_times) {
    const auto refused = [](const std::string& column, const std::string& range) {
        return "f.csv: the numbers in column \"" + column + "\", " + range +
               ", are no times of a kind that is known: seconds or milliseconds since 1970, days of a spreadsheet "
               "(20000 to 80000), or dates in digits (20180509, 180509, 2018129); name a column with a date by --time "
               "COLUMN, or import without times by --no-time";
    };
    EXPECT_EQ(refusal(timed_rows(numbers_from(0, 3600, 60))), refused("timestamp", "0 to 212400"));
    EXPECT_EQ(refusal(timed_rows(numbers_from(0, 1, 50))), refused("timestamp", "0 to 49"));
    EXPECT_EQ(refusal(timed_rows(numbers_from(17660, 1, 50))), refused("timestamp", "17660 to 17709"));
    EXPECT_EQ(refusal(timed_rows(numbers_from(58247, 1, 9), "MJD date")), refused("MJD date", "58247 to 58255"));
    EXPECT_EQ(refusal(timed_rows(numbers_from(1052018, 1000000, 9), "date")), refused("date", "1052018 to 9052018"));
    ReadOptions none;
    none.Columns.NoTime = true;
    EXPECT_EQ(read(timed_rows(numbers_from(0, 3600, 60)), none).Fixes.size(), 60U);
}

TEST(TrackingFile, A_number_beyond_its_kind_leaves_out_its_row_alone) {
    const auto with = [](std::vector<std::string> times, const std::string& odd) {
        times.push_back(odd);
        return read(timed_rows(times));
    };
    const std::int64_t second = 1525877945;
    struct Case {
        std::vector<std::string> Times;
        const char* Odd;
        TimeKind Kind;
    };
    for (const auto& [times, odd, kind] : {Case{numbers_from(43229, 1, 20), "0", TimeKind::kSheetDays},
                                           Case{numbers_from(43229, 1, 20), "-999", TimeKind::kSheetDays},
                                           Case{numbers_from(second, 60, 20), "0", TimeKind::kEpochSeconds},
                                           Case{numbers_from(second, 60, 20), "1525877945999", TimeKind::kEpochSeconds},
                                           Case{numbers_from(second * 1000, 60000, 20), "0", TimeKind::kEpochMillis},
                                           Case{numbers_from(20180509, 1, 20), "0", TimeKind::kCalendar},
                                           Case{numbers_from(20180509, 1, 20), "99990101", TimeKind::kCalendar},
                                           Case{numbers_from(2018129, 1, 20), "9052018", TimeKind::kCalendar}}) {
        const Tracking t = with(times, odd);
        EXPECT_EQ(t.Fixes.size(), 20U) << odd;
        EXPECT_EQ(t.Rejected.Of(Reason::kTime), 1) << odd;
        EXPECT_EQ(t.Fixes.at(0).Seconds / 86400, 17660) << odd;
        EXPECT_EQ(t.Files.at(0).Numbers, kind) << odd;
    }
}

TEST(TrackingFile, Days_that_numbers_stand_for_are_told) {
    const FileFacts facts = facts_of(timed_rows({"43230", "43229.5", "43231"}));
    EXPECT_EQ(facts.FirstTime, 17660LL * 86400 + 43200);
    EXPECT_EQ(facts.LastTime, 17662LL * 86400);
    EXPECT_FALSE(facts_of(timed_rows({"2018-05-09"})).FirstTime);
}

// 60000 to 61800 are 6:00 to 6:18 beside a date, and days of a spreadsheet without one.
TEST(TrackingFile, Times_of_day_as_numbers_are_no_days_of_a_spreadsheet) {
    EXPECT_EQ(seconds_of("id,date,time,lat,lon\na,20190313,60000,52,5\na,20190313,61800,52,5\n"),
              (std::vector<std::int64_t>{6 * 3600, 6 * 3600 + 1080}));
}

TEST(TrackingFile, Order_of_day_and_month_is_decided_by_the_whole_column) {
    const std::string start = "id,x,y,date\na,1,2,03/04/2020\na,1,2,04/04/2020\n";
    EXPECT_EQ(read(start + "a,1,2,13/04/2020\n").Files.at(0).Order, DateOrder::kDayMonthYear);
    EXPECT_EQ(read(start + "a,1,2,04/13/2020\n").Files.at(0).Order, DateOrder::kMonthDayYear);
    EXPECT_EQ(
        refusal(start),
        "f.csv: no row decides whether day or month comes first in dates like \"03/04/2020\" (column \"date\"); say "
        "it by --date-order dmy|mdy|ymd");
    ReadOptions told;
    told.Order = DateOrder::kMonthDayYear;
    // 2020-03-04 is day 18,325: 50 years of 365 days, 12 leap days, 31 + 29 + 3 days.
    EXPECT_EQ(read(start, told).Fixes.at(0).Seconds, 18325LL * 86400);
    EXPECT_FALSE(read("id,x,y,date\na,1,2,03.04.2020\n").Files.at(0).Order);
}

TEST(TrackingFile, Row_that_decides_may_be_the_last_of_many) {
    std::string text = "id,x,y,date\n";
    for (int i = 0; i < 3000; ++i) text += "a,1,2,03/04/2020\n";
    EXPECT_EQ(read(text + "a,1,2,05/31/2020\n").Files.at(0).Order, DateOrder::kMonthDayYear);
}

// Summer time began on 2019-03-31 at 2:00 and ended on 2019-10-27 at 3:00.
TEST(TrackingFile, Local_times_become_utc_and_changes_of_the_clock_are_counted) {
    ReadOptions options;
    options.Zone = std::make_shared<TimeZone>("Europe/Berlin");
    const Tracking t = read(
        "id,x,y,time\na,1,2,2019-03-31 01:59\na,1,2,2019-03-31 02:30\na,1,2,2019-03-31 03:00\na,1,2,2019-10-27 02:30\n"
        "a,1,2,2019-10-27 02:30+01:00\n",
        options);
    std::vector<std::int64_t> hours;
    for (const TrackingFix& fix : t.Fixes) hours.push_back((fix.Seconds % 86400 + 60) / 1800);
    EXPECT_EQ(hours, (std::vector<std::int64_t>{2, 2, 3, 1, 3}));  // half hours of UTC: 0:59, 1:00, 1:30, 0:30, 1:30
    EXPECT_EQ(t.Files.at(0).ClockNever, 1);
    EXPECT_EQ(t.Files.at(0).ClockTwice, 1);
    const Tracking utc = read("id,x,y,UTC_time\na,1,2,2019-06-01 12:00\n", options);
    EXPECT_EQ(utc.Fixes.at(0).Seconds % 86400, 43200);
    EXPECT_TRUE(utc.Files.at(0).TimeIsUtc);
}

TEST(TrackingFile, A_number_beside_the_name_of_an_animal_is_mentioned) {
    EXPECT_EQ(facts_of("id,name,x,y\n1,Rex,0,0\n").OtherId, "id");
    EXPECT_EQ(facts_of("id,name,x,y\n1,Rex,0,0\n", columns("name", "", "", "")).OtherId, "");
    EXPECT_EQ(facts_of("id,tag-local-identifier,x,y\n1,T,0,0\n").OtherId, "");
    EXPECT_EQ(facts_of("name,x,y\nRex,0,0\n").OtherId, "");
}

TEST(TrackingFile, Number_of_each_row_is_no_animal) {
    const std::string rows = "1,w1,1,2\n2,w1,1,2\n3,w1,1,2\n4,w2,1,2\n5,w2,1,2\n";
    EXPECT_EQ(facts_of("id,wolf,x,y\n" + rows).Id, "wolf");
    EXPECT_EQ(facts_of("id,fix,x,y\n" + rows).Id, "");
}

TEST(TrackingFile, File_without_an_animal_is_one_animal) {
    EXPECT_EQ(read("foo,x,y\na,1,2\nb,1,2\n").Animals, Names_{"f"});
    ReadOptions options;
    options.Animal = "Bear 44";
    EXPECT_EQ(read("x,y\n1,2\n", options).Animals, Names_{"Bear 44"});
    EXPECT_EQ(read("id,x,y\na,1,2\nb,1,2\n", options).Animals, Names_{"Bear 44"});
}

TEST(TrackingFile, Several_files_are_read_as_one) {
    Tracking t({});
    t.Add(std::make_unique<std::istringstream>("x,y,a\n1,2,5\n"), "one.csv", "one");
    t.Add(std::make_unique<std::istringstream>("id;x;y;b;a\nzwei;1,5;2;t;6\n"), "two.csv", "two");
    t.Sort();
    EXPECT_EQ(t.Animals, (Names_{"one", "zwei"}));
    ASSERT_EQ(t.Others.size(), 2U);
    std::vector<platform::FieldValue> values;
    t.ReadRow(t.Fixes.at(1), values);
    EXPECT_EQ(values, (std::vector<platform::FieldValue>{std::int64_t{6}, "t"}));
    t.ReadRow(t.Fixes.at(0), values);
    EXPECT_EQ(values, (std::vector<platform::FieldValue>{std::int64_t{5}, platform::FieldValue{}}));
    EXPECT_EQ(t.PlaceOf(t.Fixes.at(1)), "two.csv, line 2");
}

TEST(TrackingFile, Other_columns_have_types) {
    Tracking t = read(
        "id;x;y;whole;number;code;text;none\n"
        "a;1;2;5;1,5;007;t;\n"
        "a;1;2;-12;NA;12;;\n");
    ASSERT_EQ(t.Others.size(), 5U);
    std::vector<platform::FieldType> types;
    for (const OtherColumn& other : t.Others) types.push_back(other.Type.Type());
    using platform::FieldType;
    EXPECT_EQ(types, (std::vector<FieldType>{FieldType::kInteger, FieldType::kDouble, FieldType::kText,
                                             FieldType::kText, FieldType::kText}));
    std::vector<platform::FieldValue> values;
    t.ReadRow(t.Fixes.at(0), values);
    EXPECT_EQ(values, (std::vector<platform::FieldValue>{std::int64_t{5}, 1.5, "007", "t", platform::FieldValue{}}));
    t.ReadRow(t.Fixes.at(1), values);
    EXPECT_EQ(values, (std::vector<platform::FieldValue>{std::int64_t{-12}, platform::FieldValue{}, "12",
                                                         platform::FieldValue{}, platform::FieldValue{}}));
}

TEST(TrackingFile, A_line_that_names_the_separator_is_no_header) {
    const Tracking t = read("sep=;\r\nid;x;y\r\na;6,5;53\r\n");
    EXPECT_EQ(t.Fixes.at(0).X, 6.5);
    EXPECT_EQ(t.Fixes.at(0).Line, 3U);
}

TEST(TrackingFile, Positions_of_every_notation) {
    const auto place = [](const std::string& text) {
        const TrackingFix fix = read(text).Fixes.at(0);
        return std::pair(fix.X, fix.Y);
    };
    using Place = std::pair<double, double>;
    EXPECT_EQ(place("id,lat,long\na,\"33° 30' 00.0\"\" S\",\"70° 15' W\"\n"), (Place{-70.25, -33.5}));
    EXPECT_EQ(place("id,lat,ns,lon,ew\na,33.5,S,70.25,W\n"), (Place{-70.25, -33.5}));
    EXPECT_EQ(place("id,LatS,LonW\na,33.5,70.25\n"), (Place{-70.25, -33.5}));
    EXPECT_EQ(place("id;Länge;Breite\na;10,5;50,25\n"), (Place{10.5, 50.25}));
    EXPECT_EQ(place("id,lat2,lon2,lat1,lon1\na,1,2,3,4\n"), (Place{4.0, 3.0}));
    EXPECT_EQ(place("id,Iridium Latitude,Iridium Longitude,GPS Latitude,GPS Longitude\na,1,2,3,4\n"),
              (Place{4.0, 3.0}));
    EXPECT_EQ(place("id,x_,y_\na,4,3\n"), (Place{4.0, 3.0}));
    EXPECT_EQ(place("id,x,y,lon,lat\na,500000,4000000,4,3\n"), (Place{4.0, 3.0}));
}

TEST(TrackingFile, Positions_are_found_by_content_where_one_column_can_be_no_latitude) {
    const Tracking t = read("who,p,q\na,45.1234,-109.9876\nb,45.1235,-109.9877\n");
    EXPECT_TRUE(t.Files.at(0).PositionByContent);
    EXPECT_EQ(t.Fixes.at(0).X, -109.9876);
}

TEST(TrackingFile, Table_without_a_header_has_numbered_columns) {
    const Tracking t = read("a,2018-05-09 14:59:05,-109.9876,45.1234\nb,2018-05-09 15:59:05,-109.9877,45.1235\n");
    EXPECT_TRUE(t.Files.at(0).HeaderMissing);
    EXPECT_EQ(t.Files.at(0).X, "column 3");
    EXPECT_EQ(t.Files.at(0).Time, Names_{"column 2"});
    EXPECT_EQ(t.Fixes.size(), 2U);
}

TEST(TrackingFile, Utm_zones_of_rows_become_degrees) {
    // The middle of zone 32 is 9 E; 500,000 m east is on it, on the equator.
    const Tracking t = read("id,Zone,Easting,Northing\na,32N,500000,0\na,33N,500000,0\n");
    EXPECT_NEAR(t.Fixes.at(0).X, 9.0, 1e-9);
    EXPECT_NEAR(t.Fixes.at(1).X, 15.0, 1e-9);
    EXPECT_NEAR(t.Fixes.at(0).Y, 0.0, 1e-9);
    EXPECT_EQ(t.Files.at(0).Zone, "Zone");
    const Tracking south = read("id,Zone,Easting,Northing\na,32S,500000,10000000\n");
    EXPECT_NEAR(south.Fixes.at(0).Y, 0.0, 1e-9);
    EXPECT_NE(refusal("id,Zone,Easting,Northing\na,32,500000,0\n").find("--from-crs"), std::string::npos);
}

TEST(TrackingFile, Longitudes_to_360_become_west) {
    const Tracking t = read("id,lon,lat\na,181,2\na,180,2\na,359.5,2\n");
    EXPECT_EQ(t.Fixes.at(0).X, -179.0);
    EXPECT_EQ(t.Fixes.at(1).X, 180.0);
    EXPECT_EQ(t.Fixes.at(2).X, -0.5);
    EXPECT_EQ(t.Files.at(0).Over180, 2);
}

TEST(TrackingFile, Placeholders_and_zeros_without_satellites_are_no_positions) {
    const Tracking t = read(
        "id,lon,lat,sats,fix status\n"
        "a,-999,-999,4,3D\na,-9999.0,-9999.0,4,3D\na,0,0,0,3D\na,0,0,4,No "
        "Fix\na,NULL,NULL,4,3D\na,0,0,4,3D\na,5,6,4,3D\n");
    EXPECT_EQ(t.Rejected.Of(Reason::kNoPosition), 5);
    EXPECT_EQ(t.Fixes.size(), 2U);
    ReadOptions metres;
    metres.Unit = PositionUnit::kLengths;
    EXPECT_EQ(read("id,x,y\na,-999,5\n", metres).Fixes.size(), 1U);
}

TEST(TrackingFile, Filters_keep_what_equals_the_limit) {
    ReadOptions dop;
    dop.Columns.MaxDop = true;
    dop.MaxDop = 3.0;
    const Tracking t = read("id;x;y;DOP\na;1;2;3,0\na;1;2;3,1\na;1;2;\n", dop);
    EXPECT_EQ(t.Fixes.size(), 2U);
    EXPECT_EQ(t.Rejected.Of(Reason::kDop), 1);
    EXPECT_EQ(t.Files.at(0).WithoutDop, 1);
    ReadOptions argos;
    argos.Columns.ArgosClass = true;
    argos.ArgosClasses = {"3", "A"};
    EXPECT_EQ(read("id,x,y,lc\na,1,2,3\na,1,2,a\na,1,2,B\na,1,2,\n", argos).Fixes.size(), 2U);
    EXPECT_NE(refusal("id,x,y\na,1,2\n", argos).find("--argos-class"), std::string::npos);
}

TEST(TrackingFile, Bad_rows_are_left_out_and_told_while_they_are_few) {
    std::string text = "id,x,y,time\n";
    for (int i = 0; i < 20; ++i) text += "a,1,2,2018-05-09\n";
    text += "a,1\na,oops,2,2018-05-09\na,1,2,soon\na,1,99,2018-05-09\n";
    Tracking t({});
    std::vector<std::string> told;
    t.Rejected.SetListener([&](const RejectedRow& row) {
        told.push_back(row.File + ":" + std::to_string(row.Line) + ":" + std::string(reason_name(row.Why)) + ":" +
                       row.Column + ":" + row.Value);
    });
    t.Add(std::make_unique<std::istringstream>(text), "f.csv", "f");
    EXPECT_EQ(told, (Names_{"f.csv:22:cells::", "f.csv:23:position:x:oops", "f.csv:24:time:time:soon",
                            "f.csv:25:position:x, y:1, 99"}));
    EXPECT_EQ(t.Fixes.size(), 20U);
    EXPECT_EQ(t.Rejected.Unreadable(), 4);
}

TEST(TrackingFile, Rows_of_nothing_count_as_nothing) {
    const Tracking t = read("id\tx\ty\na\t1\t2\n\t\t\n---\t---\t---\na\t1\t2\n");
    EXPECT_EQ(t.Fixes.size(), 2U);
    EXPECT_EQ(t.Rows, 2);
    EXPECT_EQ(t.Rejected.Total(), 0);
}

TEST(TrackingFile, Names_of_rows_and_separators_at_the_ends_of_lines_do_not_shift_columns) {
    EXPECT_EQ(read("id x y\n1 a 5 6\n2 a 7 8\n").Fixes.at(0).X, 5.0);
    EXPECT_EQ(read("id;x;y\na;5;6;\na;7;8;\n").Fixes.at(0).X, 5.0);
    EXPECT_EQ(read("id,x,y,note,more\na,5,6,n\na,7,8,n,m\n").Fixes.size(), 2U);
}

TEST(TrackingFile, Windows_1252_and_utf8_names_become_utf8) {
    EXPECT_EQ(read("id,x,y\nBj\xF6rn,1,2\n").Animals, (std::vector<std::string>{"Bj\xC3\xB6rn"}));
    EXPECT_EQ(read("id,x,y\nBj\xC3\xB6rn,1,2\n").Animals, (std::vector<std::string>{"Bj\xC3\xB6rn"}));
    EXPECT_EQ(read("\xEF\xBB\xBFid,x,y\nw,1,2\n").Files.at(0).Id, "id");
}

TEST(TrackingFile, Decimal_comma_is_read_where_cells_are_not_separated_by_commas) {
    const Tracking t = read("id;x;y\na;6,58;53.5\n");
    EXPECT_EQ(t.Fixes.at(0).X, 6.58);
    EXPECT_EQ(t.Fixes.at(0).Y, 53.5);
}

TEST(TrackingFile, Numbers_have_signs_and_exponents) {
    const Tracking t = read("id,x,y\na,+1.5e2,-2\n");
    EXPECT_EQ(t.Fixes.at(0).X, 150.0);
    EXPECT_EQ(t.Fixes.at(0).Y, -2.0);
}

TEST(TrackingFile, Same_name_in_two_animals_stays_one_and_spellings_stay_apart) {
    EXPECT_EQ(read("id,x,y\n007,1,2\n7,1,2\n007,1,2\nA,1,2\na,1,2\n").Animals,
              (std::vector<std::string>{"007", "7", "A", "a"}));
}

TEST(TrackingFile, Bad_files_are_refused_with_file_line_and_advice) {
    EXPECT_EQ(refusal(""), "f.csv is empty: it needs a header row and one row per fix");
    EXPECT_EQ(
        refusal("id,x,latitude\na,1,2\n"),
        "f.csv, line 1: no two columns look like the position of a fix; give them by --x COLUMN --y COLUMN, if the "
        "table holds fixes; the columns are: id, x, latitude");
    EXPECT_EQ(refusal("id,x,y\na,1,2\n", columns("wolf", "", "", "")),
              "f.csv, line 1: there is no column \"wolf\" for --id; the columns are: id, x, y");
    EXPECT_EQ(refusal("id,x,y\na,1,2\na,1\n"),
              "f.csv, line 3: 2 cells where the header has 3; correct the row, or delete it");
    EXPECT_EQ(refusal("id,x,y\na,1,2\na,1,2,3\n"),
              "f.csv, line 3: 4 cells where the header has 3; correct the row, or delete it");
    EXPECT_EQ(refusal("id,x,y\na,1,2 m\n"),
              "f.csv, line 2: \"2 m\" in column \"y\" is not a coordinate; correct it, or empty the cell");
    EXPECT_EQ(refusal("id,x,y\na,inf,2\n"),
              "f.csv, line 2: \"inf\" in column \"x\" is not a coordinate; correct it, or empty the cell");
    EXPECT_EQ(
        refusal("id,x,y\na,1e999,2\na,1e999,2\n"),
        "f.csv, line 2: \"1e999\" in column \"x\" is not a coordinate; correct it, or empty the cell (2 of 2 rows "
        "are like it)");
    EXPECT_EQ(
        refusal("id,x,y,timestamp\na,1,2,week 20\n"),
        "f.csv, line 2: \"week 20\" in column \"timestamp\" is no time that can be read; name the column of times by "
        "--time COLUMN, empty the cell to keep the fix without a time, or import without times by --no-time");
    EXPECT_EQ(refusal("id x\n"),
              "f.csv, line 1: no two columns look like the position of a fix; give them by --x COLUMN "
              "--y COLUMN, if the table holds fixes; the columns are: id, x");
    EXPECT_EQ(
        refusal("header\na\n"),
        "f.csv, line 1: the header is in one piece: \"header\"; separate the columns by commas, semicolons or tabs");
    EXPECT_EQ(
        refusal("id,x,y\n" + std::string(255, 'n') + ",1,2\n"),
        "f.csv, line 2: the animal's name in column \"id\" is longer than 254 bytes; shorten it, or choose another "
        "column by --id");
    EXPECT_EQ(
        refusal("animal,x,y\nw,45.9,-109.9\nw,45.9,-109.8\n"),
        "f.csv: column \"y\" holds latitudes beyond 90 degrees, as if longitude and latitude were swapped; if they "
        "are, give --x \"y\" --y \"x\"");
    EXPECT_EQ(refusal("animal,x,y\nw,512345.5,6000000\nw,512346.5,6000001\n"),
              "f.csv, line 2: the position 512345.5, 6000000 is not in degrees (2 of 2 positions are not); name the "
              "coordinate system by --from-crs EPSG:n");
    EXPECT_EQ(
        refusal("animal,Easting,Northing\nw,12.5,60\n"),
        "f.csv: the columns \"Easting\" and \"Northing\" are in metres, of a coordinate system that the file does not "
        "tell; name it by --from-crs EPSG:n");
    EXPECT_NE(refusal("tag-id,animal-id,deploy-on-latitude,deploy-on-longitude\n1,a,51.40123,9.63101\n").find("--x"),
              std::string::npos);
}

TEST(TrackingFile, Cells_in_messages_are_short_and_harmless) {
    EXPECT_EQ(refusal("id,x,y\na,1,\x1B[2J" + std::string(60, '9') + "\n"),
              "f.csv, line 2: \"?[2J" + std::string(36, '9') +
                  "...\" in column \"y\" is not a coordinate; correct it, or empty the cell");
}

TEST(TrackingFile, Letters_that_several_zones_share_are_not_guessed) {
    const std::string table = "id,x,y,time\nA,5.1,52.2,2018-05-09 14:59:05 CEST\n";
    EXPECT_EQ(
        refusal(table),
        "f.csv, line 2: \"2018-05-09 14:59:05 CEST\" in column \"time\" names a time zone by letters that several "
        "zones share; say which it is by --time-zone NAME (UTC, Europe/Paris)");
    ReadOptions options;
    options.Zone = std::make_shared<TimeZone>("Europe/Paris");
    EXPECT_EQ(read(table, options).Fixes.at(0).Seconds, 17660LL * 86400 + 53945 - 7200);
}

TEST(TrackingFile, Nanoseconds_are_times) {
    EXPECT_EQ(read("id,x,y,time\nA,5.1,52.2,1525877945000000000\n").Fixes.at(0).Seconds, 17660LL * 86400 + 53945);
}

TEST(TrackingFile, Years_of_two_digits_in_a_column_of_their_own) {
    EXPECT_EQ(read("id,Year,Julianday,Hour,Minute,x,y\nA,18,129,14,59,5.1,52.2\n").Fixes.at(0).Seconds,
              17660LL * 86400 + 53940);
    EXPECT_EQ(read("id,Day,Month,Year,Hour,Minute,Second,x,y\nA,9,5,18,14,59,5,5.1,52.2\n").Fixes.at(0).Seconds,
              17660LL * 86400 + 53945);
}

TEST(TrackingFile, Months_and_minutes_may_have_one_name_but_for_its_case) {
    EXPECT_EQ(read("id,YYYY,MM,DD,HH,mm,ss,x,y\nA,2018,05,09,14,59,05,5.1,52.2\n").Fixes.at(0).Seconds,
              17660LL * 86400 + 53945);
}

TEST(TrackingFile, Date_of_the_location_goes_before_that_of_the_message) {
    EXPECT_EQ(facts_of("Platform ID No.;Msg Date;Loc. date;Latitude;Longitude\n"
                       "7;2018/05/09 14:50:00;2018/05/09 14:59:05;52.2;5.1\n")
                  .Time,
              std::vector<std::string>{"Loc. date"});
}

TEST(TrackingFile, Places_of_tagging_are_no_fixes) {
    EXPECT_EQ(
        refusal("motusTagID,ts,tagDepLat,tagDepLon\n7,1525877945,52.2,5.1\n"),
        "f.csv, line 1: no two columns look like the position of a fix; give them by --x COLUMN --y COLUMN, if the "
        "table holds fixes; the columns are: motusTagID, ts, tagDepLat, tagDepLon");
}

TEST(TrackingFile, Two_hundred_degrees_without_a_fix_are_no_position) {
    const Tracking t = read("UUID,time,Longitude,Latitude,Validity\na,2018-05-09,5.1,52.2,1\na,2018-05-09,200,200,0\n");
    EXPECT_EQ(t.Animals, std::vector<std::string>{"a"});
    EXPECT_EQ(t.Fixes.size(), 1U);
    EXPECT_EQ(t.Rejected.Of(Reason::kNoPosition), 1);
}

class PairColumns : public testing::TestWithParam<const char*> {};

TEST_P(PairColumns, Hold_both_coordinates) {
    const Tracking t = read(std::string("id;time;") + GetParam() + "\n");
    ASSERT_EQ(t.Fixes.size(), 1U);
    EXPECT_EQ(t.Fixes[0].X, 5.1);
    EXPECT_EQ(t.Fixes[0].Y, 52.2);
}

INSTANTIATE_TEST_SUITE_P(TrackingFile, PairColumns,
                         testing::Values("geometry\nA;2018-05-09;POINT (5.1 52.2)",
                                         "the_geom\nA;2018-05-09;c(5.1, 52.2)", "lat/long\nA;2018-05-09;52.2, 5.1",
                                         "LatLng\nA;2018-05-09;52.2 5.1", "Lon, Lat\nA;2018-05-09;5,1 52,2",
                                         "coordinates\nA;2018-05-09;[5.1, 52.2]",
                                         "GPS position\nA;2018-05-09;52.2 N, 5.1 E"));

TEST(TrackingFile, Order_of_a_pair_is_decided_by_what_no_latitude_can_be) {
    const Tracking t = read("id;time;location\nA;2018-05-09;-120.5, 45.5\nA;2018-05-10;-80.5, 45.5\n");
    EXPECT_EQ(t.Fixes.at(1).X, -80.5);
    EXPECT_EQ(t.Fixes.at(1).Y, 45.5);
    EXPECT_EQ(t.Files.at(0).X, "location:1");
    EXPECT_EQ(t.Files.at(0).Y, "location:2");
}

TEST(TrackingFile, Order_of_a_pair_is_asked_for_where_nothing_decides) {
    const std::string table = "id;time;location\nA;2018-05-09;52.2, 5.1\n";
    EXPECT_EQ(refusal(table),
              "f.csv, line 1: nothing tells whether latitude or longitude comes first in positions like \"52.2, 5.1\"; "
              "give --x \"location:2\" --y \"location:1\" for latitude, or --x \"location:1\" --y \"location:2\" for "
              "longitude; the columns are: id, time, location");
    EXPECT_EQ(read(table, columns("", "location:2", "location:1", "")).Fixes.at(0).X, 5.1);
    EXPECT_EQ(read(table, columns("", "location:1", "location:2", "")).Fixes.at(0).X, 52.2);
}

TEST(TrackingFile, Empty_points_are_no_position) {
    const Tracking t = read("id,geom\nA,POINT (5.1 52.2)\nA,POINT EMPTY\n");
    EXPECT_EQ(t.Fixes.size(), 1U);
    EXPECT_EQ(t.Rejected.Of(Reason::kNoPosition), 1);
}

TEST(TrackingFile, Parts_of_a_degree_are_told_by_the_name) {
    const Tracking t = read("latitudeE7,longitudeE7\n522000000,-51000000\n");
    EXPECT_EQ(t.Fixes.at(0).X, -5.1);
    EXPECT_EQ(t.Fixes.at(0).Y, 52.2);
    EXPECT_EQ(t.Files.at(0).PerDegree, 1e7);
    EXPECT_EQ(read("lat*1e6,lon*1e6\n52200000,5100000\n").Fixes.at(0).X, 5.1);
}

// 5.22e8 is no metre of any map, and 522 degrees in millionths; 9e7 may be 9 degrees or 90.
TEST(TrackingFile, Whole_numbers_in_columns_of_degrees_are_ten_millionths_where_nothing_else_is_so_large) {
    const Tracking t = read("lat,lon\n522000000,-51000000\n522000001,-51000000\n");
    EXPECT_EQ(t.Fixes.at(0).X, -5.1);
    EXPECT_EQ(t.Fixes.at(0).Y, 52.2);
    EXPECT_EQ(t.Files.at(0).PerDegree, 1e7);
    EXPECT_TRUE(t.Files.at(0).PartsByContent);
    EXPECT_EQ(read("Latitude,Longitude\n-13000000,368000000\n").Fixes.at(0).X, 36.8);
    const std::string advice =
        " is not in degrees; name the coordinate system by --from-crs EPSG:n, or, if these are parts of a degree, call "
        "the "
        "columns lat_e7 and lon_e7 (e6, e5)";
    EXPECT_EQ(refusal("lat,lon\n5220000,510000\n"), "f.csv, line 2: the position 510000, 5220000" + advice);
    EXPECT_EQ(refusal("lat,lon\n56000000,-2000000\n"), "f.csv, line 2: the position -2000000, 56000000" + advice);
    EXPECT_EQ(refusal("lat,lon\n-500000,101000000\n"), "f.csv, line 2: the position 101000000, -500000" + advice);
    EXPECT_EQ(refusal("x,y\n51000000,522000000\n"),
              "f.csv, line 2: the position 51000000, 522000000 is not in degrees; name the coordinate system by "
              "--from-crs EPSG:n");
}

TEST(TrackingFile, A_degree_among_parts_of_degrees_is_left_out) {
    std::string text = "lat,lon\n";
    for (int i = 0; i < 9; ++i) text += "52200000" + std::to_string(i) + ",5100000" + std::to_string(i) + "\n";
    const Tracking t = read(text + "52.2,5.1\n");
    EXPECT_EQ(t.Fixes.size(), 9U);
    EXPECT_EQ(t.Rejected.Of(Reason::kPosition), 1);
}

TEST(TrackingFile, Positions_that_name_their_system_are_in_it) {
    const Tracking t = read("id,geom\na,SRID=32633;POINT(500000 5800000)\na,SRID=32633;POINT(500001 5800000)\n");
    EXPECT_EQ(t.Files.at(0).Srid, 32633);
    EXPECT_TRUE(t.Files.at(0).IsLengths);
    EXPECT_EQ(t.Fixes.at(0).X, 500000.0);
    EXPECT_FALSE(read("id,geom\na,SRID=4326;POINT(500 58)\na,SRID=4326;POINT(5 58)\na,SRID=4326;POINT(5 58)\na,SRID="
                      "4326;POINT(5 58)\na,SRID=4326;POINT(5 58)\na,SRID=4326;POINT(5 58)\n")
                     .Files.at(0)
                     .IsLengths);
    EXPECT_EQ(
        refusal("id,geom\na,SRID=32633;POINT(500000 5800000)\na,SRID=32632;POINT(500001 5800000)\n"),
        "f.csv: the positions in column \"geom\" are in several coordinate systems (SRID 32632, 32633); import those "
        "of each from a file of its own");
    EXPECT_EQ(refusal("id,geom\na,SRID=999999;POINT(500000 5800000)\n"),
              "f.csv: the SRID 999999 of the positions in column \"geom\" is no coordinate system of a map that EPSG "
              "lists; name it by --from-crs EPSG:n");
    ReadOptions told;
    told.Unit = PositionUnit::kLengths;
    EXPECT_FALSE(read("id,geom\na,SRID=999999;POINT(500000 5800000)\n", told).Files.at(0).Srid);
}

TEST(TrackingFile, A_position_of_another_system_behind_the_first_thousand_is_left_out) {
    std::string text = "id,geom\n";
    for (int i = 0; i < 1100; ++i) text += "a,SRID=32633;POINT(500000 5800000)\n";
    const Tracking t = read(text + "a,SRID=4326;POINT(5 58)\n");
    EXPECT_EQ(t.Fixes.size(), 1100U);
    EXPECT_EQ(t.Rejected.Of(Reason::kPosition), 1);
}

TEST(TrackingFile, Positions_that_tell_themselves_are_found_under_any_name) {
    const Tracking t = read("id;info\na;{\"type\":\"Point\",\"coordinates\":[5.1,52.2]}\n");
    EXPECT_EQ(t.Fixes.at(0).X, 5.1);
    EXPECT_TRUE(t.Files.at(0).PositionByContent);
    EXPECT_NE(refusal("id;info;more\na;POINT(5 52);POINT(6 52)\n"), "") << "which of them?";
}

TEST(TrackingFile, Degrees_minutes_and_seconds_may_stand_in_columns_of_their_own) {
    const Tracking t = read("id,lat_min,lat_deg,lon_min,lon_deg\na,12,52,30,-5\n");
    EXPECT_EQ(t.Fixes.at(0).X, -5.5);
    EXPECT_EQ(t.Fixes.at(0).Y, 52.2);
    EXPECT_EQ(t.Files.at(0).MinutesOfX, "lon_min");
    EXPECT_TRUE(t.Others.empty());
    // 30 minutes and 36 seconds are 0.51 degrees.
    const Tracking seconds = read(
        "Lat Degrees;Lat Minutes;Lat Seconds;NS;Lon Degrees;Lon Minutes;Lon Seconds;EW\n52;30;36,0;S;5;30;;W\n"
        "52;60;36,0;S;5;30;;W\n52;31;36,0;S;5;30;;W\n52;32;36,0;S;5;30;;W\n52;33;36,0;S;5;30;;W\n52;34;36,0;S;5;30;;"
        "W\n");
    EXPECT_NEAR(seconds.Fixes.at(0).Y, -52.51, 1e-12);
    EXPECT_EQ(seconds.Fixes.at(0).X, -5.5);
    EXPECT_EQ(seconds.Fixes.size(), 5U) << "the row with 60 minutes is left out";
    EXPECT_EQ(read("lat,lat_min,lon,lon_min\n52.2,12,5.5,30\n").Fixes.at(0).X, 5.5);
    EXPECT_EQ(read("lat_deg,lon_deg\n52,5\n").Fixes.at(0).X, 5.0);
}

TEST(TrackingFile, Numbers_that_a_spreadsheet_rounded_are_no_times) {
    EXPECT_EQ(refusal(timed_rows({"1.52588E+12", "1.52588E+12", "1.52588E+12"})),
              "f.csv: the times in column \"timestamp\" are numbers that were rounded when the table was saved, like "
              "\"1.52588E+12\"; save it with all digits, or import without times by --no-time");
    EXPECT_EQ(read(timed_rows({"1.525877945E9"})).Fixes.at(0).Seconds, 17660LL * 86400 + 53945);
    EXPECT_EQ(read(timed_rows({"1525877945", "1.5e9", "1525877946"})).Fixes.size(), 3U) << "R writes such";
    // 43229.62 is 14:52:48.
    EXPECT_EQ(facts_of(timed_rows({"43229.62", "43230.5"})).DecimalsOfDays, 2U);
    EXPECT_EQ(facts_of(timed_rows({"43229.25", "43230.75"})).DecimalsOfDays, 0U);
    EXPECT_EQ(facts_of(timed_rows({"43229.62436"})).DecimalsOfDays, 0U);
}

TEST(TrackingFile, Parts_of_dates_that_the_user_names_are_joined) {
    const auto seconds = [](const std::string& header, const std::string& cells, const std::string& time) {
        return read("id,lat,lon," + header + "\na,52,5," + cells + "\n", columns("", "", "", time)).Fixes.at(0).Seconds;
    };
    const std::int64_t day = 17660LL * 86400;
    EXPECT_EQ(seconds("J,M,T", "2018,5,9", "J,M,T"), day);
    EXPECT_EQ(seconds("J,n", "2018,129", "J,n"), day);
    EXPECT_EQ(seconds("T,M,J", "29,5,2018", "T,M,J"), day + 20 * 86400);
    EXPECT_EQ(seconds("M,T,J", "5,29,2018", "M,T,J"), day + 20 * 86400);
    EXPECT_EQ(seconds("dia,mes,ano", "9,5,2018", "dia,mes,ano"), day);
    EXPECT_EQ(seconds("J,M,T,H,Min", "2018,5,9,14,59", "J,M,T,H,Min"), day + 53940);
    EXPECT_NE(refusal("id,lat,lon,T,M,J\na,52,5,9,5,2018\n", columns("", "", "", "T,M,J")), "");
}

TEST(TrackingFile, Tables_in_many_languages) {
    struct Table {
        const char* Header;
        const char* Row;
        const char* Animal;
    };
    for (const auto& [header, row, animal] :
         {Table{"Állat;Dátum;Idő;Szélesség;Hosszúság", "Bodri;2018.05.09.;14:59:05;52,2;5,1", "Bodri"},
          Table{"zvíře;datum;čas;zeměpisná šířka;zeměpisná délka", "Rys;9. 5. 2018;14:59:05;52,2;5,1", "Rys"},
          Table{"Hayvan;Tarih;Saat;Enlem;Boylam", "Ayı;9.05.2018;14:59:05;52,2;5,1", "Ayı"},
          Table{"Eläin;Päivämäärä;Kellonaika;Leveysaste;Pituusaste", "Susi;9.5.2018;14.59.05;52,2;5,1", "Susi"},
          Table{"Ζώο;Ημερομηνία;Γεωγραφικό πλάτος;Γεωγραφικό μήκος", "Α;29/5/2018 2:59:05 μμ;52,2;5,1", "Α"},
          Table{"個体番号,日付,時刻,北緯,東経", "K,2018年5月9日,14時59分05秒,52.2,5.1", "K"},
          Table{"개체번호,일시,위도,경도", "곰,2018-05-09 오후 2:59:05,52.2,5.1", "곰"},
          Table{"动物编号,日期,时间,纬度,经度", "豹,2018年5月9日,14:59:05,52.2,5.1", "豹"},
          Table{"動物編號,日期時間,緯度,經度", "豹,2018/5/9 下午 02:59:05,52.2,5.1", "豹"},
          Table{"Osobnik;Data;Godzina;Szer. geogr.;Dł. geogr.", "Wilk;09.05.2018;14:59:05;52,2;5,1", "Wilk"}}) {
        const Tracking t = read(std::string(header) + "\n" + row + "\n");
        EXPECT_EQ(t.Animals, Names_{animal}) << header;
        EXPECT_EQ(t.Fixes.at(0).Seconds % 86400, 53945) << header;
        EXPECT_EQ(t.Fixes.at(0).X, 5.1) << header;
        EXPECT_EQ(t.Fixes.at(0).Y, 52.2) << header;
    }
}

// 14.75 and 14.333 are no hours and minutes; 14.59 under "time" is; 14.5 may be either.
TEST(TrackingFile, Hours_may_have_decimals_where_nothing_else_can_be_meant) {
    const std::int64_t minute = 60;
    EXPECT_EQ(seconds_of("id,date,hour,lat,lon\na,2019-03-13,14.75,52,5\na,2019-03-13,0.5,52,5\n"),
              (std::vector<std::int64_t>{30 * minute, (14 * 60 + 45) * minute}));
    EXPECT_EQ(seconds_of("id;year;month;day;hour;lat;lon\na;2019;3;13;14,75;52;5\na;2019;3;13;9,5;52;5\n"),
              (std::vector<std::int64_t>{(9 * 60 + 30) * minute, (14 * 60 + 45) * minute}));
    EXPECT_EQ(seconds_of("id;date;time;lat;lon\na;2019-03-13;14.59;52;5\na;2019-03-13;9.05;52;5\n"),
              (std::vector<std::int64_t>{(9 * 60 + 5) * minute, (14 * 60 + 59) * minute}));
    // 0.625 of a day are 15 hours.
    EXPECT_EQ(seconds_of("id;date;time;lat;lon\na;13.03.2019;0,625;52;5\na;13.03.2019;0,25;52;5\n"),
              (std::vector<std::int64_t>{6 * 60 * minute, 15 * 60 * minute}));
    for (const char* cells : {"14.5", "14.30"}) {
        const FileFacts facts = facts_of(std::string("id,date,hour,lat,lon\na,2019-03-13,") + cells + ",52,5\n");
        EXPECT_EQ(facts.Time, Names_{"date"}) << cells;
        EXPECT_EQ(facts.UnusedClock, "hour") << cells;
    }
}

TEST(TrackingFile, A_time_of_day_that_cannot_be_read_beside_a_date_is_told) {
    EXPECT_EQ(facts_of("id,date,hour,lat,lon\na,2019-03-13,noon,52,5\n").UnusedClock, "hour");
    EXPECT_EQ(facts_of("id,year,month,day,hour,lat,lon\na,2019,3,13,14.5,52,5\n").UnusedClock, "hour");
    EXPECT_EQ(facts_of("id,year,doy,lat,lon\na,2019,72,52,5\n").UnusedClock, "");
    EXPECT_EQ(facts_of("id,date,seconds,lat,lon\na,2019-03-13,53945,52,5\n").UnusedClock, "seconds");
    EXPECT_EQ(facts_of("id,date,minute_of_day,lat,lon\na,2019-03-13,899,52,5\n").UnusedClock, "minute_of_day");
    EXPECT_EQ(facts_of("id,date,hour,lat,lon\na,2019-03-13,14,52,5\n").UnusedClock, "");
    EXPECT_EQ(facts_of("id,date,hour,lat,lon\na,2019-03-13 14:00,14,52,5\n").UnusedClock, "");
}

TEST(TrackingFile, A_first_column_without_a_heading_holds_names_of_rows_only_if_they_differ) {
    const std::string message =
        "f.csv, line 1: the header has 3 cells, and the rows have 4; name each column, and put cells that hold the "
        "separator "
        "in quotes";
    EXPECT_EQ(refusal("id,x,y\nA,6,5,53\nA,6,6,53\n"), message) << "a decimal comma";
    EXPECT_EQ(refusal("id;time;geom\nA;2018-05-09;SRID=4326;POINT(6.5 52.1)\n"), message);
    EXPECT_EQ(read("id,x,y\n1,A,6,53\n2,A,6,53\n").Fixes.at(0).X, 6.0);
}

TEST(TrackingFile, Corners_of_an_area_are_no_positions) {
    EXPECT_NE(refusal("id,lat_min,lon_min,lat_max,lon_max\na,52.0,6.4,52.2,6.6\n").find("no two columns look like"),
              std::string::npos);
}

TEST(TrackingFile, Plurals_tell_no_side_of_the_earth) {
    EXPECT_EQ(read("lats,lons\n52.2,5.1\n").Fixes.at(0).Y, 52.2);
    EXPECT_EQ(read("LatS,LonW\n52.2,5.1\n").Fixes.at(0).Y, -52.2);
    EXPECT_EQ(read("LatS,LonE\n52.2,5.1\n").Fixes.at(0).Y, -52.2);
}

TEST(TrackingFile, Radians_are_refused) {
    EXPECT_EQ(refusal("id,lat_rad,lon_rad\na,0.9,0.1\n"),
              "f.csv, line 1: the columns \"lon_rad\" and \"lat_rad\" are in radians; turn them into degrees (times "
              "57.29577951); the columns are: id, lat_rad, lon_rad");
    EXPECT_EQ(read("id,Breitengrad,Längengrad\na,52,5\n").Fixes.at(0).X, 5.0);
}

TEST(TrackingFile, Sides_of_the_earth_are_heeded_under_any_name_and_in_words) {
    const auto place = [](const std::string& text) {
        const TrackingFix fix = read(text).Fixes.at(0);
        return std::pair(fix.X, fix.Y);
    };
    const std::pair<double, double> southWest{-70.25, -33.5};
    EXPECT_EQ(place("lat,a,lon,b\n33.5,S,70.25,W\n"), southWest);
    EXPECT_EQ(place("lat,lat_hem,lon,lon_hem\n33.5,South,70.25,West\n"), southWest);
    EXPECT_EQ(place("lat,ns,lon,ew\n33.5,sur,70.25,oeste\n"), southWest);
    EXPECT_EQ(read("lat,ns,lon,ew\n33.5,S,70.25,O\n33.5,S,70.25,E\n").Fixes.at(0).X, -70.25);
    EXPECT_EQ(read("lat,ns,lon,ew\n33.5,S,70.25,O\n33.5,S,70.25,W\n").Fixes.at(0).X, 70.25);
    EXPECT_EQ(
        refusal("lat,ns,lon,ew\n33.5,S,70.25,O\n"),
        "f.csv, line 1: the letter O in column \"ew\" may be east (Ost) or west (Oeste, Ouest); write E or W; the "
        "columns are: lat, ns, lon, ew");
    // A letter alone shows nothing, nor do three such columns.
    EXPECT_EQ(place("lat,lon,flag\n33.5,70.25,S\n"), (std::pair{70.25, 33.5}));
}

TEST(TrackingFile, Degrees_and_minutes_in_one_number_need_letters_or_a_name) {
    EXPECT_EQ(read("lat,N/S,lon,E/W\n5230.0,N,00530.0,W\n").Fixes.at(0).X, -5.5);
    EXPECT_EQ(read("lat,lon\n5230.0N,00530.0E\n").Fixes.at(0).Y, 52.5);
    EXPECT_EQ(read("Latitude (ddmm.mmmm),Longitude (dddmm.mmmm)\n5230.0,-00530.0\n").Fixes.at(0).X, -5.5);
    EXPECT_EQ(
        refusal("lat,lon\n5230.0,530.0\n"),
        "f.csv, line 2: the position 530, 5230 is not in degrees; name the coordinate system by --from-crs EPSG:n");
}

TEST(TrackingFile, Zones_behind_the_time_of_day_in_its_own_column_are_heeded) {
    const auto table = [](const std::string& time) { return "id,date,time,x,y\nA,2018-05-09," + time + ",5.1,52.2\n"; };
    EXPECT_EQ(read(table("14:59:05 UTC")).Fixes.at(0).Seconds, 17660LL * 86400 + 53945);
    EXPECT_EQ(read(table("14:59:05Z")).Fixes.at(0).Seconds, 17660LL * 86400 + 53945);
    EXPECT_EQ(read(table("16:59:05+02:00")).Fixes.at(0).Seconds, 17660LL * 86400 + 53945);
    EXPECT_NE(refusal(table("14:59:05 CST")).find("--time-zone NAME"), std::string::npos);
    EXPECT_EQ(read("id,date,length,x,y\nA,2018-05-09,10.5 KM,5.1,52.2\n").Fixes.at(0).Seconds, 17660LL * 86400);
}

}  // namespace
}  // namespace wxl::tracking
