#include "batch/json_codec.h"
#include "batch/range_plan.h"
#include "platform/runtime_error.h"
#include "tests/unit/batch/equal_leaves.h"
#include "tests/unit/kde_tool/run_fixture.h"

#include <functional>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <string>

namespace wxl::batch {
namespace {

using testing::HasSubstr;
using testing::IsEmpty;

struct RangePlanTest : kde_tool::RunTest {
    const BatchFiles Batch{"/out"};
    akde::RangeSettings Wanted;
    akde::TimedAnimals Animals;

    RangePlanTest() {
        Disk->AddFolder("/data");
        Disk->AddFile("/data/wolves.csv", "abc");
        Wanted.Folder = "/out";
        Wanted.Fields = {"animal", "Date,Time1"};
        Wanted.Fit.Given = akde::parse_given_model("OUF:isotropic:86400,3600");
        Wanted.Prefix = "K";
        Wanted.Buffer = 0.1 + 0.2;
        Wanted.Extent = akde::RangeExtent::kFull;
        Wanted.Reference = {1.5, -2.5, 30.0, 12, 7};
        Wanted.Percentages = {95.0, 12.5};
        Wanted.SourceOptions = {"--every", "4h"};
        Wanted.GeoPackage = true;
        Wanted.AnimalsPerSubfolder = 1;
        Animals.Reference = {"UTM", "PROJCS[...]", "metre", 1.0, false};
        akde::TimedAnimal wolf;
        wolf.Id = std::string("wolf");
        wolf.NamingId = "1";
        wolf.Fixes = {{1.25, 2.5}, {3.0, 4.0}, {7.0, 1.0}};
        // Nanoseconds are beyond the whole numbers that a double has.
        wolf.Times = {{1600000000000000001, 0.0}, {1600000000000000002, 0.25}, {-5, 0.5}};
        wolf.WithoutTime = 2;
        wolf.FirstUnreadable = "noon";
        Animals.Animals = {wolf};
        akde::spread_over_subfolders(Animals, 1);
    }

    RangePlan Planned() { return plan_ranges(Services, Wanted, Animals, {"wxl 1", "/data/wolves.csv", 2}); }

    std::string FaultAfter(const std::function<void(Json&)>& change) {
        Planned();
        Json json;
        read_json(Files, Batch.Plan(), {}, [&](const Json& read) { json = read; });
        change(json);
        write_json(Files, Batch.Plan(), json);
        try {
            read_range_plan(Files, "/out");
        } catch (const platform::RuntimeError& fault) {
            return fault.Description;
        }
        return {};
    }
};

TEST_F(RangePlanTest, Settings_animals_and_tasks_come_back) {
    const RangePlan made = Planned();
    EXPECT_TRUE(is_range_plan(Files, "/out"));
    const RangePlan read = read_range_plan(Files, "/out");
    EXPECT_EQ(read.Id, made.Id);
    EXPECT_EQ(read.Folder, "/out");
    EXPECT_EQ(read.Input.at(0).Path, "/data/wolves.csv");
    EXPECT_EQ(read.Tasks.size(), 1U);
    EXPECT_EQ(read.Tasks.at(0).Work, TaskWork{0});
    EXPECT_EQ(read.Wanted.Fields.Time, "Date,Time1");
    EXPECT_EQ(read.Wanted.Fit.Given->Model.Scales.Velocity, 3600.0);
    EXPECT_EQ(read.Wanted.Fit.Given->Shape, movement_models::RangeShape::kIsotropic);
    EXPECT_EQ(*read.Wanted.Buffer, 0.1 + 0.2);
    EXPECT_FALSE(read.Wanted.CellSize);
    EXPECT_EQ(read.Wanted.Reference.Columns, 12);
    EXPECT_EQ(read.Wanted.Percentages, Wanted.Percentages);
    EXPECT_EQ(read.Wanted.SourceOptions, Wanted.SourceOptions);
    EXPECT_TRUE(read.Wanted.GeoPackage);
    EXPECT_FALSE(read.Wanted.Html);
    EXPECT_EQ(read.Animals.Reference.Name, "UTM");
    EXPECT_EQ(read.Animals.Animals.at(0).Subfolder, "animals_1-1");
    EXPECT_EQ(read.Animals.Animals.at(0).FirstUnreadable, "noon");
    EXPECT_TRUE(read.Animals.Animals.at(0).Fixes.empty());
}

TEST_F(RangePlanTest, Every_member_comes_back) {
    Wanted = {.Fields = {.Id = "animal", .Time = "Date,Time1"},
              .Fit = {.Method = movement_models::Estimation::kMl,
                      .Given = akde::parse_given_model("OUF:anisotropic:86400,3600")},
              .Folder = "/out",
              .Prefix = "K",
              .CellSize = 0.1 + 0.2,
              .Scaling = 1000.0,
              .Extent = akde::RangeExtent::kFull,
              .Buffer = 2.5,
              .Reference = {1.5, -2.5, 30.0, 12, 7},
              .ReferenceName = "dem",
              .RasterFormat = "GTiff",
              .Percentages = {90.0, 12.5},
              .Optimal = true,
              .Lines = true,
              .GeoPackage = true,
              .Html = true,
              .AnimalsPerSubfolder = 1,
              .Overwrite = true,
              .LayerName = "wolves",
              .Source = "/data/wolves.csv",
              .SourceOptions = {"--every 4h"},
              .Where = "sex = 'f'",
              .SelectedOnly = true};
    Animals.WithoutId = 12;
    Animals.NumberTimes = true;
    Animals.Reference = {"UTM", "PROJCS[...]", "foot", 0.3048, true};
    Planned();
    Json json;
    read_json(Files, Batch.Plan(), {}, [&](const Json& read) { json = read; });
    EXPECT_THAT(equal_leaves(json.at("settings"), Json::parse(R"({"id_field": "", "time_field": "",
        "fit": {"method": 2, "given": [0, 0, 0.0, 0.0]}, "prefix": "", "cell_size": null, "scaling": 1000000.0,
        "extent": 0, "buffer": null, "reference": {"origin_x": 0.0, "origin_y": 0.0, "cell_size": 0.0, "columns": 0,
        "rows": 0}, "reference_name": "", "raster_format": "GRID", "percentages": [95.0, 50.0], "optimal": false,
        "lines": false, "geopackage": false, "html": false, "animals_per_subfolder": 0, "overwrite": false,
        "layer": "", "source": "", "source_options": [""], "where": "", "selected_only": false})")),
                IsEmpty());

    const RangePlan read = read_range_plan(Files, "/out");
    EXPECT_TRUE(read.Wanted == Wanted);
    const akde::TimedAnimals all = TimedStore(Files, read).ReadAll();
    EXPECT_TRUE(all == Animals);
}

TEST_F(RangePlanTest, Whether_times_are_numbers_and_how_many_points_lack_an_animal_come_back) {
    for (const bool numbers : {false, true}) {
        Animals.NumberTimes = numbers;
        Animals.WithoutId = 12;
        Planned();
        const RangePlan read = read_range_plan(Files, "/out");
        EXPECT_EQ(read.Animals.NumberTimes, numbers);
        EXPECT_EQ(read.Animals.WithoutId, 12);
        const akde::TimedAnimals all = TimedStore(Files, read).ReadAll();
        EXPECT_EQ(all.NumberTimes, numbers);
        EXPECT_EQ(all.WithoutId, 12);
        EXPECT_EQ(all.Reference.Name, "UTM");
    }
}

TEST_F(RangePlanTest, Fixes_and_times_come_back_to_the_last_bit) {
    const RangePlan plan = Planned();
    const akde::TimedAnimal wolf = TimedStore(Files, plan).Read(0);
    ASSERT_EQ(wolf.Fixes.size(), 3U);
    EXPECT_EQ(wolf.Fixes[0].X, 1.25);
    EXPECT_EQ(wolf.Times.at(0).Seconds, 1600000000000000001);
    EXPECT_EQ(wolf.Times.at(1).Fraction, 0.25);
    EXPECT_EQ(wolf.Times.at(2).Seconds, -5);
    EXPECT_EQ(wolf.WithoutTime, 2U);
    EXPECT_EQ(TimedStore(Files, plan).ReadAll().Animals.size(), 1U);
}

TEST_F(RangePlanTest, What_no_run_could_have_planned_is_refused) {
    EXPECT_THAT(FaultAfter([](Json& json) { json["estimator"] = "kde"; }), HasSubstr("it plans other estimates"));
    EXPECT_THAT(FaultAfter([](Json& json) { json["format"] = 3; }), HasSubstr("another version of wxl wrote it"));
    EXPECT_NE(FaultAfter([](Json& json) { json["animals"]["list"][0][1] = "../1"; }), "");
    EXPECT_NE(FaultAfter([](Json& json) { json["animals"]["list"][0][4] = "/etc"; }), "");
    EXPECT_NE(FaultAfter([](Json& json) { json["settings"]["prefix"] = "a/b"; }), "");
    EXPECT_NE(FaultAfter([](Json& json) { json["settings"]["percentages"] = {100.0}; }), "");
    EXPECT_NE(FaultAfter([](Json& json) { json["settings"]["scaling"] = 0.0; }), "");
    EXPECT_NE(FaultAfter([](Json& json) { json["settings"]["reference"]["cell_size"] = 0.0; }), "");
    EXPECT_NE(FaultAfter([](Json& json) { json["tasks"] = Json::array(); }), "");
    Planned();
    Json whole;
    read_json(Files, Batch.Plan(), {}, [&](const Json& read) { whole = read; });
    for (const auto& [key, value] : whole.items()) {
        const std::string name = key;
        EXPECT_THAT(FaultAfter([&](Json& json) { json.erase(name); }),
                    HasSubstr("Plan the batch anew with --overwrite."))
            << name;
    }
    for (const auto& [key, value] : whole["settings"].items()) {
        const std::string name = key;
        EXPECT_NE(FaultAfter([&](Json& json) { json["settings"].erase(name); }), "") << name;
    }
}

TEST_F(RangePlanTest, The_plan_of_kernel_densities_is_no_plan_of_ranges_nor_the_other_way_round) {
    Planned();
    EXPECT_THROW(read_plan(Files, "/out"), platform::RuntimeError);
}

TEST_F(RangePlanTest, Stores_of_another_batch_are_refused) {
    const RangePlan plan = Planned();
    Animals.Animals.push_back(Animals.Animals.front());
    Planned();
    EXPECT_THROW(TimedStore(Files, plan), platform::RuntimeError);
}

}  // namespace
}  // namespace wxl::batch
