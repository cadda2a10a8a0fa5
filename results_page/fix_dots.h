#pragma once
// An animal's fixes as dots on its map, no more than a page can carry.

#include "platform/values.h"
#include "results_page/map_svg.h"

#include <cstddef>
#include <span>
#include <string>

namespace wxl::results_page {

struct FixDots {
    std::string Path;        ///< an SVG path of lines without length, in kDotUnits
    std::size_t Fixes = 0;   ///< that lie on the map
    std::size_t Places = 0;  ///< of theirs that the map tells apart
    std::size_t Every = 1;   ///< one of so many places has its dot
};

/// Units of FixDots::Path in a picture unit: fixes nearer to each other than one of them have one place.
inline constexpr double kDotUnits = 2.0;

/// Dots of at most `most` (above 0) of the places of fixes, at equal steps in their order.
FixDots fix_dots(std::span<const platform::Point> fixes, const MapLayout& layout, std::size_t most);

/// "Dots: its 850 fixes", "Dots: one of 3 of the 2910 places of its 8163 fixes".
std::string dots_text(const FixDots& dots);

}  // namespace wxl::results_page
