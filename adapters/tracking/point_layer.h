#pragma once
#include "platform/values.h"

#include <filesystem>
#include <iostream>
#include <memory>
#include <optional>
#include <string>

namespace wxl::tracking {

/// A layer of points, or a sheet of a workbook, as a text of separated values that can be read like any other table.
struct LayerAsText {
    std::unique_ptr<std::iostream> Text;
    platform::SpatialReference Reference;  ///< of the points; unknown for a sheet
    bool HasPoints = false;                ///< positions stand in the columns kLayerX and kLayerY
    std::string Format;                    ///< GDAL's name of the format
    std::string Layer;
};

inline constexpr const char* kLayerX = "point x";
inline constexpr const char* kLayerY = "point y";

/// Whether a file is of a format whose layers are read by GDAL: GPX, KML, GeoJSON, GeoPackage, FlatGeobuf, shapefile,
/// Excel or OpenDocument workbook. Judged by its ending, or by its first bytes.
bool is_layer_file(const std::filesystem::path& file);

/// Reads "FILE" or "FILE:LAYER". Of several layers the one with points is taken (of a GPX file the points of tracks,
/// else the waypoints; of a workbook the first sheet). With `inDegrees` projected points become degrees of WGS 84.
/// RuntimeError 53 no such file, 57 it cannot be read, 13 no points, or several layers with points.
LayerAsText read_layer(const std::string& input, bool inDegrees);

}  // namespace wxl::tracking
