#pragma once
#include <string>
#include <vector>

namespace wxl::platform {

/// Rows of text cells under column names.
struct TextTable {
    std::vector<std::string> Columns;
    std::vector<std::vector<std::string>> Rows;  ///< as many cells as columns
};

/// Comma-separated text with a header row: LF line ends, quotes only where a cell needs them.
std::string csv_text(const TextTable& table);

}  // namespace wxl::platform
