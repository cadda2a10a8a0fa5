#include "engine/clsKernelCalculator.h"

#include "engine/clsLSCV.h"
#include "engine/numeric.h"
#include "platform/checked.h"
#include "platform/runtime_error.h"

#include <cmath>
#include <limits>
#include <utility>

namespace wxl::engine {
namespace {

bool accepted(double value) {
    return value > 0.0 && std::isfinite(value);
}

}  // namespace

/// What tells the two searches apart.
struct clsKernelCalculator::SearchSteps {
    std::int32_t Units;
    std::int32_t Rescaling;
    std::int32_t Search;
    std::int32_t Result;
    void (clsLSCV::*Calculate)();
    BandwidthEstimator Estimator;
    const char* Label;
    const char* NotMinimised;
};

void clsKernelCalculator::SetInputCoords(std::span<const platform::Point> coordinates) {
    m_points.assign(coordinates.begin(), coordinates.end());
    m_warnings.clear();
    m_proportionHref = 0.0;
    m_rescaled = false;
    LSCVMinimized = false;
    HasLSCVProfile = false;
    lErrorStatus = kernel_status::kGood;
    m_kernelCalculated = false;
}

void clsKernelCalculator::SetCellSize(double dCellSize) {
    if (!(dCellSize > 0.0) || dCellSize > static_cast<double>(std::numeric_limits<std::int32_t>::max())) return;
    m_cellSize = platform::round_half_even_i32(dCellSize);
    m_kernelCalculated = false;
}

void clsKernelCalculator::SetExactCellSize(double dCellSize) {
    if (!(dCellSize > 0.0) || dCellSize > static_cast<double>(std::numeric_limits<std::int32_t>::max())) return;
    m_cellSize = dCellSize;
    m_kernelCalculated = false;
}

void clsKernelCalculator::SetRows(std::int32_t lRows) {
    if (lRows <= 0) return;
    m_rows = lRows;
    m_kernelCalculated = false;
    if (GridTooLarge()) lErrorStatus = kernel_status::kGridTooLarge;
}

void clsKernelCalculator::SetColumns(std::int32_t lColumns) {
    if (lColumns <= 0) return;
    m_columns = lColumns;
    m_kernelCalculated = false;
    if (GridTooLarge()) FailTooLarge();
}

void clsKernelCalculator::SetOriginCoords(double dX, double dY) {
    m_originX = dX;
    m_originY = dY;
    m_kernelCalculated = false;
}

void clsKernelCalculator::SetReferenceRaster(const platform::RasterGeometry* pRL) {
    if (pRL == nullptr) {
        lErrorStatus = kernel_status::kNoReferenceRaster;
        return;
    }
    SetCellSize(pRL->CellSize);
    SetColumns(pRL->Columns);
    SetRows(pRL->Rows);
    SetOriginCoords(pRL->OriginX, pRL->OriginY);
    m_kernelCalculated = false;
}

void clsKernelCalculator::SetManualBandwidth(double dBandwidth) {
    m_estimator = be_Manual;
    if (!accepted(dBandwidth)) return;
    m_bandwidth = dBandwidth;
    m_kernelCalculated = false;
}

void clsKernelCalculator::SetProportionHRefBandwidth(double dProportion) {
    m_estimator = be_Manual;
    if (!accepted(dProportion)) return;
    m_proportionHref = dProportion;
    m_kernelCalculated = false;
}

void clsKernelCalculator::SetScalingFactor(double dFactor) {
    if (!accepted(dFactor)) return;
    m_scalingFactor = dFactor;
    m_kernelCalculated = false;
}

void clsKernelCalculator::SetKernelType(TKernelType /*type*/) {
    m_kernelCalculated = false;
}

void clsKernelCalculator::SetFixedKernel(bool bFixed) {
    m_fixedKernel = bFixed;
    m_kernelCalculated = false;
}

void clsKernelCalculator::SetEnforceUnitVariance(bool bEnforce) {
    m_enforceUnitVariance = bEnforce;
    m_kernelCalculated = false;
}

void clsKernelCalculator::SetLimitRadius(double dRadius) {
    if (!accepted(dRadius)) return;
    m_limitRadius = dRadius;
    m_kernelCalculated = false;
}

double clsKernelCalculator::GetScaledBandwidth() const {
    return m_enforceUnitVariance && m_rescaled ? m_bandwidth * (m_sdX + m_sdY) / 2.0 : m_bandwidth;
}

std::optional<SearchProfile> clsKernelCalculator::GetLSCVProfile() const {
    if (!HasLSCVProfile) return std::nullopt;
    return m_profile;
}

void clsKernelCalculator::CalculateHREF() {
    if (lErrorStatus >= 1) return;
    try {
        RescaleOnce(kernel_status::kHrefRescaling, kernel_status::kHrefRescaling);
        clsLSCV search(*m_messages);
        search.SetInputCoords(m_points);
        search.CalculateHREF();
        m_href = search.GetHREF();
        if (search.lErrorStatus == lscv_status::kGood)
            m_bandwidth = m_href;
        else
            lErrorStatus = kernel_status::kSearchFailed;
        m_estimator = be_HREF;
        lErrorStatus = kernel_status::kGood;
    } catch (...) {
        ShowFault("CalcHREF: ");
    }
}

void clsKernelCalculator::CalculateLSCV() {
    CalculateBySearch({.Units = kernel_status::kLscvUnits,
                       .Rescaling = kernel_status::kLscvRescaling,
                       .Search = kernel_status::kLscvSearch,
                       .Result = kernel_status::kLscvResult,
                       .Calculate = &clsLSCV::CalculateLSCV,
                       .Estimator = be_LSCV,
                       .Label = "CalcLSCV: ",
                       .NotMinimised = "Warning: the LSCV function failed to minimize between 0.05*HREF and 2.00*HREF. "
                                       "The bandwidth defaulted to HREF."});
}

void clsKernelCalculator::CalculateBCV() {
    CalculateBySearch({.Units = kernel_status::kBcvUnits,
                       .Rescaling = kernel_status::kBcvRescaling,
                       .Search = kernel_status::kBcvSearch,
                       .Result = kernel_status::kBcvResult,
                       .Calculate = &clsLSCV::CalculateBCV2,
                       .Estimator = be_BCV,
                       .Label = "CalcBCV: ",
                       .NotMinimised = "Warning: the BCV function failed to minimize between 0.05*HREF and 2.00*HREF. "
                                       "The bandwidth defaulted to HREF."});
}

void clsKernelCalculator::CalculateBySearch(const SearchSteps& steps) {
    if (lErrorStatus >= 1) return;
    try {
        RescaleOnce(steps.Units, steps.Rescaling);
        lErrorStatus = steps.Search;
        clsLSCV search(*m_messages);
        search.SetTurns(m_turns);
        search.SetInputCoords(m_points);
        (search.*steps.Calculate)();
        m_href = search.GetHREF();
        if (search.lErrorStatus == lscv_status::kGood)
            TakeSearchResult(search, steps);
        else
            lErrorStatus = kernel_status::kSearchFailed;
        m_estimator = steps.Estimator;
        // A failed search is not reported here: the bandwidth keeps its earlier value, and the kernel tells.
        lErrorStatus = kernel_status::kGood;
    } catch (...) {
        ShowFault(steps.Label);
    }
}

void clsKernelCalculator::TakeSearchResult(const clsLSCV& search, const SearchSteps& steps) {
    lErrorStatus = steps.Result;
    m_profile = search.GetLSCVProfile().value_or(SearchProfile());
    HasLSCVProfile = true;
    LSCVMinimized = search.bMinimized;
    m_bandwidth = LSCVMinimized ? search.GetBandwidth() : m_href;
    if (!LSCVMinimized) Warn(steps.NotMinimised);
}

void clsKernelCalculator::Warn(const std::string& text) {
    m_warnings += text + "\r";
}

void clsKernelCalculator::Fail(std::int32_t status, const std::string& text) {
    lErrorStatus = status;
    Warn(text);
}

void clsKernelCalculator::ShowFault(const std::string& label) {
    const platform::RuntimeError error = platform::CurrentError();
    m_messages->Show({.Text = label + std::to_string(error.Number) + ", " + error.Description,
                      .Title = "Error",
                      .Kind = platform::BoxKind::kFault});
}

void clsKernelCalculator::FailTooLarge() {
    Fail(kernel_status::kGridTooLarge,
         "Output raster is too large (> 50 million cells). Kernel could not be calculated. Please increase the output "
         "cell size.");
}

bool clsKernelCalculator::GridTooLarge() const {
    return std::int64_t{m_rows} * m_columns > KernelGrid::kMaximumCells;
}

void clsKernelCalculator::RescaleOnce(std::int32_t unitsStep, std::int32_t loopStep) {
    if (!m_enforceUnitVariance) return;
    lErrorStatus = unitsStep;
    if (m_rescaled) return;
    m_sdX = std::sqrt(Variance(m_points, 0));
    m_sdY = std::sqrt(Variance(m_points, 1));
    lErrorStatus = loopStep;
    PointSample rescaled;
    rescaled.reserve(m_points.size());
    for (const platform::Point& point : m_points)
        rescaled.push_back({platform::quotient(point.X, m_sdX), platform::quotient(point.Y, m_sdY)});
    m_points = std::move(rescaled);
    m_rescaled = true;
}

}  // namespace wxl::engine
