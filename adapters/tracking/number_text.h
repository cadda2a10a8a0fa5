#pragma once
#include <optional>
#include <string_view>

namespace wxl::tracking {

/// A number as people and spreadsheets of any country write it; nothing for any other text, infinities and NaN.
///
/// Read are "46.69", "46,69", "1.5e3", "+7", "4.472.345,6" and "4,472,345.6" (the last of two kinds of separators is
/// the decimal one; one kind that occurs several times groups thousands), "4 472 345,6" with blanks, no-break spaces
/// (UTF-8 or Windows-1252) or apostrophes between groups of three digits, and a minus sign of typography. A single
/// comma is a decimal comma. Free of the locale.
std::optional<double> number_from_text(std::string_view text);

}  // namespace wxl::tracking
