#include "tests/unit/cli/layer_files.h"
#include "tests/unit/cli/raster_files.h"

#include <cmath>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <gmock/gmock.h>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

namespace wxl::cli {
namespace {

namespace fs = std::filesystem;
using Json = nlohmann::ordered_json;
using testing::AllOf;
using testing::EndsWith;
using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;
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

TEST_F(BatchOverlap, An_array_longer_than_the_plan_has_nothing_left_to_do) {
    PlanThree();
    ::setenv("SLURM_ARRAY_TASK_ID", "4", 1);
    const Ran fourth = Batch({});
    ::unsetenv("SLURM_ARRAY_TASK_ID");
    EXPECT_EQ(fourth.Code, 0);
    EXPECT_EQ(fourth.Err, "the comparison has 3 tasks; nothing is left for task 4\n");
}

TEST_F(BatchOverlap, Names_that_are_taken_are_told_when_it_is_planned) {
    fs::create_directories(At("out"));
    std::ofstream(At("out") + "/WXL_OVERLAP.csv") << "x";
    EXPECT_THAT(Batch({"--tasks", "3", "--out", At("out")}).Err, HasSubstr("WXL_OVERLAP.csv exists"));
    EXPECT_FALSE(fs::exists(m_folder / "wxl_batch/overlap/plan.json"));
    EXPECT_EQ(Batch({"--tasks", "3", "--out", At("out"), "--overwrite"}).Code, 0);
}

TEST_F(BatchOverlap, Status_and_submit_take_a_folder_without_a_batch) {
    PlanThree();
    const auto status = [&] { return run_wxl({"batch", "status", Rasters()}).Out; };
    const auto scripts = [&] { return run_wxl({"batch", "submit", Rasters(), "--dry-run"}).Out; };
    EXPECT_THAT(status(), EndsWith("\noverlap: 3 tasks: 0 done, 0 running, 0 failed, 3 missing; not merged\n"));
    EXPECT_EQ(Batch({"--task", "2"}).Code, 0);
    EXPECT_THAT(status(), EndsWith("\noverlap: 3 tasks: 1 done, 0 running, 0 failed, 2 missing; not merged\n"));
    EXPECT_THAT(scripts(), HasSubstr("\n#SBATCH --array=1,3\n"));
    EXPECT_THAT(scripts(), HasSubstr(" -q batch overlap '" + Rasters() + "'\n"));
    EXPECT_THAT(scripts(), EndsWith(" batch overlap '" + Rasters() + "' --merge --percent 95,50 --conditional\n"));
    EXPECT_THAT(scripts(), Not(HasSubstr("wxl-task")));
    for (const char* task : {"1", "3"}) EXPECT_EQ(Batch({"--task", task}).Code, 0);
    EXPECT_THAT(scripts(), Not(HasSubstr("--array")));
    EXPECT_EQ(Batch({"--merge"}).Code, 0);
    EXPECT_THAT(status(), EndsWith("\noverlap: 3 tasks: 3 done, 0 running, 0 failed, 0 missing; merged\n"));
    EXPECT_EQ(scripts(), "");
    const Json json = Json::parse(run_wxl({"batch", "status", Rasters(), "--json"}).Out);
    EXPECT_TRUE(json["planned"].is_null());
    EXPECT_EQ(json["tasks"], Json::array());
    EXPECT_EQ(json["overlap"]["merged"], true);
    EXPECT_EQ(json["overlap"]["done"], 3);
    EXPECT_EQ(json["overlap"]["tasks"][2]["state"], "done");
    PlanThree();  // asked for anew
    EXPECT_THAT(status(), EndsWith("; not merged\n"));
}

TEST_F(BatchOverlap, A_record_that_was_changed_is_told) {
    PlanThree();
    fs::remove(m_folder / "wxl_batch/overlap/plan.json");
    const std::string record = (m_folder / "wxl_batch/overlap/wish.json").string();
    const std::string remedy = "Plan the comparison anew: wxl batch overlap DIR --tasks N.\n";
    write_file(m_folder, "wxl_batch/overlap/wish.json", "{\"tasks\":0,\"words\":[]}");
    EXPECT_THAT(run_wxl({"batch", "status", Rasters()}).Err, AllOf(HasSubstr(record), EndsWith(remedy)));
    write_file(m_folder, "wxl_batch/overlap/wish.json", "{\"tasks\":2,\"words\":[\"--nonsense\"]}");
    EXPECT_EQ(run_wxl({"batch", "submit", Rasters(), "--engine", "local"}).Err,
              "wxl: " + record + " cannot be used. " + remedy);
}

/// A batch of three animals on one grid, in two tasks.
class OverlapOfBatch : public testing::Test {
protected:
    Ran Plan(const std::string& extent) const {
        std::string rows;
        for (int i = 0; i < 8; ++i)
            for (const char* animal : {"a", "b", "c"})
                rows += std::string(animal) + "," + std::to_string(500000 + 37 * ((i * 5) % 8) + 60 * (*animal - 'a')) +
                        "," + std::to_string(5800000 + 41 * ((i * 3) % 8)) + ",2020-01-01T0" + std::to_string(i) +
                        ":00:00Z\n";
        return run_wxl({"batch", "plan", make_layer(m_folder, rows), "--id-field", "animal", "--out", Out(),
                        "--cell-size", "20", "--extent", extent, "--answer", "yes", "--tasks", "2"});
    }
    std::string Out() const { return (m_folder / "out").string(); }
    Ran Batch(const std::string& command, const std::vector<std::string>& more = {}) const {
        std::vector<std::string> call = {"batch", command, Out()};
        call.insert(call.end(), more.begin(), more.end());
        return run_wxl(call);
    }

    ScratchFolder m_folder;
};

TEST_F(OverlapOfBatch, Follows_the_merge) {
    ASSERT_EQ(Plan("full:500").Code, 0);
    const std::string compared = Out() + "/compared";
    const std::string words = " --percent 95,50 --out '" + compared + "' --overwrite\n";
    EXPECT_EQ(Batch("overlap", {"--tasks", "2", "--percent", "95,50", "--out", compared}).Out,
              "comparison: " + Out() +
                  "/wxl_batch/overlap\nplanned when the batch is merged; wxl batch submit sends "
                  "both\n");
    EXPECT_THAT(Batch("status").Out, EndsWith("not merged\noverlap: planned when the batch is merged, in about 2 "
                                              "tasks\n"));
    Json json = Json::parse(Batch("status", {"--json"}).Out);
    EXPECT_TRUE(json["overlap"]["planned"].is_null());
    EXPECT_EQ(json["missing"], 2);
    const std::string scripts = Batch("submit", {"--dry-run", "--mem", "3G"}).Out;
    std::size_t before = 0;
    for (const std::string& part :
         {std::string("--job-name=wxl-task\n"), std::string("--job-name=wxl-merge\n"),
          std::string("--job-name=wxl-overlap-plan\n"), " batch overlap '" + Out() + "' --tasks 2" + words,
          std::string("--job-name=wxl-overlap\n"), std::string("#SBATCH --mem=3G\n"),
          std::string("#SBATCH --array=1-2\n"), std::string("--job-name=wxl-overlap-merge\n"),
          " batch overlap '" + Out() + "' --merge" + words}) {
        before = scripts.find(part, before);
        ASSERT_NE(before, std::string::npos) << part << scripts;
    }
    for (const char* task : {"1", "2"}) ASSERT_EQ(Batch("run", {"--task", task}).Code, 0);
    ASSERT_EQ(Batch("merge").Code, 0);
    EXPECT_THAT(Batch("submit", {"--dry-run"}).Out, StartsWith("#!/bin/sh\n#SBATCH --job-name=wxl-overlap-plan\n"));
    // As its jobs do.
    ASSERT_EQ(Batch("overlap", {"--tasks", "2", "--percent", "95,50", "--out", compared, "--overwrite"}).Code, 0);
    for (const char* task : {"1", "2"}) ASSERT_EQ(Batch("overlap", {"--task", task}).Code, 0);
    ASSERT_EQ(Batch("overlap", {"--merge", "--percent", "95,50", "--out", compared, "--overwrite"}).Code, 0);
    EXPECT_EQ(run_wxl({"overlap", Out(), "--percent", "95,50", "--out", (m_folder / "whole").string()}).Code, 0);
    EXPECT_EQ(read_file(compared + "/WXL_OVERLAP.csv"), read_file(m_folder / "whole/WXL_OVERLAP.csv"));
    EXPECT_THAT(Batch("status").Out, EndsWith("; merged\n"));
    EXPECT_EQ(Batch("submit", {"--dry-run"}).Out, "");
}

TEST_F(OverlapOfBatch, Of_animals_with_grids_of_their_own_is_refused) {
    ASSERT_EQ(Plan("min").Code, 0);
    const Ran refused = Batch("overlap", {"--tasks", "2"});
    EXPECT_EQ(refused.Code, 1);
    EXPECT_EQ(refused.Err,
              "wxl: the rasters of this batch will lie on grids of their own: plan it with --extent full to compare "
              "them\n");
    EXPECT_FALSE(fs::exists(Out() + "/wxl_batch/overlap/wish.json"));
}

/// A program that stands for sbatch keeps what it is asked.
TEST_F(OverlapOfBatch, Its_jobs_wait_for_each_other) {
    ASSERT_EQ(Plan("full:500").Code, 0);
    ASSERT_EQ(Batch("overlap", {"--tasks", "2"}).Code, 0);
    const fs::path programs = m_folder / "bin";
    fs::create_directories(programs);
    std::ofstream(programs / "sbatch") << "#!/bin/sh\necho \"$@\" >> " << (m_folder / "asked").string()
                                       << "\nexec /usr/bin/wc -l < " << (m_folder / "asked").string() << "\n";
    fs::permissions(programs / "sbatch", fs::perms::owner_all);
    const std::string path = std::getenv("PATH");
    ::setenv("PATH", programs.c_str(), 1);
    const Ran sent = Batch("submit");
    ::setenv("PATH", path.c_str(), 1);
    EXPECT_EQ(sent.Out,
              "tasks 1-2: job 1\nmerge: job 2\noverlap: plan: job 3\noverlap: tasks 1-2: job 4\n"
              "overlap: merge: job 5\n")
        << sent.Err;
    const std::string batch = Out() + "/wxl_batch";
    EXPECT_EQ(read_file(m_folder / "asked"),
              "--parsable " + batch + "/tasks.sh\n" + "--parsable --dependency=afterany:1 " + batch + "/merge.sh\n" +
                  "--parsable --dependency=afterok:2 --kill-on-invalid-dep=yes " + batch + "/overlap/plan.sh\n" +
                  "--parsable --dependency=afterok:3 --kill-on-invalid-dep=yes " + batch + "/overlap/tasks.sh\n" +
                  "--parsable --dependency=afterany:4 " + batch + "/overlap/merge.sh\n");
}

}  // namespace
}  // namespace wxl::cli
