#pragma once
#include <cstddef>
#include <cstdint>
#include <string_view>

namespace wxl::tracking {

/// How a text of separated values is written, and where its table begins.
struct Dialect {
    char Separator = ',';   ///< a blank: runs of blanks and tabs
    std::size_t Start = 0;  ///< byte at which the header begins (after the # of a header written as a comment)
    std::int64_t Line = 1;  ///< line of that byte, the first being 1
};

/// Judges a text by its first lines (up to 200 of `text`, which may be cut anywhere).
///
/// A line "sep=;" names the separator. Else it is the one among tab, semicolon, comma and bar that gives most lines the
/// same number of cells, then the one with most cells; blanks where none of these parts anything. The table begins with
/// the first line of that many cells (one fewer where the names of the rows have no heading) that says anything; what
/// stands before - comments (#), blank lines, the lines of a report's head - is passed over.
Dialect find_dialect(std::string_view text);

}  // namespace wxl::tracking
