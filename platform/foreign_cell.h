#pragma once
#include <string>
#include <string_view>

namespace wxl::platform {

/// A cell of comma-separated text (CsvCell) whose text is other people's: one that a spreadsheet would take for a
/// formula, because it begins with "=", "+", "-" or "@" (or a tab or line break) and is no number, gets an apostrophe
/// before it, as one types it there.
std::string ForeignCell(std::string_view text);

}  // namespace wxl::platform
