#include "tests/unit/cli/layer_files.h"

#include <algorithm>
#include <cstdlib>
#include <gtest/gtest.h>
#include <sstream>

namespace wxl::cli {
namespace {

using tests::ScratchFolder;

/// The pages that the program writes.
std::set<std::string> write_pages(const ScratchFolder& folder) {
    const Ran ran = run_wxl({"man", "--all", folder.Path().string()});
    EXPECT_EQ(ran.Code, 0) << ran.Err;
    return names_in(folder.Path());
}

TEST(Manual, Pages_in_the_repository_are_those_that_the_program_writes) {
    ScratchFolder folder;
    const auto pages = write_pages(folder);
    EXPECT_TRUE(pages.count("wxl.1") == 1 && pages.count("wxl-import.1") == 1);
    const std::string advice = "; write them anew: wxl man --all docs/man";
    for (const std::string& page : pages)
        EXPECT_EQ(read_file(WXL_SOURCE_DIR "/docs/man/" + page), read_file(folder / page)) << page << advice;
    EXPECT_EQ(names_in(WXL_SOURCE_DIR "/docs/man"), pages) << advice;
}

TEST(Manual, Every_command_says_more_than_its_options) {
    ScratchFolder folder;
    for (const std::string& page : write_pages(folder)) {
        const std::string text = read_file(folder / page);
        EXPECT_NE(text.find(".SH DESCRIPTION\n"), std::string::npos) << page;
        EXPECT_NE(text.find("Example"), std::string::npos) << page;
    }
}

TEST(Manual, Page_is_printed_by_name) {
    ScratchFolder folder;
    write_pages(folder);
    EXPECT_EQ(run_wxl({"man", "import"}).Out, read_file(folder / "wxl-import.1"));
    EXPECT_EQ(run_wxl({"man"}).Out, read_file(folder / "wxl.1"));
    EXPECT_EQ(run_wxl({"man", "nothing"}).Err, "wxl: man: there is no command \"nothing\"\n");
    EXPECT_EQ(run_wxl({"man", "nothing"}).Code, 2);
}

TEST(Manual, Help_of_every_command_names_all_its_options) {
    ScratchFolder folder;
    for (const std::string& page : write_pages(folder)) {
        if (page == "wxl.1") continue;
        const std::string command = page.substr(4, page.size() - 6);
        const Ran help = run_wxl({command, "--help"});
        EXPECT_EQ(help.Code, 0) << command;
        EXPECT_EQ(help.Err, "") << command;
    }
}

TEST(Manual, Bash_completes_commands_and_their_options) {
    if (std::system("bash -c '' >/dev/null 2>&1") != 0) GTEST_SKIP() << "bash is absent";
    ScratchFolder folder;
    const Ran ran = run_wxl({"completion", "bash"});
    EXPECT_EQ(ran.Code, 0);
    const std::string script = write_file(folder, "wxl.bash", ran.Out);
    const auto completed = [&](const std::string& words, const std::string& at) {
        const std::string out = (folder / "out").string();
        const std::string code = "source " + script + "; COMP_WORDS=(" + words + "); COMP_CWORD=" + at +
                                 "; _wxl; printf \"%s \" \"${COMPREPLY[@]}\" > " + out;
        EXPECT_EQ(std::system(("bash -c '" + code + "'").c_str()), 0);
        return read_file(out);
    };
    EXPECT_EQ(completed("wxl imp", "1"), "import ");
    EXPECT_EQ(completed("wxl import --ov", "2"), "--overwrite ");
    EXPECT_EQ(completed("wxl -q import --from", "3"), "--from-crs ");
}

}  // namespace
}  // namespace wxl::cli
