#pragma once
#include "tracking_times/sun.h"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace wxl::tracking_times {

/// What the fixes of an animal are told apart by.
enum class SplitBy {
    kYear,        ///< "2024"
    kMonth,       ///< "01" to "12", the years together
    kYearMonth,   ///< "2024-01"
    kSeason,      ///< "winter" (December to February), "spring", "summer", "autumn", the years together
    kYearSeason,  ///< "2024-winter"; December counts to the winter of the next year
    kDayNight     ///< "day", "night", by the sun at the fix's own place
};

/// "year", "month", "year-month", "season", "year-season" or "day-night", in any case.
std::optional<SplitBy> split_by_from(std::string_view text);

struct SplitRule {
    SplitBy By = SplitBy::kYear;
    std::int64_t OffsetSeconds = 0;        ///< of the calendar's clock from UTC, east positive
    bool South = false;                    ///< seasons of the southern hemisphere: December begins summer
    double DayAtOrAbove = kCivilTwilight;  ///< elevation of the sun's centre from which it is day, degrees
};

/// The key of a fix as a number, ascending as keys are listed: calendar order, seasons from December, day before night.
/// `longitude` and `latitude` in degrees are looked at for kDayNight alone.
std::int32_t split_key(const SplitRule& rule, std::int64_t seconds, double longitude, double latitude);

/// The key as people read it.
std::string split_key_text(const SplitRule& rule, std::int32_t key);

}  // namespace wxl::tracking_times
