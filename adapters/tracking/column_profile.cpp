#include "adapters/tracking/column_profile.h"

#include "adapters/tracking/cell_text.h"
#include "adapters/tracking/coordinate_text.h"
#include "adapters/tracking/number_text.h"
#include "adapters/tracking/time_text.h"

#include <algorithm>

namespace wxl::tracking {

namespace {

std::size_t decimals_of(std::string_view cell) {
    const std::size_t mark = cell.find_last_of(".,");
    return mark == std::string_view::npos ? 0 : cell.size() - mark - 1;
}

bool is_whole(std::string_view cell) {
    return !cell.empty() && cell.find_first_not_of("0123456789") == std::string_view::npos;
}

/// Whether a number has the digits of hour, minute and second.
bool is_clock(double value) {
    if (value < 0.0 || value >= 240000.0) return false;
    const auto whole = static_cast<int>(value);
    return whole / 100 % 100 < 60 && whole % 100 < 60;
}

/// Whether a text reads as a time in some order of day and month.
bool reads_as_time(std::string_view cell, bool& hasTimeOfDay) {
    for (const DateOrder order : {DateOrder::kDayMonthYear, DateOrder::kMonthDayYear, DateOrder::kYearMonthDay}) {
        const auto time = time_from_text(cell, {TimeKind::kCalendar, order});
        if (!time) continue;
        hasTimeOfDay = time->HasTimeOfDay;
        return true;
    }
    return false;
}

}  // namespace

void ColumnProfile::Take(std::string_view cell) {
    if (is_missing(cell)) return;
    ++m_filled;
    m_distinct.emplace(cell);
    if (const auto number = number_from_text(cell)) TakeNumber(cell, *number);
    TakeText(cell);
}

void ColumnProfile::TakeNumber(std::string_view cell, double value) {
    if (is_placeholder(value)) {
        --m_filled;
        return;
    }
    m_min = m_numbers == 0 ? value : std::min(m_min, value);
    m_max = m_numbers == 0 ? value : std::max(m_max, value);
    ++m_numbers;
    m_timeNumbers.Take(value);
    if (decimals_of(cell) >= 3) ++m_fractions;
    if (is_whole(cell.starts_with('-') ? cell.substr(1) : cell)) ++m_integers;
    if (!is_whole(cell)) return;
    m_longestWhole = std::max(m_longestWhole, cell.size());
    ++m_whole;
    if (is_clock(value)) ++m_clocks;
}

void ColumnProfile::TakeText(std::string_view cell) {
    const bool isFraction = !is_whole(cell) && number_from_text(cell).has_value();
    bool hasTimeOfDay = false;
    if (!isFraction && reads_as_time(cell, hasTimeOfDay)) {
        ++(hasTimeOfDay ? m_fullTimes : m_dates);
    } else if (!isFraction && is_time_of_day(cell)) {
        ++m_timesOfDay;
    }
    if (const char side = hemisphere_from_text(cell); side != '\0') {
        ++(side == 'N' || side == 'S' ? m_northSouth : m_eastWest);
        return;
    }
    const auto coordinate = coordinate_from_text(cell);
    if (!coordinate) return;
    if (coordinate->IsLatitude()) ++m_latitudes;
    if (coordinate->IsLongitude()) ++m_longitudes;
    const bool isParted = coordinate->Hemisphere == '\0' && !number_from_text(cell);
    if (isParted) ++m_parted;
}

}  // namespace wxl::tracking
