#pragma once
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace wxl::tracking_times {

/// Whole seconds since 1970-01-01 00:00:00 UTC of a timestamp, fractions cut off towards the past; nothing when the
/// text is none.
///
/// Read are "2018-05-09", "2018-05-09 14:59", "2018-05-09T14:59:05.000Z", offsets ("+02:00", "+0200", "+02"), "/"
/// between year, month and day, the form without separators ("20180509T145905Z"), and "9.5.2018 14:59", day first. A
/// time without an offset is UTC, a date without a time its first second. Of a range ("2018-05-09/2018-05-11") the
/// start counts. Years 0001 to 9999; a 60th second and 24:00 are the first second after. Free of the locale.
std::optional<std::int64_t> seconds_from_timestamp(std::string_view text);

/// "2018-05-09" and "14:59:05" in UTC.
std::string date_text(std::int64_t seconds);
std::string time_of_day_text(std::int64_t seconds);

/// "2018-05-09T14:59:05Z" (ISO 8601).
std::string instant_text(std::int64_t seconds);

}  // namespace wxl::tracking_times
