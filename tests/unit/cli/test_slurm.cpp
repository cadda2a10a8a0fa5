#include "apps/cli/slurm.h"
#include "platform/runtime_error.h"
#include "tests/support/scratch_folder.h"

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <iterator>

namespace wxl::cli {
namespace {

namespace fs = std::filesystem;

/// Three tasks, four distributions; the points are a file of 3,000,000 bytes.
batch::Plan plan_in(const fs::path& output) {
    batch::Plan plan;
    plan.Folder = output;
    plan.Frame.Values = {0.5, 1.0};
    plan.Animals = {{std::int64_t{1}, "1", ""}, {std::int64_t{2}, "2", ""}};
    plan.Tasks = {{{0}, 30.0, 1000.0}, {{1, 2}, 100.0, 10.0}, {{3}, 7.0, 20.0}};
    const fs::path points = batch::BatchFiles(output).Points();
    fs::create_directories(points.parent_path());
    std::ofstream(points).close();
    fs::resize_file(points, 3000000);
    return plan;
}

SlurmSettings settings_for(std::vector<std::size_t> tasks) {
    SlurmSettings settings;
    settings.Program = "/usr/bin/wxl";
    settings.Tasks = std::move(tasks);
    return settings;
}

template <class Call>
platform::RuntimeError error_of(Call&& call) {
    try {
        call();
    } catch (const platform::RuntimeError& error) {
        return error;
    }
    return {0, ""};
}

TEST(Slurm, The_array_asks_for_what_its_costliest_tasks_are_estimated_to_take) {
    const tests::ScratchFolder folder;
    const std::string output = (folder / "out").string();
    // 1.5 x 1000 MB + 256 MB; 4 x 100 s + 600 s = 1000 s, 17 minutes when rounded up.
    EXPECT_EQ(array_script(plan_in(output), settings_for({1, 2, 3})),
              "#!/bin/sh\n"
              "#SBATCH --job-name=wxl-task\n"
              "#SBATCH --output=\"" +
                  output +
                  "/wxl_batch/logs/task-%a.log\"\n"
                  "#SBATCH --ntasks=1\n"
                  "#SBATCH --cpus-per-task=1\n"
                  "#SBATCH --mem=1756M\n"
                  "#SBATCH --time=0:17:00\n"
                  "#SBATCH --array=1-3\n"
                  "#SBATCH --requeue\n"
                  "#SBATCH --open-mode=append\n"
                  "exec '/usr/bin/wxl' -q batch run '" +
                  output + "'\n");
}

TEST(Slurm, Tasks_that_are_not_sent_do_not_count) {
    const tests::ScratchFolder folder;
    const std::string script = array_script(plan_in(folder / "out"), settings_for({3}));
    // 1.5 x 20 MB + 256 MB; 4 x 7 s + 600 s = 628 s.
    EXPECT_NE(script.find("#SBATCH --mem=286M\n#SBATCH --time=0:11:00\n#SBATCH --array=3\n"), std::string::npos)
        << script;
}

TEST(Slurm, Days_of_work_are_asked_for_in_hours) {
    const tests::ScratchFolder folder;
    batch::Plan plan = plan_in(folder / "out");
    plan.Tasks[1].Seconds = 90000.0;  // 4 x 25 hours and ten minutes
    EXPECT_NE(array_script(plan, settings_for({2})).find("#SBATCH --time=100:10:00\n"), std::string::npos);
}

TEST(Slurm, The_merge_asks_for_the_memory_of_the_points) {
    const tests::ScratchFolder folder;
    const std::string output = (folder / "out").string();
    // 1.5 x 3 MB + 4 x 0.02 MB + 256 MB = 260.58 MB; 4 x 4 x 0.002 s + 600 s.
    EXPECT_EQ(merge_script(plan_in(output), settings_for({})),
              "#!/bin/sh\n"
              "#SBATCH --job-name=wxl-merge\n"
              "#SBATCH --output=\"" +
                  output +
                  "/wxl_batch/logs/merge.log\"\n"
                  "#SBATCH --ntasks=1\n"
                  "#SBATCH --cpus-per-task=1\n"
                  "#SBATCH --mem=261M\n"
                  "#SBATCH --time=0:11:00\n"
                  "#SBATCH --open-mode=append\n"
                  "exec '/usr/bin/wxl' batch merge '" +
                  output + "'\n");
}

TEST(Slurm, Memory_and_time_of_the_user_replace_the_estimates) {
    const tests::ScratchFolder folder;
    const batch::Plan plan = plan_in(folder / "out");
    SlurmSettings settings = settings_for({1});
    settings.Memory = "4G";
    settings.Time = "1-00";
    settings.Options = {"--partition=short", "--mail-type=END"};
    const std::string wanted =
        "#SBATCH --mem=4G\n#SBATCH --time=1-00\n#SBATCH --partition=short\n#SBATCH --mail-type=END\n";
    EXPECT_NE(array_script(plan, settings).find(wanted), std::string::npos);
    EXPECT_NE(merge_script(plan, settings).find(wanted), std::string::npos);
}

TEST(Slurm, Any_folder_name_stays_one_word_of_the_script) {
    const tests::ScratchFolder folder;
    const fs::path output = folder / "it's 50% \"$HOME\" \\ `x`";
    const std::string script = array_script(plan_in(output), settings_for({1}));
    EXPECT_NE(script.find("#SBATCH --output=\"" + folder.Path().string() +
                          "/it's 50%% \\\"$HOME\\\" \\\\ `x`/wxl_batch/logs/task-%a.log\"\n"),
              std::string::npos)
        << script;
    EXPECT_NE(script.find(" -q batch run '" + folder.Path().string() + "/it'\\''s 50% \"$HOME\" \\ `x`'\n"),
              std::string::npos)
        << script;
}

TEST(Slurm, A_folder_name_with_a_line_break_is_refused) {
    const tests::ScratchFolder folder;
    const batch::Plan plan = plan_in(folder / "a\nb");
    for (const auto& make : {array_script, merge_script})
        EXPECT_EQ(error_of([&] { make(plan, settings_for({1})); }).Description,
                  "The output folder's name holds a control character, which no batch script can: choose another "
                  "folder");
}

TEST(Slurm, An_option_of_two_lines_is_refused) {
    const tests::ScratchFolder folder;
    const batch::Plan plan = plan_in(folder / "out");
    SlurmSettings settings = settings_for({1});
    settings.Options = {"--partition=a\nrm -rf /"};
    for (const auto& make : {array_script, merge_script})
        EXPECT_EQ(error_of([&] { make(plan, settings); }).Description, "An option of sbatch is one line.");
}

/// A folder with an sbatch of our own, the only one that can be found.
class SubmittedScript : public testing::Test {
protected:
    SubmittedScript() { ::setenv("PATH", m_folder.Path().c_str(), 1); }
    ~SubmittedScript() override { ::setenv("PATH", m_path.c_str(), 1); }

    void Sbatch(const std::string& body) const {
        const fs::path program = m_folder / "sbatch";
        std::ofstream(program) << "#!/bin/sh\n" << body;
        fs::permissions(program, fs::perms::owner_all);
    }

    std::string Said() const {
        std::ifstream in(m_folder / "said");
        return {std::istreambuf_iterator<char>(in), {}};
    }

    tests::ScratchFolder m_folder;
    std::string m_path = std::getenv("PATH");
};

TEST_F(SubmittedScript, Its_job_number_comes_back_without_the_name_of_the_cluster) {
    Sbatch("for word in \"$@\"; do echo \"[$word]\"; done > " + (m_folder / "said").string() + "\necho '4711;north'\n");
    EXPECT_EQ(submit_script("/data/it's/tasks.sh", {"--dependency=afterany:12"}), "4711");
    EXPECT_EQ(Said(), "[--parsable]\n[--dependency=afterany:12]\n[/data/it's/tasks.sh]\n");
}

TEST_F(SubmittedScript, What_sbatch_says_against_it_is_told) {
    Sbatch("echo 'sbatch: error: invalid partition specified: shrt' >&2\nexit 1\n");
    const auto error = error_of([] { submit_script("/data/tasks.sh", {}); });
    EXPECT_EQ(error.Number, platform::error_number::kInvalidCall);
    EXPECT_EQ(error.Description, "sbatch ended with exit code 1: sbatch: error: invalid partition specified: shrt");
}

TEST_F(SubmittedScript, A_machine_without_sbatch_is_told) {
    const auto error = error_of([] { submit_script("/data/tasks.sh", {}); });
    EXPECT_EQ(error.Number, platform::error_number::kFileNotFound);
    EXPECT_EQ(
        error.Description,
        "there is no sbatch on this machine: submit from a machine of the cluster, see the script with --dry-run, "
        "or compute here with --engine local --jobs N");
}

}  // namespace
}  // namespace wxl::cli
