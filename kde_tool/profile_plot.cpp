#include "kde_tool/profile_plot.h"

#include "engine/clsKernelCalculator.h"

#include <cmath>
#include <optional>
#include <utility>

namespace wxl::kde_tool {

namespace {

/// A plot must not put message boxes in the way of the dialog: a fault shows as a missing curve.
class NoMessages final : public platform::IMessages {
public:
    platform::Answer Show(const platform::MessageBox& /*box*/) override { return platform::Answer::kOk; }
};

std::optional<double> if_positive(double value) {
    return std::isfinite(value) && value > 0.0 ? std::optional(value) : std::nullopt;
}

}  // namespace

ProfilePlot PlotSearch(const analysis::AnimalFixes& animal, analysis::BandwidthMethod method, bool rescale,
                       const std::string& units, platform::IHost* host) {
    NoMessages messages;
    engine::clsKernelCalculator calculator(messages);
    if (host != nullptr) calculator.SetTurns({.Yield = [host] { host->Yield(); }});
    calculator.SetInputCoords(animal.Fixes);
    calculator.SetEnforceUnitVariance(rescale);
    if (method == analysis::BandwidthMethod::kBcv)
        calculator.CalculateBCV();
    else
        calculator.CalculateLSCV();

    ProfilePlot plot;
    plot.Picture.Title = platform::ValueText(animal.Id);
    plot.Picture.Method = method == analysis::BandwidthMethod::kBcv ? "BCV" : "LSCV";
    plot.Picture.Units = rescale ? "unit variance" : units;
    plot.Picture.Minimised = calculator.LSCVMinimized;
    plot.Picture.Href = if_positive(calculator.GetHREF());
    if (plot.Picture.Href) plot.Picture.Bandwidth = if_positive(calculator.GetBandwidth());
    pictures::SetCurve(plot.Picture, calculator.GetLSCVProfile().value_or(engine::SearchProfile{}));
    if (!plot.Picture.Href || !plot.Picture.Minimum)
        plot.Hint = "The fixes of " + plot.Picture.Title + " are too few or have no spread for a search.";
    return plot;
}

}  // namespace wxl::kde_tool
