// Numbers and lists of numbers as people type them, and texts in Windows-1252 and UTF-8.

#include "fuzz/fuzz_input.h"
#include "platform/text.h"

#include <cctype>
#include <cmath>
#include <cstdlib>
#include <vector>

namespace {

using namespace wxl;
using fuzz::require;

/// Whether a text is [sign] digits [. digits] or [sign] . digits, with an exponent or without.
bool is_decimal(std::string_view text) {
    std::size_t at = 0;
    const auto digits = [&] {
        const std::size_t start = at;
        while (at < text.size() && text[at] >= '0' && text[at] <= '9') ++at;
        return at - start;
    };
    const auto sign = [&] {
        if (at < text.size() && (text[at] == '+' || text[at] == '-')) ++at;
    };
    sign();
    std::size_t count = digits();
    if (at < text.size() && text[at] == '.') ++at, count += digits();
    if (count == 0) return false;
    if (at < text.size() && (text[at] == 'e' || text[at] == 'E')) {
        ++at;
        sign();
        if (digits() == 0) return false;
    }
    return at == text.size();
}

/// What a text is worth: 0 and its value, or the number of its fault.
std::int32_t worth(std::string_view text, double& value) {
    const std::string trimmed(platform::Trim(text));
    if (!is_decimal(trimmed)) return platform::error_number::kTypeMismatch;
    value = std::strtod(trimmed.c_str(), nullptr);
    return std::isfinite(value) ? 0 : platform::error_number::kOverflow;
}

void check_number(const std::string& text) {
    double expected = 0.0;
    double found = 0.0;
    const std::int32_t fault = worth(text, expected);
    require(fuzz::fault_of([&] { found = platform::NumberFromText(text); }) == fault, "the fault of the text");
    require(platform::IsNumeric(text) == (fault == 0), "numeric where it has a value");
    if (fault != 0) return;
    require(found == expected, "the value of the text");
    const std::string written = platform::NumberText(found);
    double again = 0.0;
    const std::int32_t second = worth(written, again);
    require(second == 0 || std::abs(found) > 1.79769e308, "a written number is a number");
    if (second != 0) return;
    require(std::abs(again - found) <= 1e-14 * std::abs(found), "15 digits");
    require(platform::NumberText(again) == written, "written alike");
}

void check_list(const std::string& text) {
    std::vector<double> expected;
    std::int32_t fault = 0;
    for (const std::string& piece : platform::Split(text, ',')) {
        double value = 0.0;
        if (fault == 0) fault = worth(piece, value);
        expected.push_back(value);
    }
    std::vector<double> found;
    require(fuzz::fault_of([&] { found = platform::NumbersFromText(text); }) == fault, "the fault of the list");
    require(fault != 0 || found == expected, "the values of the list");
}

void check_texts(const std::string& bytes) {
    const std::string utf8 = platform::FromWindows1252(bytes);
    require(platform::IsUtf8(utf8), "UTF-8 from any bytes");
    require(platform::ToWindows1252(utf8).size() <= 4 * bytes.size(), "no more bytes than characters");
    require(platform::FromWindows1252(platform::ToWindows1252(utf8)) ==
                platform::FromWindows1252(
                    platform::ToWindows1252(platform::FromWindows1252(platform::ToWindows1252(utf8)))),
            "texts settle");
    platform::ToWindows1252(bytes);
    const std::string upper = platform::UpperCase(utf8);
    require(platform::IsUtf8(upper) && platform::UpperCase(upper) == upper, "upper case once and for all");
    std::string joined;
    for (const std::string& piece : platform::Split(bytes, ';')) joined += piece + ";";
    require(joined == bytes + ";", "pieces make up the text");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string text(reinterpret_cast<const char*>(data), size);
    const std::string line(text.c_str());  // dialog texts end at a zero
    check_number(line);
    check_list(line);
    check_texts(text);
    return 0;
}
