#pragma once
// How QGIS draws the layers of a package of ranges: styles of its own format (QML).

#include <string>

namespace wxl::analysis {

/// Outlines that are darker the smaller the percentage, over a light fill; the largest ranges are drawn first.
std::string isopleth_style();

/// Small dots.
std::string fix_style();

}  // namespace wxl::analysis
