#include "pictures/xml_text.h"

#include <gtest/gtest.h>

namespace wxl::pictures {
namespace {

using namespace std::string_view_literals;

TEST(XmlText, Markup_characters_are_escaped) {
    EXPECT_EQ(XmlText("</title><script>alert('x')&\"y\""),
              "&lt;/title&gt;&lt;script&gt;alert(&#39;x&#39;)&amp;&quot;y&quot;");
    EXPECT_EQ(XmlText("&amp;"), "&amp;amp;");
    EXPECT_EQ(XmlText("]]>"), "]]&gt;");
}

TEST(XmlText, Plain_text_stays) {
    EXPECT_EQ(XmlText("Grönland 5515868 狼 🐺"), "Grönland 5515868 狼 🐺");
    EXPECT_EQ(XmlText(""), "");
}

TEST(XmlText, Line_ends_and_tabs_become_blanks) {
    EXPECT_EQ(XmlText("a\r\nb\tc"), "a  b c");
}

TEST(XmlText, What_XML_does_not_allow_is_replaced) {
    EXPECT_EQ(XmlText("a\0b"sv), "a\uFFFDb");
    EXPECT_EQ(XmlText("\x1B[31m"), "\uFFFD[31m");
    EXPECT_EQ(XmlText("\x7F"), "\uFFFD");
    EXPECT_EQ(XmlText("\xC2\x85"), "\uFFFD");
    EXPECT_EQ(XmlText("\xEF\xBF\xBF"), "\uFFFD");
}

TEST(XmlText, Bytes_that_are_no_UTF8_are_replaced_one_by_one) {
    EXPECT_EQ(XmlText("Gr\xF6nland"), "Gr\uFFFDnland");
    EXPECT_EQ(XmlText("\xE2\x82"), "\uFFFD\uFFFD");
    EXPECT_EQ(XmlText("\xC0\xBC"), "\uFFFD\uFFFD");            // an overlong "<"
    EXPECT_EQ(XmlText("\xED\xA0\x80"), "\uFFFD\uFFFD\uFFFD");  // half of a surrogate pair
}

TEST(XmlText, Characters_that_turn_the_direction_are_left_out) {
    EXPECT_EQ(XmlText("a\u202Eb\u202Cc\u2066d\u2069e"), "abcde");
    EXPECT_EQ(XmlText("a\u2013b\u200Bc"), "a\u2013b\u200Bc");
}

TEST(Shortened, Long_text_ends_with_an_ellipsis) {
    EXPECT_EQ(Shortened("abcdef", 6), "abcdef");
    EXPECT_EQ(Shortened("abcdefg", 6), "abcde…");
    EXPECT_EQ(Shortened("äöüäöüä", 6), "äöüäö…");
    EXPECT_EQ(Shortened("\xF6\xF6\xF6", 2), "\xF6…");
    EXPECT_EQ(Shortened("", 6), "");
}

}  // namespace
}  // namespace wxl::pictures
