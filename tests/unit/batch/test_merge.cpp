#include "tests/unit/batch/batch_fixture.h"

#include <gmock/gmock.h>

namespace wxl::batch {
namespace {

using analysis::RunOutcome;
using testing::ElementsAre;

/// A map, a disk and a form of its own.
struct Another final : BatchTest {
    void TestBody() override {}
};

TEST_F(BatchTest, Merged_tasks_leave_what_a_run_in_one_piece_leaves) {
    Run();
    for (const std::size_t tasks : {1U, 2U, 4U}) {
        Another split;
        const Plan plan = split.PlanOf(tasks);
        for (std::size_t task = plan.Tasks.size(); task > 0; --task) split.RunTask(plan, task);
        split.MergeAll(plan);
        EXPECT_EQ(split.Report(), Report());
        ASSERT_EQ(split.Keeper.Records.size(), 4U);
        for (std::size_t i = 0; i < 4; ++i) {
            EXPECT_EQ(split.Keeper.Records[i].RasterName, Keeper.Records[i].RasterName);
            EXPECT_EQ(split.Keeper.Records[i].Volume, Keeper.Records[i].Volume);
            EXPECT_EQ(split.Keeper.Records[i].Files, Keeper.Records[i].Files);
        }
        EXPECT_THAT(split.Keeper.Ended, ElementsAre(RunOutcome::kComplete));
        EXPECT_TRUE(is_merged(split.Files, split.Batch));
    }
}

TEST_F(BatchTest, A_batch_is_open_until_it_is_merged) {
    const Plan plan = PlanOf(4);
    ASSERT_EQ(plan.Tasks.size(), 3U);
    RunTask(plan, 2);
    EXPECT_EQ(fault_of([&] { MergeAll(plan); }).Number, 76) << "the first task was never begun";
    EXPECT_TRUE(has_open_batch(Files, "/out"));
    RunAll(plan);
    EXPECT_TRUE(has_open_batch(Files, "/out"));
    MergeAll(plan);
    EXPECT_FALSE(has_open_batch(Files, "/out"));
}

TEST_F(BatchTest, A_merge_is_refused_while_the_folder_is_held) {
    const Plan plan = PlanOf(1);
    RunAll(plan);
    Locks.Hold("/out");
    const auto fault = fault_of([&] { MergeAll(plan); });
    EXPECT_EQ(fault.Number, 70);
    EXPECT_EQ(fault.Description,
              "a task of this batch or another analysis is writing into the output folder (process 4711 on elsewhere): "
              "wait until it has finished");
    EXPECT_FALSE(HasReport());
}

TEST_F(BatchTest, A_merge_goes_on_behind_the_report_of_earlier_runs) {
    const Plan plan = PlanOf(2);
    RunAll(plan);
    MergeAll(plan);
    const std::string alone = Report();
    remove_batch(Services, "/out");
    Disk->AddFile("/out/WXL_KDE_ANALYSIS.txt", "earlier\r\n");
    for (const char* name : {"K3_b1", "K3_b2", "K7_b1", "K7_b2"}) {
        Rasters.Delete("/out", name);
        Shapefiles.Delete("/out", std::string(name) + "_iso_poly");
    }
    const Plan next = PlanOf(2);
    RunAll(next);
    MergeAll(next);
    const std::string line(60, '=');
    EXPECT_EQ(Report(), "earlier\r\n\r\n\r\n\r\n" + line + "\r\n\r\n\r\n\r\n" + alone);
}

TEST_F(BatchTest, A_merge_that_fails_at_its_end_may_be_repeated_and_leaves_the_same_report) {
    const Plan plan = PlanOf(2);
    RunAll(plan);
    Disk->AddFile("/out/WXL_KDE_ANALYSIS.txt", "earlier\r\n");
    // The first renaming is that of the mark, the second that of the report.
    Disk->Fail(memory::DiskStep::kRename, 2, 61);
    EXPECT_EQ(fault_of([&] { MergeAll(plan); }).Number, 61);
    EXPECT_THAT(Keeper.Ended, ElementsAre(RunOutcome::kFailed));
    EXPECT_EQ(Report(), "earlier\r\n");
    MergeAll(plan);
    const std::string report = Report();
    EXPECT_TRUE(report.starts_with("earlier\r\n"));
    // As after a merge that was killed between its report and its mark.
    write_json(Files, Batch.Merge(), {{"earlier_report", 9}, {"done", false}, {"when", ""}});
    MergeAll(plan);
    EXPECT_EQ(Report(), report);
}

TEST_F(BatchTest, Messages_of_tasks_are_shown_again_by_the_merge) {
    Form->chkSilent.Value = 0;
    Form->txtBW.Text = "100,1e-3";
    const Plan plan = PlanOf(2);
    RunAll(plan);
    const std::vector<std::string> shown = Messages.Texts();
    Messages.Clear();
    MergeAll(plan);
    EXPECT_FALSE(shown.empty());
    EXPECT_EQ(Messages.Texts(), shown);
}

}  // namespace
}  // namespace wxl::batch
