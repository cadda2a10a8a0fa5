#include "apps/cli/akde_animal.h"

#include "movement_models/density.h"
#include "movement_models/weights.h"
#include "platform/runtime_error.h"
#include "platform/text.h"

#include <algorithm>
#include <cmath>
#include <fmt/format.h>

namespace wxl::cli {

namespace {

using namespace movement_models;
using platform::Point;
using platform::RasterGeometry;

/// The largest of 1, 2 or 5 times a power of ten that is not above the size.
double round_size(double size) {
    const double power = std::pow(10.0, std::floor(std::log10(size)));
    for (const double step : {5.0, 2.0})
        if (step * power <= size) return step * power;
    return power;
}

/// Fine enough for the kernel and for the area of the range; not finer than what a desktop can show.
double own_cell_size(const std::vector<Point>& fixes, const Matrix2& matrix) {
    constexpr double kAcross = 400.0;
    constexpr double kMostAcross = 3000.0;
    const RasterGeometry whole = grid_around(fixes, matrix, 1.0);
    const double width = std::max(whole.Columns, whole.Rows);
    return round_size(std::clamp(advised_cell_size(matrix), width / kMostAcross, width / kAcross));
}

std::vector<Point> used_fixes(const AnimalModels& fitted) {
    std::vector<Point> fixes;
    for (const std::size_t place : fitted.Track.Order) fixes.push_back(fitted.Animal->Fixes[place]);
    return fixes;
}

void check_cells(const RasterGeometry& geometry) {
    const double cells = static_cast<double>(geometry.Columns) * geometry.Rows;
    if (cells > static_cast<double>(engine::KernelGrid::kMaximumCells))
        platform::Raise(platform::error_number::kOutOfMemory,
                        fmt::format("the raster would have {} x {} cells, more than 50 million: give a larger "
                                    "--cell-size",
                                    geometry.Columns, geometry.Rows));
}

std::vector<AkdeIsopleth> isopleths_of(const VolumeCurve& curve, const AkdeAnimal& akde, double dof,
                                       const std::vector<double>& percentages) {
    std::vector<AkdeIsopleth> isopleths;
    for (const double percent : percentages) {
        const double area = curve.AreaOf(percent / 100.0) / akde.Bandwidth.Bias;
        const auto add = [&](const char* bound, double size) {
            isopleths.push_back({percent, bound, size, curve.LevelOf(size)});
        };
        const auto limits = area_interval(area, dof);
        if (limits) add("low", limits->Low);
        add("est", area);
        if (limits) add("high", limits->High);
    }
    return isopleths;
}

bool all_fit(const std::vector<AkdeIsopleth>& isopleths) {
    return std::all_of(isopleths.begin(), isopleths.end(), [](const AkdeIsopleth& i) { return i.Level.has_value(); });
}

}  // namespace

AkdeAnimal akde_of(const AnimalModels& fitted, const AkdeGrid& wanted, const std::vector<double>& percentages,
                   bool optimal, Console& console) {
    const FittedModel& model = *fitted.Chosen;
    const std::string name = platform::ValueText(fitted.Animal->Id);
    AkdeAnimal akde;
    double step = 0.0;
    const auto tick = [&] { console.Progress(1.0 - 1.0 / (1.0 + ++step), "weighting " + name); };
    akde.Bandwidth = optimal ? optimal_bandwidth(fitted.Track.Fixes, model.Model, tick)
                             : uniform_bandwidth(fitted.Track.Fixes, model.Model);
    console.EndProgress();
    akde.Matrix = model.Covariance.Scaled(akde.Bandwidth.Squared);
    const std::vector<Point> fixes = used_fixes(fitted);
    const double cell = wanted.CellSize.value_or(wanted.Reference ? 0.0 : own_cell_size(fixes, akde.Matrix));
    for (const double deviations : {4.0, 7.0, 10.0}) {
        akde.Geometry = wanted.Reference ? *wanted.Reference : grid_around(fixes, akde.Matrix, cell, deviations);
        check_cells(akde.Geometry);
        akde.Density.Reset(akde.Geometry.Columns, akde.Geometry.Rows);
        engine::WorkClock clock;
        add_density(fixes, akde.Bandwidth.Weights, akde.Matrix, akde.Geometry, akde.Density, clock);
        const VolumeCurve curve(akde.Density, akde.Geometry.CellSize * akde.Geometry.CellSize);
        akde.Volume = curve.Volume();
        akde.Isopleths = isopleths_of(curve, akde, model.DofArea, percentages);
        if (wanted.Reference || all_fit(akde.Isopleths)) break;
    }
    return akde;
}

}  // namespace wxl::cli
