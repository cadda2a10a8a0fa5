#pragma once
// The three tables of the analysis form: first the numbers, then how they are shown.

#include "kde_tool/animal_fixes.h"
#include "platform/controls.h"

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace wxl::kde_tool {

/// Serial independence of one animal's fixes; indices that are not defined are empty.
struct IndependenceRow {
    platform::FieldValue Id;
    std::string NamingId;
    std::int64_t Count = 0;
    std::optional<double> Schoener;
    std::optional<double> SwihartSlade;
    std::int64_t StepsBack = 0;  ///< as AnimalFixes::StepsBack
};

/// Spread of one animal's fixes in map units (divisor n - 1); Ratio is SdX / SdY.
struct VarianceRow {
    platform::FieldValue Id;
    std::int64_t Count = 0;
    std::optional<double> SdX;
    std::optional<double> SdY;
    std::optional<double> Ratio;
};

/// Reference bandwidth of one animal: of the fixes as they are (map units), and of the fixes rescaled to unit variance.
struct HrefRow {
    platform::FieldValue Id;
    std::int64_t Count = 0;
    std::optional<double> Href;
    std::optional<double> HrefScaled;
};

std::vector<IndependenceRow> IndependenceRows(std::span<const AnimalFixes> animals);
std::vector<VarianceRow> VarianceRows(std::span<const AnimalFixes> animals);
std::vector<HrefRow> HrefRows(std::span<const AnimalFixes> animals);

/// The largest Href; 0 when none is defined.
double LargestHref(std::span<const HrefRow> rows);

/// Columns: the ID field, "Naming_ID" with text IDs, "Count", "Schoener", "Swihart_Slade"; "N/A" where not defined.
/// "Schoener" holds at most 10 and "Swihart_Slade" at most 11 characters: see FittedNumberText. "Count" is made for 4
/// characters; a larger count stands whole, because a shortened one would be another number.
platform::DataGrid IndependenceTable(std::span<const IndependenceRow> rows, const std::string& idField, bool textIds);

/// Columns: the ID field, "Count", "StdDev(x)", "StdDev(y)", "Ratio(x:y)".
platform::DataGrid VarianceTable(std::span<const VarianceRow> rows, const std::string& idField);

/// Columns: the ID field, "Count", "href", "href (scaled)".
platform::DataGrid HrefTable(std::span<const HrefRow> rows, const std::string& idField);

/// The value as NumberText in at most `width` characters: with fewer significant digits where it does not fit, never
/// cut. A value that fits in no number of digits comes whole.
std::string FittedNumberText(double value, std::size_t width);

/// The independence table as comma-separated text (UTF-8, CRLF): ID field and "Count,Schoener,Swihart_Slade", then a
/// line per animal with all cells of its row, the naming ID of text IDs included. Nothing is quoted.
std::string IndependenceCsv(const platform::DataGrid& table);

}  // namespace wxl::kde_tool
