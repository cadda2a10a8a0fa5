#include "tracking_times/timestamps.h"

#include "platform/text.h"

#include <chrono>
#include <string>

namespace wxl::tracking_times {

namespace {

constexpr std::int64_t kSecondsPerDay = 86400;

/// Takes pieces from the front of a text.
class Scanner {
public:
    explicit Scanner(std::string_view text) : m_rest(text) {}

    bool AtEnd() const { return m_rest.empty(); }
    char Peek() const { return m_rest.empty() ? '\0' : m_rest.front(); }
    bool PeekDigit() const { return Peek() >= '0' && Peek() <= '9'; }

    bool Take(char wanted) {
        if (Peek() != wanted) return false;
        m_rest.remove_prefix(1);
        return true;
    }

    /// Exactly `count` digits as a number.
    std::optional<int> Digits(int count) {
        int value = 0;
        for (int i = 0; i < count; ++i) {
            if (!PeekDigit()) return std::nullopt;
            value = value * 10 + (Peek() - '0');
            m_rest.remove_prefix(1);
        }
        return value;
    }

    /// One or two digits as a number, the second only where a digit stands.
    std::optional<int> OneOrTwoDigits() {
        const auto first = Digits(1);
        if (!first || !PeekDigit()) return first;
        return *first * 10 + *Digits(1);
    }

    void SkipDigits() {
        while (PeekDigit()) m_rest.remove_prefix(1);
    }

    void SkipBlanks() {
        while (Peek() == ' ') m_rest.remove_prefix(1);
    }

    std::string_view Rest() const { return m_rest; }

private:
    std::string_view m_rest;
};

/// Days since 1970-01-01; nothing where the calendar has no such day.
std::optional<std::int64_t> days_of(std::optional<int> year, std::optional<int> month, std::optional<int> day) {
    if (!year || !month || !day || *year < 1) return std::nullopt;
    const std::chrono::year_month_day date{std::chrono::year(*year), std::chrono::month(static_cast<unsigned>(*month)),
                                           std::chrono::day(static_cast<unsigned>(*day))};
    if (!date.ok()) return std::nullopt;
    return std::chrono::sys_days(date).time_since_epoch().count();
}

/// DAY.MONTH.YEAR at the front. With points the day always comes first; with slashes nobody knows.
std::optional<std::int64_t> take_date_with_points(Scanner& scanner) {
    const auto day = scanner.OneOrTwoDigits();
    if (!scanner.Take('.')) return std::nullopt;
    const auto month = scanner.OneOrTwoDigits();
    if (!scanner.Take('.')) return std::nullopt;
    return days_of(scanner.Digits(4), month, day);
}

/// YEAR-MONTH-DAY, YEAR/MONTH/DAY or YEARMONTHDAY at the front.
std::optional<std::int64_t> take_date(Scanner& scanner) {
    const auto year = scanner.Digits(4);
    const char separator = scanner.Peek() == '-' || scanner.Peek() == '/' ? scanner.Peek() : '\0';
    if (separator != '\0') scanner.Take(separator);
    const auto month = scanner.Digits(2);
    if (separator != '\0' && !scanner.Take(separator)) return std::nullopt;
    const auto day = scanner.Digits(2);
    return days_of(year, month, day);
}

/// Seconds since midnight of HOUR:MINUTE[:SECOND[.FRACTION]] or HOURMINUTE[SECOND[.FRACTION]] at the front.
std::optional<std::int64_t> take_time_of_day(Scanner& scanner) {
    const auto hour = scanner.OneOrTwoDigits();
    const bool colons = scanner.Take(':');
    const auto minute = scanner.Digits(2);
    if (!hour || !minute) return std::nullopt;
    std::optional<int> second = 0;
    if (colons ? scanner.Take(':') : scanner.PeekDigit()) {
        second = scanner.Digits(2);
        if (scanner.Take('.') || scanner.Take(',')) {
            if (!scanner.PeekDigit()) return std::nullopt;
            scanner.SkipDigits();
        }
    }
    if (!second || *minute > 59 || *second > 60) return std::nullopt;
    if (*hour > 24 || (*hour == 24 && (*minute > 0 || *second > 0))) return std::nullopt;
    return *hour * 3600 + *minute * 60 + *second;
}

/// Seconds east of UTC of "Z", "UTC", "+02:00", "+0200" or "+02" at the front; 0 where none stands.
std::optional<std::int64_t> take_offset(Scanner& scanner) {
    scanner.SkipBlanks();
    if (scanner.Take('Z') || scanner.Take('z')) return 0;
    if (scanner.Rest().substr(0, 3) == "UTC") {
        for (const char letter : std::string_view("UTC")) scanner.Take(letter);
        return 0;
    }
    const bool west = scanner.Peek() == '-';
    if (!scanner.Take('+') && !scanner.Take('-')) return 0;
    const auto hours = scanner.Digits(2);
    std::optional<int> minutes = 0;
    if (scanner.Take(':') || scanner.PeekDigit()) minutes = scanner.Digits(2);
    if (!hours || !minutes || *hours > 18 || *minutes > 59) return std::nullopt;
    const std::int64_t seconds = *hours * 3600 + *minutes * 60;
    return west ? -seconds : seconds;
}

std::chrono::sys_days day_of(std::int64_t seconds) {
    return std::chrono::floor<std::chrono::days>(std::chrono::sys_seconds(std::chrono::seconds(seconds)));
}

/// Appends `value`, not below 0, with zeros in front up to `width` digits.
void append_digits(std::string& text, int value, std::size_t width) {
    const std::string digits = std::to_string(value);
    if (digits.size() < width) text.append(width - digits.size(), '0');
    text += digits;
}

}  // namespace

std::optional<std::int64_t> seconds_from_timestamp(std::string_view text) {
    const std::string_view trimmed = platform::Trim(text);
    const bool points = trimmed.substr(0, 3).find('.') != std::string_view::npos;
    Scanner scanner(trimmed);
    const auto days = points ? take_date_with_points(scanner) : take_date(scanner);
    if (!days) return std::nullopt;
    std::int64_t seconds = *days * kSecondsPerDay;
    if (scanner.Take('T') || scanner.Take('t') || scanner.Take(' ')) {
        scanner.SkipBlanks();
        const auto timeOfDay = take_time_of_day(scanner);
        const auto offset = take_offset(scanner);
        if (!timeOfDay || !offset) return std::nullopt;
        seconds += *timeOfDay - *offset;
    }
    // What follows the solidus of a range may be cut short ("2018-05-09/11"): only the start is read.
    if (!scanner.AtEnd() && scanner.Peek() != '/') return std::nullopt;
    return seconds;
}

std::string date_text(std::int64_t seconds) {
    const std::chrono::year_month_day date(day_of(seconds));
    std::string text;
    append_digits(text, static_cast<int>(date.year()), 4);
    text += '-';
    append_digits(text, static_cast<int>(static_cast<unsigned>(date.month())), 2);
    text += '-';
    append_digits(text, static_cast<int>(static_cast<unsigned>(date.day())), 2);
    return text;
}

std::string time_of_day_text(std::int64_t seconds) {
    const std::int64_t midnight = day_of(seconds).time_since_epoch().count() * kSecondsPerDay;
    const int ofDay = static_cast<int>(seconds - midnight);
    std::string text;
    append_digits(text, ofDay / 3600, 2);
    text += ':';
    append_digits(text, ofDay / 60 % 60, 2);
    text += ':';
    append_digits(text, ofDay % 60, 2);
    return text;
}

std::string instant_text(std::int64_t seconds) {
    return date_text(seconds) + 'T' + time_of_day_text(seconds) + 'Z';
}

}  // namespace wxl::tracking_times
