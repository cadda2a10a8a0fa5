#pragma once
// The common areas of ranges as a layer of the package of ranges.

#include "comparison/index_table.h"
#include "platform/packages.h"
#include "platform/values.h"

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <vector>

namespace wxl::analysis {

/// More pairs than this are not drawn: the largest are.
inline constexpr std::size_t kMostOverlaps = 20000;

/// Pairs of two animals whose ranges share cells at a percentage: places in Pairs, ascending. Of more than `most` those
/// that are nearest by the index.
std::vector<std::size_t> drawn_pairs(const comparison::ComparedRanges& ranges, const comparison::IndexKind& index,
                                     std::size_t most);

/// A package of ranges, and the tables of analyses by which one that stands is known.
struct PackagePlace {
    std::filesystem::path File;
    platform::SpatialReference Reference;
    std::vector<platform::PackageTable> Others = {};
};

/// What became of the layer.
struct OverlapLayer {
    bool IsForeign = false;  ///< the file there is something else, and was left as it is
    std::size_t Drawn = 0;
    std::size_t LeftOut = 0;  ///< pairs beyond kMostOverlaps
};

/// Puts the common area of each pair of ranges, at each percentage, into the layer "overlap" of the package, in place
/// of what stood there; all other tables of the package stay. The polygons are the cells of both ranges, so that their
/// areas are those of the index HR. Rows hold the indices of whole distributions, to six digits.
/// RuntimeError where the package cannot be written: what stood there stays.
OverlapLayer write_overlap_layer(platform::IPackages& packages, const PackagePlace& place,
                                 const comparison::ComparedRanges& ranges, const comparison::IndexKind& index,
                                 const std::function<void(double)>& progress);

}  // namespace wxl::analysis
