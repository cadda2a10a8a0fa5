#pragma once
#include <cstdint>

namespace wxl::movement::track_symbol {

/// How a leg of a track looks on the map: a grey line with a red marker at its end, turned along the leg.
struct Colour {
    std::uint8_t Red, Green, Blue;
};
inline constexpr Colour kLineColour = {223, 223, 223};
inline constexpr double kLineWidth = 2.0;  ///< points on screen
inline constexpr Colour kMarkerColour = {255, 0, 0};
inline constexpr double kMarkerLength = 12.0;  ///< points on screen, along the leg
inline constexpr double kMarkerWidth = 8.0;    ///< points on screen, across the leg

/// A rim behind all lines, so that they are seen on a white map too.
inline constexpr Colour kCasingColour = {70, 70, 70};
inline constexpr double kCasingWidth = 4.0;  ///< points on screen

}  // namespace wxl::movement::track_symbol
