#pragma once
#include "platform/values.h"

#include <cstddef>
#include <functional>
#include <span>
#include <vector>

namespace wxl::engine {

/// A square of the plane with the points in it and those around it.
struct Tile {
    std::vector<platform::Point> Owners;  ///< in the square; each point has one owner tile
    std::vector<std::size_t> Indexes;     ///< of the owners, in the whole sample
    std::vector<platform::Point> Margin;  ///< outside it, within reach of the owners' bounding box
};

/// Cuts the plane into squares and visits each that owns a point. `reach` <= `side`; the points' extent spans at most
/// 1E15 squares.
void for_each_tile(std::span<const platform::Point> points, double side, double reach,
                   const std::function<void(const Tile&)>& visit);

}  // namespace wxl::engine
