#pragma once
// The pictures of a comparison of ranges.

#include "pictures/heat_map_picture.h"
#include "results_page/overlap_run.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace wxl::results_page {

/// Up to this number of animals a heat map has them in their own order.
inline constexpr std::size_t kOwnOrder = 20;

/// Most animals of a heat map whose names can be read.
inline constexpr std::size_t kHeatAnimals = 60;

/// Most pairs and animals of a map of ranges.
inline constexpr std::size_t kMapPairs = 40;
inline constexpr std::size_t kMapAnimals = 200;

/// Which animals a heat map shows, and in which order: up to kOwnOrder all as they come; beyond, so that near animals
/// stand side by side, and of more than `most` those of the nearest pairs.
std::vector<std::uint32_t> heat_order(const comparison::ComparedRanges& ranges, const comparison::IndexSection& section,
                                      std::size_t most);

/// A table of an index as a picture, of these animals in this order.
pictures::HeatMapPicture heat_map(const comparison::ComparedRanges& ranges, const comparison::IndexSection& section,
                                  const std::vector<std::uint32_t>& animals);

/// The ranges at one percentage and the common areas of the pairs, as an SVG element with its legend; "" where no
/// animal has a range. Of many animals and pairs the nearest are drawn.
std::string overlap_map(const OverlapRun& run, std::size_t percent);

}  // namespace wxl::results_page
