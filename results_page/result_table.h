#pragma once
// The table of all animals that a page opens with.

#include <optional>
#include <string>
#include <vector>

namespace wxl::results_page {

/// A cell: what it shows (HTML; empty: a dash), and the number that it is sorted by where it is one.
struct TableCell {
    std::string Html;
    std::optional<double> Number = {};
};

/// How the cells of a column are set.
enum class ColumnLook {
    kText,
    kNumber,  ///< to the right, on one line
    kRemark   ///< small, and wide enough to be read
};

struct TableColumn {
    std::string Title;  ///< any text
    ColumnLook Look = ColumnLook::kText;
};

/// The row of the record whose section is section_id(number of the row, from 1).
struct TableRow {
    std::string Name;  ///< any text
    std::vector<TableCell> Cells;
};

/// The table as HTML, in a region of its own that scrolls sideways, with the names as links to the sections in its
/// first column. Its head holds buttons by which the page's script sorts the rows.
std::string result_table(const std::vector<TableColumn>& columns, const std::vector<TableRow>& rows);

}  // namespace wxl::results_page
