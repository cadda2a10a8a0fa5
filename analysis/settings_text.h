#pragma once
// Settings as texts, read and written: the one place that knows how a bandwidth, an extent, a list of percentages and a
// cell size are spelt.

#include "analysis/settings.h"

#include <cstdint>
#include <optional>
#include <string>

namespace wxl::analysis {

/// What a run is told for kernels that reach as far as the widest of them.
inline constexpr const char* kWholeReach = "whole";

/// Parts of a range that may be asked for.
inline constexpr std::int32_t kMostParts = 1000;

TypedNumber typed_number(std::string text);

/// The number as texts of a run print it.
TypedNumber typed_number(double value);

/// Numbers separated by commas.
TypedNumbers typed_numbers(std::string text);

/// The word for cells that suit each animal's bandwidth.
inline constexpr const char* kFittingCells = "auto";

/// A number of map units, or "auto" in any case.
CellSize cell_size_of(std::string text);

/// "" (as usual), "whole", or a number of bandwidths above 0; nothing for any other text.
std::optional<Reach> reach_of(std::string text);

/// How a bandwidth is found, and its numbers where the method takes a list.
struct BandwidthChoice {
    BandwidthMethod Method = BandwidthMethod::kHref;
    TypedNumbers Values = {};
    std::optional<std::int32_t> Parts = {};  ///< of the ad hoc method; nothing where the text has no such number
};

/// A whole number of parts, 1 to kMostParts; nothing for any other text.
std::optional<std::int32_t> parts_of(const std::string& text);

/// "href", "lscv", "bcv", "adhoc[:PARTS]", "prop:P[,P...]", or bandwidths "H[,H...]". Numbers are not looked at: see
/// not_positive.
BandwidthChoice bandwidth_of(const std::string& text);

/// The word that gives the settings' bandwidth, as bandwidth_of takes it.
std::string bandwidth_text(const Settings& settings);

/// Where rasters lie, and the number or raster that belongs to it.
struct ExtentChoice {
    ExtentMode Mode = ExtentMode::kFull;
    std::optional<TypedNumber> Buffer = {};  ///< nothing: one is to be suggested
    std::string ReferenceName = {};
};

/// "full" (buffer suggested), "full:BUFFER", "min" or "ref:RASTER"; nothing for any other text.
std::optional<ExtentChoice> extent_of(const std::string& text);

/// The word that gives the settings' extent, as extent_of takes it.
std::string extent_text(const Settings& settings);

/// The first piece of a list that is no number above 0.
std::optional<std::string> not_positive(const TypedNumbers& list);

/// The first number of a list above 100.
std::optional<double> above_hundred(const TypedNumbers& percentages);

/// Whether a text is a number above 0.
bool is_positive_number(const std::string& text);

}  // namespace wxl::analysis
