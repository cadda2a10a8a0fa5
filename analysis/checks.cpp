#include "analysis/checks.h"

namespace wxl::analysis {
namespace {

bool is_positive(const TypedNumber& number) {
    return number.Value.value_or(0.0) > 0.0;
}

}  // namespace

std::optional<std::string> undefined_setting(const Settings& settings) {
    if (settings.Method == BandwidthMethod::kProportion && settings.Proportions.Text.empty())
        return "Error: the proportion(s) of reference bandwidth have not been defined on the Bandwidth tab.";
    if (settings.Method == BandwidthMethod::kManual && settings.Bandwidths.Text.empty())
        return "Error: the user defined bandwidth has not been defined on the Bandwidth tab.";
    if (settings.Mode == ExtentMode::kFull && settings.Buffer.Text.empty())
        return "Error: the extent buffer has not been defined on the Output Options tab.";
    if (settings.Mode == ExtentMode::kReference && settings.ReferenceName.empty())
        return "Error: the extent reference layer has not been defined on the Output Options tab.";
    if (settings.Isopleths && settings.Percentages.Text.empty())
        return "Error: the isopleth percentages have not been defined on the Output Options tab.";
    return std::nullopt;
}

std::optional<std::string> malformed_list(const Settings& settings) {
    if (const auto& piece = list_of(settings).NoNumber)
        return "Error: the list of " +
               std::string(settings.Method == BandwidthMethod::kManual ? "bandwidths" : "proportions") +
               " on the Bandwidth tab holds \"" + *piece +
               "\", which is not a number. Please write numbers separated by commas.";
    if (settings.Isopleths && settings.Percentages.NoNumber)
        return "Error: an invalid isopleth value was detected. Please check these values and run the tool again.";
    return std::nullopt;
}

std::optional<std::string> unusable_setting(const Settings& settings) {
    if (settings.LayerName.empty()) return "Error: please choose a point layer on the Input Data tab.";
    if (settings.IdField.empty())
        return "Error: please choose the field that names the animals (unique animal ID) on the Input Data tab.";
    if (settings.Method == BandwidthMethod::kAdHoc && (settings.Rescale || !settings.FixedKernel))
        return "Error: the ad hoc bandwidth is for fixed kernels of coordinates as they are. Please choose a fixed "
               "kernel "
               "without rescaling, or another bandwidth.";
    if (settings.OutputFolder.empty()) return "Error: please choose an output folder on the Output Options tab.";
    const bool usableCells = settings.Cells.OfBandwidths || settings.Cells.Side >= 1.0;
    if (settings.Mode != ExtentMode::kReference && !usableCells)
        return "Error: please enter the raster cell size on the Output Options tab. It must be a number above 0.5 and "
               "is used as a whole number of map units.";
    if (!is_positive(settings.ScalingFactor))
        return "Error: please enter the scaling factor on the Output Options tab. It must be a number above 0.";
    if (settings.Mode == ExtentMode::kFull && !settings.Buffer.Value)
        return "Error: the extent buffer on the Output Options tab is not a number.";
    return std::nullopt;
}

std::optional<std::string> refusal_of(const Settings& settings) {
    auto refusal = undefined_setting(settings);
    if (!refusal) refusal = malformed_list(settings);
    return refusal ? refusal : unusable_setting(settings);
}

}  // namespace wxl::analysis
