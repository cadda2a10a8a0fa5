#include "platform/values.h"

#include "platform/checked.h"
#include "platform/runtime_error.h"
#include "platform/text.h"

#include <algorithm>
#include <cmath>

namespace wxl::platform {

void Extent::Include(const Point& point) {
    XMin = std::min(XMin, point.X);
    YMin = std::min(YMin, point.Y);
    XMax = std::max(XMax, point.X);
    YMax = std::max(YMax, point.Y);
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
        return !text || IsNumeric(*text);
    };
    return comparable(cell) && comparable(wanted) && ValueNumber(cell) == ValueNumber(wanted);
}

bool ValueLess(const FieldValue& a, const FieldValue& b) {
    const auto* wholeA = std::get_if<std::int64_t>(&a);
    const auto* wholeB = std::get_if<std::int64_t>(&b);
    if (wholeA && wholeB) return *wholeA < *wholeB;
    const auto rank = [](const FieldValue& v) {
        return IsMissing(v) ? 0 : std::holds_alternative<std::string>(v) ? 2 : 1;
    };
    if (rank(a) != rank(b)) return rank(a) < rank(b);
    if (rank(a) == 1) return ValueNumber(a) < ValueNumber(b);
    return rank(a) == 2 && std::get<std::string>(a) < std::get<std::string>(b);
}

}  // namespace wxl::platform
