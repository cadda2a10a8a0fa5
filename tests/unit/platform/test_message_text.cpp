#include "platform/message_text.h"

#include <gtest/gtest.h>

namespace wxl::platform {
namespace {

std::string told(const std::string& title, const std::string& text) {
    return PlainText({.Text = text, .Title = title});
}

TEST(PlainText, A_title_that_the_text_begins_with_is_told_once) {
    EXPECT_EQ(told("Warning", "Warning: no points."), "Warning: no points.");
    EXPECT_EQ(told("Warnings", "Warning: the search failed.\r(Animal ID: 3)"),
              "Warning: the search failed.\n(Animal ID: 3)");
    EXPECT_EQ(told("Warnings", "The bandwidth was smaller.\r"), "Warnings: The bandwidth was smaller.");
    EXPECT_EQ(told("Error", "Warning: a"), "Error: Warning: a");
    EXPECT_EQ(told("", "a"), "a");
}

}  // namespace
}  // namespace wxl::platform
