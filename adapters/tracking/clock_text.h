#pragma once
// The pieces of times of day and of zones as people write them. What takes a piece leaves the scanner behind it, and
// anywhere where there is none.

#include "adapters/tracking/text_scanner.h"

#include <cstdint>
#include <optional>
#include <string_view>

namespace wxl::tracking {

constexpr std::int64_t kSecondsPerDay = 86400;

struct Zone {
    bool Given = false;
    std::int64_t Seconds = 0;  ///< east of UTC
    bool IsAbbreviated = false;
};

/// Whether hours, minutes and seconds stand at the front: 05:00:00.
bool starts_with_seconds(const Scanner& scanner);

/// Whether an hour and a colon stand at the front.
bool starts_with_time_of_day(const Scanner& scanner);

/// Seconds since midnight, with the half of the day before them or behind them where there is one.
std::optional<std::int64_t> take_time_of_day(Scanner& scanner);

/// Skips what stands behind a time of day: "13:05 Uhr", "1305 h".
void skip_hour_word(Scanner& scanner);

/// The zone at the front, or none given; nothing for an offset that no place has.
std::optional<Zone> take_zone(Scanner& scanner);

/// Skips what is told of a zone in brackets behind its offset: "[Europe/Amsterdam]", "(CEST)".
void skip_bracket(Scanner& scanner);

}  // namespace wxl::tracking
