#include "platform/foreign_cell.h"

#include "platform/text.h"

namespace wxl::platform {

std::string ForeignCell(std::string_view text) {
    const bool formula = !text.empty() && std::string_view("=+-@\t\r\n").find(text.front()) != std::string_view::npos;
    return CsvCell(formula && !IsNumeric(text) ? "'" + std::string(text) : std::string(text));
}

}  // namespace wxl::platform
