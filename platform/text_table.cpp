#include "platform/text_table.h"

#include "platform/foreign_cell.h"

namespace wxl::platform {
namespace {

std::string csv_line(const std::vector<std::string>& cells) {
    std::string line;
    for (const std::string& cell : cells) line += (&cell == &cells.front() ? "" : ",") + ForeignCell(cell);
    return line + "\n";
}

}  // namespace

std::string csv_text(const TextTable& table) {
    std::string text = csv_line(table.Columns);
    for (const auto& row : table.Rows) text += csv_line(row);
    return text;
}

}  // namespace wxl::platform
