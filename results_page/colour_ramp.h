#pragma once
#include "platform/pictures.h"

#include <cstddef>
#include <string>
#include <vector>

namespace wxl::results_page {

/// The colour of OKLCH coordinates (Ottosson 2020): lightness 0 to 1, chroma, hue in degrees; clipped to sRGB.
platform::Colour from_oklch(double lightness, double chroma, double hue);

/// Colours of a density, in even steps of perceived lightness from pale to dark. The first is clear and stands for
/// zero; the palest ones after it are half clear, so that a density ends without a rim.
/// @param colours 3 to 256
std::vector<platform::Colour> density_ramp(std::size_t colours);

/// The ramp as a CSS gradient from left to right, over `paper`.
std::string css_gradient(const std::vector<platform::Colour>& ramp, const platform::Colour& paper);

/// What the maps are drawn on, in pages of light and dark alike.
inline constexpr platform::Colour kMapPaper{250, 249, 245, 255};

}  // namespace wxl::results_page
