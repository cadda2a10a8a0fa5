#pragma once
#include "adapters/tracking/time_text.h"

#include <array>
#include <cstddef>
#include <optional>
#include <string_view>

namespace wxl::tracking {

/// Whether a number can be a time of that kind. Days of a spreadsheet are 20,000 to 80,000 (1954 to 2119); seconds
/// since 1970 are 1e8 to 4.2e9 (1973 to 2103), milliseconds the same moments, microseconds and nanoseconds those from
/// 9e8 seconds on (1998). Numbers beyond are no times: 0 stands for a missing one, and a counter of hours or seconds
/// starts at some event. kCalendar: none.
bool is_time_number(TimeKind kind, double number);

/// "seconds since 1970"; empty for kCalendar.
std::string_view unit_of_numbers(TimeKind kind);

/// Whether a number is written with an exponent and so few digits that a time since 1970 loses its seconds:
/// "1.52588E+12".
bool is_rounded(std::string_view text);

/// The time that a number stands for, fractions of a second cut off towards the past; nothing for texts, and for
/// numbers that is_time_number refuses.
std::optional<TimeText> time_from_number(std::string_view text, TimeKind kind);

/// Counts numbers by the kind of time they can be.
class TimeNumberCounts {
public:
    void Take(double number);

    /// The kind that at least four fifths of `cells` cells have; nothing: they are no times, or of mixed kinds.
    std::optional<TimeKind> KindOf(std::size_t cells) const;

private:
    std::array<std::size_t, 5> m_counts{};
};

}  // namespace wxl::tracking
