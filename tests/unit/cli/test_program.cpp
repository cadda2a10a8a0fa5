#include "tests/unit/cli/captured_console.h"

#include <gtest/gtest.h>

namespace wxl::cli {
namespace {

TEST(Program, Version_is_a_result) {
    const Ran ran = run_wxl({"--version"});
    EXPECT_EQ(ran.Code, 0);
    EXPECT_EQ(ran.Out, "wxl 1.1.0\n");
    EXPECT_EQ(ran.Err, "");
}

TEST(Program, Help_is_a_result) {
    const Ran ran = run_wxl({"--help"});
    EXPECT_EQ(ran.Code, 0);
    EXPECT_EQ(ran.Out.rfind("Home ranges from animal tracking data", 0), 0U);
    EXPECT_EQ(ran.Err, "");
}

TEST(Program, Call_without_a_command_is_wrong) {
    const Ran ran = run_wxl({});
    EXPECT_EQ(ran.Code, 2);
    EXPECT_EQ(ran.Out, "");
    EXPECT_EQ(ran.Err, "wxl: name a command; wxl --help lists them\n");
}

TEST(Program, Unknown_command_is_a_wrong_call) {
    const Ran ran = run_wxl({"frobnicate"});
    EXPECT_EQ(ran.Code, 2);
    EXPECT_EQ(ran.Out, "");
    EXPECT_NE(ran.Err, "");
}

}  // namespace
}  // namespace wxl::cli
