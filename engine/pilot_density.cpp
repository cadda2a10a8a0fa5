#include "engine/pilot_density.h"

#include "engine/gaussian_field.h"
#include "engine/tiles.h"

#include <algorithm>

namespace wxl::engine {
namespace {

constexpr double kTwoPi = 6.28318530717958;

/// Up to this many fixes all pairs are the simplest.
constexpr std::size_t kFewFixes = 500;

/// Side of the squares of the plane that are treated on their own, in bandwidths.
constexpr double kTileSide = 64.0;

/// Squares of the plane are numbered exactly up to here.
constexpr double kMostTilesAcross = 1e15;

bool can_be_tiled(std::span<const platform::Point> points, double side) {
    const platform::Extent extent = platform::bounds_of(points);
    return std::max(extent.Width(), extent.Height()) / side < kMostTilesAcross;
}

}  // namespace

std::vector<double> pilot_density(std::span<const platform::Point> points, double bandwidth, WorkClock& clock) {
    std::vector<double> density(points.size(), 0.0);
    const GaussianField field(bandwidth);
    const double side = kTileSide * bandwidth;
    if (points.size() <= kFewFixes || !can_be_tiled(points, side)) {
        field.AddDirectly(points, points, density, clock);
    } else {
        for_each_tile(points, side, GaussianField::kReach * bandwidth, [&](const Tile& tile) {
            std::vector<platform::Point> sources = tile.Owners;
            sources.insert(sources.end(), tile.Margin.begin(), tile.Margin.end());
            std::vector<double> sums(tile.Owners.size(), 0.0);
            if (field.MomentsPay(sources, tile.Owners))
                field.AddByMoments(sources, tile.Owners, sums, clock);
            else
                field.AddDirectly(sources, tile.Owners, sums, clock);
            for (std::size_t i = 0; i < sums.size(); ++i) density[tile.Indexes[i]] = sums[i];
        });
    }
    for (double& value : density) value /= kTwoPi;
    return density;
}

}  // namespace wxl::engine
