#include "adapters/tracking/dialect.h"

#include <gtest/gtest.h>
#include <string>

namespace wxl::tracking {
namespace {

char separator(std::string_view text) {
    return find_dialect(text).Separator;
}

/// What the table begins with.
std::string start(const std::string& text) {
    const std::string rest = text.substr(find_dialect(text).Start);
    return rest.substr(0, rest.find_first_of("\r\n"));
}

TEST(Dialect, Separator_gives_most_lines_the_same_number_of_cells) {
    EXPECT_EQ(separator("a;b;c\n1,5;2,5;3\n1,5;2;3\n"), ';');
    EXPECT_EQ(separator("a\tb\n1,2\t3,4\n"), '\t');
    EXPECT_EQ(separator("a|b|c\n1|2|3\n"), '|');
    EXPECT_EQ(separator("a,b,c\n\"x;y\",2,3\n"), ',');
    EXPECT_EQ(separator("fish  time   lat\neel 2016 66,1\n"), ' ');
    EXPECT_EQ(separator("name\nRex\n"), ',');
}

TEST(Dialect, Comments_and_blank_lines_stand_before_the_table) {
    EXPECT_EQ(start("# made up\n\n#x,y\nid,lon\na,1\n"), "id,lon");
    EXPECT_EQ(find_dialect("# made up\r\r#x\rid\tlon\ra\t1\r").Line, 4);
    EXPECT_EQ(start("\xEF\xBB\xBF# c\nid,lon\n"), "id,lon");
}

TEST(Dialect, Header_in_a_comment_is_a_header) {
    EXPECT_EQ(start("# made up\n#id,lon,lat\na,1,2\nb,3,4\n"), "id,lon,lat");
    EXPECT_EQ(start("# one, two\nid,lon,lat\na,1,2\n"), "id,lon,lat");
}

TEST(Dialect, Head_of_a_report_stands_before_the_table) {
    std::string text = "Report\nFormat,Condensed,1\nRow,4\n,,,\n";
    text += "time,lat,lon,sats\n";
    for (int i = 0; i < 3; ++i) text += "t,1,2,3\n";
    EXPECT_EQ(start(text), "time,lat,lon,sats");
    EXPECT_EQ(find_dialect(text).Line, 5);
}

TEST(Dialect, Header_may_lack_a_name_for_the_rows) {
    EXPECT_EQ(start("x y\n1 5 6\n2 7 8\n"), "x y");
}

TEST(Dialect, Any_bytes_have_some) {
    EXPECT_EQ(find_dialect("").Start, 0U);
    EXPECT_EQ(find_dialect("\n\n").Start, 0U);
    EXPECT_EQ(find_dialect("#\n#\n").Start, 0U);
    EXPECT_EQ(find_dialect("\"").Separator, ',');
}

}  // namespace
}  // namespace wxl::tracking
