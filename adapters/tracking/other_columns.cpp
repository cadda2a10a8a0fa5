#include "adapters/tracking/other_columns.h"

#include "adapters/tracking/cell_text.h"
#include "adapters/tracking/number_text.h"
#include "platform/text.h"

#include <algorithm>
#include <charconv>

namespace wxl::tracking {

namespace {

constexpr std::size_t kMostDigits = 15;  // that a double keeps

bool is_digit(char c) {
    return c >= '0' && c <= '9';
}

/// The shape of a number.
struct Shape {
    bool IsNumber = false;
    bool IsWhole = false;
    bool HasExponent = false;
    std::size_t Digits = 0;
    std::size_t Decimals = 0;
};

std::size_t count_digits(std::string_view text, std::size_t& at) {
    const std::size_t start = at;
    while (at < text.size() && is_digit(text[at])) ++at;
    return at - start;
}

Shape shape_of(std::string_view cell, bool decimalComma) {
    Shape shape;
    std::size_t at = !cell.empty() && cell[0] == '-' ? 1 : 0;
    const std::size_t sign = at;
    const std::size_t digits = count_digits(cell, at);
    if (digits == 0 || digits > kMostDigits || (digits > 1 && cell[sign] == '0')) return shape;
    shape.Digits = digits + sign;
    shape.IsWhole = at == cell.size();
    if (at < cell.size() && (cell[at] == '.' || (decimalComma && cell[at] == ','))) {
        ++at;
        shape.Decimals = count_digits(cell, at);
        if (shape.Decimals == 0) return shape;
    }
    if (at < cell.size() && (cell[at] == 'e' || cell[at] == 'E')) {
        ++at;
        if (at < cell.size() && (cell[at] == '+' || cell[at] == '-')) ++at;
        const std::size_t exponent = count_digits(cell, at);
        if (exponent == 0 || exponent > 2) return shape;
        shape.HasExponent = true;
    }
    shape.IsNumber = at == cell.size();
    return shape;
}

}  // namespace

void ColumnType::Take(std::string_view cell, bool decimalComma) {
    m_bytes = std::max(m_bytes, cell.size());
    if (is_missing(cell)) return;
    m_filled = true;
    if (!m_number) return;
    const Shape shape = shape_of(cell, decimalComma);
    m_number = shape.IsNumber;
    m_whole = m_whole && shape.IsWhole;
    m_exponent = m_exponent || shape.HasExponent;
    m_digits = std::max(m_digits, shape.Digits);
    m_decimals = std::max(m_decimals, shape.Decimals);
}

void ColumnType::Merge(const ColumnType& other) {
    m_bytes = std::max(m_bytes, other.m_bytes);
    m_filled = m_filled || other.m_filled;
    m_whole = m_whole && other.m_whole;
    m_number = m_number && other.m_number;
    m_exponent = m_exponent || other.m_exponent;
    m_digits = std::max(m_digits, other.m_digits);
    m_decimals = std::max(m_decimals, other.m_decimals);
}

platform::FieldType ColumnType::Type() const {
    if (!m_filled || !m_number) return platform::FieldType::kText;
    return m_whole ? platform::FieldType::kInteger : platform::FieldType::kDouble;
}

platform::FieldValue value_of_cell(std::string_view cell, platform::FieldType type) {
    if (type == platform::FieldType::kText)
        return cell.empty() ? platform::FieldValue() : platform::FieldValue(to_utf8(cell));
    if (is_missing(cell)) return {};
    if (type == platform::FieldType::kInteger) {
        std::int64_t whole = 0;
        const auto [end, error] = std::from_chars(cell.data(), cell.data() + cell.size(), whole);
        return error == std::errc() ? platform::FieldValue(whole) : platform::FieldValue();
    }
    const auto number = number_from_text(cell);
    return number ? platform::FieldValue(*number) : platform::FieldValue();
}

}  // namespace wxl::tracking
