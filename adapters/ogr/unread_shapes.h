#pragma once
#include "adapters/gdal/source_rules.h"

#include <cstdint>
#include <filesystem>
#include <set>
#include <string>

namespace wxl::files {

/// Numbers of the rows of which the file tells a location that means none. OGR gives them without a shape, like those
/// that have no location. `driver` is GDAL's name of the format: looked for where locations are texts (GeoJSON, WKT in
/// CSV); empty for all others, which tell a failure.
std::set<std::int64_t> unread_shapes(const std::filesystem::path& path, const std::string& layer,
                                     const std::string& driver, Sources sources);

}  // namespace wxl::files
