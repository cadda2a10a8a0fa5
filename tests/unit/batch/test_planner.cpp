#include "tests/unit/batch/batch_fixture.h"

#include <gmock/gmock.h>

namespace wxl::batch {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

constexpr const char* kDigestOfAbc = "ba7816bf8f01cfea414140de5dae2223b00361a396177a9cb410ff61f20015ad";

TEST(InputFiles, Of_a_shapefile_are_all_its_parts_with_their_digests) {
    memory::MemoryFileSystem files;
    for (const char* name : {"/a.shp", "/a.dbf", "/a.prj", "/b.dbf"}) files.Disk().AddFile(name, "abc");
    const auto found = input_files(files, "/a.shp");
    ASSERT_EQ(found.size(), 3U);
    EXPECT_EQ(found[0].Path, "/a.dbf");
    EXPECT_EQ(found[1].Path, "/a.prj");
    EXPECT_EQ(found[2].Path, "/a.shp");
    EXPECT_EQ(found[2].Bytes, 3U);
    EXPECT_EQ(found[2].Modified, memory::kMemoryFileTime);
    EXPECT_EQ(found[2].Sha256, kDigestOfAbc);
}

TEST(InputFiles, Of_another_file_are_the_file_itself) {
    memory::MemoryFileSystem files;
    for (const char* name : {"/a.csv", "/a.dbf", "/a.prj"}) files.Disk().AddFile(name, "abc");
    const auto found = input_files(files, "/a.csv");
    ASSERT_EQ(found.size(), 1U);
    EXPECT_EQ(found[0].Path, "/a.csv");
    EXPECT_THAT(input_files(files, "/absent.csv"), IsEmpty());
}

TEST(InputFiles, Of_a_folder_are_the_files_in_it_and_not_its_folders) {
    memory::MemoryFileSystem files;
    files.Disk().AddFolder("/db/deeper");
    for (const char* name : {"/db/b", "/db/a", "/db/deeper/c"}) files.Disk().AddFile(name, "abc");
    const auto found = input_files(files, "/db");
    ASSERT_EQ(found.size(), 2U);
    EXPECT_EQ(found[0].Path, "/db/a");
    EXPECT_EQ(found[1].Path, "/db/b");
}

TEST(InputFiles, A_file_that_cannot_be_read_is_named) {
    memory::MemoryFileSystem files;
    files.Disk().AddFile("/a.csv", "abc");
    files.Disk().Fail(memory::DiskStep::kRead, 1, 70);
    const auto fault = fault_of([&] { input_files(files, "/a.csv"); });
    EXPECT_EQ(fault.Number, 57);
    EXPECT_EQ(fault.Description, "/a.csv cannot be read.");
}

TEST_F(BatchTest, A_plan_holds_what_tasks_need_and_no_dataset) {
    const Plan plan = PlanOf(2);
    EXPECT_EQ(plan.Program, "wxl 1");
    EXPECT_EQ(plan.Planned, "11/20/2026 3:04:05 PM");
    ASSERT_EQ(plan.Input.size(), 1U);
    EXPECT_EQ(plan.Input[0].Sha256, kDigestOfAbc);
    ASSERT_EQ(plan.Animals.size(), 2U);
    EXPECT_EQ(plan.Animals[0].NamingId, "3");
    EXPECT_EQ(plan.DistributionCount(), 4U);
    ASSERT_EQ(plan.Tasks.size(), 2U);
    EXPECT_THAT(Files.List("/out"), ElementsAre("WXL_KERNEL_SETTINGS.txt", "wxl_batch"));
    EXPECT_THAT(Files.List(Batch.Folder), ElementsAre("logs", "plan.json", "points.bin", "tasks"));
    const Plan read = read_plan(Files, "/out");
    EXPECT_EQ(read.Id, plan.Id);
    EXPECT_EQ(read.ReportHead, plan.ReportHead);
    EXPECT_THAT(datasets_of(read, 3),
                ElementsAre(analysis::Dataset{analysis::DatasetKind::kRaster, "K7_b2"},
                            analysis::Dataset{analysis::DatasetKind::kPolygons, "K7_b2_iso_poly"}));
}

TEST_F(BatchTest, A_dataset_in_the_way_stops_the_planning) {
    Disk->AddFile("/out/K7_b2_iso_poly.dbf", "");
    const auto take = [&](const analysis::PreparedRun& run) {
        const auto fault = fault_of([&] { plan_batch(Services, run, {"wxl 1", "/data/bears.shp", 2}); });
        EXPECT_EQ(fault.Number, 58);
        EXPECT_EQ(fault.Description,
                  "/out/K7_b2_iso_poly.dbf stands in the output folder already. Please use a new, empty folder.");
    };
    Form->HandOver(take);
    EXPECT_FALSE(Files.FolderExists(Batch.Folder));
}

TEST_F(BatchTest, A_new_plan_takes_the_place_of_the_old_one_and_its_results) {
    const Plan old = PlanOf(2);
    Disk->AddFolder(Batch.Task(1));
    Disk->AddFile(Batch.Result(1), "{}");
    const Plan plan = PlanOf(1);
    EXPECT_EQ(read_plan(Files, "/out").Tasks.size(), 1U);
    EXPECT_FALSE(Files.FileExists(Batch.Result(1)));
}

TEST_F(BatchTest, Plans_made_at_different_times_have_different_ids) {
    const std::string first = PlanOf(1).Id;
    Clock.Wait(std::chrono::milliseconds(1));
    EXPECT_NE(PlanOf(1).Id, first);
}

TEST_F(BatchTest, A_removed_batch_leaves_the_datasets) {
    RunAll(PlanOf(1));
    remove_batch(Services, "/out");
    EXPECT_FALSE(Files.FolderExists(Batch.Folder));
    EXPECT_TRUE(HasRaster("K3_b1"));
    remove_batch(Services, "/out");
}

}  // namespace
}  // namespace wxl::batch
