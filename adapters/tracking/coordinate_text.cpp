#include "adapters/tracking/coordinate_text.h"

#include "adapters/tracking/cell_text.h"
#include "adapters/tracking/number_text.h"
#include "platform/text.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <string>
#include <vector>

namespace wxl::tracking {

namespace {

constexpr std::string_view kLetters = "NSEWnsew";

bool is_hemisphere(char c) {
    return kLetters.find(c) != std::string_view::npos;
}

char upper(char c) {
    return c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c;
}

/// Takes a hemisphere's letter from either end.
char take_hemisphere(std::string_view& text) {
    char letter = '\0';
    if (!text.empty() && is_hemisphere(text.back())) {
        letter = text.back();
        text.remove_suffix(1);
        // The s of "33d23m59.7s" is seconds.
        if (letter == 's' && text.find_first_of("dm") != std::string_view::npos) letter = '\0';
    } else if (!text.empty() && is_hemisphere(text.front())) {
        letter = text.front();
        text.remove_prefix(1);
    }
    text = platform::Trim(text);
    return upper(letter);
}

/// Length of a mark of degrees, minutes or seconds at the front; 0 for none.
std::size_t mark_length(std::string_view text) {
    constexpr std::array<std::string_view, 22> kMarks = {" ",
                                                         "deg",
                                                         "\xC2\xB0",
                                                         "\xC2\xBA",
                                                         "\xCB\x9A",
                                                         "\xB0",
                                                         "\xBA",
                                                         "'",
                                                         "\"",
                                                         ":",
                                                         "\xC2\xB4",
                                                         "\xB4",
                                                         "\xE2\x80\xB2",
                                                         "\xE2\x80\xB3",
                                                         "\xE2\x80\x99",
                                                         "\xE2\x80\x9D",
                                                         "d",
                                                         "m",
                                                         "\xE2\x80\x98",
                                                         "\xE2\x80\x9C",
                                                         "\x92",
                                                         "s"};
    for (const std::string_view mark : kMarks)
        if (text.starts_with(mark)) return mark.size();
    return 0;
}

/// The parts between marks.
std::vector<std::string> parts_of(std::string_view text) {
    std::vector<std::string> parts;
    bool inPart = false;
    while (!text.empty()) {
        const std::size_t mark = mark_length(text);
        if (mark == 0) {
            if (!inPart) parts.emplace_back();
            parts.back() += text.front();
        }
        inPart = mark == 0;
        text.remove_prefix(std::max<std::size_t>(mark, 1));
    }
    return parts;
}

bool has_degree_sign(std::string_view text) {
    return text.find("\xC2\xB0") != std::string_view::npos || text.find('\xB0') != std::string_view::npos;
}

bool is_whole(const std::string& part) {
    return part.find_first_not_of("0123456789") == std::string::npos;
}

/// Degrees of one to three parts without a sign.
std::optional<double> degrees_of(const std::vector<std::string>& parts) {
    if (parts.empty() || parts.size() > 3) return std::nullopt;
    double degrees = 0.0;
    double unit = 1.0;
    for (std::size_t i = 0; i < parts.size(); ++i, unit *= 60.0) {
        if (i + 1 < parts.size() && !is_whole(parts[i])) return std::nullopt;
        const auto value = number_from_text(parts[i]);
        if (!value || *value < 0.0 || (i > 0 && *value >= 60.0)) return std::nullopt;
        degrees += *value / unit;
    }
    return degrees;
}

}  // namespace

std::optional<CoordinateText> coordinate_from_text(std::string_view text) {
    if (const auto number = number_from_text(text)) return CoordinateText{*number, '\0'};
    std::string_view rest = text;
    const char hemisphere = take_hemisphere(rest);
    const bool minus = !rest.empty() && rest.front() == '-';
    if (minus || (!rest.empty() && rest.front() == '+')) rest.remove_prefix(1);
    if (rest.empty() || (minus && hemisphere != '\0')) return std::nullopt;
    const auto number = number_from_text(rest);
    const std::vector<std::string> parts = parts_of(rest);
    // "2 m" is a length.
    if (!number && parts.size() < 2 && hemisphere == '\0' && !has_degree_sign(rest)) return std::nullopt;
    const auto degrees = number && *number >= 0.0 ? number : degrees_of(parts);
    if (!degrees) return std::nullopt;
    const bool negative = minus || hemisphere == 'S' || hemisphere == 'W';
    return CoordinateText{negative ? -*degrees : *degrees, hemisphere};
}

char hemisphere_from_text(std::string_view text) {
    struct Side {
        std::string_view Word;
        char Letter;
    };
    constexpr std::array<Side, 22> kSides = {
        {{"n", 'N'},     {"north", 'N'}, {"nord", 'N'},  {"norte", 'N'}, {"noord", 'N'}, {"s", 'S'},
         {"south", 'S'}, {"sud", 'S'},   {"sur", 'S'},   {"sul", 'S'},   {"zuid", 'S'},  {"e", 'E'},
         {"east", 'E'},  {"ost", 'E'},   {"est", 'E'},   {"este", 'E'},  {"oost", 'E'},  {"w", 'W'},
         {"west", 'W'},  {"ouest", 'W'}, {"oeste", 'W'}, {"o", 'O'}}};
    constexpr std::size_t kLongest = 5;
    if (text.empty() || text.size() > kLongest) return '\0';
    const std::string bare = bare_name(text);
    const auto* side = std::ranges::find(kSides, std::string_view(bare), &Side::Word);
    return side == kSides.end() ? '\0' : side->Letter;
}

}  // namespace wxl::tracking
