#include "tests/unit/cli/layer_files.h"
#include "tests/unit/cli/raster_files.h"

#include <cmath>
#include <gmock/gmock.h>

namespace wxl::cli {
namespace {

namespace fs = std::filesystem;
using testing::HasSubstr;
using tests::ScratchFolder;

/// A hill of 60 x 60 cells of 10 m: four rows of tiles.
std::vector<std::vector<float>> hill(double x, double y, double height) {
    std::vector<std::vector<float>> rows(60, std::vector<float>(60));
    for (int row = 0; row < 60; ++row)
        for (int column = 0; column < 60; ++column) {
            const double distance = std::hypot(row - y, column - x);
            rows[static_cast<std::size_t>(row)][static_cast<std::size_t>(column)] =
                distance > 35.0 ? 0.0F : static_cast<float>(height * std::exp(-distance * distance / 98.0));
        }
    return rows;
}

class BatchOverlap : public testing::Test {
protected:
    void SetUp() override {
        make_raster(m_folder, "f", hill(25.0, 20.0, 32.0));
        make_raster(m_folder, "g", hill(32.0, 31.0, 32.0));
        make_raster(m_folder, "h", hill(50.0, 55.0, 20.0));
    }

    std::string Rasters() const { return m_folder.Path().string(); }
    std::string At(const std::string& name) const { return (m_out / name).string(); }

    Ran Batch(const std::vector<std::string>& more) const {
        std::vector<std::string> call = {"batch", "overlap", Rasters()};
        call.insert(call.end(), more.begin(), more.end());
        return run_wxl(call);
    }

    void PlanThree() const {
        EXPECT_EQ(Batch({"--tasks", "3", "--percent", "95,50", "--conditional"}).Out,
                  "comparison: " + (m_folder / "wxl_batch/overlap").string() + "\nanimals: 3, tasks: 3\n");
    }

    fs::path Task(int number) const { return m_folder / "wxl_batch/overlap/tasks" / std::to_string(number); }

    ScratchFolder m_folder;
    ScratchFolder m_out;
};

TEST_F(BatchOverlap, Tasks_give_the_bytes_of_one_process) {
    PlanThree();
    for (const char* task : {"3", "1", "2"}) EXPECT_EQ(Batch({"--task", task}).Code, 0);
    const Ran merged = Batch({"--merge", "--json", "--out", At("tasks"), "--csv", At("tasks.csv")});
    const Ran whole = run_wxl({"overlap", Rasters(), "--percent", "95,50", "--conditional", "--json", "--out",
                               At("whole"), "--csv", At("whole.csv")});
    EXPECT_EQ(merged.Code, 0);
    EXPECT_EQ(merged.Out, whole.Out);
    EXPECT_EQ(merged.Err, whole.Err);
    EXPECT_EQ(read_file(At("tasks.csv")), read_file(At("whole.csv")));
    for (const char* name : {"WXL_OVERLAP.csv", "WXL_OVERLAP.svg", "RANGES.gpkg"}) {
        EXPECT_EQ(read_file(At("tasks") + "/" + name) == read_file(At("whole") + "/" + name), true) << name;
        EXPECT_FALSE(read_file(At("tasks") + "/" + name).empty()) << name;
    }
}

TEST_F(BatchOverlap, Repeated_tasks_are_left_alone_and_killed_ones_start_anew) {
    PlanThree();
    EXPECT_EQ(Batch({"--task", "1"}).Code, 0);
    const std::string first = read_file(Task(1) / "result.json");
    EXPECT_EQ(Batch({"--task", "1"}).Err, "task 1 is done already\n");
    EXPECT_EQ(read_file(Task(1) / "result.json"), first);
    EXPECT_EQ(Batch({"--merge"}).Err,
              "wxl: the comparison is not finished: missing 2-3; wxl batch overlap DIR --task K runs one\n");
    const std::string sums = read_file(Task(1) / "sums.bin");
    fs::remove(Task(1) / "result.json");  // killed before its last word
    EXPECT_EQ(Batch({"--task", "1"}).Err, "");
    EXPECT_EQ(read_file(Task(1) / "sums.bin") == sums, true);
    EXPECT_EQ(Batch({"--task", "1", "--again"}).Err, "");
}

TEST_F(BatchOverlap, Damaged_sums_are_found_and_made_anew) {
    PlanThree();
    for (const char* task : {"1", "2", "3"}) EXPECT_EQ(Batch({"--task", task}).Code, 0);
    std::ofstream(Task(2) / "sums.bin", std::ios::app) << "x";
    EXPECT_THAT(Batch({"--merge"}).Err,
                HasSubstr("\nwxl: " + (Task(2) / "sums.bin").string() +
                          " cannot be used. Run the task again: wxl batch overlap DIR --task 2 --again.\n"));
    EXPECT_EQ(Batch({"--task", "2"}).Code, 0);
    EXPECT_EQ(Batch({"--merge"}).Code, 0);
}

TEST_F(BatchOverlap, Changed_rasters_end_a_task_and_the_fault_is_kept) {
    PlanThree();
    for (const char* task : {"1", "2"}) EXPECT_EQ(Batch({"--task", task}).Code, 0);
    fs::remove_all(m_folder / "h");
    make_raster(m_folder, "h", hill(50.0, 54.0, 20.0));
    const std::string changed =
        "The rasters were changed since the comparison was planned. Plan the comparison anew: wxl batch overlap DIR "
        "--tasks N.";
    const Ran failed = Batch({"--task", "3"});
    EXPECT_EQ(failed.Code, 1);
    EXPECT_EQ(failed.Err, "wxl: " + changed + "\n");
    EXPECT_EQ(Batch({"--merge"}).Err, "wxl: the comparison is not finished: failed 3 (" + changed +
                                          "); wxl batch overlap DIR --task K runs one\n");
    PlanThree();  // anew: nothing of before belongs to it
    EXPECT_THAT(Batch({"--merge"}).Err, HasSubstr("missing 1-2, failed 3"));
    for (const char* task : {"1", "2", "3"}) EXPECT_EQ(Batch({"--task", task}).Code, 0);
    EXPECT_EQ(Batch({"--merge"}).Code, 0);
}

TEST_F(BatchOverlap, Calls_that_make_no_sense_are_refused) {
    EXPECT_THAT(Batch({"--task", "1"}).Err, HasSubstr("no comparison is planned there. Plan the comparison anew"));
    PlanThree();
    EXPECT_EQ(Batch({"--task", "4"}).Err, "wxl: the comparison has the tasks 1 to 3, not 4\n");
    const Ran two = Batch({"--task", "1", "--merge"});
    EXPECT_EQ(two.Code, 2);
    EXPECT_EQ(two.Err, "wxl: give one of --tasks, --task and --merge\n");
    write_file(m_folder, "wxl_batch/overlap/plan.json", "{}");
    EXPECT_THAT(Batch({"--merge"}).Err, HasSubstr("Plan the comparison anew: wxl batch overlap DIR --tasks N."));
}

}  // namespace
}  // namespace wxl::cli
