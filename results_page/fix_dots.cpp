#include "results_page/fix_dots.h"

#include <cmath>
#include <cstddef>
#include <vector>

namespace wxl::results_page {
namespace {

struct Place {
    std::size_t X = 0;
    std::size_t Y = 0;
};

bool is_inside(const platform::Extent& shown, const platform::Point& fix) {
    return fix.X >= shown.XMin && fix.X <= shown.XMax && fix.Y >= shown.YMin && fix.Y <= shown.YMax;
}

std::size_t units(double pictureUnits) {
    return static_cast<std::size_t>(std::lround(std::fmax(pictureUnits, 0.0) * kDotUnits));
}

/// Places in the order of their first fix; `dots` counts the fixes.
std::vector<Place> places_of(std::span<const platform::Point> fixes, const MapLayout& layout, FixDots& dots) {
    const std::size_t columns = units(layout.Width) + 1;
    std::vector<bool> taken(columns * (units(layout.Height) + 1), false);
    std::vector<Place> places;
    for (const platform::Point& fix : fixes) {
        if (!is_inside(layout.Shown, fix)) continue;
        ++dots.Fixes;
        const platform::Point at = layout.Scale.At(fix);
        const Place place{units(at.X), units(at.Y)};
        const std::size_t cell = place.Y * columns + place.X;
        if (!taken.at(cell)) places.push_back(place);
        taken.at(cell) = true;
    }
    return places;
}

}  // namespace

FixDots fix_dots(std::span<const platform::Point> fixes, const MapLayout& layout, std::size_t most) {
    FixDots dots;
    const std::vector<Place> places = places_of(fixes, layout, dots);
    dots.Places = places.size();
    if (places.size() > most) dots.Every = (places.size() + most - 1) / most;
    for (std::size_t i = 0; i < places.size(); i += dots.Every)
        dots.Path += "M" + std::to_string(places[i].X) + " " + std::to_string(places[i].Y) + "h0";
    return dots;
}

std::string dots_text(const FixDots& dots) {
    const std::string fixes = std::to_string(dots.Fixes) + (dots.Fixes == 1 ? " fix" : " fixes");
    if (dots.Every == 1) return "Dots: its " + fixes;
    return "Dots: one of " + std::to_string(dots.Every) + " of the " + std::to_string(dots.Places) + " places of its " +
           fixes;
}

}  // namespace wxl::results_page
