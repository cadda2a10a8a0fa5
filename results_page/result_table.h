#pragma once
// The tables of pages: of all animals, and others that are sorted.

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

/// A row, and what stands in its first column.
struct TableRow {
    std::string Name;  ///< any text
    std::vector<TableCell> Cells;
};

/// A cell of a row as HTML.
std::string body_cell(const TableCell& cell, ColumnLook look);

/// Whether the name of a row is a link to the section of its record: section_id(number of the row, from 1).
enum class RowNames { kLinks, kPlain };

/// A page's sorted table as HTML, in a region of its own that scrolls sideways: the names of the rows below
/// `nameTitle`, then the columns. Its head holds buttons by which the page's script sorts the rows. `label` tells a
/// screen reader what it is.
std::string sorted_table(const std::string& label, const std::string& nameTitle, RowNames names,
                         const std::vector<TableColumn>& columns, const std::vector<TableRow>& rows);

/// The sorted table of all animals, whose names lead to their sections.
std::string result_table(const std::vector<TableColumn>& columns, const std::vector<TableRow>& rows);

}  // namespace wxl::results_page
