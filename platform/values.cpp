#include "platform/values.h"

#include "platform/checked.h"
#include "platform/runtime_error.h"
#include "platform/text.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace wxl::platform {
namespace {

/// A long double holds every 64-bit whole number and every double, so that mixed columns keep their order.
long double exact_number(const FieldValue& value) {
    static_assert(std::numeric_limits<long double>::digits >= 64);
    if (const auto* whole = std::get_if<std::int64_t>(&value)) return static_cast<long double>(*whole);
    return static_cast<long double>(std::get<double>(value));
}

/// NaN comes first, so that sorting has one order whatever the values.
bool number_less(long double a, long double b) {
    if (std::isnan(a) || std::isnan(b)) return std::isnan(a) && !std::isnan(b);
    return a < b;
}

}  // namespace

void Extent::Include(const Point& point) {
    XMin = std::min(XMin, point.X);
    YMin = std::min(YMin, point.Y);
    XMax = std::max(XMax, point.X);
    YMax = std::max(YMax, point.Y);
}

Extent bounds_of(std::span<const Point> points) {
    Extent bounds;
    for (const Point& point : points) bounds.Include(point);
    return bounds;
}

bool IsMissing(const FieldValue& value) {
    return std::holds_alternative<std::monostate>(value);
}

std::string ValueText(const FieldValue& value) {
    if (const auto* whole = std::get_if<std::int64_t>(&value)) return std::to_string(*whole);
    if (const auto* number = std::get_if<double>(&value)) return NumberText(*number);
    if (const auto* text = std::get_if<std::string>(&value)) return *text;
    return {};
}

double ValueNumber(const FieldValue& value) {
    if (const auto* whole = std::get_if<std::int64_t>(&value)) return static_cast<double>(*whole);
    if (const auto* number = std::get_if<double>(&value)) return *number;
    if (const auto* text = std::get_if<std::string>(&value)) return NumberFromText(*text);
    Raise(error_number::kTypeMismatch);
}

FieldValue ValueForColumn(const FieldValue& value, FieldType type) {
    if (IsMissing(value)) return value;
    if (type == FieldType::kText || type == FieldType::kDate) return ValueText(value);
    if (type == FieldType::kInteger && std::holds_alternative<std::int64_t>(value)) return value;
    const double number = ValueNumber(value);
    if (!std::isfinite(number)) Raise(error_number::kOverflow);
    if (type == FieldType::kDouble) return number;
    const double whole = round_half_even(number, 0);
    constexpr double kLimit = 9223372036854775808.0;  // 2^63
    if (whole < -kLimit || whole >= kLimit) Raise(error_number::kOverflow);
    return static_cast<std::int64_t>(whole);
}

bool ValueEquals(const FieldValue& cell, const FieldValue& wanted) {
    if (IsMissing(cell) || IsMissing(wanted)) return IsMissing(cell) && IsMissing(wanted);
    if (cell.index() == wanted.index()) return cell == wanted;
    const auto comparable = [](const FieldValue& v) {
        const auto* text = std::get_if<std::string>(&v);
        return text == nullptr || IsNumeric(*text);
    };
    return comparable(cell) && comparable(wanted) && ValueNumber(cell) == ValueNumber(wanted);
}

bool ValueLess(const FieldValue& a, const FieldValue& b) {
    const auto rank = [](const FieldValue& v) {
        return IsMissing(v) ? 0 : std::holds_alternative<std::string>(v) ? 2 : 1;
    };
    if (rank(a) != rank(b)) return rank(a) < rank(b);
    if (rank(a) == 1) return number_less(exact_number(a), exact_number(b));
    return rank(a) == 2 && std::get<std::string>(a) < std::get<std::string>(b);
}

}  // namespace wxl::platform
