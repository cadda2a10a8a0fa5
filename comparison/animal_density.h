#pragma once
// The densities of animals that are to be compared: a bandwidth for each, one grid for all.

#include "comparison/adhoc_bandwidth.h"
#include "comparison/tiled_density.h"
#include "engine/point_sample.h"

#include <span>
#include <string>
#include <vector>

namespace wxl::comparison {

enum class BandwidthRule { kHref, kLscv, kBcv, kManual, kProportion, kAdHoc };

/// How the density of an animal is estimated.
struct DensitySettings {
    BandwidthRule Rule = BandwidthRule::kHref;
    double Value = 0.0;  ///< bandwidth in map units, or proportion of HREF
    AdHocSettings AdHoc = {};
    bool Adaptive = false;
    bool Rescale = false;  ///< to unit variance first; not with the ad hoc rule
};

/// The bandwidth of one animal.
struct AnimalBandwidth {
    double MapUnits = 0.0;     ///< 0: none
    double Href = 0.0;         ///< map units; 0: none
    std::string Reason = {};   ///< why there is none, in a few words; empty: there is one
    std::string Warning = {};  ///< of a search, in one line; empty: none
    AdHocBandwidth AdHoc = {};
};

AnimalBandwidth bandwidth_of(const engine::PointSample& fixes, const DensitySettings& settings);

/// The grid of all animals: their fixes and four of the largest bandwidth around them, so that every kernel fits.
/// @param cellSize map units, a whole number; 0: usual_cell_size
platform::RasterGeometry shared_grid(std::span<const engine::PointSample> animals,
                                     std::span<const AnimalBandwidth> bandwidths, double cellSize);

/// The density of an animal on a grid, or why there is none.
struct AnimalDensity {
    PartOfGrid Part;     ///< the cells that the kernels reach; none where there is no density
    std::string Reason;  ///< in a few words; empty: there is a density
};

/// As an analysis with a bandwidth in map units computes it.
AnimalDensity density_of(const engine::PointSample& fixes, const AnimalBandwidth& bandwidth,
                         const DensitySettings& settings, const platform::RasterGeometry& grid);

}  // namespace wxl::comparison
