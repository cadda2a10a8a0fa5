#pragma once
#include "platform/services.h"
#include "results_page/map_svg.h"
#include "results_page/page_run.h"

#include <cstddef>
#include <string>

namespace wxl::results_page {

/// The map of a record as SVG, from its raster in the run's folder: the part of it that holds density, and isopleths at
/// the record's levels. Empty when there is no such raster; RuntimeError when it cannot be read. Memory: a row of the
/// raster, the picture, and the contours of this one raster.
/// @param number of the record in the run, from 0
std::string animal_map(const PageRun& run, std::size_t number, const PictureSize& size,
                       const platform::Services& services);

}  // namespace wxl::results_page
