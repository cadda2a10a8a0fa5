#include "platform/runtime_error.h"
#include "platform/text.h"
#include "tests/contract/stage.h"

#include <array>
#include <clocale>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <gmock/gmock.h>
#include <limits>
#include <locale>
#include <random>

using testing::ElementsAre;
using testing::IsEmpty;

namespace wxl::platform {
namespace {

using tests::error_of;

/// The punctuation of a country that writes 1.234,5.
class CommaPunctuation : public std::numpunct<char> {
protected:
    char do_decimal_point() const override { return ','; }
    char do_thousands_sep() const override { return '.'; }
    std::string do_grouping() const override { return "\3"; }
};

/// Puts the program under such a locale for as long as it lives.
class CommaLocale {
public:
    CommaLocale() : m_before(std::locale::global(std::locale(std::locale::classic(), new CommaPunctuation))) {
        for (const char* name : {"de_DE.UTF-8", "de_DE.utf8", "fr_FR.UTF-8", "de_DE"})
            if (std::setlocale(LC_NUMERIC, name) != nullptr) break;
    }
    ~CommaLocale() {
        std::locale::global(m_before);
        std::setlocale(LC_ALL, "C");
    }
    CommaLocale(const CommaLocale&) = delete;
    CommaLocale& operator=(const CommaLocale&) = delete;

private:
    std::locale m_before;
};

/// What the C library writes for "%.15G", with plain zero.
std::string plain_number_text(double value) {
    if (value == 0.0) return "0";
    std::array<char, 64> text{};
    std::snprintf(text.data(), text.size(), "%.15G", value);
    return text.data();
}

}  // namespace

TEST(NumberText, Is_short_and_has_at_most_15_digits) {
    EXPECT_EQ(NumberText(0.0), "0");
    EXPECT_EQ(NumberText(-0.0), "0");
    EXPECT_EQ(NumberText(1.0), "1");
    EXPECT_EQ(NumberText(-2.5), "-2.5");
    EXPECT_EQ(NumberText(0.1), "0.1");
    EXPECT_EQ(NumberText(0.1 + 0.2), "0.3");
    EXPECT_EQ(NumberText(1.0 / 3.0), "0.333333333333333");
    EXPECT_EQ(NumberText(2.0 / 3.0), "0.666666666666667");
    EXPECT_EQ(NumberText(123456.789), "123456.789");
    EXPECT_EQ(NumberText(1000000.0), "1000000");
}

TEST(NumberText, Takes_exponents_of_two_digits_beyond_its_range) {
    EXPECT_EQ(NumberText(0.0001), "0.0001");
    EXPECT_EQ(NumberText(0.00001), "1E-05");
    EXPECT_EQ(NumberText(1.5e-8), "1.5E-08");
    EXPECT_EQ(NumberText(123456789012345.0), "123456789012345");
    EXPECT_EQ(NumberText(1e14), "100000000000000");
    EXPECT_EQ(NumberText(1e15), "1E+15");
    EXPECT_EQ(NumberText(999999999999999.9), "1E+15");
    EXPECT_EQ(NumberText(-3.4e300), "-3.4E+300");
    EXPECT_EQ(NumberText(std::numeric_limits<double>::max()), "1.79769313486232E+308");
    EXPECT_EQ(NumberText(std::numeric_limits<double>::denorm_min()), "4.94065645841247E-324");
}

TEST(NumberText, Agrees_with_the_c_library_on_random_numbers) {
    std::mt19937_64 random(7);
    for (int i = 0; i < 20000; ++i) {
        double value = 0.0;
        const std::uint64_t bits = random();
        std::memcpy(&value, &bits, sizeof value);
        if (!std::isfinite(value)) continue;
        ASSERT_EQ(NumberText(value), plain_number_text(value));
    }
}

TEST(NumberText, Does_not_follow_the_locale) {
    const CommaLocale locale;
    EXPECT_EQ(NumberText(1234567.5), "1234567.5");
    EXPECT_EQ(NumberText(1e-7), "1E-07");
}

TEST(NumberFromText, Takes_decimal_numbers_in_every_form) {
    EXPECT_EQ(NumberFromText("0"), 0.0);
    EXPECT_EQ(NumberFromText("12"), 12.0);
    EXPECT_EQ(NumberFromText("-12.5"), -12.5);
    EXPECT_EQ(NumberFromText("+12.5"), 12.5);
    EXPECT_EQ(NumberFromText(".5"), 0.5);
    EXPECT_EQ(NumberFromText("-.5"), -0.5);
    EXPECT_EQ(NumberFromText("5."), 5.0);
    EXPECT_EQ(NumberFromText("1e3"), 1000.0);
    EXPECT_EQ(NumberFromText("1E+3"), 1000.0);
    EXPECT_EQ(NumberFromText("1E-05"), 0.00001);
    EXPECT_EQ(NumberFromText("007"), 7.0);
    EXPECT_EQ(NumberFromText("0.1"), 0.1);
    EXPECT_EQ(NumberFromText("1.7976931348623157E+308"), std::numeric_limits<double>::max());
    EXPECT_EQ(NumberFromText("123456789012345678901234567890"), 123456789012345678901234567890.0);
}

TEST(NumberFromText, Trims_blanks_and_tabs) {
    EXPECT_EQ(NumberFromText("  42 \t"), 42.0);
    EXPECT_EQ(NumberFromText("\t-1"), -1.0);
}

TEST(NumberFromText, Refuses_all_that_is_not_a_whole_number_text) {
    for (const std::string text : {"",
                                   " ",
                                   "-",
                                   "+",
                                   ".",
                                   "-.",
                                   "e5",
                                   ".e5",
                                   "1e",
                                   "1e+",
                                   "1.2.3",
                                   "1,5",
                                   "1 2",
                                   "--1",
                                   "+-1",
                                   "-+1",
                                   "++1",
                                   "- 1",
                                   "1-",
                                   "12a",
                                   "0x10",
                                   "#1",
                                   "$5",
                                   "inf",
                                   "-inf",
                                   "nan",
                                   "NaN",
                                   "INF",
                                   "1d5",
                                   "1e5.5",
                                   "1f",
                                   "1\n2",
                                   "5%",
                                   "1'000",
                                   "½",
                                   "１",
                                   "1_0",
                                   "infinity",
                                   "1e 5",
                                   "--",
                                   "\xC2\xA0"
                                   "1"}) {
        EXPECT_EQ(error_of([&] { NumberFromText(text); }), 13) << text;
        EXPECT_FALSE(IsNumeric(text)) << text;
    }
    EXPECT_EQ(error_of([&] { NumberFromText(std::string_view("1\0", 2)); }), 13);
}

TEST(NumberFromText, Too_large_is_overflow_and_too_small_is_zero) {
    for (const std::string text : {"1e309", "-1e309", "1e400", "1e99999999999999999999", "0.001e400", "1.8e308",
                                   "000000000000000000000000000000000000000000000000000000000001e400"}) {
        EXPECT_EQ(error_of([&] { NumberFromText(text); }), 6) << text;
        EXPECT_FALSE(IsNumeric(text)) << text;
    }
    EXPECT_EQ(error_of([&] { NumberFromText("0" + std::string(400, '9')); }), 6);
    EXPECT_EQ(error_of([&] { NumberFromText("1" + std::string(400, '0') + "e-50"); }), 6);
    EXPECT_EQ(NumberFromText("1" + std::string(400, '0') + "e-400"), 1.0);
    for (const std::string text : {"1e-400", "-1e-400", "1e-99999999999999999999", "0e999999", "0.0"})
        EXPECT_EQ(NumberFromText(text), 0.0) << text;
    EXPECT_EQ(NumberFromText("0." + std::string(400, '0') + "1"), 0.0);
    EXPECT_EQ(NumberFromText("." + std::string(400, '0') + "1e5"), 0.0);
    EXPECT_EQ(NumberFromText("123e-400"), 0.0);
}

TEST(NumberFromText, Does_not_follow_the_locale) {
    const CommaLocale locale;
    EXPECT_EQ(NumberFromText("1234.5"), 1234.5);
    EXPECT_EQ(error_of([] { NumberFromText("1234,5"); }), 13);
    EXPECT_EQ(error_of([] { NumberFromText("1.234,5"); }), 13);
}

TEST(NumberFromText, Reads_back_what_NumberText_writes) {
    for (const double value : {0.25, -17.0, 1e-300, 1e300, 123456.789012345, 5e-324})
        EXPECT_NEAR(NumberFromText(NumberText(value)) / value, 1.0, 1e-14) << value;
}

TEST(NumbersFromText, Reads_every_piece_of_a_list) {
    EXPECT_THAT(NumbersFromText("95"), ElementsAre(95.0));
    EXPECT_THAT(NumbersFromText("95, 90 ,50.5"), ElementsAre(95.0, 90.0, 50.5));
}

TEST(NumbersFromText, A_piece_that_is_no_number_is_13) {
    for (const std::string text : {"", "95,", ",95", "95,,50", "95;50", "95 50", "a,95"})
        EXPECT_EQ(error_of([&] { NumbersFromText(text); }), 13) << text;
    EXPECT_EQ(error_of([&] { NumbersFromText("1,1e400"); }), 6);
}

TEST(Split, Keeps_every_piece_as_it_is) {
    EXPECT_THAT(Split("", ','), ElementsAre(""));
    EXPECT_THAT(Split("a", ','), ElementsAre("a"));
    EXPECT_THAT(Split(" a, b", ','), ElementsAre(" a", " b"));
    EXPECT_THAT(Split(",", ','), ElementsAre("", ""));
    EXPECT_THAT(Split("a,,b,", ','), ElementsAre("a", "", "b", ""));
}

TEST(Trim, Takes_blanks_and_tabs_from_both_ends_only) {
    EXPECT_EQ(Trim(""), "");
    EXPECT_EQ(Trim(" \t "), "");
    EXPECT_EQ(Trim("\t a b \t"), "a b");
    EXPECT_EQ(Trim("a\n"), "a\n");
}

TEST(Windows1252, Ascii_and_latin_letters_take_one_byte) {
    EXPECT_EQ(ToWindows1252("abc 123"), "abc 123");
    EXPECT_EQ(ToWindows1252("Bär ñ ß ÿ"), "B\xE4r \xF1 \xDF \xFF");
    EXPECT_EQ(FromWindows1252("B\xE4r \xF1 \xDF \xFF"), "Bär ñ ß ÿ");
}

TEST(Windows1252, Signs_of_the_upper_control_range_are_known) {
    EXPECT_EQ(ToWindows1252("€‚ƒ„…†‡ˆ‰Š‹ŒŽ‘’“”•–—˜™š›œžŸ"),
              "\x80\x82\x83\x84\x85\x86\x87\x88\x89\x8A\x8B\x8C\x8E\x91\x92\x93\x94\x95\x96\x97\x98\x99\x9A\x9B\x9C\x9E"
              "\x9F");
}

TEST(Windows1252, Characters_outside_become_one_question_mark_each) {
    EXPECT_EQ(ToWindows1252("Ż東🦌"), "???");
    EXPECT_EQ(ToWindows1252("\xC2\x81"), "?") << "a control character that Windows-1252 has no byte for";
}

TEST(Windows1252, Broken_bytes_become_question_marks) {
    EXPECT_EQ(ToWindows1252("a\xFF"), "a?");
    EXPECT_EQ(ToWindows1252("a\xC3"), "a?");
    EXPECT_EQ(ToWindows1252("\xC3(b"), "?(b");
}

TEST(Windows1252, Every_byte_it_has_comes_back) {
    for (int byte = 1; byte < 256; ++byte) {
        const std::string one(1, static_cast<char>(byte));
        const bool unused = byte == 0x81 || byte == 0x8D || byte == 0x8F || byte == 0x90 || byte == 0x9D;
        EXPECT_EQ(ToWindows1252(FromWindows1252(one)), unused ? "?" : one) << byte;
        EXPECT_TRUE(IsUtf8(FromWindows1252(one))) << byte;
    }
}

TEST(UpperCase, Changes_letters_of_windows_1252_only) {
    EXPECT_EQ(UpperCase("abc XYZ 1_2"), "ABC XYZ 1_2");
    EXPECT_EQ(UpperCase("äöüéñçþÿœšž"), "ÄÖÜÉÑÇÞŸŒŠŽ");
    EXPECT_EQ(UpperCase("ß÷µƒ×"), "ß÷µƒ×");
    EXPECT_EQ(UpperCase("żώ東"), "żώ東");
    EXPECT_EQ(UpperCase("a\xFF"
                        "b"),
              "A\xFF"
              "B")
        << "broken bytes stay";
    EXPECT_EQ(UpperCase(""), "");
}

TEST(IsUtf8, Takes_well_formed_text_only) {
    EXPECT_TRUE(IsUtf8(""));
    EXPECT_TRUE(IsUtf8("abc ä 東 🦌"));
    EXPECT_TRUE(IsUtf8("\xF4\x8F\xBF\xBF")) << "U+10FFFF";
    for (const std::string text : {"\x80", "\xC3", "\xC3(", "\xE6\x9D", "\xF0\x9F\xA6", "\xFF", "\xC0\x80", "\xC1\xBF",
                                   "\xE0\x80\x80", "\xE0\x9F\xBF", "\xF0\x80\x80\x80", "\xF0\x8F\xBF\xBF",
                                   "\xED\xA0\x80", "\xED\xBF\xBF", "\xF4\x90\x80\x80", "\xF5\x80\x80\x80"})
        EXPECT_FALSE(IsUtf8(text)) << testing::PrintToString(text);
}

TEST(EqualNoCase, Looks_past_the_case_of_ascii_letters) {
    EXPECT_TRUE(EqualNoCase("Me_per_Sec", "ME_PER_SEC"));
    EXPECT_TRUE(EqualNoCase("", ""));
    EXPECT_FALSE(EqualNoCase("a", "ab"));
    EXPECT_FALSE(EqualNoCase("ab", "a"));
    EXPECT_FALSE(EqualNoCase("a", "b"));
    EXPECT_FALSE(EqualNoCase("[", "{")) << "neighbours of the letters have no case";
    EXPECT_FALSE(EqualNoCase("ä", "Ä"));
}

}  // namespace wxl::platform
