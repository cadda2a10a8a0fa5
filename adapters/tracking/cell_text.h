#pragma once
#include <initializer_list>
#include <string>
#include <string_view>

namespace wxl::tracking {

/// UTF-8 of a cell; bytes that are none are taken for Windows-1252.
std::string to_utf8(std::string_view bytes);

/// A cell for a message: short, and without anything that could move a terminal's cursor.
std::string shown(std::string_view cell);

/// Whether a trimmed cell says that there is nothing: empty, NA, N/A, #N/A, NaN, null, none, or dashes.
bool is_missing(std::string_view cell);

/// Whether a trimmed cell is one of the words, in any case.
bool is_one_of(std::string_view cell, std::initializer_list<std::string_view> words);

/// Whether a coordinate stands for none: -999, -9999, -99999, -999.9 and the like.
bool is_placeholder(double value);

/// A name in small letters and digits, accents and punctuation taken off: "Länge [°]" becomes "lange". Letters of other
/// alphabets stay, small where they have a small form. With `brackets`, what stands in brackets counts, too.
std::string bare_name(std::string_view name, bool brackets = false);

}  // namespace wxl::tracking
