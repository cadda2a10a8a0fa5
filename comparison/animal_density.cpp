#include "comparison/animal_density.h"

#include "comparison/kernel_sum.h"
#include "engine/clsKernelCalculator.h"
#include "engine/kernel_reach.h"
#include "platform/text.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>

namespace wxl::comparison {
namespace {

/// Faults of the calculator are told as reasons, not as boxes.
class NoBoxes final : public platform::IMessages {
public:
    platform::Answer Show(const platform::MessageBox& /*box*/) override { return platform::Answer::kOk; }
};

std::string in_one_line(std::string warnings) {
    while (!warnings.empty() && warnings.back() == '\r') warnings.pop_back();
    std::replace(warnings.begin(), warnings.end(), '\r', ' ');
    return warnings;
}

void choose(engine::clsKernelCalculator& calculator, const DensitySettings& settings) {
    if (settings.Rule == BandwidthRule::kManual) return calculator.SetManualBandwidth(settings.Value);
    if (settings.Rule == BandwidthRule::kLscv) return calculator.CalculateLSCV();
    if (settings.Rule == BandwidthRule::kBcv) return calculator.CalculateBCV();
    calculator.CalculateHREF();
}

std::string reason_for(const engine::PointSample& fixes) {
    if (fixes.empty()) return "no fix";
    return fixes.size() == 1 ? "one fix is too few for a bandwidth" : "the fixes have no spread";
}

void take_adhoc(AnimalBandwidth& found, const engine::PointSample& fixes, const DensitySettings& settings) {
    found.AdHoc = adhoc_bandwidth(fixes, settings.AdHoc);
    found.MapUnits = found.AdHoc.Bandwidth;
    if (found.AdHoc.Status == AdHocStatus::kNoBandwidth)
        found.Reason = "the reference bandwidth is smaller than the cell size";
    else if (found.AdHoc.Status != AdHocStatus::kFound)
        found.Warning = std::string(status_name(found.AdHoc.Status));
}

std::string reason_of(const engine::clsKernelCalculator& calculator) {
    if (calculator.lErrorStatus == engine::kernel_status::kBandwidthBelowCell)
        return "the bandwidth (" + platform::NumberText(calculator.GetScaledBandwidth()) +
               ") is smaller than the cell size (" + platform::NumberText(calculator.GetCellSize()) + ")";
    if (calculator.lErrorStatus == engine::kernel_status::kGridTooLarge) return "the grid has too many cells";
    return "the density could not be computed (code " + std::to_string(calculator.lErrorStatus) + ")";
}

PartOfGrid part_of(const engine::KernelGrid& grid, const engine::SearchSquare& square) {
    PartOfGrid part{square.FirstColumn,
                    square.FirstRow,
                    square.LastColumn - square.FirstColumn + 1,
                    square.LastRow - square.FirstRow + 1,
                    {}};
    part.Cells.reserve(static_cast<std::size_t>(part.Columns) * static_cast<std::size_t>(part.Rows));
    for (std::int32_t row = square.FirstRow; row <= square.LastRow; ++row) {
        const auto cells =
            grid.Row(row).subspan(static_cast<std::size_t>(square.FirstColumn), static_cast<std::size_t>(part.Columns));
        part.Cells.insert(part.Cells.end(), cells.begin(), cells.end());
    }
    return part;
}

}  // namespace

AnimalBandwidth bandwidth_of(const engine::PointSample& fixes, const DensitySettings& settings) {
    AnimalBandwidth found;
    found.Href = reference_bandwidth(fixes);
    if (fixes.empty() || (found.Href == 0.0 && settings.Rule != BandwidthRule::kManual)) {
        found.Reason = reason_for(fixes);
        return found;
    }
    if (settings.Rule == BandwidthRule::kAdHoc) {
        take_adhoc(found, fixes, settings);
        return found;
    }
    NoBoxes messages;
    engine::clsKernelCalculator calculator(messages);
    calculator.SetInputCoords(fixes);
    calculator.SetEnforceUnitVariance(settings.Rescale);
    choose(calculator, settings);
    found.Warning = in_one_line(calculator.WarningMessages());
    const double proportion = settings.Rule == BandwidthRule::kProportion ? settings.Value : 1.0;
    found.MapUnits = calculator.GetScaledBandwidth() * proportion;
    if (!(found.MapUnits > 0.0) || !std::isfinite(found.MapUnits)) {
        found.MapUnits = 0.0;
        found.Reason = reason_for(fixes);
    }
    return found;
}

platform::RasterGeometry shared_grid(std::span<const engine::PointSample> animals,
                                     std::span<const AnimalBandwidth> bandwidths, double cellSize) {
    platform::Extent extent;
    double smallest = 0.0;
    double largest = 0.0;
    for (std::size_t i = 0; i < animals.size(); ++i) {
        const double bandwidth = bandwidths[i].MapUnits;
        if (!(bandwidth > 0.0)) continue;
        for (const platform::Point& fix : animals[i]) extent.Include(fix);
        smallest = smallest == 0.0 ? bandwidth : std::min(smallest, bandwidth);
        largest = std::max(largest, bandwidth);
    }
    if (extent.IsEmpty()) return {0.0, 0.0, std::max(1.0, cellSize), 1, 1};
    const double margin = engine::kUsualReach * largest;
    const double cell = cellSize > 0.0 ? cellSize : usual_cell_size(smallest, extent, margin);
    return covering_grid(extent, margin + cell, cell);
}

AnimalDensity density_of(const engine::PointSample& fixes, const AnimalBandwidth& bandwidth,
                         const DensitySettings& settings, const platform::RasterGeometry& grid) {
    if (!(bandwidth.MapUnits > 0.0)) return {{}, bandwidth.Reason};
    NoBoxes messages;
    engine::clsKernelCalculator calculator(messages);
    calculator.SetInputCoords(fixes);
    calculator.SetEnforceUnitVariance(settings.Rescale);
    calculator.SetFixedKernel(!settings.Adaptive);
    calculator.SetScalingFactor(1.0);
    calculator.SetCellSize(grid.CellSize);
    calculator.SetRows(grid.Rows);
    calculator.SetColumns(grid.Columns);
    calculator.SetOriginCoords(grid.OriginX, grid.OriginY);
    calculator.SetManualBandwidth(bandwidth.MapUnits);
    calculator.SetLimitRadius(engine::kUsualReach * bandwidth.MapUnits);
    calculator.CalculateKernel();
    const engine::KernelGrid* kernel = calculator.GetKernel();
    if (kernel == nullptr) return {{}, reason_of(calculator)};
    if (!(calculator.GetKernelVolume() > 0.0)) return {{}, "no volume in the grid"};
    return {part_of(*kernel, calculator.GetReachedCells()), {}};
}

}  // namespace wxl::comparison
