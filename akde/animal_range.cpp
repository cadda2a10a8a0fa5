#include "akde/animal_range.h"

#include "analysis/diagnosis.h"
#include "movement_models/density.h"
#include "movement_models/weights.h"
#include "platform/runtime_error.h"
#include "platform/text.h"

#include <algorithm>
#include <cmath>

namespace wxl::akde {

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

/// Cells across a range of this width.
double size_for(double advised, double width) {
    constexpr double kAcross = 400.0;
    constexpr double kMostAcross = 3000.0;
    return round_size(std::clamp(advised, width / kMostAcross, width / kAcross));
}

double width_of(const RasterGeometry& inUnits) {
    return std::max(inUnits.Columns, inUnits.Rows);
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
                        "the raster would have " + std::to_string(geometry.Columns) + " x " +
                            std::to_string(geometry.Rows) + " cells, more than 50 million: give a larger cell size");
}

std::vector<RangeIsopleth> isopleths_of(const VolumeCurve& curve, double bias, double dof,
                                        const std::vector<double>& percentages) {
    std::vector<RangeIsopleth> isopleths;
    for (const double percent : percentages) {
        const double area = curve.AreaOf(percent / 100.0) / bias;
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

bool all_fit(const std::vector<RangeIsopleth>& isopleths) {
    return std::all_of(isopleths.begin(), isopleths.end(), [](const RangeIsopleth& i) { return i.Level.has_value(); });
}

double highest_at_edge(const engine::KernelGrid& grid) {
    double highest = 0.0;
    for (std::int32_t row = 0; row < grid.Rows(); ++row) {
        const auto cells = grid.Row(row);
        const bool whole = row == 0 || row == grid.Rows() - 1;
        highest = std::max({highest, cells.front(), cells.back()});
        if (whole) highest = std::max(highest, *std::max_element(cells.begin(), cells.end()));
    }
    return highest;
}

void check_volume(double volume, const Smoothing& smoothing, double cellSize) {
    constexpr double kNothing = 5e-5;  // two decimals of a per cent are 0
    if (volume >= kNothing) return;
    const std::string coarse = coarse_cells_text(smoothing.Matrix, cellSize);
    platform::Raise(platform::error_number::kInvalidCall,
                    coarse.empty() ? "nothing of the distribution lies on the raster: choose another extent"
                                   : "no cell meets its distribution: " + coarse);
}

platform::Extent around(const Smoothing& smoothing, double buffer) {
    const platform::Extent extent = platform::bounds_of(smoothing.Fixes);
    return {extent.XMin - buffer, extent.YMin - buffer, extent.XMax + buffer, extent.YMax + buffer};
}

double reach_of(const Smoothing& smoothing) {
    constexpr double kDeviations = 4.0;
    return kDeviations * std::sqrt(std::max(smoothing.Matrix.XX, smoothing.Matrix.YY));
}

}  // namespace

std::string coarse_cells_text(const Matrix2& kernel, double cellSize) {
    const double width = ellipse_of(kernel).Minor;
    if (cellSize <= width) return {};
    return "cells of " + platform::NumberText(cellSize) + " are coarser than its kernel, whose deviation is " +
           analysis::short_number(width) + " at the narrowest: give a smaller cell size";
}

Smoothing smoothing_of(const AnimalModels& fitted, bool optimal, IListener& listener) {
    const FittedModel& model = *fitted.Chosen;
    const std::string what = "weighting " + platform::ValueText(fitted.Animal->Id);
    double step = 0.0;
    const auto tick = [&] { listener.Progress(1.0 - 1.0 / (1.0 + ++step), what); };
    Smoothing smoothing;
    smoothing.Bandwidth = optimal ? optimal_bandwidth(fitted.Track.Fixes, model.Model, tick)
                                  : uniform_bandwidth(fitted.Track.Fixes, model.Model);
    listener.EndProgress();
    smoothing.Matrix = model.Covariance.Scaled(smoothing.Bandwidth.Squared);
    smoothing.Fixes = used_fixes(fitted);
    return smoothing;
}

double advised_cell_size(const Smoothing& smoothing) {
    return size_for(movement_models::advised_cell_size(smoothing.Matrix),
                    width_of(grid_around(smoothing.Fixes, smoothing.Matrix, 1.0)));
}

RasterGeometry common_grid(std::span<const Smoothing* const> smoothings, std::optional<double> buffer,
                           double cellSize) {
    double reach = 0.0;
    double advised = 0.0;
    std::vector<Point> corners;
    for (const Smoothing* smoothing : smoothings) {
        reach = std::max(reach, reach_of(*smoothing));
        const double own = movement_models::advised_cell_size(smoothing->Matrix);
        advised = advised > 0.0 ? std::min(advised, own) : own;
    }
    for (const Smoothing* smoothing : smoothings) {
        const platform::Extent extent = around(*smoothing, buffer.value_or(reach));
        corners.push_back({extent.XMin, extent.YMin});
        corners.push_back({extent.XMax, extent.YMax});
    }
    if (!(cellSize > 0.0)) cellSize = size_for(advised, width_of(grid_around(corners, {}, 1.0, 0.0)));
    return grid_around(corners, {}, cellSize, 0.0);
}

AnimalRange range_on(const Smoothing& smoothing, double dof, const RasterGeometry& grid,
                     const std::vector<double>& percentages, IListener& listener) {
    check_cells(grid);
    AnimalRange range;
    range.Geometry = grid;
    range.Density.Reset(grid.Columns, grid.Rows);
    engine::WorkClock clock({.Yield = [&] { listener.Progress(1.0, "smoothing"); }});
    add_density(smoothing.Fixes, smoothing.Bandwidth.Weights, smoothing.Matrix, grid, range.Density, clock);
    const VolumeCurve curve(range.Density, grid.CellSize * grid.CellSize);
    range.Volume = curve.Volume();
    check_volume(range.Volume, smoothing, grid.CellSize);
    range.HighestAtEdge = highest_at_edge(range.Density);
    range.Isopleths = isopleths_of(curve, smoothing.Bandwidth.Bias, dof, percentages);
    listener.EndProgress();
    return range;
}

AnimalRange range_of(const Smoothing& smoothing, double dof, double cellSize, const std::vector<double>& percentages,
                     IListener& listener) {
    if (!(cellSize > 0.0)) cellSize = advised_cell_size(smoothing);
    AnimalRange range;
    for (const double deviations : {4.0, 7.0, kKernelReach}) {
        const RasterGeometry grid = grid_around(smoothing.Fixes, smoothing.Matrix, cellSize, deviations);
        range = range_on(smoothing, dof, grid, percentages, listener);
        if (all_fit(range.Isopleths)) break;
    }
    return range;
}

}  // namespace wxl::akde
