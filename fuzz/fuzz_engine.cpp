// Kernel grids and bandwidth searches beside the plain loops.

#include "adapters/memory/memory_services.h"
#include "engine/clsKernelCalculator.h"
#include "engine/clsLSCV.h"
#include "fuzz/fuzz_input.h"
#include "tests/support/engine_twins.h"

#include <algorithm>
#include <cmath>

namespace {

using namespace wxl;
using fuzz::require;

std::vector<platform::Point> points_of(fuzz::FuzzInput& input, std::int32_t most) {
    const double scale = std::ldexp(1.0, input.Between(-6, 4));
    const platform::Point origin = input.Flag() ? platform::Point{512345.0, 5834567.0} : platform::Point{};
    std::vector<platform::Point> points(static_cast<std::size_t>(input.Between(1, most)));
    for (platform::Point& point : points)
        point = {origin.X + scale * input.Take<std::int16_t>() / 64.0,
                 origin.Y + scale * input.Take<std::int16_t>() / 64.0};
    return points;
}

void check_grid(fuzz::FuzzInput& input) {
    tests::TwinKernel twin;
    twin.CellSize = input.Between(1, 40);
    twin.Columns = input.Between(1, 40);
    twin.Rows = input.Between(1, 40);
    twin.Adaptive = input.Flag();
    twin.Bandwidth = twin.CellSize * input.Within(1.0, 30.0);
    twin.LimitRadius = twin.CellSize * input.Within(0.0, 60.0);
    twin.ScalingFactor = input.Flag() ? 1.0 : 1e6;
    const double left = twin.CellSize * input.Within(-50.0, 10.0);
    const double bottom = twin.CellSize * input.Within(-50.0, 10.0);
    twin.Points = points_of(input, 24);
    twin.OriginX = twin.Points[0].X + left;
    twin.OriginY = twin.Points[0].Y + bottom;

    memory::MemoryMessages messages;
    engine::clsKernelCalculator kernel(messages);
    kernel.SetInputCoords(twin.Points);
    kernel.SetCellSize(twin.CellSize);
    kernel.SetColumns(twin.Columns);
    kernel.SetRows(twin.Rows);
    kernel.SetOriginCoords(twin.OriginX, twin.OriginY);
    kernel.SetLimitRadius(twin.LimitRadius);
    kernel.SetScalingFactor(twin.ScalingFactor);
    kernel.SetFixedKernel(!twin.Adaptive);
    kernel.SetManualBandwidth(twin.Bandwidth);
    kernel.CalculateKernel();
    require(kernel.lErrorStatus == 0, "a kernel");
    const tests::TwinGrid expected = tests::twin_grid(twin);
    // A grid may see the far tail of the density only: what is smaller than this beside a kernel's own peak may be left
    // out, and is far below what a raster can hold.
    const double count = static_cast<double>(twin.Points.size());
    const double negligible = 1e-130 * twin.ScalingFactor / (6.28 * count * twin.Bandwidth * twin.Bandwidth);
    const double tolerance = 1e-11 * *std::max_element(expected.Cells.begin(), expected.Cells.end()) + negligible;
    for (std::int32_t row = 0; row < twin.Rows; ++row)
        for (std::int32_t column = 0; column < twin.Columns; ++column) {
            const double cell = expected.Cells[static_cast<std::size_t>(row * twin.Columns + column)];
            require(std::abs((*kernel.GetKernel())(column, row) - cell) <= tolerance, "cells of the plain loop");
        }
    const double area = static_cast<double>(expected.Cells.size()) * twin.CellSize * twin.CellSize;
    require(std::abs(kernel.GetKernelVolume() - expected.Volume) <= 1e-11 * expected.Volume + negligible * area,
            "volume of the plain loop");
}

void check_search(fuzz::FuzzInput& input) {
    const auto score = input.Flag() ? tests::TwinScore::kLscv : tests::TwinScore::kBcv;
    const double low = input.Within(0.02, 1.0);
    const double high = low + input.Within(0.01, 3.0);
    const double steps = input.Between(2, 60);
    const std::vector<platform::Point> points = points_of(input, 60);
    memory::MemoryMessages messages;
    engine::clsLSCV search(messages);
    search.SetInputCoords(points);
    if (search.lErrorStatus != 0) return;
    const double href = tests::twin_href(points);
    if (!(href > 0.0)) return;
    const double min = low * href;
    const double max = high * href;
    const double step = (max - min) / steps;
    search.SetSearchRange(min, max);
    search.SetStepValue(step);
    score == tests::TwinScore::kLscv ? search.CalculateLSCV() : search.CalculateBCV2();
    require(search.lErrorStatus == 0, "a search");
    const tests::TwinSearch twin = tests::twin_search(score, points, min, max, step);
    const auto profile = search.GetLSCVProfile();
    require(profile && profile->size() >= twin.Scores.size(), "a row for each bandwidth");
    const double tolerance = 1e-9 * twin.LargestScore();
    double chosen = std::numeric_limits<double>::quiet_NaN();
    for (std::size_t row = 0; row < twin.Scores.size(); ++row) {
        require((*profile)[row].Bandwidth == twin.Bandwidths[row], "bandwidths of the plain search");
        require(std::abs((*profile)[row].Score - twin.Scores[row]) <= tolerance, "scores of the plain search");
        if (twin.Bandwidths[row] == search.GetBandwidth() && std::isnan(chosen)) chosen = twin.Scores[row];
    }
    require(std::abs(chosen - twin.Scores[twin.Best]) <= 1e-14 * twin.LargestScore(), "the smallest score");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    fuzz::FuzzInput input(data, size);
    input.Flag() ? check_grid(input) : check_search(input);
    return 0;
}
