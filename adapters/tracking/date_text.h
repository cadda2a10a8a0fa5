#pragma once
// The pieces of dates as people write them. What takes a piece leaves the scanner behind it, and anywhere where there
// is none. Days are days since 1970-01-01.

#include "adapters/tracking/date_order.h"
#include "adapters/tracking/text_scanner.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string_view>

namespace wxl::tracking {

/// A number of a date and the count of its digits.
struct Part {
    int Value;
    std::size_t Digits;
};

/// Three numbers with a separator between them, or the year and its day.
struct NumericDate {
    std::array<Part, 3> Parts{};
    char Separator = '\0';
    bool IsYearAndDay = false;
};

/// The day of a date; nothing for one that no calendar has.
std::optional<std::int64_t> days_of(int year, int month, int day);

/// Three numbers in an order; the year has two or four digits, the others one or two.
std::optional<std::int64_t> days_in_order(const std::array<Part, 3>& parts, DateOrder order);

/// 1 to 12 for a name of a month, whole or shortened, in one of many languages.
std::optional<int> month_named(std::string_view word);

void skip_weekday(Scanner& scanner);

/// A number of one to four digits.
std::optional<Part> take_part(Scanner& scanner);

/// What follows the first number of a date.
std::optional<NumericDate> take_numeric_date(Scanner& scanner, const Part& first);

/// The order that the text itself shows.
std::optional<DateOrder> plain_order(const NumericDate& date);

/// A whole date; its numbers are in `order` where nothing else tells theirs.
std::optional<std::int64_t> take_date(Scanner& scanner, DateOrder order);

}  // namespace wxl::tracking
