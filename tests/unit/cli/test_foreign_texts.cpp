// Names and files that other people made: on a terminal, in a spreadsheet, in a batch script; and edits of files that
// have more to them than their content.

#include "apps/cli/slurm.h"
#include "platform/runtime_error.h"
#include "tests/unit/cli/layer_files.h"

#include <algorithm>
#include <cstdlib>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/xattr.h>

namespace wxl::cli {
namespace {

namespace fs = std::filesystem;
using testing::HasSubstr;
using testing::Not;
using tests::ScratchFolder;

TEST(ForeignTexts, Line_breaks_and_tabs_of_a_name_are_shown_and_make_no_lines) {
    std::ostringstream out;
    std::ostringstream err;
    Console console(out, err, false);
    console.Result("wolf\nreport: nothing was found\t1");
    console.Note("wolf\nwxl: all is well");
    console.Problem("wolf\r\n");
    console.Fail("wolf\nline");
    console.Text("{\n\t\"a\": 1\n}");
    EXPECT_EQ(out.str(), "wolf\\x0Areport: nothing was found\\x091\n{\n\t\"a\": 1\n}\n");
    EXPECT_EQ(err.str(), "wolf\\x0Awxl: all is well\nwolf\\x0D\\x0A\nwxl: wolf\\x0Aline\n");
}

TEST(ForeignTexts, An_animal_s_name_is_one_cell_of_a_table_whatever_it_holds) {
    const ScratchFolder folder;
    const std::string layer = (folder / "points.geojson").string();
    std::string features;
    for (int i = 0; i < 4; ++i)
        features +=
            std::string(i == 0 ? "" : ",") +
            R"({"type":"Feature","properties":{"animal":"wolf\nfox 9 9"},"geometry":{"type":"Point","coordinates":[)" +
            std::to_string(i) + "," + std::to_string(i * i) + "]}}";
    write_file(folder, "points.geojson", R"({"type":"FeatureCollection","features":[)" + features + "]}");
    const Ran ran = run_wxl({"stats", layer, "--id-field", "animal", "--degrees"});
    ASSERT_EQ(ran.Code, 0) << ran.Err;
    EXPECT_THAT(ran.Out, HasSubstr("wolf\\x0Afox 9 9"));
    EXPECT_EQ(std::count(ran.Out.begin(), ran.Out.end(), '\n'), 2);
}

constexpr const char* kFormulas =
    "=1+1,500000,5000000,2018-05-09\n=1+1,500400,5000300,2018-05-10\n=1+1,500800,5000100,2018-05-11\n"
    "-5,500300,5000900,2018-05-12\n-5,500000,5000800,2018-05-13\n-5,500100,5000100,2018-05-14\n"
    "@SUM(A1),500300,5000900,2018-05-12\n@SUM(A1),500000,5000800,2018-05-13\n@SUM(A1),500100,5000100,2018-05-14\n";

TEST(ForeignTexts, Cells_that_a_spreadsheet_would_compute_have_an_apostrophe) {
    const ScratchFolder folder;
    const std::string layer = make_layer(folder, kFormulas);
    const std::vector<std::string> call = {"kde",         layer, "--id-field", "animal", "--out",    folder / "out",
                                           "--cell-size", "50",  "--extent",   "min",    "--prefix", "=K"};
    ASSERT_EQ(run_wxl(call).Code, 0);
    const std::string summary = read_file(folder / "out/WXL_KDE_SUMMARY.csv");
    EXPECT_THAT(summary, HasSubstr("\r\n'=1+1,"));
    EXPECT_THAT(summary, HasSubstr("\r\n'@SUM(A1),"));
    EXPECT_THAT(summary, HasSubstr("\r\n-5,"));
    EXPECT_THAT(summary, HasSubstr(",'=K1,"));
    // A run that replaces them replaces their rows.
    std::vector<std::string> again = call;
    again.emplace_back("--overwrite");
    ASSERT_EQ(run_wxl(again).Code, 0);
    EXPECT_EQ(read_file(folder / "out/WXL_KDE_SUMMARY.csv"), summary);
    ASSERT_EQ(run_wxl({"stats", layer, "--id-field", "animal", "--csv", folder / "s.csv"}).Code, 0);
    EXPECT_THAT(read_file(folder / "s.csv"), HasSubstr("\n'=1+1,"));
}

TEST(ForeignTexts, Memory_and_time_of_a_job_are_one_line) {
    const ScratchFolder folder;
    batch::Plan plan;
    plan.Frame.Folder = folder.Path();
    plan.Tasks = {{{0}, 1.0, 1.0}};
    for (const bool isMemory : {true, false}) {
        SlurmSettings settings;
        settings.Tasks = {1};
        (isMemory ? settings.Memory : settings.Time) = "1\nrm -rf ~";
        EXPECT_THROW(array_script(plan, settings), platform::RuntimeError);
        EXPECT_THROW(merge_script(plan, settings), platform::RuntimeError);
    }
}

/// A folder with an sbatch that says `answer`, first on the search path.
class OwnSbatch {
public:
    explicit OwnSbatch(const std::string& answer) : m_path(std::getenv("PATH")) {
        write_file(m_folder, "sbatch", "#!/bin/sh\nprintf '" + answer + "'\n");
        ::chmod((m_folder / "sbatch").c_str(), 0755);
        ::setenv("PATH", (m_folder.Path().string() + ":" + m_path).c_str(), 1);
    }
    ~OwnSbatch() { ::setenv("PATH", m_path.c_str(), 1); }

private:
    ScratchFolder m_folder;
    std::string m_path;
};

TEST(ForeignTexts, An_answer_of_sbatch_without_a_job_is_no_job) {
    for (const std::string answer : {"", "\\n", "queued", ";cluster"}) {
        const OwnSbatch sbatch(answer);
        EXPECT_THROW(submit_script("tasks.sh", {}), platform::RuntimeError) << answer;
    }
    const OwnSbatch sbatch("4711;cluster\\n");
    EXPECT_EQ(submit_script("tasks.sh", {}), "4711");
}

TEST(ForeignTexts, Attributes_of_an_edited_table_stay_and_other_names_are_told) {
    const ScratchFolder folder;
    const std::string layer = make_layer(folder, "a,1,1,2018-05-09\na,2,2,2018-05-10\na,2,2,2018-05-11\n");
    const fs::path table = folder / "layer.dbf";
    if (::setxattr(table.c_str(), "user.source", "collar 12", 9, 0) != 0)
        GTEST_SKIP() << "this disk keeps no attributes";
    ASSERT_EQ(::setxattr(table.c_str(), "user.empty", "", 0, 0), 0);
    fs::create_hard_link(table, folder / "backup.dbf");
    const std::string before = read_file(table);
    const Ran ran = run_wxl({"remove-duplicates", layer, "--by", "xy"});
    EXPECT_EQ(ran.Code, 0) << ran.Err;
    EXPECT_THAT(ran.Err,
                HasSubstr(table.string() + " has 2 names (hard links): under the others it stays as it was\n"));
    EXPECT_EQ(read_file(folder / "backup.dbf"), before);
    EXPECT_NE(read_file(table), before);
    std::string value(20, '\0');
    EXPECT_EQ(::getxattr(table.c_str(), "user.source", value.data(), value.size()), 9);
    EXPECT_EQ(value.substr(0, 9), "collar 12");
    EXPECT_EQ(::getxattr(table.c_str(), "user.empty", value.data(), value.size()), 0);
    // Without other names there is nothing to tell.
    fs::remove(folder / "backup.dbf");
    EXPECT_THAT(run_wxl({"remove-duplicates", layer, "--by", "xy"}).Err, Not(HasSubstr("hard links")));
}

}  // namespace
}  // namespace wxl::cli
