#pragma once
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace wxl::platform {

/// A number as text: up to 15 significant digits, shortest, "1E-05" / "1E+15" exponents (the shape of "%.15G"), decimal
/// point whatever the locale. Negative zero is "0".
std::string NumberText(double value);

/// Dialog text as a number: blanks trimmed, the full text must be a decimal number (digits, one point, sign,
/// exponent). RuntimeError 13 otherwise, RuntimeError 6 when it is too large for a double. Never the locale's.
double NumberFromText(std::string_view text);

/// Whether NumberFromText takes the text.
bool IsNumeric(std::string_view text);

/// The value of a list of numbers separated by commas; RuntimeError 13 for a piece that is not a number.
std::vector<double> NumbersFromText(std::string_view commaSeparated);

/// Pieces between separators, unchanged; an empty text is one empty piece.
std::vector<std::string> Split(std::string_view text, char separator);

/// Without blanks and tabs at both ends.
std::string_view Trim(std::string_view text);

/// Texts are UTF-8 in memory and Windows-1252 in files. A character outside Windows-1252 is written as "?".
std::string ToWindows1252(std::string_view utf8);
std::string FromWindows1252(std::string_view bytes);

/// Upper case of the letters of Windows-1252 (ASCII and accented Latin letters); anything else stays.
std::string UpperCase(std::string_view utf8);

/// Whether the bytes are well-formed UTF-8.
bool IsUtf8(std::string_view text);

/// A cell of comma-separated text (RFC 4180): in quotes, with its own quotes doubled, where it holds a comma, a quote
/// or a line break.
std::string CsvCell(std::string_view text);

/// Equal but for the case of ASCII letters (field names, programmatic identifiers).
bool EqualNoCase(std::string_view a, std::string_view b);

}  // namespace wxl::platform
