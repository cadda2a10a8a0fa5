#include "adapters/memory/memory_file_system.h"
#include "batch/json_codec.h"
#include "batch/plan.h"
#include "batch/planner.h"
#include "batch/task_state.h"
#include "platform/runtime_error.h"
#include "tests/unit/batch/equal_leaves.h"

#include <filesystem>
#include <functional>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace wxl::batch {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;

struct NamedRaster final : platform::IRasterLayer {
    std::string Name() const override { return "dem"; }
    platform::RasterGeometry Geometry() const override { return {1.5, -2.5, 30.0, 12, 7}; }
    bool LiesIn(const platform::SpatialReference&) const override { return true; }
};

struct PlanTest : testing::Test {
    memory::MemoryFileSystem Files;
    const std::filesystem::path Folder = "/out";
    const BatchFiles Batch{Folder};
    Plan Made;

    PlanTest() {
        Files.Disk().AddFolder(Batch.Folder);
        Made.Id = "0123456789abcdef";
        Made.Program = "wxl 1";
        Made.Planned = "11/20/2026 3:04:05 PM";
        Made.Input = {{"/data/a.shp", 100, 1700000000, "e3b0"}};
        Made.Frame.Wanted.LayerName = "a";
        Made.Frame.Wanted.Method = analysis::BandwidthMethod::kProportion;
        Made.Frame.Wanted.Mode = analysis::ExtentMode::kReference;
        Made.Frame.Wanted.Prefix = "K";
        Made.Frame.Wanted.Isopleths = true;
        Made.Frame.Wanted.Polygons = true;
        Made.Frame.Wanted.Proportions = {.Text = "0.5, 1", .Values = {0.5, 1.0}};
        Made.Frame.Wanted.Percentages = {.Text = "95,50", .Values = {95.0, 50.0}};
        Made.Frame.Wanted.Buffer = {.Text = "117", .Value = 116.55};
        Made.Frame.Wanted.ScalingFactor = {.Text = "1000000", .Value = 1e6};
        Made.Frame.Wanted.Cells = {.Text = "2.5", .Typed = 2.5, .Side = 2.0};
        Made.Frame.Wanted.KernelReach = {analysis::Reach::Kind::kBandwidths, "7", 7.0};
        Made.Frame.Values = {0.5, 1.0};
        Made.Frame.ReferenceRaster = std::make_shared<NamedRaster>();
        Made.Frame.Reference = {"UTM", "PROJCS[...]", "metre", 1.0, false};
        Made.Animals = {{std::int64_t{3}, "3", "", 5}, {std::string("x"), "7", "animals_2-2"}};
        Made.Tasks = {{{0, 2, 3}, 1.5, 2.5}, {{1}, 9.0, 1.0}};
        Made.ReportHead = {"WXL KERNEL DENSITY ANALYSIS", ""};
    }

    Json Written(const Plan& plan) {
        write_plan(Files, Batch, plan);
        Json json;
        read_json(Files, Batch.Plan(), {}, [&](const Json& read) { json = read; });
        return json;
    }

    /// The plan as it is read after `change` was made to its JSON.
    std::string FaultAfter(const std::function<void(Json&)>& change) {
        write_plan(Files, Batch, Made);
        Json json;
        read_json(Files, Batch.Plan(), {}, [&](const Json& read) { json = read; });
        change(json);
        write_json(Files, Batch.Plan(), json);
        try {
            read_plan(Files, Folder);
            return {};
        } catch (const platform::RuntimeError& fault) {
            return fault.Description;
        }
    }
};

TEST_F(PlanTest, Comes_back_as_it_was_written) {
    Made.Animals[1].Error = analysis::PositionError{.Metres = 0.1 + 0.2, .Field = "hacc"};
    write_plan(Files, Batch, Made);
    const Plan plan = read_plan(Files, Folder);
    EXPECT_EQ(plan.Id, Made.Id);
    EXPECT_EQ(plan.Program, Made.Program);
    EXPECT_EQ(plan.Planned, Made.Planned);
    ASSERT_EQ(plan.Input.size(), 1U);
    EXPECT_EQ(plan.Input[0].Path, "/data/a.shp");
    EXPECT_EQ(plan.Input[0].Bytes, 100U);
    EXPECT_EQ(plan.Frame.Wanted, Made.Frame.Wanted);
    EXPECT_EQ(plan.Frame.Values, Made.Frame.Values);
    EXPECT_TRUE(plan.Frame.LayerExtent.IsEmpty());
    EXPECT_EQ(plan.Frame.Reference, Made.Frame.Reference);
    EXPECT_EQ(plan.Frame.ReferenceRaster->Geometry(), Made.Frame.ReferenceRaster->Geometry());
    EXPECT_EQ(plan.Frame.Folder, Folder);
    ASSERT_EQ(plan.Animals.size(), 2U);
    EXPECT_EQ(plan.Animals[0].Id, platform::FieldValue(std::int64_t{3}));
    EXPECT_EQ(plan.Animals[1].Subfolder, "animals_2-2");
    EXPECT_EQ(plan.Animals[0].StepsBack, 5);
    EXPECT_EQ(plan.Animals[0].Error, std::nullopt);
    EXPECT_EQ(plan.Animals[1].Error, Made.Animals[1].Error);
    ASSERT_EQ(plan.Tasks.size(), 2U);
    EXPECT_THAT(plan.Tasks[0].Work, ElementsAre(0U, 2U, 3U));
    EXPECT_EQ(plan.Tasks[1].Seconds, 9.0);
    EXPECT_EQ(plan.ReportHead, Made.ReportHead);
    EXPECT_THAT(datasets_of(plan, 3),
                ElementsAre(analysis::Dataset{analysis::DatasetKind::kRaster, "K7_b2"},
                            analysis::Dataset{analysis::DatasetKind::kPolygons, "K7_b2_iso_poly"}));
}

TEST_F(PlanTest, Every_member_comes_back) {
    using Kind = analysis::Reach::Kind;
    Plan full = Made;
    full.Frame.Wanted = {.LayerName = "a",
                         .Where = "sex = 'f'",
                         .IdField = "animal",
                         .SelectedOnly = true,
                         .Rescale = true,
                         .FixedKernel = false,
                         .Method = analysis::BandwidthMethod::kManual,
                         .Bandwidths = {.Text = "100, 0.30", .Values = {100.0, 0.1 + 0.2}},
                         .Proportions = {.Text = "0.5", .Values = {0.5}},
                         .AdHocParts = 2,
                         .KernelReach = {.How = Kind::kBandwidths, .Text = "7", .Bandwidths = 7.0},
                         .OutputFolder = "out",
                         .Prefix = "K",
                         .Cells = {.Text = "2.5", .Typed = 2.5, .Side = 2.0},
                         .ScalingFactor = {.Text = "1000", .Value = 1e3},
                         .Verbose = true,
                         .Mode = analysis::ExtentMode::kReference,
                         .Buffer = {.Text = "117", .Value = 116.55},
                         .ReferenceName = "dem",
                         .Isopleths = true,
                         .Percentages = {.Text = "95,50", .Values = {95.0, 50.0}},
                         .Lines = true,
                         .Polygons = true,
                         .Donuts = true,
                         .ConvexPercentages = {.Text = "100", .Values = {100.0}},
                         .Silent = true,
                         .Html = true,
                         .RasterFormat = "GTiff",
                         .AnimalsPerSubfolder = 3,
                         .GeoPackage = true,
                         .AsksSearchesOnly = true};
    full.Frame.Source = "/data/a.csv";
    full.Frame.SourceOptions = {"--every 4h"};
    full.Frame.TextIds = true;
    full.Frame.Values = {100.0, 0.1 + 0.2};
    full.Frame.LayerExtent = {.XMin = -0.1, .YMin = 0.2, .XMax = 3.0, .YMax = 4e6};
    full.Frame.Reference = {"WGS 84", "GEOGCS[...]", "degree", 0.3048, true};
    full.Animals = {{.Id = std::int64_t{3},
                     .NamingId = "3",
                     .Subfolder = "animals_1-2",
                     .StepsBack = 5,
                     .Times = {.WithTime = 3,
                               .WithoutTime = 1,
                               .First = 1525878000,
                               .Last = 1525881600,
                               .Days = 1.0 / 24.0,
                               .DaysWithFix = 1,
                               .EqualTimes = 2,
                               .Intervals = tracking_times::Quartiles{0.5, 1800.0, 1800.25}},
                     .Error = analysis::PositionError{.Metres = 0.1 + 0.2, .Field = "lc", .OfArgosClasses = true}}};
    full.Tasks = {{.Work = {0, 1}, .Seconds = 1.5, .Megabytes = 2.5}};
    full.NullGeometry = true;
    full.WithoutId = 12;
    full.ReportHead = {"WXL KERNEL DENSITY ANALYSIS"};
    full.ToldWhole = true;

    Plan fresh;
    fresh.Input = {{}};
    fresh.Frame.Values = {0.0, 0.0};
    fresh.Frame.SourceOptions = {""};
    fresh.Frame.LayerExtent = {};
    fresh.Animals = {{}};
    fresh.Animals[0].Times.Intervals = tracking_times::Quartiles();
    fresh.Animals[0].Error = analysis::PositionError();
    fresh.Tasks = {{.Work = {}, .Seconds = 0.0, .Megabytes = 0.0}};
    fresh.ReportHead = {""};
    EXPECT_THAT(equal_leaves(Written(full), Written(fresh)), ElementsAre("/format", "/estimator"));

    Written(full);
    const Plan read = read_plan(Files, Folder);
    full.Folder = full.Frame.Folder = Folder;
    EXPECT_EQ(static_cast<const PlanHead&>(read), static_cast<const PlanHead&>(full));
    EXPECT_EQ(read.Frame.Wanted, full.Frame.Wanted);
    EXPECT_EQ(read.Frame.Source, full.Frame.Source);
    EXPECT_EQ(read.Frame.SourceOptions, full.Frame.SourceOptions);
    EXPECT_EQ(read.Frame.TextIds, full.Frame.TextIds);
    EXPECT_EQ(read.Frame.Values, full.Frame.Values);
    EXPECT_EQ(read.Frame.LayerExtent, full.Frame.LayerExtent);
    EXPECT_EQ(read.Frame.Reference, full.Frame.Reference);
    EXPECT_EQ(read.Frame.ReferenceRaster->Name(), "dem");
    EXPECT_EQ(read.Frame.ReferenceRaster->Geometry(), full.Frame.ReferenceRaster->Geometry());
    EXPECT_EQ(read.Frame.Folder, Folder);
    EXPECT_EQ(read.Animals, full.Animals);
    EXPECT_EQ(read.NullGeometry, full.NullGeometry);
    EXPECT_EQ(read.WithoutId, full.WithoutId);
    EXPECT_EQ(read.ReportHead, full.ReportHead);
    EXPECT_EQ(read.ToldWhole, full.ToldWhole);
}

TEST_F(PlanTest, The_result_of_a_task_comes_back_with_its_head) {
    Files.Disk().AddFolder(Batch.Task(2));
    TaskResult result;
    static_cast<TaskHead&>(result) = {.Batch = Made.Id,
                                      .Started = "11/20/2026 3:04:05 PM",
                                      .Finished = "11/20/2026 3:04:06 PM",
                                      .Seconds = 0.1 + 0.2,
                                      .Host = "node \xFF"};
    result.Entries.resize(1);
    result.Entries[0].Distribution = 1;
    write_result(Files, Batch, 2, result);
    const TaskResult read = read_result(Files, Batch, Made, 2);
    EXPECT_EQ(static_cast<const TaskHead&>(read), static_cast<const TaskHead&>(result));
    EXPECT_EQ(read.Entries.size(), 1U);
}

TEST_F(PlanTest, A_folder_without_one_is_told_how_to_make_one) {
    try {
        read_plan(Files, "/elsewhere");
        FAIL();
    } catch (const platform::RuntimeError& fault) {
        EXPECT_EQ(fault.Number, 53);
        EXPECT_EQ(fault.Description, std::string("/elsewhere holds no planned batch: plan one with wxl batch plan"));
    }
}

TEST_F(PlanTest, Work_in_no_task_in_two_or_beyond_the_last_is_refused) {
    EXPECT_THAT(FaultAfter([](Json& json) { json["tasks"].erase(1); }), HasSubstr("work that is in no task"));
    EXPECT_THAT(FaultAfter([](Json& json) { json["tasks"].push_back(json["tasks"][0]); }),
                HasSubstr("work that is planned twice"));
    for (const char* work :
         {"[[0,4]]", "[[-1,3]]", "[[3,0]]", "[[0,1],[1,3]]", "[[0,1e9]]", "[[0]]", "[0]", "[[0,9223372036854775807]]"})
        EXPECT_NE(FaultAfter([&](Json& json) { json["tasks"][0]["distributions"] = Json::parse(work); }), "") << work;
}

TEST_F(PlanTest, Names_that_leave_the_folder_are_refused) {
    EXPECT_NE(FaultAfter([](Json& json) { json["animals"][0][1] = "../../3"; }), "");
    EXPECT_NE(FaultAfter([](Json& json) { json["animals"][0][2] = "../out"; }), "");
    EXPECT_NE(FaultAfter([](Json& json) { json["animals"][0][2] = "/etc"; }), "");
    EXPECT_NE(FaultAfter([](Json& json) { json["frame"]["settings"]["prefix"] = "a/b"; }), "");
}

TEST_F(PlanTest, Another_format_and_missing_or_wrong_members_are_refused) {
    EXPECT_THAT(FaultAfter([](Json& json) { json["format"] = 1; }), HasSubstr("another version of wxl wrote it"));
    write_plan(Files, Batch, Made);
    Json whole;
    read_json(Files, Batch.Plan(), {}, [&](const Json& read) { whole = read; });
    for (const auto& [key, value] : whole.items()) {
        const std::string name = key;
        EXPECT_THAT(FaultAfter([&](Json& json) { json.erase(name); }),
                    HasSubstr("Plan the batch anew with --overwrite."))
            << name;
        EXPECT_NE(FaultAfter([&](Json& json) { json[name] = Json::object({{"x", 1}}); }), "") << name;
    }
    EXPECT_NE(FaultAfter([](Json& json) { json["frame"]["values"] = Json::array(); }), "");
    EXPECT_NE(FaultAfter([](Json& json) { json["frame"]["reference_raster"] = nullptr; }), "");
    EXPECT_NE(FaultAfter([](Json& json) { json["frame"]["settings"]["extent"] = 3; }), "");
    EXPECT_NE(FaultAfter([](Json& json) { json["frame"]["layer_extent"] = Json::array({1, 2}); }), "");
}

TEST_F(PlanTest, Numbers_that_no_run_could_work_with_are_refused) {
    for (const Json& number :
         {Json("7FF0000000000000"), Json("FFF0000000000000"), Json("7FF8000000000000"), Json(1e300)}) {
        for (const char* member : {"scaling", "buffer"})
            EXPECT_THAT(FaultAfter([&](Json& json) { json["frame"]["settings"][member]["value"] = number; }),
                        HasSubstr("which cannot be"))
                << member << number;
        for (const char* member : {"proportions", "percentages"})
            EXPECT_THAT(
                FaultAfter([&](Json& json) { json["frame"]["settings"][member]["values"] = Json::array({number}); }),
                HasSubstr("which cannot be"))
                << member << number;
        for (const char* member : {"seconds", "megabytes"})
            EXPECT_THAT(FaultAfter([&](Json& json) { json["tasks"][0][member] = number; }),
                        HasSubstr("which cannot be"))
                << member << number;
        EXPECT_NE(FaultAfter([&](Json& json) { json["frame"]["values"][0] = number; }), "") << number;
    }
    EXPECT_THAT(FaultAfter([](Json& json) { json["frame"]["settings"]["cell_size"] = "1e300"; }),
                HasSubstr("which cannot be"));
    EXPECT_NE(FaultAfter([](Json& json) { json["frame"]["settings"]["scaling"]["value"] = nullptr; }), "");
    EXPECT_NE(FaultAfter([](Json& json) { json["frame"]["settings"]["reach"] = "far"; }), "");
    EXPECT_NE(FaultAfter([](Json& json) {
                  json["frame"]["settings"]["extent"] = 0;
                  json["frame"]["settings"]["buffer"]["value"] = nullptr;
                  json["frame"]["layer_extent"] = json_of_doubles({0.0, 0.0, 1.0, 1.0});
              }),
              "");
    EXPECT_THAT(FaultAfter([](Json& json) { json["tasks"][0]["seconds"] = -1.0; }),
                HasSubstr("the number -1, which cannot be"));
}

TEST_F(PlanTest, A_plan_cut_short_anywhere_is_refused) {
    write_plan(Files, Batch, Made);
    const std::string whole = Files.ReadFile(Batch.Plan(), 1 << 20);
    for (std::size_t length = 0; length + 2 < whole.size(); length += 7) {
        Files.Disk().AddFile(Batch.Plan(), whole.substr(0, length));
        EXPECT_THROW(read_plan(Files, Folder), platform::RuntimeError) << length;
    }
}

TEST_F(PlanTest, Results_of_another_plan_or_of_other_work_are_refused) {
    Files.Disk().AddFolder(Batch.Task(2));
    TaskResult result;
    result.Batch = Made.Id;
    result.Entries.resize(1);
    result.Entries[0].Distribution = 1;
    write_result(Files, Batch, 2, result);
    EXPECT_EQ(read_result(Files, Batch, Made, 2).Entries.size(), 1U);
    result.Entries[0].Distribution = 2;
    write_result(Files, Batch, 2, result);
    EXPECT_THROW(read_result(Files, Batch, Made, 2), platform::RuntimeError);
    result.Entries[0].Distribution = 1;
    result.Batch = "another";
    write_result(Files, Batch, 2, result);
    try {
        read_result(Files, Batch, Made, 2);
        FAIL();
    } catch (const platform::RuntimeError& fault) {
        EXPECT_THAT(fault.Description, HasSubstr("it belongs to another plan). Run the task again: wxl batch run DIR "
                                                 "--task 2 --again."));
    }
}

TEST(NumberRanges, Are_written_as_a_job_array_takes_them) {
    EXPECT_EQ(number_ranges({}), "");
    EXPECT_EQ(number_ranges({4}), "4");
    EXPECT_EQ(number_ranges({1, 2, 3, 7, 9, 10}), "1-3,7,9-10");
}

}  // namespace
}  // namespace wxl::batch
