#include "adapters/tracking/date_order.h"

#include "adapters/tracking/clock_text.h"
#include "adapters/tracking/date_text.h"
#include "platform/text.h"

#include <array>
#include <cstddef>

namespace wxl::tracking {

std::optional<DateOrder> date_order_from(std::string_view text) {
    if (platform::EqualNoCase(text, "dmy")) return DateOrder::kDayMonthYear;
    if (platform::EqualNoCase(text, "mdy")) return DateOrder::kMonthDayYear;
    if (platform::EqualNoCase(text, "ymd")) return DateOrder::kYearMonthDay;
    return std::nullopt;
}

unsigned possible_orders(std::string_view text) {
    constexpr unsigned kAny = 7;
    Scanner scanner(platform::Trim(text));
    if (starts_with_time_of_day(scanner)) {
        if (!take_time_of_day(scanner)) return kAny;
        skip_hour_word(scanner);
        scanner.SkipBlanks();
        scanner.SkipWords({"on"});
    }
    skip_weekday(scanner);
    std::array<Part, 3> parts{};
    const std::size_t digits = scanner.DigitsAhead();
    if (digits == 6) {
        for (Part& part : parts) part = {scanner.Number(2), 2};
    } else {
        const auto first = take_part(scanner);
        if (!first || std::string_view("-/").find(scanner.Peek()) == std::string_view::npos || scanner.AtEnd())
            return kAny;
        if (is_letter(scanner.Peek(1))) return kAny;
        const auto date = take_numeric_date(scanner, *first);
        if (!date || date->IsYearAndDay || plain_order(*date)) return kAny;
        parts = date->Parts;
    }
    unsigned possible = 0;
    for (const DateOrder order : {DateOrder::kDayMonthYear, DateOrder::kMonthDayYear, DateOrder::kYearMonthDay})
        if (days_in_order(parts, order)) possible |= 1U << static_cast<unsigned>(order);
    return possible;
}

}  // namespace wxl::tracking
