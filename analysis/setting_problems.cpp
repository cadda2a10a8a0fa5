#include "analysis/setting_problems.h"

#include "analysis/settings_text.h"
#include "platform/checked.h"
#include "platform/file_system.h"
#include "platform/runtime_error.h"
#include "platform/text.h"

#include <algorithm>

namespace wxl::analysis {
namespace {

using platform::NumberText;

std::string in_quotes(std::string_view text) {
    return '"' + std::string(platform::Trim(text)) + '"';
}

/// The smallest bandwidth of a run, where it is known before.
std::optional<double> smallest_bandwidth(const Settings& settings, const KnownFixes& fixes) {
    const auto smallest = [](const TypedNumbers& list) { return *std::ranges::min_element(list.Values); };
    if (is_list(settings.Method) && list_of(settings).Values.empty()) return std::nullopt;
    if (settings.Method == BandwidthMethod::kManual) return smallest(settings.Bandwidths);
    if (!fixes.SmallestHref) return std::nullopt;
    if (settings.Method == BandwidthMethod::kHref) return fixes.SmallestHref;
    if (settings.Method == BandwidthMethod::kProportion) return *fixes.SmallestHref * smallest(settings.Proportions);
    return std::nullopt;
}

}  // namespace

std::string layer_problem(const KnownFixes& fixes) {
    if (!fixes.InDegrees) return {};
    return "Distances cannot be measured in degrees. Choose a layer in metres, or reproject this one.";
}

std::string list_problem(const Settings& settings) {
    if (!is_list(settings.Method) || list_of(settings).Text.empty()) return {};
    const auto piece = not_positive(list_of(settings));
    return piece ? in_quotes(*piece) + " is not a number above 0. Write numbers separated by commas." : std::string();
}

std::string prefix_problem(const Settings& settings) {
    if (settings.Prefix.empty()) return {};
    try {
        platform::CheckDatasetName(settings.Prefix + "1");
    } catch (const platform::RuntimeError&) {
        return "No file can have such a name. Use letters, digits and underscores.";
    }
    return {};
}

std::string cell_problem(const Settings& settings, const KnownFixes& fixes) {
    if (settings.Mode == ExtentMode::kReference || settings.Cells.Text.empty() || settings.Cells.OfBandwidths)
        return {};
    if (!(settings.Cells.Side >= 1.0)) return in_quotes(settings.Cells.Text) + " is not a number above 0.5.";
    const auto bandwidth = smallest_bandwidth(settings, fixes);
    if (!bandwidth || !(*bandwidth > 0.0) || settings.Cells.Side <= *bandwidth) return {};
    return "Cells must not be larger than the bandwidth, and the smallest is " +
           NumberText(platform::round_half_even(*bandwidth, 2)) + ".";
}

std::string scaling_problem(const Settings& settings) {
    if (settings.ScalingFactor.Text.empty() || settings.ScalingFactor.Value.value_or(0.0) > 0.0) return {};
    return in_quotes(settings.ScalingFactor.Text) + " is not a number above 0.";
}

std::string percentages_problem(const Settings& settings) {
    if (!settings.Isopleths) return {};
    if (!settings.Percentages.Text.empty()) {
        const char* range = " is not a number above 0 and up to 100.";
        if (const auto piece = not_positive(settings.Percentages)) return in_quotes(*piece) + range;
        if (const auto above = above_hundred(settings.Percentages)) return in_quotes(NumberText(*above)) + range;
    }
    if (settings.Lines || settings.Polygons || settings.Donuts) return {};
    return "Tick lines, polygons or donut polygons.";
}

std::string buffer_problem(const Settings& settings) {
    if (settings.Mode != ExtentMode::kFull || settings.Buffer.Text.empty() || settings.Buffer.Value) return {};
    return in_quotes(settings.Buffer.Text) + " is not a number.";
}

}  // namespace wxl::analysis
