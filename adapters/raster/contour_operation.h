#pragma once
#include "platform/geometry_operators.h"

namespace wxl::files {

/// Contours by GDAL's marching squares (linear interpolation between cell centres). Every cell value enters, marked as
/// missing or not. The raster is read row by row through its band; nothing of its size is held.
class ContourOperation final : public platform::IContourOperation {
public:
    /// Lines in the order in which a scan from the north completes them. RuntimeError 5 for a level that is not finite.
    std::vector<platform::ContourLine> Contours(platform::IRasterDataset& raster,
                                                std::span<const double> levels) override;
};

}  // namespace wxl::files
