#pragma once
// How QGIS draws the layers of a package of ranges: styles of its own format (QML).

#include <string>

namespace wxl::analysis {

/// Outlines that are darker the smaller the percentage, over a light fill; the largest ranges are drawn first.
std::string isopleth_style();

/// Ranges with limits: estimates as those outlines, their limits (field "bound": low, high) as dashed ones without a
/// fill; the largest are drawn first.
std::string limits_style();

/// Dashed outlines without a fill.
std::string convex_polygon_style();

/// Light fills that darken where pairs lie above each other.
std::string overlap_style();

/// Small dots.
std::string fix_style();

}  // namespace wxl::analysis
