#pragma once
#include <string>
#include <vector>

namespace wxl::pictures {

/// A value with its limits.
struct Banded {
    double X = 0.0;
    double Low = 0.0;
    double Value = 0.0;
    double High = 0.0;
    friend bool operator==(const Banded&, const Banded&) = default;
};

/// What a picture of a variogram shows: how far positions drift apart with time, and what a model makes of it.
struct VariogramPicture {
    std::string Title;           ///< such as the animal's ID; any text
    std::string Model;           ///< such as "OUF anisotropic"; "" where there is none
    std::string LagUnit;         ///< of X: "hours", "days"
    std::string AreaUnit;        ///< of the semivariances: "km²"
    std::vector<Banded> Points;  ///< of the fixes, by ascending lag
    std::vector<Banded> Curve;   ///< of the model, by ascending lag
};

/// The picture as an SVG element (UTF-8, no XML declaration) that stands alone as a file. Role "img", a title and a
/// description in words; its colours follow a preference for dark pages. Without points it says so. The IDs of its
/// elements begin with `id` (letters, digits and "-"), so that a page may hold several.
std::string VariogramSvg(const VariogramPicture& picture, const std::string& id = "variogram");

}  // namespace wxl::pictures
