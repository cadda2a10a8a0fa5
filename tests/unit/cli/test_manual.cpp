#include "apps/cli/manual.h"
#include "tests/support/places.h"
#include "tests/unit/cli/layer_files.h"

#include <algorithm>
#include <CLI/CLI.hpp>
#include <cstdlib>
#include <gtest/gtest.h>
#include <sstream>
#include <vector>

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
        EXPECT_EQ(read_file(tests::SourceFile("docs/man/" + page)), read_file(folder / page)) << page << advice;
    EXPECT_EQ(names_in(tests::SourceFile("docs/man")), pages) << advice;
}

/// The commands that a help text lists under "Subcommands:".
std::vector<std::string> listed_commands(const std::string& help) {
    std::vector<std::string> commands;
    std::istringstream lines(help);
    bool listed = false;
    for (std::string line; std::getline(lines, line);) {
        if (line.rfind("Subcommands:", 0) == 0) {
            listed = true;
        } else if (listed && line.rfind("  ", 0) == 0 && line[2] != ' ') {
            commands.push_back(line.substr(2, line.find(' ', 2) - 2));
        } else if (listed && line.rfind("  ", 0) != 0) {
            listed = false;
        }
    }
    return commands;
}

/// Every command that help shows, with the commands below it: {"batch", "run"}.
void append_commands(std::vector<std::string> above, std::vector<std::vector<std::string>>& found) {
    above.push_back("--help");
    const std::string help = run_wxl(above).Out;
    above.pop_back();
    for (const std::string& name : listed_commands(help)) {
        above.push_back(name);
        found.push_back(above);
        append_commands(above, found);
        above.pop_back();
    }
}

std::string joined(const std::vector<std::string>& words, const std::string& separator) {
    std::string text;
    for (const std::string& word : words) text += (text.empty() ? "" : separator) + word;
    return text;
}

TEST(Manual, Every_command_of_the_help_has_a_page_a_completion_and_a_section_in_the_reference) {
    ScratchFolder folder;
    const auto pages = write_pages(folder);
    const std::string completion = run_wxl({"completion", "bash"}).Out;
    const std::string reference = run_wxl({"man", "--markdown"}).Out;
    std::vector<std::vector<std::string>> commands;
    append_commands({}, commands);
    EXPECT_GE(commands.size(), 9u);
    EXPECT_EQ(pages.size(), commands.size() + 1);
    for (const auto& command : commands) {
        EXPECT_EQ(pages.count("wxl-" + joined(command, "-") + ".1"), 1u) << joined(command, " ");
        EXPECT_NE(completion.find("\"" + joined(command, " ") + "\") words="), std::string::npos)
            << joined(command, " ");
        EXPECT_NE(reference.find("\n## wxl " + joined(command, " ") + "\n"), std::string::npos) << joined(command, " ");
    }
}

TEST(Manual, Reference_in_the_guide_is_the_one_that_the_program_prints) {
    EXPECT_EQ(read_file(tests::SourceFile("docs/guide/options.md")), run_wxl({"man", "--markdown"}).Out)
        << "write it anew: wxl man --markdown > docs/guide/options.md";
}

TEST(Manual, Commands_below_a_command_have_pages_completion_and_reference_of_their_own) {
    CLI::App program("Program", "wxl");
    program.set_version_flag("--version", "wxl 0");
    bool quiet = false;
    program.add_flag("-q,--quiet", quiet, "No notes");
    CLI::App* batch = program.add_subcommand("batch", "Work in parts");
    CLI::App* part = batch->add_subcommand("part", "One part");
    int number = 0;
    part->add_option("--number", number, "Which part: 1|2");
    ASSERT_EQ(all_commands(program), (std::vector<const CLI::App*>{batch, part}));
    EXPECT_EQ(command_path(*part), "batch part");
    EXPECT_EQ(manual_file_name(program, *part), "wxl-batch-part.1");
    EXPECT_NE(manual_page(program, *part).find(".TH WXL-BATCH-PART 1"), std::string::npos);
    EXPECT_NE(manual_page(program, *part).find(".B wxl batch part\n"), std::string::npos);
    EXPECT_NE(manual_page(program, *batch).find(".SH COMMANDS\n.TP\n.B wxl\\-batch\\-part(1)\nOne part\n"),
              std::string::npos);
    EXPECT_NE(options_reference(program).find("## wxl batch part\n\nOne part.\n"), std::string::npos);
    EXPECT_NE(options_reference(program).find("| `--number INT` | Which part: 1\\|2 |"), std::string::npos);
    EXPECT_NE(bash_completion(program).find("\"batch\") words=\"part --help --quiet\" first=yes ;;"),
              std::string::npos);
    EXPECT_NE(bash_completion(program).find("\"batch part\") words=\"--help --number --quiet\" ;;"), std::string::npos);
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

TEST(Manual, Page_of_every_command_names_all_options_of_its_help) {
    ScratchFolder folder;
    write_pages(folder);
    std::vector<std::vector<std::string>> commands;
    append_commands({}, commands);
    for (auto command : commands) {
        const std::string page = read_file(folder / ("wxl-" + joined(command, "-") + ".1"));
        command.push_back("--help");
        const Ran help = run_wxl(command);
        EXPECT_EQ(help.Code, 0) << joined(command, " ");
        EXPECT_EQ(help.Err, "") << joined(command, " ");
        for (std::size_t at = help.Out.find("  --"); at != std::string::npos; at = help.Out.find("  --", at + 4)) {
            std::string roff;
            for (const char c : help.Out.substr(at + 2, help.Out.find_first_of(" ,\n", at + 2) - at - 2))
                roff += c == '-' ? std::string("\\-") : std::string(1, c);
            EXPECT_NE(page.find(roff), std::string::npos) << joined(command, " ") << roff;
        }
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
    EXPECT_EQ(completed("wxl import --id info --from", "4"), "--from-crs ");
}

}  // namespace
}  // namespace wxl::cli
