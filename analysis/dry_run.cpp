#include "analysis/dry_run.h"

#include "analysis/coincidence.h"
#include "analysis/diagnosis.h"
#include "analysis/fitting_cells.h"
#include "analysis/kernel_radius.h"
#include "analysis/output_names.h"
#include "analysis/raster_extent.h"
#include "engine/kernel_grid.h"
#include "engine/pair_sums.h"
#include "engine/status.h"

#include <algorithm>
#include <cmath>

namespace wxl::analysis {
namespace {

constexpr double kBytesPerCell = 8.0;

// Measured.
constexpr double kSecondsPerUpdate = 1e-10;         // one fix in one cell
constexpr double kSecondsPerCell = 1e-7;            // writing and contouring one cell
constexpr double kSecondsPerDistribution = 5e-3;    // making its files
constexpr double kSecondsPerPair = 8e-9;            // of fixes, in a search over pairs
constexpr double kSecondsPerTransformedFix = 3e-6;  // in a search by transform
constexpr double kSecondsPerTransform = 0.5;
constexpr double kAdHocRounds = 12.0;    // kernels of falling bandwidth, each smaller than the last
constexpr double kAdaptiveFactor = 2.0;  // a pilot estimate goes before

double cells_of(const platform::RasterGeometry& grid) {
    return static_cast<double>(grid.Columns) * static_cast<double>(grid.Rows);
}

/// Cells that one fix reaches, at most the whole grid.
double reached_cells(const platform::RasterGeometry& grid, double radius) {
    const double side = 2.0 * (std::floor(radius / grid.CellSize) + 1.0) + 1.0;
    return std::min(side, static_cast<double>(grid.Columns)) * std::min(side, static_cast<double>(grid.Rows));
}

double search_seconds(BandwidthMethod method, double fixes) {
    if (!is_search(method)) return 0.0;
    return std::min(fixes * fixes * kSecondsPerPair, kSecondsPerTransform + fixes * kSecondsPerTransformedFix);
}

/// Memory of a search over the usual range, given back before the grid is made.
double search_megabytes(BandwidthMethod method, const AnimalFixes& animal, const platform::Extent& bounds,
                        double href) {
    if (!is_search(method) || !(href > 0.0)) return 0.0;
    const bool isLscv = method == BandwidthMethod::kLscv;
    return engine::megabytes_of_transforms(isLscv ? engine::Criterion::kLscv : engine::Criterion::kBcv, bounds,
                                           animal.Fixes.size(), 0.05 * href, (isLscv ? 2.0 : 3.0) * href);
}

/// The status with which the calculator will end, as far as it is known before: not with a bandwidth yet to be found.
std::int32_t coming_status(const DistributionEstimate& cost, BandwidthMethod method) {
    namespace kernel_status = engine::kernel_status;
    if (is_too_large(cost)) return kernel_status::kGridTooLarge;
    if (!(cost.Bandwidth > 0.0) || cost.Grid.Columns < 1 || cost.Grid.Rows < 1) return kernel_status::kNothingToCompute;
    if (!is_search(method) && cost.Bandwidth < cost.Grid.CellSize) return kernel_status::kBandwidthBelowCell;
    return kernel_status::kGood;
}

std::string coming_failure(const AnimalFixes& animal, const DistributionEstimate& cost, BandwidthMethod method) {
    AnimalRecord record;
    record.SampleSize = static_cast<std::int32_t>(animal.Fixes.size());
    record.Coincident = coincidence_of(animal.Fixes);
    record.BandwidthMapUnits = cost.Bandwidth;
    record.Grid = cost.Grid;
    record.Status = coming_status(cost, method);
    return failure_reason(record);
}

}  // namespace

EstimateFrame estimate_frame(const Settings& settings, const platform::Extent& layerExtent,
                             const platform::RasterGeometry& reference) {
    EstimateFrame frame;
    frame.Wanted = settings;
    frame.LayerExtent = layerExtent;
    if (settings.Mode == ExtentMode::kReference) {
        frame.Shared = reference;
        frame.CellSize = reference.CellSize;
        return frame;
    }
    frame.CellSize = settings.Cells.Side;
    if (settings.Mode == ExtentMode::kFull && !settings.Cells.OfBandwidths)
        frame.Shared = enlarged_grid(layerExtent, settings.Buffer.Value.value_or(0.0), frame.CellSize);
    return frame;
}

double applied_href(const HrefRow& href, const VarianceRow& spread, bool rescale) {
    if (!rescale) return href.Href.value_or(0.0);
    return href.HrefScaled.value_or(0.0) * (spread.SdX.value_or(0.0) + spread.SdY.value_or(0.0)) / 2.0;
}

namespace {

/// The grid of a distribution whose bandwidth is known as far as it can be.
platform::RasterGeometry grid_of(const EstimateFrame& frame, const platform::Extent& bounds, double bandwidth,
                                 double radius) {
    const bool smallest = frame.Wanted.Mode == ExtentMode::kMinimum;
    if (frame.Wanted.Mode == ExtentMode::kReference || (!frame.Wanted.Cells.OfBandwidths && !smallest)) {
        platform::RasterGeometry grid = frame.Shared;
        grid.CellSize = frame.CellSize;
        return grid;
    }
    const platform::Extent& extent = smallest ? bounds : frame.LayerExtent;
    const double margin = smallest ? radius : frame.Wanted.Buffer.Value.value_or(0.0);
    const double side = frame.Wanted.Cells.OfBandwidths ? fitting_cell_size(bandwidth, extent, margin) : frame.CellSize;
    return side > 0.0 ? enlarged_grid(extent, margin, side) : platform::RasterGeometry{.CellSize = 1.0};
}

}  // namespace

DistributionEstimate estimate(const EstimateFrame& frame, const AnimalFixes& animal, double href, double value) {
    const BandwidthMethod method = frame.Wanted.Method;
    const platform::Extent bounds = platform::bounds_of(animal.Fixes);
    const double chosen = method == BandwidthMethod::kManual ? value : href;
    DistributionEstimate result;
    result.Bandwidth = method == BandwidthMethod::kProportion ? value * href : chosen;
    const double radius = kernel_radius(frame.Wanted, animal.Fixes, chosen, value, {});
    result.Grid = grid_of(frame, bounds, result.Bandwidth, radius);
    const double cells = cells_of(result.Grid);
    const auto fixes = static_cast<double>(animal.Fixes.size());
    result.Megabytes = std::max(cells * kBytesPerCell / 1e6, search_megabytes(method, animal, bounds, href));
    const double rounds = method == BandwidthMethod::kAdHoc ? kAdHocRounds : 1.0;
    const double kernel = rounds * fixes * reached_cells(result.Grid, radius) * kSecondsPerUpdate;
    result.Seconds = kSecondsPerDistribution + search_seconds(method, fixes) +
                     kernel * (frame.Wanted.FixedKernel ? 1.0 : kAdaptiveFactor) + cells * kSecondsPerCell;
    return result;
}

bool is_too_large(const DistributionEstimate& estimate) {
    return cells_of(estimate.Grid) > static_cast<double>(engine::KernelGrid::kMaximumCells);
}

std::vector<ComingDistribution> dry_run(const EstimateFrame& frame, std::span<const AnimalFixes> animals) {
    const std::vector<double> values = values_of(frame.Wanted);
    const std::vector<HrefRow> hrefs = href_rows(animals);
    const std::vector<VarianceRow> spreads = variance_rows(animals);
    std::vector<ComingDistribution> distributions;
    for (std::size_t i = 0; i < animals.size(); ++i) {
        const double href = applied_href(hrefs[i], spreads[i], frame.Wanted.Rescale);
        for (std::size_t number = 1; number <= values.size(); ++number) {
            const DistributionEstimate cost = estimate(frame, animals[i], href, values[number - 1]);
            const std::string name = raster_name(frame.Wanted, animals[i].NamingId, number);
            distributions.push_back(
                {.Id = animals[i].Id,
                 .SampleSize = animals[i].Fixes.size(),
                 .Href = hrefs[i].Href,
                 .Cost = cost,
                 .RasterName = animals[i].Subfolder.empty() ? name : animals[i].Subfolder + "/" + name,
                 .Failure = coming_failure(animals[i], cost, frame.Wanted.Method)});
        }
    }
    return distributions;
}

}  // namespace wxl::analysis
