#pragma once
#include "adapters/shapefile/dbf_layout.h"

#include <string>
#include <string_view>

namespace wxl::files {

/// How a table writes its texts: an encoding name as GDAL knows it; empty means that nothing says so, and Windows-1252
/// is taken.
std::string encode_text(std::string_view utf8, const std::string& encoding);

/// The cell of a value, exactly as wide as the column. Nothing is ever cut:
///  - a number in a column of 15 or more decimals is the shortest text that gives the same double again, in plain
///  digits
///    where they fit the column, else with an exponent ("1.2345678901234567e-12" has 22 characters, the longest text of
///    any double 24; readers take both forms);
///  - in a column of fewer decimals it is rounded to them, as such columns mean. Where that does not fit, zeros at the
///    end of the decimals are left out, and else an exponent is taken, if all digits stand with it: readers find the
///    same number in each form;
///  - a text longer than the column, a number that does not fit, or a type that cannot be written is RuntimeError 6,
///    6 and 5; a character that the encoding lacks is RuntimeError 5. `field` is the name for the description.
std::string dbf_cell(const DbfColumn& column, const platform::FieldValue& value, const std::string& encoding,
                     const std::string& field);

}  // namespace wxl::files
