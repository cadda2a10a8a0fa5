#pragma once
#include <optional>
#include <string_view>

namespace wxl::tracking {

/// The order of day, month and year in a date of three numbers.
enum class DateOrder { kDayMonthYear, kMonthDayYear, kYearMonthDay };

/// "dmy", "mdy" or "ymd" in any case.
std::optional<DateOrder> date_order_from(std::string_view text);

/// Which orders a date of three numbers can have: bit 1 << order for each that gives a day of the calendar. 7 for a
/// text whose order is plain or that is no such date: it decides nothing.
unsigned possible_orders(std::string_view text);

}  // namespace wxl::tracking
