#pragma once
// The decisions of an analysis run that need neither map nor disk: checks, lists, names, extents, thresholds.

#include "kde_tool/run_inputs.h"
#include "platform/values.h"

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace wxl::kde_tool {

/// The message of the first setting that is not defined, or nothing.
std::optional<std::string> undefined_setting(const RunInputs& inputs);

/// The message of the first setting that a run cannot start with (layer, ID field, folder text, cell size, scaling
/// factor, buffer), or nothing. Asked after undefined_setting.
std::optional<std::string> unusable_setting(const RunInputs& inputs);

/// The message of a piece of the user's list of bandwidths or proportions that is no number, or nothing.
std::optional<std::string> malformed_list(const RunInputs& inputs);

/// The user's bandwidths or proportions, one run per animal for each; a single 0 for the other methods.
/// RuntimeError 13 for a piece that is no number (see malformed_list).
std::vector<double> bandwidth_values(const RunInputs& inputs);

/// The largest of a list of bandwidths or proportions; 0 for the other methods.
double largest_value(const RunInputs& inputs, std::span<const double> values);

/// The isopleth percentages, in the order typed; nothing when a piece is no number.
std::optional<std::vector<double>> isopleth_percentages(std::string_view text);

/// Prefix + naming ID, followed by "_b" and `number` (from 1) for proportions, and for lists of two or more bandwidths.
std::string raster_name(const RunInputs& inputs, const std::string& namingId, std::size_t number, std::size_t count);

/// Name of the isopleth datasets of a raster, before "_line", "_poly" and "_donut".
std::string isopleth_name(const std::string& rasterName);

/// Names of every dataset that one animal's value gives: raster first, then the shapefiles asked for.
std::vector<std::string> dataset_names(const RunInputs& inputs, const std::string& rasterName);

/// The extent buffer that a run should have at least.
struct BufferAdvice {
    double Shown = 0.0;     ///< whole number, as the question names it
    double Accepted = 0.0;  ///< what the buffer becomes when the user agrees
};

/// Advice from the largest bandwidth or proportion and the largest reference bandwidth (0 until it was computed).
BufferAdvice recommended_buffer(BandwidthMethod method, double largestValue, double largestHref);

/// The question whether to use the recommended buffer.
std::string buffer_question(const BufferAdvice& advice);

/// The grid that covers `extent` enlarged by `margin` on every side, in whole cells of side `cellSize`, counted
/// downward. A side without a cell has 0, one of more than 2147483647 cells that many.
platform::RasterGeometry enlarged_grid(const platform::Extent& extent, double margin, double cellSize);
inline constexpr std::int32_t kCellLimit = 50'000'000;

/// Edge values above this mean that the distribution is cut by its raster.
double edge_threshold(BandwidthMethod method, double scalingFactor);

/// Whether two points of a sample are at the same place.
bool has_overlap(std::span<const platform::Point> points);

/// The question whether to go on although animals have overlapping points.
std::string overlap_question(std::span<const std::string> ids);

}  // namespace wxl::kde_tool
