#include "adapters/shapefile/dbf_cells.h"

#include "platform/runtime_error.h"
#include "platform/text.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <cpl_conv.h>
#include <cpl_error.h>
#include <cpl_string.h>
#include <memory>
#include <optional>

namespace wxl::files {

using platform::FieldType;
using platform::FieldValue;
namespace error_number = platform::error_number;

namespace {

constexpr int kDecimalsOfDoubles = 15;
constexpr std::size_t kLongestNumber = 400;  // of any double with up to 15 decimals

struct CplFree {
    void operator()(char* text) const { CPLFree(text); }
};

std::string recode(const std::string& text, const char* from, const char* to) {
    const std::unique_ptr<char, CplFree> recoded(CPLRecode(text.c_str(), from, to));
    return recoded ? recoded.get() : "";
}

/// `format...` as to_chars takes them; nothing when the text is wider than `width`.
template <class... Format>
std::optional<std::string> number_text(double value, std::size_t width, Format... format) {
    std::array<char, 512> buffer;
    const auto [end, fault] = std::to_chars(buffer.data(), buffer.data() + buffer.size(), value, format...);
    if (fault != std::errc() || static_cast<std::size_t>(end - buffer.data()) > width) return std::nullopt;
    return std::string(buffer.data(), end);
}

/// The text without as many zeros at the end of its decimals as make it fit, and without the point when none is left.
std::optional<std::string> with_fewer_zeros(std::string text, std::size_t width) {
    const bool hasDecimals = text.find('.') != std::string::npos;
    while (hasDecimals && text.size() > width && text.back() == '0') text.pop_back();
    if (text.back() == '.') text.pop_back();
    return text.size() > width ? std::nullopt : std::optional(text);
}

std::optional<std::string> double_text(double value, const DbfColumn& column) {
    if (column.Decimals >= kDecimalsOfDoubles) {
        if (auto plain = number_text(value, column.Width, std::chars_format::fixed)) return plain;
        if (auto exponent = number_text(value, column.Width, std::chars_format::scientific)) return exponent;
    }
    const auto rounded = number_text(value, kLongestNumber, std::chars_format::fixed, column.Decimals);
    if (!rounded) return std::nullopt;
    if (auto plain = with_fewer_zeros(*rounded, column.Width)) return plain;
    if (column.Decimals == 0) return std::nullopt;
    double held = 0.0;
    std::from_chars(rounded->data(), rounded->data() + rounded->size(), held);
    return number_text(held, column.Width, std::chars_format::scientific);
}

std::optional<std::string> numeric_text(const FieldValue& value, const DbfColumn& column) {
    const auto* whole = std::get_if<std::int64_t>(&value);
    if (!whole) {
        const double number = std::get<double>(platform::ValueForColumn(value, FieldType::kDouble));
        return double_text(number == 0.0 ? 0.0 : number, column);
    }
    std::string text = std::to_string(*whole);
    if (text.size() <= column.Width) return text;
    constexpr std::int64_t kExact = std::int64_t{1} << 53;  // doubles hold all whole numbers up to here
    if (*whole > kExact || *whole < -kExact) return std::nullopt;
    return double_text(static_cast<double>(*whole), column);
}

std::string date_text(const FieldValue& value) {
    if (!std::holds_alternative<std::string>(value)) platform::Raise(error_number::kTypeMismatch);
    std::string digits;
    for (const char c : platform::ValueText(value)) {
        if (c >= '0' && c <= '9') digits += c;
        if (digits.size() == 8) break;
    }
    if (digits.size() != 8) platform::Raise(error_number::kTypeMismatch);
    return digits;
}

}  // namespace

std::string encode_text(std::string_view utf8, const std::string& encoding) {
    std::string text(utf8);
    if (encoding == CPL_ENC_UTF8) return text;
    const bool isAscii = std::none_of(text.begin(), text.end(), [](char c) { return (c & 0x80) != 0; });
    if (isAscii) return text;
    std::string encoded;
    std::string back;
    if (encoding.empty()) {
        encoded = platform::ToWindows1252(text);
        back = platform::FromWindows1252(encoded);
    } else {
        CPLErrorHandlerPusher quiet(CPLQuietErrorHandler);
        encoded = recode(text, CPL_ENC_UTF8, encoding.c_str());
        back = recode(encoded, encoding.c_str(), CPL_ENC_UTF8);
    }
    if (back != text)
        platform::Raise(error_number::kInvalidCall, "The text \"" + text +
                                                        "\" cannot be written in the table's encoding (" +
                                                        (encoding.empty() ? "Windows-1252" : encoding) + ").");
    return encoded;
}

std::string dbf_cell(const DbfColumn& column, const FieldValue& value, const std::string& encoding,
                     const std::string& field) {
    std::string cell(column.Width, ' ');
    if (platform::IsMissing(value)) return cell;
    const bool isNumber = column.Type == 'N' || column.Type == 'F';
    std::optional<std::string> text;
    if (isNumber)
        text = numeric_text(value, column);
    else if (column.Type == 'C')
        text = encode_text(platform::ValueText(value), encoding);
    else if (column.Type == 'D')
        text = date_text(value);
    else
        platform::Raise(error_number::kInvalidCall, "The field \"" + field + "\" is of a type that cannot be written.");
    if (!text || text->size() > column.Width)
        platform::Raise(error_number::kOverflow, "The value " + platform::ValueText(value) +
                                                     " does not fit the field \"" + field + "\" of width " +
                                                     std::to_string(column.Width) + ".");
    return cell.replace(isNumber ? column.Width - text->size() : 0, text->size(), *text);
}

}  // namespace wxl::files
