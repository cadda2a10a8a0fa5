#include "tracking_times/split_keys.h"

#include "platform/text.h"

#include <algorithm>
#include <array>
#include <chrono>

namespace wxl::tracking_times {

namespace {

constexpr std::array<std::string_view, 4> kSeasonsNorth = {"winter", "spring", "summer", "autumn"};
constexpr std::array<std::string_view, 4> kSeasonsSouth = {"summer", "autumn", "winter", "spring"};

std::chrono::year_month_day date_of(std::int64_t seconds) {
    return std::chrono::floor<std::chrono::days>(std::chrono::sys_seconds(std::chrono::seconds(seconds)));
}

/// 0 from December to February, and so on by three months.
std::int32_t season_of(std::int32_t month) {
    return month % 12 / 3;
}

std::string two_digits(std::int32_t value) {
    return {static_cast<char>('0' + value / 10), static_cast<char>('0' + value % 10)};
}

std::string season_text(const SplitRule& rule, std::int32_t season) {
    return std::string((rule.South ? kSeasonsSouth : kSeasonsNorth).at(static_cast<std::size_t>(season)));
}

}  // namespace

std::optional<SplitBy> split_by_from(std::string_view text) {
    constexpr std::array<std::pair<std::string_view, SplitBy>, 6> kNames = {{{"year", SplitBy::kYear},
                                                                             {"month", SplitBy::kMonth},
                                                                             {"year-month", SplitBy::kYearMonth},
                                                                             {"season", SplitBy::kSeason},
                                                                             {"year-season", SplitBy::kYearSeason},
                                                                             {"day-night", SplitBy::kDayNight}}};
    const auto found = std::find_if(kNames.begin(), kNames.end(),
                                    [&](const auto& name) { return platform::EqualNoCase(name.first, text); });
    if (found == kNames.end()) return std::nullopt;
    return found->second;
}

std::int32_t split_key(const SplitRule& rule, std::int64_t seconds, double longitude, double latitude) {
    if (rule.By == SplitBy::kDayNight) return sun_elevation(longitude, latitude, seconds) >= rule.DayAtOrAbove ? 0 : 1;
    const std::chrono::year_month_day date = date_of(seconds + rule.OffsetSeconds);
    const std::int32_t year = static_cast<int>(date.year());
    const auto month = static_cast<std::int32_t>(static_cast<unsigned>(date.month()));
    switch (rule.By) {
        case SplitBy::kYear:
            return year;
        case SplitBy::kMonth:
            return month;
        case SplitBy::kYearMonth:
            return year * 12 + month - 1;
        case SplitBy::kSeason:
            return season_of(month);
        default:
            return (month == 12 ? year + 1 : year) * 4 + season_of(month);
    }
}

std::string split_key_text(const SplitRule& rule, std::int32_t key) {
    switch (rule.By) {
        case SplitBy::kYear:
            return std::to_string(key);
        case SplitBy::kMonth:
            return two_digits(key);
        case SplitBy::kYearMonth:
            return std::to_string(key / 12) + '-' + two_digits(key % 12 + 1);
        case SplitBy::kSeason:
            return season_text(rule, key);
        case SplitBy::kYearSeason:
            return std::to_string(key / 4) + '-' + season_text(rule, key % 4);
        case SplitBy::kDayNight:
            return key == 0 ? "day" : "night";
    }
    return "";
}

}  // namespace wxl::tracking_times
