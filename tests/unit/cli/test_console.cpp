#include "apps/cli/console.h"

#include <gtest/gtest.h>
#include <sstream>

namespace wxl::cli {
namespace {

struct Streams {
    std::ostringstream Out;
    std::ostringstream Err;
};

TEST(Console, Results_go_to_standard_output_and_all_else_to_standard_error) {
    Streams streams;
    Console console(streams.Out, streams.Err, false);
    console.Result("result");
    console.Note("note");
    console.Problem("problem");
    EXPECT_EQ(console.Fail("reason"), 1);
    EXPECT_EQ(streams.Out.str(), "result\n");
    EXPECT_EQ(streams.Err.str(), "note\nproblem\nwxl: reason\n");
}

TEST(Console, Codes_for_the_terminal_become_visible) {
    Streams streams;
    Console console(streams.Out, streams.Err, true);
    console.Result(
        "\x1B[2J\x07"
        "a\tb\nc\x7F");
    console.Problem(
        "wolf\xE2\x80\xAE"
        "fdp.exe \xC2\x9B"
        "31m \xFF \xE2\x82");
    console.Progress(0.5, "reading \x1B[31m");
    EXPECT_EQ(streams.Out.str(),
              "\\x1B[2J\\x07"
              "a\\x09b\\x0Ac\\u007F\n");
    EXPECT_TRUE(streams.Err.str().starts_with("wolf\\u202Efdp.exe \\u009B31m \\xFF \\xE2\\x82\n")) << streams.Err.str();
    EXPECT_NE(streams.Err.str().find("reading \\x1B[31m"), std::string::npos);
}

TEST(Console, Letters_of_all_languages_stay_as_they_are) {
    Streams streams;
    Console console(streams.Out, streams.Err, false);
    console.Result("W\xC3\xB6lfe \xE7\x8B\xBC \xF0\x9F\x90\xBA \xD7\x96\xD7\x90\xD7\x91");
    EXPECT_EQ(streams.Out.str(), "W\xC3\xB6lfe \xE7\x8B\xBC \xF0\x9F\x90\xBA \xD7\x96\xD7\x90\xD7\x91\n");
}

TEST(Console, Quiet_drops_notes_and_progress_but_no_problem) {
    Streams streams;
    Console console(streams.Out, streams.Err, true);
    console.SetQuiet(true);
    console.Note("note");
    console.Progress(0.5, "reading");
    console.Problem("problem");
    console.Result("result");
    EXPECT_EQ(streams.Err.str(), "problem\n");
    EXPECT_EQ(streams.Out.str(), "result\n");
}

TEST(Console, Progress_is_drawn_on_a_terminal_only) {
    Streams streams;
    Console console(streams.Out, streams.Err, false);
    console.Progress(0.5, "reading");
    EXPECT_EQ(streams.Err.str(), "");
}

TEST(Console, Bar_gives_way_to_a_line) {
    Streams streams;
    Console console(streams.Out, streams.Err, true);
    console.Progress(0.5, "reading");
    const std::string bar = "[===============               ]  50 % reading";
    EXPECT_EQ(streams.Err.str(), bar);
    console.Note("note");
    EXPECT_EQ(streams.Err.str(), bar + "\r" + std::string(bar.size(), ' ') + "\rnote\n");
}

TEST(Console, Bar_is_drawn_again_only_when_it_changes_and_takes_any_number) {
    Streams streams;
    Console console(streams.Out, streams.Err, true);
    console.Progress(-1.0, "x");
    console.Progress(0.0001, "x");
    EXPECT_EQ(streams.Err.str(), "[" + std::string(30, ' ') + "]   0 % x");
    console.Progress(7.0, "x");
    console.EndProgress();
    const std::string blanks = "\r" + std::string(40, ' ') + "\r";
    EXPECT_EQ(streams.Err.str(),
              "[" + std::string(30, ' ') + "]   0 % x" + blanks + "[" + std::string(30, '=') + "] 100 % x" + blanks);
}

TEST(Console, Finish_tells_of_a_result_that_was_not_written) {
    Streams streams;
    Console console(streams.Out, streams.Err, false);
    console.Result("result");
    EXPECT_TRUE(console.Finish());
    streams.Out.setstate(std::ios::badbit);
    EXPECT_FALSE(console.Finish());
}

}  // namespace
}  // namespace wxl::cli
