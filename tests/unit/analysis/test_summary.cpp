#include "analysis/animal_run.h"
#include "analysis/summary_file.h"
#include "analysis/summary_rows.h"
#include "analysis/summary_table.h"
#include "platform/runtime_error.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <optional>
#include <set>
#include <string>

namespace wxl::analysis {
namespace {

using testing::HasSubstr;

const std::string kHeader = std::string(kSummaryHeader) + "\r\n";

std::optional<std::string> kept(const std::string& earlier, const std::set<std::string>& replaced) {
    return kept_summary(kSummaryColumns, earlier, replaced);
}

const platform::SpatialReference kMetres = {
    .Name = "UTM", .Wkt = "", .UnitName = "metre", .MetersPerUnit = 1.0, .IsGeographic = false};

AnimalRecord record_of(const std::string& id) {
    AnimalRecord record;
    record.Id = id;
    record.NamingId = "4";
    record.SampleSize = 120;
    record.Method = BandwidthMethod::kLscv;
    record.Bandwidth = 250.5;
    record.BandwidthMapUnits = 250.5;
    record.Href = 300;
    record.Minimized = true;
    record.Volume = 999900.5;
    record.RasterName = "K4";
    return record;
}

TEST(SummaryRows, One_row_for_each_isopleth) {
    AnimalRecord record = record_of("Bo");
    record.Isopleths = {{95, 0.25, 12500000.0}, {50, 2, std::nullopt}};
    record.MaxEdgeValue = 0.5;
    record.EdgeWarning = true;
    record.Reason = "why";
    EXPECT_EQ(summary_rows(record, kMetres),
              "Bo,4,120,lscv,250.5,300,yes,why,95,0.25,12500000,12.5,999900.5,yes,K4,0,1250,,,,,,\r\n"
              "Bo,4,120,lscv,250.5,300,yes,why,50,2,,,999900.5,yes,K4,0,,,,,,,\r\n");
}

// Two polygons of one animal: 2,500,000 square metres, and fixes on a line.
TEST(SummaryRows, One_row_for_each_minimum_convex_polygon) {
    AnimalRecord record = record_of("Bo");
    record.ConvexPolygons = {
        {.Percent = 100.0, .Status = comparison::PolygonStatus::kGood, .Area = 2.5e6, .Kept = 120, .Corners = {}},
        {.Percent = 50.0, .Status = comparison::PolygonStatus::kNoArea, .Kept = 60, .Corners = {}}};
    EXPECT_EQ(polygon_rows(record, kMetres),
              "Bo,4,120,mcp,,,,,100,,2500000,2.5,,,K4,0,250,,,,,,\r\n"
              "Bo,4,120,mcp,,,,no area,50,,0,0,,,K4,0,0,,,,,,\r\n");
}

TEST(SummaryRows, One_row_without_isopleths_and_for_failures) {
    EXPECT_EQ(summary_rows(record_of("Bo"), kMetres), "Bo,4,120,lscv,250.5,300,yes,,,,,,999900.5,,K4,0,,,,,,,\r\n");
    AnimalRecord failed = record_of("Bo");
    failed.Method = BandwidthMethod::kManual;
    failed.Href = 0;
    failed.Status = 5002;
    EXPECT_EQ(summary_rows(failed, kMetres), "Bo,4,120,manual,250.5,,,,,,,,,,K4,5002,,,,,,,\r\n");
}

// Two fixes a day apart, from 2018-05-09 14:59:05 on.
TEST(SummaryRows, Times_and_distortions_stand_last) {
    AnimalRecord record = record_of("Bo");
    record.Times = tracking_times::facts_on_times({1525877945, 1525964345});
    record.Distorted = platform::Distortion{0.0054, 0.0027};
    EXPECT_THAT(summary_rows(record, kMetres),
                HasSubstr(",K4,0,,2018-05-09T14:59:05Z,2018-05-10T14:59:05Z,1,86400,0.0054,0.0027\r\n"));
}

TEST(SummaryRows, Rows_of_a_summary_with_fewer_columns_get_the_others_empty) {
    const std::string header =
        "id,naming_id,n,method,bandwidth,href,minimised,reason,percent,level,area,area_km2,volume,edge_warning,raster,"
        "status\r\n";
    EXPECT_EQ(kept(header + "x,1,2,href,3,4,,,,,,,5,,K9,0\r\n", {}),
              kHeader + "x,1,2,href,3,4,,,,,,,5,,K9,0,,,,,,,\r\n");
    EXPECT_EQ(kept(header, {}), kHeader);
}

TEST(SummaryRows, Bandwidths_of_rescaled_samples_are_in_map_units) {
    AnimalRecord record = record_of("Bo");
    record.Bandwidth = 0.5;
    record.BandwidthMapUnits = 200;
    record.Href = 0.75;
    EXPECT_EQ(href_in_map_units(record), 300.0);
}

TEST(SummaryRows, Square_kilometres_come_from_the_length_of_a_unit) {
    platform::SpatialReference reference = kMetres;
    EXPECT_EQ(square_kilometres(2e6, reference), 2.0);
    reference.MetersPerUnit = 0.5;
    EXPECT_EQ(square_kilometres(2e6, reference), 0.5);
    EXPECT_EQ(square_kilometres(std::nullopt, reference), std::nullopt);
    reference.IsGeographic = true;
    EXPECT_EQ(square_kilometres(2e6, reference), std::nullopt);
    EXPECT_EQ(square_kilometres(2e6, platform::SpatialReference{}), std::nullopt);
}

TEST(SummaryRows, Hostile_texts_are_quoted) {
    const std::string rows = summary_rows(record_of("O\"Malley, \r\nthe <b>wolf</b>"), kMetres);
    EXPECT_TRUE(rows.starts_with("\"O\"\"Malley, \r\nthe <b>wolf</b>\",4,120,")) << rows;
    EXPECT_TRUE(summary_rows(record_of("Z\xFCrich"), kMetres).starts_with("Z\xC3\xBCrich,")) << "always UTF-8";
}

TEST(SummaryRows, Rows_of_replaced_rasters_leave_the_earlier_text) {
    const std::string mine = summary_rows(record_of("a,\"b\"\nc"), kMetres);
    const std::string other = "x,1,2,href,3,4,,,,,,,5,,\"K,9\",0\r\n";
    EXPECT_EQ(kept(kHeader + mine + other, {"K4"}), kHeader + other);
    EXPECT_EQ(kept(kHeader + mine + other, {"K,9"}), kHeader + mine);
    EXPECT_EQ(kept(kHeader + mine + other, {}), kHeader + mine + other);
    EXPECT_EQ(kept("", {}), kHeader);
}

TEST(SummaryRows, Summaries_saved_by_other_programs_are_still_ours) {
    const std::string row = "x,1,2,href,3,4,,,,,,,5,,K9,0";
    EXPECT_EQ(kept("\xEF\xBB\xBF" + std::string(kSummaryHeader) + "\n" + row, {}), kHeader + row + "\r\n");
    EXPECT_EQ(kept(kHeader + "short,row\r\n\r\n", {"K9"}), kHeader + "short,row\r\n");
}

TEST(SummaryRows, Other_texts_are_not_ours) {
    EXPECT_EQ(kept("id,area\r\n1,2\r\n", {}), std::nullopt);
    EXPECT_EQ(kept("my notes", {}), std::nullopt);
    EXPECT_EQ(kept(kHeader + "\"never closed", {}), std::nullopt);
}

}  // namespace
}  // namespace wxl::analysis
