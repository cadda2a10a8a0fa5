#include "results_page/result_table.h"

#include "pictures/xml_text.h"
#include "platform/text.h"
#include "results_page/page_run.h"

#include <cstddef>

namespace wxl::results_page {
namespace {

using pictures::XmlText;

const char* class_of(ColumnLook look) {
    switch (look) {
        case ColumnLook::kNumber:
            return " class=\"num\"";
        case ColumnLook::kRemark:
            return " class=\"remark\"";
        case ColumnLook::kText:
            break;
    }
    return "";
}

std::string head_cell(const TableColumn& column) {
    return std::string("<th scope=\"col\"") + (column.Look == ColumnLook::kNumber ? class_of(column.Look) : "") +
           " aria-sort=\"none\"><button type=\"button\">" + XmlText(column.Title) + "</button></th>";
}

std::string name_of(const TableRow& row, RowNames names, std::size_t number) {
    const std::string name = "<bdi>" + XmlText(row.Name) + "</bdi>";
    return names == RowNames::kPlain ? name : "<a href=\"#" + section_id(number) + "\">" + name + "</a>";
}

std::string body_row(const std::vector<TableColumn>& columns, const TableRow& row, const std::string& name) {
    std::string html = "<tr><th scope=\"row\">" + name + "</th>";
    for (std::size_t i = 0; i < columns.size(); ++i) html += body_cell(row.Cells.at(i), columns[i].Look);
    return html + "</tr>\n";
}

}  // namespace

std::string body_cell(const TableCell& cell, ColumnLook look) {
    return std::string("<td") + class_of(look) +
           (cell.Number ? " data-value=\"" + platform::NumberText(*cell.Number) + "\"" : "") + ">" +
           (cell.Html.empty() ? "<span class=\"none\">–</span>" : cell.Html) + "</td>";
}

std::string sorted_table(const std::string& label, const std::string& nameTitle, RowNames names,
                         const std::vector<TableColumn>& columns, const std::vector<TableRow>& rows) {
    std::string html = "<div class=\"scroll\" role=\"region\" aria-label=\"" + XmlText(label) +
                       "\" tabindex=\"0\">\n<table id=\"results-table\"><thead><tr>" + head_cell({nameTitle});
    for (const TableColumn& column : columns) html += head_cell(column);
    html += "</tr></thead>\n<tbody>\n";
    for (std::size_t i = 0; i < rows.size(); ++i) html += body_row(columns, rows[i], name_of(rows[i], names, i + 1));
    return html + "</tbody></table></div>\n<p id=\"sorted\" class=\"hidden\" role=\"status\"></p>\n";
}

std::string result_table(const std::vector<TableColumn>& columns, const std::vector<TableRow>& rows) {
    return sorted_table("Table of results", "Animal", RowNames::kLinks, columns, rows);
}

}  // namespace wxl::results_page
