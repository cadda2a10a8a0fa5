#pragma once
// What a run will cost, as far as it can be told before it is computed.

#include "analysis/animal_fixes.h"
#include "analysis/settings.h"
#include "analysis/statistics.h"
#include "platform/values.h"

#include <optional>
#include <span>
#include <string>
#include <vector>

namespace wxl::analysis {

/// What the estimates of all distributions of a run share.
struct EstimateFrame {
    Settings Wanted;
    double CellSize = 1.0;            ///< as the calculator keeps it; not used where each distribution has its own
    platform::Extent LayerExtent;     ///< used with the full extent alone
    platform::RasterGeometry Shared;  ///< the grid of every distribution; not used with the smallest extent
};

/// `layerExtent` counts with the full extent alone, `reference` with a reference raster alone.
EstimateFrame estimate_frame(const Settings& settings, const platform::Extent& layerExtent,
                             const platform::RasterGeometry& reference);

/// HREF in map units as a run applies it: of the fixes as they are, or of the unit-variance fixes scaled back; 0 where
/// it is not defined.
double applied_href(const HrefRow& href, const VarianceRow& spread, bool rescale);

/// One distribution. Bandwidths of a search are not known before it: HREF stands in for them.
struct DistributionEstimate {
    double Bandwidth = 0.0;  ///< map units
    platform::RasterGeometry Grid;
    double Megabytes = 0.0;  ///< of the largest thing in memory: the grid, or what a search transforms
    double Seconds = 0.0;    ///< rough time on one core of 2020
};

/// `href`: applied_href of the animal; `value`: the bandwidth or proportion, where the method has one.
DistributionEstimate estimate(const EstimateFrame& frame, const AnimalFixes& animal, double href, double value);

/// More cells than a run computes: such a distribution fails at once.
bool is_too_large(const DistributionEstimate& estimate);

/// What a run would compute for one animal and one value.
struct ComingDistribution {
    platform::FieldValue Id;
    std::size_t SampleSize = 0;
    std::optional<double> Href;  ///< map units, of the fixes as they are
    DistributionEstimate Cost;
    std::string RasterName;  ///< "NAME" or "SUBFOLDER/NAME"
    std::string Failure;     ///< why it will fail, in one line; empty when nothing is known to keep it
};

/// The distributions that a run would compute, in its order.
std::vector<ComingDistribution> dry_run(const EstimateFrame& frame, std::span<const AnimalFixes> animals);

}  // namespace wxl::analysis
