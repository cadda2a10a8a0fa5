#pragma once
#include "platform/services.h"
#include "results_page/page_run.h"

#include <cstddef>
#include <string>

namespace wxl::results_page {

/// The section of one distribution as HTML: map, areas, figures, independence of the fixes, profile of the search. The
/// raster is read from the run's folder; one that cannot be read leaves a line in the place of its map.
/// @param number of the record in the run, from 0
std::string animal_section(const PageRun& run, std::size_t number, const PictureSize& size,
                           const platform::Services& services);

}  // namespace wxl::results_page
