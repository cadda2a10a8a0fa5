#pragma once
#include "engine/kernel_grid.h"
#include "engine/point_sample.h"
#include "engine/search_profile.h"
#include "engine/status.h"
#include "engine/work_clock.h"
#include "platform/messages.h"
#include "platform/rasters.h"

#include <cstdint>
#include <filesystem>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <utility>
#include <vector>

namespace wxl::engine {

class clsLSCV;

/// The kernel functions on offer.
enum TKernelType : std::int32_t { kernel_Guassian = 0 };

/// Ways of choosing the bandwidth.
enum BandwidthEstimator : std::int32_t { be_Manual = 0, be_LSCV = 1, be_HREF = 2, be_BCV = 3 };

/// Kernel density of one animal's fixes on a grid: bivariate normal kernel, fixed or adaptive (Silverman 1986, ch. 5).
///
/// Order of use: SetInputCoords (it resets the object), grid and kernel setters, one bandwidth choice, CalculateKernel,
/// then the getters. Only WriteKernelToRaster throws; read lErrorStatus and WarningMessages after each other step.
/// Setters ignore a number that is not greater than zero, not finite, or (cell size) beyond 32 bits.
class clsKernelCalculator {
public:
    /// Message boxes about faults go to `messages`, which must outlive the object; WriteKernelToRaster writes with
    /// `createRaster`.
    explicit clsKernelCalculator(platform::IMessages& messages, platform::CreateRaster createRaster = {})
        : m_messages(&messages), m_createRaster(std::move(createRaster)) {}

    bool LSCVMinimized = false;     ///< the last LSCV or BCV search ended at an interior minimum
    bool HasLSCVProfile = false;    ///< a search profile is held
    std::int32_t lErrorStatus = 0;  ///< kernel_status

    /// Copies the fixes, in map units, and clears warnings, status, proportion of HREF and the results of a search.
    void SetInputCoords(std::span<const platform::Point> coordinates);

    /// Cell side in map units, kept as a whole number (rounded half to even): below 0.5 it becomes 0, and
    /// CalculateKernel faults.
    void SetCellSize(double dCellSize);

    /// The same for a side that the program chooses to fit the fixes: taken as it is, fractions included.
    void SetExactCellSize(double dCellSize);

    /// Size of the grid in cells. More than 50,000,000 cells set status 1001, and SetColumns warns as well.
    void SetRows(std::int32_t lRows);
    void SetColumns(std::int32_t lColumns);

    /// Lower-left corner of the grid in map units.
    void SetOriginCoords(double dX, double dY);

    /// Cell size, columns, rows and origin of a raster layer; null sets status 1010.
    void SetReferenceRaster(const platform::RasterGeometry* pRL);

    /// Bandwidth in map units. The estimator becomes be_Manual even when the value is refused.
    void SetManualBandwidth(double dBandwidth);

    /// Multiplier of the bandwidth, applied by each CalculateKernel. The estimator becomes be_Manual in any case.
    void SetProportionHRefBandwidth(double dProportion);

    /// Multiplier of every grid value; 1000000 by default.
    void SetScalingFactor(double dFactor);

    /// There is one kernel: the argument is ignored.
    void SetKernelType(TKernelType type);

    /// true: fixed kernel (the default); false: adaptive.
    void SetFixedKernel(bool bFixed);

    /// Whether coordinates are divided by their standard deviations before anything else.
    void SetEnforceUnitVariance(bool bEnforce);

    /// Reach of each fix's kernel in map units: whole cells, Int(radius / cell) + 1 around the fix's own cell.
    void SetLimitRadius(double dRadius);

    /// A progress control of any kind: accepted and ignored.
    template <class Bar>
    void SetProgressBar(Bar* /*pBar*/) {}

    /// The turns that long work gives to the host; none by default.
    void SetTurns(Turns turns) { m_turns = std::move(turns); }

    /// Bandwidth = reference bandwidth of the (rescaled) fixes.
    void CalculateHREF();

    /// Bandwidth of the smallest LSCV (BCV) score, or HREF with a warning where the search finds no interior minimum.
    void CalculateLSCV();
    void CalculateBCV();

    /// Fills the grid with the density per square map unit x scaling factor. A manual bandwidth is divided by the mean
    /// standard deviation under unit variance, and the bandwidth is multiplied by the proportion of HREF: both happen
    /// anew at each call, so the bandwidth is to be set before each.
    void CalculateKernel();

    /// Writes the grid as a one-band raster of 32-bit floats and returns it; null when there is no valid grid. Throws
    /// RuntimeError when the raster cannot be written (6: a density beyond 32-bit floats; 91: nothing to write with).
    std::shared_ptr<platform::IRasterDataset> WriteKernelToRaster(const std::filesystem::path& sFolder,
                                                                  const std::string& dsName,
                                                                  const platform::SpatialReference& pSR);

    /// Warnings so far, each followed by a single carriage return.
    std::string WarningMessages() const { return m_warnings; }

    /// Sum of the grid values x cell area: the scaling factor when the whole density lies in the grid.
    double GetKernelVolume() const { return m_volume; }

    /// Share of the fixes' kernels, from 0 to 1, that lies beyond their search squares whatever the grid: what the
    /// limit radius leaves out. 0 while no kernel is calculated.
    double GetShareBeyondReach() const;
    double GetCellSize() const { return m_cellSize; }

    /// Bandwidth as stored: in units of the rescaled fixes once they are rescaled.
    double GetBandwidth() const { return m_bandwidth; }

    /// Reference bandwidth as stored; -1 when the fixes do not allow one.
    double GetHREF() const { return m_href; }

    /// Bandwidth in map units.
    double GetScaledBandwidth() const;
    std::int32_t GetRowCount() const { return m_rows; }
    std::int32_t GetColumnCount() const { return m_columns; }
    double GetOriginX() const { return m_originX; }
    double GetOriginY() const { return m_originY; }

    /// The grid, valid until the next call that changes the object; null before a successful CalculateKernel.
    const KernelGrid* GetKernel() const { return m_kernelCalculated ? &m_kernel : nullptr; }

    /// The cells around all search squares: beyond them the grid is 0. Empty while no kernel is calculated.
    SearchSquare GetReachedCells() const { return m_kernelCalculated ? m_reached : SearchSquare(); }

    /// The scores of the last search; nothing before one.
    std::optional<SearchProfile> GetLSCVProfile() const;

private:
    struct SearchSteps;

    void Warn(const std::string& text);
    void Fail(std::int32_t status, const std::string& text);
    void FailTooLarge();
    void ShowFault(const std::string& label);
    bool GridTooLarge() const;
    void RescaleOnce(std::int32_t unitsStep, std::int32_t loopStep);
    void CalculateBySearch(const SearchSteps& steps);
    void TakeSearchResult(const clsLSCV& search, const SearchSteps& steps);

    void ComputeKernel();
    std::int32_t LayOutGrid();
    void ChooseUnits();
    bool BandwidthBelowCell();
    void CalculateLocalFactors();
    void ComputeLocalFactors(std::string& workingValues);
    void AccumulateFixes(std::int32_t reach);
    void Normalise();
    std::span<double> Reached(std::int32_t row);

    platform::IMessages* m_messages;
    platform::CreateRaster m_createRaster;
    Turns m_turns;

    std::int32_t m_rows = 0;
    std::int32_t m_columns = 0;
    double m_cellSize = 0.0;
    double m_originX = 0.0;
    double m_originY = 0.0;
    double m_topY = 0.0;
    KernelGrid m_kernel;
    SearchSquare m_reached;
    double m_bandwidth = 0.0;
    double m_href = 0.0;
    PointSample m_points;
    double m_limitRadius = 0.0;
    bool m_fixedKernel = true;
    bool m_enforceUnitVariance = false;
    double m_sdX = 0.0;
    double m_sdY = 0.0;
    double m_scalingFactor = 1000000.0;
    BandwidthEstimator m_estimator = be_Manual;
    double m_volume = 0.0;
    bool m_kernelCalculated = false;
    std::vector<double> m_localFactors;
    SearchProfile m_profile;
    bool m_rescaled = false;
    double m_proportionHref = 0.0;
    std::string m_warnings;
};

}  // namespace wxl::engine
