#pragma once
#include <cstddef>
#include <optional>
#include <string>
#include <vector>

namespace wxl::pictures {

/// One number of fixes and the area of their range.
struct AreaCurvePoint {
    std::size_t Fixes = 0;
    std::optional<double> Area;  ///< none where there is no range
    std::optional<double> Low;   ///< of replicates, with High
    std::optional<double> High;
};

/// What a picture of an area curve shows.
struct AreaCurvePicture {
    std::string Title;                    ///< such as the animal's ID; any text
    std::string Of;                       ///< "Minimum convex polygon, 100 %"
    std::string Units;                    ///< of the areas, such as "square metre"; "" when unknown
    std::vector<AreaCurvePoint> Points;   ///< ascending
    std::optional<std::size_t> LevelsAt;  ///< fixes from which all areas lie near the last
    bool Reached = false;                 ///< enough fixes follow to call that an asymptote
    double Tolerance = 0.05;              ///< of the asymptote, as a share of the last area
};

/// What became of the asymptote, as a sentence.
std::string AsymptoteText(const AreaCurvePicture& picture);

/// The curve as an SVG element that stands alone as a file and inside an HTML page, of the same make as ProfileSvg: the
/// band of the replicates, the curve, the band of the asymptote around the last area.
/// @param idPrefix begins the ids inside the picture; each picture of one page needs its own
std::string AreaCurveSvg(const AreaCurvePicture& picture, const std::string& idPrefix = "curve", int width = 640);

}  // namespace wxl::pictures
