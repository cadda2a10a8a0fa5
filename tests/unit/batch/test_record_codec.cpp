#include "batch/record_codec.h"
#include "platform/runtime_error.h"

#include <bit>
#include <cmath>
#include <gtest/gtest.h>
#include <limits>

namespace wxl::batch {
namespace {

using analysis::AnimalRecord;

AnimalRecord full_record() {
    AnimalRecord record;
    record.Id = std::string("B\xC3\xA4r");
    record.NamingId = "12";
    record.Subfolder = "animals_01-12";
    record.SampleSize = 77;
    record.Coincident = {5, 4};
    record.Schoener = 0.1 + 0.7;
    record.Value = 0.3;
    record.Reason = "Why \"not\".";
    record.Method = analysis::BandwidthMethod::kProportion;
    record.Bandwidth = 0.1 + 0.2;
    record.BandwidthMapUnits = 123.45678901234567;
    record.Href = 1.0 / 3.0;
    record.Minimized = true;
    record.Profile = {{0.1, -1e-9}, {0.2, std::numeric_limits<double>::quiet_NaN()}, {0.0, 0.0}};
    record.AdHoc = {.Status = comparison::AdHocStatus::kFound,
                    .Href = 1.0 / 3.0,
                    .Proportion = 0.1 + 0.7,
                    .Bandwidth = 0.3,
                    .CellSize = 2.5,
                    .Trace = {{1.0, {1, 0}}, {0.95, {2, 7}}}};
    record.Grid = {-100.5, 6e6, 20.0, 33, 44};
    record.Volume = 999999.99999999988;
    record.RasterName = "K12_b2";
    record.Isopleths = {{95.0, 0.0625, 1234.5, {}, 7}, {50.0, 0.25, std::nullopt}};
    record.Error = analysis::PositionError{0.1 + 0.2, "lc", true};
    record.ConvexPolygons = {{.Percent = 95.0,
                              .Status = comparison::PolygonStatus::kGood,
                              .Area = 0.1 + 0.2,
                              .Kept = 3,
                              .Corners = {{0.1, 0.2}, {1e6, 0.3}, {0.5, 7e6}}},
                             {.Percent = 50.0, .Status = comparison::PolygonStatus::kNoFix, .Corners = {}}};
    record.Curve = comparison::AreaCurve{{{5, 0.1 + 0.2, std::nullopt, 0.5}, {77, std::nullopt, 1e-300, std::nullopt}},
                                         comparison::Asymptote{60, true},
                                         2.5};
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
    record.Files = {"/out/K12_b2", "/out/\xFFK12_iso_poly.shp"};
    return record;
}

void expect_equal(const AnimalRecord& a, const AnimalRecord& b) {
    EXPECT_EQ(a.Id, b.Id);
    EXPECT_EQ(a.NamingId, b.NamingId);
    EXPECT_EQ(a.Subfolder, b.Subfolder);
    EXPECT_EQ(a.SampleSize, b.SampleSize);
    EXPECT_EQ(a.Coincident, b.Coincident);
    EXPECT_EQ(a.Schoener, b.Schoener);
    EXPECT_EQ(a.SwihartSlade, b.SwihartSlade);
    EXPECT_EQ(a.Value, b.Value);
    EXPECT_EQ(a.Reason, b.Reason);
    EXPECT_EQ(a.Method, b.Method);
    EXPECT_EQ(a.Bandwidth, b.Bandwidth);
    EXPECT_EQ(a.BandwidthMapUnits, b.BandwidthMapUnits);
    EXPECT_EQ(a.Href, b.Href);
    EXPECT_EQ(a.Minimized, b.Minimized);
    ASSERT_EQ(a.Profile.size(), b.Profile.size());
    for (std::size_t i = 0; i < a.Profile.size(); ++i) {
        EXPECT_EQ(a.Profile[i].Bandwidth, b.Profile[i].Bandwidth);
        EXPECT_EQ(std::bit_cast<std::uint64_t>(a.Profile[i].Score), std::bit_cast<std::uint64_t>(b.Profile[i].Score));
    }
    EXPECT_EQ(a.AdHoc.Status, b.AdHoc.Status);
    EXPECT_EQ(a.AdHoc.Href, b.AdHoc.Href);
    EXPECT_EQ(a.AdHoc.Proportion, b.AdHoc.Proportion);
    EXPECT_EQ(a.AdHoc.Bandwidth, b.AdHoc.Bandwidth);
    EXPECT_EQ(a.AdHoc.CellSize, b.AdHoc.CellSize);
    ASSERT_EQ(a.AdHoc.Trace.size(), b.AdHoc.Trace.size());
    for (std::size_t i = 0; i < a.AdHoc.Trace.size(); ++i) {
        EXPECT_EQ(a.AdHoc.Trace[i].Proportion, b.AdHoc.Trace[i].Proportion);
        EXPECT_EQ(a.AdHoc.Trace[i].Range.Parts, b.AdHoc.Trace[i].Range.Parts);
        EXPECT_EQ(a.AdHoc.Trace[i].Range.Holes, b.AdHoc.Trace[i].Range.Holes);
    }
    EXPECT_EQ(a.Grid, b.Grid);
    EXPECT_EQ(a.Error, b.Error);
    EXPECT_EQ(a.Volume, b.Volume);
    EXPECT_EQ(a.RasterName, b.RasterName);
    ASSERT_EQ(a.Isopleths.size(), b.Isopleths.size());
    for (std::size_t i = 0; i < a.Isopleths.size(); ++i) {
        EXPECT_EQ(a.Isopleths[i].Percent, b.Isopleths[i].Percent);
        EXPECT_EQ(a.Isopleths[i].Level, b.Isopleths[i].Level);
        EXPECT_EQ(a.Isopleths[i].Area, b.Isopleths[i].Area);
        EXPECT_EQ(a.Isopleths[i].Parts, b.Isopleths[i].Parts);
    }
    ASSERT_EQ(a.ConvexPolygons.size(), b.ConvexPolygons.size());
    for (std::size_t i = 0; i < a.ConvexPolygons.size(); ++i) {
        EXPECT_EQ(a.ConvexPolygons[i].Percent, b.ConvexPolygons[i].Percent);
        EXPECT_EQ(a.ConvexPolygons[i].Status, b.ConvexPolygons[i].Status);
        EXPECT_EQ(a.ConvexPolygons[i].Area, b.ConvexPolygons[i].Area);
        EXPECT_EQ(a.ConvexPolygons[i].Kept, b.ConvexPolygons[i].Kept);
        EXPECT_EQ(a.ConvexPolygons[i].Corners, b.ConvexPolygons[i].Corners);
    }
    ASSERT_EQ(a.Curve.has_value(), b.Curve.has_value());
    if (a.Curve) {
        ASSERT_EQ(a.Curve->Sizes.size(), b.Curve->Sizes.size());
        for (std::size_t i = 0; i < a.Curve->Sizes.size(); ++i) {
            EXPECT_EQ(a.Curve->Sizes[i].N, b.Curve->Sizes[i].N);
            EXPECT_EQ(a.Curve->Sizes[i].Area, b.Curve->Sizes[i].Area);
            EXPECT_EQ(a.Curve->Sizes[i].Low, b.Curve->Sizes[i].Low);
            EXPECT_EQ(a.Curve->Sizes[i].High, b.Curve->Sizes[i].High);
        }
        EXPECT_EQ(a.Curve->Levelling->N, b.Curve->Levelling->N);
        EXPECT_EQ(a.Curve->Levelling->Reached, b.Curve->Levelling->Reached);
        EXPECT_EQ(a.Curve->CellSize, b.Curve->CellSize);
    }
    EXPECT_EQ(a.MaxEdgeValue, b.MaxEdgeValue);
    EXPECT_EQ(a.EdgeWarning, b.EdgeWarning);
    EXPECT_EQ(a.CutTo, b.CutTo);
    EXPECT_EQ(a.Adaptive, b.Adaptive);
    EXPECT_EQ(a.Reach, b.Reach);
    EXPECT_EQ(a.BeyondReach, b.BeyondReach);
    EXPECT_EQ(a.LostAtEdge, b.LostAtEdge);
    EXPECT_EQ(a.Status, b.Status);
    EXPECT_EQ(a.IsoplethStatus, b.IsoplethStatus);
    EXPECT_EQ(a.Warnings, b.Warnings);
    EXPECT_EQ(a.Files, b.Files);
    EXPECT_EQ(a.Distorted, b.Distorted);
}

TEST(RecordCodec, A_full_record_comes_back_equal) {
    expect_equal(record_of(Json::parse(json_of_record(full_record()).dump())), full_record());
}

TEST(RecordCodec, An_empty_record_comes_back_equal) {
    expect_equal(record_of(Json::parse(json_of_record({}).dump())), {});
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
    entry.Messages = {{.Text = "Text", .Title = "Warning", .Sign = platform::Icon::kExclamation}, {.Text = "x"}};
    const TaskEntry back = entry_of(Json::parse(json_of_entry(entry).dump()));
    EXPECT_EQ(back.Distribution, 41U);
    expect_equal(back.Record, entry.Record);
    EXPECT_EQ(back.Report, entry.Report);
    ASSERT_EQ(back.Messages.size(), 2U);
    EXPECT_EQ(back.Messages[0].Text, "Text");
    EXPECT_EQ(back.Messages[0].Title, "Warning");
    EXPECT_EQ(back.Messages[0].Sign, platform::Icon::kExclamation);
    EXPECT_EQ(back.Messages[1].Sign, platform::Icon::kNone);
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
