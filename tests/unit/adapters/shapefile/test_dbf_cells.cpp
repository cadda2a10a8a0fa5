#include "adapters/shapefile/dbf_cells.h"
#include "platform/runtime_error.h"

#include <gtest/gtest.h>
#include <limits>

namespace wxl::files {
namespace {

using platform::FieldValue;

DbfColumn column(char type, std::size_t width, int decimals = 0) {
    DbfColumn made;
    made.Type = type;
    made.Width = width;
    made.Decimals = decimals;
    return made;
}

std::string cell(const DbfColumn& in, const FieldValue& value, const std::string& encoding = "UTF-8") {
    return dbf_cell(in, value, encoding, "F");
}

std::int32_t error_of(const DbfColumn& in, const FieldValue& value, const std::string& encoding = "UTF-8") {
    try {
        cell(in, value, encoding);
    } catch (const platform::RuntimeError& error) {
        return error.Number;
    }
    return 0;
}

TEST(DbfCells, Doubles_are_the_shortest_text_that_gives_them_again) {
    const DbfColumn doubles = column('N', 24, 15);
    EXPECT_EQ(cell(doubles, 0.1), "                     0.1");
    EXPECT_EQ(cell(doubles, -2.5), "                    -2.5");
    EXPECT_EQ(cell(doubles, 1.0 / 3.0), "      0.3333333333333333");
    EXPECT_EQ(cell(doubles, 1e13), "          10000000000000");
    EXPECT_EQ(cell(doubles, 0.0), "                       0");
    EXPECT_EQ(cell(doubles, -0.0), "                       0");
}

TEST(DbfCells, Doubles_that_do_not_fit_in_plain_digits_get_an_exponent) {
    const DbfColumn doubles = column('N', 24, 15);
    EXPECT_EQ(cell(doubles, 1.2345678901234567e-12), "  1.2345678901234567e-12");
    EXPECT_EQ(cell(doubles, -std::numeric_limits<double>::max()), "-1.7976931348623157e+308");
    EXPECT_EQ(cell(doubles, std::numeric_limits<double>::denorm_min()), "                  5e-324");
}

TEST(DbfCells, A_column_of_few_decimals_rounds_as_it_means) {
    EXPECT_EQ(cell(column('N', 10, 3), 1.23456), "     1.235");
    EXPECT_EQ(cell(column('N', 10, 3), std::int64_t{7}), "         7");
    EXPECT_EQ(cell(column('N', 8, 0), 12345.6), "   12346");
}

TEST(DbfCells, A_column_of_few_decimals_uses_an_exponent_where_plain_digits_do_not_fit) {
    EXPECT_EQ(cell(column('F', 19, 11), 1.5e20), "            1.5e+20");
    EXPECT_EQ(cell(column('N', 7, 2), 1.5e20), "1.5e+20");
}

TEST(DbfCells, A_whole_number_stands_in_a_column_that_has_no_room_for_its_decimals) {
    EXPECT_EQ(cell(column('N', 12, 2), 1234567891.0), "1234567891.0");
    EXPECT_EQ(cell(column('N', 11, 2), 1234567891.0), " 1234567891");
    EXPECT_EQ(cell(column('N', 10, 2), 1234567891.0), "1234567891");
    EXPECT_EQ(cell(column('N', 10, 2), std::int64_t{1234567891}), "1234567891");
    EXPECT_EQ(cell(column('N', 6, 3), 250.5), "250.50");
    EXPECT_EQ(cell(column('N', 5, 3), -0.0001), "-0.00");
    EXPECT_EQ(cell(column('N', 4, 2), 1000.0), "1000");
}

TEST(DbfCells, A_number_that_would_lose_a_digit_is_error_6) {
    EXPECT_EQ(error_of(column('N', 12, 2), 1234567891.25), 6);
    EXPECT_EQ(error_of(column('N', 10, 2), 12345678912.0), 6);
    EXPECT_EQ(error_of(column('N', 10, 2), std::int64_t{12345678912}), 6);
    EXPECT_EQ(error_of(column('N', 9, 2), std::int64_t{1234567891}), 6);
    EXPECT_EQ(error_of(column('N', 17, 2), std::numeric_limits<std::int64_t>::max()), 6);
    EXPECT_EQ(error_of(column('N', 3, 2), 0.25), 6);
    EXPECT_EQ(cell(column('N', 9, 2), 1200000000.0), "  1.2e+09");
}

TEST(DbfCells, A_number_that_does_not_fit_is_error_6) {
    EXPECT_EQ(error_of(column('N', 5, 2), 123456.0), 6);
    EXPECT_EQ(error_of(column('N', 3, 0), std::int64_t{1000}), 6);
    EXPECT_EQ(error_of(column('N', 18, 0), std::numeric_limits<std::int64_t>::min()), 6);
    EXPECT_EQ(error_of(column('N', 24, 15), std::numeric_limits<double>::infinity()), 6);
    EXPECT_EQ(error_of(column('N', 24, 15), std::numeric_limits<double>::quiet_NaN()), 6);
}

TEST(DbfCells, Texts_stand_left_and_are_never_cut) {
    EXPECT_EQ(cell(column('C', 8), "wolf"), "wolf    ");
    EXPECT_EQ(cell(column('C', 4), "wolf"), "wolf");
    EXPECT_EQ(error_of(column('C', 3), "wolf"), 6);
    EXPECT_EQ(error_of(column('C', 3), "Bär"), 6);
}

TEST(DbfCells, Texts_are_written_in_the_encoding_of_the_table) {
    EXPECT_EQ(cell(column('C', 4), "Bär"), "Bär");
    EXPECT_EQ(cell(column('C', 4), "Bär", "ISO-8859-1"), "B\xE4r ");
    EXPECT_EQ(cell(column('C', 4), "Bär", ""), "B\xE4r ");
    EXPECT_EQ(cell(column('C', 2), "€", ""), "\x80 ");
    EXPECT_EQ(error_of(column('C', 20), "Łoś", ""), 5);
    EXPECT_EQ(error_of(column('C', 20), "€", "ISO-8859-1"), 5);
}

TEST(DbfCells, Missing_values_are_blank) {
    EXPECT_EQ(cell(column('N', 5, 2), FieldValue()), "     ");
    EXPECT_EQ(cell(column('C', 3), FieldValue()), "   ");
}

TEST(DbfCells, Dates_are_eight_digits) {
    EXPECT_EQ(cell(column('D', 8), "2026/11/20"), "20261120");
    EXPECT_EQ(cell(column('D', 8), "2026-11-20T10:00:00"), "20261120");
    EXPECT_EQ(error_of(column('D', 8), "soon"), 13);
    EXPECT_EQ(error_of(column('D', 8), 20261120.0), 13);
    EXPECT_EQ(error_of(column('D', 8), std::int64_t{20261120}), 13);
}

TEST(DbfCells, Other_types_are_not_written) {
    EXPECT_EQ(error_of(column('L', 1), "T"), 5);
}

}  // namespace
}  // namespace wxl::files
