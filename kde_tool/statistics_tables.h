#pragma once
// The three statistics tables of the analysis form.

#include "analysis/statistics.h"
#include "platform/controls.h"

#include <span>
#include <string>

namespace wxl::kde_tool {

/// Columns: the ID field, "Naming_ID" with text IDs, "Count", "Schoener", "Swihart_Slade"; "N/A" where not defined.
platform::DataGrid IndependenceTable(std::span<const analysis::IndependenceRow> rows, const std::string& idField,
                                     bool textIds);

/// Columns: the ID field, "Count", "StdDev(x)", "StdDev(y)", "Ratio(x:y)".
platform::DataGrid VarianceTable(std::span<const analysis::VarianceRow> rows, const std::string& idField);

/// Columns: the ID field, "Count", "href", "href (scaled)".
platform::DataGrid HrefTable(std::span<const analysis::HrefRow> rows, const std::string& idField);

/// The independence table as comma-separated text (UTF-8, CRLF): ID field and "Count,Schoener,Swihart_Slade", then a
/// line per animal with all cells of its row, the naming ID of text IDs included. Nothing is quoted.
std::string IndependenceCsv(const platform::DataGrid& table);

}  // namespace wxl::kde_tool
