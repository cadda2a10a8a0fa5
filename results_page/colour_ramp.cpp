#include "results_page/colour_ramp.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace wxl::results_page {
namespace {

using platform::Colour;

// From a pale green to a dark blue violet.
constexpr double kPaleLightness = 0.94;
constexpr double kDarkLightness = 0.27;
constexpr double kPaleHue = 125.0;
constexpr double kDarkHue = 285.0;
constexpr double kEndChroma = 0.06;
constexpr double kMiddleChroma = 0.07;  ///< more in the middle of the ramp

/// Share of the ramp over which its colours become opaque.
constexpr double kClearShare = 0.18;

std::uint8_t channel(double linear) {
    const double clipped = std::clamp(linear, 0.0, 1.0);
    const double encoded = clipped <= 0.0031308 ? 12.92 * clipped : 1.055 * std::pow(clipped, 1.0 / 2.4) - 0.055;
    return static_cast<std::uint8_t>(std::lround(255.0 * encoded));
}

double cube(double value) {
    return value * value * value;
}

std::uint8_t over(std::uint8_t colour, std::uint8_t paper, std::uint8_t opacity) {
    return static_cast<std::uint8_t>((colour * opacity + paper * (255 - opacity) + 127) / 255);
}

std::string css_colour(const Colour& colour, const Colour& paper) {
    return "rgb(" + std::to_string(over(colour.Red, paper.Red, colour.Opacity)) + "," +
           std::to_string(over(colour.Green, paper.Green, colour.Opacity)) + "," +
           std::to_string(over(colour.Blue, paper.Blue, colour.Opacity)) + ")";
}

}  // namespace

Colour from_oklch(double lightness, double chroma, double hue) {
    const double angle = hue * std::numbers::pi / 180.0;
    const double a = chroma * std::cos(angle);
    const double b = chroma * std::sin(angle);
    const double l = cube(lightness + 0.3963377774 * a + 0.2158037573 * b);
    const double m = cube(lightness - 0.1055613458 * a - 0.0638541728 * b);
    const double s = cube(lightness - 0.0894841775 * a - 1.2914855480 * b);
    return {channel(4.0767416621 * l - 3.3077115913 * m + 0.2309699292 * s),
            channel(-1.2684380046 * l + 2.6097574011 * m - 0.3413193965 * s),
            channel(-0.0041960863 * l - 0.7034186147 * m + 1.7076147010 * s), 255};
}

std::vector<Colour> density_ramp(std::size_t colours) {
    std::vector<Colour> ramp = {{255, 255, 255, 0}};
    for (std::size_t i = 1; i < colours; ++i) {
        const double t = static_cast<double>(i) / static_cast<double>(colours - 1);
        Colour colour = from_oklch(kPaleLightness + t * (kDarkLightness - kPaleLightness),
                                   kEndChroma + kMiddleChroma * std::sin(std::numbers::pi * t),
                                   kPaleHue + t * (kDarkHue - kPaleHue));
        colour.Opacity = static_cast<std::uint8_t>(std::lround(255.0 * std::min(1.0, t / kClearShare)));
        ramp.push_back(colour);
    }
    return ramp;
}

std::string css_gradient(const std::vector<Colour>& ramp, const Colour& paper) {
    constexpr std::size_t kStops = 9;
    std::string gradient = "linear-gradient(to right";
    for (std::size_t i = 0; i < kStops; ++i)
        gradient += "," + css_colour(ramp[i * (ramp.size() - 1) / (kStops - 1)], paper);
    return gradient + ")";
}

}  // namespace wxl::results_page
