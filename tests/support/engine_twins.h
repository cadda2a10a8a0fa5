#pragma once
// The engine's formulas as plain loops: what its fast paths are compared with, in tests and in benchmarks.

#include "platform/values.h"

#include <cstddef>
#include <cstdint>
#include <vector>

namespace wxl::tests {

/// What the kernel calculator is told.
struct TwinKernel {
    std::vector<platform::Point> Points;  ///< map units
    std::int32_t Columns = 0;
    std::int32_t Rows = 0;
    std::int32_t CellSize = 1;
    double OriginX = 0.0;
    double OriginY = 0.0;
    double Bandwidth = 0.0;  ///< in the units of the points as they are used (standard deviations when rescaled)
    double LimitRadius = 0.0;
    double ScalingFactor = 1000000.0;
    bool Adaptive = false;
    bool UnitVariance = false;
};

struct TwinGrid {
    std::vector<double> Cells;  ///< row by row from the north
    double Volume = 0.0;
};

/// Bandwidth n^(-1/6) x mean standard deviation of the points, divided by their standard deviations if asked.
double twin_href(const std::vector<platform::Point>& points);
std::vector<platform::Point> twin_rescaled(const std::vector<platform::Point>& points, double& sdX, double& sdY);

/// Pilot sums of kernels at every point, and the local bandwidth factors made from them.
std::vector<double> twin_pilot(const std::vector<platform::Point>& points, double bandwidth);
std::vector<double> twin_factors(const std::vector<platform::Point>& points, double bandwidth);
TwinGrid twin_grid(const TwinKernel& kernel);

enum class TwinScore { kLscv, kBcv };

struct TwinSearch {
    std::vector<double> Bandwidths;
    std::vector<double> Scores;
    std::size_t Best = 0;

    double LargestScore() const;
};

/// Score of one bandwidth from all distances, 0 where its arithmetic would fault.
double twin_score(TwinScore score, const std::vector<double>& distances, std::size_t count, double h);
std::vector<double> twin_distances(const std::vector<platform::Point>& points);

/// The search over min, min + step, ..., max.
TwinSearch twin_search(TwinScore score, const std::vector<platform::Point>& points, double min, double max,
                       double step);

}  // namespace wxl::tests
