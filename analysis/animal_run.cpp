#include "analysis/animal_run.h"

#include "analysis/diagnosis.h"
#include "analysis/fitting_cells.h"
#include "analysis/fix_times.h"
#include "analysis/independence.h"
#include "analysis/kernel_radius.h"
#include "analysis/output_names.h"
#include "analysis/raster_extent.h"
#include "engine/clsKernelCalculator.h"
#include "engine/kernel_reach.h"
#include "isopleths/clsHISO.h"
#include "platform/runtime_error.h"
#include "utilities/Utilities.h"

#include <algorithm>
#include <optional>
#include <string>
#include <utility>

namespace wxl::analysis {
namespace {

/// A raster whose edge takes more of a distribution cuts it.
constexpr double kCutShare = 0.01;

/// What of the volume is on the raster, beyond the kernels' reach and beyond the raster's edge.
void measure_losses(const engine::clsKernelCalculator& calculator, double radius, double scalingFactor,
                    AnimalRecord& record) {
    record.Reach = record.BandwidthMapUnits > 0.0 ? radius / record.BandwidthMapUnits : 0.0;
    if (record.Status != 0) return;
    const double captured = record.Volume / scalingFactor;
    record.BeyondReach = calculator.GetShareBeyondReach();
    record.LostAtEdge = std::max(1.0 - record.BeyondReach - captured, 0.0);
    if (record.LostAtEdge > kCutShare) record.CutTo = captured;
}

constexpr std::size_t kKeptSizes = 50;

bool in_order_of_time(const AnimalFixes& animal) {
    return !animal.Fixes.empty() && animal.Times.WithTime == animal.Fixes.size() && animal.StepsBack == 0;
}

/// A page draws no more points than these, and a batch need not carry them.
comparison::AreaCurve kept_curve(comparison::AreaCurve curve) {
    const std::size_t every = (curve.Sizes.size() + kKeptSizes - 1) / kKeptSizes;
    std::vector<comparison::CurveSize> kept;
    for (std::size_t i = 0; i < curve.Sizes.size(); ++i)
        if (i % every == 0 || i + 1 == curve.Sizes.size()) kept.push_back(curve.Sizes[i]);
    curve.Sizes = std::move(kept);
    return curve;
}

AnimalRecord record_of(const engine::clsKernelCalculator& calculator, const AnimalFixes& animal,
                       const Settings& settings) {
    AnimalRecord record;
    record.Id = animal.Id;
    record.NamingId = animal.NamingId;
    record.Subfolder = animal.Subfolder;
    record.SampleSize = static_cast<std::int32_t>(animal.Fixes.size());
    record.Coincident = coincidence_of(animal.Fixes);
    record.Times = animal.Times;
    record.Error = animal.Error;
    record.Schoener = Schoener(animal.Fixes);
    record.SwihartSlade = SwihartSlade(animal.Fixes);
    record.Method = settings.Method;
    record.Bandwidth = calculator.GetBandwidth();
    record.BandwidthMapUnits = calculator.GetScaledBandwidth();
    record.Href = calculator.GetHREF();
    record.Minimized = calculator.LSCVMinimized;
    record.Profile = calculator.GetLSCVProfile().value_or(engine::SearchProfile{});
    record.Grid = {calculator.GetOriginX(), calculator.GetOriginY(), calculator.GetCellSize(),
                   calculator.GetColumnCount(), calculator.GetRowCount()};
    record.Volume = calculator.GetKernelVolume();
    record.Status = calculator.lErrorStatus;
    record.Warnings = calculator.WarningMessages();
    if (in_order_of_time(animal)) record.Curve = kept_curve(comparison::area_curve(animal.Fixes, {}));
    for (const double percent : settings.ConvexPercentages.Values)
        record.ConvexPolygons.push_back(comparison::minimum_convex_polygon(animal.Fixes, percent));
    return record;
}

void add_remark(AnimalRecord& record, const std::string& remark) {
    if (remark.empty()) return;
    record.Reason += (record.Reason.empty() ? "" : "; ") + remark;
}

}  // namespace

AnimalRecord AnimalRun::Compute(const AnimalFixes& animal, std::size_t index) {
    MakeSubfolder(animal.Subfolder);
    AnimalRecord record;
    const auto raster = ComputeRaster(animal, index, record);
    m_report.Write(animal_lines(record, m_frame.Wanted, m_frame.TextIds));
    if (m_frame.Wanted.Isopleths && raster) DrawIsopleths(raster, record);
    if (m_services.Distortions != nullptr)
        record.Distorted = m_services.Distortions->Largest(animal.Fixes, m_frame.Reference);
    record.Reason = diagnosis(record);
    if (record.Schoener) add_remark(record, order_remark(animal.StepsBack));
    m_report.Write(animal_end_lines(record));
    return record;
}

/// Another process may be making the same folder.
void AnimalRun::MakeSubfolder(const std::string& subfolder) const {
    if (subfolder.empty()) return;
    platform::MakeOwnFolder(*m_services.Files, *m_services.Folders, subfolder_in(m_frame.Folder, subfolder));
}

std::shared_ptr<platform::IRasterDataset> AnimalRun::ComputeRaster(const AnimalFixes& animal, std::size_t index,
                                                                   AnimalRecord& record) {
    engine::clsKernelCalculator calculator(*m_services.Messages, [this](const auto& place, auto definition) {
        definition.Format = m_frame.Wanted.RasterFormat;
        return m_services.Rasters->Create(place, definition);
    });
    Configure(calculator, animal);
    ChooseBandwidth(calculator, m_frame.Values.at(index));
    comparison::AdHocBandwidth adhoc;
    if (m_frame.Wanted.Method == BandwidthMethod::kAdHoc) adhoc = ShrinkWhileWhole(calculator, animal);
    const double radius = kernel_radius(m_frame.Wanted, animal.Fixes, calculator.GetScaledBandwidth(),
                                        m_frame.Values.at(index), {.Yield = [this] { m_services.Host->Yield(); }});
    calculator.SetLimitRadius(radius);
    if (m_frame.Wanted.Cells.OfBandwidths) FitCells(calculator, animal, m_frame.Values.at(index), radius);
    if (m_frame.Wanted.Mode == ExtentMode::kMinimum) SetSmallestExtent(calculator, animal, radius);
    m_stages.Stage("Calculating kernel...");
    calculator.CalculateKernel();

    record = record_of(calculator, animal, m_frame.Wanted);
    record.AdHoc = std::move(adhoc);
    record.Value = m_frame.Values.at(index);
    record.Adaptive = !m_frame.Wanted.FixedKernel;
    measure_losses(calculator, radius, m_frame.ScalingFactor(), record);
    record.RasterName = raster_name(m_frame.Wanted, animal.NamingId, index + 1);
    ShowWarnings(record);
    m_stages.Stage("Writing kernel...");
    const std::filesystem::path folder = Folder(record);
    auto raster = calculator.WriteKernelToRaster(folder, record.RasterName, m_frame.Reference);
    if (raster) record.Files.push_back((raster->Path().empty() ? folder / record.RasterName : raster->Path()).string());
    return raster;
}

void AnimalRun::Configure(engine::clsKernelCalculator& calculator, const AnimalFixes& animal) const {
    const Settings& settings = m_frame.Wanted;
    calculator.SetInputCoords(animal.Fixes);
    calculator.SetTurns({.Yield = [this] { m_services.Host->Yield(); }});
    calculator.SetKernelType(engine::kernel_Guassian);
    calculator.SetFixedKernel(settings.FixedKernel);
    calculator.SetEnforceUnitVariance(settings.Rescale);
    calculator.SetScalingFactor(m_frame.ScalingFactor());
    calculator.SetCellSize(m_frame.Wanted.Cells.Side);
    if (settings.Mode == ExtentMode::kFull && !settings.Cells.OfBandwidths) SetFullExtent(calculator);
    if (settings.Mode == ExtentMode::kReference) {
        const platform::RasterGeometry reference = m_frame.ReferenceRaster->Geometry();
        calculator.SetReferenceRaster(&reference);
    }
}

/// The cells of a reference raster stay.
void AnimalRun::FitCells(engine::clsKernelCalculator& calculator, const AnimalFixes& animal, double value,
                         double radius) const {
    const Settings& settings = m_frame.Wanted;
    if (settings.Mode == ExtentMode::kReference) return;
    const double scaled = calculator.GetScaledBandwidth();
    const double own = settings.Method == BandwidthMethod::kProportion ? value * scaled : scaled;
    const bool full = settings.Mode == ExtentMode::kFull;
    calculator.SetExactCellSize(full ? fitting_cell_size(own, m_frame.LayerExtent, settings.Buffer.Value.value_or(0.0))
                                     : fitting_cell_size(own, platform::bounds_of(animal.Fixes), radius));
    if (full) SetFullExtent(calculator);
}

void AnimalRun::SetFullExtent(engine::clsKernelCalculator& calculator) const {
    const auto grid =
        enlarged_grid(m_frame.LayerExtent, m_frame.Wanted.Buffer.Value.value_or(0.0), calculator.GetCellSize());
    calculator.SetRows(grid.Rows);
    calculator.SetColumns(grid.Columns);
    calculator.SetOriginCoords(grid.OriginX, grid.OriginY);
}

void AnimalRun::SetSmallestExtent(engine::clsKernelCalculator& calculator, const AnimalFixes& animal, double margin) {
    const auto grid = enlarged_grid(platform::bounds_of(animal.Fixes), margin, calculator.GetCellSize());
    calculator.SetColumns(grid.Columns);
    calculator.SetRows(grid.Rows);
    calculator.SetOriginCoords(grid.OriginX, grid.OriginY);
}

void AnimalRun::ChooseBandwidth(engine::clsKernelCalculator& calculator, double value) {
    switch (m_frame.Wanted.Method) {
        case BandwidthMethod::kLscv:
            m_stages.Stage("Calculating LSCV...");
            return calculator.CalculateLSCV();
        case BandwidthMethod::kBcv:
            m_stages.Stage("Calculating BCV...");
            return calculator.CalculateBCV();
        case BandwidthMethod::kHref:
        case BandwidthMethod::kAdHoc:
            return calculator.CalculateHREF();
        case BandwidthMethod::kManual:
            return calculator.SetManualBandwidth(value);
        case BandwidthMethod::kProportion:
            calculator.CalculateHREF();
            return calculator.SetProportionHRefBandwidth(value);
    }
}

/// HREF stays where there is nothing to shrink, and where the search has no room for its grid: the kernel tells why.
comparison::AdHocBandwidth AnimalRun::ShrinkWhileWhole(engine::clsKernelCalculator& calculator,
                                                       const AnimalFixes& animal) {
    m_stages.Stage("Calculating ad hoc bandwidth...");
    const double reach = engine::kUsualReach * calculator.GetScaledBandwidth();
    if (m_frame.Wanted.Cells.OfBandwidths) FitCells(calculator, animal, 0.0, reach);
    try {
        comparison::AdHocBandwidth found = comparison::adhoc_bandwidth(
            animal.Fixes, {.Parts = m_frame.Wanted.AdHocParts, .CellSize = calculator.GetCellSize()},
            [this](double) { m_services.Host->Yield(); });
        if (found.Bandwidth > 0.0) calculator.SetManualBandwidth(found.Bandwidth);
        return found;
    } catch (const platform::RuntimeError&) {
        return {};
    }
}

void AnimalRun::ShowWarnings(const AnimalRecord& record) const {
    if (record.Warnings.empty() || m_stages.Silent()) return;
    m_services.Messages->Show(
        {.Text = record.Warnings + "(Animal ID: " + platform::ValueText(record.Id) + ")", .Title = "Warnings"});
}

void AnimalRun::DrawIsopleths(const std::shared_ptr<platform::IRasterDataset>& raster, AnimalRecord& record) {
    m_stages.Stage("Isopleths...");
    const Settings& settings = m_frame.Wanted;
    isopleths::clsHISO isopleths(m_services, m_geodata);
    isopleths.SetCalculateLines(settings.Lines);
    isopleths.SetCalculatePolys(settings.Polygons);
    isopleths.SetCalculateDonuts(settings.Donuts);
    isopleths.SetKeepPolygons(settings.GeoPackage);
    isopleths.SetIsoplethBoundaries(m_frame.Wanted.Percentages.Values);
    isopleths.SetOutputFolder(Folder(record));
    isopleths.SetOutputName(isopleth_stem(record.RasterName));
    isopleths.SetRasterDataset(raster);
    isopleths.CreateIsopleths();
    TakeIsopleths(isopleths, record);
    if (!record.EdgeWarning) return;
    m_services.Messages->Show({.Text = kEdgeWarningText, .Title = "Warning", .Sign = platform::Icon::kExclamation});
}

void AnimalRun::TakeIsopleths(const isopleths::clsHISO& isopleths, AnimalRecord& record) const {
    record.IsoplethStatus = isopleths.GetErrorStatus();
    record.MaxEdgeValue = isopleths.GetMaxEdgeValue();
    record.EdgeWarning = *record.MaxEdgeValue > edge_threshold(m_frame.Wanted.Method, m_frame.ScalingFactor());
    const std::vector<double>& levels = isopleths.GetLevels();
    const std::vector<std::optional<double>>& areas = isopleths.GetAreas();
    const std::vector<platform::Geometry>& polygons = isopleths.GetPolygons();
    const std::vector<std::int32_t>& parts = isopleths.GetParts();
    for (std::size_t i = 0; i < levels.size(); ++i)
        record.Isopleths.push_back(
            {m_frame.Wanted.Percentages.Values.at(i), levels[i], i < areas.size() ? areas[i] : std::nullopt,
             i < polygons.size() ? polygons[i] : platform::Geometry(), i < parts.size() ? parts[i] : 0});
    const auto add = [&](const auto& dataset, DatasetKind kind) {
        if (dataset)
            record.Files.push_back((Folder(record) / (isopleth_name(record.RasterName, kind) + ".shp")).string());
    };
    add(isopleths.GetLinesFeatureClass(), DatasetKind::kLines);
    add(isopleths.GetPolysFeatureClass(), DatasetKind::kPolygons);
    add(isopleths.GetDonutsFeatureClass(), DatasetKind::kDonuts);
}

std::filesystem::path AnimalRun::Folder(const AnimalRecord& record) const {
    return subfolder_in(m_frame.Folder, record.Subfolder);
}

}  // namespace wxl::analysis
