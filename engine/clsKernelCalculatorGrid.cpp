// The grid of clsKernelCalculator: computed, and written as a raster.

#include "engine/clsKernelCalculator.h"
#include "engine/kernel_accumulation.h"
#include "engine/numeric.h"
#include "engine/pilot_density.h"
#include "platform/checked.h"
#include "platform/runtime_error.h"
#include "platform/text.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstddef>
#include <limits>
#include <span>

namespace wxl::engine {
namespace {

void require_finite(double value) {
    if (!std::isfinite(value)) platform::Raise(platform::error_number::kOverflow);
}

/// The number nearest to `value` that has 12 significant decimal digits.
double twelve_digits(double value) {
    char text[32];
    const char* end = std::to_chars(text, text + sizeof text, value, std::chars_format::scientific, 11).ptr;
    double rounded = value;
    std::from_chars(text, end, rounded);
    return rounded;
}

/// First and last cell within `reach` of the cell that lies `offset` map units from the first edge, cut to the grid.
struct CellRange {
    std::int32_t First;
    std::int32_t Last;
};

CellRange cells_around(double offset, double cellSize, std::int32_t reach, std::int32_t count) {
    const std::int32_t own = platform::floor_i32(offset / cellSize);
    return {std::max(platform::difference_i32(own, reach), 0), std::min(platform::sum_i32(own, reach), count - 1)};
}

/// Share of a normal distribution of standard deviation `sd` that its values in the middle of cells sum up to, between
/// two places that lie a whole number of cells apart, measured from its centre: the integral, and the first term of
/// what the midpoint rule adds to it (Euler and Maclaurin).
double share_between(double from, double to, double sd, double cell) {
    const auto below = [&](double place) { return std::erf(place / (std::sqrt(2.0) * sd)) / 2.0; };
    const auto slope = [&](double place) {
        return -place / (sd * sd) * std::exp(-0.5 * place * place / (sd * sd)) / (sd * std::sqrt(6.28318530717958));
    };
    return below(to) - below(from) + cell * cell / 24.0 * (slope(from) - slope(to));
}

/// The smallest square that holds all squares of the kernels; empty where all are.
SearchSquare around(const std::vector<FixKernel>& kernels) {
    SearchSquare all;
    for (const FixKernel& kernel : kernels) {
        const SearchSquare& square = kernel.Square;
        if (square.IsEmpty()) continue;
        if (all.IsEmpty()) all = square;
        all = {std::min(all.FirstColumn, square.FirstColumn), std::max(all.LastColumn, square.LastColumn),
               std::min(all.FirstRow, square.FirstRow), std::max(all.LastRow, square.LastRow)};
    }
    return all;
}

float single_precision(double value) {
    if (std::abs(value) > static_cast<double>(std::numeric_limits<float>::max()))
        platform::Raise(platform::error_number::kOverflow, "A density is too large for a raster of 32-bit floats");
    return static_cast<float>(value);
}

}  // namespace

void clsKernelCalculator::CalculateKernel() {
    if (lErrorStatus >= 1) return;
    if (m_bandwidth == 0.0 || m_columns < 1 || m_rows < 1)
        return Fail(kernel_status::kNothingToCompute,
                    "The bandwidth or dimensions of the output raster were 0. Could not calculate kernel.");
    if (GridTooLarge()) return FailTooLarge();
    try {
        ComputeKernel();
    } catch (...) {
        const platform::RuntimeError error = platform::CurrentError();
        m_messages->Show({.Text = "KernelCalculator: " + std::to_string(lErrorStatus) + ", " +
                                  std::to_string(error.Number) + ", " + error.Description,
                          .Title = "Error",
                          .Sign = platform::Icon::kCritical,
                          .Kind = platform::BoxKind::kFault});
    }
}

void clsKernelCalculator::ComputeKernel() {
    m_kernelCalculated = false;
    lErrorStatus = kernel_status::kDimensions;
    const std::int32_t reach = LayOutGrid();
    ChooseUnits();
    if (BandwidthBelowCell()) return;

    lErrorStatus = kernel_status::kGood;
    if (!m_fixedKernel) CalculateLocalFactors();
    if (lErrorStatus >= 1) return;

    lErrorStatus = kernel_status::kAccumulation;
    AccumulateFixes(reach);
    if (!m_points.empty()) lErrorStatus = kernel_status::kNextPoint;
    Normalise();
    lErrorStatus = kernel_status::kGood;
    m_kernelCalculated = true;
}

/// Allocates the grid and returns how many cells a fix reaches beyond its own.
std::int32_t clsKernelCalculator::LayOutGrid() {
    m_topY = m_cellSize * static_cast<double>(m_rows) + m_originY;
    require_finite(m_originX);
    require_finite(m_topY);
    const std::int32_t reach = platform::sum_i32(platform::floor_i32(platform::quotient(m_limitRadius, m_cellSize)), 1);
    m_kernel.Reset(m_columns, m_rows);
    m_volume = 0.0;
    return reach;
}

void clsKernelCalculator::ChooseUnits() {
    lErrorStatus = kernel_status::kUnits;
    if (m_enforceUnitVariance) {
        RescaleOnce(kernel_status::kRescaling, kernel_status::kRescaling);
        if (m_proportionHref == 0.0 && m_estimator == be_Manual)
            m_bandwidth = platform::quotient(m_bandwidth, (m_sdY + m_sdX) / 2.0);
    } else {
        m_sdX = 1.0;
        m_sdY = 1.0;
    }
    if (m_proportionHref > 0.0) m_bandwidth = m_proportionHref * m_bandwidth;
    require_finite(m_bandwidth);
}

bool clsKernelCalculator::BandwidthBelowCell() {
    const bool divided = m_enforceUnitVariance && m_proportionHref == 0.0 && m_estimator == be_Manual;
    const double inMapUnits = m_enforceUnitVariance ? m_bandwidth * (m_sdX + m_sdY) / 2.0 : m_bandwidth;
    // A bandwidth that was divided and multiplied back may come out one rounding below the cell size it equals.
    if (!((divided ? twelve_digits(inMapUnits) : inMapUnits) < m_cellSize)) return false;
    Fail(kernel_status::kBandwidthBelowCell, "The bandwidth (" + platform::NumberText(inMapUnits) +
                                                 ") is smaller than the cell size (" +
                                                 platform::NumberText(m_cellSize) + "). Processing aborted.");
    return true;
}

void clsKernelCalculator::CalculateLocalFactors() {
    std::string workingValues = "0, 0";
    try {
        ComputeLocalFactors(workingValues);
        lErrorStatus = kernel_status::kGood;
    } catch (...) {
        m_messages->Show({.Text = "Local smooth error: " + std::to_string(lErrorStatus) + ", " + workingValues + ", " +
                                  platform::NumberText(m_bandwidth),
                          .Kind = platform::BoxKind::kFault});
    }
}

/// Local bandwidth factors (pilot / geometric mean of the pilots)^(-1/2) (Abramson 1982).
void clsKernelCalculator::ComputeLocalFactors(std::string& workingValues) {
    const auto at = [&workingValues](std::size_t point, double pilot) {
        workingValues = std::to_string(point) + ", " + platform::NumberText(pilot);
    };
    lErrorStatus = kernel_status::kPilotDensity;
    for (const platform::Point& point : m_points) {
        require_finite(point.X);
        require_finite(point.Y);
    }
    WorkClock clock(m_turns);
    m_localFactors = pilot_density(m_points, m_bandwidth, clock);

    lErrorStatus = kernel_status::kPilotMean;
    const auto count = static_cast<double>(m_points.size());
    require_finite(count * m_bandwidth * m_bandwidth);
    double logs = 0.0;
    for (std::size_t i = 0; i < m_localFactors.size(); ++i) {
        double& pilot = m_localFactors[i];
        at(i, pilot);
        pilot = platform::quotient(pilot, count * m_bandwidth * m_bandwidth);
        require_finite(pilot);
        logs += SafeLog(pilot);
    }
    const double mean = SafeExp(platform::quotient(logs, count));

    lErrorStatus = kernel_status::kLocalFactors;
    for (std::size_t i = 0; i < m_localFactors.size(); ++i) {
        double& factor = m_localFactors[i];
        at(i, factor);
        factor = SafeExp(-0.5 * SafeLog(platform::quotient(factor, mean)));
        require_finite(factor);
    }
}

void clsKernelCalculator::AccumulateFixes(std::int32_t reach) {
    const double cell = m_cellSize;
    const double west = cell / 2.0 + m_originX;
    const double north = m_topY - cell / 2.0;
    CellCentres centres;
    for (std::int32_t column = 0; column < m_columns; ++column) centres.X.push_back((west + column * cell) / m_sdX);
    for (std::int32_t row = 0; row < m_rows; ++row) centres.Y.push_back((north - cell * row) / m_sdY);

    std::vector<FixKernel> kernels;
    kernels.reserve(m_points.size());
    for (std::size_t i = 0; i < m_points.size(); ++i) {
        const platform::Point& fix = m_points[i];
        lErrorStatus = kernel_status::kPointCell;
        const CellRange columns = cells_around(fix.X * m_sdX - m_originX, cell, reach, m_columns);
        const CellRange rows = cells_around(m_topY - fix.Y * m_sdY, cell, reach, m_rows);
        lErrorStatus = kernel_status::kPointKernel;
        const double lambda = m_fixedKernel ? 1.0 : m_localFactors[i];
        require_finite(lambda * m_bandwidth);
        kernels.push_back({.Centre = fix,
                           .Bandwidth = lambda * m_bandwidth,
                           .Weight = platform::quotient(GaussianKernel(0.0), lambda * lambda),
                           .Square = {columns.First, columns.Last, rows.First, rows.Last}});
        lErrorStatus = kernel_status::kNextPoint;
    }
    lErrorStatus = kernel_status::kAccumulation;
    m_reached = around(kernels);
    WorkClock clock(m_turns);
    accumulate(kernels, centres, m_kernel, clock);
}

std::span<double> clsKernelCalculator::Reached(std::int32_t row) {
    const auto first = static_cast<std::size_t>(m_reached.FirstColumn);
    const auto last = static_cast<std::size_t>(m_reached.LastColumn);
    return m_kernel.Row(row).subspan(first, last - first + 1);
}

void clsKernelCalculator::Normalise() {
    const double perFix = static_cast<double>(m_points.size()) * m_bandwidth * m_bandwidth;
    require_finite(perFix);
    const double scale = platform::quotient(platform::quotient(m_scalingFactor, perFix), m_sdY * m_sdX);
    require_finite(scale);
    double sum = 0.0;
    for (std::int32_t row = m_reached.FirstRow; row <= m_reached.LastRow; ++row) {
        double sumOfRow = 0.0;
        for (double& value : Reached(row)) {
            value *= scale;
            sumOfRow += value;
        }
        sum += sumOfRow;
    }
    m_volume = m_cellSize * sum * m_cellSize;
    require_finite(m_volume);
}

double clsKernelCalculator::GetShareBeyondReach() const {
    if (!m_kernelCalculated || m_points.empty()) return 0.0;
    const double cell = m_cellSize;
    const double reach = std::floor(m_limitRadius / cell) + 1.0;
    // The square's cells along one axis: as many before as beyond the fix's own.
    const auto within = [&](double offset, double sd) {
        const double own = std::floor(offset / cell);
        return share_between((own - reach) * cell - offset, (own + reach + 1.0) * cell - offset, sd, cell);
    };
    double sum = 0.0;
    for (std::size_t i = 0; i < m_points.size(); ++i) {
        const double bandwidth = (m_fixedKernel ? 1.0 : m_localFactors[i]) * m_bandwidth;
        sum += within(m_points[i].X * m_sdX - m_originX, bandwidth * m_sdX) *
               within(m_topY - m_points[i].Y * m_sdY, bandwidth * m_sdY);
    }
    return 1.0 - sum / static_cast<double>(m_points.size());
}

std::shared_ptr<platform::IRasterDataset> clsKernelCalculator::WriteKernelToRaster(
    const std::filesystem::path& sFolder, const std::string& dsName, const platform::SpatialReference& pSR) {
    if (!m_kernelCalculated || lErrorStatus != kernel_status::kGood) return nullptr;
    if (!m_createRaster) platform::Raise(platform::error_number::kObjectNotSet);
    platform::RasterDefinition definition;
    definition.Name = dsName;
    definition.Geometry = {m_originX, m_originY, GetCellSize(), m_columns, m_rows};
    definition.Reference = pSR;
    const auto writer = m_createRaster(sFolder, definition);
    WorkClock clock(m_turns);
    std::vector<float> cells(static_cast<std::size_t>(m_columns));
    for (std::int32_t row = 0; row < m_rows; ++row) {
        std::ranges::transform(m_kernel.Row(row), cells.begin(), single_precision);
        writer->WriteRow(cells);
        clock.Tick();
    }
    return writer->Publish();
}

}  // namespace wxl::engine
