#pragma once
// Where the versions of GDAL differ that this adapter is built with. Each entry names the version in which it ends:
// once no older one is supported, the entry goes.

#include <cstddef>
#include <gdal_version.h>

namespace wxl::files {

/// Count of points of a coordinate transformation. Ends with GDAL 3.9.
#if GDAL_VERSION_NUM < GDAL_COMPUTE_VERSION(3, 9, 0)
using TransformCount = int;
#else
using TransformCount = std::size_t;
#endif

}  // namespace wxl::files
