#pragma once
// Statistics of every animal's fixes: independence, spread, reference bandwidth; and their texts in tables and reports.

#include "analysis/animal_fixes.h"
#include "platform/values.h"

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <vector>

namespace wxl::analysis {

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

std::vector<IndependenceRow> independence_rows(std::span<const AnimalFixes> animals);
std::vector<VarianceRow> variance_rows(std::span<const AnimalFixes> animals);
std::vector<HrefRow> href_rows(std::span<const AnimalFixes> animals);

/// The largest Href; 0 when none is defined.
double largest_href(std::span<const HrefRow> rows);

/// The cells of a row behind its IDs: count, Schoener in at most 10 and Swihart-Slade in at most 11 characters (see
/// fitted_number_text); "N/A" where not defined. A count is never shortened: it would be another number.
std::vector<std::string> cells_of(const IndependenceRow& row);

/// The cells of a row behind its ID: count, both standard deviations, their ratio; "N/A" where not defined.
std::vector<std::string> cells_of(const VarianceRow& row);

/// The cells of a row behind its ID: count and both reference bandwidths; "N/A" where not defined.
std::vector<std::string> cells_of(const HrefRow& row);

/// The value as NumberText in at most `width` characters: with fewer significant digits where it does not fit, never
/// cut. A value that fits in no number of digits comes whole.
std::string fitted_number_text(double value, std::size_t width);

}  // namespace wxl::analysis
