#include "tracking_times/thinning.h"

#include "platform/text.h"

#include <algorithm>
#include <array>

namespace wxl::tracking_times {

namespace {

struct Unit {
    std::string_view Name;
    std::int64_t Seconds;
};

constexpr std::array<Unit, 15> kUnits = {{{"s", 1},
                                          {"sec", 1},
                                          {"second", 1},
                                          {"seconds", 1},
                                          {"m", 60},
                                          {"min", 60},
                                          {"minute", 60},
                                          {"minutes", 60},
                                          {"h", 3600},
                                          {"hour", 3600},
                                          {"hours", 3600},
                                          {"d", 86400},
                                          {"day", 86400},
                                          {"days", 86400},
                                          {"w", 604800}}};

constexpr std::int64_t kLongest = 36525LL * 86400;  // a century

bool is_digit(char c) {
    return c >= '0' && c <= '9';
}
bool is_letter(char c) {
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z');
}

std::optional<std::int64_t> seconds_of_unit(std::string_view name) {
    if (platform::EqualNoCase(name, "week") || platform::EqualNoCase(name, "weeks")) return 604800;
    const auto unit = std::find_if(kUnits.begin(), kUnits.end(),
                                   [&](const Unit& one) { return platform::EqualNoCase(one.Name, name); });
    if (unit == kUnits.end()) return std::nullopt;
    return unit->Seconds;
}

void skip_blanks(std::string_view& text) {
    while (!text.empty() && text.front() == ' ') text.remove_prefix(1);
}

template <class Is>
std::string_view take_while(std::string_view& text, Is is) {
    std::size_t length = 0;
    while (length < text.size() && is(text[length])) ++length;
    const std::string_view taken = text.substr(0, length);
    text.remove_prefix(length);
    return taken;
}

/// Takes a number and its unit from the front.
std::optional<std::int64_t> take_part(std::string_view& text) {
    const std::string_view digits = take_while(text, is_digit);
    if (digits.empty() || digits.size() > 10) return std::nullopt;
    std::int64_t number = 0;
    for (const char digit : digits) number = number * 10 + (digit - '0');
    skip_blanks(text);
    const auto unit = seconds_of_unit(take_while(text, is_letter));
    if (!unit || number > kLongest / *unit) return std::nullopt;
    skip_blanks(text);
    return number * *unit;
}

}  // namespace

bool Thinner::Keeps(std::int64_t seconds) {
    if (!m_start) {
        m_start = seconds;
        // A tolerance as long as an interval would put the first fix itself into a later one.
        m_interval = m_rule.Tolerance / m_rule.Every;
        return true;
    }
    const std::int64_t interval = (seconds - *m_start + m_rule.Tolerance) / m_rule.Every;
    if (interval == m_interval) return false;
    m_interval = interval;
    return true;
}

std::optional<std::int64_t> seconds_from_duration(std::string_view text) {
    std::string_view rest = platform::Trim(text);
    std::int64_t seconds = 0;
    while (!rest.empty()) {
        const auto part = take_part(rest);
        if (!part || seconds + *part > kLongest) return std::nullopt;
        seconds += *part;
    }
    if (seconds == 0) return std::nullopt;
    return seconds;
}

}  // namespace wxl::tracking_times
