#include "batch/record_codec.h"
#include "platform/runtime_error.h"
#include "tests/unit/batch/equal_leaves.h"

#include <bit>
#include <cstdint>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <limits>

namespace wxl::batch {
namespace {

using analysis::AnimalRecord;
using testing::IsEmpty;

AnimalRecord full_record() {
    AnimalRecord record;
    record.Id = std::string("B\xC3\xA4r");
    record.NamingId = "12";
    record.Subfolder = "animals_01-12";
    record.SampleSize = 77;
    record.Coincident = {5, 4};
    record.Schoener = 0.1 + 0.7;
    record.SwihartSlade = 1.0 / 7.0;
    record.Value = 0.3;
    record.Reason = "Why \"not\".";
    record.Method = analysis::BandwidthMethod::kProportion;
    record.Bandwidth = 0.1 + 0.2;
    record.BandwidthMapUnits = 123.45678901234567;
    record.Href = 1.0 / 3.0;
    record.Minimized = true;
    record.Profile = {{0.1, -1e-9}};
    record.AdHoc = {.Status = comparison::AdHocStatus::kFound,
                    .Href = 1.0 / 3.0,
                    .Proportion = 0.1 + 0.7,
                    .Bandwidth = 0.3,
                    .CellSize = 2.5,
                    .Trace = {{.Proportion = 0.95, .Range = {.Parts = 2, .Holes = 7}}}};
    record.Grid = {-100.5, 6e6, 20.0, 33, 44};
    record.Volume = 999999.99999999988;
    record.RasterName = "K12_b2";
    record.Isopleths = {{.Percent = 95.0,
                         .Level = 0.0625,
                         .Area = 1234.5,
                         .Shape = {.Type = platform::ShapeType::kPolygon,
                                   .Location = {},
                                   .Parts = {{{0.1, 0.2}, {1e6, 0.3}, {0.5, 7e6}}}},
                         .Parts = 7}};
    record.Error = analysis::PositionError{.Metres = 0.1 + 0.2, .Field = "lc", .OfArgosClasses = true};
    record.ConvexPolygons = {{.Percent = 95.0,
                              .Status = comparison::PolygonStatus::kGood,
                              .Area = 0.1 + 0.2,
                              .Kept = 3,
                              .Corners = {{0.1, 0.2}, {1e6, 0.3}, {0.5, 7e6}}}};
    record.Curve = comparison::AreaCurve{.Sizes = {{.N = 5, .Area = 0.1 + 0.2, .Low = 1e-300, .High = 0.5}},
                                         .Levelling = comparison::Asymptote{.N = 60, .Reached = true},
                                         .CellSize = 2.5};
    record.MaxEdgeValue = 1e-300;
    record.EdgeWarning = true;
    record.CutTo = 0.0167139261002523;
    record.Adaptive = true;
    record.Reach = 4.0000000000000009;
    record.BeyondReach = 0.028012345678901234;
    record.LostAtEdge = 1.2345678901234567e-05;
    record.Status = 5002;
    record.IsoplethStatus = 3001;
    record.Warnings = "One.\rTwo.\r";
    record.Times = {.WithTime = 3,
                    .WithoutTime = 1,
                    .First = 1525878000,
                    .Last = 1525881600,
                    .Days = 1.0 / 24.0,
                    .DaysWithFix = 1,
                    .EqualTimes = 2,
                    .Intervals = tracking_times::Quartiles{0.5, 1800.0, 1800.25}};
    record.Distorted = platform::Distortion{0.0054, 1.0 / 3.0};
    record.Files = {"/out/K12_b2"};
    return record;
}

/// A record as it begins, with one element in every list.
AnimalRecord fresh_record() {
    AnimalRecord record;
    record.Profile = {{}};
    record.AdHoc.Trace = {{}};
    record.Isopleths = {{}};
    record.ConvexPolygons = {{}};
    record.Curve = comparison::AreaCurve{.Sizes = {{}}, .Levelling = comparison::Asymptote(), .CellSize = 0.0};
    record.Files = {""};
    record.Times.Intervals = tracking_times::Quartiles();
    record.Distorted = platform::Distortion();
    record.Error = analysis::PositionError();
    return record;
}

AnimalRecord back(const AnimalRecord& record) {
    return record_of(Json::parse(json_of_record(record).dump()));
}

TEST(RecordCodec, A_full_record_comes_back_equal) {
    EXPECT_THAT(equal_leaves(json_of_record(full_record()), json_of_record(fresh_record())), IsEmpty());
    EXPECT_TRUE(back(full_record()) == full_record());
}

TEST(RecordCodec, Lists_of_several_elements_come_back_equal) {
    AnimalRecord record = full_record();
    record.Profile.push_back({0.0, 0.0});
    record.AdHoc.Trace.push_back({.Proportion = 1.0, .Range = {.Parts = 1, .Holes = 0}});
    record.Isopleths.push_back({.Percent = 50.0, .Level = 0.25, .Area = std::nullopt});
    record.ConvexPolygons.push_back(
        {.Percent = 50.0, .Status = comparison::PolygonStatus::kNoFix, .Area = 0.0, .Kept = 0, .Corners = {}});
    record.Curve->Sizes.push_back({.N = 77, .Area = std::nullopt, .Low = 1e-300, .High = std::nullopt});
    record.Curve->Levelling.reset();
    record.Files.emplace_back("/out/\xFFK12_iso_poly.shp");
    EXPECT_TRUE(back(record) == record);
}

TEST(RecordCodec, A_score_that_is_no_number_keeps_its_bits) {
    AnimalRecord record;
    record.Profile = {{0.2, std::numeric_limits<double>::quiet_NaN()}};
    EXPECT_EQ(std::bit_cast<std::uint64_t>(back(record).Profile.at(0).Score), 0x7FF8000000000000U);
}

TEST(RecordCodec, An_empty_record_comes_back_equal) {
    EXPECT_TRUE(back({}) == AnimalRecord());
}

TEST(RecordCodec, Every_method_comes_back) {
    for (int method = 0; method <= static_cast<int>(analysis::BandwidthMethod::kProportion); ++method) {
        const auto wanted = static_cast<analysis::BandwidthMethod>(method);
        EXPECT_EQ(method_of_text(method_text(wanted)), wanted);
    }
    EXPECT_THROW(method_of_text("cv"), platform::RuntimeError);
}

TEST(RecordCodec, An_entry_brings_its_report_and_its_messages) {
    TaskEntry entry;
    entry.Distribution = 41;
    entry.Record = full_record();
    entry.Report = {"Unique ID: 7", "", "Warnings!One.\rTwo.\r"};
    entry.Messages = {{.Text = "Text",
                       .Title = "Warning",
                       .Sign = platform::Icon::kExclamation,
                       .About = platform::Topic::kStop,
                       .Kind = platform::BoxKind::kFault},
                      {.Text = "x"}};
    const TaskEntry fresh{.Distribution = 0, .Record = fresh_record(), .Report = {"", "", ""}, .Messages = {{}, {}}};
    EXPECT_THAT(equal_leaves(json_of_entry(entry).at("messages").at(0), json_of_entry(fresh).at("messages").at(0)),
                IsEmpty());
    const TaskEntry read = entry_of(Json::parse(json_of_entry(entry).dump()));
    EXPECT_EQ(read.Distribution, 41U);
    EXPECT_TRUE(read.Record == entry.Record);
    EXPECT_EQ(read.Report, entry.Report);
    ASSERT_EQ(read.Messages.size(), 2U);
    EXPECT_EQ(read.Messages[0].Text, "Text");
    EXPECT_EQ(read.Messages[0].Title, "Warning");
    EXPECT_EQ(read.Messages[0].Sign, platform::Icon::kExclamation);
    EXPECT_EQ(read.Messages[0].About, platform::Topic::kStop);
    EXPECT_EQ(read.Messages[0].Kind, platform::BoxKind::kFault);
    EXPECT_EQ(read.Messages[1].Sign, platform::Icon::kNone);
}

TEST(RecordCodec, Numbers_that_cannot_be_are_refused) {
    for (const char* member : {"n", "columns", "rows", "status", "isopleth_status"}) {
        Json json = json_of_record(full_record());
        json[member] = 1e300;
        EXPECT_THROW(record_of(json), platform::RuntimeError) << member;
        json[member] = std::int64_t{1} << 40;
        EXPECT_THROW(record_of(json), platform::RuntimeError) << member;
    }
}

}  // namespace
}  // namespace wxl::batch
