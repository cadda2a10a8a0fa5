#include "kde_tool/statistics_tables.h"

#include <iterator>
#include <utility>
#include <vector>

namespace wxl::kde_tool {
namespace {

std::vector<std::string> with_cells(std::vector<std::string> ids, std::vector<std::string> cells) {
    ids.insert(ids.end(), std::make_move_iterator(cells.begin()), std::make_move_iterator(cells.end()));
    return ids;
}

}  // namespace

platform::DataGrid IndependenceTable(std::span<const analysis::IndependenceRow> rows, const std::string& idField,
                                     bool textIds) {
    platform::DataGrid table;
    table.Columns = {idField, "Count", "Schoener", "Swihart_Slade"};
    if (textIds) table.Columns.insert(table.Columns.begin() + 1, "Naming_ID");
    for (const analysis::IndependenceRow& row : rows) {
        std::vector<std::string> ids = {platform::ValueText(row.Id)};
        if (textIds) ids.push_back(row.NamingId);
        table.Rows.push_back(with_cells(std::move(ids), cells_of(row)));
    }
    return table;
}

platform::DataGrid VarianceTable(std::span<const analysis::VarianceRow> rows, const std::string& idField) {
    platform::DataGrid table;
    table.Columns = {idField, "Count", "StdDev(x)", "StdDev(y)", "Ratio(x:y)"};
    for (const analysis::VarianceRow& row : rows)
        table.Rows.push_back(with_cells({platform::ValueText(row.Id)}, cells_of(row)));
    return table;
}

platform::DataGrid HrefTable(std::span<const analysis::HrefRow> rows, const std::string& idField) {
    platform::DataGrid table;
    table.Columns = {idField, "Count", "href", "href (scaled)"};
    for (const analysis::HrefRow& row : rows)
        table.Rows.push_back(with_cells({platform::ValueText(row.Id)}, cells_of(row)));
    return table;
}

std::string IndependenceCsv(const platform::DataGrid& table) {
    if (table.Columns.empty()) return {};
    std::string text = table.Columns.front() + ",Count,Schoener,Swihart_Slade\r\n";
    for (const auto& row : table.Rows) {
        for (std::size_t i = 0; i < row.size(); ++i) text += (i == 0 ? "" : ",") + row[i];
        text += "\r\n";
    }
    return text;
}

}  // namespace wxl::kde_tool
