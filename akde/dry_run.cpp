#include "akde/dry_run.h"

#include "akde/animal_models.h"

#include <algorithm>
#include <cmath>

namespace wxl::akde {
namespace {

// Measured by bench_movement_models, in seconds and megabytes per fix.
constexpr double kFitting = 40e-6;
constexpr double kWeighting = 30e-6;
constexpr double kSmoothing = 60e-6;
constexpr double kSums = 5.5e-4;

constexpr double kSecondsPerCell = 2e-7;     // sorted for the areas, drawn and written
constexpr double kMegabytesPerCell = 40e-6;  // the density, its order and its contours
constexpr double kUsualCells = 1e6;
constexpr double kMostCells = 5e7;

/// Kernels reach as far again as the fixes lie apart, at most.
double cells_of(const RangeSettings& settings, const TimedAnimal& animal) {
    if (settings.Extent == RangeExtent::kReference)
        return static_cast<double>(settings.Reference.Columns) * settings.Reference.Rows;
    if (!settings.CellSize || animal.Fixes.empty()) return kUsualCells;
    const platform::Extent extent = platform::bounds_of(animal.Fixes);
    const double cells =
        4.0 * (extent.XMax - extent.XMin) * (extent.YMax - extent.YMin) / (*settings.CellSize * *settings.CellSize);
    return std::isfinite(cells) ? std::min(cells, kMostCells) : kMostCells;
}

ComingRange coming_range(const RangeSettings& settings, const TimedAnimal& animal, bool numberTimes) {
    const AnimalModels prepared = prepared_animal(animal, numberTimes);
    ComingRange coming;
    coming.Id = animal.Id;
    coming.Given = prepared.FixesGiven();
    coming.Used = prepared.Track.Fixes.Size();
    coming.First = prepared.FirstTime(numberTimes);
    coming.Last = prepared.LastTime(numberTimes);
    coming.Raster = (animal.Subfolder.empty() ? "" : animal.Subfolder + "/") + settings.Prefix + animal.NamingId;
    coming.Failure = prepared.Verdict.Text;
    const auto fixes = static_cast<double>(coming.Used);
    coming.Megabytes = kSums * fixes;
    if (!coming.Failure.empty()) return coming;
    const double cells = cells_of(settings, animal);
    coming.Megabytes += kMegabytesPerCell * cells;
    coming.Seconds =
        fixes * (kSmoothing + (settings.Fit.Given ? 0.0 : kFitting) + (settings.Optimal ? kWeighting : 0.0)) +
        kSecondsPerCell * cells;
    return coming;
}

}  // namespace

std::vector<ComingRange> dry_run(const RangeSettings& settings, const TimedAnimals& animals) {
    std::vector<ComingRange> coming;
    for (const TimedAnimal& animal : animals.Animals)
        coming.push_back(coming_range(settings, animal, animals.NumberTimes));
    return coming;
}

}  // namespace wxl::akde
