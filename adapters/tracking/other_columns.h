#pragma once
#include "platform/values.h"

#include <cstdint>
#include <string>
#include <string_view>

namespace wxl::tracking {

/// Finds out, cell by cell, what a column can be kept as: whole numbers, numbers or text. Numbers with zeros in front
/// ("007") are text.
class ColumnType {
public:
    /// Takes the next cell, trimmed. `decimalComma`: "1,5" is a number.
    void Take(std::string_view cell, bool decimalComma);

    /// Takes what another part of the same column came to.
    void Merge(const ColumnType& other);

    bool IsEmpty() const { return !m_filled; }
    platform::FieldType Type() const;
    std::size_t Bytes() const { return m_bytes; }    ///< of the longest cell as UTF-8
    std::size_t Digits() const { return m_digits; }  ///< most digits before the point, with the sign
    std::size_t Decimals() const { return m_decimals; }
    bool HasExponent() const { return m_exponent; }

private:
    bool m_filled = false;
    bool m_whole = true;
    bool m_number = true;
    bool m_exponent = false;
    std::size_t m_bytes = 0;
    std::size_t m_digits = 0;
    std::size_t m_decimals = 0;
};

/// The cell as a value of that type; missing where it says nothing. Texts that are no UTF-8 are taken for Windows-1252.
platform::FieldValue value_of_cell(std::string_view cell, platform::FieldType type);

}  // namespace wxl::tracking
