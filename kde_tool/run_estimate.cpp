#include "kde_tool/run_estimate.h"

#include "engine/pair_sums.h"
#include "kde_tool/kernel_radius.h"
#include "kde_tool/run_plan.h"
#include "platform/checked.h"
#include "platform/text.h"

#include <algorithm>
#include <cmath>

namespace wxl::kde_tool {
namespace {

constexpr double kBytesPerCell = 8.0;

// Measured.
constexpr double kSecondsPerUpdate = 1e-10;         // one fix in one cell
constexpr double kSecondsPerCell = 1e-7;            // writing and contouring one cell
constexpr double kSecondsPerDistribution = 5e-3;    // making its files
constexpr double kSecondsPerPair = 8e-9;            // of fixes, in a search over pairs
constexpr double kSecondsPerTransformedFix = 3e-6;  // in a search by transform
constexpr double kSecondsPerTransform = 0.5;
constexpr double kAdaptiveFactor = 2.0;  // a pilot estimate goes before

platform::Extent bounds_of(const AnimalFixes& animal) {
    platform::Extent bounds;
    for (const platform::Point& fix : animal.Fixes) bounds.Include(fix);
    return bounds;
}

double cells_of(const platform::RasterGeometry& grid) {
    return static_cast<double>(grid.Columns) * static_cast<double>(grid.Rows);
}

/// Cells that one fix reaches, at most the whole grid.
double reached_cells(const platform::RasterGeometry& grid, double radius) {
    const double side = 2.0 * (std::floor(radius / grid.CellSize) + 1.0) + 1.0;
    return std::min(side, static_cast<double>(grid.Columns)) * std::min(side, static_cast<double>(grid.Rows));
}

bool searches(BandwidthMethod method) {
    return method == BandwidthMethod::kLscv || method == BandwidthMethod::kBcv;
}

double search_seconds(BandwidthMethod method, double fixes) {
    if (!searches(method)) return 0.0;
    return std::min(fixes * fixes * kSecondsPerPair, kSecondsPerTransform + fixes * kSecondsPerTransformedFix);
}

/// Memory of a search over the usual range, given back before the grid is made.
double search_megabytes(BandwidthMethod method, const AnimalFixes& animal, const platform::Extent& bounds,
                        double href) {
    if (!searches(method) || !(href > 0.0)) return 0.0;
    const bool isLscv = method == BandwidthMethod::kLscv;
    return engine::megabytes_of_transforms(isLscv ? engine::Criterion::kLscv : engine::Criterion::kBcv, bounds,
                                           animal.Fixes.size(), 0.05 * href, (isLscv ? 2.0 : 3.0) * href);
}

}  // namespace

EstimateFrame estimate_frame(const RunInputs& inputs, const platform::Extent& layerExtent, double buffer,
                             const platform::RasterGeometry& reference) {
    EstimateFrame frame;
    frame.Inputs = inputs;
    if (inputs.Mode == ExtentMode::kReference) {
        frame.Shared = reference;
        frame.CellSize = reference.CellSize;
        return frame;
    }
    frame.CellSize = platform::round_half_even(platform::NumberFromText(inputs.CellSizeText), 0);
    if (inputs.Mode == ExtentMode::kFull) frame.Shared = enlarged_grid(layerExtent, buffer, frame.CellSize);
    return frame;
}

double applied_href(const HrefRow& href, const VarianceRow& spread, bool rescale) {
    if (!rescale) return href.Href.value_or(0.0);
    return href.HrefScaled.value_or(0.0) * (spread.SdX.value_or(0.0) + spread.SdY.value_or(0.0)) / 2.0;
}

DistributionEstimate estimate(const EstimateFrame& frame, const AnimalFixes& animal, double href, double value) {
    const BandwidthMethod method = frame.Inputs.Method;
    const platform::Extent bounds = bounds_of(animal);
    const double chosen = method == BandwidthMethod::kManual ? value : href;
    DistributionEstimate result;
    result.Bandwidth = method == BandwidthMethod::kProportion ? value * href : chosen;
    const double radius = kernel_radius(frame.Inputs, animal.Fixes, chosen, value, {});
    result.Grid =
        frame.Inputs.Mode == ExtentMode::kMinimum ? enlarged_grid(bounds, radius, frame.CellSize) : frame.Shared;
    result.Grid.CellSize = frame.CellSize;
    const double cells = cells_of(result.Grid);
    const auto fixes = static_cast<double>(animal.Fixes.size());
    result.Megabytes = std::max(cells * kBytesPerCell / 1e6, search_megabytes(method, animal, bounds, href));
    const double kernel = fixes * reached_cells(result.Grid, radius) * kSecondsPerUpdate;
    result.Seconds = kSecondsPerDistribution + search_seconds(method, fixes) +
                     kernel * (frame.Inputs.FixedKernel ? 1.0 : kAdaptiveFactor) + cells * kSecondsPerCell;
    return result;
}

bool is_too_large(const DistributionEstimate& estimate) {
    return cells_of(estimate.Grid) > kCellLimit;
}

}  // namespace wxl::kde_tool
