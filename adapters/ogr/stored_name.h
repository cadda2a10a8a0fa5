#pragma once
#include "platform/values.h"

#include <filesystem>

namespace wxl::files {

/// A shapefile's coordinate system under the name that its projection file gives it. A library matches the file's
/// parameters with the systems that it knows and answers with the name of the best match, whatever the file calls it:
/// that name stays only where the file's own is the name of the same system in ESRI's spelling
/// ("NAD_1983_UTM_Zone_15N" for "NAD83 / UTM zone 15N"). The reference as given where it is unknown, or the file is
/// missing or holds no name.
/// @param shapefile path of the .shp
platform::SpatialReference NamedAsStored(platform::SpatialReference reference, const std::filesystem::path& shapefile);

}  // namespace wxl::files
