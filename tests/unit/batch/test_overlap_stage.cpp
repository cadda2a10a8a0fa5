#include "batch/overlap_stage.h"
#include "platform/runtime_error.h"
#include "tests/unit/batch/equal_leaves.h"
#include "tests/unit/kde_tool/run_fixture.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <optional>
#include <string>

namespace wxl::batch {
namespace {

using testing::IsEmpty;

struct OverlapStageTest : kde_tool::RunTest {
    const BatchFiles Stage = overlap_files("/out");

    Json Written(const OverlapPlan& plan) {
        write_plan(Services, Stage, plan);
        Json json;
        read_json(Files, Stage.Plan(), {}, [&](const Json& read) { json = read; });
        return json;
    }
};

OverlapPlan full_plan() {
    return {.Program = "1",
            .Planned = "11/20/2026 3:04:05 PM",
            .Percents = {95.0, 0.1 + 0.2},
            .Conditional = true,
            .Normalise = true,
            .Scaling = 1e6,
            .TypedPercents = "95,0.30",
            .TypedScaling = "1e6",
            .Grid = {.OriginX = -0.5, .OriginY = 6e6, .CellSize = 20.0, .Columns = 33, .Rows = 44},
            .Animals = {"wolf \xFF", "bear"},
            .Volumes = {1e6, 1.0 / 3.0},
            .Tasks = {{.First = 1, .End = 4}}};
}

TEST_F(OverlapStageTest, Every_member_of_a_plan_comes_back) {
    OverlapPlan fresh;
    fresh.Percents = {0.0, 0.0};
    fresh.Animals = {"", ""};
    fresh.Volumes = {0.0, 0.0};
    fresh.Tasks = {{}};
    EXPECT_THAT(equal_leaves(Written(full_plan()), Written(fresh)), IsEmpty());
    Written(full_plan());
    EXPECT_TRUE(read_overlap_plan(Files, Stage, "1") == full_plan());
}

TEST_F(OverlapStageTest, A_wish_comes_back) {
    const OverlapWish wish{.Tasks = 7, .Words = {"--percent", "95,50"}};
    write_wish(Services, Stage, wish);
    EXPECT_EQ(read_wish(Files, Stage), std::optional(wish));
}

}  // namespace
}  // namespace wxl::batch
