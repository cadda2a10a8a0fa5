#include "platform/text.h"

#include "platform/runtime_error.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <cstdio>
#include <optional>

namespace wxl::platform {
namespace {

// Code points of the bytes 0x80 to 0x9F; 0 where Windows-1252 has none.
constexpr std::array<char32_t, 32> kUpperControls = {0x20AC, 0,      0x201A, 0x0192, 0x201E, 0x2026, 0x2020, 0x2021,
                                                     0x02C6, 0x2030, 0x0160, 0x2039, 0x0152, 0,      0x017D, 0,
                                                     0,      0x2018, 0x2019, 0x201C, 0x201D, 0x2022, 0x2013, 0x2014,
                                                     0x02DC, 0x2122, 0x0161, 0x203A, 0x0153, 0,      0x017E, 0x0178};

void append_utf8(std::string& out, char32_t c) {
    const auto byte = [&](char32_t b) { out += static_cast<char>(static_cast<unsigned char>(b)); };
    if (c < 0x80) {
        byte(c);
    } else if (c < 0x800) {
        byte(0xC0 | (c >> 6));
        byte(0x80 | (c & 0x3F));
    } else if (c < 0x10000) {
        byte(0xE0 | (c >> 12));
        byte(0x80 | ((c >> 6) & 0x3F));
        byte(0x80 | (c & 0x3F));
    } else {
        byte(0xF0 | (c >> 18));
        byte(0x80 | ((c >> 12) & 0x3F));
        byte(0x80 | ((c >> 6) & 0x3F));
        byte(0x80 | (c & 0x3F));
    }
}

/// Next code point and its length in bytes; nothing where the bytes are no UTF-8.
std::optional<std::pair<char32_t, std::size_t>> decode(std::string_view text, std::size_t at) {
    const auto byte = [&](std::size_t i) { return static_cast<unsigned char>(text[i]); };
    const unsigned char first = byte(at);
    if (first < 0x80) return std::pair{static_cast<char32_t>(first), std::size_t{1}};
    const std::size_t length = first >= 0xF0 ? 4 : first >= 0xE0 ? 3 : first >= 0xC2 ? 2 : 0;
    if (length == 0 || first > 0xF4 || at + length > text.size()) return std::nullopt;
    char32_t c = first & (0xFFU >> (length + 1));
    for (std::size_t i = 1; i < length; ++i) {
        if ((byte(at + i) & 0xC0) != 0x80) return std::nullopt;
        c = (c << 6) | (byte(at + i) & 0x3FU);
    }
    static constexpr std::array<char32_t, 5> kSmallest = {0, 0, 0x80, 0x800, 0x10000};
    const bool surrogate = c >= 0xD800 && c <= 0xDFFF;
    if (c < kSmallest[length] || surrogate || c > 0x10FFFF) return std::nullopt;
    return std::pair{c, length};
}

std::optional<unsigned char> byte_of(char32_t c) {
    if (c < 0x80 || (c >= 0xA0 && c <= 0xFF)) return static_cast<unsigned char>(c);
    for (std::size_t i = 0; i < kUpperControls.size(); ++i)
        if (kUpperControls[i] != 0 && kUpperControls[i] == c) return static_cast<unsigned char>(0x80 + i);
    return std::nullopt;
}

char32_t upper(char32_t c) {
    if (c >= U'a' && c <= U'z') return c - 32;
    if (c >= 0xE0 && c <= 0xFE && c != 0xF7) return c - 32;
    if (c == 0xFF) return 0x0178;
    if (c == 0x0161 || c == 0x0153 || c == 0x017E) return c - 1;
    return c;
}

bool is_digit(char c) {
    return c >= '0' && c <= '9';
}

/// Whether a decimal number beyond the range of a double is too small for it (else it is too large): by the power of
/// ten of its first digit that is not zero.
bool is_tiny(std::string_view number) {
    const auto e = number.find_first_of("eE");
    const std::string_view digits = number.substr(0, e);
    const auto first = digits.find_first_of("123456789");
    const auto point = std::min(digits.find('.'), digits.size());
    const auto place = static_cast<double>(point) - static_cast<double>(first);
    // The exponent itself may be beyond any whole number: only its size matters, and a double saturates.
    double exponent = 0.0;
    if (e != std::string_view::npos)
        for (const char c : number.substr(e + 1))
            if (is_digit(c)) exponent = exponent * 10.0 + (c - '0');
    const bool negative = e != std::string_view::npos && number[e + 1] == '-';
    return place + (negative ? -exponent : exponent) < 0.0;
}

/// The number in the text, whole or not at all; infinite when it is beyond a double.
std::optional<double> parse(std::string_view text) {
    text = Trim(text);
    if (!text.empty() && text.front() == '+') {
        text.remove_prefix(1);
        if (!text.empty() && text.front() == '-') return std::nullopt;
    }
    const auto first = std::find_if(text.begin(), text.end(), [](char c) { return c != '-'; });
    if (first == text.end() || first - text.begin() > 1) return std::nullopt;
    // Keeps the words "inf" and "nan" out, which from_chars would take.
    if (!is_digit(*first) && *first != '.') return std::nullopt;
    double value = 0.0;
    const auto [end, code] = std::from_chars(text.data(), text.data() + text.size(), value);
    if (code == std::errc::result_out_of_range) {
        if (end != text.data() + text.size()) return std::nullopt;
        return is_tiny(text) ? 0.0 : HUGE_VAL;
    }
    if (code != std::errc{} || end != text.data() + text.size()) return std::nullopt;
    return value;
}

}  // namespace

std::string NumberText(double value) {
    if (value == 0.0) return "0";
    std::array<char, 40> digits{};
    const auto [end, code] =
        std::to_chars(digits.data(), digits.data() + digits.size(), value, std::chars_format::general, 15);
    std::string text(digits.data(), end);
    std::transform(text.begin(), text.end(), text.begin(), [](char c) { return c == 'e' ? 'E' : c; });
    return text;
}

double NumberFromText(std::string_view text) {
    const auto value = parse(text);
    if (!value) Raise(error_number::kTypeMismatch);
    if (std::isinf(*value)) Raise(error_number::kOverflow);
    return *value;
}

bool IsNumeric(std::string_view text) {
    const auto value = parse(text);
    return value && !std::isinf(*value);
}

std::vector<double> NumbersFromText(std::string_view commaSeparated) {
    std::vector<double> numbers;
    for (const std::string& piece : Split(commaSeparated, ',')) numbers.push_back(NumberFromText(piece));
    return numbers;
}

std::vector<std::string> Split(std::string_view text, char separator) {
    std::vector<std::string> pieces;
    while (true) {
        const auto end = text.find(separator);
        pieces.emplace_back(text.substr(0, end));
        if (end == std::string_view::npos) return pieces;
        text.remove_prefix(end + 1);
    }
}

std::string_view Trim(std::string_view text) {
    const auto first = text.find_first_not_of(" \t");
    if (first == std::string_view::npos) return {};
    return text.substr(first, text.find_last_not_of(" \t") - first + 1);
}

std::string ToWindows1252(std::string_view utf8) {
    std::string bytes;
    bytes.reserve(utf8.size());
    for (std::size_t at = 0; at < utf8.size();) {
        const auto next = decode(utf8, at);
        const auto byte = next ? byte_of(next->first) : std::nullopt;
        bytes += byte ? static_cast<char>(*byte) : '?';
        at += next ? next->second : 1;
    }
    return bytes;
}

std::string FromWindows1252(std::string_view bytes) {
    std::string utf8;
    utf8.reserve(bytes.size());
    for (const char c : bytes) {
        const auto byte = static_cast<unsigned char>(c);
        const bool table = byte >= 0x80 && byte < 0xA0;
        const char32_t mapped = table ? kUpperControls[byte - 0x80U] : byte;
        append_utf8(utf8, mapped == 0 && table ? U'?' : mapped);
    }
    return utf8;
}

std::string UpperCase(std::string_view utf8) {
    std::string result;
    result.reserve(utf8.size());
    for (std::size_t at = 0; at < utf8.size();) {
        const auto next = decode(utf8, at);
        if (next)
            append_utf8(result, upper(next->first));
        else
            result += utf8[at];
        at += next ? next->second : 1;
    }
    return result;
}

bool IsUtf8(std::string_view text) {
    for (std::size_t at = 0; at < text.size();) {
        const auto next = decode(text, at);
        if (!next) return false;
        at += next->second;
    }
    return true;
}

std::string CsvCell(std::string_view text) {
    if (text.find_first_of(",\"\r\n") == std::string_view::npos) return std::string(text);
    std::string quoted = "\"";
    for (const char c : text) quoted += c == '"' ? "\"\"" : std::string(1, c);
    return quoted + '"';
}

bool EqualNoCase(std::string_view a, std::string_view b) {
    const auto lower = [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c + 32) : c; };
    return std::equal(a.begin(), a.end(), b.begin(), b.end(), [&](char x, char y) { return lower(x) == lower(y); });
}

}  // namespace wxl::platform
