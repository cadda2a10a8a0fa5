#include "analysis/animal_run.h"
#include "analysis/methods_paragraph.h"
#include "analysis/settings_text.h"
#include "analysis/summary_rows.h"

#include <algorithm>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace wxl::analysis {
namespace {

using testing::HasSubstr;

constexpr std::int64_t kDay = 86400;
constexpr std::int64_t kFirstOfMay2018 = 1525132800;

RunFrame frame_of(BandwidthMethod method) {
    RunFrame frame;
    frame.Wanted.Method = method;
    frame.Wanted.ScalingFactor = typed_number("1000000");
    frame.Wanted.Isopleths = true;
    frame.Wanted.Percentages = typed_numbers("95,50");
    frame.Values = {0.0};
    frame.Reference = {
        .Name = "WGS 84 / UTM zone 32N", .Wkt = "", .UnitName = "metre", .MetersPerUnit = 1.0, .IsGeographic = false};
    return frame;
}

AnimalRecord record_of(const std::string& id, std::int32_t fixes, double bandwidth, double area) {
    AnimalRecord record;
    record.NamingId = id;
    record.SampleSize = fixes;
    record.Grid.CellSize = 50.0;
    record.BandwidthMapUnits = bandwidth;
    record.Volume = 999876.5;
    record.Schoener = 1.5;
    record.SwihartSlade = 0.5;
    record.Minimized = true;
    record.Isopleths = {{95.0, 1.0, area}, {50.0, 2.0, area / 4.0}};
    return record;
}

/// From 1 May 2018, a fix every `interval` seconds; the quartiles of the intervals are a quarter less and more.
tracking_times::TimeFacts times(double days, double interval) {
    tracking_times::TimeFacts facts;
    facts.WithTime = 100;
    facts.First = kFirstOfMay2018;
    facts.Last = kFirstOfMay2018 + static_cast<std::int64_t>(days) * kDay;
    facts.Days = days;
    facts.DaysWithFix = static_cast<std::size_t>(days) + 1;
    facts.Intervals = tracking_times::Quartiles{0.75 * interval, interval, 1.25 * interval};
    return facts;
}

// Three animals: medians are those of the second; areas in square metres; 999876.5 of 1000000 is 99.98 %, cut.
TEST(MethodsParagraph, Tells_all_that_reports_of_home_ranges_are_asked_for) {
    RunFrame frame = frame_of(BandwidthMethod::kLscv);
    frame.Wanted.ConvexPercentages = typed_numbers("100");
    GroupedFixes animals;
    animals.WithoutId = 2;
    MethodsParagraph methods(frame, animals, "WXL Tools 9.9");
    AnimalRecord first = record_of("1", 100, 250.0, 4e6);
    first.Coincident = {3, 2};
    first.ConvexPolygons = {
        {.Percent = 100.0, .Status = comparison::PolygonStatus::kGood, .Area = 5e6, .Kept = 100, .Corners = {}}};
    first.Times = times(10, 600);
    methods.Add(first);
    AnimalRecord second = record_of("2", 300, 500.0, 16e6);
    second.Minimized = false;
    second.Schoener = 2.0;
    second.ConvexPolygons = first.ConvexPolygons;
    second.Times = times(30, 1800);
    second.Curve = comparison::AreaCurve{{}, comparison::Asymptote{250, true}, 0.0};
    methods.Add(second);
    AnimalRecord third = record_of("3", 1200, 750.0, 20e6);
    third.SwihartSlade = 2.25;
    third.ConvexPolygons = first.ConvexPolygons;
    third.Times = times(20, 86400.0 * 4);
    third.Curve = comparison::AreaCurve{{}, comparison::Asymptote{1190, false}, 0.0};
    methods.Add(third);
    EXPECT_EQ(
        methods.Text(),
        "We estimated the home ranges of 3 animals from 1600 fixes (median 300, range 100 to 1200 per animal). 2 "
        "points without an animal's name were left out. No fix was removed as a duplicate, and none to thin the data; "
        "3 fixes at the place of another of the same animal stayed. Tracking lasted from 2018-05-01 to 2018-05-31 "
        "(UTC), for median 20 days, range 10 to 30 days per animal, with a fix on median 21 days, range 11 to 31 "
        "days. The median interval between fixes was median 30 min, range 10 min to 4 days (interquartile range: "
        "median 15 min, range 5 min to 2 days). Coordinates were in WGS 84 / UTM zone 32N. Utilization distributions "
        "(Van Winkle 1975) were estimated with a fixed bivariate normal kernel (Worton 1989), on rasters with cells of "
        "50 m. The bandwidth was chosen by least squares cross-validation (Rudemo 1982, Bowman 1984) between 0.05 and "
        "2 times the reference bandwidth HREF (Silverman 1986): median 500 m, range 250 to 750 m. The score had no "
        "minimum in that range for 1 of 3 animals, for which HREF was used. Kernels ended at four bandwidths, and "
        "rasters held at least 99.98 % of each distribution. Areas are those within the isopleths that enclose 95 % "
        "and 50 % of the volume (95 %: median 16 km², range 4 to 20 km²; 50 %: median 4 km², range 1 to 5 km²). "
        "Minimum convex polygons (Mohr 1947) around 100 % of the fixes had areas of 100 %: 5 km². The area of the "
        "minimum convex polygon against the number of fixes, in the order of time (Odum and Kuenzler 1955), came to "
        "stay within 5 % of its last value, with a tenth of the fixes to follow, for 1 of 2 animals. Schoener's ratio "
        "(Schoener 1981) was below 1.6 or above 2.4 for 2 of 3 animals, and the index of Swihart and Slade (1985) "
        "above 0.6 for 1 of 3 animals, which is read as significant autocorrelation. Autocorrelation was not modelled. "
        "Ranges were not divided by season or otherwise, and their overlap was not computed in this run. Computed with "
        "WXL Tools 9.9.");
    std::string names;
    for (const std::string& work : methods.References()) names += work.substr(0, work.find(',')) + " ";
    EXPECT_EQ(names, "Bowman Crane Laver Mohr Odum Rudemo Schoener Silverman Swihart Van Winkle Worton ");
}

TEST(MethodsParagraph, One_point_without_a_name_was_left_out) {
    const RunFrame frame = frame_of(BandwidthMethod::kHref);
    GroupedFixes animals;
    animals.WithoutId = 1;
    MethodsParagraph methods(frame, animals, "WXL Tools 9.9");
    methods.Add(record_of("1", 30, 250.0, 4e6));
    EXPECT_THAT(methods.Text(), HasSubstr(" 1 point without an animal's name was left out. "));
}

TEST(MethodsParagraph, One_day_is_no_days) {
    MethodsParagraph methods(frame_of(BandwidthMethod::kHref), {}, "WXL Tools 9.9");
    AnimalRecord record = record_of("1", 100, 250.0, 4e6);
    record.Times = times(1, 600);
    record.Times.DaysWithFix = 1;
    methods.Add(record);
    EXPECT_THAT(methods.Text(), HasSubstr(" (UTC), for 1 day per animal, with a fix on 1 day. "));
}

TEST(MethodsParagraph, Cites_what_the_text_names) {
    for (const auto method : {BandwidthMethod::kLscv, BandwidthMethod::kBcv, BandwidthMethod::kHref,
                              BandwidthMethod::kManual, BandwidthMethod::kProportion, BandwidthMethod::kAdHoc}) {
        RunFrame frame = frame_of(method);
        frame.Values = is_list(method) ? std::vector<double>{0.5, 0.75} : std::vector<double>{0.0};
        MethodsParagraph methods(frame, {}, "WXL Tools 9.9");
        methods.Add(record_of("1", 30, 250.0, 4e6));
        const std::string text = methods.Text();
        for (const std::string& work : methods.References()) {
            const std::string author = work.substr(0, work.find(','));
            if (author == "Crane" || author == "Laver") continue;  // of the paragraph as such
            EXPECT_THAT(text, HasSubstr(author)) << method_name(method);
        }
        for (const char* author :
             {"Rudemo", "Bowman", "Sain", "Kie", "Silverman", "Worton", "Van Winkle", "Schoener", "Swihart", "Mohr"})
            EXPECT_EQ(text.find(author) != std::string::npos,
                      std::ranges::any_of(methods.References(), [&](const auto& w) { return w.starts_with(author); }))
                << author << " " << method_name(method);
    }
}

TEST(MethodsParagraph, Says_what_is_not_known) {
    RunFrame frame = frame_of(BandwidthMethod::kProportion);
    frame.Wanted.Isopleths = false;
    frame.Wanted.SelectedOnly = true;
    frame.Reference = {};
    frame.Values = {0.5, 0.75};
    MethodsParagraph methods(frame, {}, "WXL Tools 9.9");
    EXPECT_EQ(methods.Text(), "");
    AnimalRecord record = record_of("1", 1, 0.0, 0.0);
    record.Status = 5001;
    record.Schoener = record.SwihartSlade = std::nullopt;
    methods.Add(record);
    methods.Add(record);
    EXPECT_EQ(
        methods.Text(),
        "We estimated the home range of 1 animal from 1 fix. Fixes were selected by hand. No fix was removed as a "
        "duplicate, and none to thin the data. Tracking period and fix interval are not in the data. Coordinates were "
        "in a coordinate system that is not named. Utilization distributions (Van Winkle 1975) were estimated with a "
        "fixed bivariate normal kernel (Worton 1989). Bandwidths were 0.5 and 0.75 times the reference bandwidth HREF "
        "(Silverman 1986, Worton 1989): not known. 2 of 2 distributions could not be computed. No isopleths were "
        "drawn. Whether areas levelled off with the number of fixes was not examined in this run. The independence of "
        "fixes could not be tested, and autocorrelation was not modelled. Ranges were not divided by season or "
        "otherwise, and their overlap was not computed in this run. Computed with WXL Tools 9.9.");
}

}  // namespace
}  // namespace wxl::analysis
