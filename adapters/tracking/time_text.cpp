#include "adapters/tracking/time_text.h"

#include "adapters/tracking/clock_text.h"
#include "adapters/tracking/date_text.h"
#include "adapters/tracking/time_numbers.h"
#include "platform/text.h"

namespace wxl::tracking {

namespace {

/// What stands between a date and a time of day.
bool take_joint(Scanner& scanner) {
    if (scanner.Peek() == 'T' || scanner.Peek() == 't' || scanner.Peek() == '_') {
        scanner.Skip(1);
        return true;
    }
    bool any = false;
    while (scanner.TakeAny(" ,")) any = true;
    if (any)
        scanner.SkipWords(
            {"at", "um", "om", "kl", "klo", "kello", "a", "las", "à", "às", "alle", "ore", "godz", "o", "в"});
    if (any) return true;
    // 2018/05/09-14:59:05; less than that may be the offset of a date.
    Scanner ahead = scanner;
    if (!ahead.TakeAny("-:") || !starts_with_seconds(ahead)) return false;
    scanner = ahead;
    return true;
}

bool at_end(Scanner& scanner) {
    scanner.SkipBlanks();
    return scanner.AtEnd() || scanner.Peek() == '/';
}

TimeText time_of(std::int64_t days, std::int64_t ofDay, const Zone& zone) {
    return {days * kSecondsPerDay + ofDay - zone.Seconds, zone.Given, true, zone.IsAbbreviated};
}

/// "14:59:05 9-May-2018"
std::optional<TimeText> time_before_date(Scanner scanner, DateOrder order) {
    const auto ofDay = take_time_of_day(scanner);
    skip_hour_word(scanner);
    if (!ofDay || !scanner.TakeAny(" ,")) return std::nullopt;
    scanner.SkipBlanks();
    scanner.SkipWords({"on"});
    const auto days = take_date(scanner, order);
    if (!days) return std::nullopt;
    const auto zone = take_zone(scanner);
    if (!zone || !at_end(scanner)) return std::nullopt;
    return time_of(*days, *ofDay, *zone);
}

/// "Wed May  9 14:59:05 2018", as C prints times, and "Wed May  9 14:59:05 UTC 2018".
std::optional<TimeText> time_within_date(Scanner scanner) {
    skip_weekday(scanner);
    const auto month = month_named(scanner.Word());
    scanner.SkipBlanks();
    const auto day = take_part(scanner);
    scanner.SkipBlanks();
    if (!month || !day || !starts_with_time_of_day(scanner)) return std::nullopt;
    const auto ofDay = take_time_of_day(scanner);
    const auto zone = take_zone(scanner);
    scanner.SkipBlanks();
    const auto year = take_part(scanner);
    if (!ofDay || !zone || !year || year->Digits != 4 || !at_end(scanner)) return std::nullopt;
    const auto days = days_of(year->Value, *month, day->Value);
    if (!days) return std::nullopt;
    return time_of(*days, *ofDay, *zone);
}

std::optional<TimeText> calendar_time(std::string_view text, DateOrder order) {
    Scanner scanner(text);
    if (starts_with_time_of_day(scanner)) return time_before_date(scanner, order);
    if (is_letter(scanner.Peek()))
        if (const auto time = time_within_date(scanner)) return time;
    // 201805091459 and 20180509145905 are a date and a time of day.
    const std::size_t packed = scanner.DigitsAhead();
    const bool joined = packed == 12 || packed == 14;
    Scanner date(joined ? text.substr(0, 8) : text);
    const auto days = take_date(date, order);
    if (!days || (joined && !date.AtEnd())) return std::nullopt;
    if (joined) {
        scanner.Skip(8);
    } else {
        scanner = date;
        if (at_end(scanner)) return TimeText{*days * kSecondsPerDay, false, false, false};
        scanner = date;
        // The mark of the day parts a date from the time behind it.
        const char before = text[text.size() - scanner.Rest().size() - 1];
        const bool isMarked = is_letter(before) || before == ' ';
        if (!take_joint(scanner) && !isMarked) return std::nullopt;
    }
    const auto ofDay = take_time_of_day(scanner);
    if (!ofDay) return std::nullopt;
    skip_hour_word(scanner);
    const auto zone = take_zone(scanner);
    if (!zone) return std::nullopt;
    if (zone->Given) skip_bracket(scanner);
    if (!at_end(scanner)) return std::nullopt;
    return time_of(*days, *ofDay, *zone);
}

}  // namespace

std::optional<TimeText> time_from_text(std::string_view text, const TimeFormat& format) {
    const std::string_view trimmed = platform::Trim(text);
    return format.Kind == TimeKind::kCalendar ? calendar_time(trimmed, format.Order)
                                              : time_from_number(trimmed, format.Kind);
}

std::optional<std::int64_t> time_of_day_from_text(std::string_view text) {
    Scanner scanner(platform::Trim(text));
    const auto seconds = take_time_of_day(scanner);
    skip_hour_word(scanner);
    if (!seconds || !scanner.AtEnd()) return std::nullopt;
    return seconds;
}

bool is_time_of_day(std::string_view text) {
    Scanner scanner(platform::Trim(text));
    if (!take_time_of_day(scanner)) return false;
    skip_hour_word(scanner);
    if (scanner.AtEnd()) return true;
    // "10.5 KM" is a length.
    if (text.find(':') == std::string_view::npos || !take_zone(scanner)) return false;
    skip_bracket(scanner);
    scanner.SkipBlanks();
    return scanner.AtEnd();
}

}  // namespace wxl::tracking
