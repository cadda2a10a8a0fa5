#include "adapters/tracking/clock_text.h"

#include "adapters/tracking/date_text.h"
#include "platform/text.h"

#include <algorithm>
#include <cstddef>

namespace wxl::tracking {

namespace {

/// Hour 1 to 12 with its half of the day.
std::optional<int> hour_of_half(Scanner& scanner, int hour) {
    Scanner ahead = scanner;
    ahead.SkipBlanks();
    // Greek: before and after noon.
    for (const std::string_view mark : {"πμ", "π.μ.", "μμ", "μ.μ."}) {
        if (!ahead.Rest().starts_with(mark)) continue;
        if (hour < 1 || hour > 12) return std::nullopt;
        ahead.Skip(mark.size());
        scanner = ahead;
        return hour % 12 + (mark.starts_with("μ") ? 12 : 0);
    }
    const bool after = platform::EqualNoCase(ahead.Rest().substr(0, 1), "p");
    const bool before = platform::EqualNoCase(ahead.Rest().substr(0, 1), "a");
    if (!after && !before) return hour;
    ahead.Skip(1);
    if (ahead.Take('.')) ahead.Take(' ');
    if (!ahead.TakeAny("mM")) return hour;
    ahead.Take('.');
    if (hour < 1 || hour > 12) return std::nullopt;
    scanner = ahead;
    return hour % 12 + (after ? 12 : 0);
}

/// Seconds and what is left of one.
std::optional<int> take_seconds(Scanner& scanner) {
    const std::size_t digits = scanner.DigitsAhead();
    if (digits < 1 || digits > 2) return std::nullopt;
    const int seconds = scanner.Number(digits);
    Scanner ahead = scanner;
    // Some loggers part thousandths by a colon.
    const bool colon = ahead.Peek() == ':' && Scanner(ahead.Rest().substr(1)).DigitsAhead() == 3;
    if ((colon && ahead.Take(':')) || (ahead.TakeAny(".,") && ahead.DigitsAhead() > 0)) {
        ahead.Skip(ahead.DigitsAhead());
        scanner = ahead;
    }
    return seconds;
}

struct TimeOfDay {
    int Hour = 0;
    int Minute = 0;
    int Second = 0;
};

/// 1459, 145905 or 145905.25: digits alone, three of them with the hour in one.
std::optional<TimeOfDay> take_packed_time(Scanner& scanner, std::size_t digits) {
    TimeOfDay time;
    time.Hour = scanner.Number(digits % 2 == 1 ? 1 : 2);
    time.Minute = scanner.Number(2);
    if (digits < 5) return time;
    const auto seconds = take_seconds(scanner);
    if (!seconds) return std::nullopt;
    time.Second = *seconds;
    return time;
}

/// The "m", "min" or ":" of 14h59min05s.
bool take_minute_mark(Scanner& scanner) {
    if (!scanner.TakeAny("m:")) return false;
    if (scanner.Rest().starts_with("in")) scanner.Skip(2);
    scanner.SkipBlanks();
    return true;
}

bool take_hour_mark(Scanner& scanner) {
    return scanner.TakeMark({"时", "時", "시"});
}

/// Hour, minute and second with their marks in Chinese, Japanese or Korean.
std::optional<TimeOfDay> take_marked_time(Scanner& scanner) {
    TimeOfDay time;
    time.Hour = scanner.Number(scanner.DigitsAhead());
    take_hour_mark(scanner);
    if (scanner.AtEnd()) return time;
    const auto minute = take_part(scanner);
    if (!minute || !scanner.TakeMark({"分", "분"})) return std::nullopt;
    time.Minute = minute->Value;
    if (scanner.AtEnd()) return time;
    const auto second = take_seconds(scanner);
    if (!second || !scanner.TakeMark({"秒", "초"})) return std::nullopt;
    time.Second = *second;
    return time;
}

std::optional<TimeOfDay> take_parted_time(Scanner& scanner) {
    TimeOfDay time;
    time.Hour = scanner.Number(scanner.DigitsAhead());
    const char mark = scanner.Peek();
    scanner.Skip(1);
    const bool hourMark = mark == 'h' || mark == 'H';
    const std::size_t digits = scanner.DigitsAhead();
    if (hourMark && digits == 0) return time;
    if (digits < 1 || digits > 2) return std::nullopt;
    time.Minute = scanner.Number(digits);
    const bool more = hourMark ? take_minute_mark(scanner) && scanner.DigitsAhead() > 0 : scanner.Take(mark);
    if (!more) return time;
    const auto seconds = take_seconds(scanner);
    if (!seconds) return std::nullopt;
    if (hourMark) scanner.TakeAny("s");
    time.Second = *seconds;
    return time;
}

/// Seconds since midnight.
std::optional<std::int64_t> take_clock(Scanner& scanner) {
    const std::size_t digits = scanner.DigitsAhead();
    if (digits == 0 || digits > 6) return std::nullopt;
    const char mark = scanner.Peek(digits);
    const bool parted = digits <= 2 && (mark == ':' || mark == '.' || mark == 'h' || mark == 'H');
    std::optional<TimeOfDay> time;
    if (parted) {
        time = take_parted_time(scanner);
    } else if (digits <= 2 && static_cast<unsigned char>(mark) >= 0x80) {
        Scanner ahead = scanner;
        ahead.Skip(digits);
        if (!take_hour_mark(ahead)) return std::nullopt;
        time = take_marked_time(scanner);
    } else if (digits >= 3) {
        time = take_packed_time(scanner, digits);
    } else {
        time = TimeOfDay{scanner.Number(digits), 0, 0};
        const std::size_t before = scanner.Rest().size();
        const auto hour = hour_of_half(scanner, time->Hour);
        if (!hour || scanner.Rest().size() == before) return std::nullopt;  // "5" alone is no time, "5 pm" is
        time->Hour = *hour;
        return time->Hour * 3600;
    }
    if (!time) return std::nullopt;
    const auto hour = hour_of_half(scanner, time->Hour);
    if (!hour || time->Minute > 59 || time->Second > 60) return std::nullopt;
    if (*hour > 24 || (*hour == 24 && (time->Minute > 0 || time->Second > 0))) return std::nullopt;
    return *hour * 3600 + time->Minute * 60 + time->Second;
}

/// The same behind the half of the day in Chinese, Japanese or Korean.
std::optional<std::int64_t> take_clock_of_half(Scanner& scanner, bool isAfternoon) {
    constexpr std::int64_t kHalf = kSecondsPerDay / 2;
    const auto seconds = take_clock(scanner);
    if (!seconds || *seconds >= kHalf + 3600) return std::nullopt;
    return *seconds % kHalf + (isAfternoon ? kHalf : 0);
}

/// "CET", "EST": letters that stand for several zones.
bool take_abbreviation(Scanner& scanner) {
    std::size_t length = 0;
    while (scanner.Peek(length) >= 'A' && scanner.Peek(length) <= 'Z') ++length;
    if (length < 2 || length > 5 || is_letter(scanner.Peek(length)) || is_digit(scanner.Peek(length))) return false;
    scanner.Skip(length);
    return true;
}

/// Offset after a sign: +02:00, +0200, +02, +2.
std::optional<Zone> take_signed_offset(Scanner& scanner) {
    const bool west = scanner.Peek() == '-';
    if (!scanner.TakeAny("+-")) return std::nullopt;
    const std::size_t digits = scanner.DigitsAhead();
    if (digits == 0 || digits == 3 || digits > 4) return std::nullopt;
    const int hours = scanner.Number(std::min<std::size_t>(digits, 2));
    int minutes = 0;
    const bool colon = scanner.Take(':');
    if (colon && scanner.DigitsAhead() != 2) return std::nullopt;
    if (colon || digits == 4) minutes = scanner.Number(2);
    if (hours > 18 || minutes > 59) return std::nullopt;
    const std::int64_t seconds = hours * 3600 + minutes * 60;
    return Zone{true, west ? -seconds : seconds};
}

}  // namespace

void skip_hour_word(Scanner& scanner) {
    Scanner ahead = scanner;
    ahead.SkipBlanks();
    for (const std::string_view word : {"Uhr", "uur", "hrs", "hr", "hs", "h"}) {
        if (!ahead.TakeWord(word)) continue;
        scanner = ahead;
        return;
    }
}

std::optional<std::int64_t> take_time_of_day(Scanner& scanner) {
    if (scanner.TakeMark({"上午", "午前", "오전"})) return take_clock_of_half(scanner, false);
    if (scanner.TakeMark({"下午", "午後", "午后", "오후"})) return take_clock_of_half(scanner, true);
    return take_clock(scanner);
}

void skip_bracket(Scanner& scanner) {
    Scanner ahead = scanner;
    ahead.SkipBlanks();
    if (ahead.Peek() != '[' && ahead.Peek() != '(') return;
    const char end = ahead.Peek() == '[' ? ']' : ')';
    const std::size_t length = ahead.Rest().find(end);
    if (length == std::string_view::npos) return;
    ahead.Skip(length + 1);
    scanner = ahead;
}

std::optional<Zone> take_zone(Scanner& scanner) {
    scanner.SkipBlanks();
    if (scanner.TakeWord("Z")) return Zone{true, 0};
    if (scanner.TakeMark({"(UTC)", "[UTC]", "(GMT)"})) return Zone{true, 0};
    for (const std::string_view name : {"UTC", "GMT"}) {
        if (!scanner.TakeWord(name)) continue;
        scanner.SkipBlanks();
        if (scanner.Peek() == '+' || scanner.Peek() == '-') return take_signed_offset(scanner);
        return Zone{true, 0};
    }
    if (scanner.Peek() == '+' || scanner.Peek() == '-') return take_signed_offset(scanner);
    if (take_abbreviation(scanner)) return Zone{false, 0, true};
    return Zone{};
}

bool starts_with_seconds(const Scanner& scanner) {
    Scanner ahead = scanner;
    for (const char mark : {':', ':', '\0'}) {
        const std::size_t digits = ahead.DigitsAhead();
        if (digits < 1 || digits > 2) return false;
        ahead.Skip(digits);
        if (mark != '\0' && !ahead.Take(mark)) return false;
    }
    return true;
}

bool starts_with_time_of_day(const Scanner& scanner) {
    if (scanner.Peek(2) != ':' && scanner.Peek(1) != ':') return false;
    const std::size_t digits = scanner.DigitsAhead();
    return (digits == 1 || digits == 2) && scanner.Peek(digits) == ':';
}

}  // namespace wxl::tracking
