#include "akde/range_run.h"

#include "akde/range_files.h"
#include "akde/range_results.h"
#include "analysis/output_names.h"
#include "platform/file_system.h"
#include "platform/runtime_error.h"
#include "platform/text.h"

#include <algorithm>
#include <cmath>
#include <iterator>
#include <utility>

namespace wxl::akde {

namespace {

using platform::NumberText;

RangePlace place_of(const RangeSettings& settings, const std::string& namingId, const std::string& subfolder,
                    const platform::SpatialReference& reference) {
    return {analysis::subfolder_in(settings.Folder, subfolder),
            settings.Prefix + namingId,
            settings.RasterFormat,
            settings.Scaling,
            settings.Lines,
            reference};
}

RangeRecord record_of(const AnimalModels& fitted, bool numberTimes) {
    RangeRecord record;
    record.Id = fitted.Animal->Id;
    record.NamingId = fitted.Animal->NamingId;
    record.Subfolder = fitted.Animal->Subfolder;
    record.Given = fitted.FixesGiven();
    record.Used = fitted.Track.Fixes.Size();
    record.First = fitted.FirstTime(numberTimes);
    record.Last = fitted.LastTime(numberTimes);
    record.Duration = fitted.Track.Fixes.Duration();
    record.Models = fitted.Models;
    record.Chosen = fitted.Chosen;
    record.GivenModel = fitted.Given;
    record.Variogram = fitted.Variogram;
    record.Verdict = fitted.Verdict;
    record.Notes = fitted.Notes;
    if (!fitted.Chosen) record.Reason = fitted.Verdict.Text;
    return record;
}

void take_smoothing(const Smoothing& smoothing, RangeRecord& record) {
    record.Matrix = smoothing.Matrix;
    record.H = smoothing.Bandwidth.H();
    record.DofBandwidth = movement_models::equivalent_fixes(smoothing.Bandwidth.Squared);
    record.Bias = smoothing.Bandwidth.Bias;
    record.EffectiveWeights = smoothing.Bandwidth.EffectiveWeights();
    record.ZeroWeights = smoothing.Bandwidth.ZeroWeights();
}

void take_range(AnimalRange& range, WrittenRange& written, bool outlines, RangeRecord& record) {
    record.Grid = range.Geometry;
    record.Volume = range.Volume;
    record.HighestAtEdge = range.HighestAtEdge;
    record.Isopleths = std::move(range.Isopleths);
    record.Files = std::move(written.Files);
    if (outlines) record.Outlines = std::move(written.Outlines);
}

void refuse_standing(const RangeSettings& settings, const TimedAnimals& animals, const platform::Services& services) {
    for (const TimedAnimal& animal : animals.Animals) platform::CheckDatasetName(settings.Prefix + animal.NamingId);
    if (settings.Overwrite) return;
    const auto standing = standing_outputs(settings, animals, services);
    if (!standing.empty())
        platform::Raise(platform::error_number::kFileExists,
                        standing.front().string() + " exists: choose another folder or prefix");
}

std::string percent_text(double share) {
    return NumberText(std::round(share * 10000.0) / 100.0);
}

}  // namespace

std::vector<std::filesystem::path> standing_outputs(const RangeSettings& settings, const TimedAnimals& animals,
                                                    const platform::Services& services) {
    std::vector<std::filesystem::path> standing;
    for (const TimedAnimal& animal : animals.Animals) {
        const auto files = standing_files(place_of(settings, animal.NamingId, animal.Subfolder, {}), services);
        standing.insert(standing.end(), files.begin(), files.end());
    }
    return standing;
}

std::unique_ptr<platform::IFolderLock> lock_output(const RangeSettings& settings, const TimedAnimals& animals,
                                                   const platform::Services& services) {
    std::string holder;
    auto lock = services.Locks->Take(settings.Folder, holder);
    if (!lock)
        platform::Raise(platform::error_number::kPermissionDenied,
                        "another analysis is writing into the output folder (" + holder +
                            "): wait until it has finished, or choose another folder");
    lock->RemoveLeftovers({});
    for (const std::string& subfolder : subfolders_of(animals)) {
        platform::RefuseLink(*services.Folders, settings.Folder / subfolder);
        lock->RemoveLeftovers(subfolder);
    }
    return lock;
}

RangeRun::Prepared RangeRun::Prepare(const TimedAnimal& animal, bool numberTimes) const {
    const AnimalModels fitted = fit_animal(animal, numberTimes, m_settings.Fit, m_listener);
    report_animal(fitted, true, m_listener);
    Prepared prepared{record_of(fitted, numberTimes), {}};
    prepared.Record.RasterName = m_settings.Prefix + animal.NamingId;
    if (!fitted.Chosen) return prepared;
    prepared.Kernels = smoothing_of(fitted, m_settings.Optimal, m_listener);
    take_smoothing(prepared.Kernels, prepared.Record);
    return prepared;
}

AnimalRange RangeRun::Smooth(const Prepared& prepared, const platform::RasterGeometry* grid) const {
    const double dof = prepared.Record.Chosen->DofArea;
    if (grid != nullptr) return range_on(prepared.Kernels, dof, *grid, m_settings.Percentages, m_listener);
    return range_of(prepared.Kernels, dof, m_settings.CellSize.value_or(0.0), m_settings.Percentages, m_listener);
}

void RangeRun::Fail(RangeRecord& record, const std::string& reason) const {
    record.Reason = reason;
    m_listener.Problem(platform::ValueText(record.Id) + ": " + reason);
}

void RangeRun::Write(AnimalRange& range, RangeRecord& record, const platform::SpatialReference& reference) const {
    const RangePlace place = place_of(m_settings, record.NamingId, record.Subfolder, reference);
    if (!record.Subfolder.empty()) platform::MakeOwnFolder(*m_services.Files, *m_services.Folders, place.Folder);
    WrittenRange written = write_range(range, place, m_services);
    take_range(range, written, m_settings.GeoPackage, record);
}

void RangeRun::Finish(Prepared& prepared, const platform::RasterGeometry* grid,
                      const platform::SpatialReference& reference) const {
    RangeRecord& record = prepared.Record;
    if (!record.IsDone()) return;
    AnimalRange range;
    try {
        range = Smooth(prepared, grid);
    } catch (const platform::RuntimeError& error) {
        return Fail(record, error.Description);
    }
    try {
        Write(range, record, reference);
    } catch (const platform::RuntimeError& error) {
        record.NotWritten = true;
        return Fail(record, error.Description);
    }
    ReportGrid(record);
}

void RangeRun::ReportGrid(const RangeRecord& record) const {
    constexpr double kWhole = 0.99;
    const std::string name = platform::ValueText(record.Id);
    const std::string coarse = coarse_cells_text(record.Matrix, record.Grid.CellSize);
    if (!coarse.empty())
        m_listener.Problem(name + ": areas are rough: " + coarse);
    else if (record.Volume < kWhole)
        m_listener.Problem(name + ": " + percent_text(record.Volume) +
                           " % of the distribution lies on the raster; a larger one would show it whole");
    for (const RangeIsopleth& isopleth : record.Isopleths)
        if (!isopleth.Level)
            m_listener.Problem(name + ": the " + isopleth.Bound + " outline of " + NumberText(isopleth.Percent) +
                               " % has an area larger than the raster and is not drawn");
}

const platform::RasterGeometry* RangeRun::GivenGrid() const {
    return m_settings.Extent == RangeExtent::kMinimum ? nullptr : &m_settings.Reference;
}

platform::RasterGeometry RangeRun::GridOf(const std::vector<Prepared>& all) const {
    std::vector<const Smoothing*> kernels;
    for (const Prepared& prepared : all)
        if (prepared.Record.IsDone()) kernels.push_back(&prepared.Kernels);
    return kernels.empty() ? platform::RasterGeometry{0.0, 0.0, 1.0, 1, 1}
                           : common_grid(kernels, m_settings.Buffer, m_settings.CellSize.value_or(0.0));
}

platform::RasterGeometry RangeRun::CommonGrid(const TimedAnimals& animals) {
    bool stopped = false;
    return GridOf(PrepareAll(animals, stopped));
}

RangeRecord RangeRun::Compute(const TimedAnimal& animal, const TimedAnimals& animals) {
    Prepared prepared = Prepare(animal, animals.NumberTimes);
    Finish(prepared, GivenGrid(), animals.Reference);
    return std::move(prepared.Record);
}

std::vector<RangeRun::Prepared> RangeRun::PrepareAll(const TimedAnimals& animals, bool& stopped) const {
    std::vector<Prepared> all;
    for (const TimedAnimal& animal : animals.Animals) {
        if ((stopped = m_listener.IsStopped())) break;
        all.push_back(Prepare(animal, animals.NumberTimes));
    }
    return all;
}

RangeOutcome RangeRun::Run(const TimedAnimals& animals, const std::function<void(const RangeRecord&)>& met) {
    const auto lock = lock_output(m_settings, animals, m_services);
    refuse_standing(m_settings, animals, m_services);
    report_without_id(animals, m_settings.Fields.Id, m_listener);
    RangeResults results(m_settings, m_services, m_listener, animals);
    bool stopped = false;
    if (m_settings.Extent == RangeExtent::kFull) {
        std::vector<Prepared> all = PrepareAll(animals, stopped);
        const platform::RasterGeometry grid = GridOf(all);
        for (Prepared& prepared : all) {
            Finish(prepared, &grid, animals.Reference);
            met(results.Add(std::move(prepared.Record)));
        }
    } else {
        for (const TimedAnimal& animal : animals.Animals) {
            if ((stopped = m_listener.IsStopped())) break;
            met(results.Add(Compute(animal, animals)));
        }
    }
    return results.Publish(stopped);
}

}  // namespace wxl::akde
