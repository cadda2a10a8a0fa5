#include "kde_tool/run_plan.h"

#include "platform/text.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstdint>
#include <limits>

namespace wxl::kde_tool {
namespace {

using platform::IsNumeric;
using platform::NumberFromText;
using platform::NumberText;

/// Recommended buffers are this many bandwidths.
constexpr double kBufferFactor = 3.5;

bool is_list(const RunInputs& inputs) {
    return inputs.Method == BandwidthMethod::kManual || inputs.Method == BandwidthMethod::kProportion;
}

const std::string& list_text(const RunInputs& inputs) {
    return inputs.Method == BandwidthMethod::kManual ? inputs.BandwidthText : inputs.ProportionText;
}

bool is_number_above(const std::string& text, double limit) {
    return IsNumeric(text) && NumberFromText(text) > limit;
}

std::int32_t whole_cells(double length, double cellSize) {
    const double cells = std::floor(length / cellSize);
    if (!(cells >= 0.0)) return 0;
    constexpr auto kMost = std::numeric_limits<std::int32_t>::max();
    return cells > static_cast<double>(kMost) ? kMost : static_cast<std::int32_t>(cells);
}

/// Equal places have one hash: adding 0 makes a plain 0 of a negative one.
std::uint64_t place_hash(const platform::Point& point) {
    constexpr std::uint64_t kMix = 0x9e3779b97f4a7c15U;
    const std::uint64_t mixed =
        (std::bit_cast<std::uint64_t>(point.X + 0.0) * kMix) ^ std::bit_cast<std::uint64_t>(point.Y + 0.0);
    const std::uint64_t spread = (mixed ^ mixed >> 32U) * kMix;
    return spread ^ spread >> 32U;
}

}  // namespace

std::optional<std::string> undefined_setting(const RunInputs& inputs) {
    if (inputs.Method == BandwidthMethod::kProportion && inputs.ProportionText.empty())
        return "Error: the proportion(s) of reference bandwidth have not been defined on the Bandwidth tab.";
    if (inputs.Method == BandwidthMethod::kManual && inputs.BandwidthText.empty())
        return "Error: the user defined bandwidth has not been defined on the Bandwidth tab.";
    if (inputs.Mode == ExtentMode::kFull && inputs.BufferText.empty())
        return "Error: the extent buffer has not been defined on the Output Options tab.";
    if (inputs.Mode == ExtentMode::kReference && inputs.ReferenceName.empty())
        return "Error: the extent reference layer has not been defined on the Output Options tab.";
    if (inputs.Isopleths && inputs.IsoplethText.empty())
        return "Error: the isopleth percentages have not been defined on the Output Options tab.";
    return std::nullopt;
}

std::optional<std::string> unusable_setting(const RunInputs& inputs) {
    if (inputs.LayerName.empty()) return "Error: please choose a point layer on the Input Data tab.";
    if (inputs.IdField.empty())
        return "Error: please choose the field that names the animals (unique animal ID) on the Input Data tab.";
    if (inputs.OutputFolder.empty()) return "Error: please choose an output folder on the Output Options tab.";
    if (inputs.Mode != ExtentMode::kReference && !is_number_above(inputs.CellSizeText, 0.5))
        return "Error: please enter the raster cell size on the Output Options tab. It must be a number above 0.5 and "
               "is used as a whole number of map units.";
    if (!is_number_above(inputs.ScalingText, 0.0))
        return "Error: please enter the scaling factor on the Output Options tab. It must be a number above 0.";
    if (inputs.Mode == ExtentMode::kFull && !IsNumeric(inputs.BufferText))
        return "Error: the extent buffer on the Output Options tab is not a number.";
    return std::nullopt;
}

std::optional<std::string> malformed_list(const RunInputs& inputs) {
    if (!is_list(inputs)) return std::nullopt;
    for (const std::string& piece : platform::Split(list_text(inputs), ',')) {
        if (!IsNumeric(piece))
            return "Error: the list of " +
                   std::string(inputs.Method == BandwidthMethod::kManual ? "bandwidths" : "proportions") +
                   " on the Bandwidth tab holds \"" + piece +
                   "\", which is not a number. Please write numbers separated by commas.";
    }
    return std::nullopt;
}

std::vector<double> bandwidth_values(const RunInputs& inputs) {
    if (!is_list(inputs)) return {0.0};
    return platform::NumbersFromText(list_text(inputs));
}

double largest_value(const RunInputs& inputs, std::span<const double> values) {
    return is_list(inputs) && !values.empty() ? *std::max_element(values.begin(), values.end()) : 0.0;
}

std::optional<std::vector<double>> isopleth_percentages(std::string_view text) {
    std::vector<double> percentages;
    for (const std::string& piece : platform::Split(text, ',')) {
        if (!IsNumeric(piece)) return std::nullopt;
        percentages.push_back(NumberFromText(piece));
    }
    return percentages;
}

std::string raster_name(const RunInputs& inputs, const std::string& namingId, std::size_t number, std::size_t count) {
    const bool numbered =
        inputs.Method == BandwidthMethod::kProportion || (inputs.Method == BandwidthMethod::kManual && count > 1);
    return inputs.Prefix + namingId + (numbered ? "_b" + std::to_string(number) : "");
}

std::string isopleth_name(const std::string& rasterName) {
    return rasterName + "_iso";
}

std::vector<std::string> dataset_names(const RunInputs& inputs, const std::string& rasterName) {
    std::vector<std::string> names = {rasterName};
    if (!inputs.Isopleths) return names;
    const std::string stem = isopleth_name(rasterName);
    if (inputs.Lines) names.push_back(stem + "_line");
    if (inputs.Polygons) names.push_back(stem + "_poly");
    if (inputs.Donuts) names.push_back(stem + "_donut");
    return names;
}

BufferAdvice recommended_buffer(BandwidthMethod method, double largestValue, double largestHref) {
    if (method == BandwidthMethod::kManual) {
        const double product = largestValue * kBufferFactor;
        return {std::floor(product + 0.5), product};
    }
    const double bandwidth = method == BandwidthMethod::kProportion ? largestValue * largestHref : largestHref;
    return {std::floor(bandwidth * kBufferFactor), bandwidth * kBufferFactor};
}

std::string buffer_question(const BufferAdvice& advice) {
    return "Warning: the extent buffer distance you have provided may not be large enough to capture the full extent "
           "of "
           "the utilization distribution. This data truncation can profoundly distort the isopleths. It is recommended "
           "you use a buffer distance of at least " +
           NumberText(advice.Shown) + " for this dataset. Do you wish to use this recommended value?";
}

platform::RasterGeometry enlarged_grid(const platform::Extent& extent, double margin, double cellSize) {
    return {extent.XMin - margin, extent.YMin - margin, cellSize, whole_cells(extent.Width() + 2.0 * margin, cellSize),
            whole_cells(extent.Height() + 2.0 * margin, cellSize)};
}

double edge_threshold(BandwidthMethod method, double scalingFactor) {
    const bool list = method == BandwidthMethod::kManual || method == BandwidthMethod::kProportion;
    return scalingFactor * (list ? 5e-10 : 1e-08);
}

bool has_overlap(std::span<const platform::Point> points) {
    // A table of the places met so far: sorting takes several times as long.
    const std::size_t mask = std::bit_ceil(2 * points.size() + 1) - 1;
    std::vector<const platform::Point*> met(mask + 1, nullptr);
    for (const platform::Point& point : points) {
        std::size_t slot = place_hash(point) & mask;
        for (; met[slot] != nullptr; slot = (slot + 1) & mask)
            if (*met[slot] == point) return true;
        met[slot] = &point;
    }
    return false;
}

namespace {

/// A name with line breaks would pass for lines of the question.
std::string in_one_line(std::string name) {
    std::replace_if(
        name.begin(), name.end(), [](char c) { return c == '\r' || c == '\n' || c == '\t'; }, ' ');
    return name;
}

}  // namespace

std::string overlap_question(std::span<const std::string> ids) {
    std::string list;
    for (std::size_t i = 0; i < ids.size(); ++i) list += (i == 0 ? "" : "  ") + in_one_line(ids[i]);
    return "Warning: overlapping points were detected for the following animals:\r\n" + list +
           "\r\nThis may prevent reasonable estimation of the bandwidth. Would you like to continue anyway?";
}

}  // namespace wxl::kde_tool
