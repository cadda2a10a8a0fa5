#include "adapters/tracking/number_text.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <string>

namespace wxl::tracking {

namespace {

/// Digits, one decimal point and an exponent: all that from_chars knows.
std::optional<double> plain_number(std::string_view text) {
    double value = 0.0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    if (error != std::errc() || end != text.data() + text.size() || !std::isfinite(value)) return std::nullopt;
    return value;
}

bool is_digit(char c) {
    return c >= '0' && c <= '9';
}

/// Length of a mark between thousands at the front: a blank, a no-break space or an apostrophe; 0 for none.
std::size_t group_mark(std::string_view text) {
    constexpr std::array<std::string_view, 6> kMarks = {" ", "'", "\xC2\xA0", "\xE2\x80\xAF", "\xE2\x80\x99", "\xA0"};
    for (const std::string_view mark : kMarks)
        if (text.starts_with(mark)) return mark.size();
    return 0;
}

bool three_digits(std::string_view text) {
    return text.size() >= 3 && is_digit(text[0]) && is_digit(text[1]) && is_digit(text[2]) &&
           (text.size() == 3 || !is_digit(text[3]));
}

/// The text without marks between thousands; nothing where a mark stands elsewhere.
std::optional<std::string> without_group_marks(std::string_view text) {
    std::string bare;
    while (!text.empty()) {
        const std::size_t mark = group_mark(text);
        if (mark > 0 && (bare.empty() || !is_digit(bare.back()) || !three_digits(text.substr(mark))))
            return std::nullopt;
        if (mark == 0) bare += text.front();
        text.remove_prefix(std::max<std::size_t>(mark, 1));
    }
    return bare;
}

/// Takes out all `mark`s when digits stand by three behind each of them.
bool ungroup(std::string& text, char mark) {
    for (std::size_t i = text.find(mark); i != std::string::npos; i = text.find(mark, i)) {
        if (i == 0 || !is_digit(text[i - 1]) || !three_digits(std::string_view(text).substr(i + 1))) return false;
        text.erase(i, 1);
    }
    return true;
}

std::string_view without_sign(std::string_view text, bool& minus) {
    constexpr std::string_view kMinus = "\xE2\x88\x92";
    minus = text.starts_with('-') || text.starts_with(kMinus);
    if (text.starts_with(kMinus)) return text.substr(kMinus.size());
    return text.starts_with('-') || text.starts_with('+') ? text.substr(1) : text;
}

}  // namespace

std::optional<double> number_from_text(std::string_view text) {
    if (const auto plain = plain_number(text)) return plain;
    bool minus = false;
    auto bare = without_group_marks(without_sign(text, minus));
    if (!bare || bare->empty() || (!is_digit(bare->front()) && bare->front() != '.' && bare->front() != ','))
        return std::nullopt;
    const auto points = std::count(bare->begin(), bare->end(), '.');
    const auto commas = std::count(bare->begin(), bare->end(), ',');
    if (points > 0 && commas > 0 && !ungroup(*bare, bare->rfind('.') > bare->rfind(',') ? ',' : '.'))
        return std::nullopt;
    if (commas == 0 && points > 1 && !ungroup(*bare, '.')) return std::nullopt;
    if (points == 0 && commas > 1 && !ungroup(*bare, ',')) return std::nullopt;
    std::replace(bare->begin(), bare->end(), ',', '.');
    const auto value = plain_number(*bare);
    if (!value) return std::nullopt;
    return minus ? -*value : *value;
}

}  // namespace wxl::tracking
