#pragma once
// The map of one distribution: density, isopleths, grid lines with coordinates, scale bar, north arrow.

#include "platform/values.h"
#include "results_page/isopleth_paths.h"

#include <string>
#include <vector>

namespace wxl::results_page {

/// How the lines of one isopleth are drawn, in the map and in its legend.
struct LineLook {
    double Width = 1.0;
    const char* Dashes = "";  ///< an SVG dash array; empty: unbroken
};

/// The looks of `count` isopleths by falling percentage: told apart by dashes and width, not by colour.
LineLook look_of(std::size_t index);

/// The look of minimum convex polygons: thin dots.
inline constexpr LineLook kPolygonLook{1.1, "1 4"};

/// A line as it stands in the map, for a table beside it.
std::string line_sample(const LineLook& look);

/// Where the parts of a map stand on its canvas.
struct MapLayout {
    platform::Extent Shown;  ///< map units
    MapScale Scale;
    double Width = 0.0;   ///< of the canvas, picture units
    double Height = 0.0;  ///< of the canvas
    double PlotWidth = 0.0;
    double PlotHeight = 0.0;
};

/// Lays out a map that shows `bounds`. A strip is widened until no side is shorter than 0.6 of the other.
MapLayout layout_of(const platform::Extent& bounds);

/// One isopleth of a map.
struct MapLine {
    std::string Path;  ///< svg_path with the layout's scale
    LineLook Look;
};

/// A coloured area of a map.
struct MapArea {
    std::string Path;  ///< svg_path with the layout's scale; what lies within an odd number of its rings is filled
    const char* Fill = "none";  ///< colours of SVG
    const char* Stroke = "none";
    std::string Title = {};  ///< shown where a pointer rests; any text
};

/// A name in a map.
struct MapLabel {
    platform::Point Place;  ///< picture units
    std::string Text;
};

/// What a map shows. Texts may be any.
struct MapPicture {
    std::string Id;     ///< of the element; letters, digits and "-" only
    std::string Title;  ///< for readers who do not see it
    std::string Description;
    std::string Png;          ///< bytes of the density picture
    platform::Extent Bounds;  ///< of the density picture
    std::vector<MapLine> Lines;
    std::string Dots;  ///< FixDots::Path
    platform::SpatialReference Reference;
    std::vector<MapArea> Areas = {};    ///< below the lines
    std::vector<MapLabel> Labels = {};  ///< above them
};

/// An SVG element for the inside of a page; its looks are the page's style sheet's.
std::string map_svg(const MapPicture& map, const MapLayout& layout);

/// A round length for a scale bar, about a quarter of `width` map units, and how it reads: "2 km", "500 m", "0.1
/// degree".
struct ScaleBar {
    double Length = 0.0;  ///< map units
    std::string Text;
};
ScaleBar scale_bar(double width, const platform::SpatialReference& reference);

/// Base64 (RFC 4648).
std::string base64(std::string_view bytes);

}  // namespace wxl::results_page
