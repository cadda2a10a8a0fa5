#pragma once
// How QGIS draws the layers of a package of ranges: styles of its own format (QML).

#include <string>

namespace wxl::analysis {

/// Outlines that are darker the smaller the percentage, over a light fill; the largest ranges are drawn first.
std::string isopleth_style();

/// Ranges with limits: estimates as those outlines, their limits (field "bound": low, high) as dashed ones without a
/// fill; the largest are drawn first.
std::string limits_style();

/// Small dots.
std::string fix_style();

}  // namespace wxl::analysis
