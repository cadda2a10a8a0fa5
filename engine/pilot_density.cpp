#include "engine/pilot_density.h"

#include "engine/numeric.h"

namespace wxl::engine {

std::vector<double> pilot_density(std::span<const platform::Point> points, double bandwidth, WorkClock& clock) {
    std::vector<double> density(points.size(), 0.0);
    for (std::size_t i = 0; i < points.size(); ++i) {
        for (const platform::Point& other : points)
            density[i] += GaussianKernel(PointDistance(points[i].X, points[i].Y, other.X, other.Y) / bandwidth);
        clock.Tick();
    }
    return density;
}

}  // namespace wxl::engine
