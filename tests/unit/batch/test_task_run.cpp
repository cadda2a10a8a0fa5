#include "tests/unit/batch/batch_fixture.h"

#include <gmock/gmock.h>

namespace wxl::batch {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::UnorderedElementsAre;

TEST_F(BatchTest, A_task_writes_its_datasets_and_then_its_result) {
    const Plan plan = PlanOf(1);
    EXPECT_EQ(RunTask(plan, 1), TaskOutcome::kDone);
    EXPECT_THAT(Met, ElementsAre("K3_b1", "K3_b2", "K7_b1", "K7_b2"));
    for (const char* name : {"K3_b1", "K3_b2", "K7_b1", "K7_b2"}) EXPECT_TRUE(HasRaster(name)) << name;
    EXPECT_TRUE(Files.FileExists("/out/K7_b2_iso_poly.shp"));
    EXPECT_THAT(Files.List(Batch.Task(1)), ElementsAre("result.json", "started.json"));
    EXPECT_FALSE(HasReport()) << "the merge writes it";
    const TaskResult result = read_result(Files, Batch, plan, 1);
    EXPECT_EQ(result.Host, "here");
    EXPECT_EQ(result.Started, "11/20/2026 3:04:05 PM");
    ASSERT_EQ(result.Entries.size(), 4U);
    EXPECT_EQ(result.Entries[0].Record.SampleSize, 4);
    EXPECT_EQ(state_of(Files, Locks, Batch, 1).Stage, TaskStage::kDone);
}

TEST_F(BatchTest, A_task_that_is_done_is_left_alone_unless_it_is_wanted_again) {
    const Plan plan = PlanOf(1);
    RunTask(plan, 1);
    Met.clear();
    EXPECT_EQ(RunTask(plan, 1), TaskOutcome::kWasDone);
    EXPECT_TRUE(Met.empty());
    EXPECT_EQ(RunTask(plan, 1, true), TaskOutcome::kDone);
    EXPECT_EQ(Met.size(), 4U);
}

TEST_F(BatchTest, A_task_whose_dataset_is_gone_is_not_done) {
    const Plan plan = PlanOf(1);
    RunTask(plan, 1);
    Rasters.Delete("/out", "K3_b2");
    EXPECT_EQ(RunTask(plan, 1), TaskOutcome::kDone);
    EXPECT_TRUE(HasRaster("K3_b2"));
}

TEST_F(BatchTest, A_task_beyond_the_last_is_refused) {
    const Plan plan = PlanOf(2);
    for (const std::size_t task : {0U, 3U}) {
        const auto fault = fault_of([&] { RunTask(plan, task); });
        EXPECT_EQ(fault.Number, 9);
        EXPECT_EQ(fault.Description, "the batch has the tasks 1 to 2, not " + std::to_string(task));
    }
}

TEST_F(BatchTest, A_task_at_work_is_waited_for_two_seconds_and_then_named) {
    const Plan plan = PlanOf(1);
    Locks.Hold(Batch.Task(1));
    const auto before = Clock.Steady();
    const auto fault = fault_of([&] { RunTask(plan, 1); });
    EXPECT_EQ(fault.Number, 70);
    EXPECT_EQ(fault.Description, "task 1 runs already (process 4711 on elsewhere)");
    EXPECT_EQ(Clock.Steady() - before, std::chrono::seconds(2));
    EXPECT_FALSE(Files.FileExists(Batch.Started(1)));
}

TEST_F(BatchTest, A_task_is_refused_while_another_analysis_holds_the_folder) {
    const Plan plan = PlanOf(1);
    Locks.Hold("/out");
    const auto fault = fault_of([&] { RunTask(plan, 1); });
    EXPECT_EQ(fault.Number, 70);
    EXPECT_EQ(fault.Description, "another analysis is writing into the output folder (process 4711 on elsewhere)");
}

TEST_F(BatchTest, What_another_program_made_since_the_plan_is_not_touched) {
    const Plan plan = PlanOf(1);
    Disk->AddFile("/out/K3_b2_iso_poly.shp", "theirs");
    const auto fault = fault_of([&] { RunTask(plan, 1); });
    EXPECT_EQ(fault.Number, 58);
    EXPECT_EQ(fault.Description, "/out/K3_b2_iso_poly.shp was made by another program since the batch was planned");
    EXPECT_EQ(Disk->Bytes("/out/K3_b2_iso_poly.shp"), "theirs");
    const TaskState state = state_of(Files, Locks, Batch, 1);
    EXPECT_EQ(state.Stage, TaskStage::kFailed);
    EXPECT_EQ(state.Fault, fault.Description);
}

TEST_F(BatchTest, A_repeated_task_removes_what_it_had_left_and_nothing_else) {
    const Plan plan = PlanOf(1);
    Disk->AddFolder(Batch.Task(1));
    Disk->AddFile(Batch.Started(1), "{}");
    Disk->AddFolder("/out/.K3_b1.4711.part");
    for (const char* leftover : {"/out/.K3_b1.4711.part/hdr.adf", "/out/.K3_b2.tif.4711.part",
                                 "/out/.K7_b1_iso_poly.4711.part.shp", "/out/.K7_b1_iso_poly.12.4711.part.dbf"})
        Disk->AddFile(leftover, "half");
    const std::vector<std::string> theirs = {".K3.4711.part", ".K3_b1.part", ".K3_b1.12.4711.part", "notes.txt"};
    for (const std::string& name : theirs) Disk->AddFile("/out/" + name, "theirs");
    EXPECT_EQ(RunTask(plan, 1), TaskOutcome::kDone);
    for (const std::string& name : theirs) EXPECT_TRUE(Files.FileExists("/out/" + name)) << name;
    EXPECT_FALSE(Files.FolderExists("/out/.K3_b1.4711.part"));
    for (const char* leftover :
         {".K3_b2.tif.4711.part", ".K7_b1_iso_poly.4711.part.shp", ".K7_b1_iso_poly.12.4711.part.dbf"})
        EXPECT_THAT(Files.List("/out"), testing::Not(testing::Contains(leftover)));
}

TEST_F(BatchTest, A_task_whose_points_cannot_be_read_says_so_and_can_be_repeated) {
    const Plan plan = PlanOf(1);
    Disk->Fail(memory::DiskStep::kRead, 1, 57);
    const auto fault = fault_of([&] { RunTask(plan, 1); });
    EXPECT_EQ(fault.Number, 57);
    EXPECT_THAT(fault.Description, HasSubstr("The batch's points /out/wxl_batch/points.bin cannot be used"));
    EXPECT_THAT(Files.List(Batch.Task(1)), UnorderedElementsAre("failed.json", "started.json"));
    EXPECT_EQ(RunTask(plan, 1), TaskOutcome::kDone);
    EXPECT_THAT(Files.List(Batch.Task(1)), UnorderedElementsAre("result.json", "started.json"));
}

TEST_F(BatchTest, Points_of_another_plan_are_refused) {
    const Plan plan = PlanOf(1);
    write_point_store(Files, Batch.Points(), {});
    const auto fault = fault_of([&] { RunTask(plan, 1); });
    EXPECT_EQ(fault.Number, 57);
    EXPECT_EQ(fault.Description, "The batch's points do not belong to its plan. Plan the batch anew with --overwrite.");
}

}  // namespace
}  // namespace wxl::batch
