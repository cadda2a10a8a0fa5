#pragma once
#include "adapters/tracking/date_order.h"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace wxl::tracking {

/// What a column of times holds.
enum class TimeKind {
    kCalendar,      ///< dates as people write them
    kEpochSeconds,  ///< since 1970-01-01 UTC, fractions allowed; is_time_number tells which numbers can be of a kind
    kEpochMillis,
    kEpochMicros,
    kEpochNanos,
    kSheetDays  ///< day numbers of spreadsheets: days since 1899-12-30, fractions are times of day
};

/// How the texts of a column are read.
struct TimeFormat {
    TimeKind Kind = TimeKind::kCalendar;
    DateOrder Order = DateOrder::kDayMonthYear;
};

/// A time as it stands in a cell.
struct TimeText {
    std::int64_t Seconds = 0;  ///< since 1970-01-01 00:00:00, by the clock of the text or in UTC
    bool IsUtc = false;        ///< an offset, a "Z" or the kind made it UTC; else it is a time of some clock
    bool HasTimeOfDay = false;
    bool HasAbbreviation = false;  ///< a zone is named by letters that several zones share ("CST"): not UTC by them

    friend bool operator==(const TimeText&, const TimeText&) = default;
};

/// Whole seconds of a time, fractions cut off towards the past; nothing when the text is none.
///
/// Dates: 2018-05-09, 2018/5/9, 2018.05.09, 2018-129 (day of the year), 20180509 and 2018129 (years 1800 to 2100 only,
/// lest any number be a date), 180509; three numbers in
/// the order of the format, unless a year of four digits stands first or points part them (then the day stands first);
/// months by name ("13-Feb-2009", "Feb 13, 2009", in English, German, French, Spanish, ...); years of two digits are
/// 1970 to 2069; a day of the week before the date is skipped. Times of day: 14:59, 14:59:05.25, 14h59, 1459, 145905,
/// 2:59 pm, 14h59min05s. Then an offset ("+02:00", "+0200", "UTC+2"), "Z", "UTC" or "GMT"; of other letters
/// (HasAbbreviation) only that they are there. The time may stand before the date, or within it ("Wed May 9 14:59:05
/// 2018"). Chinese, Japanese and Korean dates have their marks behind the numbers. Of a range
/// ("2018-05-09/2018-05-11") the start counts.
std::optional<TimeText> time_from_text(std::string_view text, const TimeFormat& format);

/// Seconds since midnight of a time of day alone, fractions cut off; nothing when the text is none.
std::optional<std::int64_t> time_of_day_from_text(std::string_view text);

/// Whether a text is a time of day, alone or with a zone behind it ("14:59:05 UTC", "14:59 CET").
bool is_time_of_day(std::string_view text);

}  // namespace wxl::tracking
